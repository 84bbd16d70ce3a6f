#include "volume/draworder.h"

#include <cmath>

#include <gtest/gtest.h>

#include "support/logcapture.h"

namespace tirn {
namespace {

/// A matrix of which only the third row of the rotation matters: the z components of the three columns.
std::array<float, 16> withZ(float x, float y, float z)
{
    return {0, 0, x, 0, 0, 0, y, 0, 0, 0, z, 0, 0, 0, 0, 1};
}

/// Columns of unit length whose z components are given.
std::array<float, 16> unitColumns(float x, float y, float z)
{
    const auto rest = [](float part) { return std::sqrt(1 - part * part); };
    return {rest(x), 0, x, 0, 0, rest(y), y, 0, rest(z), 0, z, 0, 0, 0, 0, 1};
}

TEST(Orientation, TheAxisThatFacesTheViewerMostDecides)
{
    EXPECT_EQ(orientationOf(unitColumns(0.1F, 0.2F, 0.9F)), Orientation::XYForward);
    EXPECT_EQ(orientationOf(unitColumns(0.1F, 0.2F, -0.9F)), Orientation::XYReverse);
    EXPECT_EQ(orientationOf(unitColumns(0.9F, 0.2F, 0.1F)), Orientation::YZForward);
    EXPECT_EQ(orientationOf(unitColumns(-0.9F, 0.2F, 0.1F)), Orientation::YZReverse);
    EXPECT_EQ(orientationOf(unitColumns(0.1F, 0.9F, 0.2F)), Orientation::XZForward);
    EXPECT_EQ(orientationOf(unitColumns(0.1F, -0.9F, 0.2F)), Orientation::XZReverse);
}

TEST(Orientation, TiesGoToXOverYOverZ)
{
    EXPECT_EQ(orientationOf(unitColumns(0.6F, 0.6F, 0.2F)), Orientation::YZForward);
    EXPECT_EQ(orientationOf(unitColumns(0.6F, 0.2F, 0.6F)), Orientation::YZForward);
    EXPECT_EQ(orientationOf(unitColumns(-0.6F, 0.6F, 0.6F)), Orientation::YZReverse);
    EXPECT_EQ(orientationOf(unitColumns(0.2F, 0.6F, 0.6F)), Orientation::XZForward);
    EXPECT_EQ(orientationOf(unitColumns(0.2F, -0.6F, 0.6F)), Orientation::XZReverse);
}

TEST(Orientation, ColumnsAreNormalisedFirst)
{
    std::array<float, 16> stretched = unitColumns(0.3F, 0.2F, 0.9F);
    for (std::size_t i = 0; i < 3; ++i)
        stretched[i] *= 100;
    EXPECT_EQ(orientationOf(stretched), Orientation::XYForward);
    EXPECT_EQ(orientationOf(withZ(5, 0.1F, 0)), Orientation::YZForward);
    EXPECT_EQ(orientationOf(withZ(0, 0, 0)), Orientation::YZForward);
}

TEST(Orientation, HasTheseNamesAndSlots)
{
    const std::vector<std::pair<const char*, int>> expected = {{"XY FORWARD", 4}, {"XY REVERSE", 5},
                                                               {"YZ FORWARD", 2}, {"YZ REVERSE", 3},
                                                               {"XZ FORWARD", 0}, {"XZ REVERSE", 1}};
    for (int i = 0; i < 6; ++i) {
        EXPECT_STREQ(orientationName(static_cast<Orientation>(i)),
                     expected[static_cast<std::size_t>(i)].first);
        EXPECT_EQ(orientationSlot(static_cast<Orientation>(i)), expected[static_cast<std::size_t>(i)].second);
    }
}

TEST(Orientation, OneThatNoMatrixYieldsIsLogged)
{
    const test::LogCapture log;
    const StackGeometry g = StackGeometry::of(4, 4, 4, 4);
    EXPECT_EQ(orientationSlot(Orientation::Current), 0);
    EXPECT_EQ(brickOf(Orientation::Current, g, 1, 1), 0);
    EXPECT_EQ(renderListParameters(Orientation::Current, g, {}).perSlice, 0);
    EXPECT_EQ(log.warnings(), (QStringList{"Hit impossible orientation!", "Hit impossible orientation!",
                                           "Hit impossible orientation in rebuild_render_list()"}));
}

TEST(RenderListParameters, FollowTheTableThroughACutBox)
{
    // Blocks 2, 1, 4; groups: y 12 * 8 = 96, x 30 * 4 = 120.
    const StackGeometry g = StackGeometry::of(30, 12, 50, 16);
    ASSERT_EQ(g.xBlocks * 100 + g.yBlocks * 10 + g.zBlocks, 214);
    const CutBox cut{3, 20, 1, 10, 5, 40};
    EXPECT_EQ(renderListParameters(Orientation::XYForward, g, cut), (SliceWalk{2, 216, 40, 5, -1}));
    EXPECT_EQ(renderListParameters(Orientation::XYReverse, g, cut), (SliceWalk{2, 216, 5, 40, 1}));
    EXPECT_EQ(renderListParameters(Orientation::YZForward, g, cut), (SliceWalk{4, 96, 26, 9, -1}));
    EXPECT_EQ(renderListParameters(Orientation::YZReverse, g, cut), (SliceWalk{4, 96, 9, 26, 1}));
    EXPECT_EQ(renderListParameters(Orientation::XZForward, g, cut), (SliceWalk{8, 0, 10, 1, -1}));
    EXPECT_EQ(renderListParameters(Orientation::XZReverse, g, cut), (SliceWalk{8, 0, 1, 10, 1}));
}

TEST(CutBox, IsSortedAndBroughtInsideWhereverItComesFrom)
{
    const StackGeometry g = StackGeometry::of(30, 12, 50, 16);
    EXPECT_EQ(boundedCut({3, 20, 1, 10, 5, 40}, g), (CutBox{3, 20, 1, 10, 5, 40}));
    EXPECT_EQ(boundedCut({20, 3, 10, 1, 40, 5}, g), (CutBox{3, 20, 1, 10, 5, 40}));
    constexpr int kMost = std::numeric_limits<int>::max();
    constexpr int kLeast = std::numeric_limits<int>::min();
    EXPECT_EQ(boundedCut({kLeast, kMost, kMost, kLeast, 70, 60}, g), (CutBox{0, 29, 0, 11, 49, 49}));
}

TEST(CutBox, ReachesOverTheReslicedDepth)
{
    StackGeometry g = StackGeometry::of(8, 8, 8, 8);
    g.finalZ = 20;
    EXPECT_EQ(boundedCut({0, 7, 0, 7, 0, 99}, g).zMax, 19);
}

TEST(RenderListParameters, WalkNoFurtherThanTheVolumeThroughABoxThatIsCrossedOrAbsurd)
{
    const StackGeometry g = StackGeometry::of(30, 12, 50, 16);
    for (const CutBox& cut : {CutBox{20, 3, 10, 1, 40, 5}, CutBox{-9000, 9000, 9000, -9000, 500, 400}}) {
        for (int o = 0; o < 6; ++o) {
            const SliceWalk walk = renderListParameters(static_cast<Orientation>(o), g, cut);
            const int slices = o < 2 ? g.z : o < 4 ? g.x : g.y;
            EXPECT_GE((walk.last - walk.first) * walk.step, 0) << o;
            EXPECT_LT((walk.last - walk.first) * walk.step, slices) << o;
            EXPECT_GE(std::min(walk.first, walk.last), 0) << o;
            EXPECT_LT(std::max(walk.first, walk.last), slices) << o;
        }
    }
}

TEST(BrickOf, CountsBlocksAlongZ)
{
    const StackGeometry g = StackGeometry::of(8, 8, 8, 4);
    EXPECT_EQ(brickOf(Orientation::XYForward, g, 3, 2), 2);
    EXPECT_EQ(brickOf(Orientation::XYReverse, g, 4, 2), 4 + 2);
    EXPECT_EQ(brickOf(Orientation::XYForward, g, 7, 3), 7);
}

TEST(BrickOf, CountsSlicesAcrossXFromTheFarEnd)
{
    const StackGeometry g = StackGeometry::of(8, 8, 8, 4);
    EXPECT_EQ(brickOf(Orientation::YZForward, g, 0, 0), 1);
    EXPECT_EQ(brickOf(Orientation::YZReverse, g, 4, 0), 0);
    EXPECT_EQ(brickOf(Orientation::YZForward, g, 3, 3), 7);
    EXPECT_EQ(brickOf(Orientation::YZForward, g, 7, 3), 6);
}

// Two, one and four blocks: on y the rows of z blocks are taken to be as long as z, not y, has blocks.
TEST(BrickOf, AcrossYKeepsItsOddFactors)
{
    const StackGeometry even = StackGeometry::of(8, 8, 8, 4);
    EXPECT_EQ(brickOf(Orientation::XZForward, even, 0, 3), 5);
    EXPECT_EQ(brickOf(Orientation::XZReverse, even, 4, 3), 7);
    const StackGeometry uneven = StackGeometry::of(32, 16, 64, 16);
    EXPECT_EQ(brickOf(Orientation::XZForward, uneven, 3, 1), 1);
    EXPECT_EQ(brickOf(Orientation::XZForward, uneven, 3, 2), 1 * (2 * 4) + 0);
    const StackGeometry tall = StackGeometry::of(16, 64, 16, 16);
    EXPECT_EQ(brickOf(Orientation::XZForward, tall, 16, 0), 1 * 4);
}

TEST(BrickOf, AReslicedDepthSplitsItsOwnSlices)
{
    StackGeometry g = StackGeometry::of(8, 8, 8, 4);
    g.finalZ = 12;
    EXPECT_EQ(brickOf(Orientation::XYForward, g, 5, 0), 0);
    EXPECT_EQ(brickOf(Orientation::XYForward, g, 6, 0), 4);
}

// 6 slices in 4 blocks of 2: slice 4 counts as block 4, which is none of the channel's.
TEST(BrickOf, MayLeaveTheGridWhereSizesDoNotSplitEvenly)
{
    const StackGeometry g = StackGeometry::of(2, 2, 6, 2);
    ASSERT_EQ(g.zBlocks, 4);
    EXPECT_EQ(brickOf(Orientation::XYForward, g, 4, 0), 4);
}

/// Which of the six planes are on.
std::string enabled(const std::array<ClipPlane, 6>& planes)
{
    std::string text;
    for (const ClipPlane& plane : planes)
        text += plane.enabled ? '1' : '0';
    return text;
}

TEST(ClipPlanes, CutOnlyTheAxesAcrossTheSlices)
{
    const StackGeometry g = StackGeometry::of(16, 16, 16, 1024);
    const CutBox cut{1, 14, 1, 14, 1, 14};
    EXPECT_EQ(enabled(clipPlanes(Orientation::XYForward, g, cut)), "111100");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XYReverse, g, cut)), "111100");
    EXPECT_EQ(enabled(clipPlanes(Orientation::YZForward, g, cut)), "110011");
    EXPECT_EQ(enabled(clipPlanes(Orientation::YZReverse, g, cut)), "110011");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XZForward, g, cut)), "001111");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XZReverse, g, cut)), "001111");
}

