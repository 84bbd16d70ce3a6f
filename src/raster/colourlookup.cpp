#include "raster/colourlookup.h"

#include <algorithm>

namespace tirn {

ColourLookup::ColourLookup(std::span<const std::uint8_t> rgba)
    : m_entries(std::max(1, static_cast<int>(rgba.size() / 4)))
{
    const auto count = static_cast<std::size_t>(m_entries);
    m_packed.resize(count + 1);
    m_seenBefore.resize(count + 2);
    for (std::size_t i = 0; i < rgba.size() / 4; ++i) {
        const auto part = [&](std::size_t k) {
            return static_cast<std::uint32_t>(rgba[4 * i + k]) << (8 * k);
        };
        m_packed[i] = part(0) | part(1) | part(2) | part(3);
    }
    m_packed[count] = m_packed[count - 1];
    for (std::size_t i = 0; i <= count; ++i)
        m_seenBefore[i + 1] = m_seenBefore[i] + (m_packed[i] >> 24 != 0 ? 1 : 0);
}

bool ColourLookup::isClear(int leastPlace, int mostPlace) const
{
    const int first = std::clamp(leastPlace >> kPlaceBits, 0, m_entries - 1);
    const int last = std::clamp((mostPlace + kPlacesPerEntry - 1) >> kPlaceBits, 0, m_entries);
    return m_seenBefore[static_cast<std::size_t>(last) + 1] == m_seenBefore[static_cast<std::size_t>(first)];
}

} // namespace tirn
