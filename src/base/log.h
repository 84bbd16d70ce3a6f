#pragma once

#include <QString>

namespace tirn {

/// The three message levels of the program; the numbers are those of the message handler.
enum class LogLevel { Debug = 0, Warning = 1, Fatal = 2 };

/// Hands `text` to the toolkit's message handler. Fatal never returns: it aborts.
void log(LogLevel level, const QString& text);

/// printf-style shorthands. Numbers are always written the C way, whatever the locale; %s takes UTF-8.
void logDebug(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));
[[noreturn]] void logFatal(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// The assertion report that carries on: ASSERT: "expression" in source (line), at warning level.
void logAssertion(const char* expression, const char* source, int line);

/// A number as a stream prints it: `g` format with 6 significant digits.
QString plainNumber(double value);

} // namespace tirn
