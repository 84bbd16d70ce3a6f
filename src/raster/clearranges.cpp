#include "raster/clearranges.h"

#include <algorithm>

namespace tirn {

namespace {

/// By how much numbers with fractions may be off, in places.
constexpr float kPlaceSlack = 0.01F;

/// The place of a sample, or of one that is that much off.
int placeOf(const TileChannel& channel, int value, float slack)
{
    if (channel.isPlain)
        return bytePlace(value * 128);
    const float stretched = static_cast<float>(value) * channel.unit * channel.stretch;
    return static_cast<int>(widePlace(std::min(stretched, 1.0F), channel.entries) + 0.5F + slack);
}

} // namespace

ClearRanges::ClearRanges(const TileChannel& channel, const ColourLookup& colours)
    : m_shift(channel.bytesPerSample == 1 ? 0 : 4), m_most(channel.bytesPerSample == 1 ? 255 : 65535),
      m_hasCurve(!channel.curve.empty())
{
    const int steps = (m_most >> m_shift) + 1;
    const auto isClear = [&](int first, int last) {
        const int most = (last << m_shift) + (1 << m_shift) - 1;
        return colours.isClear(placeOf(channel, first << m_shift, -kPlaceSlack),
                               placeOf(channel, most, kPlaceSlack));
    };
    m_lastClear.resize(static_cast<std::size_t>(steps));
    for (int step = steps - 1; step >= 0; --step) {
        int& last = m_lastClear[static_cast<std::size_t>(step)];
        if (!isClear(step, step))
            last = step - 1;
        else
            last = step + 1 < steps && isClear(step, step + 1)
                       ? std::max(step, m_lastClear[static_cast<std::size_t>(step) + 1])
                       : step;
    }
    if (m_hasCurve) {
        const auto [least, most] = std::minmax_element(channel.curve.begin(), channel.curve.end());
        m_leastCurve = *least * channel.curveFactor;
        m_mostCurve = *most * channel.curveFactor;
    }
}

int ClearRanges::curved(int value, float factor) const
{
    const float curved = static_cast<float>(value) * factor;
    return static_cast<int>(std::clamp(curved, 0.0F, static_cast<float>(m_most - 1)));
}

} // namespace tirn
