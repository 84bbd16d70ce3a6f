#include "palettes/palettestrokes.h"

#include <random>

#include <gtest/gtest.h>

#include "support/logcapture.h"

namespace tirn {
namespace {

constexpr PaletteEditFlags onlyAlpha{.alpha = true};
constexpr PaletteEditFlags everything{true, true, true, true, true, true, true, true};

struct Edited
{
    explicit Edited(const PaletteEditFlags& flags, int depth = 8) : palette("a", depth)
    {
        palette.setEditFlags(flags);
    }
    Palette palette;
};

TEST(PaletteStrokes, ALineFillsEveryColumnBetweenItsEnds)
{
    Edited edited(onlyAlpha);
    drawLine(edited.palette, PaletteView::Rgb, {10, 100}, {14, 111});
    const std::vector<double> drawn(edited.palette.alpha().begin() + 9, edited.palette.alpha().begin() + 16);
    // 100 + 11 * k / 4, floored.
    EXPECT_EQ(drawn, (std::vector<double>{9, 100, 102, 105, 108, 111, 15}));
    EXPECT_EQ(edited.palette.red()[12], 12) << "only the flagged curve";
    EXPECT_TRUE(edited.palette.modified());
}

TEST(PaletteStrokes, ALineToTheLeftIsTheSameLine)
{
    Edited right(onlyAlpha);
    Edited left(onlyAlpha);
    drawLine(right.palette, PaletteView::Rgb, {20, 7}, {90, 240});
    drawLine(left.palette, PaletteView::Rgb, {90, 240}, {20, 7});
    for (std::size_t i = 0; i < 256; ++i)
        EXPECT_NEAR(left.palette.alpha()[i], right.palette.alpha()[i], 1);
    EXPECT_EQ(left.palette.alpha()[20], 7);
    EXPECT_EQ(left.palette.alpha()[90], 240);
}

TEST(PaletteStrokes, AVerticalLineSetsTheValueOfItsEnd)
{
    Edited edited(onlyAlpha);
    drawLine(edited.palette, PaletteView::Rgb, {30, 10}, {30, 200});
    EXPECT_EQ(edited.palette.alpha()[30], 200);
}

TEST(PaletteStrokes, AValueOutOfRangeIsLoggedAndDrawn)
{
    test::LogCapture log;
    Edited edited(onlyAlpha);
    drawLine(edited.palette, PaletteView::Rgb, {30, -2}, {31, 257});
    EXPECT_TRUE(log.contains("Palette value was less than 0.  This shouldn't happen"));
    EXPECT_TRUE(log.contains("Palette value was greater than 255.  This shouldn't happen"));
    EXPECT_EQ(edited.palette.alpha()[30], -2);
    EXPECT_EQ(edited.palette.rgbaBytes()[4 * 31 + 3], 255);
}

TEST(PaletteStrokes, ADragIsCutToTheValuesAndEndsAtTheEnds)
{
    EXPECT_EQ(dragTarget({10, 5}, {20, 300}, 256), (CurvePoint{20, 255}));
    EXPECT_EQ(dragTarget({10, 5}, {20, -9}, 256), (CurvePoint{20, 0}));
    // Beyond an end the height is that of the point before.
    EXPECT_EQ(dragTarget({10, 5}, {400, 200}, 256), (CurvePoint{255, 5}));
    EXPECT_EQ(dragTarget({10, 5}, {-1, 200}, 256), (CurvePoint{0, 5}));
    EXPECT_EQ(dragTarget({0, 5}, {-1, 200}, 256), std::nullopt);
    EXPECT_EQ(dragTarget({-3, 5}, {-1, 200}, 256), std::nullopt);
    EXPECT_EQ(dragTarget({256, 5}, {300, 200}, 256), std::nullopt);
    EXPECT_EQ(dragTarget({255, 5}, {300, 200}, 256), (CurvePoint{255, 5}));
    EXPECT_EQ(dragTarget({10, 5}, {4000, 200}, 4096), (CurvePoint{4000, 200}));
}

TEST(PaletteStrokes, EachFlagOpensItsOwnCurve)
{
    for (const PaletteView view : {PaletteView::Rgb, PaletteView::Hsv}) {
        for (std::size_t flagged = 0; flagged < 4; ++flagged) {
            std::array<bool, 4> values = {};
            values[flagged] = true;
            PaletteEditFlags flags;
            setViewFlags(flags, view, values);
            EXPECT_EQ(viewFlags(flags, view), values);
            EXPECT_EQ(viewFlags(flags, view == PaletteView::Rgb ? PaletteView::Hsv : PaletteView::Rgb),
                      (std::array<bool, 4>{}));
            Edited edited(flags);
            const std::array<double, 4> before = entryOf(edited.palette, view, 50);
            setEntry(edited.palette, view, 50, {201, 202, 203, 204});
            const std::array<double, 4> after = entryOf(edited.palette, view, 50);
            for (std::size_t curve = 0; curve < 4; ++curve)
                EXPECT_EQ(after[curve], curve == flagged ? 201 + static_cast<double>(curve) : before[curve])
                    << flagged << " " << curve;
        }
    }
}

TEST(PaletteStrokes, BothViewsShiftOffsetAndStepTheirOwnCurves)
{
    for (const PaletteView view : {PaletteView::Rgb, PaletteView::Hsv}) {
        Edited edited({.blue = true, .value = true});
        const auto& curve = *viewArrays(edited.palette, view)[2];
        shiftCurves(edited.palette, view, 3);
        EXPECT_EQ(curve[100], 97);
        shiftCurves(edited.palette, view, -3);
        EXPECT_EQ(curve[100], 100);
        offsetCurves(edited.palette, view, 20);
        EXPECT_EQ(curve[100], 120);
        offsetCurves(edited.palette, view, -5);
        EXPECT_EQ(curve[100], 115);
        stepEntry(edited.palette, view, 100, true);
        EXPECT_EQ(curve[100], 116);
        stepEntry(edited.palette, view, 100, false);
        EXPECT_EQ(curve[100], 115);
    }
}

TEST(PaletteStrokes, AFormulaIsACurveOrARamp)
{
    for (const PaletteView view : {PaletteView::Rgb, PaletteView::Hsv}) {
        Edited edited({.alpha = true, .hsvAlpha = true});
        applyFormula(edited.palette, view, {0, 1, 2}, false);
        EXPECT_EQ(edited.palette.alpha()[100], 39); // 100 * 100 / 255
        applyFormula(edited.palette, view, {30, 5, 2}, true);
        EXPECT_EQ(edited.palette.alpha()[100], 70);
    }
}

/// What is looked at after an undo: the four tables that undo restores.
void operate(Palette& palette, std::mt19937& random)
{
    const auto pick = [&](int least, int most) {
        return least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1));
    };
    const auto view = pick(0, 1) == 0 ? PaletteView::Rgb : PaletteView::Hsv;
    PaletteEditFlags flags;
    for (const PaletteView each : {PaletteView::Rgb, PaletteView::Hsv})
        setViewFlags(flags, each, {pick(0, 1) == 1, pick(0, 1) == 1, pick(0, 1) == 1, pick(0, 1) == 1});
    palette.setEditFlags(flags);
    const int last = palette.size() - 1;
    switch (pick(0, 7)) {
    case 0:
        drawLine(palette, view, {pick(0, last), pick(0, 255)}, {pick(0, last), pick(0, 255)});
        break;
    case 1:
        shiftCurves(palette, view, pick(-last, last));
        break;
    case 2:
        offsetCurves(palette, view, pick(-300, 300));
        break;
    case 3:
        stepEntry(palette, view, pick(0, last), pick(0, 1) == 1);
        break;
    case 4:
        applyFormula(palette, view,
                     {static_cast<double>(pick(-last, last)), pick(1, 50) / 10.0, pick(1, 30) / 10.0},
                     pick(0, 1) == 1);
        break;
    case 5:
        palette.setLevels(usableLevels(
            {static_cast<double>(pick(0, last)), static_cast<double>(pick(0, last)), pick(1, 40) / 10.0},
            palette.size()));
        break;
    case 6:
        setEntry(palette, view, pick(0, last),
                 {static_cast<double>(pick(0, 255)), 1, 2, static_cast<double>(pick(0, 255))});
        break;
    default: {
        StackStats stats;
        stats.mode = static_cast<std::uint32_t>(pick(0, last / 2));
        stats.histogram = zeroHistogram(palette.red().size());
        for (auto& count : stats.histogram)
            count = random() % 100;
        palette.equalize(2, stats);
    }
    }
}

