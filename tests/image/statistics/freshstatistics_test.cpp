// Statistics, and what is known of the largest value, after voxels have changed.

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "image/filters/extremafilters.h"
#include "image/filters/filterkernel.h"
#include "image/filters/kernelfilter.h"
#include "image/filters/meanfilter.h"
#include "image/filters/medianfilter.h"
#include "image/filters/pointfilters.h"
#include "image/filters/speckfilter.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

/// A change of voxels, and what it is called.
struct Change
{
    const char* name;
    std::function<void(ImageFile& stack)> apply;

    friend void PrintTo(const Change& change, std::ostream* out) { *out << change.name; }
};

const std::vector<Change> kChanges = {
    {"mean", [](ImageFile& s) { meanFilter(s, 3, -1, true); }},
    {"median", [](ImageFile& s) { medianFilter(s, 3, 0, false); }},
    {"smallest", [](ImageFile& s) { minFilter(s, 3, 1, false); }},
    {"largest", [](ImageFile& s) { maxFilter(s, 3, -1, false); }},
    {"background", [](ImageFile& s) { backgroundSubtract(s, 3, -1, 50); }},
    {"specks", [](ImageFile& s) { zFilter(s, 3, 0, 100); }},
    {"kernel",
     [](ImageFile& s) {
         kernelFilter(s, {1, 2, {1.0, 1.0}}, -1);
     }},
    {"less", [](ImageFile& s) { addConstant(s, -30, -1); }},
    {"more", [](ImageFile& s) { addConstant(s, 30, 0); }},
    {"invert", [](ImageFile& s) { invert(s); }},
    {"flip x", [](ImageFile& s) { s.flip('X'); }},
    {"flip z", [](ImageFile& s) { s.flip('Z'); }},
    {"crop", [](ImageFile& s) { s.crop(0, 2, 1, 2, 1, 1); }},
    {"pad", [](ImageFile& s) { s.pad(9, 9, 9); }},
    {"pad back", [](ImageFile& s) { s.padBack(7); }},
    {"project", [](ImageFile& s) { s.maxIntensityProject(); }},
    {"blocks", [](ImageFile& s) { s.subSample(2); }},
    {"largest of blocks", [](ImageFile& s) { s.subSampleMax(2, 1, 3); }},
    {"means of blocks", [](ImageFile& s) { s.subSampleMean(1, 4, 2); }},
    {"to bytes", [](ImageFile& s) { s.stackToByteSmartMult(); }},
    {"high bits", [](ImageFile& s) { s.clampLower(); }},
    {"low bits", [](ImageFile& s) { s.clampUpper(); }},
    {"to words", [](ImageFile& s) { s.stackToShort(); }},
    {"stretched", [](ImageFile& s) { s.convertToDepth(12); }},
};

class FreshStatistics : public ::testing::TestWithParam<Change>
{};

/// Counts by definition.
void expectCounted(ImageFile& stack)
{
    const ImageAttributes& a = stack.attributes();
    int largest = 0;
    for (int c = 0; c < a.channels; ++c) {
        const StackStats& stats = stack.stats(c);
        ASSERT_EQ(stats.sliceHistograms.size(), static_cast<std::size_t>(a.z));
        for (int z = 0; z < a.z; ++z) {
            std::vector<std::uint64_t> counts(stats.histogram.size());
            for (int y = 0; y < a.y; ++y) {
                for (int x = 0; x < a.x; ++x) {
                    const int value = test::sample(stack, x, y, z, c);
                    ASSERT_LT(static_cast<std::size_t>(value), counts.size()) << "channel " << c;
                    ++counts[static_cast<std::size_t>(value)];
                    largest = std::max(largest, value);
                }
            }
            const Histogram& seen = stats.sliceHistograms[static_cast<std::size_t>(z)];
            EXPECT_TRUE(std::equal(counts.begin(), counts.end(), seen.begin(), seen.end()))
                << "channel " << c << " layer " << z;
        }
    }
    EXPECT_GE(a.maxValue, largest);
}

TEST_P(FreshStatistics, AreThoseOfTheVoxelsAsTheyAre)
{
    for (const int bits : {8, 16}) {
        const auto stack = test::randomStack({5, 4, 3, 2, bits}, 11);
        stack->generateStatistics();
        GetParam().apply(*stack);
        SCOPED_TRACE(bits);
        expectCounted(*stack);
    }
}

INSTANTIATE_TEST_SUITE_P(Changes, FreshStatistics, ::testing::ValuesIn(kChanges));

