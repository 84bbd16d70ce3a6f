#include "scene/scalebar.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tirn {
namespace {

TEST(ScaleBar, ShowsItsLengthInUnitsOfTheStack)
{
    EXPECT_EQ(scaleBarLabel(0.3, 256, 0.1, 1).text, QStringLiteral("3.8 \u00b5m"));
    EXPECT_EQ(scaleBarLabel(0.5, 256, 0.25, 2).text, QStringLiteral("8 \u00b5m"));
    // Half a tenth off the whole number is as good as whole.
    EXPECT_EQ(scaleBarLabel(2, 1, 7.05, 1).text, QStringLiteral("7 \u00b5m"));
    EXPECT_EQ(scaleBarLabel(2, 1, 7.125, 1).text, QStringLiteral("7.1 \u00b5m"));
    EXPECT_EQ(scaleBarLabel(2, 1, 7.96875, 1).text, QStringLiteral("8.0 \u00b5m"));
}

TEST(ScaleBar, IsUnknownWithoutAVoxelSizeOrAScale)
{
    EXPECT_EQ(scaleBarLabel(0.3, 256, -1, 1).text, "unknown");
    EXPECT_EQ(scaleBarLabel(0.3, 256, 0.1, 0).text, "unknown");
    EXPECT_FALSE(scaleBarLabel(0.3, 256, 0.1, 0).known);
}

TEST(ScaleBarText, HasADecimalUnlessTheLengthIsNearlyWhole)
{
    const QString unit = QString(" ") + QChar(0xb5) + "m";
    EXPECT_EQ(scaleBarLabel(0.5, 4, 10, 1).text, "10" + unit);
    EXPECT_EQ(scaleBarLabel(0.5, 4, 10, 2).text, "5" + unit);
    EXPECT_EQ(scaleBarLabel(0.5, 4, 1.3, 1).text, "1.3" + unit);
    EXPECT_EQ(scaleBarLabel(0.5, 4, 2.05, 1).text, "2" + unit);
    EXPECT_EQ(scaleBarLabel(0.5, 4, 10, 0).text, "unknown");
    EXPECT_EQ(scaleBarLabel(0.5, 4, -1, 1).text, "unknown");
}

TEST(RoundLength, IsOneTwoOrFiveTimesAPowerOfTen)
{
    const std::pair<double, double> cases[] = {{1, 1},       {1.99, 1},      {2, 2},          {4.9, 2},
                                               {5, 5},       {9.99, 5},      {10, 10},        {38.4, 20},
                                               {0.06, 0.05}, {0.0199, 0.01}, {123456, 100000}};
    for (const auto& [most, expected] : cases)
        EXPECT_NEAR(roundLength(most), expected, expected * 1e-12) << most;
    // A quotient that came out a little too small.
    EXPECT_NEAR(roundLength(0.1 * 3 / 3 * (1 - 1e-15)), 0.1, 1e-12);
}

TEST(LengthText, HasTheUnitThatSuitsIt)
{
    const QString micron = QString(" ") + QChar(0xb5) + "m";
    EXPECT_EQ(lengthText(20), "20" + micron);
    EXPECT_EQ(lengthText(1), "1" + micron);
    EXPECT_EQ(lengthText(0.5), "500 nm");
    EXPECT_EQ(lengthText(0.05), "50 nm");
    EXPECT_EQ(lengthText(2000), "2 mm");
}

TEST(ScaleBar, IsAsLongAsItsSizeUnlessARoundLengthIsWanted)
{
    ViewState view;
    view.scaleBarSize = 0.3;
    ScaleBar bar = scaleBarOf(view, 256, 0.1, 1);
    EXPECT_EQ(bar.size, 0.3);
    EXPECT_EQ(bar.label.text, QStringLiteral("3.8 \u00b5m"));
    // 0.3 of 2 units are 38.4 of 256 voxels, 3.84 microns: 2 of them are 20 voxels, 20 / 256 * 2 units.
    view.roundScaleBar = true;
    bar = scaleBarOf(view, 256, 0.1, 1);
    EXPECT_EQ(bar.label.text, QStringLiteral("2 \u00b5m"));
    EXPECT_NEAR(bar.size, 20.0 / 256 * 2, 1e-12);
    EXPECT_NEAR(bar.label.length, 2, 1e-12);
    // Twice as large a scale shows half as much: 1.92 microns, of which 1 is as long as 2 were.
    bar = scaleBarOf(view, 256, 0.1, 2);
    EXPECT_EQ(bar.label.text, QStringLiteral("1 \u00b5m"));
    EXPECT_NEAR(bar.size, 20.0 / 256 * 2, 1e-12);
}

TEST(ScaleBar, OfARoundLengthIsUnknownWhereTheVoxelSizeIs)
{
    ViewState view;
    view.roundScaleBar = true;
    EXPECT_EQ(scaleBarOf(view, 256, -1, 1).label.text, "unknown");
    EXPECT_EQ(scaleBarOf(view, 256, 0.1, 0).label.text, "unknown");
}

// Two units before the eye, 60 degrees show 2 * 2 * tan(30) units, where the bar's window shows 2.
TEST(ScaleBar, OfARoundLengthIsTrueInTheMiddleOfAPerspective)
{
    ViewState view;
    view.roundScaleBar = true;
    view.renderMode = RenderMode::Anaglyph;
    const ScaleBar bar = scaleBarOf(view, 256, 0.1, 1);
    EXPECT_EQ(bar.label.text, QStringLiteral("2 \u00b5m"));
    EXPECT_NEAR(bar.size, 20.0 / 256 * 2 / (2 / std::sqrt(3.0)), 1e-12);
}

} // namespace
} // namespace tirn
