#include <gtest/gtest.h>

#include "image/allocationerror.h"
#include "image/filters/meanfilter.h"
#include "support/filtershapes.h"
#include "support/logcapture.h"
#include "support/slowfilters.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::sameVoxels;
using test::samples;
using test::SlowStack;

TEST(MeanFilter, AgreesWithSumsOfTheWindow)
{
    for (const test::FilterCase& one : test::filterCases(200, 24, 2)) {
        const auto stack = test::randomStack(one.shape, one.seed);
        const SlowStack slow(*stack);
        ASSERT_TRUE(meanFilter(*stack, one.size, one.channel, one.is3D));
        ASSERT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, one.size, one.channel, one.is3D))) << one.text();
    }
}

TEST(MeanFilter, LargeWindowsAgreeToo)
{
    for (const int size : {33, 34, 64, 87, 88, 105, 127}) {
        for (const int bits : {8, 16}) {
            const auto stack = test::randomStack({9, 7, 2, 2, bits}, 3);
            const SlowStack slow(*stack);
            ASSERT_TRUE(meanFilter(*stack, size, -1, false));
            EXPECT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, size, -1, false))) << size;
        }
    }
}

TEST(MeanFilter, CubesOfEverySizeAgreeInNumbersOfEveryWidth)
{
    for (const int size : {3, 4, 5, 6, 7, 9, 11, 13, 14, 23, 25, 31, 43, 45, 63, 65}) {
        for (const int bits : {8, 12, 16}) {
            const int channels = 1 + size % 4;
            const auto stack = test::randomStack({13, 3, 2, channels, bits}, 3);
            const SlowStack slow(*stack);
            ASSERT_TRUE(meanFilter(*stack, size, -1, true));
            EXPECT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, size, -1, true))) << size << " " << bits;
        }
    }
}

TEST(MeanFilter, CubesOfTheLargestValuesDoNotOverflow)
{
    for (const int size : {3, 5, 7, 11, 13, 31}) {
        for (const int bits : {8, 16}) {
            // Layers of nothing and of all, so that every difference is the largest.
            const auto stack = test::makeStack(
                {9, 5, 9, 1, bits}, [bits](int, int, int z, int) { return z % 8 < 4 ? (1 << bits) - 1 : 0; });
            const SlowStack slow(*stack);
            ASSERT_TRUE(meanFilter(*stack, size, -1, true));
            EXPECT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, size, -1, true))) << size << " " << bits;
        }
    }
}

TEST(MeanFilter, RowsOfAnyWidthHaveTheirTailsInThreeDimensions)
{
    for (const int x : {1, 2, 15, 16, 17, 31, 32, 33, 63, 64, 65, 130}) {
        for (const int size : {3, 9, 13}) {
            for (const int bits : {8, 16}) {
                const auto stack = test::randomStack({x, 2, 3, 1, bits}, 4);
                const SlowStack slow(*stack);
                ASSERT_TRUE(meanFilter(*stack, size, -1, true));
                EXPECT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, size, -1, true))) << x << " " << size;
            }
        }
    }
}

TEST(MeanFilter, AxesOfOneVoxelRepeatIt)
{
    for (const test::StackShape& shape :
         {test::StackShape{1, 9, 9, 1, 8}, {9, 1, 9, 2, 8}, {9, 9, 1, 1, 16}, {1, 1, 1, 3, 8}}) {
        const auto stack = test::randomStack(shape, 6);
        const SlowStack slow(*stack);
        ASSERT_TRUE(meanFilter(*stack, 7, -1, true));
        EXPECT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, 7, -1, true)));
    }
}

TEST(MeanFilter, TheSumWrapsAtThirtyTwoBits)
{
    const auto stack = test::randomStack({5, 4, 3, 1, 16}, 3);
    const SlowStack slow(*stack);
    // 47^3 voxels of up to 65535 are more than 2^32.
    ASSERT_TRUE(meanFilter(*stack, 47, -1, true));
    EXPECT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, 47, -1, true)));
}

TEST(MeanFilter, RowsWiderThanATileAndPartsOfManyLayersAgreeToo)
{
    for (const test::StackShape& shape :
         {test::StackShape{1100, 3, 2, 1, 8}, {400, 4, 3, 3, 16}, {10, 300, 2, 1, 8}, {6, 5, 70, 1, 8}}) {
        const auto stack = test::randomStack(shape, 8);
        const SlowStack slow(*stack);
        ASSERT_TRUE(meanFilter(*stack, 5, -1, true));
        EXPECT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, 5, -1, true)));
    }
}

TEST(MeanFilter, RoundsEveryQuotientLikeADivision)
{
    // Sums of every remainder: one bright voxel in a window of 3 x 3, and of 2 x 2 with 9 voxels.
    for (const int size : {2, 3}) {
        const auto stack =
            test::makeStack({900, 1, 1, 1, 16}, [](int x, int, int, int) { return x % 3 == 1 ? x : 0; });
        const SlowStack slow(*stack);
        ASSERT_TRUE(meanFilter(*stack, size, -1, false));
        EXPECT_TRUE(sameVoxels(*stack, slowMeanFilter(slow, size, -1, false)));
    }
}

