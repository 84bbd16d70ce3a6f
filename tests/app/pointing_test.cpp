// What is under the mouse, and the ruler, in the whole program.

#include <latch>

#include <QLabel>
#include <QStatusBar>
#include <QTest>

#include "uisupport/apptest.h"

namespace tirn {
namespace {

class MouseInPicture : public test::AppTest
{
protected:
    /// A stack of 16 x 16 x 16 voxels of which only some are not 0: those in the front slice at x, y.
    void loadSpots(const std::vector<std::array<int, 3>>& spots)
    {
        test::PlainStack stack = test::PlainStack::blank(16, 16, 16);
        for (const auto& [x, y, value] : spots)
            stack.at(x, y, 0) = static_cast<std::uint16_t>(value);
        test::writePic(path("spots.pic"), stack);
        load({path("spots.pic"), mapFile("grey.map")});
        changeView([](ViewState& view) { view.zoom = 1; });
    }
    /// The middle of a voxel of the front slice, in the window.
    QPoint voxel(int x, int y)
    {
        const int side = std::min(widget().width(), widget().height());
        const QPoint corner((widget().width() - side) / 2, (widget().height() - side) / 2);
        return corner + QPoint((2 * x + 1) * side / 32, (2 * y + 1) * side / 32);
    }
    void hover(QPoint at)
    {
        moveTo(at, Qt::NoButton);
        QCoreApplication::processEvents();
    }
    void click(QPoint at)
    {
        press(at, Qt::LeftButton);
        release(at, Qt::LeftButton);
    }
    QString told() { return app().mainForm().findChild<QLabel*>("pointed")->text(); }
    QAction& action(const char* name) { return *app().mainForm().action(name); }
    Ruler ruler() { return view().ruler; }
};

TEST_F(MouseInPicture, TellsTheVoxelInTheStatusBar)
{
    loadSpots({{3, 5, 200}});
    hover(voxel(3, 5));
    EXPECT_EQ(told(), "x 3 y 5 z 0: 200");
    EXPECT_TRUE(app().mainForm().findChild<QLabel*>("pointed")->isVisible());
    hover(voxel(8, 8));
    EXPECT_EQ(told(), "");
    hover(voxel(3, 5));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&widget(), &leave);
    EXPECT_EQ(told(), "");
}

TEST_F(MouseInPicture, MovesThatComeTogetherAreLookedAtOnce)
{
    loadSpots({{3, 5, 200}});
    moveTo(voxel(3, 5), Qt::NoButton);
    moveTo(voxel(8, 8), Qt::NoButton);
    EXPECT_EQ(told(), "");
    moveTo(voxel(3, 5), Qt::NoButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(told(), "x 3 y 5 z 0: 200");
}

TEST_F(MouseInPicture, NothingIsToldWhileAButtonIsDown)
{
    loadSpots({{3, 5, 200}});
    hover(voxel(3, 5));
    press(voxel(3, 5), Qt::LeftButton);
    EXPECT_EQ(told(), "");
    moveTo(voxel(3, 5), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(told(), "");
    release(voxel(3, 5), Qt::LeftButton);
}

TEST_F(MouseInPicture, NothingIsToldWhileAJobWorksOnTheVoxels)
{
    loadSpots({{3, 5, 200}});
    std::latch done(1);
    bool isFinished = false;
    ASSERT_TRUE(app().jobs().runJob(
        "job", "at work",
        [&](const Progress&) {
            done.wait();
            return JobResult();
        },
        [&](const JobResult&) { isFinished = true; }));
    hover(voxel(3, 5));
    EXPECT_EQ(told(), "");
    done.count_down();
    ASSERT_TRUE(QTest::qWaitFor([&] { return isFinished; }));
    hover(voxel(3, 5));
    EXPECT_EQ(told(), "x 3 y 5 z 0: 200");
}

TEST_F(MouseInPicture, ALongTextMakesTheWindowNoWider)
{
    const int width = app().mainForm().minimumSizeHint().width();
    app().mainForm().showPointed(QString(500, 'x'));
    EXPECT_EQ(app().mainForm().minimumSizeHint().width(), width);
}

TEST_F(MouseInPicture, TwoClicksMeasureAndUndoTakesTheRulerAway)
{
    loadSpots({{3, 5, 200}, {6, 9, 180}});
    action("rulerAction").trigger();
    click(voxel(3, 5));
    EXPECT_EQ(ruler(), (Ruler{app().scene().currentId(), {{3, 5, 0}}}));
    click(voxel(6, 9));
    EXPECT_EQ(ruler(), (Ruler{app().scene().currentId(), {{3, 5, 0}, {6, 9, 0}}}));
    EXPECT_EQ(takeFrameState(app().scene()).rulerLabel, "5.00 voxels");
    EXPECT_EQ(action("editUndoAction").toolTip(), "Undo: ruler");
    action("editUndoAction").trigger();
    EXPECT_EQ(ruler(), Ruler());
    EXPECT_TRUE(view().isMeasuring);
    action("editRedoAction").trigger();
    EXPECT_EQ(ruler().ends.size(), 2U);
    // The next click begins another one.
    click(voxel(3, 5));
    EXPECT_EQ(ruler().ends.size(), 1U);
}

TEST_F(MouseInPicture, AClickBesideEveryVoxelIsRefused)
{
    loadSpots({{3, 5, 200}});
    action("rulerAction").trigger();
    click(voxel(8, 8));
    EXPECT_EQ(ruler(), Ruler());
    EXPECT_EQ(app().mainForm().statusBar()->currentMessage(), "There is no voxel to measure from.");
}

TEST_F(MouseInPicture, ADragTurnsTheVolumeAndMeasuresNothing)
{
    loadSpots({{3, 5, 200}});
    action("rulerAction").trigger();
    drag(voxel(3, 5), voxel(3, 5) + QPoint(40, 0), Qt::LeftButton);
    EXPECT_EQ(ruler(), Ruler());
    EXPECT_NE(view().rotY, 0);
}

TEST_F(MouseInPicture, WithoutTheRulerAClickMeasuresNothing)
{
    loadSpots({{3, 5, 200}});
    click(voxel(3, 5));
    EXPECT_EQ(ruler(), Ruler());
}

TEST_F(MouseInPicture, EscapeOrASecondChoiceEndsTheRuler)
{
    loadSpots({{3, 5, 200}, {6, 9, 180}});
    for (const bool byKey : {true, false}) {
        action("rulerAction").trigger();
        EXPECT_TRUE(action("rulerAction").isChecked());
        click(voxel(3, 5));
        click(voxel(6, 9));
        if (byKey)
            key(Qt::Key_Escape);
        else
            action("rulerAction").trigger();
        EXPECT_FALSE(action("rulerAction").isChecked());
        EXPECT_FALSE(view().isMeasuring);
        EXPECT_EQ(ruler(), Ruler());
        EXPECT_TRUE(app().mainForm().isVisible());
    }
}

TEST_F(MouseInPicture, TheRulerGoesWithItsStack)
{
    loadSpots({{3, 5, 200}});
    EXPECT_TRUE(action("rulerAction").isEnabled());
    action("rulerAction").trigger();
    click(voxel(3, 5));
    load({picFile("other.pic")});
    EXPECT_EQ(ruler().ends.size(), 1U);
    app().closeStack(0);
    EXPECT_EQ(ruler(), Ruler());
    EXPECT_TRUE(view().isMeasuring);
    app().closeAll();
    EXPECT_FALSE(view().isMeasuring);
    EXPECT_FALSE(action("rulerAction").isChecked());
    EXPECT_FALSE(action("rulerAction").isEnabled());
}

TEST_F(MouseInPicture, UndoOfALookLeavesTheRuler)
{
    loadSpots({{3, 5, 200}});
    app().model().editUndoably("look", 0, Change::Look,
                               [](Scene& scene) { scene.view.showBoundingBox = true; });
    action("rulerAction").trigger();
    app().model().edit(Change::Ruler, [](Scene& scene) {
        scene.view.ruler = {scene.currentId(), {{1, 1, 1}}};
    });
    app().model().undoStack().undo();
    EXPECT_FALSE(view().showBoundingBox);
    EXPECT_EQ(ruler().ends.size(), 1U);
    EXPECT_TRUE(view().isMeasuring);
}

} // namespace
} // namespace tirn
