#include <climits>
#include <cmath>

#include <algorithm>
#include <atomic>

#include <gtest/gtest.h>

#include "image/filters/pointfilters.h"
#include "support/filtershapes.h"
#include "support/logcapture.h"
#include "support/slowfilters.h"

namespace tirn {
namespace {

using test::channelSamples;
using test::LogCapture;
using test::sameVoxels;
using test::samples;
using test::SlowStack;

TEST(AddConstant, AgreesWithSumsKeptWithinTheDepth)
{
    for (const test::FilterCase& one : test::filterCases(60, 9, 11)) {
        for (const int value : {1, -1, 100, -100, 255, -255, 4000, -4000, 65535, -65535}) {
            const auto stack = test::randomStack(one.shape, one.seed);
            const SlowStack slow(*stack);
            ASSERT_TRUE(addConstant(*stack, value, one.channel));
            ASSERT_TRUE(sameVoxels(*stack, slowAddConstant(slow, value, one.channel)))
                << one.text() << " value " << value;
        }
    }
}

TEST(AddConstant, ASumAtTheLimitIsOneBelowItAndANegativeOneIsZero)
{
    const auto stack = test::stackFrom({4, 1, 1, 1, 8}, {0, 1, 200, 255});
    ASSERT_TRUE(addConstant(*stack, 56, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{56, 57, 255, 255}));
    ASSERT_TRUE(addConstant(*stack, -57, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{0, 0, 198, 198}));
}

TEST(AddConstant, ValuesAboveTheDepthCountAsAtTheLimit)
{
    // 5000 is no number of 12 bits, but fits the word that it lies in.
    const auto stack = test::stackFrom({3, 1, 1, 1, 12}, {4095, 5000, 5000});
    ASSERT_TRUE(addConstant(*stack, -10, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{4085, 4095, 4095}));
}

TEST(AddConstant, ValuesBeyondAnyDepthFillOrClear)
{
    for (const int bitDepth : {8, 12, 16}) {
        const auto stack = test::randomStack({5, 4, 3, 2, bitDepth}, 3);
        ASSERT_TRUE(addConstant(*stack, INT_MAX, 1));
        EXPECT_EQ(channelSamples(*stack, 1), std::vector<int>(60, (1 << bitDepth) - 1));
        ASSERT_TRUE(addConstant(*stack, INT_MIN, 1));
        EXPECT_EQ(channelSamples(*stack, 1), std::vector<int>(60, 0));
    }
}

TEST(AddConstant, MakesTheLargestValueUnknown)
{
    const auto stack = test::stackFrom({2, 1, 1, 1, 16}, {7, 4095});
    stack->attributes().maxValue = 4095;
    ASSERT_TRUE(addConstant(*stack, -5, 0));
    EXPECT_EQ(stack->attributes().maxValue, -1);
    EXPECT_EQ(stack->stats(0).max, 4090);
    ASSERT_TRUE(addConstant(*stack, 6, 0));
    EXPECT_EQ(stack->attributes().maxValue, -1);
    EXPECT_EQ(stack->stats(0).max, 4096);
}

TEST(AddConstant, ACancelledRunLeavesTheFrontChangedAndTheRestAsItWas)
{
    const auto stack = test::constantStack({1024, 1024, 24, 1, 8}, 1);
    std::atomic<bool> cancel = false;
    Progress progress;
    progress.cancel = &cancel;
    progress.report = [&](const QString&, int done, int) { cancel = done > 0; };
    EXPECT_FALSE(addConstant(*stack, 9, -1, progress));
    const std::uint8_t* first = stack->stackData();
    const std::uint8_t* last = first + stack->sampleCount();
    const std::uint8_t* unchanged = std::find(first, last, 1);
    EXPECT_GT(unchanged, first);
    EXPECT_LT(unchanged, last);
    EXPECT_EQ(std::count(first, unchanged, 10), unchanged - first);
    EXPECT_EQ(std::count(unchanged, last, 1), last - unchanged);
    EXPECT_EQ(stack->attributes().maxValue, -1);
}

TEST(AddConstant, AChannelThatIsNotThereIsRefused)
{
    const auto stack = test::randomStack({3, 3, 1, 2, 8}, 3);
    const SlowStack before(*stack);
    EXPECT_FALSE(addConstant(*stack, 5, 2));
    EXPECT_FALSE(addConstant(*stack, 5, -2));
    ImageFile none;
    EXPECT_FALSE(addConstant(none, 5, -1));
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(Invert, TakesEachSampleFromTheLargest)
{
    for (const test::FilterCase& one : test::filterCases(30, 9, 12)) {
        const auto stack = test::randomStack(one.shape, one.seed);
        SlowStack slow(*stack);
        for (int& value : slow.values)
            value = (1 << one.shape.bitDepth) - 1 - value;
        stack->attributes().maxValue = 7;
        invert(*stack);
        EXPECT_TRUE(sameVoxels(*stack, slow)) << one.text();
        EXPECT_EQ(stack->attributes().maxValue, -1);
    }
}

TEST(ThresholdMask, MarksSamplesAtOrAboveTheThreshold)
{
    for (const int bitDepth : {8, 12, 16}) {
        const auto stack = test::randomStack({7, 5, 3, 3, bitDepth}, 4);
        for (const int threshold : {0, 1, 100, (1 << bitDepth) - 1}) {
            std::vector<bool> expected;
            for (const int value : channelSamples(*stack, 1))
                expected.push_back(value >= threshold);
            EXPECT_EQ(thresholdMask(*stack, 1, threshold), expected);
        }
    }
}

TEST(ThresholdMask, IsEmptyForAChannelOrThresholdOutOfRange)
{
    const auto stack = test::randomStack({7, 5, 3, 2, 12}, 4);
    EXPECT_TRUE(thresholdMask(*stack, -1, 5).empty());
    EXPECT_TRUE(thresholdMask(*stack, 2, 5).empty());
    EXPECT_TRUE(thresholdMask(*stack, 0, -1).empty());
    EXPECT_TRUE(thresholdMask(*stack, 0, 4096).empty());
    EXPECT_EQ(thresholdMask(*stack, 0, 4095).size(), 105U);
    ImageFile none;
    EXPECT_TRUE(thresholdMask(none, 0, 0).empty());
}

TEST(GaussianKernel, HasAnOddNumberOfRowsAndIsNotNormalised)
{
    // floor(3 * 1) = 3 rows; floor(3 * 1.4) = 4 become 5; floor(3 * 0.1) = 0 become 1.
    EXPECT_EQ(gaussianKernel(1).size(), 9U);
    EXPECT_EQ(gaussianKernel(1.4).size(), 25U);
    EXPECT_EQ(gaussianKernel(0.1).size(), 1U);
    const std::vector<double> kernel = gaussianKernel(1);
    // 1 / sqrt(2 pi), and that times e^-1/2 and e^-1.
    const double centre = 0.3989422804014327;
    const double edge = 0.24197072451914337;
    const double corner = 0.14676266317373993;
    const double expected[] = {corner, edge, corner, edge, centre, edge, corner, edge, corner};
    for (std::size_t i = 0; i < 9; ++i)
        EXPECT_NEAR(kernel[i], expected[i], 1e-15);
    // The width of the bell halves its height: e^0 / (2 sqrt(2 pi)).
    EXPECT_NEAR(gaussianKernel(2)[24], 0.19947114020071635, 1e-15);
}

TEST(GaussianKernel, WithoutASigmaItIsEmpty)
{
    EXPECT_TRUE(gaussianKernel(0).empty());
    EXPECT_TRUE(gaussianKernel(-1).empty());
    EXPECT_TRUE(gaussianKernel(std::nan("")).empty());
    EXPECT_TRUE(gaussianKernel(1e9).empty());
}

TEST(GaussianKernel, TheLogHasEveryValue)
{
    LogCapture log;
    gaussianKernel(1);
    EXPECT_EQ(log.lines(), (QStringList{"gaussian kernel", "0.146763", "0.241971", "0.146763", "0.241971",
                                        "0.398942", "0.241971", "0.146763", "0.241971", "0.146763"}));
}

} // namespace
} // namespace tirn
