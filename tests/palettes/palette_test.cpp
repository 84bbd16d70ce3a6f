#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "palettes/palette.h"
#include "support/logcapture.h"
#include "support/recordingtables.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::RecordingTables;

constexpr PaletteEditFlags everything{true, true, true, true, true, true, true, true};
constexpr PaletteEditFlags onlyRed{.red = true};

/// A palette with the given flags; copies would change the name and a flag.
struct Edited
{
    explicit Edited(PaletteEditFlags flags = everything, RecordingTables* tables = nullptr)
        : palette("a", 8, tables)
    {
        palette.setEditFlags(flags);
    }
    Palette palette;
};

StackStats statsOf(std::uint32_t mode, Histogram histogram)
{
    StackStats stats;
    stats.mode = mode;
    stats.histogram = std::move(histogram);
    return stats;
}

TEST(Palette, ANewPaletteIsTheIdentityWithAllFlagsFalse)
{
    const Palette palette("a", 8);
    EXPECT_EQ(palette.depth(), 8);
    ASSERT_EQ(palette.size(), 256);
    for (const auto* array : {&palette.red(), &palette.green(), &palette.blue(), &palette.alpha()}) {
        EXPECT_EQ(array->at(0), 0);
        EXPECT_EQ(array->at(77), 77);
        EXPECT_EQ(array->at(255), 255);
    }
    EXPECT_EQ(palette.hue()[77], -1);
    EXPECT_EQ(palette.saturation()[77], 0);
    EXPECT_EQ(palette.value()[77], 77);
    EXPECT_EQ(palette.editFlags(), PaletteEditFlags());
    EXPECT_EQ(palette.rgbCurve(), (PaletteCurve{0, 1, 1}));
    EXPECT_EQ(palette.hsvCurve(), (PaletteCurve{0, 1, 1}));
    EXPECT_FALSE(palette.modified());
    EXPECT_TRUE(palette.path().isEmpty());
    EXPECT_EQ(palette.glHandle(), 0U);
}

TEST(Palette, SixteenNeighboursOfATwelveBitPaletteShareAValue)
{
    const Palette palette("", 12);
    ASSERT_EQ(palette.size(), 4096);
    EXPECT_EQ(palette.green()[15], 0);
    EXPECT_EQ(palette.green()[16], 1);
    EXPECT_EQ(palette.green()[4079], 254);
    EXPECT_EQ(palette.green()[4095], 255);
}

TEST(Palette, FewerThanEightBitsSpreadOverTheScale)
{
    const Palette palette("a", 6);
    ASSERT_EQ(palette.size(), 64);
    EXPECT_EQ(palette.blue()[1], 4);
    EXPECT_EQ(palette.blue()[63], 252);
}

TEST(Palette, NoBitsMakeOneEntryAndNoRamp)
{
    EXPECT_EQ(Palette("a", 0).size(), 1);
    EXPECT_EQ(Palette("a", -3).size(), 1);
}

TEST(Palette, AnEmptyNameTakesTheNextUntitledOneAndIsModified)
{
    const Palette first("", 8);
    const Palette second(QColor(1, 2, 3), 8);
    EXPECT_TRUE(first.modified());
    EXPECT_TRUE(second.modified());
    const int number = first.name().section(' ', 1).toInt();
    EXPECT_GE(number, 1);
    EXPECT_EQ(second.name(), first.name().section(' ', 0, 0) + ' ' + QString::number(number + 1));
}

TEST(Palette, RecordsGiveTheDepthAndTheTable)
{
    std::vector<PaletteEntry> entries(256);
    entries[0] = {255, 0, 0, 7};
    entries[1] = {0, 255, 0, 8};
    entries[2] = {0, 0, 255, 300};
    const LogCapture capture;
    const Palette palette(entries, 4, "b");
    EXPECT_EQ(capture.debugLines(), QStringList{"Palette: b is 8 bit."});
    EXPECT_FALSE(palette.modified());
    EXPECT_EQ(palette.hue()[0], 0);
    // 120 * 255 / 360 and 240 * 255 / 360
    EXPECT_EQ(palette.hue()[1], 85);
    EXPECT_EQ(palette.hue()[2], 170);
    EXPECT_EQ(palette.saturation()[2], 255);
    EXPECT_EQ(palette.value()[2], 255);
    EXPECT_EQ(palette.alpha()[0], 7);
    EXPECT_EQ(palette.alpha()[2], 300);
}

