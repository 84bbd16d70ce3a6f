#include <functional>

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "image/allocationerror.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/slowstack.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::sameVoxels;
using test::samples;
using test::SlowStack;
using test::StackShape;

class GeometryOf : public ::testing::TestWithParam<StackShape>
{
protected:
    test::StackPointer m_stack = test::randomStack(GetParam(), 23);
    SlowStack m_slow{*m_stack};
};

INSTANTIATE_TEST_SUITE_P(Shapes, GeometryOf,
                         ::testing::Values(StackShape{1, 1, 1, 1, 8}, StackShape{33, 17, 5, 1, 8},
                                           StackShape{16, 2, 9, 2, 8}, StackShape{7, 9, 4, 3, 8},
                                           StackShape{33, 1, 5, 1, 16}, StackShape{8, 16, 1, 2, 12},
                                           StackShape{5, 6, 7, 4, 16}, StackShape{1, 12, 3, 5, 16}));

TEST_P(GeometryOf, CropKeepsTheBoxWithItsBounds)
{
    const StackShape s = GetParam();
    ASSERT_TRUE(m_stack->crop(s.x / 3, s.x - 1, 0, s.y / 2, s.z / 2, s.z / 2));
    EXPECT_TRUE(sameVoxels(*m_stack, slowCrop(m_slow, s.x / 3, s.x - 1, 0, s.y / 2, s.z / 2, s.z / 2)));
    EXPECT_EQ(m_stack->attributes().fileX, s.x);
}

TEST_P(GeometryOf, CropToTheWholeStackChangesNothing)
{
    const StackShape s = GetParam();
    ASSERT_TRUE(m_stack->crop(0, s.x - 1, 0, s.y - 1, 0, s.z - 1));
    EXPECT_TRUE(sameVoxels(*m_stack, m_slow));
}

TEST_P(GeometryOf, CropRefusesABoxThatIsNotInside)
{
    const StackShape s = GetParam();
    const int last[] = {s.x - 1, s.y - 1, s.z - 1};
    for (int axis = 0; axis < 3; ++axis) {
        for (const auto& [low, high] : {std::pair{-1, last[axis]}, {0, last[axis] + 1}, {1, 0}}) {
            int bounds[6] = {0, last[0], 0, last[1], 0, last[2]};
            bounds[2 * axis] = low;
            bounds[2 * axis + 1] = high;
            LogCapture log;
            EXPECT_FALSE(m_stack->crop(bounds[0], bounds[1], bounds[2], bounds[3], bounds[4], bounds[5]));
            EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("enter ImageFile::crop()"),
                                                QStringLiteral("bad cropping dimensions"),
                                                QStringLiteral("exit ImageFile::crop()")}));
        }
    }
    EXPECT_TRUE(sameVoxels(*m_stack, m_slow));
}

TEST_P(GeometryOf, PadCentresTheStackInZeros)
{
    const StackShape s = GetParam();
    ASSERT_TRUE(m_stack->pad(s.x + 3, s.y + 4, s.z + 1));
    EXPECT_TRUE(sameVoxels(*m_stack, slowPad(m_slow, s.x + 3, s.y + 4, s.z + 1, {1, 2, 0})));
}

TEST_P(GeometryOf, PadToTheSameSizeCopiesTheStack)
{
    const StackShape s = GetParam();
    ASSERT_TRUE(m_stack->pad(s.x, s.y, s.z));
    EXPECT_TRUE(sameVoxels(*m_stack, m_slow));
}

TEST_P(GeometryOf, PadRefusesASmallerSize)
{
    const StackShape s = GetParam();
    for (const auto& size : {StackShape{s.x - 1, s.y, s.z}, {s.x, s.y - 1, s.z}, {s.x, s.y, s.z - 1}}) {
        LogCapture log;
        EXPECT_FALSE(m_stack->pad(size.x, size.y, size.z));
        EXPECT_TRUE(log.contains(QStringLiteral("exit ImageFile::pad(error)")));
    }
    EXPECT_TRUE(sameVoxels(*m_stack, m_slow));
}

