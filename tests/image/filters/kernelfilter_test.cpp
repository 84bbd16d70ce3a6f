#include <cmath>

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "image/allocationerror.h"
#include "image/filters/filterkernel.h"
#include "image/filters/kernelfilter.h"
#include "support/filtershapes.h"
#include "support/logcapture.h"
#include "support/slowfilters.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::sameVoxels;
using test::samples;
using test::SlowStack;

/// Weights of both signs, whole ones or with fractions.
FilterKernel randomKernel(int width, int height, unsigned seed, double step)
{
    std::mt19937 generator(seed);
    FilterKernel kernel = {width, height, {}};
    for (int i = 0; i < width * height; ++i)
        kernel.weights.push_back((static_cast<int>(generator() % 21) - 7) * step);
    return kernel;
}

TEST(KernelFilter, AgreesWithSumsOfTheWindow)
{
    int made = 0;
    for (const test::FilterCase& one : test::filterCases(80, 9, 14)) {
        const FilterKernel kernel =
            randomKernel(one.size, 1 + one.size * 7 % 6, one.seed, made++ % 2 == 0 ? 1.0 : 0.1);
        const auto stack = test::randomStack(one.shape, one.seed);
        const SlowStack slow(*stack);
        ASSERT_TRUE(kernelFilter(*stack, kernel, one.channel));
        ASSERT_TRUE(sameVoxels(
            *stack, slowConvolution(slow, kernel.weights, kernel.width, kernel.height, one.channel)))
            << one.text();
    }
}

TEST(KernelFilter, RowsWiderThanATileAgreeToo)
{
    const FilterKernel kernel = randomKernel(5, 4, 9, 0.3);
    const auto stack = test::randomStack({700, 5, 1, 2, 16}, 5);
    const SlowStack slow(*stack);
    ASSERT_TRUE(kernelFilter(*stack, kernel, -1));
    EXPECT_TRUE(sameVoxels(*stack, slowConvolution(slow, kernel.weights, 5, 4, -1)));
}

TEST(KernelFilter, TheTableLiesOverTheVoxelsAsItStands)
{
    const auto stack = test::stackFrom({5, 1, 1, 1, 8}, {0, 0, 90, 0, 0});
    // What stands at the left of the table counts for the voxel at the left.
    ASSERT_TRUE(kernelFilter(*stack, {3, 1, {2, 1, 0}}, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{0, 0, 30, 60, 0}));
}

TEST(KernelFilter, SumsAreDividedByTheWeightsAndRounded)
{
    const auto stack = test::stackFrom({3, 1, 1, 1, 8}, {1, 2, 4});
    // (1 + 1 + 2) / 3 = 1.33, (1 + 2 + 4) / 3 = 2.33, (2 + 4 + 4) / 3 = 3.33; edges repeat.
    ASSERT_TRUE(kernelFilter(*stack, {3, 1, {1, 1, 1}}, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{1, 2, 3}));
    // (1 + 2) / 2 = 1.5 is rounded up; the centre of two columns is the right one.
    ASSERT_TRUE(kernelFilter(*stack, {2, 1, {1, 1}}, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{1, 2, 3}));
}

TEST(KernelFilter, WeightsThatSumUpToNothingAreNotDivided)
{
    const auto stack = test::stackFrom({4, 1, 1, 1, 8}, {10, 10, 40, 200});
    // Differences to the right: 0, 30, 160, and 0 at the repeated edge; a negative one would be cut.
    ASSERT_TRUE(kernelFilter(*stack, {3, 1, {0, -1, 1}}, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{0, 30, 160, 0}));
    ASSERT_TRUE(kernelFilter(*stack, {3, 1, {0, -1, 1}}, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{30, 130, 0, 0}));
}

TEST(KernelFilter, ResultsStayWithinTheDepth)
{
    const auto stack = test::stackFrom({3, 1, 1, 1, 12}, {0, 4095, 0});
    ASSERT_TRUE(kernelFilter(*stack, {3, 1, {-1, 3, -1}}, -1));
    EXPECT_EQ(samples(*stack), (std::vector<int>{0, 4095, 0}));
}