TEST(Palette, TheDepthRuleAddsOneForAMixedCount)
{
    const auto depthOf = [](std::size_t count) {
        return Palette(std::vector<PaletteEntry>(count), 4, "b").depth();
    };
    EXPECT_EQ(depthOf(256), 8);
    EXPECT_EQ(depthOf(300), 9);
    EXPECT_EQ(depthOf(4096), 12);
    EXPECT_EQ(depthOf(1), 0);
    EXPECT_EQ(depthOf(0), 0);
}

TEST(Palette, RecordsOfThreeComponentsAreIgnored)
{
    const Palette palette(std::vector<PaletteEntry>(256, {9, 9, 9, 9}), 3, "b");
    EXPECT_EQ(palette.red()[200], 200);
    EXPECT_EQ(palette.alpha()[200], 200);
}

TEST(Palette, AColourRampStopsOneShort)
{
    const Palette palette(QColor(255, 0, 128), 8);
    EXPECT_EQ(palette.red()[0], 0);
    EXPECT_EQ(palette.red()[128], 128); // floor(255 / 256 * 128 + 0.5) = floor(128.0)
    EXPECT_EQ(palette.red()[255], 254);
    EXPECT_EQ(palette.green()[255], 0);
    EXPECT_EQ(palette.blue()[255], 128); // floor(127.5 + 0.5)
    EXPECT_EQ(palette.alpha()[255], 255);
    // 360 - 60 * 128 / 254 is 329.76 degrees; whole ones are 329, and 329 * 255 / 360 is 233.04.
    EXPECT_EQ(palette.hue()[255], 233);
    EXPECT_EQ(palette.editFlags(), PaletteEditFlags());
}

TEST(Palette, AColourRampOfTwelveBitsDividesOnceMore)
{
    const Palette palette(QColor(255, 0, 0), 12);
    EXPECT_EQ(palette.red()[4095], 16); // floor(255 / 4096 * 4095 / 16 + 0.5) = floor(16.4)
    EXPECT_EQ(palette.alpha()[4095], 255);
}

TEST(Palette, ACopyHasItsOwnNameTableAndOneFlagMore)
{
    RecordingTables tables;
    Edited source(onlyRed, &tables);
    source.palette.setPath("/data");
    source.palette.setRgbCurve({1, 2, 3});
    source.palette.setRgb(4, 99, 0, 0, 0);
    source.palette.pushUndo();
    const LogCapture capture;
    const Palette copy(source.palette);
    EXPECT_EQ(capture.debugLines(),
              (QStringList{"Warning palette copy constructor called!", "Completed copy constructor"}));
    EXPECT_EQ(copy.name(), "a copy");
    EXPECT_EQ(copy.path(), "/data");
    EXPECT_FALSE(copy.modified());
    EXPECT_EQ(copy.editFlags(), (PaletteEditFlags{.red = true, .hsvAlpha = true}));
    EXPECT_EQ(copy.rgbCurve(), (PaletteCurve{1, 2, 3}));
    EXPECT_EQ(copy.red()[4], 99);
    EXPECT_EQ(copy.glHandle(), 2U);
    EXPECT_FALSE(copy.hasUndo());
    source.palette.setRgb(4, 55, 0, 0, 0);
    EXPECT_EQ(copy.red()[4], 99);
}

TEST(Palette, DestructionReleasesTheTableAndSaysSo)
{
    RecordingTables tables;
    const LogCapture capture;
    Palette("a", 8, &tables);
    EXPECT_EQ(tables.released, std::vector<unsigned>{1});
    EXPECT_EQ(capture.debugLines(), QStringList{"GL palette deleted"});
}

