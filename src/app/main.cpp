#include <QSurfaceFormat>

#include "app/messagehandler.h"
#include "app/tirnapplication.h"
#include "base/log.h"

int main(int argc, char** argv)
{
    tirn::installMessageHandler();
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (tirn::wantsUsage(arguments)) {
        for (const QString& line : tirn::usageText(arguments.value(0)))
            tirn::log(tirn::LogLevel::Warning, line);
        return 0;
    }
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    QSurfaceFormat::setDefaultFormat(tirn::surfaceFormat());
    tirn::TirnApplication application(argc, argv);
    QObject::connect(&application, &QGuiApplication::lastWindowClosed, &application, &QCoreApplication::quit);
    if (!application.initializeGl()) {
        tirn::logWarning("This system has no OpenGL support. Exiting.");
        return -1;
    }
    QCoreApplication::postEvent(&application, new tirn::StartEvent);
    if (application.currentWidget() == nullptr)
        return 0;
    return QCoreApplication::exec();
}
