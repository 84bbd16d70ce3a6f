#pragma once

#include <atomic>
#include <cstdint>

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tirn {

/// What the tool says: answers on stdout, everything else on stderr.
class Console
{
public:
    /// Lets the log through to stderr, or keeps it silent.
    static void setVerbose(bool verbose);

    static void answer(const QString& text);
    /// Raw bytes on stdout; false when they could not be written.
    static bool answerBytes(const void* bytes, std::int64_t count);
    /// "tirntool: FILE: TEXT" for each text.
    static void report(const QString& file, const QStringList& texts);
    static void line(const QString& text);

    /// Makes Ctrl-C set `interrupted` instead of ending the program.
    static void catchInterrupts();
    static const std::atomic<bool>& interrupted();
    /// Throws Interrupted when Ctrl-C was pressed.
    static void checkInterrupt();
};

} // namespace tirn
