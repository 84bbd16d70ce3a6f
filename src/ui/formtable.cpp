#include "ui/formtable.h"

#include <algorithm>
#include <new>

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QSettings>
#include <QTimer>

#include "base/log.h"
#include "ui/formplaces.h"

namespace tirn {

namespace {

/// Milliseconds between looks at whether a dock is still being dragged.
constexpr int kDragPause = 50;

} // namespace

FormTable::FormTable(QMainWindow& mainWindow, const FormServices& services)
    : m_mainWindow(mainWindow), m_services(services)
{
    mainWindow.centralWidget()->installEventFilter(this);
    mainWindow.setDockOptions(QMainWindow::AllowTabbedDocks | QMainWindow::AllowNestedDocks);
}

FormTable::Made* FormTable::made(FormId id)
{
    const auto found =
        std::find_if(m_forms.begin(), m_forms.end(), [id](const Made& each) { return each.id == id; });
    return found != m_forms.end() ? &*found : nullptr;
}

ToolForm* FormTable::needed(FormId id, bool show)
{
    ToolForm* there = form(id);
    return there != nullptr && !show ? there : create(id, show);
}

ToolForm* FormTable::form(FormId id) const
{
    const Made* found = const_cast<FormTable*>(this)->made(id);
    return found != nullptr ? found->form : nullptr;
}

ToolForm* FormTable::make(const FormRow& row)
{
    if (row.make == nullptr)
        return nullptr;
    try {
        ToolForm* form = row.make(m_services, &m_mainWindow);
        form->setObjectName(row.name);
        if (row.kind == FormKind::Tool)
            putIntoDock(row, *form);
        form->frame()->installEventFilter(this);
        m_forms.push_back({row.id, form});
        return form;
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate memory for %s form", row.failureName);
        return nullptr;
    }
}

void FormTable::putIntoDock(const FormRow& row, ToolForm& form)
{
    auto* dock = new QDockWidget(form.windowTitle(), &m_mainWindow);
    // Several forms have the same name; the place of a dock is kept under a name of its own.
    dock->setObjectName(QString("dock") + row.action);
    form.setWindowFlags(Qt::Widget);
    dock->setWidget(&form);
    connect(&form, &QWidget::windowTitleChanged, dock, &QWidget::setWindowTitle);
    connect(dock, &QDockWidget::topLevelChanged, this, &FormTable::keepPictureSize);
    m_mainWindow.addDockWidget(Qt::LeftDockWidgetArea, dock);
    dock->setFloating(true);
    dock->hide();
}

/// A form that is docked takes its room from the screen, not from the picture, and gives it back.
void FormTable::keepPictureSize()
{
    // The layout may have been changed already.
    const QSize before = m_pictureSize;
    // Once the dock has been laid out.
    if (!before.isEmpty() && m_mainWindow.isVisible() && !m_mainWindow.isMaximized())
        QTimer::singleShot(0, this, [this, before] { resizePicture(before); });
}

void FormTable::resizePicture(QSize size)
{
    // A dock that is being dragged may come back.
    if (QGuiApplication::mouseButtons() != Qt::NoButton) {
        QTimer::singleShot(kDragPause, this, [this, size] { resizePicture(size); });
        return;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const QRect screen = screenOf(m_mainWindow);
    const QSize wanted = m_mainWindow.size() + size - m_mainWindow.centralWidget()->size();
    m_mainWindow.resize(wanted.boundedTo(screen.size()));
    m_mainWindow.move(onScreen(m_mainWindow.pos(), m_mainWindow.frameSize(), screen));
}

ToolForm* FormTable::create(FormId id, bool show)
{
    if (form(id) == nullptr && make(formRow(id)) == nullptr)
        return nullptr;
    Made& found = *made(id);
    const bool isPlaced = show && needsPlace(found);
    if (isPlaced)
        place(found);
    found.form->setShown(show);
    // What it shows may have made it larger.
    if (isPlaced) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        place(found);
    }
    found.isUnplaced = found.isUnplaced && !isPlaced;
    return found.form;
}

bool FormTable::needsPlace(const Made& each) const
{
    const auto* dock = qobject_cast<QDockWidget*>(each.form->frame());
    // A dock stays where the user put it.
    return !each.form->isShown() && (dock == nullptr || (dock->isFloating() && each.isUnplaced));
}

void FormTable::place(Made& each)
{
    QWidget& frame = *each.form->frame();
    each.form->ensurePolished();
    frame.adjustSize();
    frame.move(freeFormPosition(m_mainWindow.frameGeometry(), frame.frameSize(), screenOf(m_mainWindow),
                                takenPlaces(each), FormSide::Left));
}

/// What a form that comes up must not cover: the others, and the menu.
std::vector<QRect> FormTable::takenPlaces(const Made& except) const
{
    const QMenuBar* menu = m_mainWindow.menuBar();
    std::vector<QRect> taken = {{menu->mapToGlobal(QPoint(0, 0)), menu->size()}};
    for (const Made& each : m_forms) {
        const QWidget* frame = each.form->frame();
        if (each.id != except.id && frame->isVisible() && frame->isWindow())
            taken.push_back(frame->frameGeometry());
    }
    return taken;
}

void FormTable::moveTo(ToolForm& form, QPoint corner)
{
    for (Made& each : m_forms) {
        if (each.form == &form)
            each.isUnplaced = false;
    }
    form.frame()->move(corner);
}

void FormTable::save(QSettings& store) const
{
    QStringList placed;
    bool isDocked = false;
    for (const Made& each : m_forms) {
        const auto* dock = qobject_cast<QDockWidget*>(each.form->frame());
        if (dock == nullptr)
            continue;
        if (!each.isUnplaced)
            placed.append(dock->objectName());
        isDocked = isDocked || (dock->isVisible() && !dock->isFloating());
    }
    store.beginGroup("Window");
    store.setValue("State", m_mainWindow.saveState());
    store.setValue("PlacedForms", placed);
    // A window without docked forms begins with the size that it always has.
    if (isDocked)
        store.setValue("Geometry", m_mainWindow.saveGeometry());
    else
        store.remove("Geometry");
    store.endGroup();
}

void FormTable::restore(QSettings& store)
{
    store.beginGroup("Window");
    const QStringList placed = store.value("PlacedForms").toStringList();
    const QByteArray geometry = store.value("Geometry").toByteArray();
    const QByteArray state = store.value("State").toByteArray();
    store.endGroup();
    if (!geometry.isEmpty())
        m_mainWindow.restoreGeometry(geometry);
    if (state.isEmpty() || !m_mainWindow.restoreState(state))
        return;
    for (Made& each : m_forms) {
        const auto* dock = qobject_cast<QDockWidget*>(each.form->frame());
        if (dock == nullptr || !placed.contains(dock->objectName()))
            continue;
        each.isUnplaced = false;
        // The screen that it was on may be gone.
        if (dock->isFloating())
            each.form->frame()->move(onScreen(dock->pos(), dock->frameSize(), screenOf(m_mainWindow)));
    }
}

void FormTable::createAllHidden()
{
    for (const FormRow& row : formRows())
        create(row.id, false);
}

bool FormTable::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_mainWindow.centralWidget()) {
        // As it is once everything has come to rest.
        if (event->type() == QEvent::Resize)
            QMetaObject::invokeMethod(
                this, [this] { m_pictureSize = m_mainWindow.centralWidget()->size(); }, Qt::QueuedConnection);
        return false;
    }
    const bool isShown = event->type() == QEvent::Show;
    // Minimised windows are hidden by the desktop, and stay open.
    if ((isShown || event->type() == QEvent::Hide) && !event->spontaneous()) {
        const auto found = std::find_if(m_forms.begin(), m_forms.end(), [watched](const Made& each) {
            return each.form->frame() == watched;
        });
        if (found != m_forms.end())
            Q_EMIT visibilityChanged(found->id, isShown);
    }
    return QObject::eventFilter(watched, event);
}

void FormTable::hideAll()
{
    for (const Made& each : m_forms)
        each.form->setShown(false);
}

} // namespace tirn
