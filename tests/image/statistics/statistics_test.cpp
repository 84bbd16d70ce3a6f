#include <cmath>
#include <map>

#include <gtest/gtest.h>

#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::StackShape;

/// Counts of the values of one layer and channel, one voxel at a time; z -1 for all layers.
std::map<int, std::uint64_t> counted(const ImageFile& stack, int channel, int z)
{
    std::map<int, std::uint64_t> counts;
    const ImageAttributes& a = stack.attributes();
    for (int layer = z < 0 ? 0 : z; layer < (z < 0 ? a.z : z + 1); ++layer) {
        for (int y = 0; y < a.y; ++y) {
            for (int x = 0; x < a.x; ++x)
                ++counts[test::sample(stack, x, y, layer, channel)];
        }
    }
    return counts;
}

void expectCounts(const Histogram& histogram, const std::map<int, std::uint64_t>& counts)
{
    std::uint64_t total = 0;
    for (const std::uint64_t count : histogram)
        total += count;
    std::uint64_t expected = 0;
    for (const auto& [value, count] : counts) {
        if (static_cast<std::size_t>(value) >= histogram.size())
            continue;
        ASSERT_EQ(histogram[static_cast<std::size_t>(value)], count) << value;
        expected += count;
    }
    ASSERT_EQ(total, expected);
}

struct Moments
{
    double mean = 0;
    double stdDev = 0;
    double skew = 0;
    double kurtosis = 0;
};

/// The moments from their definition, in long doubles.
Moments momentsOf(const std::map<int, std::uint64_t>& counts)
{
    long double n = 0;
    long double sum = 0;
    for (const auto& [value, count] : counts) {
        n += count;
        sum += static_cast<long double>(value) * count;
    }
    const long double mean = sum / n;
    long double s[5] = {};
    for (const auto& [value, count] : counts) {
        for (int power = 1; power < 5; ++power)
            s[power] += count * std::pow(std::abs(value - mean), static_cast<long double>(power));
    }
    const long double variance = (s[2] - s[1] * s[1] / n) / (n - 1);
    const long double deviation = std::sqrt(variance);
    return {static_cast<double>(mean), static_cast<double>(deviation),
            static_cast<double>(s[3] / (n * variance * deviation)),
            static_cast<double>(s[4] / (n * variance * variance) - 3)};
}

void expectNear(double value, double expected)
{
    EXPECT_NEAR(value, expected, 1e-9 * (1 + std::abs(expected)));
}

class StatisticsOf : public ::testing::TestWithParam<StackShape>
{};

