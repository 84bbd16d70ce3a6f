#include "palettes/palettelevels.h"

#include <cmath>
#include <numeric>

#include <gtest/gtest.h>

#include "palettes/palette.h"

namespace tirn {
namespace {

std::vector<double> identityTable(int size)
{
    std::vector<double> table(static_cast<std::size_t>(size));
    std::iota(table.begin(), table.end(), 0.0);
    return table;
}

Histogram histogramOf(std::size_t bins, std::initializer_list<std::pair<std::size_t, std::uint64_t>> counts)
{
    Histogram histogram = zeroHistogram(bins);
    for (const auto& [bin, count] : counts)
        histogram[bin] = count;
    return histogram;
}

TEST(PaletteLevels, TheWholeRangeChangesNothing)
{
    std::vector<double> table = identityTable(256);
    table[7] = 300.25;
    table[8] = -4;
    EXPECT_EQ(spread(table, wholeRange(256)), table);
}

TEST(PaletteLevels, ColoursBeginAtBlackAndEndAtWhite)
{
    const std::vector<double> result = spread(identityTable(256), {100, 151, 1});
    EXPECT_EQ(result[0], 0);
    EXPECT_EQ(result[100], 0);
    // 51 steps over 255 values: 5 a step.
    EXPECT_EQ(result[101], 5);
    EXPECT_EQ(result[120], 100);
    EXPECT_EQ(result[151], 255);
    EXPECT_EQ(result[255], 255);
}

TEST(PaletteLevels, GammaAboveOneBrightensTheMiddle)
{
    const std::vector<double> result = spread(identityTable(256), {0, 255, 2});
    // The square root of 64 / 255 of 255 is 127.7, that of 16 / 255 is 63.9.
    EXPECT_EQ(result[64], 127);
    EXPECT_EQ(result[16], 63);
    EXPECT_EQ(result[255], 255);
    EXPECT_EQ(spread(identityTable(256), {0, 255, 0.5})[128], std::floor(128.0 * 128 / 255));
}

TEST(PaletteLevels, OnAGreyRampTheyAreTheCurveOfTheFormula)
{
    for (const PaletteLevels levels :
         {PaletteLevels{30, 200, 1}, PaletteLevels{0, 100, 2.2}, PaletteLevels{77, 255, 0.4}}) {
        Palette byLevels("a", 8);
        byLevels.setLevels(levels);
        Palette byFormula("b", 8);
        byFormula.setEditFlags({true, true, true, true});
        const double power = 1 / levels.gamma;
        const double scale = std::pow(255 / (levels.white - levels.black), power);
        byFormula.applyCurveRgb(scale, power, levels.black);
        for (std::size_t i = 0; i < 256; ++i) {
            EXPECT_NEAR(byLevels.red()[i], byFormula.red()[i], 1) << i;
            EXPECT_NEAR(byLevels.alpha()[i], byFormula.alpha()[i], 1) << i;
        }
    }
}

TEST(PaletteLevels, AnyMapIsSpreadAsAWhole)
{
    Palette palette("a", 8);
    std::vector<double> ends(256, 0.0);
    ends[0] = 200;
    ends[255] = 40;
    palette.setValues({ends, identityTable(256), std::vector<double>(256, 9.0), identityTable(256)});
    palette.setLevels({10, 20, 1});
    EXPECT_EQ(palette.red()[0], 200);
    EXPECT_EQ(palette.red()[10], 200);
    EXPECT_EQ(palette.red()[15], 0);
    EXPECT_EQ(palette.red()[20], 40);
    EXPECT_EQ(palette.blue()[15], 9);
    EXPECT_EQ(palette.alpha()[15], 127);
}

TEST(PaletteLevels, WhatTheyCutOffComesBackWhenTheyAreWidened)
{
    Palette palette("a", 8);
    const PaletteValues before = palette.values();
    palette.setLevels({100, 110, 3});
    palette.setLevels({90, 220, 1});
    EXPECT_EQ(palette.levels(), (PaletteLevels{90, 220, 1}));
    palette.setLevels(wholeRange(256));
    EXPECT_EQ(palette.values(), before);
}

TEST(PaletteLevels, AStrokeMakesTheTableOfNowTheOneThatIsSpread)
{
    Palette palette("a", 8);
    palette.setLevels({50, 100, 1});
    palette.setEditFlags({.alpha = true});
    palette.setRgb(0, 0, 0, 0, 77);
    EXPECT_EQ(palette.levels(), wholeRange(256));
    const PaletteValues stroked = palette.values();
    palette.setLevels({10, 200, 1});
    palette.setLevels(wholeRange(256));
    EXPECT_EQ(palette.values(), stroked);
}

TEST(PaletteLevels, UndoBringsBackTheLevelsToo)
{
    Palette palette("a", 8);
    const PaletteValues before = palette.values();
    palette.pushUndo();
    palette.setLevels({20, 200, 1});
    palette.pushUndo();
    palette.setLevels({120, 130, 1});
    palette.undo();
    EXPECT_EQ(palette.levels(), (PaletteLevels{20, 200, 1}));
    palette.setLevels(wholeRange(256));
    EXPECT_EQ(palette.values(), before) << "the table from before the first levels is not forgotten";
    palette.undo();
    EXPECT_EQ(palette.levels(), wholeRange(256));
}

TEST(PaletteLevels, AreCutToWhatATableCanHave)
{
    EXPECT_EQ(usableLevels({-5, 900, 0}, 256), (PaletteLevels{0, 255, kLeastGamma}));
    EXPECT_EQ(usableLevels({255, 255, 99}, 256), (PaletteLevels{254, 255, kLargestGamma}));
    EXPECT_EQ(usableLevels({80, 20, 1}, 256), (PaletteLevels{80, 81, 1}));
}

TEST(PaletteLevels, AutomaticOnesCutThreePointFivePerMilleAtEachEnd)
{
    // 1000 voxels: 3 of them may go at each end, the fourth must stay.
    const Histogram few = histogramOf(256, {{10, 3}, {40, 1}, {100, 992}, {180, 1}, {220, 3}});
    EXPECT_EQ(autoLevels(few, 8, 8), (PaletteLevels{40, 180, 1}));
    const Histogram many = histogramOf(256, {{10, 4}, {40, 0}, {100, 992}, {180, 0}, {220, 4}});
    EXPECT_EQ(autoLevels(many, 8, 8), (PaletteLevels{10, 220, 1}));
}

TEST(PaletteLevels, AutomaticOnesGoFromTheScaleOfTheStackToThatOfThePalette)
{
    const Histogram deep = histogramOf(4096, {{160, 500}, {3200, 500}});
    EXPECT_EQ(autoLevels(deep, 8, 12), (PaletteLevels{10, 200, 1}));
    EXPECT_EQ(autoLevels(deep, 12, 12), (PaletteLevels{160, 3200, 1}));
    const Histogram shallow = histogramOf(256, {{10, 500}, {200, 500}});
    EXPECT_EQ(autoLevels(shallow, 12, 8), (PaletteLevels{160, 3200, 1}));
}

TEST(PaletteLevels, AutomaticOnesOfNothingOrOneValueStayInTheTable)
{
    EXPECT_EQ(autoLevels(Histogram(), 8, 8), wholeRange(256));
    EXPECT_EQ(autoLevels(zeroHistogram(256), 8, 8), wholeRange(256));
    EXPECT_EQ(autoLevels(histogramOf(256, {{255, 9}}), 8, 8), (PaletteLevels{254, 255, 1}));
    EXPECT_EQ(autoLevels(histogramOf(65536, {{65535, 9}}), 8, 16), (PaletteLevels{254, 255, 1}));
}

} // namespace
} // namespace tirn
