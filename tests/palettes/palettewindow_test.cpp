#include "palettes/palettewindow.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

Histogram flat(std::size_t bins) { return Histogram(bins, 100); }

Histogram only(std::size_t bins, std::initializer_list<std::size_t> values)
{
    Histogram histogram = zeroHistogram(bins);
    for (const std::size_t value : values)
        histogram[value] = 1000;
    return histogram;
}

TEST(PaletteWindow, ZoomingInHalvesItAndEndsAtSixteen)
{
    PaletteWindow window = {100, 128};
    window = zoomedIn(window, 256);
    EXPECT_EQ(window, (PaletteWindow{100, 64}));
    window = zoomedIn(zoomedIn(window, 256), 256);
    EXPECT_EQ(window, (PaletteWindow{100, 16}));
    EXPECT_EQ(zoomedIn(window, 256), window);
    EXPECT_EQ(zoomedIn({0, 20}, 256), (PaletteWindow{0, 16}));
}

TEST(PaletteWindow, ZoomingOutDoublesItAndMovesBackAtTheEnd)
{
    EXPECT_EQ(zoomedOut({0, 64}, 256), (PaletteWindow{0, 128}));
    EXPECT_EQ(zoomedOut({200, 50}, 256), (PaletteWindow{156, 100}));
    EXPECT_EQ(zoomedOut({60, 196}, 256), (PaletteWindow{0, 256}));
    EXPECT_EQ(zoomedOut({0, 4096}, 4096), (PaletteWindow{0, 4096}));
}

TEST(PaletteWindow, OneOfADeeperPaletteFitsAShallowOne)
{
    EXPECT_EQ(fittedWindow({3000, 512}, 256), (PaletteWindow{0, 256}));
    EXPECT_EQ(fittedWindow({250, 32}, 256), (PaletteWindow{224, 32}));
    EXPECT_EQ(fittedWindow({-4, 3}, 256), (PaletteWindow{0, 16}));
}

TEST(PaletteWindow, LeavesOutSharesOfTheVoxels)
{
    // 1 % of 256 equal bins are 2.56 bins: the third from each end is the first that passes.
    EXPECT_EQ(windowOfData(flat(256), 255, 1, 1, 8, 8), (PaletteWindow{2, 252}));
    EXPECT_EQ(windowOfData(flat(256), 255, 0, 0, 8, 8), (PaletteWindow{0, 256}));
    EXPECT_EQ(windowOfData(flat(256), 255, 25, 10, 8, 8), (PaletteWindow{64, 167}));
}

TEST(PaletteWindow, NarrowDataGetSixteen)
{
    EXPECT_EQ(windowOfData(only(256, {100}), 255, 1, 1, 8, 8), (PaletteWindow{100, 16}));
    // At the end there is no room for 16 above: the start is 17 before the size.
    EXPECT_EQ(windowOfData(only(256, {255}), 255, 1, 1, 8, 8), (PaletteWindow{239, 17}));
}

TEST(PaletteWindow, WhereTheSharesCrossTheWindowBeginsAtTheLowerOne)
{
    EXPECT_EQ(windowOfData(flat(256), 255, 90, 90, 8, 8), (PaletteWindow{230, 16}));
}

TEST(PaletteWindow, IsOnThePalettesScale)
{
    EXPECT_EQ(windowOfData(only(4096, {1600, 3199}), 4095, 1, 1, 8, 12), (PaletteWindow{100, 100}));
    EXPECT_EQ(windowOfData(only(256, {16, 47}), 255, 1, 1, 12, 8), (PaletteWindow{256, 512}));
    EXPECT_EQ(windowOfData(only(4096, {1600, 1601}), 4095, 1, 1, 8, 12), (PaletteWindow{100, 16}));
}

TEST(PaletteWindow, WithoutCountsIsTheWholeTable)
{
    EXPECT_EQ(windowOfData(Histogram(), 255, 1, 1, 8, 8), (PaletteWindow{0, 256}));
    EXPECT_EQ(windowOfData(zeroHistogram(256), 255, 1, 1, 12, 8), (PaletteWindow{0, 4096}));
}

TEST(PaletteWindow, CountsBeyondTheLastValueAreNotLookedAt)
{
    EXPECT_EQ(windowOfData(only(4096, {10, 100, 4000}), 255, 1, 1, 12, 12), (PaletteWindow{10, 91}));
}

} // namespace
} // namespace tirn
