#include "palettes/palettehistogram.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

using Counts = std::vector<double>;

TEST(PaletteHistogram, ThePictureLooksSamplesUpOnOneOfThreeScales)
{
    EXPECT_EQ(shownDepth(8, 5, false), 8);
    EXPECT_EQ(shownDepth(8, 5, true), 8) << "bytes are never stretched";
    EXPECT_EQ(shownDepth(10, 10, false), 12) << "10 bits are multiplied by 16 as 12 are";
    EXPECT_EQ(shownDepth(12, 9, false), 12);
    EXPECT_EQ(shownDepth(12, 9, true), 9);
    EXPECT_EQ(shownDepth(16, 11, false), 16);
    EXPECT_EQ(shownDepth(16, 11, true), 11);
}

TEST(PaletteHistogram, ValuesThatShareAnIndexAreAddedUp)
{
    Histogram deep = zeroHistogram(4096);
    deep[31] = 5;
    deep[32] = 7;
    deep[47] = 1;
    deep[4095] = 2;
    const Counts counts = countsOnPalette(deep, 8, 12);
    ASSERT_EQ(counts.size(), 256U);
    EXPECT_EQ(counts[1], 5);
    EXPECT_EQ(counts[2], 8);
    EXPECT_EQ(counts[255], 2);
}

TEST(PaletteHistogram, ValuesOfAShallowStackStandApart)
{
    Histogram shallow = zeroHistogram(256);
    shallow[1] = 5;
    shallow[255] = 3;
    const Counts counts = countsOnPalette(shallow, 12, 8);
    ASSERT_EQ(counts.size(), 4096U);
    EXPECT_EQ(counts[16], 5);
    EXPECT_EQ(counts[4080], 3);
    EXPECT_EQ(counts[17], 0);
}

TEST(PaletteHistogram, StretchedValuesBeyondTheirBitsLookUpTheLastIndex)
{
    Histogram deep = zeroHistogram(4096);
    deep[2500] = 4;
    EXPECT_EQ(countsOnPalette(deep, 8, 11)[255], 4);
}

TEST(PaletteHistogram, StatisticsMoveToThePalettesScale)
{
    StackStats deep;
    deep.histogram = zeroHistogram(4096);
    deep.histogram[330] = 9;
    deep.histogram[335] = 4;
    deep.mode = 330;
    const StackStats shown = statsOnPalette(deep, 8, 12);
    EXPECT_EQ(shown.mode, 20U);
    ASSERT_EQ(shown.histogram.size(), 256U);
    EXPECT_EQ(shown.histogram[20], 13U);
}

TEST(PaletteHistogram, HeightsFollowTheFormula)
{
    const Counts counts = {0, 1, 25, 100};
    EXPECT_EQ(histogramHeights(counts, {}, HistogramScale::Formula), counts);
    // floor(sqrt(c / 100) * 100)
    EXPECT_EQ(histogramHeights(counts, {0, 1, 0.5}, HistogramScale::Formula), (Counts{0, 10, 50, 100}));
    EXPECT_EQ(histogramHeights(counts, {0, 3, 1}, HistogramScale::Formula), (Counts{0, 3, 75, 300}));
    EXPECT_EQ(histogramHeights(counts, {-1, 1, 2}, HistogramScale::Formula), (Counts{0, 0, 5, 98}));
    EXPECT_EQ(histogramHeights(counts, {7, 3, 9}, HistogramScale::Ramp), (Counts{7, 8, 32, 107}));
}

TEST(PaletteHistogram, LogarithmicHeightsKeepTheTop)
{
    const Counts heights = histogramHeights({0, 9, 99}, {}, HistogramScale::Logarithm);
    EXPECT_DOUBLE_EQ(heights[0], 0);
    EXPECT_DOUBLE_EQ(heights[1], 49.5);
    EXPECT_DOUBLE_EQ(heights[2], 99);
}

TEST(PaletteHistogram, NoCountsHaveNoHeights)
{
    for (const auto scale : {HistogramScale::Formula, HistogramScale::Ramp, HistogramScale::Logarithm}) {
        EXPECT_EQ(histogramHeights({0, 0}, {5, 2, 2}, scale), (Counts{0, 0}));
        EXPECT_TRUE(histogramHeights({}, {}, scale).empty());
    }
}

} // namespace
} // namespace tirn
