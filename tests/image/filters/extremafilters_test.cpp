#include <gtest/gtest.h>

#include "image/allocationerror.h"
#include "image/filters/extremafilters.h"
#include "support/filtershapes.h"
#include "support/logcapture.h"
#include "support/slowfilters.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::sameVoxels;
using test::samples;
using test::SlowStack;

TEST(ExtremaFilters, AgreeWithAPlainScanOfTheWindow)
{
    for (const test::FilterCase& one : test::filterCases(150, 40, 1)) {
        const auto stack = test::randomStack(one.shape, one.seed);
        const SlowStack slow(*stack);
        ASSERT_TRUE(maxFilter(*stack, one.size, one.channel, one.is3D));
        ASSERT_TRUE(sameVoxels(*stack, slowMaxFilter(slow, one.size, one.channel, one.is3D))) << one.text();
        const auto again = test::randomStack(one.shape, one.seed);
        ASSERT_TRUE(minFilter(*again, one.size, one.channel, one.is3D));
        ASSERT_TRUE(sameVoxels(*again, slowMinFilter(slow, one.size, one.channel, one.is3D))) << one.text();
    }
}

TEST(ExtremaFilters, RowsWiderThanATileAgreeToo)
{
    for (const test::StackShape& shape :
         {test::StackShape{4500, 3, 1, 1, 8}, {1500, 4, 2, 3, 16}, {40, 700, 1, 1, 8}}) {
        const auto stack = test::randomStack(shape, 8);
        const SlowStack slow(*stack);
        ASSERT_TRUE(maxFilter(*stack, 7, -1, true));
        EXPECT_TRUE(sameVoxels(*stack, slowMaxFilter(slow, 7, -1, true)));
    }
}

TEST(ExtremaFilters, AWindowLargerThanAnythingIsTheWholeStack)
{
    const auto stack = test::randomStack({9, 5, 4, 1, 16}, 8);
    const std::vector<int> before = samples(*stack);
    ASSERT_TRUE(maxFilter(*stack, 2000000000, -1, true));
    EXPECT_EQ(samples(*stack), std::vector<int>(180, *std::max_element(before.begin(), before.end())));
}

TEST(ExtremaFilters, ABrightVoxelSpreadsOnlyToTheRight)
{
    const auto stack =
        test::makeStack({7, 1, 1, 1, 8}, [](int x, int, int, int) { return x == 3 ? 200 : 0; });
    ASSERT_TRUE(maxFilter(*stack, 3, -1, false));
    EXPECT_EQ(samples(*stack), (std::vector<int>{0, 0, 0, 200, 200, 0, 0}));
}

TEST(ExtremaFilters, AnEmptyWindowLeavesTheStartValue)
{
    for (const int size : {1, 0, -5}) {
        for (const int bits : {8, 16}) {
            const auto stack = test::randomStack({5, 4, 3, 2, bits}, 8);
            ASSERT_TRUE(maxFilter(*stack, size, -1, true));
            EXPECT_EQ(samples(*stack), std::vector<int>(120, 0));
            ASSERT_TRUE(minFilter(*stack, size, -1, false));
            EXPECT_EQ(samples(*stack), std::vector<int>(120, bits == 8 ? 255 : 65535));
        }
    }
}

TEST(ExtremaFilters, OtherChannelsStayExact)
{
    const auto stack = test::randomStack({33, 9, 4, 2, 8}, 8);
    const std::vector<int> before = test::channelSamples(*stack, 0);
    ASSERT_TRUE(maxFilter(*stack, 5, 1, true));
    EXPECT_EQ(test::channelSamples(*stack, 0), before);
}

TEST(ExtremaFilters, TheLogHasTheSizeTwice)
{
    const auto stack = test::constantStack({5, 4, 3, 1, 8}, 1);
    LogCapture log;
    ASSERT_TRUE(maxFilter(*stack, 3, -1, true));
    ASSERT_TRUE(minFilter(*stack, 5, -1, true));
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("maxfilter 3x3 elapsed 0ms"),
                                        QStringLiteral("minfilter 5x5 elapsed 0ms")}));
}

TEST(ExtremaFilters, WhatCannotBeFilteredIsRefused)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 8}, 8);
    EXPECT_FALSE(maxFilter(*stack, 3, 2, false));
    EXPECT_FALSE(minFilter(*stack, 3, 2, false));
    ImageFile none;
    EXPECT_FALSE(maxFilter(none, 3, -1, false));
    EXPECT_FALSE(minFilter(none, 3, -1, false));
}

TEST(ExtremaFilters, ACancelledFilterLeavesTheStackAsItWas)
{
    const auto stack = test::randomStack({65, 64, 40, 1, 8}, 8);
    const std::vector<int> before = samples(*stack);
    std::atomic<bool> cancel = false;
    Progress progress;
    progress.cancel = &cancel;
    progress.report = [&](const QString&, int done, int) { cancel = done > 0; };
    EXPECT_FALSE(maxFilter(*stack, 9, -1, false, progress));
    EXPECT_TRUE(cancel);
    EXPECT_FALSE(minFilter(*stack, 9, -1, true, progress));
    EXPECT_EQ(samples(*stack), before);
}

TEST(ExtremaFilters, WithoutMemoryTheStackStays)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 16}, 4);
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
    expectText("Could not allocate memory for maxfilter", [&] { maxFilter(*stack, 3, -1, false); });
    expectText("Could not allocate memory for minfilter", [&] { minFilter(*stack, 3, -1, false); });
    EXPECT_TRUE(sameVoxels(*stack, before));
}

} // namespace
} // namespace tirn
