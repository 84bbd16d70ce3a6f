#pragma once

#include <vector>

#include "support/slowstack.h"

namespace tirn::test {

// Filters by their definition: for each voxel a plain loop over its window. `channel` -1 means all.

SlowStack slowMaxFilter(const SlowStack& stack, int size, int channel, bool is3D);
SlowStack slowMinFilter(const SlowStack& stack, int size, int channel, bool is3D);
SlowStack slowMeanFilter(const SlowStack& stack, int size, int channel, bool is3D);
/// `minima` are those of the statistics, one a channel.
SlowStack slowMedianFilter(const SlowStack& stack, int size, int channel, bool is3D,
                           const std::vector<int>& minima);
SlowStack slowBackgroundSubtract(const SlowStack& stack, int size, int channel, int percent,
                                 const std::vector<int>& minima);
SlowStack slowZFilter(const SlowStack& stack, int size, int channel, int threshold);
SlowStack slowAddConstant(const SlowStack& stack, int value, int channel);
SlowStack slowConvolution(const SlowStack& stack, const std::vector<double>& kernel, int width, int height,
                          int channel);

/// The lowest sample of each channel.
std::vector<int> minimaOf(const SlowStack& stack);

} // namespace tirn::test
