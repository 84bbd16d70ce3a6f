#include <climits>
#include <cmath>

#include <gtest/gtest.h>

#include "image/allocationerror.h"
#include "support/logcapture.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::samples;

TEST(StackToShort, WidensWithoutScaling)
{
    const auto stack = test::randomStack({33, 5, 2, 2, 8}, 4);
    const std::vector<int> before = samples(*stack);
    stack->attributes().maxValue = 200;
    LogCapture log;
    stack->stackToShort();
    EXPECT_EQ(stack->attributes().bitDepth, 16);
    EXPECT_EQ(stack->attributes().maxValue, 200);
    EXPECT_EQ(samples(*stack), before);
    EXPECT_EQ(log.lines(),
              (QStringList{QStringLiteral("enter stackToShort()"), QStringLiteral("exit stackToShort()")}));
}

TEST(StackToShort, LeavesWordsAlone)
{
    const auto stack = test::randomStack({3, 3, 2, 1, 12}, 4);
    const std::vector<int> before = samples(*stack);
    stack->stackToShort();
    EXPECT_EQ(stack->attributes().bitDepth, 12);
    EXPECT_EQ(samples(*stack), before);
}

TEST(StackToByteSmartMult, ANarrowRangeIsOnlyMovedDown)
{
    const auto same = test::constantStack({3, 3, 1, 1, 16}, 100);
    same->stackToByteSmartMult();
    EXPECT_EQ(samples(*same), std::vector<int>(9, 0));
    EXPECT_EQ(same->attributes().bitDepth, 8);
    EXPECT_EQ(same->attributes().maxValue, 255);
    const auto narrow = test::stackFrom({3, 1, 1, 1, 16}, {1000, 1001, 1254});
    narrow->stackToByteSmartMult();
    EXPECT_EQ(samples(*narrow), (std::vector<int>{0, 1, 254}));
}

TEST(StackToByteSmartMult, ARangeOfBytesKeepsItsValues)
{
    std::vector<int> values;
    for (int i = 0; i < 256; ++i)
        values.push_back(i);
    const auto stack = test::stackFrom({256, 1, 1, 1, 16}, values);
    stack->stackToByteSmartMult();
    EXPECT_EQ(samples(*stack), values);
}

TEST(StackToByteSmartMult, EachChannelHasItsOwnScale)
{
    for (const int channels : {1, 2, 3, 4}) {
        const auto stack = test::makeStack({64, 16, 2, channels, 16}, [](int x, int y, int z, int c) {
            return 50 * c + (x + 64 * y + 1024 * z) * (1 + 7 * c);
        });
        const std::vector<int> before = samples(*stack);
        stack->stackToByteSmartMult();
        const std::vector<int> after = samples(*stack);
        for (std::size_t i = 0; i < before.size(); ++i) {
            const int c = static_cast<int>(i) % channels;
            const float factor = 255.0F / static_cast<float>(2047 * (1 + 7 * c));
            const float product = static_cast<float>(before[i] - 50 * c) * factor;
            ASSERT_EQ(after[i], static_cast<int>(std::floor(static_cast<double>(product) + 0.5))) << i;
        }
    }
}

TEST(StackToByteSmartMult, LogsOnceAChannel)
{
    const auto stack = test::randomStack({3, 3, 1, 2, 16}, 4);
    stack->generateStatistics();
    LogCapture log;
    stack->stackToByteSmartMult();
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("enter ImageFile::stackToByteSmartMult"),
                                        QStringLiteral("converted stack"), QStringLiteral("converted stack"),
                                        QStringLiteral("exit ImageFile::stackToByteSmartMult")}));
}

/// Converts a random stack and compares each sample with what `expected` makes of the word before.
void expectEach(const test::StackShape& shape, const std::function<void(ImageFile&)>& convert,
                const std::function<int(int word, int channel)>& expected)
{
    const auto stack = test::randomStack(shape, 17);
    const std::vector<int> before = samples(*stack);
    convert(*stack);
    EXPECT_EQ(stack->attributes().bitDepth, 8);
    EXPECT_EQ(stack->attributes().maxValue, 255);
    const std::vector<int> after = samples(*stack);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        ASSERT_EQ(after[i], expected(before[i], static_cast<int>(i) % shape.channels) & 0xFF) << i;
}

