#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QString>
#include <QStringList>

#include "image/rawlayout.h"
#include "palettes/palettelist.h"
#include "volume/voxelarray.h"

namespace tirn {

/// What a load makes.
struct LoadedStack
{
    std::unique_ptr<VoxelArray> array;
    /// The files as the load was given them.
    std::vector<QStringList> files;
    /// Palettes that channels of the stack count on and that are to be appended to the program's list.
    PaletteList palettes;
    /// How headerless files were read.
    std::optional<RawLayout> raw;
    /// What the files did not hold, although they could be read.
    QStringList gaps;
};

/// What a load reports, on the thread that loads.
struct LoadReport
{
    /// Message (empty: keep), value, total (-1: continue from the last base), done.
    std::function<void(const QString&, int, int, bool)> progress;
    std::function<void(LoadedStack)> loaded;
};

} // namespace tirn
