#include "cli/console.h"

#include <csignal>
#include <cstdio>

#include <QtGlobal>

#include "cli/toolerror.h"

namespace tirn {

namespace {

std::atomic<bool> verboseLog = false;
std::atomic<bool> interruptFlag = false;

void writeLine(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
}

void handleMessage(QtMsgType, const QMessageLogContext&, const QString& text)
{
    if (verboseLog)
        writeLine(stderr, text);
}

extern "C" void handleInterrupt(int signal)
{
    interruptFlag = true;
    // A second one ends the program at once.
    std::signal(signal, SIG_DFL);
}

} // namespace

void Console::setVerbose(bool verbose)
{
    verboseLog = verbose;
    qInstallMessageHandler(handleMessage);
}

void Console::answer(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    answerBytes(bytes.constData(), bytes.size());
}

bool Console::answerBytes(const void* bytes, std::int64_t count)
{
    const auto size = static_cast<std::size_t>(count);
    return std::fwrite(bytes, 1, size, stdout) == size && std::fflush(stdout) == 0;
}

void Console::report(const QString& file, const QStringList& texts)
{
    for (const QString& text : texts)
        line(file + QLatin1String(": ") + text.trimmed());
}

void Console::line(const QString& text) { writeLine(stderr, QLatin1String("tirntool: ") + text); }

void Console::catchInterrupts()
{
    std::signal(SIGINT, handleInterrupt);
    std::signal(SIGTERM, handleInterrupt);
}

const std::atomic<bool>& Console::interrupted() { return interruptFlag; }

void Console::checkInterrupt()
{
    if (interruptFlag)
        throw Interrupted{};
}

} // namespace tirn
