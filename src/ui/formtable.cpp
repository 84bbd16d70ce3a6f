#include "ui/formtable.h"

#include <algorithm>
#include <new>

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>

#include "base/log.h"

namespace tirn {

const FormRow* FormTable::row(FormId id) const
{
    const auto found =
        std::find_if(m_rows.begin(), m_rows.end(), [id](const FormRow& each) { return each.id == id; });
    return found != m_rows.end() ? &*found : nullptr;
}

QWidget* FormTable::form(FormId id) const
{
    const auto found =
        std::find_if(m_forms.begin(), m_forms.end(), [id](const Made& each) { return each.id == id; });
    return found != m_forms.end() ? found->form : nullptr;
}

QWidget* FormTable::make(const FormRow& row)
{
    try {
        for (const FormId needed : row.needs) {
            if (form(needed) == nullptr)
                create(needed, false);
        }
        QWidget* made = row.create(m_mainWindow);
        made->setObjectName(row.name);
        made->installEventFilter(this);
        m_forms.push_back({row.id, made});
        if (row.connect)
            row.connect(made);
        return made;
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate memory for %s form", row.failureName);
        return nullptr;
    }
}

QWidget* FormTable::create(FormId id, bool show)
{
    const FormRow* found = row(id);
    if (found == nullptr)
        return nullptr;
    QWidget* made = form(id);
    if (made == nullptr)
        made = make(*found);
    if (made == nullptr)
        return nullptr;
    if (!show) {
        made->hide();
        return made;
    }
    if (m_mainWindow != nullptr && !made->isVisible()) {
        made->adjustSize();
        const QSize desktop = QGuiApplication::primaryScreen()->availableSize();
        made->move(formPosition(m_mainWindow->frameGeometry(), made->frameSize(), desktop, FormSide::Left));
    }
    made->show();
    made->raise();
    return made;
}

void FormTable::createAllHidden()
{
    for (const FormRow& each : m_rows)
        create(each.id, false);
}

bool FormTable::eventFilter(QObject* watched, QEvent* event)
{
    const bool isShown = event->type() == QEvent::Show;
    // Minimised windows are hidden by the desktop, and stay open.
    if ((isShown || event->type() == QEvent::Hide) && !event->spontaneous()) {
        const auto found = std::find_if(m_forms.begin(), m_forms.end(),
                                        [watched](const Made& each) { return each.form == watched; });
        if (found != m_forms.end())
            Q_EMIT visibilityChanged(found->id, isShown);
    }
    return QObject::eventFilter(watched, event);
}

void FormTable::hideAll()
{
    for (const Made& each : m_forms)
        each.form->hide();
}

QPoint formPosition(const QRect& mainFrame, const QSize& form, const QSize& desktop, FormSide side)
{
    QPoint corner = mainFrame.topLeft();
    switch (side) {
    case FormSide::Left:
        corner.setX(mainFrame.left() - form.width());
        break;
    case FormSide::Right:
        corner.setX(mainFrame.left() + mainFrame.width());
        break;
    case FormSide::Above:
        corner.setY(mainFrame.top() - form.height());
        break;
    case FormSide::Below:
        corner.setY(mainFrame.top() + mainFrame.height());
        break;
    }
    corner.setX(std::max(0, std::min(corner.x(), desktop.width() - form.width())));
    corner.setY(std::max(0, std::min(corner.y(), desktop.height() - form.height())));
    return corner;
}

QPoint firstWindowPosition(const QSize& desktop, int side)
{
    const int width = desktop.width() > 2 * desktop.height() ? desktop.width() / 2 : desktop.width();
    return {(width - side) / 2, (desktop.height() - side) / 2};
}

} // namespace tirn
