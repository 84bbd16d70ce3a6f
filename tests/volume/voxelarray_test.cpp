#include "volume/voxelarray.h"

#include <cmath>

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"
#include "image/filters/pointfilters.h"
#include "support/logcapture.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::GlRecorder;
using test::LogCapture;
using test::PlainStack;

int significantBits(int bits, int maxValue)
{
    VoxelArray array({});
    array.stack().bitDepth = bits;
    array.stack().maxValue = maxValue;
    return array.significantBits();
}

TEST(VoxelArray, BeginsEmpty)
{
    const VoxelArray array({});
    EXPECT_EQ(array.channelCount(), 0);
    EXPECT_EQ(array.timePointCount(), 0);
    EXPECT_EQ(array.timePoint(), 0);
    EXPECT_EQ(array.timeLabels(), QStringList{"00:00:00"});
    EXPECT_EQ(array.scale, (AxisScale{1, 1, 1}));
    EXPECT_EQ(array.baseScale, (AxisScale{1, 1, 1}));
    EXPECT_EQ(array.sliceFirst, 0);
    EXPECT_EQ(array.sliceLast, 0);
    EXPECT_EQ(array.sliceStep, 0);
    EXPECT_EQ(array.subsample, 1);
    EXPECT_EQ(array.geometry().maxPow(), 1);
    EXPECT_EQ(array.geometry().finalZ, -1);
    EXPECT_EQ(array.encodedImages(), 0);
    EXPECT_FALSE(array.isComplete());
    EXPECT_EQ(array.name(), "none");
}

TEST(VoxelArray, OfASizeHasOneChannelAndTheWholeCutBox)
{
    const VoxelArray array(5, 6, 7, {});
    EXPECT_EQ(array.channelCount(), 1);
    EXPECT_EQ(array.cut, (CutBox{0, 4, 0, 5, 0, 6}));
    EXPECT_EQ(array.width(), 5);
    EXPECT_EQ(array.height(), 6);
    EXPECT_EQ(array.depth(), 7);
    EXPECT_EQ(array.finalDepth(), 7);
}

TEST(VoxelArray, TimePointsWrap)
{
    VoxelArray array({});
    array.setTimePoints(5);
    array.setTimePoint(-1);
    EXPECT_EQ(array.timePoint(), 4);
    array.setTimePoint(7);
    EXPECT_EQ(array.timePoint(), 2);
    array.setTimePoint(-5);
    EXPECT_EQ(array.timePoint(), 4);
}

TEST(VoxelArray, WithoutTimePointsStaysAtTheFirst)
{
    VoxelArray array({});
    array.setTimePoint(3);
    EXPECT_EQ(array.timePoint(), 0);
    array.setTimePoint(-1);
    EXPECT_EQ(array.timePoint(), 0);
}

TEST(VoxelArray, SettingTimePointsLabelsThemAnew)
{
    VoxelArray array({});
    array.timeLabels() = QStringList{"12:00:00", "12:00:01", "12:00:02", "12:00:03"};
    array.setTimePoints(3);
    EXPECT_EQ(array.timeLabels(), (QStringList{"00:00:00", "00:00:00", "00:00:00"}));
}

TEST(VoxelArray, SignificantBitsAreRounded)
{
    EXPECT_EQ(significantBits(12, -1), 12);
    EXPECT_EQ(significantBits(16, 4095), 12);
    EXPECT_EQ(significantBits(16, 3000), 12);
    EXPECT_EQ(significantBits(16, 2800), 11);
    EXPECT_EQ(significantBits(16, 255), 8);
    EXPECT_EQ(significantBits(16, 65535), 16);
    EXPECT_EQ(significantBits(16, 1), 0);
    EXPECT_EQ(significantBits(16, 0), 0);
}

class RecordedArray : public ::testing::Test
{
protected:
    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LogCapture log;

    static std::unique_ptr<VoxelArray> array(const std::vector<PlainStack>& stacks, GLenum target,
                                             int limit = 4, int finalZ = -1)
    {
        return test::makeVolume(stacks, {target, limit, finalZ, RenderThreadKind::FragmentProgram});
    }
};

