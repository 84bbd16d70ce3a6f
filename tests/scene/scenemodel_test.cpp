#include "scene/scenemodel.h"

#include <thread>

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "scene/sceneedits.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

class SceneModelTest : public ::testing::Test
{
protected:
    SceneModelTest()
    {
        QObject::connect(&model, &SceneModel::changed, [this](Changes changes) { told.push_back(changes); });
        QObject::connect(&model, &SceneModel::frameNeeded, [this] { ++frames; });
    }
    StackId addStack()
    {
        StackId id = StackId::None;
        model.editLists(Change::Stacks, [&](Scene& scene) {
            scene.arrays.push_back(std::make_unique<VoxelArray>(8, 6, 4, VolumeOptions()));
            id = scene.arrays.back()->id();
            setCurrentStack(scene, static_cast<int>(scene.arrays.size()) - 1);
        });
        told.clear();
        frames = 0;
        return id;
    }
    const VoxelArray& stack(StackId id) const { return *model.scene().find(id); }
    void cut(StackId id, int xMin, int gesture = 0)
    {
        model.editUndoably("Cut", gesture, Change::Cut,
                           [&](Scene& scene) { scene.find(id)->cut.xMin = xMin; });
    }

    test::GlRecorder gl{test::GlRecorder::Mode::StandAlone};
    test::LogCapture log;
    SceneModel model;
    std::vector<Changes> told;
    int frames = 0;
};

TEST_F(SceneModelTest, AnEditIsToldOnceAndAsksForAFrame)
{
    model.edit(Change::Pose | Change::Look, [](Scene& scene) { scene.view.rotX = 30; });
    EXPECT_EQ(told, std::vector<Changes>{Change::Pose | Change::Look});
    EXPECT_EQ(frames, 1);
    EXPECT_EQ(model.view().rotX, 30);
}

TEST_F(SceneModelTest, AnEditThatChangesNothingThatIsSeenIsSilent)
{
    model.edit({}, [](Scene& scene) { scene.view.dragging = true; });
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(frames, 0);
    EXPECT_TRUE(model.view().dragging);
}

TEST_F(SceneModelTest, AnEditHoldsTheSceneLockAndIsToldWithoutIt)
{
    bool heldInside = false;
    bool heldOutside = true;
    QObject::connect(&model, &SceneModel::changed, [&] {
        heldOutside = !model.sharedScene().mutex.try_lock();
        if (!heldOutside)
            model.sharedScene().mutex.unlock();
    });
    model.edit(Change::Pose, [&](Scene&) {
        std::thread([&] {
            heldInside = !model.sharedScene().mutex.try_lock();
            if (!heldInside)
                model.sharedScene().mutex.unlock();
        }).join();
    });
    EXPECT_TRUE(heldInside);
    EXPECT_FALSE(heldOutside);
}

TEST_F(SceneModelTest, ListsChangeAfterDrawingHasStopped)
{
    std::vector<std::string> order;
    model.setDrawing({[&] { order.push_back("stop"); }, [&] { order.push_back("current"); }});
    model.editLists(Change::Palettes, [&](Scene&) { order.push_back("change"); });
    EXPECT_EQ(order, (std::vector<std::string>{"stop", "current", "change"}));
    EXPECT_EQ(told, std::vector<Changes>{Change::Palettes});
    EXPECT_EQ(frames, 1);
}

TEST_F(SceneModelTest, WhatMovedByItselfIsToldWithoutAFrame)
{
    model.follow(Change::Pose);
    EXPECT_EQ(told, std::vector<Changes>{Change::Pose});
    EXPECT_EQ(frames, 0);
}

TEST_F(SceneModelTest, AnUndoableEditIsTakenBackAndDoneAgain)
{
    const StackId id = addStack();
    cut(id, 3);
    EXPECT_EQ(stack(id).cut.xMin, 3);
    EXPECT_EQ(model.undoStack().undoText(), "Cut");
    told.clear();
    model.undoStack().undo();
    EXPECT_EQ(stack(id).cut.xMin, 0);
    EXPECT_EQ(told, std::vector<Changes>{Change::Cut});
    model.undoStack().redo();
    EXPECT_EQ(stack(id).cut.xMin, 3);
}

TEST_F(SceneModelTest, AGestureIsTakenBackAsOne)
{
    const StackId id = addStack();
    const int drag = model.newGesture();
    for (int x = 1; x <= 4; ++x)
        cut(id, x, drag);
    cut(id, 5, model.newGesture());
    EXPECT_EQ(model.undoStack().count(), 2);
    model.undoStack().undo();
    EXPECT_EQ(stack(id).cut.xMin, 4);
    model.undoStack().undo();
    EXPECT_EQ(stack(id).cut.xMin, 0);
}

