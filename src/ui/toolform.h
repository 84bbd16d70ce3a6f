#pragma once

#include <QDialog>
#include <QDomElement>

#include "ui/formservices.h"

namespace tirn {

/// A form beside the picture. It shows values of the scene and changes them through the model; what it works
/// out is a free function elsewhere.
///
/// It follows the kinds of changes that it names, and takes them over only while it is shown. Widgets are set
/// without sending signals, so that no value comes back to where it came from.
class ToolForm : public QDialog
{
    Q_OBJECT

public:
    ToolForm(const FormServices& services, Changes follows, QWidget* parent);

    /// Writes the form's own attributes and children into its element of a session, and reads them.
    virtual void saveSession(QDomElement& element) const;
    virtual void loadSession(const QDomElement& element);

    /// The window that the form stands in: itself, or the dock that holds it.
    QWidget* frame() const;
    /// Shows or hides the form together with that window.
    void setShown(bool shown);
    bool isShown() const { return frame()->isVisible(); }

public Q_SLOTS:
    /// Closes the window that the form stands in.
    void done(int result) override;

protected:
    /// Takes over from the scene what changed. Called while the form is shown, with all signals of its
    /// widgets blocked; with all changes when it comes up.
    virtual void refresh(Changes changes);
    const FormServices& services() const { return m_services; }
    const Scene& scene() const { return m_services.model.scene(); }
    void edit(Changes changes, const SceneModel::Edit& change) { m_services.model.edit(changes, change); }

    void showEvent(QShowEvent* event) override;

private:
    void follow(Changes changes);

    FormServices m_services;
    Changes m_follows;
};

} // namespace tirn
