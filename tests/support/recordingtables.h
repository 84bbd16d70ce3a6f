#pragma once

#include <cstdint>
#include <vector>

#include "palettes/palettetables.h"

namespace tirn::test {

/// Remembers what palettes put on the card. Handles count from 1.
class RecordingTables : public PaletteTables
{
public:
    unsigned upload(unsigned handle, std::span<const std::uint8_t> rgba) override
    {
        ++uploads;
        last.assign(rgba.begin(), rgba.end());
        if (handle != 0)
            return handle;
        return ++made;
    }
    void release(unsigned handle) override { released.push_back(handle); }

    /// Four bytes of an entry of the table that came last.
    std::vector<int> entry(std::size_t index) const
    {
        return {last.begin() + static_cast<std::ptrdiff_t>(4 * index),
                last.begin() + static_cast<std::ptrdiff_t>(4 * index + 4)};
    }

    int uploads = 0;
    unsigned made = 0;
    std::vector<std::uint8_t> last;
    std::vector<unsigned> released;
};

} // namespace tirn::test
