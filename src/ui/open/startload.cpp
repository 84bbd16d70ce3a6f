#include "ui/open/startload.h"

#include "ui/messages.h"

namespace tirn {

LoadDescription freshLoad(const FormServices& services)
{
    return LoadDescription(services.settings.defaultEncode);
}

bool startLoad(ToolForm& form, const FormServices& services, LoadDescription load)
{
    if (services.loads.startLoad(std::move(load)))
        return true;
    showMessage(&form, QMessageBox::Warning, QObject::tr("File Load Error"),
                QObject::tr("Another stack is being loaded. Please wait until it stands, or cancel it."));
    return false;
}

void startLoadOf(ToolForm& form, const FormServices& services, LoadDescription load)
{
    if (startLoad(form, services, std::move(load)))
        form.hide();
}

} // namespace tirn
