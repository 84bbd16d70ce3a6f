#pragma once

#include <span>

namespace tirn {

/// The numbers of the curve formulas; the defaults are those that people start from.
struct CurveParameters
{
    double scale = 1;
    double power = 1;
    /// In slices.
    double offset = 0;
    /// The largest multiplier.
    int maximum = 4;

    bool operator==(const CurveParameters&) const = default;
};

/// 1 + maximum * scale * ((i - offset) / (n - 1))^power, cut to the maximum, and exactly 1 in front of the
/// offset. A curve of one slice holds what the division by zero gives.
void powerCurve(std::span<double> curve, const CurveParameters& parameters);

/// (i - offset) / ((n - 1) / maximum) + 1, cut to the maximum. Scale and power play no part.
void linearCurve(std::span<double> curve, double offset, int maximum);

} // namespace tirn
