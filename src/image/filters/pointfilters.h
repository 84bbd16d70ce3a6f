#pragma once

#include <vector>

#include "image/imagefile.h"

namespace tirn {

/// Replaces each sample v by 2^bitDepth - 1 - v. A cancelled run leaves the stack as it was.
void invert(ImageFile& stack, const Progress& progress = {});

/// Adds to each sample and keeps the sum within the depth. A cancelled run leaves the samples at the front of
/// the buffer changed and those behind them as they were.
bool addConstant(ImageFile& stack, int value, int channel, const Progress& progress = {});

/// A bit for each voxel whose sample is at or above the threshold; empty when channel or threshold is out of
/// range.
std::vector<bool> thresholdMask(ImageFile& stack, int channel, int threshold);

/// n x n values of a Gaussian, n = floor(3 sigma), one more where that is even; not normalised. Empty for a
/// sigma that is not above 0, or above 10,000.
std::vector<double> gaussianKernel(double sigma);

} // namespace tirn
