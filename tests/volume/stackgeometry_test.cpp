#include "volume/stackgeometry.h"

#include <gtest/gtest.h>

#include "support/logcapture.h"

namespace tirn {
namespace {

TEST(StackGeometry, ASliceThickStackKeepsOneBlockOfOne)
{
    const StackGeometry g = StackGeometry::of(100, 100, 1, 1024);
    EXPECT_EQ(g.powX, 128);
    EXPECT_EQ(g.powY, 128);
    EXPECT_EQ(g.powZ, 1);
    EXPECT_EQ(g.zBlocks, 1);
    EXPECT_EQ(g.blockZ(), 1);
    EXPECT_EQ(g.padX(), 14);
    EXPECT_EQ(g.padZ(), 0);
}

TEST(StackGeometry, AWideStackIsCutIntoBlocksOfTheLimit)
{
    const StackGeometry g = StackGeometry::of(1500, 10, 600, 1024);
    EXPECT_EQ(g.powX, 2048);
    EXPECT_EQ(g.xBlocks, 2);
    EXPECT_EQ(g.blockX(), 1024);
    EXPECT_EQ(g.padX(), 274);
    EXPECT_EQ(g.powZ, 1024);
    EXPECT_EQ(g.zBlocks, 1);
    EXPECT_EQ(StackGeometry::of(10, 10, 600, 512).powZ, 1024);
    EXPECT_EQ(StackGeometry::of(10, 10, 600, 512).zBlocks, 2);
}

TEST(StackGeometry, ALimitIsRoundedDownToAPowerOfTwo)
{
    EXPECT_EQ(StackGeometry::of(1024, 1, 1, 1024).xBlocks, 1);
    EXPECT_EQ(StackGeometry::of(1024, 1, 1, 1023).xBlocks, 2);
    EXPECT_EQ(StackGeometry::of(1024, 1, 1, 1000).blockX(), 512);
    EXPECT_EQ(StackGeometry::of(1024, 1, 1, 1025).xBlocks, 1);
    EXPECT_EQ(StackGeometry::of(4, 1, 1, 1).xBlocks, 4);
    EXPECT_EQ(StackGeometry::of(4, 1, 1, 0).xBlocks, 4);
    EXPECT_EQ(StackGeometry::of(4, 1, 1, -7).xBlocks, 4);
}

TEST(StackGeometry, OddPaddingLeavesItsLargerHalfBehindTheData)
{
    const StackGeometry g = StackGeometry::of(5, 3, 7, 1024);
    EXPECT_EQ(g.padX(), 1);
    EXPECT_EQ(g.padY(), 0);
    EXPECT_EQ(g.padZ(), 0);
}

TEST(StackGeometry, GroupsCountTheQuadsOfAllBlocks)
{
    StackGeometry g = StackGeometry::of(5, 3, 4, 4);
    EXPECT_EQ(g.yGroup(), 3 * 2 * 1);
    EXPECT_EQ(g.xGroup(), 5 * 1 * 1);
    EXPECT_EQ(g.zGroup(), 4 * 2 * 1);
    EXPECT_EQ(g.slicesOfAllAxes(), 19);
    EXPECT_EQ(g.blocks(), 2);
    EXPECT_EQ(g.maxPow(), 8);
    g.finalZ = 9;
    EXPECT_EQ(g.finalDepth(), 9);
    EXPECT_EQ(g.zGroup(), 18);
    g.finalZ = 3;
    EXPECT_EQ(g.finalDepth(), 4);
}

TEST(QuadPosition, SpreadsOverAlmostTheWholeExtentFromThePositiveEnd)
{
    const StackGeometry g = StackGeometry::of(256, 256, 32, 1024);
    EXPECT_DOUBLE_EQ(quadPosition(g, 0, 2), 0.996 * 32 / 256);
    EXPECT_NEAR(quadPosition(g, 31, 2), -0.996 * 32 / 256, 1e-12);
    EXPECT_DOUBLE_EQ(quadPosition(g, 0, 0), 0.996);
    EXPECT_NEAR(quadPosition(g, 1, 0), 0.996 - 1.992 / 255, 1e-12);
}

TEST(QuadPosition, AnOddSizeSpansItsOwnLengthNotThePaddedOne)
{
    const StackGeometry g = StackGeometry::of(5, 3, 3, 1024);
    EXPECT_NEAR(quadPosition(g, 0, 0), 0.6225, 1e-12);
    EXPECT_NEAR(quadPosition(g, 4, 0), -0.6225, 1e-12);
    EXPECT_NEAR(quadPosition(g, 0, 1), 0.3735, 1e-12);
    EXPECT_NEAR(quadPosition(g, 1, 1), 0.0, 1e-12);
}

TEST(QuadPosition, AReslicedDepthPutsMoreSlicesIntoTheSameLength)
{
    StackGeometry g = StackGeometry::of(8, 8, 4, 1024);
    g.finalZ = 7;
    EXPECT_NEAR(quadPosition(g, 0, 2), 0.498, 1e-12);
    EXPECT_NEAR(quadPosition(g, 3, 2), 0.0, 1e-12);
    EXPECT_NEAR(quadPosition(g, 6, 2), -0.498, 1e-12);
}

TEST(QuadPosition, OneSliceAndAnUnknownAxisLieInTheMiddle)
{
    const StackGeometry g = StackGeometry::of(8, 1, 1, 1024);
    EXPECT_EQ(quadPosition(g, 0, 1), 0.0);
    EXPECT_EQ(quadPosition(g, 0, 2), 0.0);
    EXPECT_EQ(quadPosition(g, 0, 3), 0.0);
    EXPECT_EQ(quadPosition(g, 0, -1), 0.0);
}

std::vector<double> coordinates(const StackGeometry& g, int slices, int axis)
{
    std::vector<double> all;
    for (int i = 0; i < slices; ++i)
        all.push_back(texCoord(g, i, axis));
    return all;
}

void expectNear(const std::vector<double>& seen, const std::vector<double>& expected)
{
    ASSERT_EQ(seen.size(), expected.size());
    for (std::size_t i = 0; i < seen.size(); ++i)
        EXPECT_NEAR(seen[i], expected[i], 1e-12) << "slice " << i;
}

TEST(TexCoord, RunsBackwardOnXAndYAndForwardOnZ)
{
    const StackGeometry g = StackGeometry::of(4, 4, 4, 1024);
    expectNear(coordinates(g, 4, 0), {1, 2 / 3.0, 1 / 3.0, 0});
    expectNear(coordinates(g, 4, 1), {1, 2 / 3.0, 1 / 3.0, 0});
    expectNear(coordinates(g, 4, 2), {0, 1 / 3.0, 2 / 3.0, 1});
}

// Slice 0 is the last voxel, which lies in texel 5 of 8; coordinate 6/7 shows texel 6 of the same axis.
TEST(TexCoord, AnOddSizeShowsPlanesOneVoxelOff)
{
    const StackGeometry g = StackGeometry::of(5, 5, 5, 1024);
    expectNear(coordinates(g, 5, 0), {6 / 7.0, 5 / 7.0, 4 / 7.0, 3 / 7.0, 2 / 7.0});
    expectNear(coordinates(g, 5, 2), {1 / 7.0, 2 / 7.0, 3 / 7.0, 4 / 7.0, 5 / 7.0});
}

TEST(TexCoord, BeginsAnewInEachBlock)
{
    const StackGeometry g = StackGeometry::of(8, 8, 8, 4);
    expectNear(coordinates(g, 8, 1), {1, 2 / 3.0, 1 / 3.0, 0, 1, 2 / 3.0, 1 / 3.0, 0});
    expectNear(coordinates(g, 8, 2), {0, 1 / 3.0, 2 / 3.0, 1, 0, 1 / 3.0, 2 / 3.0, 1});
}

// Six slices in two blocks of four: only the first three are moved by the padding, and on z the fourth
// overshoots.
TEST(TexCoord, IndexDivisionsTruncateWhereBlocksDoNotSplitEvenly)
{
    const StackGeometry g = StackGeometry::of(6, 6, 6, 4);
    expectNear(coordinates(g, 6, 0), {2 / 3.0, 1 / 3.0, 0, 0, 1, 2 / 3.0});
    expectNear(coordinates(g, 6, 2),
               {1 / 7.0, 5 / 14.0 + 1 / 7.0, 5 / 7.0 + 1 / 7.0, 15 / 14.0, 1 / 7.0, 5 / 14.0 + 1 / 7.0});
}

TEST(TexCoord, AReslicedDepthSamplesBetweenThePlanes)
{
    StackGeometry g = StackGeometry::of(8, 8, 4, 1024);
    g.finalZ = 7;
    expectNear(coordinates(g, 7, 2), {0, 1 / 6.0, 2 / 6.0, 3 / 6.0, 4 / 6.0, 5 / 6.0, 1});
}

TEST(TexCoord, APaddedReslicedDepthIsSqueezedIntoTheData)
{
    StackGeometry g = StackGeometry::of(8, 8, 6, 1024);
    g.finalZ = 11;
    for (int i = 0; i < 11; ++i)
        EXPECT_NEAR(texCoord(g, i, 2), i / 10.0 * 5 / 7.0 + 1 / 7.0, 1e-12);
}

TEST(TexCoord, AnUnknownAxisIsLogged)
{
    const test::LogCapture log;
    EXPECT_EQ(texCoord(StackGeometry::of(4, 4, 4, 4), 1, 3), 0.0);
    EXPECT_EQ(log.warnings(), QStringList{"Unknown axis for getTexCoord"});
}

TEST(BoxEdges, AnOddSizeAddsTwoVoxelsAboveOnly)
{
    EXPECT_FLOAT_EQ(boxEdges(101, 128).low, static_cast<float>(-0.999 * 101 / 128));
    EXPECT_FLOAT_EQ(boxEdges(101, 128).high, static_cast<float>(0.999 * 103 / 128));
    EXPECT_FLOAT_EQ(boxEdges(100, 128).low, static_cast<float>(-0.999 * 100 / 128));
    EXPECT_FLOAT_EQ(boxEdges(100, 128).high, static_cast<float>(0.999 * 100 / 128));
}

} // namespace
} // namespace tirn
