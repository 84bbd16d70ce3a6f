#include <gtest/gtest.h>

#include "image/allocationerror.h"
#include "image/filters/medianfilter.h"
#include "support/filtershapes.h"
#include "support/logcapture.h"
#include "support/slowfilters.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::minimaOf;
using test::sameVoxels;
using test::samples;
using test::SlowStack;
using test::StackShape;

void expectMedian(ImageFile& stack, int size, int channel, bool is3D, const std::string& what)
{
    const SlowStack slow(stack);
    stack.generateStatistics();
    ASSERT_TRUE(medianFilter(stack, size, channel, is3D)) << what;
    ASSERT_TRUE(sameVoxels(stack, slowMedianFilter(slow, size, channel, is3D, minimaOf(slow)))) << what;
}

TEST(MedianFilter, AgreesWithTheMiddleOfTheWindow)
{
    for (const test::FilterCase& one : test::filterCases(240, 14, 3)) {
        const auto stack = test::randomStack(one.shape, one.seed);
        expectMedian(*stack, one.size, one.channel, one.is3D, one.text());
    }
}

TEST(MedianFilter, NarrowRangesOfWordsAgreeToo)
{
    for (const test::FilterCase& one : test::filterCases(120, 14, 4)) {
        for (const int limit : {2, 200, 500, 5000}) {
            if (limit >= 1 << one.shape.bitDepth)
                continue;
            const auto stack = test::randomStack(one.shape, one.seed, limit);
            expectMedian(*stack, one.size, one.channel, one.is3D,
                         one.text() + " below " + std::to_string(limit));
        }
    }
}

TEST(MedianFilter, SmoothStacksAgreeToo)
{
    for (const int size : {3, 5, 7, 9, 16}) {
        for (const bool is3D : {false, true}) {
            const auto stack = test::makeStack({70, 40, 3, 1, 16}, [](int x, int y, int z, int) {
                return 700 * x + 300 * y + 5000 * z + (x * y * 7 + z * 31) % 23;
            });
            expectMedian(*stack, size, -1, is3D, std::to_string(size));
        }
    }
}

TEST(MedianFilter, LargeWindowsAgreeToo)
{
    for (const int size : {31, 63, 127, 255}) {
        for (const int bits : {8, 16}) {
            const auto stack = test::randomStack({19, 7, 2, 1, bits}, 3);
            expectMedian(*stack, size, -1, false, std::to_string(size));
        }
    }
    // Columns of more values than a byte counts, windows of more than 16 bits do.
    const auto wide = test::randomStack({4, 3, 1, 1, 12}, 3);
    expectMedian(*wide, 1001, -1, false, "1001");
    for (const int size : {15, 17, 39, 41}) {
        for (const int bits : {8, 12}) {
            const auto stack = test::randomStack({7, 5, 3, 1, bits}, 3);
            expectMedian(*stack, size, -1, true, std::to_string(size));
        }
    }
}

TEST(MedianFilter, TallStacksAreFilteredInParts)
{
    for (const int size : {3, 5, 9}) {
        const auto stack = test::randomStack({6, 400, 1, 1, 16}, 3);
        expectMedian(*stack, size, -1, false, std::to_string(size));
    }
}

TEST(MedianFilter, AConstantStackStaysConstantUnderAnySize)
{
    for (const int size : {1, 2, 3, 4, 5, 9}) {
        for (const int bits : {8, 12, 16}) {
            const auto stack = test::constantStack({12, 9, 2, 1, bits}, (1 << bits) - 2);
            ASSERT_TRUE(medianFilter(*stack, size, -1, size % 2 == 0));
            EXPECT_EQ(samples(*stack), std::vector<int>(216, (1 << bits) - 2)) << size;
        }
    }
}

TEST(MedianFilter, SizeThreeInTwoDimensionsTakesTheFifthOfNine)
{
    const auto stack = test::stackFrom({3, 3, 1, 1, 8}, {90, 20, 70, 30, 10, 80, 60, 40, 50});
    ASSERT_TRUE(medianFilter(*stack, 3, -1, false));
    EXPECT_EQ(test::sample(*stack, 1, 1, 0), 50);
}

TEST(MedianFilter, ValuesBelowTheOldMinimumCountAsTheLargest)
{
    for (const int size : {1, 3, 5, 7}) {
        for (const bool is3D : {false, true}) {
            for (const int bits : {8, 12, 16}) {
                const auto stack = test::randomStack({17, 9, 3, 2, bits}, 6);
                const SlowStack slow(*stack);
                // Statistics of a stack whose minimum is a third of the range.
                const int minimum = (1 << bits) / 3;
                const auto older = test::constantStack({17, 9, 3, 2, bits}, minimum);
                std::swap_ranges(stack->stackData(),
                                 stack->stackData() +
                                     stack->sampleCount() * stack->attributes().bytesPerSample(),
                                 older->stackData());
                stack->generateStatistics();
                std::swap_ranges(stack->stackData(),
                                 stack->stackData() +
                                     stack->sampleCount() * stack->attributes().bytesPerSample(),
                                 older->stackData());
                ASSERT_TRUE(medianFilter(*stack, size, -1, is3D));
                EXPECT_TRUE(sameVoxels(*stack, slowMedianFilter(slow, size, -1, is3D, {minimum, minimum})))
                    << size << bits;
            }
        }
    }
}

