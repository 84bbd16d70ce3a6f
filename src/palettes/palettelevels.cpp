#include "palettes/palettelevels.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tirn {

namespace {

/// How far a sum may be below a whole number by rounding alone.
constexpr double kSlack = 1e-9;
/// What lies between black and white at least, in entries.
constexpr double kLeastSpan = 1;

/// The first value whose running sum exceeds `share`, from either end.
template <class Iterator>
std::ptrdiff_t valuesBelow(Iterator first, Iterator last, double share)
{
    double sum = 0;
    const auto found = std::find_if(first, last, [&](auto count) {
        sum += static_cast<double>(count);
        return sum > share;
    });
    return found - first;
}

} // namespace

PaletteLevels wholeRange(int size) { return {0, static_cast<double>(std::max(size - 1, 1)), 1}; }

PaletteLevels usableLevels(PaletteLevels levels, int size)
{
    const double last = wholeRange(size).white;
    levels.black = std::clamp(levels.black, 0.0, last - kLeastSpan);
    levels.white = std::clamp(levels.white, levels.black + kLeastSpan, last);
    levels.gamma = std::clamp(levels.gamma, kLeastGamma, kLargestGamma);
    return levels;
}

std::vector<double> spread(const std::vector<double>& base, const PaletteLevels& levels)
{
    const auto size = static_cast<int>(base.size());
    if (size < 2 || levels == wholeRange(size))
        return base;
    const PaletteLevels usable = usableLevels(levels, size);
    std::vector<double> result(base.size());
    for (int i = 0; i < size; ++i) {
        const double part = (i - usable.black) / (usable.white - usable.black);
        const double place = std::pow(std::clamp(part, 0.0, 1.0), 1 / usable.gamma) * (size - 1);
        const auto below = std::min(static_cast<std::size_t>(place), base.size() - 2);
        const double beyond = place - static_cast<double>(below);
        result[static_cast<std::size_t>(i)] =
            std::floor(base[below] + beyond * (base[below + 1] - base[below]) + kSlack);
    }
    return result;
}

PaletteLevels autoLevels(const Histogram& histogram, int paletteDepth, int stackDepth, double clipped)
{
    const PaletteLevels whole = wholeRange(1 << paletteDepth);
    const double total = std::accumulate(histogram.begin(), histogram.end(), 0.0);
    if (total <= 0)
        return whole;
    const double share = clipped * total;
    const auto lowest = valuesBelow(histogram.begin(), histogram.end(), share);
    const auto highest = static_cast<std::ptrdiff_t>(histogram.size()) - 1 -
                         valuesBelow(histogram.rbegin(), histogram.rend(), share);
    const auto onPalette = [&](std::ptrdiff_t value) {
        return std::ldexp(static_cast<double>(value), paletteDepth - stackDepth);
    };
    return usableLevels({onPalette(lowest), onPalette(highest), 1}, 1 << paletteDepth);
}

} // namespace tirn