TEST(PaletteStrokes, AsManyUndosAsOperationsRestoreEveryTableOnTheWay)
{
    for (const int depth : {8, 12}) {
        std::mt19937 random(20261122U + static_cast<unsigned>(depth));
        Edited edited(everything, depth);
        std::vector<PaletteValues> states;
        constexpr int operations = 1000;
        for (int i = 0; i < operations; ++i) {
            states.push_back(edited.palette.values());
            edited.palette.pushUndo();
            operate(edited.palette, random);
        }
        const PaletteValues last = edited.palette.values();
        for (int i = operations; i-- > 0;) {
            ASSERT_TRUE(edited.palette.hasUndo());
            edited.palette.undo();
            ASSERT_EQ(edited.palette.values(), states[static_cast<std::size_t>(i)]) << depth << " " << i;
        }
        EXPECT_FALSE(edited.palette.hasUndo());
        for (int i = 0; i < operations; ++i)
            edited.palette.redo();
        EXPECT_EQ(edited.palette.values(), last);
        EXPECT_FALSE(edited.palette.hasRedo());
    }
}

TEST(PaletteStrokes, UndoForgetsWhatShiftsPushedBeyondTheEnds)
{
    Edited edited(onlyAlpha);
    edited.palette.pushUndo();
    shiftCurves(edited.palette, PaletteView::Rgb, -50);
    edited.palette.undo();
    // The values 0 to 49 that left at the left end belong to a table that is no more.
    shiftCurves(edited.palette, PaletteView::Rgb, 10);
    for (std::size_t i = 0; i <= 10; ++i)
        EXPECT_EQ(edited.palette.alpha()[i], 0) << i;
    EXPECT_EQ(edited.palette.alpha()[11], 1);
}

} // namespace
} // namespace tirn