TEST(MedianFilter, ValuesAboveTheDepthCountAsTheLargestOfIt)
{
    const auto wide = test::randomStack({17, 9, 2, 1, 16}, 6, 6000);
    auto stack = test::stackFrom({17, 9, 2, 1, 12}, samples(*wide));
    const SlowStack slow(*stack);
    stack->generateStatistics();
    ASSERT_TRUE(medianFilter(*stack, 5, -1, false));
    EXPECT_TRUE(sameVoxels(*stack, slowMedianFilter(slow, 5, -1, false, minimaOf(slow))));
}

TEST(MedianFilter, StatisticsAreMadeWhenThereAreNone)
{
    const auto stack = test::randomStack({17, 9, 3, 2, 8}, 6);
    const SlowStack slow(*stack);
    ASSERT_TRUE(medianFilter(*stack, 3, -1, false));
    EXPECT_TRUE(sameVoxels(*stack, slowMedianFilter(slow, 3, -1, false, minimaOf(slow))));
}

TEST(MedianFilter, OtherChannelsStayExact)
{
    const auto stack = test::randomStack({33, 9, 4, 2, 8}, 8);
    const std::vector<int> before = test::channelSamples(*stack, 0);
    ASSERT_TRUE(medianFilter(*stack, 5, 1, true));
    EXPECT_EQ(test::channelSamples(*stack, 0), before);
}

TEST(MedianFilter, TheLogHasTheSizeTwice)
{
    const auto stack = test::constantStack({5, 4, 3, 1, 8}, 1);
    stack->generateStatistics();
    LogCapture log;
    ASSERT_TRUE(medianFilter(*stack, 7, -1, true));
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("median 7x7 elapsed 0ms")});
}

TEST(MedianFilter, WhatCannotBeFilteredIsRefused)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 8}, 8);
    EXPECT_FALSE(medianFilter(*stack, 3, 2, false));
    EXPECT_FALSE(medianFilter(*stack, 1025, -1, false));
    EXPECT_FALSE(medianFilter(*stack, 257, -1, true));
    EXPECT_FALSE(backgroundSubtract(*stack, 1025, -1, 100));
    ImageFile none;
    EXPECT_FALSE(medianFilter(none, 3, -1, false));
}

TEST(MedianFilter, ACancelledFilterLeavesTheStackAsItWas)
{
    const auto stack = test::randomStack({65, 64, 40, 1, 8}, 8);
    const std::vector<int> before = samples(*stack);
    std::atomic<bool> cancel = false;
    Progress progress;
    progress.cancel = &cancel;
    progress.report = [&](const QString&, int done, int) { cancel = done > 0; };
    EXPECT_FALSE(medianFilter(*stack, 9, -1, false, progress));
    EXPECT_TRUE(cancel);
    EXPECT_FALSE(backgroundSubtract(*stack, 9, -1, 100, progress));
    EXPECT_EQ(samples(*stack), before);
}

TEST(MedianFilter, WithoutMemoryTheStackStays)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 16}, 4);
    stack->generateStatistics();
    const SlowStack before(*stack);
    const test::NoVoxelMemory none;
    const auto expectText = [&](const char* text, auto filter) {
        try {
            filter();
            FAIL() << "no exception";
        } catch (const AllocationError& error) {
            EXPECT_STREQ(error.what(), text);
        }
    };
    expectText("Could not allocate memory for medianfilter", [&] { medianFilter(*stack, 3, -1, false); });
    expectText("Could not allocate memory for backgroundSubtract",
               [&] { backgroundSubtract(*stack, 3, -1, 9); });
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(BackgroundSubtract, AgreesWithTheMedianTakenOff)
{
    int percent = 0;
    for (const test::FilterCase& one : test::filterCases(60, 12, 5)) {
        percent = (percent + 35) % 130;
        const auto stack = test::randomStack(one.shape, one.seed);
        const SlowStack slow(*stack);
        stack->generateStatistics();
        ASSERT_TRUE(backgroundSubtract(*stack, one.size, one.channel, percent));
        ASSERT_TRUE(
            sameVoxels(*stack, slowBackgroundSubtract(slow, one.size, one.channel, percent, minimaOf(slow))))
            << one.text() << percent;
    }
}

TEST(BackgroundSubtract, PercentZeroGivesBackTheStack)
{
    const auto stack = test::randomStack({17, 9, 3, 2, 16}, 6);
    const SlowStack before(*stack);
    ASSERT_TRUE(backgroundSubtract(*stack, 5, -1, 0));
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(BackgroundSubtract, AHundredPercentOfAConstantStackLeavesNothing)
{
    const auto stack = test::constantStack({17, 9, 3, 2, 12}, 777);
    ASSERT_TRUE(backgroundSubtract(*stack, 5, -1, 100));
    EXPECT_EQ(samples(*stack), std::vector<int>(918, 0));
}

TEST(BackgroundSubtract, TheMedianLogsFirst)
{
    const auto stack = test::constantStack({5, 4, 3, 1, 8}, 1);
    stack->generateStatistics();
    LogCapture log;
    ASSERT_TRUE(backgroundSubtract(*stack, 31, -1, 50));
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("median 31x31 elapsed 0ms"),
                                        QStringLiteral("background subtract 31x31 elapsed 0ms")}));
}

} // namespace
} // namespace tirn