TEST(Palette, WithoutACardThereIsNoHandle)
{
    Palette palette("a", 8);
    palette.upload();
    EXPECT_EQ(palette.glHandle(), 0U);
}

TEST(Palette, AGlErrorComesThroughAsItsCode)
{
    struct Failing : RecordingTables
    {
        unsigned upload(unsigned, std::span<const std::uint8_t>) override { throw 1281; }
    } tables;
    EXPECT_THROW(Palette("a", 8, &tables), int);
}

TEST(Palette, OnlyAnUnmodifiedPaletteWithAPathHasAFile)
{
    Edited edited;
    Palette& palette = edited.palette;
    EXPECT_FALSE(palette.hasFile());
    palette.setPath("/data/maps");
    EXPECT_TRUE(palette.hasFile());
    EXPECT_EQ(palette.fullPath(), "/data/maps/a");
    palette.setRgb(0, 1, 2, 3, 4);
    EXPECT_FALSE(palette.hasFile());
}

TEST(Palette, SetRgbWritesFlaggedArraysAndFollowsInHsv)
{
    Edited edited({.green = true, .alpha = true});
    Palette& palette = edited.palette;
    palette.setRgb(10, 200, 30.9, 200, 300);
    EXPECT_EQ(palette.red()[10], 10);
    EXPECT_EQ(palette.green()[10], 30.9);
    EXPECT_EQ(palette.alpha()[10], 300);
    EXPECT_EQ(palette.value()[10], 30);
    EXPECT_EQ(palette.hue()[10], 85);
    EXPECT_EQ(palette.saturation()[10], 170); // 255 * (30 - 10) / 30
    EXPECT_TRUE(palette.modified());
}

TEST(Palette, SetHsvFollowsInRgbAndKeepsAlphaWithoutItsFlag)
{
    Edited edited({.alpha = true, .hue = true, .saturation = true, .value = true});
    Palette& palette = edited.palette;
    palette.setHsv(10, 85, 255, 200, 1);
    EXPECT_EQ(palette.red()[10], 0);
    EXPECT_EQ(palette.green()[10], 200);
    EXPECT_EQ(palette.blue()[10], 0);
    EXPECT_EQ(palette.alpha()[10], 10);
    EXPECT_TRUE(palette.modified());
    palette.setHsv(11, 255, 255, 200, 1);
    EXPECT_EQ(palette.red()[11], 200) << "a full turn is red again";
    EXPECT_EQ(palette.green()[11], 0);
}

TEST(Palette, AnIndexOutsideTheTableIsIgnored)
{
    Edited edited;
    for (const int index : {-1, 256, INT_MAX}) {
        edited.palette.setRgb(index, 1, 2, 3, 4);
        edited.palette.setHsv(index, 1, 2, 3, 4);
        edited.palette.incrementRgb(index);
        edited.palette.decrementHsv(index);
    }
    EXPECT_FALSE(edited.palette.modified());
}

TEST(Palette, StepsOfRgbMoveFlaggedArraysWithoutModifying)
{
    Edited edited({.red = true, .alpha = true});
    Palette& palette = edited.palette;
    palette.incrementRgb(255);
    palette.incrementRgb(255);
    palette.decrementRgb(0);
    EXPECT_EQ(palette.red()[255], 257);
    EXPECT_EQ(palette.alpha()[255], 257);
    EXPECT_EQ(palette.green()[255], 255);
    EXPECT_EQ(palette.value()[255], 255);
    EXPECT_EQ(palette.red()[0], -1);
    EXPECT_FALSE(palette.modified());
}

TEST(Palette, IncrementHsvAddsToTheValueWhereDecrementTakesFromAlpha)
{
    Edited edited({.hsvAlpha = true});
    Palette& palette = edited.palette;
    palette.incrementHsv(100);
    EXPECT_EQ(palette.alpha()[100], 100);
    EXPECT_EQ(palette.value()[100], 101);
    EXPECT_EQ(palette.red()[100], 101);
    palette.decrementHsv(100);
    EXPECT_EQ(palette.alpha()[100], 99);
    EXPECT_EQ(palette.value()[100], 101);
}

