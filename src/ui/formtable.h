#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QRect>
#include <QString>
#include <QWidget>

namespace tirn {

/// The tool forms. Adding one means adding its id here and its row to the application's table.
enum class FormId { About, ImportStack, Manager, Preferences, SequenceTiff, Stack };

/// Where a form is placed beside the main window.
enum class FormSide { Left = 0, Right = 1, Above = 2, Below = 3 };

/// One tool form: the name that it is given, what a failed allocation calls it, how it is made, and what it
/// is connected to when it is made.
struct FormRow
{
    FormId id;
    const char* name;
    const char* failureName;
    std::function<QWidget*(QWidget* parent)> create;
    std::function<void(QWidget* form)> connect;
    /// Forms that must exist before this one.
    std::vector<FormId> needs;
};

/// Makes forms on first use, in the order of their rows, and shows or hides them. The main window owns them.
class FormTable : public QObject
{
    Q_OBJECT

public:
    void setRows(std::vector<FormRow> rows) { m_rows = std::move(rows); }
    void setMainWindow(QWidget* window) { m_mainWindow = window; }

    bool has(FormId id) const { return row(id) != nullptr; }
    /// Makes the form if need be and shows or hides it. Null, with a warning, when it cannot be made.
    QWidget* create(FormId id, bool show);
    /// The form, null while it was not made.
    QWidget* form(FormId id) const;
    void createAllHidden();
    void hideAll();

Q_SIGNALS:
    /// A form came up or went away, whoever asked for it.
    void visibilityChanged(tirn::FormId id, bool visible);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Made
    {
        FormId id;
        QWidget* form;
    };
    const FormRow* row(FormId id) const;
    QWidget* make(const FormRow& row);

    QWidget* m_mainWindow = nullptr;
    std::vector<FormRow> m_rows;
    std::vector<Made> m_forms;
};

/// Top left corner of a form beside the main window's frame: never left of or above 0, and moved back where
/// it would leave the desktop.
QPoint formPosition(const QRect& mainFrame, const QSize& form, const QSize& desktop, FormSide side);

/// Top left corner of the first window, `side` pixels square: centred, on the left half of a twin-monitor
/// desktop.
QPoint firstWindowPosition(const QSize& desktop, int side);

} // namespace tirn
