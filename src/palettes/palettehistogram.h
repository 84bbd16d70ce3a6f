#pragma once

#include <vector>

#include "image/statistics/stackstats.h"
#include "palettes/palette.h"

namespace tirn {

/// The bits of the scale on which a picture looks its samples up: those of the texels, or the significant
/// ones of deep data that are stretched.
int shownDepth(int bitDepth, int significantBits, bool stretched);

/// The voxels that look up each index of a palette: the counts of a stack of `stackDepth` bits, those of
/// values that share an index added up.
std::vector<double> countsOnPalette(const Histogram& histogram, int paletteDepth, int stackDepth);

/// Histogram and mode of a stack on the same scale, for what equalises a palette.
StackStats statsOnPalette(const StackStats& stats, int paletteDepth, int stackDepth);

enum class HistogramScale { Formula, Ramp, Logarithm };

/// How high counts are drawn: floor(pow((count + offset) / top, power) * top * scale) with the highest count
/// as top, or count + offset, or on a logarithmic scale that ends at the top. Never below 0.
std::vector<double> histogramHeights(const std::vector<double>& counts, const PaletteCurve& axis,
                                     HistogramScale scale);

} // namespace tirn
