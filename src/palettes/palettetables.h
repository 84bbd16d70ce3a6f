#pragma once

#include <cstdint>
#include <span>

namespace tirn {

/// Where the tables of palettes go: the graphics card, or a recorder in a test.
class PaletteTables
{
public:
    virtual ~PaletteTables() = default;

    /// Puts `rgba`, four bytes an entry, on the card. `handle` is what an earlier call returned, 0 for a new
    /// table. Returns the table's handle, 0 when nothing was made. Throws the GL error code as an int.
    virtual unsigned upload(unsigned handle, std::span<const std::uint8_t> rgba) = 0;
    virtual void release(unsigned handle) = 0;
};

} // namespace tirn