TEST_P(GeometryOf, PadBackAddsLayersOfZerosAtTheEnd)
{
    const StackShape s = GetParam();
    ASSERT_TRUE(m_stack->padBack(s.z + 3));
    EXPECT_TRUE(sameVoxels(*m_stack, slowPad(m_slow, s.x, s.y, s.z + 3, {0, 0, 0})));
    LogCapture log;
    EXPECT_FALSE(m_stack->padBack(s.z + 2));
    EXPECT_TRUE(log.contains(QStringLiteral("exit ImageFile::padBack(error)")));
}

TEST_P(GeometryOf, ProjectionTakesTheLargestValueAlongZ)
{
    ASSERT_TRUE(m_stack->maxIntensityProject());
    const SlowStack expected = slowProject(m_slow);
    EXPECT_TRUE(sameVoxels(*m_stack, expected));
    EXPECT_EQ(m_stack->statsList().size(), static_cast<std::size_t>(GetParam().channels));
    EXPECT_EQ(m_stack->stats(0).sliceHistograms.size(), 1U);
}

TEST_P(GeometryOf, SubSamplingMakesMeansOfBlocks)
{
    for (const int factor : {1, 2, 3, 8}) {
        const auto stack = test::randomStack(GetParam(), 23);
        stack->subSample(factor);
        EXPECT_TRUE(sameVoxels(*stack, slowSubSampleMean(m_slow, factor, factor, factor))) << factor;
    }
    m_stack->subSampleMean(4, 1, 2);
    EXPECT_TRUE(sameVoxels(*m_stack, slowSubSampleMean(m_slow, 4, 1, 2)));
}

TEST_P(GeometryOf, SubSamplingByLargestTakesItFromBlocks)
{
    for (const int factor : {1, 2, 5, 6, 7, 8}) {
        const auto stack = test::randomStack(GetParam(), 23);
        stack->subSampleMax(factor, 3, 2);
        EXPECT_TRUE(sameVoxels(*stack, slowSubSampleMax(m_slow, factor, 3, 2))) << factor;
    }
}

TEST(SubSample, BlocksHaveAnyNumberOfRows)
{
    for (const int bits : {8, 16}) {
        for (int rows = 0; rows < 8 * 8; ++rows) {
            const auto mean = test::randomStack({70, 9, 10, 1, bits}, 3);
            const auto largest = test::randomStack({70, 9, 10, 1, bits}, 3);
            const SlowStack slow(*mean);
            const int y = 1 + rows % 8;
            const int z = 1 + rows / 8;
            mean->subSampleMean(2, y, z);
            largest->subSampleMax(2, y, z);
            EXPECT_TRUE(sameVoxels(*mean, slowSubSampleMean(slow, 2, y, z))) << y << " " << z;
            EXPECT_TRUE(sameVoxels(*largest, slowSubSampleMax(slow, 2, y, z))) << y << " " << z;
        }
    }
}

TEST(SubSample, RowsOfAnyWidthHaveTheirTails)
{
    for (const int bits : {8, 16}) {
        for (const int x : {1, 2, 3, 7, 16, 31, 33, 64, 127, 130, 261}) {
            for (int factor = 1; factor <= 8; ++factor) {
                const int channels = x > 100 ? 1 : 1 + (x + factor) % 4;
                const auto mean = test::randomStack({x, 3, 3, channels, bits}, 5);
                const auto largest = test::randomStack({x, 3, 3, channels, bits}, 5);
                const SlowStack slow(*mean);
                mean->subSampleMean(factor, 2, 3);
                largest->subSampleMax(factor, 2, 3);
                ASSERT_TRUE(sameVoxels(*mean, slowSubSampleMean(slow, factor, 2, 3))) << x << " " << factor;
                ASSERT_TRUE(sameVoxels(*largest, slowSubSampleMax(slow, factor, 2, 3))) << x << " " << factor;
            }
        }
    }
}

