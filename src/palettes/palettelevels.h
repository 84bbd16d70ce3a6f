#pragma once

#include <vector>

#include "image/statistics/stackstats.h"

namespace tirn {

/// Where on the index axis of a palette its colours begin and end, and how they are spread between.
struct PaletteLevels
{
    /// The index up to which everything has the first colour, and the one from which on it has the last.
    double black = 0;
    double white = 255;
    /// Above 1 the middle comes out brighter.
    double gamma = 1;

    bool operator==(const PaletteLevels&) const = default;
};

constexpr double kLeastGamma = 0.1;
constexpr double kLargestGamma = 10;
/// The part of the voxels that automatic levels cut off at each end.
constexpr double kAutoClipped = 0.0035;

/// The levels that change nothing in a table of `size` entries.
PaletteLevels wholeRange(int size);

/// Levels that a table of `size` entries can have: in its range, white above black, gamma within its limits.
PaletteLevels usableLevels(PaletteLevels levels, int size);

/// A table as long as `base` whose entry i is that of `base` at the place of i: ((i - black) / (white -
/// black)) ^ (1 / gamma) of the whole, between two entries on the line between them, floored. These are the
/// numbers of a palette's curve with the offset black, the power 1 / gamma and the scale that reaches the top
/// at white.
std::vector<double> spread(const std::vector<double>& base, const PaletteLevels& levels);

/// Levels that cut off `clipped` of the voxels counted at each end. The histogram is one of a stack of
/// `stackDepth` bits, the levels are those of a palette of `paletteDepth` bits. Without counts the whole
/// range.
PaletteLevels autoLevels(const Histogram& histogram, int paletteDepth, int stackDepth,
                         double clipped = kAutoClipped);

} // namespace tirn
