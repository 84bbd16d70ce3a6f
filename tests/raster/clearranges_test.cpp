#include "raster/clearranges.h"

#include <gtest/gtest.h>

#include "support/compositor.h"

namespace tirn::test {
namespace {

/// Opaque from an entry on.
ColourTable tableFrom(int entries, int first)
{
    ColourTable table(static_cast<std::size_t>(entries) * 4, 200);
    for (int i = 0; i < first; ++i)
        table[static_cast<std::size_t>(4 * i) + 3] = 0;
    return table;
}

TileChannel channelOf(int bytesPerSample)
{
    TileChannel channel;
    channel.bytesPerSample = bytesPerSample;
    channel.isPlain = bytesPerSample == 1;
    channel.unit = bytesPerSample == 1 ? 1.0F / 255 : 1.0F / 65535;
    return channel;
}

TEST(ClearRanges, NothingIsClearWhereEveryEntryHasOpacity)
{
    const ClearRanges clear(channelOf(1), ColourLookup(tableFrom(256, 0)));
    EXPECT_FALSE(clear.contains({0, 0}));
    EXPECT_FALSE(clear.contains({255, 255}));
}

TEST(ClearRanges, EmptySpaceIsClearWhereOpacityBeginsWithTheSecondEntry)
{
    const ClearRanges clear(channelOf(1), ColourLookup(tableFrom(256, 1)));
    EXPECT_TRUE(clear.contains({0, 0}));
    EXPECT_FALSE(clear.contains({0, 1}));
    EXPECT_FALSE(clear.contains({1, 1}));
    const ClearRanges words(channelOf(2), ColourLookup(tableFrom(256, 1)));
    EXPECT_TRUE(words.contains({0, 0}));
    EXPECT_TRUE(words.contains({0, 15}));
    EXPECT_FALSE(words.contains({0, 257}));
}

TEST(ClearRanges, ARangeIsClearUpToTheFirstEntryWithOpacity)
{
    ColourTable table = tableFrom(256, 256);
    table[4 * 100 + 3] = 1;
    const ClearRanges clear(channelOf(1), ColourLookup(table));
    EXPECT_TRUE(clear.contains({0, 98}));
    EXPECT_FALSE(clear.contains({0, 100}));
    EXPECT_FALSE(clear.contains({98, 102}));
    EXPECT_TRUE(clear.contains({102, 255}));
}

TEST(ClearRanges, CurvesMultiplyTheRange)
{
    TileChannel channel = channelOf(1);
    channel.isPlain = false;
    const std::vector<float> curve = {0.5F, 2};
    channel.curve = curve;
    const ClearRanges clear(channel, ColourLookup(tableFrom(256, 100)));
    EXPECT_TRUE(clear.contains({0, 40}));
    // Doubled it is not.
    EXPECT_FALSE(clear.contains({0, 60}));
    EXPECT_FALSE(clear.contains({200, 255}));
}

} // namespace
} // namespace tirn::test
