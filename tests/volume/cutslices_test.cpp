#include "volume/cutslices.h"

#include <limits>

#include <gtest/gtest.h>

#include "support/logcapture.h"
#include "support/picfile.h"

namespace tirn {
namespace {

constexpr SliceRange kTen = {0, 9};

TEST(CutSliders, MinimumAndMaximumMayMeetOnOneSlice)
{
    EXPECT_EQ(withHigh({4, 9}, 4, 1, kTen), (SliceRange{4, 4}));
    EXPECT_EQ(withLow({0, 6}, 6, 1, kTen), (SliceRange{6, 6}));
}

TEST(CutSliders, TheMaximumPushesTheMinimumAlong)
{
    EXPECT_EQ(withHigh({5, 9}, 3, 1, kTen), (SliceRange{3, 3}));
    EXPECT_EQ(withHigh({5, 9}, 6, 4, kTen), (SliceRange{3, 6}));
    EXPECT_EQ(withHigh({2, 9}, 6, 4, kTen), (SliceRange{2, 6}));
    EXPECT_EQ(withHigh({3, 9}, 6, 4, kTen), (SliceRange{3, 6}));
}

TEST(CutSliders, TheMinimumPushesTheMaximumAlong)
{
    EXPECT_EQ(withLow({0, 3}, 5, 1, kTen), (SliceRange{5, 5}));
    EXPECT_EQ(withLow({0, 6}, 5, 4, kTen), (SliceRange{5, 8}));
    EXPECT_EQ(withLow({0, 8}, 5, 4, kTen), (SliceRange{5, 8}));
    EXPECT_EQ(withLow({0, 9}, 5, 4, kTen), (SliceRange{5, 9}));
}

TEST(CutSliders, StopWhereTheIntervalFillsTheAxis)
{
    EXPECT_EQ(withHigh({0, 9}, 1, 4, kTen), (SliceRange{0, 3}));
    EXPECT_EQ(withLow({0, 9}, 8, 4, kTen), (SliceRange{6, 9}));
    EXPECT_EQ(withHigh({0, 9}, 0, 10, kTen), (SliceRange{0, 9}));
    EXPECT_EQ(withLow({0, 9}, 9, 10, kTen), (SliceRange{0, 9}));
    EXPECT_EQ(withHigh({10, 14}, 3, 2, {10, 14}), (SliceRange{10, 11}));
    EXPECT_EQ(withLow({10, 14}, 99, 2, {10, 14}), (SliceRange{13, 14}));
}

TEST(CutSliders, NoNumberLeadsOutOfTheLimits)
{
    constexpr int kLeast = std::numeric_limits<int>::min();
    constexpr int kMost = std::numeric_limits<int>::max();
    for (const int slice : {kLeast, -1, 10, kMost}) {
        for (const int interval : {kLeast, 0, 11, kMost}) {
            for (const SliceRange& range :
                 {withHigh(kTen, slice, interval, kTen), withLow(kTen, slice, interval, kTen)}) {
                EXPECT_GE(range.low, 0);
                EXPECT_LE(range.low, range.high);
                EXPECT_LE(range.high, 9);
            }
        }
    }
    EXPECT_EQ(withHigh({0, 0}, 5, 3, {0, 0}), (SliceRange{0, 0}));
    EXPECT_EQ(withLow({0, 0}, 5, 3, {0, 0}), (SliceRange{0, 0}));
}

/// Layers 2, 5, 8, 11, 14, 17 of a file.
constexpr FileAxis kStepped = {2, 20, 3, 1, 6, 6};

TEST(FileSlices, CountFromTheFirstThatWasReadAndByTheStep)
{
    const std::pair<int, int> expected[] = {{2, 0}, {4, 0}, {5, 1}, {8, 2}, {10, 2}, {17, 5}};
    for (const auto& [slice, quad] : expected)
        EXPECT_EQ(fileToQuad(slice, kStepped), quad) << slice;
}

TEST(FileSlices, AreDividedByTheReductionToo)
{
    // 20 layers by 4: five slices.
    const FileAxis reduced = {0, 19, 1, 4, 5, 5};
    const std::pair<int, int> expected[] = {{0, 0}, {3, 0}, {4, 1}, {18, 4}, {19, 4}};
    for (const auto& [slice, quad] : expected)
        EXPECT_EQ(fileToQuad(slice, reduced), quad) << slice;
}

TEST(FileSlices, AreSpreadOverTheSlicesOfAReslicedStack)
{
    // floor(15 * q / 3).
    const FileAxis resliced = {0, 3, 1, 1, 4, 16};
    for (int slice = 0; slice < 4; ++slice)
        EXPECT_EQ(fileToQuad(slice, resliced), 5 * slice);
    // floor(9 * q / 3.0), and floor(6 * q / 3.0) = 2 q.
    EXPECT_EQ(fileToQuad(2, {0, 3, 1, 1, 4, 10}), 6);
    // floor(7 * 1 / 3.0) = floor(2.33).
    EXPECT_EQ(fileToQuad(1, {0, 3, 1, 1, 4, 8}), 2);
}

TEST(FileSlices, OutOfWhatWasReadTheNearestOneIsTakenAndLogged)
{
    const test::LogCapture log;
    EXPECT_EQ(fileToQuad(-2, kStepped), 0);
    EXPECT_TRUE(log.contains("quad < 0 crud!"));
    EXPECT_FALSE(log.contains("quad beyond the last slice"));
    // The layer at 20 is one that was asked for and is not there: q = 6 of 6 slices.
    EXPECT_EQ(fileToQuad(20, kStepped), 5);
    EXPECT_TRUE(log.contains("quad beyond the last slice"));
    EXPECT_EQ(fileToQuad(std::numeric_limits<int>::max(), kStepped), 5);
    EXPECT_EQ(fileToQuad(std::numeric_limits<int>::min(), kStepped), 0);
}

TEST(FileSlices, OfOneSliceAreThatSlice)
{
    EXPECT_EQ(fileToQuad(7, {7, 7, 1, 1, 1, 1}), 0);
    EXPECT_EQ(fileToQuad(9, {7, 7, 1, 1, 1, 1}), 0);
    EXPECT_EQ(fileRangeOf({0, 0}, {7, 7, 1, 1, 1, 1}), (SliceRange{7, 7}));
}

TEST(FileSlices, TheWholeStackIsTheWholeRangeOfTheFile)
{
    EXPECT_EQ(fileRangeOf({0, 5}, kStepped), (SliceRange{2, 20}));
    EXPECT_EQ(fileRangeOf({0, 4}, {0, 18, 1, 4, 5, 5}), (SliceRange{0, 18}));
    EXPECT_EQ(fileRangeOf({0, 15}, {0, 3, 1, 1, 4, 16}), (SliceRange{0, 3}));
}

TEST(FileSlices, OfABoundAreThoseThatWereReadForIt)
{
    EXPECT_EQ(fileRangeOf({1, 4}, kStepped), (SliceRange{5, 14}));
    // Slices 1 to 3 stand for layers 4 to 15.
    EXPECT_EQ(fileRangeOf({1, 3}, {0, 19, 1, 4, 5, 5}), (SliceRange{4, 15}));
    EXPECT_EQ(fileRangeOf({1, 3}, {10, 48, 2, 4, 5, 5}), (SliceRange{18, 40}));
}

TEST(FileSlices, ABoundBetweenTwoLayersShowsBothOfThem)
{
    const FileAxis resliced = {0, 3, 1, 1, 4, 16};
    EXPECT_EQ(fileRangeOf({7, 8}, resliced), (SliceRange{1, 2}));
    EXPECT_EQ(fileRangeOf({5, 10}, resliced), (SliceRange{1, 2}));
    EXPECT_EQ(fileRangeOf({6, 11}, resliced), (SliceRange{1, 3}));
}

TEST(FileSlices, GoThereAndBack)
{
    for (const FileAxis& axis : {kStepped, FileAxis{0, 18, 1, 4, 5, 5}, FileAxis{3, 12, 1, 1, 10, 37},
                                 FileAxis{0, 9, 1, 1, 10, 10}}) {
        for (int slice = 0; slice < axis.slices; ++slice) {
            const int quad = fileToQuad(axis.first + slice * axis.unit(), axis);
            const SliceRange range = fileRangeOf({quad, quad}, axis);
            EXPECT_EQ(range.low, axis.first + slice * axis.unit());
            EXPECT_EQ(fileToQuad(range.high, axis), quad) << slice;
        }
    }
}

TEST(FileSlices, AnIntervalIsSoManyDrawnSlices)
{
    EXPECT_EQ(quadsOf(1, kStepped), 1);
    EXPECT_EQ(quadsOf(3, kStepped), 1);
    EXPECT_EQ(quadsOf(4, kStepped), 2);
    EXPECT_EQ(quadsOf(99, kStepped), 6);
    EXPECT_EQ(quadsOf(2, {0, 3, 1, 1, 4, 16}), 6);
}

class FileAxes : public ::testing::Test
{
protected:
    QTemporaryDir directory;
    VoxelArray array{VolumeOptions()};

