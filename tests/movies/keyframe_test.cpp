#include <gtest/gtest.h>

#include "movies/keyframe.h"

namespace tirn {
namespace {

TEST(KeyFrame, StartsAtTheOriginWithScaleOne)
{
    const KeyFrame frame;
    for (const double value : {frame.xrot, frame.yrot, frame.zrot, frame.xtrans, frame.ytrans, frame.ztrans,
                               frame.xmin, frame.ymin, frame.zmin, frame.xmax, frame.ymax, frame.zmax})
        EXPECT_EQ(value, 0);
    for (const double value : {frame.xscale, frame.yscale, frame.zscale})
        EXPECT_EQ(value, 1);
    EXPECT_EQ(frame.timepoint, 0);
    EXPECT_TRUE(frame.palettes.empty());
    EXPECT_TRUE(frame.channels.empty());
}

TEST(KeyFrame, CopiesHoldTheirOwnPalettes)
{
    KeyFrame frame;
    frame.palettes = {{{1, 2}, {3, 4}, {5, 6}, {7, 8}}};
    frame.channels = {{ChannelState::PaletteSwap, 1, 2}};
    KeyFrame copy = frame;
    EXPECT_EQ(copy, frame);
    copy.palettes[0].green[1] = 9;
    EXPECT_EQ(frame.palettes[0].green[1], 4);
    EXPECT_NE(copy, frame);
}

TEST(KeyFrame, AssigningAFrameToItselfKeepsItsPalettes)
{
    KeyFrame frame;
    frame.palettes = {{{1}, {2}, {3}, {4}}};
    const KeyFrame& same = frame;
    frame = same;
    ASSERT_EQ(frame.palettes.size(), 1U);
    EXPECT_EQ(frame.palettes[0].alpha, std::vector<double>{4});
}

TEST(KeyFrame, EveryFieldCounts)
{
    KeyFrame frame;
    frame.zmax = 5;
    EXPECT_NE(frame, KeyFrame());
    KeyFrame channels;
    channels.channels = {{ChannelState::Shown, 0, 1}};
    EXPECT_NE(channels, KeyFrame());
}

} // namespace
} // namespace tirn
