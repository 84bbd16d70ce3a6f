#pragma once

#include <functional>
#include <vector>

#include <QString>
#include <QStringList>

#include "image/imageattributes.h"

namespace tirn {

/// What the names of dropped files say.
struct DroppedNames
{
    /// A session; nothing else counts then.
    QString session;
    QStringList palettes;
    /// What only a look into the files can tell.
    QStringList others;
    /// A folder stood in the first place.
    bool isFolder = false;
};

/// The stacks among files that were dropped on the program.
struct DroppedFiles
{
    /// The first name of a folder of single-page TIFFs: which of its digits mean what must be asked.
    QString sequence;
    /// The stack to load, as in a load. Empty for none.
    std::vector<QStringList> files;
    int channels = 0;
    int timePoints = 0;
    /// Names that are no stack.
    QStringList unknown;

    bool operator==(const DroppedFiles&) const = default;
};

/// What a file's header says of a stack; `Unknown` for no stack at all.
using StackProbe = std::function<ImageAttributes(const QString& name)>;

/// Sorts dropped names. The entries of a directory in the first place stand for it.
DroppedNames sortDroppedNames(QStringList names);

/// Makes stacks of the other names. Bio-Rad files are one stack with a channel each; anything else is a time
/// point each.
DroppedFiles sortDroppedFiles(const DroppedNames& sorted, const StackProbe& probe);

} // namespace tirn
