#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/slowstack.h"

namespace tirn {
namespace {

using test::channelSamples;
using test::LogCapture;
using test::PicFile;
using test::sameVoxels;
using test::samples;
using test::SlowStack;

TEST(ExtractChannel, CopiesOneChannelIntoAStackOfItsOwn)
{
    for (const int bits : {8, 12, 16}) {
        for (const int channels : {1, 2, 3, 4, 5}) {
            const auto stack = test::randomStack({33, 5, 4, channels, bits}, 2);
            stack->attributes().dimX = 0.5;
            stack->attributes().dimZ = 2;
            const SlowStack before(*stack);
            const auto extracted = stack->extractChannel(channels - 1);
            ASSERT_NE(extracted, nullptr);
            EXPECT_EQ(samples(*extracted), channelSamples(*stack, channels - 1));
            EXPECT_EQ(extracted->attributes().channels, 1);
            EXPECT_EQ(extracted->attributes().bitDepth, bits);
            EXPECT_EQ(extracted->attributes().x, 33);
            EXPECT_EQ(extracted->attributes().dimX, 0.5);
            EXPECT_EQ(extracted->attributes().dimZ, 2);
            EXPECT_TRUE(sameVoxels(*stack, before));
        }
    }
}

TEST(ExtractChannel, RowsOfAnyLengthAreCopiedToTheirEnd)
{
    for (const int bits : {8, 16}) {
        for (int x = 1; x <= 67; ++x) {
            const auto stack = test::randomStack({x, 1, 1, 3, bits}, 5);
            for (const int channel : {0, 1, 2})
                ASSERT_EQ(samples(*stack->extractChannel(channel)), channelSamples(*stack, channel)) << x;
        }
    }
}

TEST(ExtractChannel, AChannelThatIsNotThereGivesNothing)
{
    const auto stack = test::randomStack({3, 3, 3, 2, 8}, 2);
    EXPECT_EQ(stack->extractChannel(2), nullptr);
    EXPECT_EQ(stack->extractChannel(-1), nullptr);
    EXPECT_EQ(ImageFile().extractChannel(0), nullptr);
}

TEST(Ratio, SpreadsTheRelativeDifferenceOverTheDepth)
{
    for (const int bits : {8, 12, 16}) {
        const auto stack = test::randomStack({67, 17, 4, 3, bits}, 2);
        stack->attributes().dimY = 0.25;
        const SlowStack slow(*stack);
        const auto ratio = stack->ratio(0, 2);
        ASSERT_NE(ratio, nullptr);
        EXPECT_TRUE(sameVoxels(*ratio, slowRatio(slow, 0, 2)));
        EXPECT_EQ(ratio->attributes().dimY, 0.25);
        EXPECT_TRUE(sameVoxels(*stack, slow));
    }
}

/// Quotients that end in a half come out above or below it in double precision, each in its own way.
TEST(Ratio, AllPairsOfBytesAgreeWhereverTheirChannelsLie)
{
    for (const int channels : {2, 3, 5}) {
        for (const auto& [a, b] :
             {std::pair{0, 1}, {1, 0}, {channels - 1, 0}, {channels - 2, channels - 1}}) {
            const auto value = [a = a, b = b](int x, int y, int, int channel) {
                return channel == a ? x : channel == b ? y : 77;
            };
            const auto stack = test::makeStack({256, 256, 1, channels, 8}, value);
            EXPECT_TRUE(sameVoxels(*stack->ratio(a, b), slowRatio(SlowStack(*stack), a, b)));
        }
    }
}

TEST(Ratio, SmallWordsAgreeWhereverTheirChannelsLie)
{
    for (const int channels : {2, 3, 4}) {
        const auto stack = test::randomStack({67, 17, 4, channels, 16}, 2, 9);
        EXPECT_TRUE(sameVoxels(*stack->ratio(1, 0), slowRatio(SlowStack(*stack), 1, 0)));
    }
}

TEST(Ratio, HasItsEndsAndItsMiddle)
{
    const auto stack = test::stackFrom({4, 1, 1, 2, 8}, {0, 0, 9, 0, 0, 9, 7, 7});
    EXPECT_EQ(samples(*stack->ratio(0, 1)), (std::vector<int>{0, 255, 0, 128}));
}

void expectThrow(ImageFile& stack, int a, int b, const char* text)
{
    try {
        stack.ratio(a, b);
        FAIL() << "no exception";
    } catch (const QString& error) {
        EXPECT_EQ(error, QLatin1String(text));
    }
}

TEST(Ratio, ChannelsThatMakeNoPairAreThrownAsTexts)
{
    const auto stack = test::randomStack({3, 3, 3, 2, 8}, 2);
    expectThrow(*stack, 2, 0, "channel A not possible");
    expectThrow(*stack, -1, 0, "channel A not possible");
    expectThrow(*stack, 0, 2, "channel B not possible");
    expectThrow(*stack, 0, 0, "Error: trying to ratio channel against itself");
}

TEST(MaxMerge, TakesTheLargerOfTwoSamples)
{
    for (const int bits : {8, 12, 16}) {
        const auto first = test::randomStack({67, 17, 4, 2, bits}, 2);
        const auto second = test::randomStack({67, 17, 4, 2, bits}, 3);
        const std::vector<int> a = samples(*first);
        const std::vector<int> b = samples(*second);
        ASSERT_TRUE(first->maxMerge(*second));
        const std::vector<int> merged = samples(*first);
        for (std::size_t i = 0; i < a.size(); ++i)
            ASSERT_EQ(merged[i], std::max(a[i], b[i]));
        EXPECT_EQ(samples(*second), b);
    }
}

TEST(MaxMerge, MakesTheLargestValueUnknown)
{
    const auto first = test::constantStack({2, 2, 2, 1, 16}, 5);
    first->generateStatistics();
    ASSERT_TRUE(first->maxMerge(*test::constantStack({2, 2, 2, 1, 16}, 500)));
    first->generateStatistics();
    EXPECT_EQ(first->stats(0).max, 500);
    EXPECT_EQ(first->attributes().maxValue, 500);
}

TEST(MaxMerge, StacksOfUnlikeShapeAreRefused)
{
    const auto stack = test::constantStack({2, 3, 4, 1, 8}, 5);
    for (const auto& shape :
         {test::StackShape{1, 3, 4, 1, 8}, {2, 2, 4, 1, 8}, {2, 3, 5, 1, 8}, {2, 3, 4, 1, 16}})
        EXPECT_FALSE(stack->maxMerge(*test::constantStack(shape, 9)));
    EXPECT_FALSE(ImageFile().maxMerge(ImageFile()));
    EXPECT_EQ(samples(*stack), std::vector<int>(24, 5));
}

class Merge : public ::testing::Test
{
protected:
    std::unique_ptr<ImageFile> read(const char* name, int offset, int bits = 8, int step = 1)
    {
        const PicFile pic{.x = 5,
                          .y = 3,
                          .z = 6,
                          .bits = bits,
                          .notesField = 1,
                          .notes = {{.text = "AXIS_4 001 0.0 0.5 microns"}},
                          .value = [offset](int x, int y, int z) { return offset + x + 5 * y + 15 * z; }};
        auto stack =
            std::make_unique<ImageFile>(QStringList{pic.save(m_folder.filePath(QLatin1String(name)))});
        EXPECT_TRUE(stack->read(0, 5, step));
        return stack;
    }
    QTemporaryDir m_folder;
};

TEST_F(Merge, TwoStacksBecomeTwoChannels)
{
    for (const int bits : {8, 16}) {
        const auto first = read("a.pic", 0, bits);
        const auto second = read("b.pic", 100, bits);
        ImageFile merged;
        ASSERT_TRUE(merged.merge({first.get(), second.get()}));
        EXPECT_EQ(merged.attributes().channels, 2);
        EXPECT_EQ(merged.attributes().x, 5);
        EXPECT_EQ(merged.attributes().type, ImageType::BioRad);
        EXPECT_EQ(merged.attributes().bitDepth, bits);
        EXPECT_EQ(merged.attributes().dimZ, 0.5);
        EXPECT_EQ(channelSamples(merged, 0), samples(*first));
        EXPECT_EQ(channelSamples(merged, 1), samples(*second));
        EXPECT_EQ(merged.statsList().size(), 2U);
        EXPECT_EQ(merged.fileNames(), (QStringList{QStringLiteral("a.pic"), QStringLiteral("b.pic")}));
    }
}

TEST_F(Merge, ReadingAgainMergesAgain)
{
    const auto first = read("a.pic", 0, 8, 2);
    const auto second = read("b.pic", 100, 8, 2);
    ImageFile merged;
    ASSERT_TRUE(merged.merge({first.get(), second.get()}));
    EXPECT_EQ(merged.attributes().fileZ, 6);
    EXPECT_EQ(merged.attributes().z, 3);
    EXPECT_EQ(merged.attributes().dimZ, 1.0);
    EXPECT_EQ(merged.layerStep(), 2);
    const SlowStack before(merged);
    merged.freeStack();
    ASSERT_TRUE(merged.reRead());
    EXPECT_TRUE(sameVoxels(merged, before));
    EXPECT_EQ(merged.attributes().dimZ, 1.0);
    ASSERT_TRUE(merged.read(1, 1, 1));
    EXPECT_EQ(channelSamples(merged, 1).front(), 115);
}

TEST_F(Merge, AFileThatWentAwayFailsTheReadingAgain)
{
    const auto first = read("a.pic", 0);
    const auto second = read("b.pic", 100);
    ImageFile merged;
    ASSERT_TRUE(merged.merge({first.get(), second.get()}));
    QFile::remove(m_folder.filePath(QStringLiteral("b.pic")));
    EXPECT_FALSE(merged.reRead());
    EXPECT_EQ(merged.errorList(), QStringList{QStringLiteral("error opening file")});
}

TEST_F(Merge, NoStacksAreRefused)
{
    ImageFile merged;
    LogCapture log;
    EXPECT_FALSE(merged.merge({}));
    EXPECT_TRUE(log.contains(QStringLiteral("No stacks to merge")));
}

TEST_F(Merge, OneStackIsCopied)
{
    const auto only = test::randomStack({5, 4, 3, 2, 16}, 1);
    ImageFile merged;
    ASSERT_TRUE(merged.merge({only.get()}));
    EXPECT_TRUE(sameVoxels(merged, SlowStack(*only)));
    EXPECT_NE(merged.stackData(), only->stackData());
}

void expectRefused(const std::vector<ImageFile*>& stacks, const char* text)
{
    ImageFile merged;
    LogCapture log;
    EXPECT_FALSE(merged.merge(stacks));
    EXPECT_TRUE(log.contains(QLatin1String(text))) << text;
    EXPECT_FALSE(merged.isLoaded());
}

TEST_F(Merge, StacksThatDoNotFitAreRefusedWithTheirTexts)
{
    const auto first = read("a.pic", 0);
    const auto two = test::randomStack({5, 3, 6, 2, 8}, 1);
    expectRefused({first.get(), two.get()}, "Can't merge stacks with multiple channels!");
    const auto empty = read("b.pic", 0);
    empty->freeStack();
    expectRefused({first.get(), empty.get()}, "Stack 1 is empty!\t");
    const auto other = read("c.pic", 0, 16);
    expectRefused({first.get(), other.get()}, "attribute mismatch! aborting merge");
}

TEST_F(Merge, StacksWithoutAReaderRaiseTheAllocationException)
{
    const auto first = test::randomStack({5, 3, 6, 1, 8}, 1);
    const auto second = test::randomStack({5, 3, 6, 1, 8}, 2);
    ImageFile merged;
    EXPECT_THROW(merged.merge({first.get(), second.get()}), std::bad_alloc);
    EXPECT_FALSE(merged.hasReader());
}

} // namespace
} // namespace tirn
