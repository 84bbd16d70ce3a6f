// The main window: menus, status bar, lists of what was opened last.

#include "ui/main/mainform.h"

#include <algorithm>

#include <QFile>
#include <QMenuBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <unistd.h>

#include "base/log.h"
#include "gl/nativebackground.h"
#include "image/stackfacts.h"
#include "ui/main/mainactions.h"
#include "ui/messages.h"

namespace tirn {

namespace {

constexpr int kLongestMenuText = 100;
constexpr int kNoteMilliseconds = 10000;

QMenu* subMenu(QMenu* parent, QMenuBar* bar, const QString& title)
{
    QWidget* holder = parent != nullptr ? static_cast<QWidget*>(parent) : bar;
    for (QAction* action : holder->actions()) {
        if (action->menu() != nullptr && action->text() == title)
            return action->menu();
    }
    QMenu* made = parent != nullptr ? parent->addMenu(title) : bar->addMenu(title);
    made->setToolTipsVisible(true);
    return made;
}

QMenu* menuOf(QMenuBar* bar, const QString& path)
{
    QMenu* menu = nullptr;
    for (const QString& title : path.split('/', Qt::SkipEmptyParts))
        menu = subMenu(menu, bar, title);
    return menu;
}

} // namespace

QString menuText(const QString& text)
{
    QString shown = text;
    if (shown.size() > kLongestMenuText)
        shown = shown.left(kLongestMenuText / 2) + QChar(0x2026) + shown.right(kLongestMenuText / 2);
    return shown.replace('&', "&&");
}

MainForm::MainForm(const QString& name, const MainFormServices& services)
    : m_services(services), m_dropped(services.probes)
{
    setObjectName(name);
    setWindowTitle("Tirn");
    setAcceptDrops(true);
    buildMenus();
    buildStatusBar();
    buildRecentMenus();
    followUndo();
    connect(&services.model, &SceneModel::changed, this, &MainForm::follow);
}

/// The status bar and the actions say what the scene is like.
void MainForm::follow(Changes changes)
{
    const Scene& scene = m_services.model.scene();
    const auto check = [this](const char* name, bool on) {
        const QSignalBlocker blocker(action(name));
        action(name)->setChecked(on);
    };
    if (changes & Change::Ruler)
        check("rulerAction", scene.view.isMeasuring);
    if (changes & Change::Look) {
        updateBlendingStatus(static_cast<GLint>(scene.view.blendMode));
        updateZCorrectionStatus(scene.view.zCorrection);
        check("stretchToUsedBitsAction", scene.view.autoBitDepth);
        check("showSegmentationAction", drawnSurface(scene.segmentations) != nullptr);
    }
    if (changes & (Change::Stacks | Change::Voxels | Change::Scale)) {
        const VoxelArray* array = scene.current();
        setWindowTitle(array != nullptr ? array->name() + " - Tirn" : QString("Tirn"));
        m_facts->setText(array == nullptr
                             ? QString()
                             : stackFacts(array->stack(), array->channelCount(), array->timePointCount()));
        m_facts->setToolTip(m_facts->text());
        updateTextureStatus();
        updateMemoryStatus();
    }
    if (changes & (Change::Stacks | Change::Look)) {
        for (const ActionRow& row : mainActions()) {
            if (row.needs == ActionRow::Needs::Stack)
                action(row.name)->setEnabled(scene.current() != nullptr);
            else if (row.needs == ActionRow::Needs::Surface)
                action(row.name)->setEnabled(!scene.segmentations.empty());
        }
    }
}

void MainForm::followUndo()
{
    QUndoStack& undo = m_services.model.undoStack();
    const auto connectOne = [this](const char* name, auto can, auto text, const QString& verb) {
        QAction* entry = action(name);
        connect(&m_services.model.undoStack(), can, entry, &QAction::setEnabled);
        connect(&m_services.model.undoStack(), text, entry,
                [entry, verb, name = entry->text(), none = entry->toolTip()](const QString& what) {
                    entry->setText(what.isEmpty() ? name : name + ' ' + QString(what).replace('&', "&&"));
                    entry->setToolTip(what.isEmpty() ? none : verb + what);
                });
    };
    // Some of what was done is undone by long work, which may have to wait.
    const auto mayUndo = [this, &undo](int index) { return !m_undoGate || m_undoGate(undo.command(index)); };
    connectOne("editUndoAction", &QUndoStack::canUndoChanged, &QUndoStack::undoTextChanged, tr("Undo: "));
    connectOne("editRedoAction", &QUndoStack::canRedoChanged, &QUndoStack::redoTextChanged, tr("Redo: "));
    connect(action("editUndoAction"), &QAction::triggered, &undo, [&undo, mayUndo] {
        if (mayUndo(undo.index() - 1))
            undo.undo();
    });
    connect(action("editRedoAction"), &QAction::triggered, &undo, [&undo, mayUndo] {
        if (mayUndo(undo.index()))
            undo.redo();
    });
}

void MainForm::buildMenus()
{
    for (const ActionRow& row : mainActions()) {
        QMenu* menu = menuOf(menuBar(), row.menu);
        if (*row.name == '\0') {
            menu->addSeparator();
            continue;
        }
        if (row.kind == ActionRow::Kind::List) {
            QMenu* list = subMenu(menu, menuBar(), tr(row.text));
            list->setObjectName(row.name);
            continue;
        }
        auto* action = new QAction(tr(row.text), this);
        action->setObjectName(row.name);
        action->setShortcut(QKeySequence(QLatin1String(row.shortcut)));
        action->setCheckable(row.kind == ActionRow::Kind::Toggle);
        action->setEnabled(row.enabled && row.needs == ActionRow::Needs::Nothing);
        if (*row.toolTip != '\0')
            action->setToolTip(tr(row.toolTip));
        if (menu != nullptr)
            menu->addAction(action);
    }
}

void MainForm::buildStatusBar()
{
    // The facts give way to what is pointed at, and both to notes.
    m_about = new QStackedWidget(this);
    const auto about = [this](const char* name) {
        auto* made = new QLabel(m_about);
        made->setObjectName(name);
        // However long, it makes no window wider.
        made->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        m_about->addWidget(made);
        return made;
    };
    m_facts = about("facts");
    m_pointed = about("pointed");
    m_about->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar()->addWidget(m_about, 1);
    const auto label = [this](const char* name, const QString& text, int width) {
        auto* made = new QLabel(text, this);
        made->setObjectName(name);
        made->setMinimumWidth(width);
        statusBar()->addPermanentWidget(made);
        return made;
    };
    m_blending = label("alpha", "alpha", 0);
    m_zCorrection = label("Zcorr", "Z corr", 0);
    m_zCorrection->hide();
    m_texture = label("tex", "none", 35);
    m_memory = label("memory", "Memory: 0000MB", 90);
}

QAction* MainForm::action(const QString& name) const
{
    return name.isEmpty() ? nullptr : findChild<QAction*>(name);
}

QMenu* MainForm::listMenu(const char* name) const { return findChild<QMenu*>(name); }

void MainForm::buildRecentMenus()
{
    QMenu* stacks = listMenu("recentStacksMenu");
    stacks->clear();
    for (std::size_t i = 0; i < m_recent.stacks().size(); ++i) {
        const QString text = m_recent.stacks()[i].text();
        QAction* entry = stacks->addAction(menuText(text));
        entry->setData(text);
        connect(entry, &QAction::triggered, this, [this, i] { recentStack(static_cast<int>(i)); });
    }
    QMenu* palettes = listMenu("recentPalettesMenu");
    palettes->clear();
    for (const QString& name : m_recent.palettes()) {
        QAction* entry = palettes->addAction(menuText(name));
        entry->setData(name);
        connect(entry, &QAction::triggered, this, [this, name] { Q_EMIT loadRecentPalette({name}); });
    }
    stacks->setEnabled(!stacks->isEmpty());
    palettes->setEnabled(!palettes->isEmpty());
}

void MainForm::readRecentLists()
{
    m_recent = RecentLists::read(m_services.store);
    buildRecentMenus();
}

void MainForm::addRecentStack(const RecentStack& stack)
{
    if (stack.files.empty())
        return;
    m_recent.addStack(stack);
    // At once, for other programs that run, and for one that ends before its time.
    m_recent.write(m_services.store);
    buildRecentMenus();
}

void MainForm::paletteLoaded(const QString& name)
{
    m_recent.addPalette(name);
    buildRecentMenus();
}

void MainForm::recentStack(int position)
{
    // A copy: loading changes the list.
    const RecentStack stack = m_recent.stacks()[static_cast<std::size_t>(position)];
    if (stack.raw) {
        Q_EMIT loadRecentRaw(stack);
        return;
    }
    if (stack.missing == 0) {
        Q_EMIT loadRecentStack(stack.files, stack.channels, stack.timePoints);
        return;
    }
    showNote(tr("Only the first %1 names of this stack were remembered.").arg(stack.files.size()));
    const auto kept = static_cast<int>(stack.files.size());
    const bool channelsApart = stack.timePoints != kept + stack.missing && stack.channels > 1;
    Q_EMIT loadRecentStack(stack.files, stack.channels, channelsApart ? kept / stack.channels : kept);
}

void MainForm::showNote(const QString& text) { statusBar()->showMessage(text, kNoteMilliseconds); }

void MainForm::showPointed(const QString& text)
{
    m_pointed->setText(text);
    // What does not fit can be read all the same.
    m_pointed->setToolTip(text);
    m_about->setCurrentWidget(text.isEmpty() ? m_facts : m_pointed);
}

void MainForm::updateBlendingStatus(GLint mode) { m_blending->setText(mode == GL_MAX ? "max" : "alpha"); }

void MainForm::updateTextureStatus()
{
    const VoxelArray* array = m_services.model.scene().current();
    if (array == nullptr)
        m_texture->setText("none");
    else
        m_texture->setText(array->textureTarget() == GL_TEXTURE_3D ? "3D tex" : "2D tex");
}

void MainForm::updateMemoryStatus() { m_memory->setText(QString("Memory: %1MB").arg(processMegabytes())); }

void MainForm::updateZCorrectionStatus(bool on) { m_zCorrection->setVisible(on); }

void MainForm::checkForUpdates()
{
    // No network is asked: the text is the whole answer.
    showMessage(this, QMessageBox::Information, tr("Checking for new version"),
                tr("This build is older than 4AM, of course you need to update."));
}

void MainForm::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    setNativeBackground(*this, palette().color(QPalette::Window));
}

void MainForm::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || !m_minimisedHandler)
        return;
    if (isMinimized())
        logDebug("We've been miniminzed!");
    m_minimisedHandler(isMinimized());
}

int processMegabytes()
{
    QFile status("/proc/self/statm");
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    // Pages: in all, resident, shared.
    const QList<QByteArray> pages = status.readLine().split(' ');
    if (pages.size() < 3)
        return 0;
    const qint64 own = pages[1].toLongLong() - pages[2].toLongLong();
    return static_cast<int>(std::max<qint64>(0, own) * sysconf(_SC_PAGESIZE) / (1024 * 1024));
}

} // namespace tirn