TEST(MeanFilter, AConstantStackStaysConstantUnderAnOddSizeInTwoDimensions)
{
    for (const int size : {1, 3, 9, 127}) {
        for (const int bits : {8, 12, 16}) {
            const auto stack = test::constantStack({12, 9, 2, 1, bits}, (1 << bits) - 2);
            ASSERT_TRUE(meanFilter(*stack, size, -1, false));
            EXPECT_EQ(samples(*stack), std::vector<int>(216, (1 << bits) - 2)) << size;
        }
    }
}

TEST(MeanFilter, TheDivisorIsThatOfASquareInThreeDimensionsToo)
{
    const auto dark = test::constantStack({5, 5, 5, 1, 8}, 10);
    ASSERT_TRUE(meanFilter(*dark, 3, -1, true));
    EXPECT_EQ(samples(*dark), std::vector<int>(125, 30));
    const auto bright = test::constantStack({5, 5, 5, 1, 8}, 100);
    ASSERT_TRUE(meanFilter(*bright, 3, -1, true));
    EXPECT_EQ(samples(*bright), std::vector<int>(125, 300 - 256));
    EXPECT_EQ(bright->attributes().maxValue, -1);
}

TEST(MeanFilter, AnEvenSizeSumsOneVoxelMoreThanItDividesBy)
{
    const auto stack = test::constantStack({5, 5, 1, 1, 16}, 100);
    ASSERT_TRUE(meanFilter(*stack, 2, -1, false));
    EXPECT_EQ(samples(*stack), std::vector<int>(25, 225));
}

TEST(MeanFilter, AtACornerTheCornerVoxelCountsFourTimes)
{
    const auto stack =
        test::makeStack({3, 3, 1, 1, 8}, [](int x, int y, int, int) { return x == 0 && y == 0 ? 90 : 0; });
    ASSERT_TRUE(meanFilter(*stack, 3, -1, false));
    EXPECT_EQ(samples(*stack), (std::vector<int>{40, 20, 0, 20, 10, 0, 0, 0, 0}));
}

TEST(MeanFilter, SizeOneCopiesAndSizeZeroClears)
{
    const auto stack = test::randomStack({7, 5, 3, 2, 16}, 8);
    const SlowStack before(*stack);
    ASSERT_TRUE(meanFilter(*stack, 1, -1, true));
    EXPECT_TRUE(sameVoxels(*stack, before));
    ASSERT_TRUE(meanFilter(*stack, 0, -1, true));
    EXPECT_EQ(samples(*stack), std::vector<int>(210, 0));
}

TEST(MeanFilter, OtherChannelsStayExact)
{
    const auto stack = test::randomStack({33, 9, 4, 2, 8}, 8);
    const std::vector<int> before = test::channelSamples(*stack, 0);
    ASSERT_TRUE(meanFilter(*stack, 5, 1, true));
    EXPECT_EQ(test::channelSamples(*stack, 0), before);
}

TEST(MeanFilter, TheLogHasTheSizeTwice)
{
    const auto stack = test::constantStack({5, 4, 3, 1, 8}, 1);
    LogCapture log;
    ASSERT_TRUE(meanFilter(*stack, 3, -1, true));
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("mean 3x3 elapsed 0ms")});
}

TEST(MeanFilter, WhatCannotBeFilteredIsRefused)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 8}, 8);
    EXPECT_FALSE(meanFilter(*stack, 3, 2, false));
    EXPECT_FALSE(meanFilter(*stack, 3, -2, false));
    EXPECT_FALSE(meanFilter(*stack, 1025, -1, false));
    ImageFile none;
    EXPECT_FALSE(meanFilter(none, 3, -1, false));
}

TEST(MeanFilter, ACancelledFilterLeavesTheStackAsItWas)
{
    const auto stack = test::randomStack({65, 64, 40, 1, 8}, 8);
    const std::vector<int> before = samples(*stack);
    std::atomic<bool> cancel = false;
    Progress progress;
    progress.cancel = &cancel;
    progress.report = [&](const QString&, int done, int) { cancel = done > 0; };
    EXPECT_FALSE(meanFilter(*stack, 9, -1, false, progress));
    EXPECT_TRUE(cancel);
    EXPECT_EQ(samples(*stack), before);
}

TEST(MeanFilter, WithoutMemoryTheStackStays)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 16}, 4);
    const SlowStack before(*stack);
    const test::NoVoxelMemory none;
    try {
        meanFilter(*stack, 3, -1, false);
        FAIL() << "no exception";
    } catch (const AllocationError& error) {
        EXPECT_STREQ(error.what(), "Could not allocate memory for meanfilter");
    }
    EXPECT_TRUE(sameVoxels(*stack, before));
}

} // namespace
} // namespace tirn
