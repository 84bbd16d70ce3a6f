// Strokes, numbers and keys of the palette editor.

#include <cmath>

#include "ui/main/helpwindow.h"
#include "ui/palettes/palettebarwidget.h"
#include "ui/palettes/paletteeditortest.h"

namespace tirn {
namespace {

class PaletteDrawing : public test::PaletteEditorTest
{
protected:
    PaletteDrawing() { load({picFile("a.pic")}); }

    std::vector<double> alpha() { return palette().alpha(); }
};

TEST_F(PaletteDrawing, AStrokeDrawsAStraightLineIntoTheTickedCurves)
{
    form();
    tick("chkEditAlpha");
    const std::vector<double> red = palette().red();
    pressAt(at(50, 10));
    dragTo(at(60, 110));
    EXPECT_EQ(part(alpha(), 49, 61),
              (std::vector<double>{49, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 61}));
    EXPECT_EQ(palette().red(), red);
    dragTo(at(60, 0));
    EXPECT_EQ(alpha()[60], 0);
    releaseAt(at(60, 0));
    EXPECT_EQ(number("spnIndex"), 60);
    EXPECT_EQ(number("spnHSVIndex"), 60);
    EXPECT_TRUE(palette().modified());
}

TEST_F(PaletteDrawing, APictureFollowsWhileTheButtonIsDown)
{
    form();
    tick("chkEditRed");
    const int before = widget().renderThread().framesDrawn();
    const QImage first = widget().renderThread().grabNextFrame();
    pressAt(at(0, 255));
    dragTo(at(255, 255));
    settle();
    EXPECT_GT(widget().renderThread().framesDrawn(), before);
    const QImage second = widget().renderThread().grabNextFrame();
    EXPECT_NE(first, second);
    const QColor middle = second.pixelColor(second.rect().center());
    EXPECT_GT(middle.red(), middle.blue());
    releaseAt(at(255, 255));
}

TEST_F(PaletteDrawing, NothingIsDrawnWithoutATickAndTheFormSaysSo)
{
    form();
    const std::vector<double> before = alpha();
    stroke(at(10, 200), at(200, 10));
    EXPECT_EQ(alpha(), before);
    const QImage hint = plot().canvas()->grab().toImage();
    tick("chkEditAlpha");
    EXPECT_NE(plot().canvas()->grab().toImage(), hint);
}

TEST_F(PaletteDrawing, AMoveAcrossBothEndsFillsTheColumnsUpToThem)
{
    form();
    tick("chkEditAlpha");
    pressAt(at(3, 200));
    dragTo(at(3, 200) - QPoint(plot().width(), 0));
    EXPECT_EQ(part(alpha(), 0, 4), (std::vector<double>{200, 200, 200, 200, 4}));
    // At the end already: nothing more is drawn.
    dragTo(at(3, 90) - QPoint(plot().width(), 0));
    EXPECT_EQ(alpha()[0], 200);
    releaseAt(at(3, 90));
    pressAt(at(252, 30));
    dragTo(at(252, 99) + QPoint(plot().width(), 0));
    EXPECT_EQ(part(alpha(), 251, 255), (std::vector<double>{251, 30, 30, 30, 30}));
    releaseAt(at(252, 30));
    EXPECT_EQ(number("spnIndex"), 252);
}

TEST_F(PaletteDrawing, AStrokeAboveAndBelowThePlotStaysInRange)
{
    form();
    tick("chkEditAlpha");
    pressAt(at(100, 100));
    dragTo(at(100, 100) - QPoint(0, 2000));
    EXPECT_EQ(alpha()[100], 255);
    dragTo(at(100, 100) + QPoint(0, 4000));
    EXPECT_EQ(alpha()[100], 0);
    releaseAt(at(100, 100));
}

TEST_F(PaletteDrawing, ShiftSlidesTheCurveAndBringsBackWhatLeft)
{
    form();
    tick("chkEditAlpha");
    pressAt(at(100, 100));
    dragTo(at(90, 100), Qt::ShiftModifier);
    EXPECT_EQ(alpha()[100], 110);
    EXPECT_EQ(alpha()[255], 255);
    dragTo(at(120, 100), Qt::ShiftModifier);
    EXPECT_EQ(alpha()[120], 100);
    dragTo(at(100, 100), Qt::ShiftModifier);
    releaseAt(at(100, 100));
    for (std::size_t i = 0; i < 256; ++i)
        ASSERT_EQ(alpha()[i], static_cast<double>(i));
}

TEST_F(PaletteDrawing, ControlLiftsTheCurveAndBothMayCombine)
{
    form();
    tick("chkEditAlpha");
    pressAt(at(100, 100));
    dragTo(at(100, 130), Qt::ControlModifier);
    EXPECT_EQ(alpha()[0], 30);
    EXPECT_EQ(alpha()[255], 285) << "cut only on its way out";
    dragTo(at(100, 90), Qt::ControlModifier);
    EXPECT_EQ(alpha()[0], -10);
    dragTo(at(110, 100), Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(alpha()[110], 100);
    EXPECT_EQ(alpha()[50], 40);
    releaseAt(at(110, 100));
}

TEST_F(PaletteDrawing, EachOfTheEightBoxesOpensItsCurve)
{
    form();
    const char* const boxes[2][4] = {
        {"chkEditRed", "chkEditGreen", "chkEditBlue", "chkEditAlpha"},
        {"chkHSVEditHue", "chkHSVEditSaturation", "chkHSVEditValue", "chkHSVEditAlpha"}};
    for (const PaletteView view : {PaletteView::Rgb, PaletteView::Hsv}) {
        for (std::size_t i = 0; i < 4; ++i) {
            tick(boxes[static_cast<int>(view)][i]);
            stroke(at(100, 33), at(110, 33));
            const auto arrays = viewArrays(palette(), view);
            for (std::size_t k = 0; k < 4; ++k)
                EXPECT_EQ((*arrays[k])[105] == 33, k == i) << i << " " << k;
            click("btnUndo");
            tick(boxes[static_cast<int>(view)][i]);
        }
        click("btnToggleColorSpace");
    }
    EXPECT_EQ(palette().editFlags(), PaletteEditFlags());
}

TEST_F(PaletteDrawing, APaletteKeepsItsTicks)
{
    form();
    tick("chkEditGreen");
    form().newPalette();
    EXPECT_FALSE(child<QCheckBox>("chkEditGreen").isChecked());
    form().changeSelectedPalette(0);
    EXPECT_TRUE(child<QCheckBox>("chkEditGreen").isChecked());
}

TEST_F(PaletteDrawing, AGestureIsOneStepOfUndoHoweverFarItGoes)
{
    form();
    tick("chkEditAlpha");
    const PaletteValues before = palette().values();
    EXPECT_FALSE(button("btnUndo").isEnabled());
    pressAt(at(10, 100));
    for (int x = 20; x <= 200; x += 10)
        dragTo(at(x, x / 2));
    releaseAt(at(200, 100));
    const PaletteValues drawn = palette().values();
    EXPECT_TRUE(button("btnUndo").isEnabled());
    EXPECT_FALSE(button("btnRedo").isEnabled());
    click("btnUndo");
    EXPECT_EQ(palette().values(), before);
    EXPECT_FALSE(button("btnUndo").isEnabled());
    click("btnRedo");
    EXPECT_EQ(palette().values(), drawn);
    click("btnUndo");
    EXPECT_EQ(palette().values(), before) << "as after the first undo";
    stroke(at(10, 9), at(11, 9));
    EXPECT_FALSE(button("btnRedo").isEnabled());
}

TEST_F(PaletteDrawing, ANumberIsWrittenWhereItsCurveIsTicked)
{
    form();
    tick("chkEditGreen");
    spin("spnIndex").setFocus();
    QTest::keyClick(&spin("spnIndex"), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&spin("spnIndex"), "77");
    EXPECT_EQ(number("spnGreen"), 77);
    EXPECT_EQ(number("spnAlpha"), 77);
    spin("spnGreen").setFocus();
    QTest::keyClick(&spin("spnGreen"), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&spin("spnGreen"), "200");
    EXPECT_EQ(palette().green()[77], 200);
    EXPECT_EQ(palette().red()[77], 77);
    QTest::keyClick(&spin("spnRed"), Qt::Key_Up);
    EXPECT_EQ(palette().red()[77], 77) << "not ticked";
    EXPECT_EQ(number("spnRed"), 77);
    click("btnUndo");
    EXPECT_EQ(palette().green()[77], 77) << "the digits are one step";
}

TEST_F(PaletteDrawing, NumbersOfTheOtherViewAreWrittenThere)
{
    form();
    click("btnToggleColorSpace");
    tick("chkHSVEditValue");
    spin("spnHSVIndex").setDoubleValue(40);
    EXPECT_EQ(number("spnHSVValue"), 40);
    EXPECT_EQ(number("spnHSVSaturation"), 0);
    spin("spnHSVValue").setDoubleValue(90);
    EXPECT_EQ(palette().value()[40], 90);
    EXPECT_EQ(palette().red()[40], 90);
    EXPECT_EQ(number("spnHSVIndex"), 40);
}

TEST_F(PaletteDrawing, AHeldSpinButtonIsOneStep)
{
    form();
    tick("chkEditAlpha");
    spin("spnIndex").setDoubleValue(50);
    const PaletteValues before = palette().values();
    FloatSpinBox& box = spin("spnAlpha");
    const QPoint up(box.width() - 6, box.height() / 4);
    QTest::mousePress(&box, Qt::LeftButton, {}, up);
    EXPECT_TRUE(QTest::qWaitFor([&] { return palette().alpha()[50] >= 53; }));
    QTest::mouseRelease(&box, Qt::LeftButton, {}, up);
    click("btnUndo");
    EXPECT_EQ(palette().values(), before);
    EXPECT_FALSE(button("btnUndo").isEnabled());
}

TEST_F(PaletteDrawing, AValueBeyondWhatABoxShowsIsNotPulledBackByItsNeighbour)
{
    form();
    tick("chkEditAlpha");
    tick("chkEditRed");
    stroke(at(0, 0), at(0, 100), Qt::ControlModifier);
    spin("spnIndex").setDoubleValue(200);
    EXPECT_EQ(palette().alpha()[200], 300);
    EXPECT_EQ(number("spnAlpha"), 255);
    spin("spnRed").setDoubleValue(10);
    EXPECT_EQ(palette().red()[200], 10);
    EXPECT_EQ(palette().alpha()[200], 300);
}

TEST_F(PaletteDrawing, ArrowsMoveTheIndexAndStepTheValue)
{
    form();
    tick("chkEditBlue");
    spin("spnIndex").setDoubleValue(100);
    press(Qt::Key_Left);
    EXPECT_EQ(number("spnIndex"), 99);
    press(Qt::Key_Right);
    press(Qt::Key_Right);
    EXPECT_EQ(number("spnIndex"), 101);
    press(Qt::Key_Up);
    EXPECT_EQ(palette().blue()[101], 102);
    EXPECT_EQ(number("spnBlue"), 102);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(palette().blue()[101], 100);
    EXPECT_EQ(palette().red()[101], 101);
}

TEST_F(PaletteDrawing, ArrowsWithShiftMoveTheCurves)
{
    form();
    tick("chkEditBlue");
    spin("spnIndex").setDoubleValue(100);
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(palette().blue()[50], 51);
    EXPECT_EQ(number("spnIndex"), 99) << "and the index as without it";
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(palette().blue()[50], 50);
    EXPECT_EQ(number("spnIndex"), 100);
    press(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(palette().blue()[50], 51);
    press(Qt::Key_Down, Qt::ShiftModifier);
    press(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(palette().blue()[50], 49);
    click("btnUndo");
    EXPECT_EQ(palette().blue()[50], 50) << "each key is a step";
}

TEST_F(PaletteDrawing, AKeyThatRepeatsIsOneStep)
{
    form();
    tick("chkEditBlue");
    const PaletteValues before = palette().values();
    for (int i = 0; i < 5; ++i) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_Right, Qt::ShiftModifier, QString(), i > 0);
        QCoreApplication::sendEvent(plot().canvas(), &event);
    }
    EXPECT_EQ(palette().blue()[50], 45);
    EXPECT_EQ(number("spnIndex"), 5);
    click("btnUndo");
    EXPECT_EQ(palette().values(), before);
    EXPECT_FALSE(button("btnUndo").isEnabled());
}

TEST_F(PaletteDrawing, LettersTickTheCurvesOfTheFirstView)
{
    form();
    const std::pair<Qt::Key, const char*> letters[] = {{Qt::Key_R, "chkEditRed"},
                                                       {Qt::Key_G, "chkEditGreen"},
                                                       {Qt::Key_B, "chkEditBlue"},
                                                       {Qt::Key_A, "chkEditAlpha"}};
    for (const auto& [key, box] : letters) {
        press(key);
        EXPECT_TRUE(child<QCheckBox>(box).isChecked()) << box;
        press(key, Qt::ShiftModifier);
        EXPECT_FALSE(child<QCheckBox>(box).isChecked()) << box;
    }
    press(Qt::Key_A);
    EXPECT_TRUE(palette().editFlags().alpha);
}

TEST_F(PaletteDrawing, KeysInASpinBoxAreItsOwn)
{
    form();
    tick("chkEditAlpha");
    spin("spnIndex").setFocus();
    QTest::keyClick(&spin("spnIndex"), Qt::Key_R);
    QTest::keyClick(&spin("spnIndex"), Qt::Key_Up);
    EXPECT_EQ(number("spnIndex"), 1);
    EXPECT_FALSE(child<QCheckBox>("chkEditRed").isChecked());
    EXPECT_EQ(palette().alpha()[0], 0);
}

TEST_F(PaletteDrawing, OtherKeysWorkOnThePicture)
{
    form();
    const bool before = view().drawOrientation;
    plot().canvas()->setFocus();
    QTest::keyClick(plot().canvas(), before ? 'o' : 'O');
    EXPECT_NE(view().drawOrientation, before);
}

TEST_F(PaletteDrawing, F1OpensThePageOnPalettes)
{
    form();
    press(Qt::Key_F1);
    const auto page = [] {
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (auto* help = qobject_cast<HelpWindow*>(top); help != nullptr && help->isVisible())
                return help;
        }
        return static_cast<HelpWindow*>(nullptr);
    };
    ASSERT_TRUE(QTest::qWaitFor([&] { return page() != nullptr; }, 20000));
    EXPECT_EQ(page()->browser().documentTitle(), "Palettes");
}

TEST_F(PaletteDrawing, EqualisingSpreadsTheChannelOverTheTickedCurves)
{
    for (const int bits : {8, 16}) {
        const int step = bits == 8 ? 1 : 256;
        load({stackOf(
            QString("%1.pic").arg(bits), bits,
            {{10 * step, 1500}, {19 * step, 40}, {20 * step, 300}, {100 * step, 150}, {200 * step, 50}})});
        form().newPalette();
        ASSERT_EQ(app().scene().current()->channels().front().stats.mode, static_cast<unsigned>(10 * step));
        tick("chkEditAlpha");
        press(Qt::Key_H);
        // 500 voxels from twice the commonest value on.
        EXPECT_EQ(alpha()[19], 0);
        EXPECT_EQ(alpha()[20], 153);
        EXPECT_EQ(alpha()[99], 153);
        EXPECT_EQ(alpha()[100], 229); // 229.5
        EXPECT_EQ(alpha()[200], 255);
        EXPECT_EQ(alpha()[255], 255);
        EXPECT_EQ(palette().red()[100], 100);
        click("btnUndo");
        EXPECT_EQ(alpha()[100], 100);
    }
}

TEST_F(PaletteDrawing, EqualisingWithoutAChannelOrCountsIsRefused)
{
    form();
    const QString refusal =
        "No can do: Sorry, the palette must be assigned to a channel in\n in the current stack.  Otherwise, "
        "I don't know what to generate it off of.";
    app().model().edit(Change::Voxels, [](Scene& scene) {
        Histogram& histogram = scene.current()->channels().front().stats.histogram;
        histogram = zeroHistogram(histogram.size());
    });
    press(Qt::Key_H);
    EXPECT_EQ(takeBox(), refusal);
    form().dupePalette();
    log.clear();
    press(Qt::Key_H);
    EXPECT_EQ(takeBox(), refusal);
    EXPECT_TRUE(log.contains("Histrogram equilization!"));
    app().closeAll();
    settle();
    press(Qt::Key_H);
    EXPECT_EQ(takeBox(), refusal);
}

TEST_F(PaletteDrawing, LazyRedrawWaitsForTheRelease)
{
    form();
    tick("chkEditRed");
    tick("chkLazy");
    const QImage before = widget().renderThread().grabNextFrame();
    settle();
    const int frames = widget().renderThread().framesDrawn();
    pressAt(at(0, 255));
    dragTo(at(255, 255));
    EXPECT_EQ(palette().red()[100], 255) << "the curve moves";
    settle();
    EXPECT_EQ(widget().renderThread().framesDrawn(), frames);
    EXPECT_EQ(widget().renderThread().grabNextFrame(), before) << "the table on the card is the old one";
    releaseAt(at(255, 255));
    settle();
    EXPECT_NE(widget().renderThread().grabNextFrame(), before);
}

TEST_F(PaletteDrawing, TheRightButtonOpensTheMenuAndDrawsNothing)
{
    form();
    tick("chkEditAlpha");
    mouse(QEvent::MouseButtonPress, at(10, 200), Qt::RightButton, {}, Qt::RightButton);
    auto& menu = child<QMenu>("paletteMenu");
    EXPECT_TRUE(menu.isVisible());
    menu.close();
    dragTo(at(100, 200));
    EXPECT_EQ(alpha()[50], 50);
    EXPECT_FALSE(palette().hasUndo());
}

TEST_F(PaletteDrawing, TheBarShowsTheColoursBelowTheirIndices)
{
    form();
    tick("chkEditRed");
    stroke(at(0, 0), at(255, 0));
    auto& bar = child<PaletteBarWidget>("barRGB");
    QCoreApplication::processEvents();
    const QRect canvas(plot().canvas()->mapToGlobal(QPoint()), plot().canvas()->size());
    EXPECT_EQ(bar.mapToGlobal(QPoint()).x(), canvas.left());
    EXPECT_EQ(bar.width(), canvas.width());
    EXPECT_EQ(bar.height(), 15);
    const QImage seen = bar.grab().toImage();
    for (const double part : {0.1, 0.5, 0.9}) {
        const QColor color = seen.pixelColor(static_cast<int>(part * (seen.width() - 1)), seen.height() / 2);
        EXPECT_EQ(color.red(), 0);
        EXPECT_NEAR(color.green(), part * 255, 3);
        EXPECT_EQ(color.green(), color.blue());
    }
}

TEST(PaletteBar, BlendsBetweenIndicesAndFloors)
{
    EXPECT_EQ(blendedEntry({10, 20, 5}, 0.5), 15);
    EXPECT_EQ(blendedEntry({10, 20, 5}, 1.1), 18); // 20 - 0.1 * 15 = 18.5
    EXPECT_EQ(blendedEntry({10, 20, 5}, 2), 5);
    EXPECT_EQ(blendedEntry({10, 20, 5}, 9), 5);
    EXPECT_EQ(blendedEntry({}, 1), 0);
}

} // namespace
} // namespace tirn
