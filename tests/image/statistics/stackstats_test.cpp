#include "image/statistics/stackstats.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

Histogram histogramWith(std::size_t bins, std::initializer_list<std::pair<std::size_t, std::uint64_t>> counts)
{
    Histogram histogram(bins);
    for (const auto& [value, count] : counts)
        histogram[value] = count;
    return histogram;
}

TEST(StackStats, TheMedianIsTheCentreOfTheRange)
{
    const StackStats stats(2, histogramWith(256, {{0, 1000}, {255, 1}}));
    EXPECT_EQ(stats.channel, 2);
    EXPECT_EQ(stats.median, 127.5);
    EXPECT_EQ(stats.min, 0);
    EXPECT_EQ(stats.max, 255);
    EXPECT_DOUBLE_EQ(stats.mean, 255.0 / 1001.0);
}

TEST(StackStats, TheLowerOfTwoEquallyFrequentValuesIsTheMode)
{
    EXPECT_EQ(StackStats(0, histogramWith(256, {{9, 5}, {20, 7}, {30, 7}})).mode, 20U);
    EXPECT_EQ(StackStats(0, histogramWith(256, {{0, 3}, {1, 3}})).mode, 0U);
}

TEST(StackStats, WithoutCountsTheMinimumIsTheSizeAndTheMaximumZero)
{
    const StackStats stats(0, Histogram(256));
    EXPECT_EQ(stats.min, 256);
    EXPECT_EQ(stats.max, 0);
    EXPECT_EQ(stats.mode, 0U);
}

TEST(StackStats, ThePrintNamesEachValue)
{
    const StackStats stats(0, histogramWith(256, {{1, 1}, {4, 1}}));
    const QString text = stats.text();
    for (const char* part : {"Mean 2.5", "Median 2.5", "Mode 1", "Min 1", " Max 4"})
        EXPECT_TRUE(text.contains(QLatin1String(part))) << part;
}

} // namespace
} // namespace tirn