TEST(Palette, IncrementHsvWithBothFlagsAddsTwice)
{
    Edited edited({.value = true, .hsvAlpha = true});
    edited.palette.incrementHsv(100);
    EXPECT_EQ(edited.palette.value()[100], 102);
}

TEST(Palette, OffsetsDoNotClamp)
{
    Edited edited(onlyRed);
    Palette& palette = edited.palette;
    palette.offsetUpRgb(20);
    EXPECT_EQ(palette.red()[250], 270);
    EXPECT_EQ(palette.green()[250], 250);
    palette.offsetDownRgb(30);
    EXPECT_EQ(palette.red()[5], -5);
    EXPECT_FALSE(palette.modified());
}

TEST(Palette, OffsetsOfHsvReachThePicture)
{
    Edited edited({.value = true});
    edited.palette.offsetUpHsv(10);
    EXPECT_EQ(edited.palette.value()[100], 110);
    EXPECT_EQ(edited.palette.red()[100], 110);
    edited.palette.offsetDownHsv(20);
    EXPECT_EQ(edited.palette.blue()[100], 90);
}

TEST(Palette, ShiftsThereAndBackRestoreTheTable)
{
    for (const int places : {1, 7, 255, 256, 600}) {
        Edited edited;
        Palette& palette = edited.palette;
        const PaletteValues before = palette.values();
        palette.shiftLeftRgb(places);
        EXPECT_NE(palette.values(), before);
        palette.shiftRightRgb(places);
        EXPECT_EQ(palette.values(), before) << places;
        palette.shiftRightHsv(places);
        palette.shiftLeftHsv(places);
        EXPECT_EQ(palette.values(), before) << places;
    }
}

TEST(Palette, AShiftExtendsTheEdge)
{
    Edited edited(onlyRed);
    Palette& palette = edited.palette;
    palette.shiftLeftRgb(3);
    EXPECT_EQ(palette.red()[0], 3);
    EXPECT_EQ(palette.red()[252], 255);
    EXPECT_EQ(palette.red()[255], 255);
    EXPECT_EQ(palette.green()[0], 0);
    EXPECT_EQ(palette.value()[0], 3);
    palette.shiftRightRgb(5);
    const std::vector<double> start(palette.red().begin(), palette.red().begin() + 7);
    EXPECT_EQ(start, (std::vector<double>{0, 0, 0, 1, 2, 3, 4}));
}

TEST(Palette, TheLastValueThatComesBackBecomesTheEdge)
{
    Edited edited(onlyRed);
    Palette& palette = edited.palette;
    palette.setRgb(0, 50, 0, 0, 0);
    palette.shiftLeftRgb(1);
    palette.setRgb(0, 90, 0, 0, 0);
    palette.shiftRightRgb(3);
    const std::vector<double> start(palette.red().begin(), palette.red().begin() + 5);
    EXPECT_EQ(start, (std::vector<double>{50, 50, 50, 90, 2}));
}

TEST(Palette, AnOffsetAlsoMovesWhatWaitsBeyondTheEnds)
{
    Edited edited(onlyRed);
    Palette& palette = edited.palette;
    palette.shiftLeftRgb(2);
    palette.setEditFlags({.green = true});
    palette.offsetUpRgb(10); // red itself stays, its two waiting values move
    palette.setEditFlags(onlyRed);
    palette.shiftRightRgb(2);
    const std::vector<double> start(palette.red().begin(), palette.red().begin() + 4);
    EXPECT_EQ(start, (std::vector<double>{10, 11, 2, 3}));
}

