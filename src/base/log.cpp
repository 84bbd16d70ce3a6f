#include "base/log.h"

#include <cstdarg>
#include <cstdlib>

#include <QtGlobal>

namespace tirn {

void log(LogLevel level, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    switch (level) {
    case LogLevel::Debug:
        qDebug("%s", bytes.constData());
        return;
    case LogLevel::Warning:
        qWarning("%s", bytes.constData());
        return;
    case LogLevel::Fatal:
        qFatal("%s", bytes.constData());
    }
}

void logDebug(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString text = QString::vasprintf(format, arguments);
    va_end(arguments);
    log(LogLevel::Debug, text);
}

void logWarning(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString text = QString::vasprintf(format, arguments);
    va_end(arguments);
    log(LogLevel::Warning, text);
}

void logFatal(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString text = QString::vasprintf(format, arguments);
    va_end(arguments);
    log(LogLevel::Fatal, text);
    std::abort();
}

void logAssertion(const char* expression, const char* source, int line)
{
    logWarning("ASSERT: \"%s\" in %s (%d)", expression, source, line);
}

QString plainNumber(double value) { return QString::number(value, 'g', 6); }

} // namespace tirn
