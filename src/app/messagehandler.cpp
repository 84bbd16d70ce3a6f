#include "app/messagehandler.h"

#include <cstdio>
#include <cstdlib>

#include <QString>
#include <QtGlobal>

namespace tirn {

namespace {

void handleMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message)
{
    const QByteArray text = message.toLocal8Bit();
    switch (type) {
    case QtDebugMsg:
    case QtInfoMsg:
        std::fprintf(stdout, "Debug: %s\n", text.constData());
        std::fflush(stdout);
        return;
    case QtWarningMsg:
    case QtCriticalMsg:
        std::fprintf(stderr, "Warning: %s\n", text.constData());
        return;
    case QtFatalMsg:
        std::fprintf(stderr, "Fatal: %s\n", text.constData());
        std::abort();
    }
}

} // namespace

void installMessageHandler() { qInstallMessageHandler(&handleMessage); }

} // namespace tirn
