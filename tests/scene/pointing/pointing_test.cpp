#include "scene/pointing/pointing.h"

#include <gtest/gtest.h>

#include "glsupport/recordedrig.h"

namespace tirn {
namespace {

using test::denseStack;
using test::PlainStack;

constexpr QSize kSize = {80, 80};

class Pointing : public ::testing::Test
{
protected:
    test::LogCapture log;
    test::RecordedRig rig{RenderThreadKind::FragmentProgram, kSize};

    std::optional<PointedVoxel> at(double x, double y) const { return pointAt(rig.scene, {x, y}, kSize); }
    VoxelArray& show(const PlainStack& stack)
    {
        VoxelArray& array = rig.show({stack});
        rig.makePalettes(stack.channels);
        return array;
    }
};

/// A voxel of the front slice of 8 x 8 x 8 voxels, each ten pixels wide.
PlainStack bright(int x, int y, int value)
{
    PlainStack stack = PlainStack::blank(8, 8, 8, 2);
    stack.at(x, y, 0, 1) = static_cast<std::uint16_t>(value);
    stack.at(x, y, 0, 0) = 7;
    return stack;
}

TEST_F(Pointing, TellsTheVoxelAndWhatEachChannelHolds)
{
    show(bright(2, 5, 200));
    EXPECT_EQ(at(25, 55), (PointedVoxel{{2, 5, 0}, {7, 200}}));
    EXPECT_FALSE(at(35, 55));
    EXPECT_FALSE(at(-1, 55));
}

TEST_F(Pointing, FollowsThePoseTheScaleAndTheCut)
{
    VoxelArray& array = show(bright(2, 5, 200));
    rig.scene.view.transX = 0.5;
    EXPECT_EQ(at(45, 55)->voxel, (VoxelPlace{2, 5, 0}));
    rig.scene.view.transX = 0;
    array.scale = {0.5, 1, 1};
    EXPECT_EQ(at(32, 55)->voxel, (VoxelPlace{2, 5, 0}));
    array.scale = {1, 1, 1};
    rig.scene.view.zoom = 0.5;
    EXPECT_EQ(at(32, 47)->voxel, (VoxelPlace{2, 5, 0}));
    rig.scene.view.zoom = 1;
    array.cut.zMin = 1;
    EXPECT_FALSE(at(25, 55));
}

TEST_F(Pointing, AHiddenChannelIsNotSeenButTold)
{
    VoxelArray& array = show(bright(2, 5, 200));
    array.channels()[1].display.state = ChannelState::Hidden;
    EXPECT_EQ(at(25, 55), (PointedVoxel{{2, 5, 0}, {7, 200}}));
    array.channels()[0].display.state = ChannelState::FlashOff;
    EXPECT_FALSE(at(25, 55));
}

TEST_F(Pointing, SeesTheTimePointThatIsShown)
{
    VoxelArray& array = rig.show({bright(2, 5, 200), bright(4, 4, 90)});
    rig.makePalettes(2);
    array.setTimePoint(1);
    EXPECT_FALSE(at(25, 55));
    EXPECT_EQ(at(45, 45), (PointedVoxel{{4, 4, 0}, {7, 90}}));
}

TEST_F(Pointing, WhereVoxelsWereLetGoTellsTheFirstPlaceOnly)
{
    VoxelArray& array = show(bright(2, 5, 200));
    array.images().front()->freeStack();
    EXPECT_EQ(at(35, 55), (PointedVoxel{{3, 5, 0}, {}}));
    array.cut.zMin = 3;
    EXPECT_EQ(at(35, 55), (PointedVoxel{{3, 5, 3}, {}}));
}

TEST_F(Pointing, InAFlatViewOfFourSeesThatView)
{
    show(bright(2, 5, 200));
    rig.scene.view.renderMode = RenderMode::FourViews;
    rig.scene.view.ortho = projectionOf(RenderMode::FourViews);
    rig.scene.view.rotY = 90;
    // The lower left quarter shows the front, half as large.
    EXPECT_EQ(at(12.5, 40 + 27.5)->voxel, (VoxelPlace{2, 5, 0}));
}

TEST_F(Pointing, WithoutAStackOrInABatchThereIsNothing)
{
    EXPECT_FALSE(at(40, 40));
    show(bright(2, 5, 200));
    rig.scene.batchMode = true;
    EXPECT_FALSE(at(25, 55));
}

TEST(PointedText, HasTheNumbersOfTheFileAndMicronsWhereTheyAreKnown)
{
    VoxelArray array(64, 64, 20, VolumeOptions());
    array.stack().dimX = array.stack().dimY = array.stack().dimZ = -1;
    EXPECT_EQ(pointedText(array, {{12, 40, 3}, {55, 4095}}), "x 12 y 40 z 3: 55, 4095");
    EXPECT_EQ(pointedText(array, {{0, 0, 0}, {}}), "x 0 y 0 z 0");
    array.stack().dimX = 0.25;
    array.stack().dimY = 0.5;
    EXPECT_EQ(pointedText(array, {{12, 40, 3}, {9}}), "x 12 y 40 z 3: 9");
    array.stack().dimZ = 2;
    EXPECT_EQ(pointedText(array, {{12, 40, 3}, {9}}), "x 12 y 40 z 3: 9  (3.00, 20.0, 6.00 µm)");
    // Voxels of a reduced stack are as large as four of the file.
    array.subsample = 4;
    EXPECT_EQ(pointedText(array, {{1, 2, 0}, {9}}), "x 4 y 8 z 0: 9  (0.25, 1.00, 0.00 µm)");
}

TEST(DistanceText, IsThatOfTheMiddlesOfTheVoxels)
{
    VoxelArray array(64, 64, 20, VolumeOptions());
    array.stack().dimX = array.stack().dimY = array.stack().dimZ = -1;
    EXPECT_EQ(distanceText(array, {1, 1, 1}, {4, 5, 1}), "5.00 voxels");
    array.stack().dimX = 1;
    array.stack().dimY = 2;
    array.stack().dimZ = 6;
    // 3, 2 * 2 and 2 * 6: 13.
    EXPECT_EQ(distanceText(array, {1, 1, 1}, {4, 3, 3}), "13.0 µm");
    EXPECT_EQ(distanceText(array, {1, 1, 1}, {4, 3, 1}), "5.00 µm");
    EXPECT_EQ(distanceText(array, {1, 1, 1}, {1, 1, 1}), "0.00 µm");
}

} // namespace
} // namespace tirn