TEST_P(StatisticsOf, HistogramsAndMomentsAgreeWithCountingVoxels)
{
    const auto stack = test::randomStack(GetParam(), 11);
    stack->generateStatistics();
    ASSERT_EQ(stack->statsList().size(), static_cast<std::size_t>(GetParam().channels));
    for (int c = 0; c < GetParam().channels; ++c) {
        const StackStats& stats = stack->stats(c);
        EXPECT_EQ(stats.channel, c);
        const auto whole = counted(*stack, c, -1);
        expectCounts(stats.histogram, whole);
        EXPECT_EQ(stats.min, whole.begin()->first);
        EXPECT_EQ(stats.max, whole.rbegin()->first);
        ASSERT_EQ(stats.sliceHistograms.size(), static_cast<std::size_t>(GetParam().z));
        for (int z = 0; z < GetParam().z; ++z) {
            const auto at = static_cast<std::size_t>(z);
            const auto counts = counted(*stack, c, z);
            expectCounts(stats.sliceHistograms[at], counts);
            const Moments expected = momentsOf(counts);
            expectNear(stats.sliceMean[at], expected.mean);
            expectNear(stats.sliceStdDev[at], expected.stdDev);
            expectNear(stats.sliceSkew[at], expected.skew);
            expectNear(stats.sliceKurtosis[at], expected.kurtosis);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, StatisticsOf,
                         ::testing::Values(StackShape{33, 17, 5, 1, 8}, StackShape{16, 16, 40, 1, 8},
                                           StackShape{31, 9, 3, 2, 8}, StackShape{13, 11, 3, 3, 8},
                                           StackShape{9, 9, 2, 4, 8}, StackShape{7, 9, 2, 5, 8},
                                           StackShape{33, 17, 5, 1, 12}, StackShape{31, 29, 3, 2, 12},
                                           StackShape{130, 127, 3, 1, 16}, StackShape{33, 17, 2, 3, 16},
                                           StackShape{1200, 1100, 2, 1, 8},
                                           StackShape{1200, 1100, 1, 2, 12}));

TEST(Statistics, BinsAboveTheLargestValueAreNotThere)
{
    const auto stack = test::randomStack({33, 17, 3, 1, 16}, 5, 5000);
    stack->attributes().maxValue = 4095;
    stack->generateStatistics();
    EXPECT_EQ(stack->binCount(), 4096);
    EXPECT_EQ(stack->stats(0).histogram.size(), 4096U);
    expectCounts(stack->stats(0).histogram, counted(*stack, 0, -1));
    expectCounts(stack->stats(0).sliceHistograms[1], counted(*stack, 0, 1));
    EXPECT_EQ(stack->attributes().maxValue, 4095);
}

TEST(Statistics, AByteStackMayHaveMoreBinsThanBytesHaveValues)
{
    const auto stack = test::randomStack({33, 17, 3, 1, 8}, 5);
    stack->attributes().maxValue = 4095;
    stack->generateStatistics();
    EXPECT_EQ(stack->stats(0).histogram.size(), 4096U);
    expectCounts(stack->stats(0).histogram, counted(*stack, 0, -1));
}

TEST(Statistics, AnAbsurdLargestValueIsNotBelieved)
{
    const auto stack = test::randomStack({3, 3, 3, 1, 16}, 5);
    stack->attributes().maxValue = 2147483647;
    EXPECT_EQ(stack->binCount(), 65536);
}

TEST(Statistics, AnUnknownLargestValueComesFromTheData)
{
    const auto bytes = test::makeStack({3, 1, 1, 1, 8}, [](int x, int, int, int) { return 20 * x; });
    EXPECT_EQ(bytes->binCount(), 256);
    bytes->generateStatistics();
    EXPECT_EQ(bytes->stats(0).histogram.size(), 256U);
    EXPECT_EQ(bytes->attributes().maxValue, 40);
    const auto words = test::makeStack({3, 1, 1, 2, 16}, [](int x, int, int, int c) { return 2000 * x * c; });
    words->generateStatistics();
    EXPECT_EQ(words->attributes().maxValue, 4000);
    EXPECT_EQ(words->attributes().realBitDepth(), 12);
}

TEST(Statistics, AConstantStackHasNoSpread)
{
    const auto stack = test::constantStack({4, 4, 2, 1, 8}, 7);
    stack->generateStatistics();
    const StackStats& stats = stack->stats(0);
    EXPECT_EQ(stats.min, 7);
    EXPECT_EQ(stats.max, 7);
    EXPECT_EQ(stats.mean, 7.0);
    EXPECT_EQ(stats.median, 7.0);
    EXPECT_EQ(stats.mode, 7U);
    EXPECT_EQ(stats.sliceMean[1], 7.0);
    EXPECT_EQ(stats.sliceStdDev[1], 0.0);
    EXPECT_EQ(stats.sliceSkew[1], 0.0);
    EXPECT_EQ(stats.sliceKurtosis[1], 0.0);
}

TEST(Statistics, TwoValuesEquallyFarFromTheMeanHaveNoVarianceEither)
{
    const auto stack = test::makeStack({4, 1, 1, 1, 8}, [](int x, int, int, int) { return x % 2 * 2; });
    stack->generateStatistics();
    EXPECT_EQ(stack->stats(0).sliceMean[0], 1.0);
    EXPECT_EQ(stack->stats(0).sliceStdDev[0], 0.0);
}

TEST(Statistics, LayersOfOneVoxelHaveNoMoments)
{
    const auto stack = test::makeStack({1, 1, 5, 1, 8}, [](int, int, int z, int) { return 9 * z; });
    stack->generateStatistics();
    for (std::size_t z = 0; z < 5; ++z) {
        EXPECT_EQ(stack->stats(0).sliceMean[z], 0.0);
        EXPECT_EQ(stack->stats(0).sliceStdDev[z], 0.0);
        EXPECT_EQ(stack->stats(0).sliceSkew[z], 0.0);
        EXPECT_EQ(stack->stats(0).sliceKurtosis[z], 0.0);
    }
}

TEST(Statistics, MomentsFromTheVoxelsAreThoseFromTheHistogram)
{
    const auto stack = test::randomStack({33, 17, 3, 2, 12}, 3);
    stack->generateStatistics();
    for (int c = 0; c < 2; ++c) {
        double mean = 0;
        double stdDev = 0;
        double skew = 0;
        double kurtosis = 0;
        stack->sliceMoments(2, c, mean, stdDev, skew, kurtosis);
        expectNear(mean, stack->stats(c).sliceMean[2]);
        expectNear(stdDev, stack->stats(c).sliceStdDev[2]);
        expectNear(skew, stack->stats(c).sliceSkew[2]);
        expectNear(kurtosis, stack->stats(c).sliceKurtosis[2]);
    }
}

TEST(Statistics, AChannelThatIsNotThereHasAnEmptyRecord)
{
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 1);
    stack->generateStatistics();
    LogCapture log;
    EXPECT_TRUE(stack->stats(9).histogram.empty());
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("I don't have any stats!!!")});
}

