#include <climits>

#include <gtest/gtest.h>

#include "image/allocationerror.h"
#include "image/filters/speckfilter.h"
#include "support/filtershapes.h"
#include "support/slowfilters.h"

namespace tirn {
namespace {

using test::sameVoxels;
using test::samples;
using test::SlowStack;

TEST(ZFilter, AgreesWithAPlainSearchOfTheOtherLayers)
{
    for (const test::FilterCase& one : test::filterCases(90, 24, 13)) {
        const auto stack = test::randomStack(one.shape, one.seed);
        const SlowStack slow(*stack);
        // So that about half of the voxels have something above it around them.
        const double part = 1 - 0.08 / std::max(1, one.size / 2);
        const int threshold = static_cast<int>(part * ((1 << one.shape.bitDepth) - 1));
        ASSERT_TRUE(zFilter(*stack, one.size, one.channel, threshold));
        ASSERT_TRUE(sameVoxels(*stack, slowZFilter(slow, one.size, one.channel, threshold))) << one.text();
    }
}

TEST(ZFilter, LayersWiderThanABundleAgreeToo)
{
    const auto stack = test::randomStack({70, 40, 5, 2, 16}, 5);
    const SlowStack slow(*stack);
    ASSERT_TRUE(zFilter(*stack, 3, -1, 64000));
    EXPECT_TRUE(sameVoxels(*stack, slowZFilter(slow, 3, -1, 64000)));
}

TEST(ZFilter, ASpeckOfOneLayerGoesAndWhatLastsStays)
{
    // A pillar of two layers at x 1, a speck at x 5, and a voxel beside the pillar in its upper layer.
    const auto stack = test::makeStack({7, 1, 4, 1, 8}, [](int x, int, int z, int) {
        return (x == 1 && (z == 1 || z == 2)) || (x == 5 && z == 1) || (x == 2 && z == 2) ? 200 : 10;
    });
    ASSERT_TRUE(zFilter(*stack, 3, -1, 100));
    // Layer 1 sees x 1 and 2 of layer 2, one voxel wider on either side; layers 0 and 3 see theirs.
    const std::vector<int> expected = {10, 10,  10,  0,  10, 10, 10, //
                                       10, 200, 10,  10, 0,  0,  0,  //
                                       10, 200, 200, 0,  10, 10, 10, //
                                       10, 10,  10,  10, 0,  0,  0};
    EXPECT_EQ(samples(*stack), expected);
}

TEST(ZFilter, AtTheEndsALayerIsItsOwnNeighbour)
{
    // The layer below the first is the first again: a speck there keeps itself and what is around it.
    const auto stack =
        test::makeStack({5, 1, 3, 1, 8}, [](int x, int, int z, int) { return x == 2 && z == 0 ? 200 : 10; });
    ASSERT_TRUE(zFilter(*stack, 3, -1, 100));
    EXPECT_EQ(samples(*stack), (std::vector<int>{0, 10, 200, 10, 0, 0, 10, 10, 10, 0, 0, 0, 0, 0, 0}));
}

TEST(ZFilter, TheOtherChannelsBecomeZero)
{
    const auto stack = test::constantStack({3, 3, 3, 2, 8}, 50);
    ASSERT_TRUE(zFilter(*stack, 3, 1, 49));
    EXPECT_EQ(test::channelSamples(*stack, 0), std::vector<int>(27, 0));
    EXPECT_EQ(test::channelSamples(*stack, 1), std::vector<int>(27, 50));
}

TEST(ZFilter, AWindowOfOneLayerClears)
{
    const auto stack = test::constantStack({3, 3, 3, 1, 16}, 50);
    ASSERT_TRUE(zFilter(*stack, 1, -1, 0));
    EXPECT_EQ(samples(*stack), std::vector<int>(27, 0));
}

TEST(ZFilter, ThresholdsBeyondTheDepthKeepAllOrNothing)
{
    const auto stack = test::constantStack({3, 3, 3, 1, 8}, 0);
    const auto bright = test::constantStack({3, 3, 3, 1, 8}, 255);
    ASSERT_TRUE(zFilter(*bright, INT_MAX, -1, INT_MIN));
    EXPECT_EQ(samples(*bright), std::vector<int>(27, 255));
    ASSERT_TRUE(zFilter(*bright, 3, -1, 254));
    EXPECT_EQ(samples(*bright), std::vector<int>(27, 255));
    ASSERT_TRUE(zFilter(*bright, 3, -1, 255));
    EXPECT_EQ(samples(*bright), std::vector<int>(27, 0));
    ASSERT_TRUE(zFilter(*stack, 3, -1, INT_MAX));
    EXPECT_EQ(samples(*stack), std::vector<int>(27, 0));
}

TEST(ZFilter, WhatCannotBeFilteredIsRefused)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 8}, 8);
    const SlowStack before(*stack);
    EXPECT_FALSE(zFilter(*stack, 3, 2, 0));
    EXPECT_FALSE(zFilter(*stack, 3, -2, 0));
    ImageFile none;
    EXPECT_FALSE(zFilter(none, 3, -1, 0));
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(ZFilter, ACancelledFilterLeavesTheStackAsItWas)
{
    const auto stack = test::randomStack({65, 64, 40, 1, 8}, 8);
    const SlowStack before(*stack);
    std::atomic<bool> cancel = false;
    Progress progress;
    progress.cancel = &cancel;
    progress.report = [&](const QString&, int done, int) { cancel = done > 0; };
    EXPECT_FALSE(zFilter(*stack, 5, -1, 100, progress));
    EXPECT_TRUE(cancel);
    EXPECT_FALSE(zFilter(*stack, 1, -1, 100, progress));
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(ZFilter, WithoutMemoryTheStackStays)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 16}, 4);
    const SlowStack before(*stack);
    const test::NoVoxelMemory none;
    try {
        zFilter(*stack, 3, -1, 0);
        FAIL() << "no exception";
    } catch (const AllocationError& error) {
        EXPECT_STREQ(error.what(), "Could not allocate memory for zfilter");
    }
    EXPECT_TRUE(sameVoxels(*stack, before));
}

} // namespace
} // namespace tirn
