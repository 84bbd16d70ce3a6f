#include "ui/startload.h"

#include <QCoreApplication>

#include "ui/messages.h"

namespace tirn {

LoadDescription freshLoad(const OpenServices& services)
{
    return LoadDescription(services.settings.defaultEncode);
}

void startLoad(QWidget& form, const OpenServices& services, LoadDescription load)
{
    const bool wasShown = form.isVisible();
    form.hide();
    QCoreApplication::processEvents();
    services.load() = std::move(load);
    if (services.startLoad())
        return;
    if (wasShown)
        form.show();
    showMessage(&form, QMessageBox::Warning, QObject::tr("File Load Error"),
                QObject::tr("Another stack is being loaded. Please wait until it stands, or cancel it."));
}

} // namespace tirn
