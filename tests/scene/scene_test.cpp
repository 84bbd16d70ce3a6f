#include "scene/scene.h"

#include <gtest/gtest.h>

#include "support/logcapture.h"

namespace tirn {
namespace {

class SceneState : public ::testing::Test
{
protected:
    test::LogCapture log;
    Scene scene;
};

TEST_F(SceneState, HasNoCurrentVolumeOutsideItsList)
{
    EXPECT_EQ(scene.current(), nullptr);
    scene.currentIndex = 0;
    EXPECT_EQ(scene.current(), nullptr);
    scene.arrays.push_back(std::make_unique<VoxelArray>(2, 2, 2, VolumeOptions{}));
    EXPECT_EQ(scene.current(), scene.arrays[0].get());
    scene.currentIndex = 1;
    EXPECT_EQ(scene.current(), nullptr);
    scene.currentIndex = -1;
    EXPECT_EQ(scene.current(), nullptr);
}

TEST_F(SceneState, WithoutAVolumeIsTheViewAlone)
{
    scene.watermark = "mark";
    scene.batchMode = true;
    scene.view.rotY = 90;
    const FrameState frame = takeFrameState(scene);
    EXPECT_EQ(frame.array, nullptr);
    EXPECT_EQ(frame.watermark, "mark");
    EXPECT_TRUE(frame.batchMode);
    EXPECT_TRUE(frame.channels.empty());
    EXPECT_EQ(frame.rotation, rotationMatrix(0, 90, 0));
}

TEST_F(SceneState, IsCopiedAtTheBeginningOfAFrame)
{
    scene.arrays.push_back(std::make_unique<VoxelArray>(4, 5, 6, VolumeOptions{}));
    scene.currentIndex = 0;
    VoxelArray& array = *scene.arrays[0];
    array.setChannelCount(2);
    array.setTimePoints(3);
    array.timeLabels()[2] = "00:01:02";
    array.setTimePoint(2);
    array.scale = {1, 2, 3};
    array.channels()[1].display = {ChannelState::FlashOff, 4, 5};
    const FrameState frame = takeFrameState(scene);
    array.scale = {};
    array.setTimePoint(0);
    EXPECT_EQ(frame.array, &array);
    EXPECT_EQ(frame.timePoint, 2);
    EXPECT_EQ(frame.timeLabel, "00:01:02");
    EXPECT_EQ(frame.scale, (AxisScale{1, 2, 3}));
    EXPECT_EQ(frame.cut, (CutBox{0, 3, 0, 4, 0, 5}));
    ASSERT_EQ(frame.channels.size(), 2U);
    EXPECT_EQ(frame.channels[1], (ChannelDisplay{ChannelState::FlashOff, 4, 5}));
}

TEST(ChannelStates, EveryOddOneIsHidden)
{
    for (int state = 0; state <= 6; ++state) {
        EXPECT_EQ(isHidden(static_cast<ChannelState>(state)), state % 2 == 1) << state;
        EXPECT_EQ(isFlashing(static_cast<ChannelState>(state)), state >= 2) << state;
    }
}

} // namespace
} // namespace tirn
