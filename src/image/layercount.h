#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tirn {

/// The layers from first to last, inclusive, every step-th, in integer division: what is left of a last step
/// does not count. 0 for a range or a step that leads nowhere.
constexpr int layerCount(int first, int last, int step)
{
    if (step < 1 || last < first)
        return 0;
    return static_cast<int>(
        std::min<std::int64_t>((std::int64_t{last} - first + 1) / step, std::numeric_limits<int>::max()));
}

} // namespace tirn
