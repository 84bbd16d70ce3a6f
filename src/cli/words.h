#pragma once

#include <utility>
#include <vector>

#include <QCommandLineParser>
#include <QStringList>

#include "cli/toolerror.h"

namespace tirn {

/// The words that an option takes, and what each stands for; the first is the default.
template <class Value>
using Words = std::vector<std::pair<QString, Value>>;

/// What the word of an option stands for, in whichever case it is written; throws UsageError for another.
template <class Value>
Value wordOption(const QCommandLineParser& parser, const char* option, const Words<Value>& words)
{
    const QString text = parser.isSet(option) ? parser.value(option) : words.front().first;
    QStringList names;
    for (const auto& [name, value] : words) {
        if (name.compare(text, Qt::CaseInsensitive) == 0)
            return value;
        if (!names.contains(name))
            names.append(name);
    }
    throw UsageError{QString("--%1: '%2' is none of %3").arg(option, text, names.join(", "))};
}

} // namespace tirn
