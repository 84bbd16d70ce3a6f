// Mouse and keys of the volume widget, in the real window.

#include <cmath>

#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include "uisupport/apptest.h"

namespace tirn::test {
namespace {

class WidgetInput : public AppTest
{
protected:
    WidgetInput() { load({picFile("stack.pic"), mapFile("grey.map")}); }

    AxisScale scale()
    {
        const std::scoped_lock lock(app().scene().mutex);
        return app().scene().current()->scale;
    }
};

TEST_F(WidgetInput, LeftDragTurns)
{
    drag({100, 100}, {100 + widget().width() / 4, 100 + widget().height() / 2}, Qt::LeftButton);
    EXPECT_DOUBLE_EQ(view().rotX, 90);
    EXPECT_DOUBLE_EQ(view().rotY, 45);
}

TEST_F(WidgetInput, ADragUpAndLeftWrapsBelow360)
{
    drag({200, 200}, {200 - widget().width() / 4, 200 - widget().height() / 4}, Qt::LeftButton);
    EXPECT_DOUBLE_EQ(view().rotX, 315);
    EXPECT_DOUBLE_EQ(view().rotY, 315);
}

TEST_F(WidgetInput, MiddleDragRolls)
{
    drag({100, 100}, {100 + widget().width() / 4, 100 + widget().height() / 4}, Qt::MiddleButton);
    EXPECT_DOUBLE_EQ(view().rotZ, 90);
    EXPECT_DOUBLE_EQ(view().rotX, 0);
}

TEST_F(WidgetInput, ShiftTranslatesAndGoesBeforeControl)
{
    const QPoint to{100 + widget().width() / 4, 100 + widget().height() / 2};
    drag({100, 100}, to, Qt::LeftButton, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(view().transX, 0.25);
    EXPECT_DOUBLE_EQ(view().transY, -0.5);
    drag({100, 100}, to, Qt::MiddleButton, Qt::ShiftModifier);
    EXPECT_DOUBLE_EQ(view().transZ, 0.75);
}

TEST_F(WidgetInput, ShiftTranslatesAlongTheScreenWhereThatIsPreferred)
{
    app().model().edit(Change::Pose, [](Scene& scene) {
        scene.settings.moveAlongScreen = true;
        scene.view.rotY = 90;
    });
    drag({100, 100}, {100 + widget().width() / 4, 100}, Qt::LeftButton, Qt::ShiftModifier);
    // Seen from the left, the volume's z axis points to the right.
    EXPECT_NEAR(view().transX, 0, 1e-6);
    EXPECT_NEAR(view().transZ, 0.25, 1e-6);
}

TEST_F(WidgetInput, AVolumeThatIsLetGoAtRestStays)
{
    press({100, 100}, Qt::LeftButton);
    moveTo({140, 100}, Qt::LeftButton);
    mouseClock += 101;
    release({140, 100}, Qt::LeftButton);
    EXPECT_FALSE(view().isSpinning());
    press({100, 100}, Qt::LeftButton);
    moveTo({140, 100}, Qt::LeftButton);
    mouseClock += 100;
    release({140, 100}, Qt::LeftButton);
    EXPECT_TRUE(view().isSpinning());
    press({100, 100}, Qt::LeftButton);
    release({100, 100}, Qt::LeftButton);
    EXPECT_FALSE(view().isSpinning()) << "a click stops it";
}

TEST_F(WidgetInput, ControlScales)
{
    const QPoint to{100 + widget().width() / 4, 100 + widget().height() / 2};
    drag({100, 100}, to, Qt::LeftButton, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(scale().x, 1.25);
    EXPECT_DOUBLE_EQ(scale().y, 0.5);
    drag({100, 100}, to, Qt::MiddleButton, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(scale().z, 1.75);
}

TEST_F(WidgetInput, AReleaseWhileMovingKeepsItSpinning)
{
    press({100, 100}, Qt::LeftButton);
    moveTo({110, 100}, Qt::LeftButton);
    release({110, 100}, Qt::LeftButton);
    const int before = widget().renderThread().framesDrawn();
    while (widget().renderThread().framesDrawn() < before + 5)
        QThread::yieldCurrentThread();
    EXPECT_TRUE(view().isSpinning());
    press({100, 100}, Qt::LeftButton);
    EXPECT_FALSE(view().isSpinning());
    release({100, 100}, Qt::LeftButton);
    widget().stopAndWait();
}

TEST_F(WidgetInput, AMotionOfTwoPixelsLeavesNoSpin)
{
    press({100, 100}, Qt::LeftButton);
    moveTo({102, 100}, Qt::LeftButton);
    release({102, 100}, Qt::LeftButton);
    EXPECT_FALSE(view().isSpinning());
}

TEST_F(WidgetInput, TheWheelZoomsAllAxes)
{
    QWheelEvent event(QPointF(50, 50), QPointF(50, 50), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&widget(), &event);
    EXPECT_DOUBLE_EQ(scale().x, 1.05);
    EXPECT_DOUBLE_EQ(scale().y, 1.05);
    EXPECT_DOUBLE_EQ(scale().z, 1.05);
}

TEST_F(WidgetInput, NoKeyDragOrWheelTurnsTheVolumeInsideOut)
{
    for (int i = 0; i < 120; ++i)
        type("z");
    EXPECT_DOUBLE_EQ(scale().z, 0.01);
    drag({200, 100}, {200, 400}, Qt::LeftButton, Qt::ControlModifier);
    drag({200, 100}, {200, 400}, Qt::LeftButton, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(scale().y, 0.01);
    widget().changeVoxelScale(-1, 0, 1000);
    EXPECT_DOUBLE_EQ(scale().x, 0.01);
    EXPECT_DOUBLE_EQ(scale().y, 0.01);
    EXPECT_DOUBLE_EQ(scale().z, 100);
}

TEST_F(WidgetInput, BatchModeTakesNoDrag)
{
    app().model().edit({}, [](Scene& scene) { scene.batchMode = true; });
    drag({100, 100}, {200, 200}, Qt::LeftButton);
    EXPECT_EQ(view().rotX, 0);
}

TEST_F(WidgetInput, ArrowsTurnByADegreeAndRollWithShift)
{
    key(Qt::Key_Left);
    EXPECT_DOUBLE_EQ(view().rotY, 359);
    key(Qt::Key_Right);
    EXPECT_DOUBLE_EQ(view().rotY, 0);
    key(Qt::Key_Up);
    EXPECT_DOUBLE_EQ(view().rotX, 359);
    key(Qt::Key_Down);
    EXPECT_DOUBLE_EQ(view().rotX, 0);
    key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_DOUBLE_EQ(view().rotZ, 359);
    key(Qt::Key_Right, Qt::ShiftModifier);
    key(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_DOUBLE_EQ(view().rotZ, 359);
    key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_DOUBLE_EQ(view().rotZ, 0);
}

TEST_F(WidgetInput, EveryCharacterOfTheTableLogsItsText)
{
    const std::pair<char, const char*> table[] = {{'!', "some weird test"},
                                                  {'A', "set mode alpha palette"},
                                                  {'a', "clear mode alpha palette"},
                                                  {'B', "edit blue palette"},
                                                  {'b', "clear blue palette"},
                                                  {'C', "start screen capture"},
                                                  {'c', "stop screen capture"},
                                                  {'D', "dump movie to disk"},
                                                  {'d', "stop movie"},
                                                  {'E', "palette histo 1?"},
                                                  {'e', "palette histo 0?"},
                                                  {'F', "show frame rate"},
                                                  {'f', "hide frame rate"},
                                                  {'G', "edit green palette"},
                                                  {'g', "clear green palette"},
                                                  {'H', "palette histo 2?"},
                                                  {'h', "palette histo 2?"},
                                                  {'I', "insert movie frame"},
                                                  {'i', "movie mode something"},
                                                  {'L', "load logo"},
                                                  {'l', "unload logo ???"},
                                                  {'M', "max intensity"},
                                                  {'m', "alpha blend"},
                                                  {'O', "edit alpha palette"},
                                                  {'o', "clear alpha palette"},
                                                  {'P', "play movie"},
                                                  {'p', "stop movie"},
                                                  {'R', "force renderlist rebuild"},
                                                  {'r', "clear red palette"},
                                                  {'S', "stereo mode"},
                                                  {'s', "disable stereo mode"},
                                                  {'T', "toggle channel"},
                                                  {'t', "stop toggling channel"},
                                                  {'W', "no clue ???"},
                                                  {'w', "no clue ???"},
                                                  {'X', "increase x scale"},
                                                  {'x', "decrease x scale"},
                                                  {'Y', "increase y scale"},
                                                  {'y', "decrease y scale"},
                                                  {'Z', "increase z scale"},
                                                  {'z', "decrease z scale"}};
    for (const auto& [character, text] : table) {
        settle();
        log.clear();
        type(QString(QLatin1Char(character)));
        EXPECT_EQ(log.count(text), 1) << character;
    }
}

TEST_F(WidgetInput, OtherKeysAreIgnored)
{
    settle();
    log.clear();
    const ViewState before = view();
    type("k7?");
    EXPECT_EQ(log.lines(), QStringList());
    EXPECT_EQ(view().rotX, before.rotX);
}

TEST_F(WidgetInput, LettersScaleByAHundredth)
{
    type("XXxYZZZzz");
    EXPECT_NEAR(scale().x, 1.01, 1e-12);
    EXPECT_NEAR(scale().y, 1.01, 1e-12);
    EXPECT_NEAR(scale().z, 1.01, 1e-12);
}

TEST_F(WidgetInput, APreservedRatioTakesTheOtherAxesAlong)
{
    VoxelArray& array = *app().scene().current();
    array.preserveScaleRatio = true;
    array.baseScale = {1, 1, 2};
    widget().scale(0.01, 0);
    EXPECT_DOUBLE_EQ(scale().x, 1.01);
    EXPECT_DOUBLE_EQ(scale().y, 1.01);
    EXPECT_DOUBLE_EQ(scale().z, 2.02);
}

TEST_F(WidgetInput, BlendKeysSwitchTheModeAndTellTheStatusBar)
{
    std::vector<GLint> modes;
    QObject::connect(&widget(), &TirnWidget::modeChanged, &widget(),
                     [&modes](GLint mode) { modes.push_back(mode); });
    type("M");
    EXPECT_EQ(view().blendMode, static_cast<GLenum>(GL_MAX));
    EXPECT_EQ(app().mainForm().findChild<QLabel*>("alpha")->text(), QString("max"));
    type("m");
    EXPECT_EQ(view().blendMode, static_cast<GLenum>(GL_FUNC_ADD));
    EXPECT_EQ(app().mainForm().findChild<QLabel*>("alpha")->text(), QString("alpha"));
    EXPECT_EQ(modes, (std::vector<GLint>{GL_MAX, GL_FUNC_ADD}));
}

TEST_F(WidgetInput, FrameRateAndOrientationAreSwitchedByCase)
{
    type("FO");
    EXPECT_TRUE(view().showFrameRate);
    EXPECT_TRUE(view().drawOrientation);
    type("fo");
    EXPECT_FALSE(view().showFrameRate);
    EXPECT_FALSE(view().drawOrientation);
}

TEST_F(WidgetInput, HelpQuitEditorAndMovieAreAskedFor)
{
    QSignalSpy help(&widget(), &TirnWidget::helpRequested);
    QSignalSpy quitting(&widget(), &TirnWidget::quitRequested);
    QSignalSpy editor(&widget(), &TirnWidget::shaderEditorRequested);
    QSignalSpy movie(&widget(), &TirnWidget::advancedMovieRequested);
    key(Qt::Key_F1);
    key(Qt::Key_Escape);
    key(Qt::Key_S, Qt::AltModifier | Qt::ShiftModifier);
    type("c");
    ASSERT_EQ(help.count(), 1);
    EXPECT_EQ(help[0][0].toString(), QString("help.html"));
    EXPECT_EQ(quitting.count(), 1);
    EXPECT_EQ(editor.count(), 1);
    EXPECT_EQ(movie.count(), 1);
}

TEST_F(WidgetInput, BracketsStepThroughTheStacksAndWrap)
{
    type("]");
    EXPECT_EQ(app().currentIndex(), 0);
    load({picFile("second.pic")});
    load({picFile("third.pic")});
    EXPECT_EQ(app().currentIndex(), 2);
    type("]");
    EXPECT_EQ(app().currentIndex(), 0);
    type("[");
    EXPECT_EQ(app().currentIndex(), 2);
    EXPECT_TRUE(log.contains("next stack"));
    EXPECT_TRUE(log.contains("previous stack"));
}

TEST_F(WidgetInput, PlusAndMinusStepTheTimePoint)
{
    QSignalSpy spy(&widget(), &TirnWidget::timePointChanged);
    type("+");
    EXPECT_EQ(spy.count(), 0);
    {
        const std::scoped_lock lock(app().scene().mutex);
        app().scene().current()->setTimePoints(3);
    }
    log.clear();
    type("-");
    EXPECT_EQ(spy.count(), 1);
    EXPECT_TRUE(log.contains("moving array 0 to time_point 2"));
    type("+");
    EXPECT_TRUE(log.contains("moving array 0 to time_point 0"));
    EXPECT_EQ(spy.count(), 2);
    widget().stopAndWait();
    app().scene().current()->setTimePoints(1);
}

/// The angles that the render thread drew last, as it reports them.
class DrawnAngles : public QObject
{
public:
    double x = -1;
    double y = -1;

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (static_cast<int>(event->type()) == static_cast<int>(EventId::Rotation)) {
            x = static_cast<const RotationEvent*>(event)->x;
            y = static_cast<const RotationEvent*>(event)->y;
        }
        return false;
    }
};

TEST_F(WidgetInput, AHundredDragsAndKeysInARowEndInTheLastPose)
{
    DrawnAngles drawn;
    app().installEventFilter(&drawn);
    for (int i = 0; i < 50; ++i) {
        press({100, 100}, Qt::LeftButton);
        moveTo({103, 101}, Qt::LeftButton);
        moveTo({103, 101}, Qt::LeftButton);
        release({103, 101}, Qt::LeftButton);
        key(Qt::Key_Right);
    }
    widget().renderThread().wait();
    EXPECT_NEAR(view().rotY, std::fmod(50 * (3.0 / widget().width() * 180 + 1), 360), 1e-9);
    settle();
    EXPECT_DOUBLE_EQ(drawn.y, view().rotY);
    EXPECT_DOUBLE_EQ(drawn.x, view().rotX);
}

TEST_F(WidgetInput, AKeyFrameBringsTheWholeViewBack)
{
    KeyFrame frame;
    frame.xrot = 10;
    frame.yrot = 20;
    frame.ztrans = 0.5;
    frame.xscale = 2;
    frame.xmin = -1;
    frame.xmax = 9.7;
    frame.ymin = 3;
    frame.ymax = -1;
    frame.zmin = 2;
    frame.zmax = 5;
    frame.timepoint = 0;
    frame.channels = {{ChannelState::Hidden, 0, 0}, {ChannelState::FlashOn, 0, 0}};
    frame.palettes = {app().palette(0)->values()};
    frame.palettes[0].red[7] = 123;
    widget().stopAndWait();
    const int handle = static_cast<int>(app().palette(0)->glHandle());
    const CutBox before = app().scene().current()->cut;
    widget().loadFrame(frame);
    settle();
    EXPECT_EQ(view().rotX, 10);
    EXPECT_EQ(view().rotY, 20);
    EXPECT_EQ(view().transZ, 0.5);
    EXPECT_EQ(scale().x, 2);
    // A negative side stays; a fraction is cut off.
    EXPECT_EQ(app().scene().current()->cut, (CutBox{before.xMin, 9, 3, before.yMax, 2, 5}));
    EXPECT_EQ(app().scene().current()->channels()[0].display.state, ChannelState::Hidden);
    EXPECT_EQ(app().palette(0)->red()[7], 123);
    EXPECT_EQ(static_cast<int>(app().palette(0)->glHandle()), handle);
}

TEST_F(WidgetInput, AKeyFrameWithoutPalettesLeavesTheLiveOnes)
{
    const double before = app().palette(0)->red()[7];
    widget().loadFrame(KeyFrame{});
    settle();
    EXPECT_EQ(app().palette(0)->red()[7], before);
    EXPECT_EQ(app().scene().current()->cut, (CutBox{0, 0, 0, 0, 0, 0}));
}

class EmptyWidget : public AppTest
{};

TEST_F(EmptyWidget, WithoutAStackDragsAndKeysChangeNothing)
{
    drag({100, 100}, {200, 200}, Qt::LeftButton);
    type("XYZ[]+-");
    widget().scale(1, 0);
    EXPECT_EQ(view().rotX, 0);
    EXPECT_EQ(app().currentIndex(), -1);
}

TEST_F(EmptyWidget, AnotherAxisIsReported)
{
    widget().rotate(1, 3);
    widget().scale(1, -1);
    widget().translate(1, 7);
    EXPECT_EQ(log.count("non-existant axis"), 1);
    EXPECT_EQ(log.count("Error: non-existant axis"), 2);
}

TEST_F(EmptyWidget, TheContextMenuIsComplete)
{
    QStringList texts;
    for (const QAction* action : widget().contextMenu().actions())
        texts.append(action->isSeparator() ? "-" : action->text());
    EXPECT_EQ(texts, QStringList({"Open Stack", "Manage Stacks", "Palettes", "Volumes", "Close All", "-",
                                  "View", "Cut Planes", "Render Options", "-", "Take Snapshot", "Make Movie",
                                  "-", "Help", "Video card capabilities", "About", "-", "E&xit"}));
}

TEST_F(EmptyWidget, ARatioThatIsKeptRoundsTheHeightHalfUp)
{
    EXPECT_EQ(sizeWithRatio({301, 300}, {300, 300}, 2, 1), QSize(301, 151));
    EXPECT_EQ(sizeWithRatio({300, 301}, {300, 300}, 2, 1), QSize(602, 301));
    EXPECT_EQ(sizeWithRatio({300, 300}, {300, 300}, 2, 1), QSize(300, 300));
}

TEST_F(EmptyWidget, AWindowThatTheUserResizesKeepsAFixedRatio)
{
    widget().toggleWindowAspectRatio(true);
    QMainWindow& window = app().mainForm();
    window.resize(window.width() + 88, window.height());
    EXPECT_TRUE(QTest::qWaitFor([this] { return widget().size() == QSize(600, 600); }));
    window.resize(window.width(), window.height() - 200);
    EXPECT_TRUE(QTest::qWaitFor([this] { return widget().size() == QSize(400, 400); }));
    widget().toggleWindowAspectRatio(false);
    window.resize(window.width() + 50, window.height());
    EXPECT_TRUE(QTest::qWaitFor([this] { return widget().size() == QSize(450, 400); }));
}

TEST_F(EmptyWidget, AFixedRatioHoldsForDimensionsThatAreAskedFor)
{
    widget().changeWindowDimensions(600, 300);
    QGuiApplication::sync();
    ASSERT_EQ(widget().size(), QSize(600, 300));
    widget().toggleWindowAspectRatio(true);
    // A width that changes decides; otherwise the height does.
    const std::pair<QSize, QSize> rows[] = {{{400, 300}, {400, 200}},
                                            {{500, 900}, {500, 250}},
                                            {{500, 300}, {600, 300}},
                                            {{301, 300}, {301, 151}}};
    for (const auto& [asked, given] : rows) {
        widget().changeWindowDimensions(asked.width(), asked.height());
        QGuiApplication::sync();
        EXPECT_EQ(widget().size(), given);
    }
    widget().toggleWindowAspectRatio(false);
    widget().changeWindowDimensions(400, 300);
    EXPECT_TRUE(QTest::qWaitFor([this] { return widget().size() == QSize(400, 300); }));
}

TEST_F(EmptyWidget, WindowDimensionsAreChangedAndReported)
{
    QSignalSpy spy(&widget(), &TirnWidget::windowDimensionsChanged);
    widget().changeWindowDimensions(300, 260);
    settle();
    EXPECT_EQ(widget().size(), QSize(300, 260));
    EXPECT_EQ(widget().minimumSize(), QSize(128, 128));
    EXPECT_GE(spy.count(), 1);
    EXPECT_TRUE(log.warnings().last().startsWith("old "));
}

} // namespace
} // namespace tirn::test
