#include "raster/colourlookup.h"

#include <array>

#include <gtest/gtest.h>

namespace tirn {
namespace {

TEST(ColourLookup, IsClearBetweenEntriesWithoutOpacity)
{
    std::array<std::uint8_t, 32> table = {};
    table.fill(9);
    for (const std::size_t clear : {0, 1, 2, 5, 6})
        table[4 * clear + 3] = 0;
    const ColourLookup lookup(table);
    EXPECT_EQ(lookup.entries(), 8);
    const auto entry = [](int i) { return i * kPlacesPerEntry; };
    EXPECT_TRUE(lookup.isClear(0, entry(2)));
    // Between a clear entry and one with opacity something is seen.
    EXPECT_FALSE(lookup.isClear(0, entry(2) + 1));
    EXPECT_TRUE(lookup.isClear(entry(5), entry(6)));
    EXPECT_FALSE(lookup.isClear(entry(5) - 1, entry(6)));
    EXPECT_FALSE(lookup.isClear(entry(7), entry(7)));
    EXPECT_TRUE(lookup.isClear(-100, 0));
}

} // namespace
} // namespace tirn