TEST(ClipPlanes, StandOnlyWhereTheCutBoxIsSmallerThanTheStack)
{
    const StackGeometry g = StackGeometry::of(16, 16, 16, 1024);
    EXPECT_EQ(enabled(clipPlanes(Orientation::XYForward, g, {0, 15, 0, 15, 0, 15})), "000000");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XYForward, g, {0, 15, 2, 15, 0, 15})), "100000");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XYForward, g, {0, 15, 0, 3, 0, 15})), "010000");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XYForward, g, {0, 3, 0, 15, 0, 15})), "001000");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XYForward, g, {2, 15, 0, 15, 0, 15})), "000100");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XZForward, g, {0, 15, 0, 15, 2, 15})), "000010");
    EXPECT_EQ(enabled(clipPlanes(Orientation::XZForward, g, {0, 15, 0, 15, 0, 3})), "000001");
}

/// The position of slice i of a stack of 16 in 16, by hand.
double at(int i) { return 0.996 - 1.992 / 15 * i; }

TEST(ClipPlanes, KeepTheSlicesOnTheBoundWithAMarginOutward)
{
    const StackGeometry g = StackGeometry::of(16, 16, 16, 1024);
    const CutBox cut{2, 12, 3, 11, 4, 10};
    const auto acrossZ = clipPlanes(Orientation::XYForward, g, cut);
    const auto acrossY = clipPlanes(Orientation::XZForward, g, cut);
    const auto expectPlane = [](const ClipPlane& plane, std::array<double, 4> expected) {
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(plane.equation[i], expected[i], 1e-12) << "term " << i;
    };
    expectPlane(acrossZ[0], {0, -1, 0, at(3) + 0.004});
    expectPlane(acrossZ[1], {0, 1, 0, -(at(11) - 0.004)});
    // Slices across x are counted from the other end.
    expectPlane(acrossZ[2], {-1, 0, 0, at(16 - 12 - 1) + 0.004});
    expectPlane(acrossZ[3], {1, 0, 0, -(at(16 - 2 - 1) - 0.004)});
    expectPlane(acrossY[4], {0, 0, -1, at(4) + 0.004});
    expectPlane(acrossY[5], {0, 0, 1, -(at(10) - 0.004)});
}

TEST(ClipPlanes, OnZCountTheReslicedDepth)
{
    StackGeometry g = StackGeometry::of(16, 16, 8, 1024);
    g.finalZ = 15;
    EXPECT_EQ(enabled(clipPlanes(Orientation::XZForward, g, {0, 15, 0, 15, 0, 14})), "000000");
    const auto planes = clipPlanes(Orientation::XZForward, g, {0, 15, 0, 15, 0, 7});
    EXPECT_NEAR(planes[5].equation[3], 0.004, 1e-12);
}

} // namespace
} // namespace tirn