TEST(SubSample, AxesOfOneVoxelStayAsLong)
{
    for (int factor = 1; factor <= 8; ++factor) {
        for (const test::StackShape& shape :
             {test::StackShape{1, 9, 9, 1, 8}, {9, 1, 9, 1, 8}, {9, 9, 1, 1, 8}, {1, 1, 1, 3, 8}}) {
            const auto stack = test::randomStack(shape, 6);
            const SlowStack slow(*stack);
            stack->subSample(factor);
            EXPECT_TRUE(sameVoxels(*stack, slowSubSampleMean(slow, factor, factor, factor))) << factor;
        }
    }
}

TEST(SubSample, FullBlocksOfTheLargestBytesDoNotOverflow)
{
    for (int factor = 1; factor <= 8; ++factor) {
        const auto stack = test::constantStack({16, 16, 16, 1, 8}, 255);
        stack->subSample(factor);
        const std::vector<int> voxels = samples(*stack);
        EXPECT_EQ(voxels, std::vector<int>(voxels.size(), 255)) << factor;
    }
}

TEST(SubSample, ABlockOverTheEndRepeatsTheLastVoxel)
{
    const auto stack = test::makeStack({5, 1, 1, 1, 8}, [](int x, int, int, int) { return 10 * x; });
    stack->subSample(2);
    EXPECT_EQ(samples(*stack), (std::vector<int>{5, 25, 40}));
}

TEST(SubSample, IsRepeatedWhenTheStackIsReadAgain)
{
    const QTemporaryDir folder;
    test::PicFile file;
    file.value = [](int x, int, int) { return 10 * x; };
    ImageFile stack({file.save(folder.filePath("a.pic"))});
    ASSERT_TRUE(stack.read());
    stack.attributes().dimX = 0.5;
    stack.subSample(2);
    for (int round = 0; round < 2; ++round) {
        stack.freeStack();
        ASSERT_TRUE(stack.reRead());
        EXPECT_EQ(samples(stack), (std::vector<int>{5, 25, 5, 25}));
        EXPECT_EQ(stack.attributes().dimX, 1.0);
    }
    ASSERT_TRUE(stack.read());
    EXPECT_EQ(stack.attributes().x, 4);
    stack.freeStack();
    ASSERT_TRUE(stack.reRead());
    EXPECT_EQ(stack.attributes().x, 4);
}

TEST(SubSample, FullBlocksOfTheLargestValuesDoNotOverflow)
{
    const auto stack = test::constantStack({16, 16, 16, 1, 16}, 65535);
    stack->subSample(8);
    EXPECT_EQ(samples(*stack), std::vector<int>(8, 65535));
}

TEST(SubSample, StretchesTheKnownVoxelSizes)
{
    const auto stack = test::constantStack({8, 8, 8, 1, 8}, 1);
    stack->attributes().dimX = 0.5;
    stack->attributes().dimY = -1.0;
    stack->attributes().dimZ = 2.0;
    stack->subSample(2);
    EXPECT_EQ(stack->attributes().dimX, 1.0);
    EXPECT_EQ(stack->attributes().dimY, -1.0);
    EXPECT_EQ(stack->attributes().dimZ, 4.0);
    stack->subSampleMax(1, 2, 3);
    EXPECT_EQ(stack->attributes().dimX, 1.0);
    EXPECT_EQ(stack->attributes().dimZ, 12.0);
    stack->subSampleMean(3, 1, 1);
    EXPECT_EQ(stack->attributes().dimX, 3.0);
}

