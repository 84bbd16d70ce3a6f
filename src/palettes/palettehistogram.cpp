#include "palettes/palettehistogram.h"

#include <algorithm>
#include <cmath>

#include "palettes/palettelist.h"

namespace tirn {

int shownDepth(int bitDepth, int significantBits, bool stretched)
{
    if (bitDepth <= 8)
        return 8;
    if (stretched)
        return significantBits;
    // Samples of 9 to 12 bits share one fragment program, and so do those above.
    return bitDepth <= 12 ? 12 : 16;
}

std::vector<double> countsOnPalette(const Histogram& histogram, int paletteDepth, int stackDepth)
{
    std::vector<double> counts(std::size_t{1} << paletteDepth, 0.0);
    const double last = static_cast<double>(counts.size() - 1);
    for (std::size_t value = 0; value < histogram.size(); ++value) {
        const double index = fromPaletteIndex(static_cast<double>(value), paletteDepth, stackDepth);
        counts[static_cast<std::size_t>(std::min(index, last))] += static_cast<double>(histogram[value]);
    }
    return counts;
}

StackStats statsOnPalette(const StackStats& stats, int paletteDepth, int stackDepth)
{
    const std::vector<double> counts = countsOnPalette(stats.histogram, paletteDepth, stackDepth);
    StackStats shown;
    shown.histogram = Histogram(counts.begin(), counts.end());
    shown.mode = static_cast<std::uint32_t>(fromPaletteIndex(stats.mode, paletteDepth, stackDepth));
    return shown;
}

std::vector<double> histogramHeights(const std::vector<double>& counts, const PaletteCurve& axis,
                                     HistogramScale scale)
{
    const double top = counts.empty() ? 0 : *std::max_element(counts.begin(), counts.end());
    const auto height = [&](double count) {
        switch (scale) {
        case HistogramScale::Ramp:
            return count + axis.offset;
        case HistogramScale::Logarithm:
            return std::log1p(count) / std::log1p(top) * top;
        case HistogramScale::Formula:
            break;
        }
        const double part = std::max(0.0, (count + axis.offset) / top);
        return std::floor(std::pow(part, axis.power) * top * axis.scale);
    };
    std::vector<double> heights(counts.size(), 0.0);
    if (top > 0)
        std::transform(counts.begin(), counts.end(), heights.begin(),
                       [&](double count) { return std::max(0.0, height(count)); });
    return heights;
}

} // namespace tirn
