#pragma once

#include <algorithm>

namespace tirn {

/// Milliseconds between two time points of a playback of so many time points a second, in whole ones.
constexpr int millisecondsPerTimePoint(int timeRate) { return 1000 / std::max(1, timeRate); }

} // namespace tirn
