#include "scene/pointing/cuthandletool.h"

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

constexpr QSize kSize = {80, 80};

/// Eight slices an axis, each ten pixels wide.
class CutTool : public ::testing::Test
{
protected:
    CutTool()
    {
        addStack();
        model.edit({}, [](Scene& scene) { scene.view.cutHandles.shown = true; });
    }
    void addStack()
    {
        model.editLists(Change::Stacks, [](Scene& scene) {
            scene.arrays.push_back(test::makeVolume({test::denseStack(8, 8, 8)}, {}));
            scene.currentIndex = static_cast<int>(scene.arrays.size()) - 1;
        });
    }
    CutBox cut() const { return model.scene().current()->cut; }
    bool press(double x, double y) { return tool.press({x, y}, kSize, 1); }

    test::GlRecorder gl{test::GlRecorder::Mode::StandAlone};
    test::LogCapture log;
    SceneModel model;
    CutHandleTool tool{model};
};

TEST_F(CutTool, DragsTheHandleThatIsCaughtAndOutlinesTheCut)
{
    ASSERT_TRUE(press(78, 40));
    EXPECT_TRUE(model.view().drawCutBox);
    tool.move({58, 40});
    EXPECT_EQ(cut(), (CutBox{0, 5, 0, 7, 0, 7}));
    tool.move({48, 90});
    EXPECT_EQ(cut(), (CutBox{0, 4, 0, 7, 0, 7})) << "counted from where the drag began";
    tool.release();
    EXPECT_FALSE(model.view().drawCutBox);
    tool.move({8, 40});
    EXPECT_EQ(cut(), (CutBox{0, 4, 0, 7, 0, 7}));
}

TEST_F(CutTool, ADragIsTakenBackAsOne)
{
    for (const double to : {60.0, 40.0}) {
        ASSERT_TRUE(press(to + 20, 40));
        tool.move({to + 10, 40});
        tool.move({to, 40});
        tool.release();
    }
    EXPECT_EQ(cut().xMax, 3);
    model.undoStack().undo();
    EXPECT_EQ(cut().xMax, 5);
    model.undoStack().undo();
    EXPECT_EQ(cut().xMax, 7);
    EXPECT_FALSE(model.undoStack().canUndo());
}

TEST_F(CutTool, CatchesNothingBesideTheHandlesOrWithoutThem)
{
    EXPECT_FALSE(press(60, 60));
    EXPECT_FALSE(tool.isDragging());
    EXPECT_FALSE(tool.isOver({60, 60}, kSize, 1));
    EXPECT_TRUE(tool.isOver({78, 40}, kSize, 1));
    model.edit({}, [](Scene& scene) { scene.view.cutHandles.shown = false; });
    EXPECT_FALSE(press(78, 40));
    model.edit({}, [](Scene& scene) {
        scene.view.cutHandles.shown = true;
        scene.view.renderMode = RenderMode::Stereo;
    });
    EXPECT_FALSE(press(78, 40));
}

TEST_F(CutTool, ReachesFurtherOnFinePixels)
{
    EXPECT_FALSE(tool.isOver({68, 40}, kSize, 1));
    EXPECT_TRUE(tool.isOver({68, 40}, kSize, 2));
}

TEST_F(CutTool, FollowsTheZoom)
{
    model.edit({}, [](Scene& scene) { scene.view.zoom = 0.5; });
    EXPECT_FALSE(press(78, 40));
    ASSERT_TRUE(press(59, 40));
    // A slice is five pixels now.
    tool.move({49, 40});
    EXPECT_EQ(cut(), (CutBox{0, 5, 0, 7, 0, 7}));
}

TEST_F(CutTool, KeepsTheLeastSlices)
{
    model.edit({}, [](Scene& scene) { scene.view.cutHandles.leastSlices = {3, 1, 1}; });
    ASSERT_TRUE(press(78, 40));
    tool.move({-50, 40});
    EXPECT_EQ(cut(), (CutBox{0, 2, 0, 7, 0, 7}));
}

TEST_F(CutTool, LeavesAnotherStackAlone)
{
    ASSERT_TRUE(press(78, 40));
    addStack();
    tool.move({48, 40});
    EXPECT_EQ(cut(), (CutBox{0, 7, 0, 7, 0, 7}));
    model.editLists(Change::Stacks, [](Scene& scene) {
        scene.arrays.clear();
        scene.currentIndex = -1;
    });
    tool.move({48, 40});
    tool.release();
    EXPECT_FALSE(tool.isDragging());
    EXPECT_FALSE(press(78, 40));
}

} // namespace
} // namespace tirn