TEST_F(RecordedArray, OffsetsCountTheTexturesOfAChannelAndATimePoint)
{
    const auto volume = array({test::denseStack(5, 3, 4, 2), test::denseStack(5, 3, 4, 2)}, GL_TEXTURE_2D);
    EXPECT_EQ(volume->channelOffset(0), 0);
    EXPECT_EQ(volume->channelOffset(2), 2 * 19);
    EXPECT_EQ(volume->timeOffset(3), 2 * 3 * 19);
    EXPECT_EQ(volume->texturesPerChannel(), 19);
}

TEST_F(RecordedArray, OffsetsOfTheReslicedDepthCountItsSlices)
{
    const auto volume = array({test::denseStack(4, 4, 4)}, GL_TEXTURE_3D, 4, 7);
    EXPECT_EQ(volume->finalDepth(), 7);
    EXPECT_EQ(volume->channelOffset(1), 4 + 4 + 7);
    EXPECT_EQ(volume->texturesPerChannel(), 1);
}

TEST_F(RecordedArray, MemoryIsVoxelsTexturesAndBookkeeping)
{
    const std::vector<PlainStack> stacks(2, test::denseStack(5, 3, 4, 2));
    // Voxels 60 * 2 * 2; padded 8, 4, 4; records 2 * 152 + 4 * 88.
    EXPECT_EQ(array(stacks, GL_TEXTURE_2D)->memoryUsed(),
              240 + (8 * 4 * 3 + 4 * 4 * 5 + 8 * 4 * 4) * 4 + 656);
    EXPECT_EQ(array(stacks, GL_TEXTURE_3D)->memoryUsed(), 240 + 8 * 4 * 4 * 4 + 656);
    const std::vector<PlainStack> words(2, test::denseStack(5, 3, 4, 2, 12));
    EXPECT_EQ(array(words, GL_TEXTURE_2D)->memoryUsed(),
              480 + 2 * (8 * 4 * 3 + 4 * 4 * 5 + 8 * 4 * 4) * 4 + 656);
}

TEST_F(RecordedArray, MemoryWithoutVoxelsLeavesThemOut)
{
    VoxelArray volume(5, 3, 4, {RenderThreadKind::FragmentProgram, 4, 4, true, nullptr});
    volume.stack().bitDepth = 8;
    volume.setTimePoints(1);
    EXPECT_EQ(volume.memoryUsed(), (8 * 4 * 3 + 4 * 4 * 5 + 8 * 4 * 4) + 152 + 88);
}

TEST_F(RecordedArray, IsCompleteWithAllItsQuads)
{
    EXPECT_TRUE(array({test::denseStack(5, 3, 4)}, GL_TEXTURE_2D)->isComplete());
    EXPECT_TRUE(array({test::denseStack(4, 4, 4)}, GL_TEXTURE_3D, 4, 9)->isComplete());
    VoxelArray volume(5, 3, 4, {});
    EXPECT_FALSE(volume.isComplete());
}

TEST(VoxelArrayName, ShowsTheFirstAndTheLastImage)
{
    const auto named = [](const char* name) {
        return std::make_shared<ImageFile>(QStringList{name}, 0, 2, 2, 2, 1, 8);
    };
    VoxelArray array({});
    array.appendImage(named("/tmp/a.raw"));
    EXPECT_EQ(array.name(), "a.raw");
    array.appendImage(named("/tmp/b.raw"));
    array.appendImage(named("/tmp/c.raw"));
    EXPECT_EQ(array.name(), "a.raw ... c.raw");
}

/// An array of images with samples given in memory order: x * 1 * 1 voxels.
class Statistics : public ::testing::Test
{
protected:
    VoxelArray array{VolumeOptions{}};
    LogCapture log;

    void add(int channels, const std::vector<int>& samples)
    {
        const int x = static_cast<int>(samples.size()) / channels;
        array.appendImage(test::stackFrom({x, 1, 1, channels, 8}, samples));
    }
    void copy(int channels, int timePoints)
    {
        array.stack() = array.images().front()->attributes();
        array.stack().maxValue = -1;
        array.setChannelCount(channels);
        array.setTimePoints(timePoints);
        for (const auto& image : array.images())
            image->generateStatistics();
        log.clear();
        array.copyStatistics();
    }
    const Channel& channel(std::size_t c) { return array.channels()[c]; }
};