    /// Layers first to last, every step-th, of a file of 9 x 6 voxels and 21 layers, reduced by a factor.
    void read(int first, int last, int step, int factor = 1)
    {
        const QString name = directory.filePath("a.pic");
        test::PicFile file;
        file.x = 9;
        file.y = 6;
        file.z = 21;
        file.save(name);
        auto image = std::make_shared<ImageFile>(QStringList(name));
        ASSERT_TRUE(image->read(first, last, step));
        if (factor > 1)
            image->subSample(factor);
        array.stack() = image->attributes();
        array.subsample = factor;
        array.appendImage(std::move(image));
    }
};

TEST_F(FileAxes, OfAWholeStackAreItsSlices)
{
    read(0, 20, 1);
    EXPECT_EQ(fileAxisOf(array, 0), (FileAxis{0, 8, 1, 1, 9, 9}));
    EXPECT_EQ(fileAxisOf(array, 1), (FileAxis{0, 5, 1, 1, 6, 6}));
    EXPECT_EQ(fileAxisOf(array, 2), (FileAxis{0, 20, 1, 1, 21, 21}));
}

TEST_F(FileAxes, OfAPartAreWhatWasReadOfTheFile)
{
    read(2, 20, 3);
    EXPECT_EQ(array.depth(), 6);
    EXPECT_EQ(fileAxisOf(array, 2), kStepped);
}

TEST_F(FileAxes, OfAReducedStackAreThoseOfTheFile)
{
    read(0, 20, 1, 4);
    // 9 voxels make 3, the last of which stands for one; 6 make 2, and 21 layers 6.
    EXPECT_EQ(fileAxisOf(array, 0), (FileAxis{0, 8, 1, 4, 3, 3}));
    EXPECT_EQ(fileAxisOf(array, 1), (FileAxis{0, 5, 1, 4, 2, 2}));
    EXPECT_EQ(fileAxisOf(array, 2), (FileAxis{0, 20, 1, 4, 6, 6}));
}

TEST_F(FileAxes, OfAStackWithoutAFileCountFromZero)
{
    EXPECT_EQ(fileAxisOf(VoxelArray(4, 5, 6, VolumeOptions()), 2), (FileAxis{0, 5, 1, 1, 6, 6}));
    // A stack that was put together says nothing of layers.
    array.stack().z = 3;
    array.appendImage(std::make_shared<ImageFile>(VoxelBuffer(12), 2, 2, 3, 1, 8));
    EXPECT_EQ(fileAxisOf(array, 2), (FileAxis{0, 2, 1, 1, 3, 3}));
}

TEST_F(FileAxes, OfAStackThatBecameDeeperThanItsFileCountFromZero)
{
    read(0, 20, 1);
    array.stack().z = 30;
    EXPECT_EQ(fileAxisOf(array, 2), (FileAxis{0, 29, 1, 1, 30, 30}));
}

TEST(CutBoxBounds, AreReadAndSetByAxis)
{
    const CutBox cut = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(cutRange(cut, 0), (SliceRange{1, 2}));
    EXPECT_EQ(cutRange(cut, 1), (SliceRange{3, 4}));
    EXPECT_EQ(cutRange(cut, 2), (SliceRange{5, 6}));
    CutBox set;
    for (int axis = 0; axis < 3; ++axis)
        setCutRange(set, axis, cutRange(cut, axis));
    EXPECT_EQ(set, cut);
}

} // namespace
} // namespace tirn
