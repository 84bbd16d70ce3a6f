#include "ui/mainform.h"

#include <algorithm>
#include <array>

#include <QCloseEvent>
#include <QFile>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <unistd.h>

#include "base/log.h"

namespace tirn {

namespace {

/// One action: the path of menus it stands in, "/" between them, and what the user sees. An empty name is a
/// separator.
struct ActionRow
{
    const char* menu;
    const char* name;
    const char* text;
    const char* shortcut = "";
    const char* toolTip = "";
    bool checkable = false;
};

constexpr ActionRow kActions[] = {
    {"&File/Load", "segmentationOpenAction", "Segmentation..."},
    {"&File/Close", "closeStackAction", "Stack"},
    {"&File/Close", "closeAllAction", "All"},
    {"&File", "", ""},
    {"&File", "fileExitAction", "E&xit", "Ctrl+Q"},
    {"&Edit", "editCopyAction", "&Copy", "Ctrl+C", "Copy the current window contents to the clipboard."},
    {"&Edit", "", ""},
    {"&Edit", "stretchToUsedBitsAction", "Stretch to used bits", "",
     "Spread the bits that the data really use over the whole palette.", true},
    {"&Edit", "editPreferencesAction", "Preferences..."},
    {"&Help", "helpContentsAction", "&Contents..."},
    {"&Help", "helpAboutAction", "&About"},
    {"&Help", "checkForUpdatesAction", "Check for Updates..."},
};

QMenu* subMenu(QMenu* parent, QMenuBar* bar, const QString& title)
{
    QWidget* holder = parent != nullptr ? static_cast<QWidget*>(parent) : bar;
    for (QAction* action : holder->actions()) {
        if (action->menu() != nullptr && action->text() == title)
            return action->menu();
    }
    return parent != nullptr ? parent->addMenu(title) : bar->addMenu(title);
}

QMenu* menuOf(QMenuBar* bar, const QString& path)
{
    QMenu* menu = nullptr;
    for (const QString& title : path.split('/'))
        menu = subMenu(menu, bar, title);
    return menu;
}

} // namespace

MainForm::MainForm(const QString& name)
{
    setObjectName(name);
    setWindowTitle("Tirn");
    buildMenus();
    buildStatusBar();
}

void MainForm::buildMenus()
{
    for (const ActionRow& row : kActions) {
        QMenu* menu = menuOf(menuBar(), row.menu);
        if (*row.name == '\0') {
            menu->addSeparator();
            continue;
        }
        auto* action = new QAction(tr(row.text), this);
        action->setObjectName(row.name);
        action->setShortcut(QKeySequence(QLatin1String(row.shortcut)));
        action->setCheckable(row.checkable);
        if (*row.toolTip != '\0')
            action->setToolTip(tr(row.toolTip));
        menu->addAction(action);
    }
}

void MainForm::buildStatusBar()
{
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

QAction* MainForm::action(const QString& name) const { return findChild<QAction*>(name); }

void MainForm::updateBlendingStatus(GLint mode) { m_blending->setText(mode == GL_MAX ? "max" : "alpha"); }

void MainForm::updateTextureStatus(const VoxelArray* array)
{
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
    auto* box = new QMessageBox(QMessageBox::Information, tr("Checking for new version"),
                                tr("This build is older than 4AM, of course you need to update."),
                                QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
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

void MainForm::closeEvent(QCloseEvent* event)
{
    if (m_closeHandler)
        m_closeHandler();
    event->accept();
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