TEST(Statistics, AnEmptyStackOnlySaysSo)
{
    ImageFile stack;
    LogCapture log;
    stack.generateStatistics();
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("enter generateStatistics"),
                                        QStringLiteral("Must load a stack first"),
                                        QStringLiteral("exit generateStatistics\n")}));
    log.clear();
    EXPECT_EQ(stack.binCount(), 0);
    EXPECT_TRUE(log.contains(QStringLiteral("Must load a stack first")));
}

TEST(Statistics, TheLogTellsTheTimesOfTheStages)
{
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 1);
    LogCapture log;
    stack->generateStatistics();
    for (const char* text : {"time spent allocating ", "time spent on histo ", "time spent on moments "})
        EXPECT_EQ(log.lines().filter(QLatin1String(text)).size(), 1) << text;
    EXPECT_EQ(log.lines().last(), QStringLiteral("exit generateStatistics\n"));
}

TEST(Entropy, TwoEquallyFrequentValuesHaveOneBit)
{
    const auto stack = test::makeStack({4, 2, 2, 1, 8}, [](int x, int, int, int) { return x % 2 * 200; });
    stack->generateStatistics();
    EXPECT_DOUBLE_EQ(stack->entropy(0), 1.0);
    EXPECT_DOUBLE_EQ(stack->sliceEntropy(0, 1), 1.0);
    EXPECT_DOUBLE_EQ(stack->maxEntropy(0), 1.0);
    EXPECT_DOUBLE_EQ(stack->maxSliceEntropy(0, 1), 1.0);
}

TEST(Entropy, WhatIsNotThereHasNone)
{
    const auto stack = test::makeStack({4, 2, 2, 1, 8}, [](int x, int, int, int) { return x; });
    stack->generateStatistics();
    EXPECT_EQ(stack->entropy(1), 0);
    EXPECT_EQ(stack->entropy(-1), 0);
    EXPECT_EQ(stack->sliceEntropy(0, 2), 0);
    EXPECT_EQ(stack->sliceEntropy(0, -1), 0);
    EXPECT_EQ(stack->maxEntropy(1), 0);
    EXPECT_EQ(stack->maxSliceEntropy(0, 2), 0);
    EXPECT_EQ(stack->sliceEntropyScaled(0, 2, 1.0), 0);
    LogCapture log;
    EXPECT_EQ(stack->entropyScaled(3, {1, 1}), 0);
    EXPECT_TRUE(log.contains(QStringLiteral("Channel 3 not possible")));
}

TEST(Entropy, LayersDifferFromTheWhole)
{
    // Layer 0 holds one value, layer 1 four.
    const auto stack = test::makeStack({4, 1, 2, 1, 8}, [](int x, int, int z, int) { return z * x; });
    stack->generateStatistics();
    EXPECT_DOUBLE_EQ(stack->sliceEntropy(0, 0), 0.0);
    EXPECT_DOUBLE_EQ(stack->sliceEntropy(0, 1), 2.0);
    const double expected = -(5.0 / 8 * std::log2(5.0 / 8) + 3 * (1.0 / 8 * std::log2(1.0 / 8)));
    EXPECT_NEAR(stack->entropy(0), expected, 1e-12);
    EXPECT_DOUBLE_EQ(stack->maxEntropy(0), 2.0);
}

TEST(Entropy, AScaledCountIsSharedWithTheFractionGoingToTheLowNeighbour)
{
    // One value, 10, scaled to 12.5 and 12.25: 12 gets 0.5 and 0.25 of a layer, 13 gets 0.5 and 0.75.
    const auto stack = test::constantStack({2, 2, 2, 1, 8}, 10);
    stack->generateStatistics();
    const double low = (4 * 0.5 + 4 * 0.25) / 8;
    const double high = 1 - low;
    EXPECT_NEAR(stack->entropyScaled(0, {1.25, 1.225}), -(low * std::log2(low) + high * std::log2(high)),
                1e-12);
}

TEST(Entropy, ScaledCountsPastTheEndGoToTheLastBin)
{
    const auto stack = test::makeStack({4, 1, 1, 1, 8}, [](int x, int, int, int) { return 100 + 50 * x; });
    stack->generateStatistics();
    // 100 becomes 200; 150, 200 and 250 are past the 256 bins.
    const double expected = -(0.25 * std::log2(0.25) + 0.75 * std::log2(0.75));
    EXPECT_NEAR(stack->entropyScaled(0, {2.0}), expected, 1e-12);
}

TEST(Entropy, AScaledSliceRoundsToOneBin)
{
    const auto stack = test::makeStack({4, 1, 1, 1, 8}, [](int x, int, int, int) { return x; });
    stack->generateStatistics();
    // 0, 1, 2, 3 times 0.5 round to 0, 1, 1, 2.
    EXPECT_NEAR(stack->sliceEntropyScaled(0, 0, 0.5), 1.5, 1e-12);
    // 0 stays; 1, 2 and 3 times 200 leave one bin inside: 200.
    EXPECT_NEAR(stack->sliceEntropyScaled(0, 0, 200), 1.0, 1e-12);
}

} // namespace
} // namespace tirn