TEST_F(SceneModelTest, EditsWithoutAGestureAreTakenBackOneByOne)
{
    const StackId id = addStack();
    cut(id, 1);
    cut(id, 2);
    EXPECT_EQ(model.undoStack().count(), 2);
}

TEST_F(SceneModelTest, WhatChangedNothingCannotBeTakenBack)
{
    const StackId id = addStack();
    cut(id, 0);
    EXPECT_EQ(model.undoStack().count(), 0);
}

TEST_F(SceneModelTest, TakingBackLeavesAloneWhatTheEditDidNotTouch)
{
    const StackId id = addStack();
    cut(id, 3);
    model.edit(Change::Pose | Change::Scale, [&](Scene& scene) {
        scene.view.rotY = 45;
        scene.find(id)->scale.x = 2;
    });
    model.undoStack().undo();
    EXPECT_EQ(model.view().rotY, 45);
    EXPECT_EQ(stack(id).scale.x, 2);
}

TEST_F(SceneModelTest, EveryKindOfValueIsTakenBack)
{
    const StackId id = addStack();
    const Changes all = Change::Pose | Change::Look | Change::Scale | Change::Cut | Change::Channels;
    model.editUndoably("All", 0, all, [&](Scene& scene) {
        scene.view.rotX = 1;
        scene.view.transZ = 2;
        scene.view.showScaleBar = true;
        VoxelArray& array = *scene.find(id);
        array.scale.y = 3;
        array.baseScale.y = 3;
        array.preserveScaleRatio = true;
        array.stack().dimX = 0.5;
        array.cut.zMax = 1;
        array.channels()[0].display.state = ChannelState::Hidden;
    });
    model.undoStack().undo();
    EXPECT_EQ(model.view(), ViewState());
    const VoxelArray& array = stack(id);
    EXPECT_EQ(array.scale, AxisScale());
    EXPECT_EQ(array.baseScale, AxisScale());
    EXPECT_FALSE(array.preserveScaleRatio);
    EXPECT_EQ(array.stack().dimX, ImageAttributes().dimX);
    EXPECT_EQ(array.cut.zMax, 3);
    EXPECT_EQ(array.channels()[0].display, ChannelDisplay());
}

TEST_F(SceneModelTest, TakingBackAnEditOfAClosedStackDoesNothing)
{
    const StackId first = addStack();
    const StackId second = addStack();
    cut(first, 3);
    model.editLists(Change::Stacks, [](Scene& scene) { scene.arrays.erase(scene.arrays.begin()); });
    model.undoStack().undo();
    EXPECT_EQ(stack(second).cut.xMin, 0);
}

TEST_F(SceneModelTest, StacksAreFoundByTheirIdsWhichAreNeverUsedAgain)
{
    const StackId first = addStack();
    const StackId second = addStack();
    EXPECT_NE(first, second);
    EXPECT_EQ(model.scene().indexOf(second), 1);
    model.editLists(Change::Stacks, [](Scene& scene) { scene.arrays.erase(scene.arrays.begin()); });
    EXPECT_EQ(model.scene().indexOf(second), 0);
    EXPECT_EQ(model.scene().indexOf(first), -1);
    EXPECT_EQ(model.scene().find(first), nullptr);
    const StackId third = addStack();
    EXPECT_NE(third, first);
    EXPECT_NE(third, second);
}

TEST_F(SceneModelTest, PlayingStopsWhenAnotherStackBecomesCurrent)
{
    const StackId first = addStack();
    addStack();
    const auto show = [this](int index) {
        model.edit(Change::Stacks, [index](Scene& scene) { setCurrentStack(scene, index); });
    };
    show(0);
    model.edit(Change::Playback, [&](Scene& scene) { scene.view.playing = first; });
    EXPECT_TRUE(model.scene().isPlaying());
    show(1);
    EXPECT_FALSE(model.scene().isPlaying());
    show(0);
    EXPECT_FALSE(model.scene().isPlaying());
}

TEST_F(SceneModelTest, PlayingStopsWithItsStack)
{
    const StackId id = addStack();
    model.edit(Change::Playback, [&](Scene& scene) { scene.view.playing = id; });
    model.editLists(Change::Stacks, [](Scene& scene) {
        scene.arrays.clear();
        setCurrentStack(scene, -1);
    });
    EXPECT_FALSE(model.scene().isPlaying());
    EXPECT_EQ(model.view().playing, StackId::None);
}

} // namespace
} // namespace tirn
