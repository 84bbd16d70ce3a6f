#pragma once

#include <functional>
#include <vector>

#include <QString>
#include <QStringList>

#include "image/imageattributes.h"

namespace tirn {

/// What files that were dropped on the program ask for.
struct DroppedFiles
{
    /// A session; nothing else counts then.
    QString session;
    QStringList palettes;
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

/// Sorts dropped names. The entries of a directory in the first place stand for it. Bio-Rad files are one
/// stack with a channel each; anything else is a time point each.
DroppedFiles sortDroppedFiles(QStringList names, const StackProbe& probe);

} // namespace tirn
