// Formulas, axes, the shown window and levels of the palette editor.

#include <cmath>

#include <QLabel>
#include <QMenu>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>

#include "ui/palettes/formulagroup.h"
#include "ui/palettes/levelspanel.h"
#include "ui/palettes/levelstrip.h"
#include "ui/palettes/paletteeditortest.h"
#include "ui/stacks/managerform.h"

namespace tirn {
namespace {

class PaletteCurves : public test::PaletteEditorTest
{
protected:
    void stretch(bool on)
    {
        app().model().edit(Change::Look, [=](Scene& scene) { scene.view.autoBitDepth = on; });
    }
    void useTab(int tab) { form().findChild<QTabWidget*>()->setCurrentIndex(tab); }
    QwtInterval axis(int id) { return plot().axisInterval(id); }
    void chooseType(int item)
    {
        auto& type = child<QComboBox>("cboCurvesType");
        type.setCurrentIndex(item);
        Q_EMIT type.activated(item);
    }
    void choosePreset(const char* list, int item)
    {
        auto& presets = child<QComboBox>(list);
        presets.setFocus();
        presets.setCurrentIndex(item == 0 ? 1 : item - 1);
        QTest::keyClick(&presets, item == 0 ? Qt::Key_Up : Qt::Key_Down);
    }
    LevelStrip& strip(int channel) { return child<LevelStrip>(qPrintable(QString("strip%1").arg(channel))); }
    void dragHandle(LevelStrip& shown, LevelStrip::Handle handle, const std::vector<int>& places)
    {
        const int y = shown.height() - 3;
        const auto send = [&](QEvent::Type type, int x, Qt::MouseButtons held) {
            QMouseEvent event(type, QPoint(x, y), shown.mapToGlobal(QPoint(x, y)),
                              type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, {});
            QCoreApplication::sendEvent(&shown, &event);
        };
        send(QEvent::MouseButtonPress, shown.placeOf(handle), Qt::LeftButton);
        for (const int x : places)
            send(QEvent::MouseMove, x, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, places.back(), {});
    }
};

TEST_F(PaletteCurves, TheFormulaRewritesTheTickedCurves)
{
    load({picFile("a.pic")});
    form();
    useTab(1);
    tick("chkEditAlpha");
    spin("fspnCurvesPower").setDoubleValue(2);
    EXPECT_EQ(palette().alpha()[100], 39); // 100 * 100 / 255
    EXPECT_EQ(palette().red()[100], 100);
    spin("fspnCurvesScale").setDoubleValue(0.5);
    EXPECT_EQ(palette().alpha()[255], 127);
    spin("fspnCurvesOffset").setDoubleValue(100);
    EXPECT_EQ(palette().alpha()[99], 0);
    EXPECT_EQ(palette().alpha()[255], 47); // (155 / 255)^2 * 127.5
    EXPECT_TRUE(log.contains("regular 100.000000 converted 100.000000"));
    EXPECT_EQ(palette().rgbCurve(), (PaletteCurve{100, 0.5, 2}));
}

TEST_F(PaletteCurves, ItemTwoIsTheRamp)
{
    load({picFile("a.pic")});
    form();
    useTab(1);
    tick("chkEditAlpha");
    spin("fspnCurvesPower").setDoubleValue(2);
    chooseType(2);
    EXPECT_EQ(palette().alpha()[100], 100);
    EXPECT_FALSE(spin("fspnCurvesPower").isEnabled());
    spin("fspnCurvesOffset").setDoubleValue(30);
    EXPECT_EQ(palette().alpha()[100], 70);
    chooseType(0);
    EXPECT_EQ(palette().alpha()[100], std::floor(70.0 * 70 / 255));
}

TEST_F(PaletteCurves, ThePresetsAreSixPowers)
{
    load({picFile("a.pic")});
    form();
    useTab(1);
    tick("chkEditAlpha");
    auto& presets = child<QComboBox>("cboCurvesPresets");
    const char* const texts[] = {"Cube Root", "Square Root", "Linear", "Square", "Cube", "Custom"};
    const double powers[] = {0.333333, 0.5, 1, 2, 3, 1};
    ASSERT_EQ(presets.count(), 6);
    ASSERT_EQ(child<QComboBox>("cboAxesPresets").count(), 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(presets.itemText(i), texts[i]);
        choosePreset("cboCurvesPresets", i);
        ASSERT_EQ(presets.currentIndex(), i);
        EXPECT_EQ(number("fspnCurvesPower"), powers[i]);
        EXPECT_EQ(palette().alpha()[64], std::floor(std::pow(64.0 / 255, powers[i]) * 255)) << i;
    }
    spin("fspnCurvesPower").setDoubleValue(1.7);
    EXPECT_EQ(presets.currentText(), "Custom");
    form().changeCurvesPresets(6);
    EXPECT_TRUE(log.contains("unknown axes preset\n"));
}

TEST_F(PaletteCurves, EachViewAndEachPaletteKeepsItsNumbers)
{
    load({picFile("a.pic")});
    form();
    useTab(1);
    spin("fspnCurvesPower").setDoubleValue(3);
    click("btnToggleColorSpace");
    EXPECT_EQ(button("btnToggleColorSpace").text(), "RGB");
    EXPECT_EQ(number("fspnCurvesPower"), 1);
    spin("fspnCurvesScale").setDoubleValue(2);
    click("btnToggleColorSpace");
    EXPECT_EQ(button("btnToggleColorSpace").text(), "HSB");
    EXPECT_EQ(number("fspnCurvesPower"), 3);
    EXPECT_EQ(number("fspnCurvesScale"), 1);
    form().newPalette();
    EXPECT_EQ(number("fspnCurvesPower"), 1);
    form().changeSelectedPalette(0);
    EXPECT_EQ(number("fspnCurvesPower"), 3);
    EXPECT_EQ(palette().hsvCurve(), (PaletteCurve{0, 2, 1}));
}

TEST_F(PaletteCurves, AnAxisHasItsOwnNumbers)
{
    load({stackOf("a.pic", 8, {{10, 100}, {20, 25}})});
    form();
    useTab(1);
    child<QCheckBox>("chkLogHistogram").setChecked(false);
    const double top = 32 * 32 * 2 - 125;
    EXPECT_EQ(axis(QwtPlot::yRight), QwtInterval(0, top)) << "bin 0 is part of it";
    EXPECT_EQ(axis(QwtPlot::yLeft), QwtInterval(0, 255));
    const auto height = [&](int index) {
        return plot().histogram().sample(static_cast<std::size_t>(index)).y();
    };
    EXPECT_EQ(height(10), 100);
    choosePreset("cboAxesPresets", 1);
    EXPECT_EQ(height(10), std::floor(std::sqrt(100 / top) * top));
    spin("fspnAxesScale").setDoubleValue(2);
    EXPECT_EQ(height(10), std::floor(std::sqrt(100 / top) * top * 2));
    child<QComboBox>("cboAxis").setCurrentIndex(1);
    EXPECT_EQ(number("fspnAxesScale"), 1);
    spin("fspnAxesScale").setDoubleValue(2);
    spin("fspnAxesOffset").setDoubleValue(20);
    EXPECT_EQ(axis(QwtPlot::yLeft), QwtInterval(-20, 107.5));
    EXPECT_EQ(axis(QwtPlot::yRight), QwtInterval(0, top / 2)) << "by the histogram's scale";
    child<QComboBox>("cboAxis").setCurrentIndex(0);
    EXPECT_EQ(number("fspnAxesScale"), 2);
    EXPECT_EQ(number("fspnAxesPower"), 0.5);
}

TEST_F(PaletteCurves, ZoomingHalvesAndDoublesBetweenSixteenAndAll)
{
    load({picFile("a.pic")});
    form();
    EXPECT_FALSE(button("btnZoomOut").isEnabled());
    EXPECT_EQ(axis(QwtPlot::xBottom), QwtInterval(0, 255));
    for (int i = 0; i < 4; ++i)
        click("btnZoomIn");
    EXPECT_EQ(form().window(), (PaletteWindow{0, 16}));
    EXPECT_FALSE(button("btnZoomIn").isEnabled());
    form().zoomIn();
    EXPECT_EQ(form().window(), (PaletteWindow{0, 16}));
    auto& slider = child<QSlider>("sldrPalette");
    EXPECT_EQ(slider.maximum(), 240);
    slider.setValue(200);
    EXPECT_EQ(axis(QwtPlot::xBottom), QwtInterval(200, 216));
    EXPECT_EQ(child<QLabel>("lblMin").text(), "200");
    EXPECT_EQ(child<QLabel>("lblMax").text(), "216");
    click("btnZoomOut");
    click("btnZoomOut");
    EXPECT_EQ(form().window(), (PaletteWindow{192, 64})) << "moved back where it would pass the end";
    EXPECT_EQ(slider.value(), 192);
    click("btnZoomOut");
    click("btnZoomOut");
    EXPECT_EQ(form().window(), (PaletteWindow{0, 256}));
    EXPECT_FALSE(button("btnZoomOut").isEnabled());
    EXPECT_TRUE(button("btnZoomIn").isEnabled());
}

TEST_F(PaletteCurves, AStrokeIsDrawnWhereItIsSeenInAZoomedPlot)
{
    load({picFile("a.pic")});
    form();
    tick("chkEditAlpha");
    click("btnZoomIn");
    child<QSlider>("sldrPalette").setValue(100);
    const QPoint middle(plot().canvas()->width() / 2, plot().canvas()->height() / 2);
    stroke(middle, middle);
    // Half of 100 to 228, and half of 255.
    EXPECT_NEAR(palette().alpha()[164], 127.5, 3);
    EXPECT_NE(palette().alpha()[164], 164);
}

TEST_F(PaletteCurves, AutomaticZoomLeavesOutSharesOfTheVoxels)
{
    // 2048 voxels, of which 1 % are 20.5.
    load({stackOf("a.pic", 8, {{60, 1500}, {100, 500}, {200, 20}, {50, 28}})});
    form();
    EXPECT_EQ(number("spnMinRange"), 1);
    EXPECT_EQ(number("spnMaxRange"), 1);
    click("btnZoomAuto");
    EXPECT_EQ(form().window(), (PaletteWindow{50, 51}));
    EXPECT_TRUE(log.contains("max 100 min 50"));
    spin("spnMaxRange").setDoubleValue(0);
    click("btnZoomAuto");
    EXPECT_EQ(form().window(), (PaletteWindow{50, 151}));
    form().dupePalette();
    const PaletteWindow before = form().window();
    spin("spnMinRange").setDoubleValue(10);
    click("btnZoomAuto");
    EXPECT_EQ(form().window(), before) << "no channel uses it";
}

TEST_F(PaletteCurves, TheHistogramStandsWhereThePictureLooksUp)
{
    load({stackOf("deep.pic", 12, {{1600, 10}, {1601, 5}, {3999, 7}})});
    form();
    ASSERT_EQ(palette().size(), 256);
    EXPECT_EQ(app().scene().current()->bitsPerSample(), 16) << "what the file says";
    stretch(false);
    const auto count = [&](int index) {
        return plot().histogram().sample(static_cast<std::size_t>(index)).y();
    };
    EXPECT_EQ(count(1600 / 256), 15);
    EXPECT_EQ(count(3999 / 256), 7);
    stretch(true);
    // 3999 needs 12 bits.
    EXPECT_EQ(count(1600 / 16), 15);
    EXPECT_EQ(count(3999 / 16), 7);
}

TEST_F(PaletteCurves, AnIndexWithoutVoxelsIsEmptyOnALogarithmicScaleToo)
{
    load({stackOf("a.pic", 8, {{60, 2000}})});
    form();
    ASSERT_TRUE(child<QCheckBox>("chkLogHistogram").isChecked());
    const QImage seen = plot().canvas()->grab().toImage();
    const auto isFilled = [&](int index, int height) {
        const QColor color = seen.pixelColor(at(index, height) * seen.devicePixelRatio());
        return color.red() > color.green() + 20;
    };
    EXPECT_TRUE(isFilled(60, 200));
    EXPECT_FALSE(isFilled(80, 200));
    EXPECT_FALSE(isFilled(80, 20));
}

TEST_F(PaletteCurves, ADimDatasetIsShownAsFarAsItsBitsReach)
{
    load({picFile("flat.pic")});
    form();
    auto& dim = child<QCheckBox>("chkDimwit");
    EXPECT_FALSE(dim.isEnabled());
    EXPECT_FALSE(dim.isChecked());
    load({stackOf("deep.pic", 16, {{4000, 100}})});
    EXPECT_TRUE(dim.isEnabled());
    EXPECT_TRUE(dim.isChecked()) << "16 bits of which 12 are used";
    stretch(true);
    EXPECT_EQ(form().window(), (PaletteWindow{0, 256})) << "spread over the whole palette";
    stretch(false);
    tick("chkDimwit");
    EXPECT_EQ(form().window(), (PaletteWindow{0, 256}));
    tick("chkDimwit");
    // 4095 of 65535 is index 15 of 255.
    EXPECT_EQ(form().window(), (PaletteWindow{0, 16}));
    tick("chkDimwit");
    EXPECT_EQ(axis(QwtPlot::xTop), QwtInterval(0, 255 * 256));
    load({stackOf("full.pic", 16, {{40000, 100}})});
    EXPECT_TRUE(dim.isEnabled());
    EXPECT_FALSE(dim.isChecked());
}

TEST_F(PaletteCurves, ALevelHandleMovesThePictureWhileItIsHeld)
{
    load({stackOf("a.pic", 8, {{50, 2048}})});
    form();
    const PaletteValues before = palette().values();
    LevelStrip& shown = strip(0);
    const int far = shown.placeOf(LevelStrip::Handle::White);
    const int near = shown.placeOf(LevelStrip::Handle::Middle);
    const QImage dark = widget().renderThread().grabNextFrame();
    dragHandle(shown, LevelStrip::Handle::White, {far - 5, near, near - 30});
    const PaletteLevels levels = palette().levels();
    EXPECT_EQ(levels.black, 0);
    EXPECT_LT(levels.white, 128);
    EXPECT_EQ(palette().alpha()[static_cast<std::size_t>(std::ceil(levels.white))], 255);
    EXPECT_EQ(child<QSpinBox>("spnWhite0").value(), qRound(levels.white));
    settle();
    const QImage bright = widget().renderThread().grabNextFrame();
    EXPECT_GT(bright.pixelColor(bright.rect().center()).green(),
              dark.pixelColor(dark.rect().center()).green() + 20);
    EXPECT_TRUE(palette().hasUndo());
    click("btnUndo");
    EXPECT_EQ(palette().values(), before);
    EXPECT_FALSE(palette().hasUndo()) << "a drag is one step";
    EXPECT_EQ(child<QSpinBox>("spnWhite0").value(), 255);
}

TEST_F(PaletteCurves, TheMiddleHandleIsGamma)
{
    load({picFile("a.pic")});
    form();
    LevelStrip& shown = strip(0);
    const int quarter =
        (3 * shown.placeOf(LevelStrip::Handle::Black) + shown.placeOf(LevelStrip::Handle::White)) / 4;
    dragHandle(shown, LevelStrip::Handle::Middle, {quarter});
    EXPECT_NEAR(palette().levels().gamma, 2, 0.05);
    EXPECT_NEAR(palette().alpha()[64], 128, 3);
    EXPECT_NEAR(number("fspnGamma0"), 2, 0.05);
}

TEST(LevelHandles, StopBesideEachOtherAndAtTheEnds)
{
    using Handle = LevelStrip::Handle;
    EXPECT_EQ(withHandle({10, 100, 1}, Handle::Black, 400, 256), (PaletteLevels{99, 100, 1}));
    EXPECT_EQ(withHandle({10, 100, 1}, Handle::White, -3, 256), (PaletteLevels{10, 11, 1}));
    EXPECT_EQ(withHandle({10, 100, 1}, Handle::Black, -3, 256), (PaletteLevels{0, 100, 1}));
    EXPECT_EQ(withHandle({10, 100, 1}, Handle::White, 999, 256), (PaletteLevels{10, 255, 1}));
    EXPECT_DOUBLE_EQ(withHandle({0, 100, 1}, Handle::Middle, 25, 256).gamma, 2);
    EXPECT_EQ(withHandle({0, 100, 1}, Handle::Middle, 500, 256).gamma, kLeastGamma);
    EXPECT_EQ(withHandle({0, 100, 1}, Handle::Middle, 0, 256).gamma, kLargestGamma);
    EXPECT_DOUBLE_EQ(indexOfHandle({20, 120, 2}, Handle::Middle), 45);
}

TEST_F(PaletteCurves, LevelsAreTypedInTheStacksIntensities)
{
    load({stackOf("deep.pic", 16, {{4000, 100}})});
    form();
    stretch(false);
    auto& white = child<QSpinBox>("spnWhite0");
    white.setFocus();
    QTest::keyClick(&white, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&white, "25600");
    QTest::keyClick(&white, Qt::Key_Return);
    EXPECT_EQ(palette().levels(), (PaletteLevels{0, 100, 1}));
    EXPECT_EQ(palette().alpha()[50], 127);
    EXPECT_TRUE(form().isVisible()) << "the key closes nothing";
    spin("fspnGamma0").setDoubleValue(2);
    EXPECT_EQ(palette().levels(), (PaletteLevels{0, 100, 2}));
}

TEST_F(PaletteCurves, AutoCutsASmallShareAtEachEnd)
{
    // 2048 voxels: 7 may go at each end.
    load({stackOf("a.pic", 8, {{20, 7}, {30, 1000}, {120, 1034}, {250, 7}})});
    form();
    const PaletteValues before = palette().values();
    click("btnAutoLevels0");
    EXPECT_EQ(palette().levels(), (PaletteLevels{30, 120, 1}));
    EXPECT_EQ(palette().alpha()[75], 127);
    click("btnUndo");
    EXPECT_EQ(palette().values(), before);
}

TEST_F(PaletteCurves, TheStackManagerHasAutoForEachChannel)
{
    const QString first = stackOf("a.pic", 8, {{30, 1000}, {120, 1048}});
    const QString second = stackOf("b.pic", 8, {{60, 1000}, {200, 1048}});
    load({first, second});
    ASSERT_EQ(app().currentArray()->channelCount(), 2);
    ToolForm* manager = app().forms().create(FormId::Manager, true);
    auto* automatic = manager->findChild<QToolButton*>("btnAutoLevels1");
    ASSERT_NE(automatic, nullptr);
    QTest::mouseClick(automatic, Qt::LeftButton);
    EXPECT_EQ(app().palette(paletteOf(0, 0))->levels(), wholeRange(256));
    EXPECT_EQ(app().palette(paletteOf(0, 1))->levels(), (PaletteLevels{60, 200, 1}));
    EXPECT_TRUE(app().palette(paletteOf(0, 1))->hasUndo());
    form();
    EXPECT_EQ(child<QSpinBox>("spnBlack1").value(), 60);
    EXPECT_EQ(child<QSpinBox>("spnBlack0").value(), 0);
    EXPECT_EQ(child<LevelStrip>("strip1").levels(), (PaletteLevels{60, 200, 1}));
}

TEST_F(PaletteCurves, ColourVisionChangesWhatIsSeenAndComesBack)
{
    load({stackOf("a.pic", 8, {{200, 2048}})});
    form().findChild<QMenu*>("kindsMenu");
    for (const PaletteKind& kind : paletteKinds()) {
        if (QString("Red") == kind.name)
            form().newPaletteOfKind(kind);
    }
    settle();
    const QColor red = widget().renderThread().grabNextFrame().pixelColor(widget().rect().center());
    ASSERT_EQ(red.green(), 0);
    ASSERT_GT(red.red(), 50);
    auto& menu = child<QMenu>("visionMenu");
    menu.popup({10, 10});
    EXPECT_TRUE(menu.actions()[0]->isChecked());
    menu.close();
    menu.actions()[1]->trigger();
    EXPECT_EQ(view().colorVision, ColorVision::Protan);
    settle();
    const QColor seen = widget().renderThread().grabNextFrame().pixelColor(widget().rect().center());
    // Much darker, and with green in it.
    EXPECT_LT(seen.red(), red.red() * 2 / 3);
    EXPECT_GT(seen.green(), 20);
    app().model().undoStack().undo();
    settle();
    EXPECT_EQ(widget().renderThread().grabNextFrame().pixelColor(widget().rect().center()), red);
}

} // namespace
} // namespace tirn
