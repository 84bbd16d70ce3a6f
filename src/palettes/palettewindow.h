#pragma once

#include "image/statistics/stackstats.h"

namespace tirn {

/// The part of a palette's index axis that is shown.
struct PaletteWindow
{
    int start = 0;
    int span = 256;

    bool operator==(const PaletteWindow&) const = default;
};

constexpr int kLeastWindowSpan = 16;

/// The window moved back, and made smaller where it must be, so that it lies in a table of `size` entries.
PaletteWindow fittedWindow(PaletteWindow window, int size);

/// Half of it, from the same start; never less than the least span.
PaletteWindow zoomedIn(PaletteWindow window, int size);
/// Twice of it, moved back where it would leave the table.
PaletteWindow zoomedOut(PaletteWindow window, int size);

/// The window that leaves out `lowPercent` and `highPercent` of the voxels at the two ends of a stack's scale
/// of 0..`lastValue`, on a palette's scale. Without counts the whole table.
PaletteWindow windowOfData(const Histogram& histogram, int lastValue, double lowPercent, double highPercent,
                           int paletteDepth, int stackDepth);

} // namespace tirn
