#include <cmath>

#include <gtest/gtest.h>

#include "depth/curvebaking.h"
#include "depth/curvesearch.h"
#include "support/logcapture.h"
#include "support/slowdepth.h"

namespace tirn {
namespace {

using test::LogCapture;
using Values = std::vector<double>;

/// Light that is lost with depth: the same picture in every slice, 5 % darker from one to the next.
test::StackPointer decayingStack(int slices = 24, int bits = 12, int channels = 1)
{
    const test::StackShape shape = {16, 16, slices, channels, bits};
    auto stack = test::makeStack(shape, [](int x, int y, int z, int c) {
        return static_cast<int>((1000 + 100 * x + 17 * y + 300 * c) * std::exp(-0.05 * z));
    });
    stack->generateStatistics();
    return stack;
}

TEST(NormalizeMean, DividesTheLargestMeanByEach)
{
    Values curve(4, 7.0);
    normalizeMean(curve, Values{2, 8, 4, 1});
    EXPECT_EQ(curve, (Values{4, 1, 2, 8}));
}

TEST(NormalizeMean, HasNoGuardAgainstDarkSlices)
{
    Values curve(3, 7.0);
    normalizeMean(curve, Values{0, 5});
    EXPECT_EQ(curve, (Values{INFINITY, 1, 7}));
    normalizeMean(curve, Values{0, 0, 0});
    EXPECT_TRUE(std::isnan(curve[0]));
    normalizeMean(curve, Values{-2, -4, -1});
    EXPECT_EQ(curve[0], 0) << "the largest mean starts at 0";
}

TEST(NormalizeMean, MakesAnExponentialDecayFlat)
{
    const auto stack = decayingStack();
    Values curve(24, 1.0);
    normalizeMean(curve, stack->statsList()[0].sliceMean);
    ASSERT_TRUE(bakeCurves(*stack, std::vector<Values>{curve}));
    const Values means = test::slowSliceMeans(test::SlowStack(*stack), 0);
    for (const double mean : means)
        EXPECT_NEAR(mean, means[0], 0.02 * means[0]);
}

TEST(EntropyDeficit, AgreesWithTheSlowReference)
{
    for (const int bits : {8, 12}) {
        const auto stack = test::randomStack({9, 7, 6, 2, bits}, 5, bits == 8 ? 200 : 3000);
        stack->generateStatistics();
        const test::SlowStack slow(*stack);
        const int bins = static_cast<int>(stack->statsList()[0].sliceHistograms[0].size());
        for (const double power : {0.1, 0.7, 1.0, 3.3}) {
            for (const int channel : {0, 1}) {
                Values curve(6);
                const double deficit = entropyDeficit(*stack, channel, {0.8, power, 1, 3}, curve);
                const Values expected = test::slowPowerCurve(6, 0.8, power, 1, 3);
                EXPECT_EQ(curve, expected);
                const int bitCount = static_cast<int>(std::lround(std::log2(stack->attributes().maxValue)));
                EXPECT_NEAR(deficit, bitCount - test::slowScaledEntropy(slow, channel, bins, expected), 1e-9);
            }
        }
    }
}

TEST(EntropyDeficit, TakesTheStoredDepthWhereNoRangeIsKnown)
{
    auto stack = test::constantStack({2, 2, 2, 1, 12}, 5);
    stack->generateStatistics();
    Values curve(2);
    stack->attributes().maxValue = -1;
    EXPECT_EQ(entropyDeficit(*stack, 0, {1, 1, 2, 4}, curve), 12);
    stack->attributes().maxValue = 3000;
    EXPECT_EQ(entropyDeficit(*stack, 0, {1, 1, 2, 4}, curve), 12) << "log2(3000) is 11.55";
    stack->attributes().maxValue = 2800;
    EXPECT_EQ(entropyDeficit(*stack, 0, {1, 1, 2, 4}, curve), 11) << "log2(2800) is 11.45";
    stack->attributes().maxValue = 0;
    EXPECT_EQ(entropyDeficit(*stack, 0, {1, 1, 2, 4}, curve), 0);
}

TEST(EntropyDeficit, SurvivesCurvesOfOneSliceAndChannelsThatAreNotThere)
{
    auto stack = test::makeStack({4, 1, 1, 1, 8}, [](int x, int, int, int) { return x; });
    stack->generateStatistics();
    Values curve(1);
    stack->attributes().maxValue = -1;
    EXPECT_EQ(entropyDeficit(*stack, 0, {}, curve), 8) << "what is no number goes to the last bin";
    EXPECT_EQ(entropyDeficit(*stack, 1, {}, curve), 8);
}

TEST(LinearSearch, TakesTheFirstOfTheLeastValuesAndTheUpperBound)
{
    const Values at = {5, 3, 3, 4, 3};
    Values asked;
    const auto f = [&](double x) {
        asked.push_back(x);
        return at[static_cast<std::size_t>(x)];
    };
    EXPECT_EQ(linearEntropySearch(f, 0, 4, 1), 1);
    EXPECT_EQ(asked, (Values{0, 0, 1, 2, 3, 4})) << "the first value is asked for twice";
    EXPECT_EQ(linearEntropySearch([](double x) { return -x; }, 0, 4, 1), 4);
    EXPECT_EQ(linearEntropySearch([](double x) { return -x; }, 0, 4, 1.5), 3);
    EXPECT_EQ(linearEntropySearch([](double x) { return -x; }, 2, 1, 0.5), 2) << "an empty range";
}

TEST(LinearSearch, EndsForStepsThatLeadNowhere)
{
    for (const double step : {0.0, -1.0, 1e-30, static_cast<double>(NAN)})
        EXPECT_EQ(linearEntropySearch([](double x) { return -x; }, 1, 4, step), 1);
}

TEST(LinearSearch, LogsWhatItTries)
{
    const LogCapture log;
    linearEntropySearch([](double x) { return 2 * x; }, 1, 1, 1);
    EXPECT_EQ(log.lines(), QStringList{"x 1.000000 8-entropy 2.000000"});
}

TEST(LinearSearch, AgreesWithABruteScanOfAStack)
{
    const auto stack = decayingStack(12);
    const PowerRange range = {0.5, 3, 0.125};
    const CurveParameters parameters = {0.5, 1, 0, 4};
    const test::SlowStack slow(*stack);
    const int bins = static_cast<int>(stack->statsList()[0].sliceHistograms[0].size());
    double best = 0;
    double most = -1;
    for (double power = range.min; power <= range.max; power += range.step) {
        const double entropy =
            test::slowScaledEntropy(slow, 0, bins, test::slowPowerCurve(12, 0.5, power, 0, 4));
        if (entropy > most + 1e-9) {
            most = entropy;
            best = power;
        }
    }
    EXPECT_EQ(fitPower(CurveSearch::Linear, *stack, 0, parameters, range), best);
}

struct BrentCase
{
    const char* name;
    double (*f)(double);
    double from;
    double to;
    double tolerance;
};

TEST(Brent, IsThe32BitTranscriptionStepForStep)
{
    const BrentCase cases[] = {
        {"cubic", [](double x) { return x * x * x - 2; }, 0, 4, 1e-6},
        {"cosine", [](double x) { return std::cos(x) - x; }, 0, 1, 0.01},
        {"flat root", [](double x) { return std::pow(x - 1, 9); }, 0, 4, 1e-8},
        {"steep", [](double x) { return std::tanh(50 * (x - 2.3)); }, -1, 4, 1e-5},
        {"reversed", [](double x) { return 1 - x; }, 4, 0, 0.01},
        {"no sign change", [](double x) { return 3 + std::sin(3 * x); }, 0, 4, 0.01},
        {"no sign change, falling", [](double x) { return 6 - x; }, 0, 4, 0.01},
        {"all negative", [](double x) { return -1 - x * x; }, -2, 3, 0.25},
        {"root at a bound", [](double x) { return x; }, 0, 4, 0.01},
        {"not a number", [](double x) { return std::sqrt(x - 1); }, 0, 4, 0.01},
        {"constant", [](double) { return 8.0; }, 0, 4, 0.01},
    };
    for (const BrentCase& row : cases) {
        SCOPED_TRACE(row.name);
        int calls = 0;
        const auto counted = [&](double x) {
            ++calls;
            return row.f(x);
        };
        const LogCapture log;
        const double found = zbrent(counted, row.from, row.to, row.tolerance);
        const test::SlowRoot expected = test::slowBrent(row.f, row.from, row.to, row.tolerance);
        EXPECT_EQ(found, expected.x);
        EXPECT_EQ(calls, expected.calls);
        EXPECT_EQ(log.contains("Root must be bracketed in zbrent"), !expected.bracketed);
        EXPECT_EQ(log.contains("Maximum number of iterations exceeded in zbrent"), !expected.converged);
    }
}

TEST(Brent, FindsARootWhereTheSignChanges)
{
    EXPECT_NEAR(zbrent([](double x) { return x * x - 2; }, 0, 4, 1e-7), std::sqrt(2), 1e-6);
}

TEST(Brent, GivesUpAfterAHundredIterationsWithZero)
{
    // Halving 1e37 a hundred times does not come near the step.
    const auto step = [](double x) { return x > 1e-37 ? 1.0 : -1.0; };
    const LogCapture log;
    const double found = zbrent(step, 0, 1e37, 0);
    const test::SlowRoot expected = test::slowBrent(step, 0, 1e37, 0);
    EXPECT_FALSE(expected.converged);
    EXPECT_EQ(found, 0);
    EXPECT_EQ(log.count("Maximum number of iterations exceeded in zbrent"), 1);
}

TEST(Brent, ReturnsAtOnceForAnIntervalOfOnePoint)
{
    int calls = 0;
    EXPECT_EQ(zbrent([&](double) { return ++calls, 3.0; }, 2, 2, 0.01), 2);
    EXPECT_EQ(calls, 2);
}

TEST(Brent, KeepsItsNumbersIn32Bits)
{
    EXPECT_EQ(zbrent([](double) { return 1.0; }, 0.1, 0.1, 0.01), static_cast<double>(0.1F));
}

TEST(FitPower, CutsThePowerToWhatACurveTakes)
{
    const auto stack = decayingStack(6);
    EXPECT_EQ(fitPower(CurveSearch::Linear, *stack, 0, {}, {0.02, 0.02, 0.01}), 0.1);
    EXPECT_EQ(fitPower(CurveSearch::Linear, *stack, 0, {}, {12, 12, 0.01}), 10);
}

TEST(FitPower, StopsWhenCancelled)
{
    const auto stack = decayingStack(6);
    const std::atomic<bool> cancel = true;
    EXPECT_EQ(fitPower(CurveSearch::Brent, *stack, 0, {}, {}, {{}, &cancel}), std::nullopt);
    EXPECT_EQ(fitPower(CurveSearch::Linear, *stack, 0, {}, {}, {{}, &cancel}), std::nullopt);
}

TEST(FitPower, IsTheRootOfTheDeficitAndSaysWhatItFound)
{
    const auto stack = decayingStack(12);
    const test::SlowStack slow(*stack);
    const int bins = static_cast<int>(stack->statsList()[0].sliceHistograms[0].size());
    const LogCapture log;
    const double power = *fitPower(CurveSearch::Brent, *stack, 0, {1, 1, 0, 4}, {0, 4, 0.01});
    const test::SlowRoot expected = test::slowBrent(
        [&](double p) {
            return stack->attributes().significantBits() -
                   test::slowScaledEntropy(slow, 0, bins, test::slowPowerCurve(12, 1, p, 0, 4));
        },
        0, 4, 0.01);
    EXPECT_NEAR(power, std::max(0.1, expected.x), 1e-4);
    EXPECT_TRUE(log.contains(QString::asprintf("pow %f", expected.x)) || power == 0.1);
    EXPECT_TRUE(log.lines().first().startsWith("stack entropy "));
}

} // namespace
} // namespace tirn