TEST_F(Statistics, OfOneImageGoToItsChannels)
{
    add(2, {10, 20, 30, 40, 50, 60});
    copy(2, 1);
    EXPECT_EQ(log.lines(), QStringList{"About to copy 2 channels 1 file scenario"});
    EXPECT_EQ(channel(0).minValue, 10);
    EXPECT_EQ(channel(0).maxValue, 50);
    EXPECT_EQ(channel(1).minValue, 20);
    EXPECT_EQ(channel(1).maxValue, 60);
    EXPECT_EQ(channel(1).stats.histogram[40], 1U);
    EXPECT_EQ(array.stack().maxValue, 60);
}

TEST_F(Statistics, KeepAMaximumThatTheFileStates)
{
    add(1, {10, 20});
    array.images().front()->attributes().maxValue = 200;
    copy(1, 1);
    EXPECT_EQ(array.stack().maxValue, 200);
}

TEST_F(Statistics, FollowVoxelsThatBecameDarker)
{
    add(1, {10, 200});
    copy(1, 1);
    EXPECT_EQ(array.significantBits(), 8);
    addConstant(*array.images().front(), -185, -1);
    array.copyStatistics();
    EXPECT_EQ(array.stack().maxValue, 15);
    EXPECT_EQ(array.channels()[0].maxValue, 15);
    EXPECT_EQ(array.significantBits(), 4);
}

TEST_F(Statistics, OfOneImageForEachChannelGoToThatChannel)
{
    add(1, {1, 2, 3});
    add(1, {7, 8, 9});
    copy(2, 1);
    EXPECT_EQ(log.lines(), QStringList{"About to copy 1 channel per file scenario"});
    EXPECT_EQ(channel(0).maxValue, 3);
    EXPECT_EQ(channel(1).minValue, 7);
    EXPECT_EQ(array.stack().maxValue, 9);
}

TEST_F(Statistics, OfAllTimePointsAreSummedByChannel)
{
    add(2, {10, 100, 10, 101});
    add(2, {12, 100, 10, 103});
    add(2, {14, 99, 10, 100});
    copy(2, 3);
    EXPECT_EQ(channel(0).stats.histogram[10], 4U);
    EXPECT_EQ(channel(1).stats.histogram[100], 3U);
    EXPECT_EQ(channel(0).minValue, 10);
    EXPECT_EQ(channel(0).maxValue, 14);
    EXPECT_EQ(channel(1).minValue, 99);
    EXPECT_EQ(channel(1).maxValue, 103);
    EXPECT_EQ(array.stack().maxValue, 103);
    EXPECT_EQ(array.minValue(), 10);
    EXPECT_DOUBLE_EQ(channel(0).stats.mean, 11.0);
    EXPECT_FALSE(log.contains("multi channel, multi timepoint, 1 ch per file"));
}

// As many images as channels, and still each holds both.
TEST_F(Statistics, OfTwoTimePointsWithTwoChannelsEachStayWithTheirChannel)
{
    add(2, {10, 100, 11, 101});
    add(2, {12, 102, 13, 103});
    copy(2, 2);
    EXPECT_EQ(channel(0).minValue, 10);
    EXPECT_EQ(channel(0).maxValue, 13);
    EXPECT_EQ(channel(1).minValue, 100);
    EXPECT_EQ(channel(1).maxValue, 103);
}

TEST_F(Statistics, OfSeveralTimePointsHaveMomentsOfEachSlice)
{
    for (const std::vector<int>& samples : {std::vector{10, 20, 7, 7}, std::vector{30, 40, 7, 7}})
        array.appendImage(test::stackFrom({2, 1, 2, 1, 8}, samples));
    copy(1, 2);
    ASSERT_EQ(channel(0).stats.sliceMean.size(), 2U);
    EXPECT_DOUBLE_EQ(channel(0).stats.sliceMean[0], 25);
    // Deviations 15, 5, 5, 15: (500 - 40 * 40 / 4) / 3.
    EXPECT_DOUBLE_EQ(channel(0).stats.sliceStdDev[0], std::sqrt(100.0 / 3));
    EXPECT_DOUBLE_EQ(channel(0).stats.sliceMean[1], 7);
    EXPECT_EQ(channel(0).stats.sliceSkew.size(), 2U);
    EXPECT_EQ(channel(0).stats.sliceKurtosis.size(), 2U);
}

