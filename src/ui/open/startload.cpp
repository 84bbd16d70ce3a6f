#include "ui/open/startload.h"

#include <QCoreApplication>

#include "ui/messages.h"

namespace tirn {

LoadDescription freshLoad(const FormServices& services)
{
    return LoadDescription(services.settings.defaultEncode);
}

void startLoad(ToolForm& form, const FormServices& services, LoadDescription load)
{
    const bool wasShown = form.isVisible();
    form.hide();
    QCoreApplication::processEvents();
    if (services.loads.startLoad(std::move(load)))
        return;
    if (wasShown)
        form.show();
    showMessage(&form, QMessageBox::Warning, QObject::tr("File Load Error"),
                QObject::tr("Another stack is being loaded. Please wait until it stands, or cancel it."));
}

} // namespace tirn
