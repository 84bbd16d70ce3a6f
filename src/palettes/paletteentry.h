#pragma once

#include <cstdint>

namespace tirn {

/// The record that passes between a palette file and a palette.
struct PaletteEntry
{
    std::uint16_t red = 0;
    std::uint16_t green = 0;
    std::uint16_t blue = 0;
    std::uint16_t alpha = 0;

    bool operator==(const PaletteEntry&) const = default;
};

} // namespace tirn
