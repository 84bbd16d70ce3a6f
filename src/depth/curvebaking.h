#pragma once

#include <span>
#include <vector>

#include "base/progress.h"

namespace tirn {

class ImageFile;

/// Multiplies the voxels of each slice by the curves, one curve a channel of the stack, rounds, and cuts at
/// 2^depth - 1. All curves change the first channel, one after the other; the other channels keep their
/// values. A multiplier that is not a number leaves its samples as they are, and a negative result is 0.
/// Slices without a multiplier stay. The largest value becomes unknown, and the statistics are for the caller
/// to renew. False when cancelled, with some slices changed.
bool bakeCurves(ImageFile& stack, std::span<const std::vector<double>> curves, const Progress& progress = {});

} // namespace tirn
