#include "ui/toolform.h"

#include <list>

#include <QDockWidget>
#include <QShowEvent>
#include <QSignalBlocker>

namespace tirn {

namespace {

/// True for widgets that hold a value of the user's; headers and scroll bars have to go on telling their
/// views.
bool holdsValue(const QWidget* widget)
{
    const auto isOneOf = [widget](auto... names) { return (widget->inherits(names) || ...); };
    return isOneOf("QAbstractButton", "QSlider", "QDial", "QAbstractSpinBox", "QComboBox", "QLineEdit",
                   "QTextEdit", "QPlainTextEdit", "QGroupBox", "QTableWidget", "QListWidget", "QTreeWidget",
                   "QTabWidget", "tirn::FileChooser");
}

/// Keeps the widgets of a form silent while it lives.
class Silence
{
public:
    explicit Silence(const QWidget& form)
    {
        for (QWidget* child : form.findChildren<QWidget*>()) {
            if (holdsValue(child))
                m_blockers.emplace_back(child);
        }
    }

private:
    std::list<QSignalBlocker> m_blockers;
};

} // namespace

ToolForm::ToolForm(const FormServices& services, Changes follows, QWidget* parent)
    : QDialog(parent), m_services(services), m_follows(follows)
{
    connect(&services.model, &SceneModel::changed, this, &ToolForm::follow);
}

void ToolForm::saveSession(QDomElement& /*element*/) const {}

void ToolForm::loadSession(const QDomElement& /*element*/) {}

QWidget* ToolForm::frame() const
{
    if (auto* dock = qobject_cast<QDockWidget*>(parentWidget()))
        return dock;
    return const_cast<ToolForm*>(this);
}

void ToolForm::setShown(bool shown)
{
    if (shown && frame() != this)
        show();
    frame()->setVisible(shown);
    if (shown)
        frame()->raise();
}

void ToolForm::done(int result)
{
    if (frame() == this)
        QDialog::done(result);
    else
        frame()->hide();
}

void ToolForm::refresh(Changes /*changes*/) {}

void ToolForm::follow(Changes changes)
{
    const Changes followed = changes & m_follows;
    if (!followed || !isVisible())
        return;
    const Silence silence(*this);
    refresh(followed);
}

void ToolForm::showEvent(QShowEvent* event)
{
    if (!event->spontaneous()) {
        const Silence silence(*this);
        refresh(kAllChanges);
    }
    QDialog::showEvent(event);
}

} // namespace tirn