TEST(LargestValue, OfAMedianIsThatOfTheVoxelsLeft)
{
    std::vector<int> samples(25, 7);
    samples[12] = 4000;
    const auto stack = test::stackFrom({5, 5, 1, 1, 16}, samples);
    stack->generateStatistics();
    ASSERT_EQ(stack->attributes().maxValue, 4000);
    ASSERT_TRUE(medianFilter(*stack, 3, -1, false));
    EXPECT_EQ(stack->stats(0).max, 7);
    EXPECT_EQ(stack->attributes().maxValue, 7);
}

TEST(LargestValue, ThatWasCountedIsCountedAgainInAPartOfTheStack)
{
    const auto stack = test::stackFrom({2, 1, 1, 1, 16}, {3, 4000});
    stack->generateStatistics();
    ASSERT_TRUE(stack->crop(0, 0, 0, 0, 0, 0));
    EXPECT_EQ(stack->stats(0).max, 3);
    EXPECT_EQ(stack->attributes().maxValue, 3);
}

TEST(LargestValue, ThatWasStatedHoldsInAPartOfTheStack)
{
    const auto stack = test::stackFrom({2, 1, 1, 1, 16}, {3, 4000});
    stack->attributes().maxValue = 4095;
    stack->generateStatistics();
    ASSERT_TRUE(stack->crop(0, 0, 0, 0, 0, 0));
    stack->stats(0);
    EXPECT_EQ(stack->attributes().maxValue, 4095);
}

TEST(LargestValue, ComesBackWithTheSecondInversion)
{
    const auto stack = test::stackFrom({2, 1, 1, 1, 16}, {3, 1000});
    stack->attributes().maxValue = 4095;
    stack->generateStatistics();
    invert(*stack);
    stack->stats(0);
    EXPECT_EQ(stack->attributes().maxValue, 65532);
    stack->flip('Z');
    invert(*stack);
    stack->stats(0);
    EXPECT_EQ(stack->attributes().maxValue, 4095);
}

TEST(LargestValue, BetweenInversionsAFilterMakesItUnknown)
{
    const auto stack = test::stackFrom({2, 1, 1, 1, 16}, {3, 1000});
    stack->attributes().maxValue = 4095;
    invert(*stack);
    addConstant(*stack, -100, -1);
    invert(*stack);
    EXPECT_EQ(stack->stats(0).max, 1100);
    EXPECT_EQ(stack->attributes().maxValue, 1100);
}

/// A file of two layers: 0 to 11, and 200 to 211.
class TwoLayers : public ::testing::Test
{
protected:
    QTemporaryDir directory;
    std::unique_ptr<ImageFile> stack;

    TwoLayers()
    {
        test::PicFile file;
        file.value = [](int x, int y, int z) { return 200 * z + 4 * y + x; };
        stack = std::make_unique<ImageFile>(QStringList{file.save(directory.filePath("s.pic"))});
    }
};

TEST_F(TwoLayers, AnotherRangeIsCountedInBinsOfItsOwn)
{
    ASSERT_TRUE(stack->read(0, 0, 1));
    ASSERT_EQ(stack->stats(0).max, 11);
    ASSERT_TRUE(stack->read(1, 1, 1));
    EXPECT_EQ(stack->stats(0).max, 211);
    EXPECT_EQ(stack->stats(0).histogram[211], 1U);
    EXPECT_EQ(stack->attributes().maxValue, 211);
    ASSERT_TRUE(stack->read(0, 0, 1));
    EXPECT_EQ(stack->attributes().maxValue, 11);
}

TEST_F(TwoLayers, AFailedReadLeavesWhatWasKnown)
{
    ASSERT_TRUE(stack->read(0, 0, 1));
    EXPECT_FALSE(stack->read(0, 2, 1));
    QFile::remove(directory.filePath("s.pic"));
    stack->freeStack();
    EXPECT_FALSE(stack->reRead());
    EXPECT_EQ(stack->stats(0).max, 11);
    EXPECT_EQ(stack->attributes().maxValue, 11);
}

TEST_F(TwoLayers, AReducedStackThatIsLetGoKeepsItsOwnStatistics)
{
    ASSERT_TRUE(stack->read());
    stack->subSample(2);
    // The mean of 0, 1, 4, 5, and 200 more in the other layer.
    EXPECT_EQ(stack->stats(0).min, 103);
    stack->freeStack();
    EXPECT_EQ(stack->stats(0).min, 103);
}

} // namespace
} // namespace tirn