TEST(KernelFilter, OtherChannelsStayExactAndTheLargestValueIsUnknown)
{
    const auto stack = test::randomStack({9, 8, 2, 2, 16}, 5);
    stack->attributes().maxValue = 65535;
    const std::vector<int> before = test::channelSamples(*stack, 0);
    ASSERT_TRUE(kernelFilter(*stack, {1, 1, {0.5}}, 1));
    EXPECT_EQ(test::channelSamples(*stack, 0), before);
    EXPECT_EQ(stack->attributes().maxValue, -1);
}

TEST(KernelFilter, WhatCannotBeFilteredIsRefused)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 8}, 8);
    const SlowStack before(*stack);
    EXPECT_FALSE(kernelFilter(*stack, {1, 1, {1}}, 2));
    EXPECT_FALSE(kernelFilter(*stack, {0, 0, {}}, -1));
    EXPECT_FALSE(kernelFilter(*stack, {2, 2, {1, 1, 1}}, -1));
    EXPECT_FALSE(kernelFilter(*stack, {1, 1, {std::nan("")}}, -1));
    EXPECT_FALSE(kernelFilter(*stack, {1, 1, {1e200}}, -1));
    ImageFile none;
    EXPECT_FALSE(kernelFilter(none, {1, 1, {1}}, -1));
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(KernelFilter, ACancelledFilterLeavesTheStackAsItWas)
{
    const auto stack = test::randomStack({65, 64, 40, 1, 8}, 8);
    const SlowStack before(*stack);
    std::atomic<bool> cancel = false;
    Progress progress;
    progress.cancel = &cancel;
    progress.report = [&](const QString&, int done, int) { cancel = done > 0; };
    EXPECT_FALSE(kernelFilter(*stack, {3, 1, {1, 1, 1}}, -1, progress));
    EXPECT_TRUE(cancel);
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(KernelFilter, WithoutMemoryTheStackStays)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 16}, 4);
    const SlowStack before(*stack);
    const test::NoVoxelMemory none;
    try {
        kernelFilter(*stack, {1, 1, {1}}, -1);
        FAIL() << "no exception";
    } catch (const AllocationError& error) {
        EXPECT_STREQ(error.what(), "Could not allocate memory for kernelfilter");
    }
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(KernelFilter, TheLogHasWidthAndHeight)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 8}, 8);
    LogCapture log;
    ASSERT_TRUE(kernelFilter(*stack, {3, 2, {1, 1, 1, 1, 1, 1}}, -1));
    EXPECT_EQ(log.lines(), QStringList{"kernel 3x2 elapsed 0ms"});
}

TEST(FilterKernel, IsReadFromRowsOfNumbers)
{
    QString error;
    EXPECT_EQ(kernelFromText("1 2 3\n-4 0.5 1e2\n", error), (FilterKernel{3, 2, {1, 2, 3, -4, 0.5, 100}}));
    EXPECT_EQ(kernelFromText("\n1,2;\t3\r\n\r\n4, 5 ,6", error), (FilterKernel{3, 2, {1, 2, 3, 4, 5, 6}}));
    EXPECT_TRUE(error.isEmpty());
}

TEST(FilterKernel, WhatIsNoTableIsRefusedWithItsLine)
{
    const auto errorOf = [](const QString& text) {
        QString error;
        EXPECT_EQ(kernelFromText(text, error), FilterKernel());
        return error;
    };
    EXPECT_EQ(errorOf(""), QStringLiteral("there are no numbers"));
    EXPECT_EQ(errorOf("1 2\n\n3\n"), QStringLiteral("line 3 has 1 numbers, not 2"));
    EXPECT_EQ(errorOf("1 2\n3 x\n"), QStringLiteral("line 2: 'x' is not a weight"));
    EXPECT_EQ(errorOf("nan"), QStringLiteral("line 1: 'nan' is not a weight"));
    EXPECT_EQ(errorOf("1e101"), QStringLiteral("line 1: '1e101' is not a weight"));
    EXPECT_EQ(errorOf(QStringLiteral("1 ").repeated(1024)),
              QStringLiteral("there are more than 1023 rows or columns"));
}

TEST(FilterKernel, IsReadFromAFile)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("kernel.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("0 1\n1 0\n");
    file.close();
    QString error;
    EXPECT_EQ(kernelFromFile(file.fileName(), error), (FilterKernel{2, 2, {0, 1, 1, 0}}));
    EXPECT_EQ(kernelFromFile(folder.filePath("absent.txt"), error), FilterKernel());
    EXPECT_FALSE(error.isEmpty());
}

} // namespace
} // namespace tirn