TEST_F(Statistics, OfOneChannelAFileTakeEveryNthFile)
{
    add(1, {10, 11});
    add(1, {20, 21});
    add(1, {10, 13});
    add(1, {20, 25});
    copy(2, 2);
    EXPECT_EQ(log.lines(), (QStringList{"multi channel, multi timepoint, 1 ch per file", "adding file 0 of 4",
                                        "adding file 2 of 4", "adding file 1 of 4", "adding file 3 of 4"}));
    EXPECT_EQ(channel(0).stats.histogram[10], 2U);
    EXPECT_EQ(channel(0).maxValue, 13);
    EXPECT_EQ(channel(1).minValue, 20);
    EXPECT_EQ(channel(1).maxValue, 25);
    EXPECT_EQ(array.stack().maxValue, 25);
    EXPECT_EQ(array.minValue(), 10);
}

TEST_F(Statistics, SummedReplaceAMaximumThatWasTooHigh)
{
    add(1, {1});
    add(1, {2});
    add(1, {3});
    array.stack() = array.images().front()->attributes();
    array.stack().maxValue = 250;
    array.setChannelCount(1);
    array.setTimePoints(3);
    array.copyStatistics();
    EXPECT_EQ(array.stack().maxValue, 3);
}

TEST_F(Statistics, OfNothingAreLeftAlone)
{
    array.copyStatistics();
    add(1, {1, 2});
    array.copyStatistics();
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST_F(Statistics, ImagesOfAllChannelsAreFoundByTheirTimePoint)
{
    add(2, {1, 2});
    add(2, {3, 4});
    copy(2, 2);
    const ChannelImage found = array.imageOf(1, 1);
    EXPECT_EQ(found.image, array.images()[1].get());
    EXPECT_EQ(found.channel, 1);
    EXPECT_EQ(found.number, 1);
    for (const auto& [c, t] : {std::pair(2, 0), std::pair(-1, 0), std::pair(0, 2), std::pair(0, -1)})
        EXPECT_EQ(array.imageOf(c, t).image, nullptr) << c << " " << t;
}

TEST_F(Statistics, ImagesOfOneChannelAreFoundByTimePointAndChannel)
{
    for (int i = 0; i < 4; ++i)
        add(1, {i});
    copy(2, 2);
    const ChannelImage found = array.imageOf(1, 1);
    EXPECT_EQ(found.image, array.images()[3].get());
    EXPECT_EQ(found.channel, 0);
    EXPECT_EQ(found.number, 3);
    EXPECT_EQ(array.imageOf(0, 2).image, nullptr);
}

TEST_F(RecordedArray, TheRevisionGrowsWithTheVoxelsAndWithNothingElse)
{
    const auto volume = array({test::denseStack(4, 4, 4)}, GL_TEXTURE_2D);
    std::int64_t before = volume->voxelRevision();
    EXPECT_GT(before, 0);
    volume->cut = {1, 2, 1, 2, 1, 2};
    volume->scale = {2, 2, 2};
    volume->setTimePoint(0);
    volume->copyStatistics();
    EXPECT_EQ(volume->voxelRevision(), before);
    const std::function<void()> changes[] = {[&] { volume->flip('X'); }, [&] { volume->invert(); },
                                             [&] { volume->reencode(0); }, [&] { volume->keepImages(1); }};
    for (const auto& change : changes) {
        change();
        EXPECT_GT(volume->voxelRevision(), before);
        before = volume->voxelRevision();
    }
}

TEST(ClampedScale, IsAboveNothingAndNoMoreThanAHundred)
{
    EXPECT_EQ(clampedScale(-3.0), 0.01);
    EXPECT_EQ(clampedScale(0.0), 0.01);
    EXPECT_EQ(clampedScale(0.5), 0.5);
    EXPECT_EQ(clampedScale(1e9), 100);
    EXPECT_EQ(clampedScale(std::nan("")), 1);
    EXPECT_EQ(clampedScale(AxisScale{-1, 2, 1000}), (AxisScale{0.01, 2, 100}));
}

} // namespace
} // namespace tirn