TEST(ClampLower, KeepsTheEightHighestBits)
{
    for (const int bits : {9, 12, 16}) {
        for (const int channels : {1, 3})
            expectEach(
                {67, 33, 2, channels, bits}, [](ImageFile& stack) { stack.clampLower(); },
                [&](int word, int) { return word >> (bits - 8); });
    }
    LogCapture log;
    test::constantStack({1, 1, 1, 1, 12}, 1)->clampLower();
    EXPECT_TRUE(log.contains(QStringLiteral("ClampLower called: 12")));
}

TEST(ClampUpper, CutsAtTwoHundredAndFiftyFive)
{
    expectEach(
        {67, 33, 2, 2, 9}, [](ImageFile& stack) { stack.clampUpper(); },
        [](int word, int) { return word < 256 ? word : 255; });
}

TEST(StackToByteSmartLower, TakesOffTheMinimumAndShiftsTheRest)
{
    for (const int channels : {1, 2, 4}) {
        const auto stack = test::makeStack({300, 7, 1, channels, 16}, [](int x, int y, int, int c) {
            return 40 + 100 * c + (x + 300 * y) * (1 + 9 * c);
        });
        const std::vector<int> before = samples(*stack);
        stack->stackToByteSmartLower();
        const std::vector<int> after = samples(*stack);
        for (std::size_t i = 0; i < before.size(); ++i) {
            const int c = static_cast<int>(i) % channels;
            int width = 2099 * (1 + 9 * c) >> 8;
            int shift = 0;
            for (; width > 0; width >>= 1)
                ++shift;
            ASSERT_EQ(after[i], (before[i] - 40 - 100 * c) >> shift) << i;
        }
    }
}

TEST(StackToByteRange, MapsTheRangeOntoAByte)
{
    const auto expected = [](int word, int) {
        if (word > 3000)
            return 255;
        return word > 1000 ? static_cast<int>(std::floor((word - 1000) * (255.0 / 2000) + 0.5)) : 0;
    };
    expectEach(
        {67, 33, 2, 1, 12}, [](ImageFile& stack) { stack.stackToByteRange(1000, 3000); }, expected);
    expectEach(
        {9, 3, 2, 1, 16}, [](ImageFile& stack) { stack.stackToByteRange(70000, 80000); },
        [](int, int) { return 0; });
}

TEST(StackToByteRange, OfSeveralChannelsOnlyTheFirstPartOfTheBufferIsConverted)
{
    const auto stack = test::constantStack({5, 3, 2, 3, 16}, 500);
    stack->stackToByteRange(0, 1000);
    std::vector<int> expected(30, 128);
    expected.resize(90, 0);
    EXPECT_EQ(samples(*stack), expected);
}

TEST(StackToByteRange, ARangeThatIsNoneChangesNothing)
{
    const auto stack = test::constantStack({5, 3, 2, 1, 16}, 500);
    for (const auto& [lower, upper] : {std::pair{5, 5}, {6, 5}, {-1, 5}}) {
        stack->stackToByteRange(lower, upper);
        EXPECT_EQ(stack->attributes().bitDepth, 16);
    }
}

TEST(ConvertToDepth, StretchesBytesToTheDepthAndCallsItSixteen)
{
    for (int bits = 8; bits <= 16; ++bits) {
        // Every byte there is.
        const auto stack = test::makeStack({256, 2, 1, 1, 8}, [](int x, int, int, int) { return x; });
        const std::vector<int> before = samples(*stack);
        stack->attributes().maxValue = 200;
        LogCapture log;
        stack->convertToDepth(bits);
        EXPECT_TRUE(log.contains(QStringLiteral("converting to %1 bits").arg(bits)));
        const double factor = (std::pow(2, bits) - 1) / 255;
        EXPECT_EQ(stack->attributes().bitDepth, 16);
        EXPECT_EQ(stack->attributes().maxValue, static_cast<int>(std::floor(200 * factor + 0.5)));
        const std::vector<int> after = samples(*stack);
        for (std::size_t i = 0; i < before.size(); ++i)
            ASSERT_EQ(after[i], static_cast<int>(std::floor(before[i] * factor + 0.5)));
    }
}

