#include "palettes/palettewindow.h"

#include <algorithm>

#include "base/log.h"
#include "palettes/palettelist.h"

namespace tirn {

PaletteWindow fittedWindow(PaletteWindow window, int size)
{
    window.span = std::clamp(window.span, std::min(kLeastWindowSpan, size), size);
    window.start = std::clamp(window.start, 0, size - window.span);
    return window;
}

PaletteWindow zoomedIn(PaletteWindow window, int size)
{
    return fittedWindow({window.start, std::max(window.span / 2, kLeastWindowSpan)}, size);
}

PaletteWindow zoomedOut(PaletteWindow window, int size)
{
    return fittedWindow({window.start, std::min(window.span, size) * 2}, size);
}

namespace {

struct ValueInterval
{
    int lower;
    int upper;
};

/// The interval of values, 16 of them at least, that leaves the shares out.
ValueInterval intervalOfData(const std::vector<double>& counts, double total, double lowPercent,
                             double highPercent)
{
    const auto last = static_cast<int>(counts.size()) - 1;
    const auto passed = [&](double& sum, int value, double percent) {
        sum += counts[static_cast<std::size_t>(value)];
        return sum * 100 / total > percent;
    };
    ValueInterval found = {0, last};
    for (double sum = 0; found.lower < last && !passed(sum, found.lower, lowPercent);)
        ++found.lower;
    for (double sum = 0; found.upper > 0 && !passed(sum, found.upper, highPercent);)
        --found.upper;
    if (found.lower > found.upper)
        found.upper = found.lower + kLeastWindowSpan - 1;
    if (found.lower + kLeastWindowSpan > last)
        found.lower = std::max(0, last - kLeastWindowSpan);
    if (found.upper - (kLeastWindowSpan - 1) <= found.lower)
        found.upper = std::max(found.lower + kLeastWindowSpan - 1, kLeastWindowSpan - 1);
    return found;
}

} // namespace

PaletteWindow windowOfData(const Histogram& histogram, int lastValue, double lowPercent, double highPercent,
                           int paletteDepth, int stackDepth)
{
    const int size = 1 << paletteDepth;
    std::vector<double> counts(static_cast<std::size_t>(std::max(lastValue, 0)) + 1, 0.0);
    double total = 0;
    for (std::size_t i = 0; i < std::min(counts.size(), histogram.size()); ++i)
        total += counts[i] = static_cast<double>(histogram[i]);
    if (total <= 0)
        return {0, size};
    const ValueInterval shown = intervalOfData(counts, total, lowPercent, highPercent);
    logDebug("max %d min %d", shown.upper, shown.lower);
    const auto onPalette = [&](int value) {
        return static_cast<int>(fromPaletteIndex(value, paletteDepth, stackDepth));
    };
    return fittedWindow({onPalette(shown.lower), onPalette(shown.upper - shown.lower + 1)}, size);
}

} // namespace tirn
