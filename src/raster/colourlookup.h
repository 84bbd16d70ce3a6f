#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tirn {

/// Places between the entries of a table are counted in parts of an entry.
inline constexpr int kPlaceBits = 6;
inline constexpr int kPlacesPerEntry = 1 << kPlaceBits;

/// A palette as it is looked up: between the centres of its entries, the ends reaching half an entry further.
class ColourLookup
{
public:
    ColourLookup() = default;
    /// Four bytes R, G, B, A an entry; one entry at least.
    explicit ColourLookup(std::span<const std::uint8_t> rgba);

    int entries() const { return m_entries; }
    int lastPlace() const { return (m_entries - 1) * kPlacesPerEntry; }
    /// Entries as R | G << 8 | B << 16 | A << 24, the last one twice.
    const std::uint32_t* packed() const { return m_packed.data(); }
    /// Whether nothing between two places, inclusive, has any opacity.
    bool isClear(int leastPlace, int mostPlace) const;

private:
    int m_entries = 0;
    std::vector<std::uint32_t> m_packed;
    /// How many entries before each one have an opacity.
    std::vector<int> m_seenBefore;
};

} // namespace tirn