TEST(ConvertToDepth, AnUnknownMaximumBecomesAnotherNegativeNumber)
{
    const auto stack = test::constantStack({5, 3, 2, 1, 8}, 1);
    stack->convertToDepth(12);
    // floor(-1 * 4095 / 255 + 0.5)
    EXPECT_EQ(stack->attributes().maxValue, -16);
}

TEST(ConvertToDepth, ALargestValueThatGrowsTooFarStaysTheLargestNumber)
{
    const auto stack = test::constantStack({5, 3, 2, 1, 8}, 1);
    stack->attributes().maxValue = INT_MAX;
    stack->convertToDepth(16);
    EXPECT_EQ(stack->attributes().maxValue, INT_MAX);
}

TEST(ConvertToDepth, OtherDepthsAreIgnored)
{
    const auto bytes = test::constantStack({5, 3, 2, 1, 8}, 1);
    bytes->convertToDepth(7);
    bytes->convertToDepth(17);
    EXPECT_EQ(bytes->attributes().bitDepth, 8);
    const auto words = test::constantStack({5, 3, 2, 1, 12}, 1);
    words->convertToDepth(16);
    EXPECT_EQ(words->attributes().bitDepth, 12);
}

TEST(DepthConversions, BytesAndEmptyStacksStayAsTheyAre)
{
    const auto bytes = test::randomStack({3, 3, 1, 1, 8}, 4);
    const std::vector<int> before = samples(*bytes);
    bytes->stackToByteSmartMult();
    bytes->stackToByteSmartLower();
    bytes->stackToByteRange(0, 100);
    bytes->clampLower();
    bytes->clampUpper();
    EXPECT_EQ(samples(*bytes), before);
    EXPECT_EQ(bytes->attributes().maxValue, -1);
    ImageFile empty;
    empty.stackToShort();
    empty.stackToByteSmartMult();
    empty.stackToByteSmartLower();
    empty.stackToByteRange(0, 100);
    empty.clampLower();
    empty.clampUpper();
    empty.convertToDepth(12);
    EXPECT_FALSE(empty.isLoaded());
    EXPECT_EQ(empty.attributes().bitDepth, 0);
}

void expectRefusal(int bitDepth, const char* text, const std::function<void(ImageFile&)>& operation)
{
    const auto stack = test::randomStack({5, 4, 3, 2, bitDepth}, 4);
    stack->generateStatistics();
    const std::vector<int> before = samples(*stack);
    const test::NoVoxelMemory none;
    try {
        operation(*stack);
        FAIL() << "no exception";
    } catch (const AllocationError& error) {
        EXPECT_STREQ(error.what(), text);
    }
    EXPECT_EQ(stack->attributes().bitDepth, bitDepth);
    EXPECT_EQ(samples(*stack), before);
}

TEST(DepthConversions, WithoutMemoryTheStackStays)
{
    expectRefusal(8, "Could not allocate memory for stackToShort", [](ImageFile& s) { s.stackToShort(); });
    expectRefusal(8, "Could not allocate memory for convertToDepth",
                  [](ImageFile& s) { s.convertToDepth(12); });
    expectRefusal(16, "Could not allocate memory for stackToByteSmartMult",
                  [](ImageFile& s) { s.stackToByteSmartMult(); });
    expectRefusal(16, "Could not allocate memory for stackToByteSmartLower",
                  [](ImageFile& s) { s.stackToByteSmartLower(); });
    expectRefusal(16, "Could not allocate memory for stackToByteRange",
                  [](ImageFile& s) { s.stackToByteRange(0, 9); });
    expectRefusal(12, "Could not allocate memory for clampLower", [](ImageFile& s) { s.clampLower(); });
    expectRefusal(12, "Could not allocate memory for clampUpper", [](ImageFile& s) { s.clampUpper(); });
}

} // namespace
} // namespace tirn
