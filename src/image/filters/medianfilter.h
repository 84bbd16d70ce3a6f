#pragma once

#include "image/imagefile.h"

namespace tirn {

/// The widest window of the median in three dimensions: counters of columns have 16 bits.
inline constexpr int kWidestMedianCube = 255;

/// The middle value of a window of 2h + 1 voxels an axis, edges repeated. Values below the minimum of the
/// statistics, or above the depth, count as the largest. Windows above `kWidestWindow`, and in 3D above
/// `kWidestMedianCube`, are refused.
bool medianFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress = {});

/// Takes percent / 100 of the 2D median off each sample.
bool backgroundSubtract(ImageFile& stack, int size, int channel, int percent, const Progress& progress = {});

} // namespace tirn
