#include <cmath>

#include <gtest/gtest.h>

#include "depth/curvebaking.h"
#include "support/logcapture.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using Curves = std::vector<std::vector<double>>;

TEST(BakeCurves, MultipliesAndRoundsEachSlice)
{
    const auto stack = test::stackFrom({2, 1, 3, 1, 8}, {10, 11, 10, 11, 200, 3});
    ASSERT_TRUE(bakeCurves(*stack, Curves{{1, 0.5, 2}}));
    EXPECT_EQ(test::samples(*stack), (std::vector<int>{10, 11, 5, 6, 255, 6}));
    EXPECT_EQ(stack->attributes().maxValue, -1);
}

TEST(BakeCurves, CutsAtTheDepthAndNotAtFour)
{
    const auto stack = test::stackFrom({2, 1, 1, 1, 12}, {100, 4000});
    ASSERT_TRUE(bakeCurves(*stack, Curves{{5}}));
    EXPECT_EQ(test::samples(*stack), (std::vector<int>{500, 4095}));
}

TEST(BakeCurves, AllCurvesMultiplyTheFirstChannelOnly)
{
    // The channel's number is not added to the sample index.
    const auto stack = test::stackFrom({2, 1, 2, 3, 8}, {10, 1, 2, 20, 3, 4, 30, 5, 6, 40, 7, 8});
    ASSERT_TRUE(bakeCurves(*stack, Curves{{2, 1}, {1.5, 3}, {1, 0.5}}));
    EXPECT_EQ(test::samples(*stack), (std::vector<int>{30, 1, 2, 60, 3, 4, 45, 5, 6, 60, 7, 8}));
}

TEST(BakeCurves, WhatIsNoNumberLeavesASampleAlone)
{
    const auto stack = test::stackFrom({2, 1, 3, 1, 8}, {0, 7, 0, 7, 0, 7});
    ASSERT_TRUE(bakeCurves(*stack, Curves{{NAN, INFINITY, -2}}));
    EXPECT_EQ(test::samples(*stack), (std::vector<int>{0, 7, 0, 255, 0, 0}));
}

TEST(BakeCurves, ShortCurvesAndTooManyCurvesStayInsideTheStack)
{
    const auto stack = test::stackFrom({1, 1, 3, 1, 16}, {1, 2, 3});
    ASSERT_TRUE(bakeCurves(*stack, Curves{{2, 2}, {5, 5, 5}}));
    EXPECT_EQ(test::samples(*stack), (std::vector<int>{2, 4, 3}));
    ASSERT_TRUE(bakeCurves(*stack, Curves{{1, 1, 2, 9, 9}}));
    EXPECT_EQ(test::samples(*stack), (std::vector<int>{2, 4, 6}));
}

TEST(BakeCurves, DoesNothingWithoutVoxels)
{
    ImageFile none;
    const test::LogCapture log;
    EXPECT_TRUE(bakeCurves(none, Curves{{2}}));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST(BakeCurves, StopsWhenCancelled)
{
    const auto stack = test::stackFrom({1, 1, 2, 1, 8}, {1, 2});
    const std::atomic<bool> cancel = true;
    EXPECT_FALSE(bakeCurves(*stack, Curves{{2, 2}}, {{}, &cancel}));
    EXPECT_EQ(test::samples(*stack), (std::vector<int>{1, 2}));
}

TEST(BakeCurves, AgreesWithASlowLoop)
{
    const test::StackShape shape = {33, 21, 17, 2, 16};
    const auto stack = test::randomStack(shape, 3);
    std::vector<int> expected = test::samples(*stack);
    std::vector<double> curve;
    for (int z = 0; z < shape.z; ++z)
        curve.push_back(0.3 + 0.17 * z);
    const int slice = shape.x * shape.y * shape.channels;
    for (int i = 0; i < slice * shape.z; i += shape.channels) {
        int& sample = expected[static_cast<std::size_t>(i)];
        sample = static_cast<int>(
            std::min(65535.0, std::floor(sample * curve[static_cast<std::size_t>(i / slice)] + 0.5)));
    }
    ASSERT_TRUE(bakeCurves(*stack, Curves{curve, std::vector<double>(17, 1.0)}));
    EXPECT_EQ(test::samples(*stack), expected);
}

} // namespace
} // namespace tirn