TEST(Palette, AnHsvShiftMovesAlphaUnderItsOwnFlagAndFollowsInRgb)
{
    Edited edited({.value = true, .hsvAlpha = true});
    Palette& palette = edited.palette;
    palette.shiftRightHsv(2);
    EXPECT_EQ(palette.alpha()[100], 98);
    EXPECT_EQ(palette.value()[100], 98);
    EXPECT_EQ(palette.red()[100], 98);
    EXPECT_EQ(palette.saturation()[100], 0);
}

TEST(Palette, UndoAndRedoRestoreTheFourArrays)
{
    RecordingTables tables;
    Edited edited(everything, &tables);
    Palette& palette = edited.palette;
    const PaletteValues first = palette.values();
    palette.undo();
    palette.redo();
    EXPECT_EQ(palette.values(), first);
    palette.pushUndo();
    palette.offsetUpRgb(5);
    const PaletteValues second = palette.values();
    const int uploads = tables.uploads;
    palette.undo();
    EXPECT_EQ(palette.values(), first);
    EXPECT_EQ(palette.value()[9], 9);
    EXPECT_EQ(tables.uploads, uploads + 1);
    EXPECT_FALSE(palette.hasUndo());
    palette.redo();
    EXPECT_EQ(palette.values(), second);
    palette.undo();
    EXPECT_EQ(palette.values(), first);
    EXPECT_TRUE(palette.hasRedo());
    palette.pushUndo();
    EXPECT_FALSE(palette.hasRedo());
}

TEST(Palette, ArraysKeepTheirPlaceThroughEdits)
{
    Edited edited;
    Palette& palette = edited.palette;
    const double* red = palette.red().data();
    palette.pushUndo();
    palette.rampRgb(3);
    palette.shiftLeftRgb(4);
    palette.undo();
    palette.setValues(Palette("b", 8).values());
    EXPECT_EQ(palette.red().data(), red);
}

TEST(Palette, SetValuesReplacesTheTableAndUploads)
{
    RecordingTables tables;
    Edited edited({}, &tables);
    PaletteValues values = edited.palette.values();
    values.blue[3] = 77;
    values.alpha.resize(10);
    edited.palette.setValues(values);
    EXPECT_EQ(tables.entry(3), (std::vector<int>{3, 3, 77, 3}));
    EXPECT_EQ(edited.palette.alpha()[200], 200) << "a shorter table replaces what it has";
}

TEST(Palette, RampsTakeTheOffsetAway)
{
    Edited edited(onlyRed);
    Palette& palette = edited.palette;
    palette.rampRgb(10.5);
    EXPECT_EQ(palette.red()[0], -10.5);
    EXPECT_EQ(palette.red()[255], 244.5);
    EXPECT_EQ(palette.green()[0], 0);
    palette.setEditFlags({.value = true, .hsvAlpha = true});
    palette.rampHsv(-4);
    EXPECT_EQ(palette.value()[10], 14);
    EXPECT_EQ(palette.alpha()[10], 14);
    EXPECT_EQ(palette.green()[10], 14);
}

TEST(Palette, ACurveOfOneReproducesTheIndex)
{
    Edited edited;
    const LogCapture capture;
    edited.palette.applyCurveRgb(1, 1, 0);
    EXPECT_EQ(capture.debugLines(), QStringList{"max 255 scale 1.000000 power 1.000000 offset 0.000000\n"});
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(edited.palette.red()[static_cast<std::size_t>(i)], i * 255 / 255);
    Palette deep("b", 12);
    deep.setEditFlags(everything);
    deep.applyCurveRgb(1, 1, 0);
    for (int i = 0; i < 4096; ++i)
        ASSERT_EQ(deep.alpha()[static_cast<std::size_t>(i)], i * 255 / 4095);
}

TEST(Palette, ACurveStartsAtItsOffset)
{
    Edited edited;
    edited.palette.applyCurveRgb(1, 1, 100);
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(edited.palette.red()[static_cast<std::size_t>(i)], 0);
    EXPECT_EQ(edited.palette.red()[100], 0);
    EXPECT_EQ(edited.palette.red()[255], 155);
}

