#pragma once

#include <optional>
#include <vector>

#include <QDockWidget>
#include <QMainWindow>
#include <QPointer>

#include "ui/formlist.h"

class QSettings;

namespace tirn {

/// Makes forms on first use and shows or hides them. The main window owns them; tool forms are docks of it,
/// which float until the user docks them.
class FormTable : public QObject
{
    Q_OBJECT

public:
    /// Both outlive the table.
    FormTable(QMainWindow& mainWindow, const FormServices& services);

    /// Makes the form if need be and shows or hides it. Null, with a warning, when it cannot be made.
    ToolForm* create(FormId id, bool show);
    /// The form, made if need be and shown, or left as it is. Null when it cannot be made.
    ToolForm* needed(FormId id, bool show);
    /// The form, null while it was not made.
    ToolForm* form(FormId id) const;
    void createAllHidden();
    void hideAll();
    /// Keeps which forms are shown and docked, and where, and brings that back.
    void save(QSettings& store) const;
    void restore(QSettings& store);
    /// Shows a form where it was, for instance in an earlier run of the program.
    void moveTo(ToolForm& form, QPoint corner);

Q_SIGNALS:
    /// A form came up or went away, whoever asked for it.
    void visibilityChanged(tirn::FormId id, bool visible);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Made
    {
        FormId id;
        ToolForm* form;
        /// It was never shown, so that its place is still to be found.
        bool isUnplaced = true;
    };
    ToolForm* make(const FormRow& row);
    void putIntoDock(const FormRow& row, ToolForm& form);
    /// False for a form that stays where it is.
    bool needsPlace(const Made& made) const;
    void keepPictureSize();
    void resizePicture(QSize size);
    void place(Made& made);
    std::vector<QRect> takenPlaces(const Made& except) const;
    Made* made(FormId id);

    QMainWindow& m_mainWindow;
    FormServices m_services;
    QSize m_pictureSize;
    std::vector<Made> m_forms;
};

} // namespace tirn
