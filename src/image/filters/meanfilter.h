#pragma once

#include "image/imagefile.h"

namespace tirn {

/// The sum over a window of 2h + 1 voxels an axis, edges repeated, in 32 bits, divided by size * size in 2D
/// and in 3D alike; cut to the sample's width. Windows above `kWidestWindow` are refused.
bool meanFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress = {});

} // namespace tirn
