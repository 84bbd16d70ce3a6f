#pragma once

#include <vector>

#include "raster/colourlookup.h"
#include "raster/sliceset.h"
#include "raster/tilekernels.h"

namespace tirn {

/// The ranges of samples that a channel draws nothing for.
class ClearRanges
{
public:
    ClearRanges() = default;
    ClearRanges(const TileChannel& channel, const ColourLookup& colours);

    /// Whether all samples of a range, and all between them, are clear. Some that are may be missed.
    bool contains(const ValueRange& range) const
    {
        const int least = m_hasCurve ? curved(range.least, m_leastCurve) : range.least;
        const int most = m_hasCurve ? curved(range.most, m_mostCurve) + 1 : range.most;
        return most >> m_shift <= m_lastClear[static_cast<std::size_t>(least >> m_shift)];
    }

private:
    int curved(int value, float factor) const;

    /// Samples of two bytes are told apart by their upper 12 bits.
    int m_shift = 0;
    int m_most = 255;
    /// For each value up to which greater one all is clear; less than itself if it is not.
    std::vector<int> m_lastClear;
    bool m_hasCurve = false;
    float m_leastCurve = 1;
    float m_mostCurve = 1;
};

} // namespace tirn
