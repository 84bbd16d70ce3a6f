#pragma once

#include <functional>
#include <vector>

#include "support/slowstack.h"

namespace tirn::test {

// Depth correction by its definitions, one number at a time and from the voxels themselves.

std::vector<double> slowPowerCurve(int slices, double scale, double power, double offset, int maximum);
std::vector<double> slowLinearCurve(int slices, double offset, int maximum);

/// The entropy of a channel in bits after each slice was multiplied: of every voxel's product the fraction
/// counts for the value below and what is left for the value above, and what has no value above counts for
/// the last of `bins`.
double slowScaledEntropy(const SlowStack& stack, int channel, int bins, const std::vector<double>& curve);

/// The mean of each slice of a channel.
std::vector<double> slowSliceMeans(const SlowStack& stack, int channel);

/// What a root finder said and did.
struct SlowRoot
{
    double x = 0;
    int calls = 0;
    bool bracketed = true;
    bool converged = true;
};

/// Brent's method as the textbooks print it, every variable of 32 bits.
SlowRoot slowBrent(const std::function<double(double)>& f, double x1, double x2, double tolerance);

} // namespace tirn::test
