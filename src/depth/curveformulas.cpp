#include "depth/curveformulas.h"

#include <cmath>

namespace tirn {

namespace {

/// Lets a multiplier that is not a number through, as a comparison does.
double cutTo(int maximum, double value) { return value > maximum ? maximum : value; }

} // namespace

void powerCurve(std::span<double> curve, const CurveParameters& parameters)
{
    const double last = static_cast<double>(curve.size()) - 1;
    for (std::size_t i = 0; i < curve.size(); ++i) {
        const double distance = static_cast<double>(i) - parameters.offset;
        double rise = 0;
        if (distance >= 0)
            rise = parameters.maximum * parameters.scale * std::pow(distance / last, parameters.power);
        curve[i] = cutTo(parameters.maximum, rise + 1);
    }
}

void linearCurve(std::span<double> curve, double offset, int maximum)
{
    const double step = (static_cast<double>(curve.size()) - 1) / maximum;
    // There is no lower bound: slices in front of the offset get multipliers below 1.
    for (std::size_t i = 0; i < curve.size(); ++i)
        curve[i] = cutTo(maximum, (static_cast<double>(i) - offset) / step + 1);
}

} // namespace tirn
