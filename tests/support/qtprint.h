#pragma once

#include <ostream>

#include <QString>

// How a failed comparison shows the toolkit's text. GoogleTest looks for this beside the type.
// NOLINTNEXTLINE(readability-identifier-naming)
inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}