TEST(Palette, ACurveOfPowerAndScaleIsClamped)
{
    Edited edited({.green = true});
    edited.palette.applyCurveRgb(2, 2, 0);
    EXPECT_EQ(edited.palette.green()[51], 20); // (51 / 255)^2 * 510 = 20.4
    EXPECT_EQ(edited.palette.green()[255], 255);
    EXPECT_EQ(edited.palette.red()[51], 51);
    edited.palette.applyCurveRgb(-1, 1, 0);
    EXPECT_EQ(edited.palette.green()[200], 0);
}

TEST(Palette, AnHsvCurveFollowsInRgb)
{
    Edited edited({.value = true, .hsvAlpha = true});
    edited.palette.applyCurveHsv(0.5, 1, 0);
    EXPECT_EQ(edited.palette.value()[255], 127);
    EXPECT_EQ(edited.palette.alpha()[255], 127);
    EXPECT_EQ(edited.palette.blue()[255], 127);
}

TEST(Palette, EqualizeSpreadsTheCumulativeHistogram)
{
    RecordingTables tables;
    Edited edited({.red = true, .alpha = true}, &tables);
    edited.palette.equalize(2, statsOf(1, {5, 10, 2, 2, 4}));
    const std::vector<double> start(edited.palette.red().begin(), edited.palette.red().begin() + 6);
    EXPECT_EQ(start, (std::vector<double>{0, 0, 63, 127, 255, 255})); // 255 * {2, 4, 8} / 8
    EXPECT_EQ(edited.palette.green()[3], 3);
    EXPECT_EQ(edited.palette.value()[4], 255);
    EXPECT_EQ(tables.entry(3), (std::vector<int>{127, 3, 3, 127}));
}

TEST(Palette, TheKindOfEqualizingSaysWhereItStarts)
{
    const auto firstValues = [](int kind) {
        Edited edited(onlyRed);
        edited.palette.equalize(kind, statsOf(2, {1, 1, 4, 1, 1}));
        return std::vector<double>(edited.palette.red().begin(), edited.palette.red().begin() + 5);
    };
    EXPECT_EQ(firstValues(0), (std::vector<double>{0, 0, 0, 127, 255}));
    EXPECT_EQ(firstValues(1), (std::vector<double>{31, 63, 191, 223, 255}));
    EXPECT_EQ(firstValues(2), (std::vector<double>{0, 0, 0, 0, 255}));
    EXPECT_EQ(firstValues(9), firstValues(1));
}

TEST(Palette, EqualizingNothingKeepsWhatADivisionByZeroGives)
{
    RecordingTables tables;
    Edited edited(onlyRed, &tables);
    edited.palette.equalize(2, statsOf(1, {5, 10}));
    EXPECT_EQ(edited.palette.red()[1], 0);
    EXPECT_EQ(edited.palette.red()[2], INT_MIN);
    EXPECT_EQ(tables.entry(2), (std::vector<int>{0, 2, 2, 2}));
}

TEST(Palette, EqualizingFromBeyondTheTableGivesBlack)
{
    Edited edited(onlyRed);
    edited.palette.equalize(2, statsOf(3'000'000'000U, {5, 10}));
    EXPECT_EQ(edited.palette.red()[255], 0);
}

TEST(Palette, ValuesAreClampedOnTheWayToTheCardOnly)
{
    RecordingTables tables;
    Edited edited(everything, &tables);
    edited.palette.setRgb(3, 300, -4, 12.9, std::numeric_limits<double>::quiet_NaN());
    edited.palette.upload();
    EXPECT_EQ(tables.last.size(), 1024U);
    EXPECT_EQ(tables.entry(3), (std::vector<int>{255, 0, 12, 0}));
    EXPECT_EQ(edited.palette.red()[3], 300);
    EXPECT_EQ(edited.palette.fileValues(3), (std::array<int, 4>{255, 0, 12, 0}));
    EXPECT_EQ(edited.palette.glHandle(), 1U);
}

} // namespace
} // namespace tirn
