#pragma once

#include <functional>
#include <optional>

#include <QStringList>

namespace tirn {

/// What the arguments of the program name.
struct CommandLine
{
    /// The first session; nothing else counts when there is one.
    QString session;
    QStringList palettes;
    std::vector<unsigned> paletteIds;
    QStringList stacks;
    /// Names of no file, and of files that no reader knows.
    QStringList missing;
    QStringList unknown;

    bool operator==(const CommandLine&) const = default;
};

/// True when an argument asks for the usage text: -h, -? or --help.
bool wantsUsage(const QStringList& arguments);

/// The two lines of the usage text.
QStringList usageText(const QString& program);

/// Sorts the arguments after the program's name. `isStack` tells whether an existing file can be read.
CommandLine parseCommandLine(const QStringList& arguments,
                             const std::function<bool(const QString&)>& isStack);

} // namespace tirn