TEST(SubSample, FactorsOutOfRangeDoNothing)
{
    const auto stack = test::randomStack({8, 8, 8, 1, 8}, 1);
    const SlowStack before(*stack);
    for (const int factor : {-1, 0, 9}) {
        stack->subSample(factor);
        stack->subSampleMax(factor, 1, 1);
        stack->subSampleMean(1, factor, 1);
        stack->subSampleMean(1, 1, factor);
    }
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(SubSample, TheLogNamesTheFactors)
{
    const auto stack = test::constantStack({8, 8, 8, 1, 8}, 1);
    LogCapture log;
    stack->subSample(2);
    stack->subSampleMax(1, 2, 3);
    EXPECT_EQ(log.lines().filter(QStringLiteral("downsampling by 2")).size(), 1);
    EXPECT_EQ(log.lines().filter(QStringLiteral("downsampling max by 1 2 3")).size(), 1);
}

TEST(Geometry, TheCropLogTellsTheBox)
{
    const auto stack = test::constantStack({8, 8, 8, 1, 8}, 1);
    LogCapture log;
    ASSERT_TRUE(stack->crop(1, 2, 3, 5, 0, 7));
    EXPECT_EQ(log.lines(),
              (QStringList{QStringLiteral("enter ImageFile::crop()"), QStringLiteral("minX: 1 maxX: 2"),
                           QStringLiteral("minY: 3 maxY: 5"), QStringLiteral("minZ: 0 maxZ: 7"),
                           QStringLiteral("newX: 2"), QStringLiteral("newY: 3"), QStringLiteral("newZ: 8"),
                           QStringLiteral("exit ImageFile::crop()")}));
}

TEST(Geometry, AnUnreadStackIsReadWhereTheOperationSaysSo)
{
    const QTemporaryDir folder;
    const QString name = test::PicFile{}.save(folder.filePath(QStringLiteral("a.pic")));
    ImageFile projected(QStringList{name});
    EXPECT_TRUE(projected.maxIntensityProject());
    ImageFile sampled(QStringList{name});
    sampled.subSample(2);
    EXPECT_EQ(sampled.attributes().x, 2);
    ImageFile cropped(QStringList{name});
    EXPECT_FALSE(cropped.crop(0, 0, 0, 0, 0, 0));
    EXPECT_FALSE(cropped.pad(10, 10, 10));
    EXPECT_FALSE(cropped.padBack(10));
}

TEST(Geometry, AStackWithoutAFileStaysEmpty)
{
    ImageFile nothing;
    EXPECT_FALSE(nothing.maxIntensityProject());
    nothing.subSample(2);
    nothing.subSampleMax(2, 2, 2);
    nothing.subSampleMean(2, 2, 2);
    EXPECT_FALSE(nothing.isLoaded());
}

void expectRefusal(const char* text, const std::function<void(ImageFile&)>& operation)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 16}, 4);
    const SlowStack before(*stack);
    const test::NoVoxelMemory none;
    try {
        operation(*stack);
        FAIL() << "no exception";
    } catch (const AllocationError& error) {
        EXPECT_STREQ(error.what(), text);
    }
    EXPECT_TRUE(sameVoxels(*stack, before));
}

TEST(Geometry, WithoutMemoryTheStackStays)
{
    expectRefusal("Could not allocate memory for crop", [](ImageFile& s) { s.crop(0, 1, 0, 1, 0, 1); });
    expectRefusal("Could not allocate memory for pad", [](ImageFile& s) { s.pad(9, 9, 9); });
    expectRefusal("Could not allocate memory for padback", [](ImageFile& s) { s.padBack(9); });
    expectRefusal("Could not allocate memory for maxIntensityProject",
                  [](ImageFile& s) { s.maxIntensityProject(); });
    expectRefusal("Could not allocate memory for subSample", [](ImageFile& s) { s.subSample(2); });
    expectRefusal("Could not allocate memory for subSampleMax",
                  [](ImageFile& s) { s.subSampleMax(2, 2, 2); });
    expectRefusal("Could not allocate memory for subSampleMean",
                  [](ImageFile& s) { s.subSampleMean(2, 2, 2); });
    expectRefusal("Could not allocate memory for extractChannel", [](ImageFile& s) { s.extractChannel(0); });
    expectRefusal("Could not allocate memory for ratio", [](ImageFile& s) { s.ratio(0, 1); });
}

TEST(Geometry, ASizeThatCannotBeCountedIsRefused)
{
    const auto stack = test::randomStack({5, 4, 3, 2, 16}, 4);
    EXPECT_THROW(stack->pad(2000000000, 2000000000, 2000000000), AllocationError);
    EXPECT_EQ(stack->attributes().x, 5);
}

} // namespace
} // namespace tirn
