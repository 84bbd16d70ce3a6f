#include "image/memoryestimate.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

/// 512 x 512 x 100 bytes.
MemoryQuestion hundredLayers()
{
    MemoryQuestion question;
    question.x = question.y = 512;
    question.last = 99;
    return question;
}

TEST(MemoryEstimate, SubSamplingDividesLayersToo)
{
    MemoryQuestion question = hundredLayers();
    question.subsample = 2;
    EXPECT_EQ(estimatedBytes(question), 256 * 256 * 50 + 256 * 64 * 256 + 256 * 64 * 256 + 256 * 256);
    EXPECT_EQ(estimatedBytes(question), 11730944);
    EXPECT_EQ(memoryText(estimatedBytes(question)), "Memory required: 11.19MB");
}

TEST(MemoryEstimate, ThreeDimensionalTexturesArePaddedOnEachAxis)
{
    MemoryQuestion question = hundredLayers();
    question.uses3DTextures = true;
    EXPECT_EQ(estimatedBytes(question), 512 * 512 * 100 + 512 * 512 * 128);
    question.x = 513;
    EXPECT_EQ(estimatedBytes(question), 513 * 512 * 100 + 1024 * 512 * 128);
}

TEST(MemoryEstimate, LettingVoxelsGoLeavesTheTextures)
{
    MemoryQuestion question = hundredLayers();
    question.conservesMemory = true;
    EXPECT_EQ(estimatedBytes(question), 512 * 128 * 512 + 512 * 128 * 512 + 512 * 512);
}

TEST(MemoryEstimate, WordsChannelsAndTimePointsMultiply)
{
    const double once = estimatedBytes(hundredLayers());
    MemoryQuestion question = hundredLayers();
    question.bitDepth = 9;
    question.channels = 3;
    question.timePoints = 5;
    EXPECT_EQ(estimatedBytes(question), once * 2 * 3 * 5);
}

TEST(MemoryEstimate, LayersAreCountedByTheStep)
{
    MemoryQuestion question = hundredLayers();
    question.first = 10;
    question.last = 20;
    question.step = 3;
    question.uses3DTextures = true;
    // 11 layers, every third: 3, padded to 4.
    EXPECT_EQ(estimatedBytes(question), 512 * 512 * 3 + 512 * 512 * 4);
}

TEST(MemoryEstimate, ARangeWithoutLayersCountsNone)
{
    MemoryQuestion question = hundredLayers();
    question.first = 5;
    question.last = 4;
    // Zero is padded to one.
    EXPECT_EQ(estimatedBytes(question), 512 * 512 + 512 * 512 + 512 * 512);
    question.last = -50;
    EXPECT_EQ(estimatedBytes(question), 512 * 512 + 512 * 512 + 512 * 512);
}

TEST(MemoryEstimate, ManyTimePointsOfALargeStackAreNoOverflow)
{
    MemoryQuestion question;
    question.x = question.y = 2147483647;
    question.last = 2147483646;
    question.timePoints = 1000;
    EXPECT_GT(estimatedBytes(question), 1e30);
}

TEST(MemoryText, ChangesItsUnitAtPowersOf1024)
{
    EXPECT_EQ(memoryText(0), "Memory required: 0.00KB");
    EXPECT_EQ(memoryText(512), "Memory required: 0.50KB");
    EXPECT_EQ(memoryText(1024.0 * 1023), "Memory required: 1023.00KB");
    EXPECT_EQ(memoryText(1024.0 * 1024), "Memory required: 1.00MB");
    EXPECT_EQ(memoryText(1024.0 * 1024 * 1536), "Memory required: 1.50GB");
    EXPECT_EQ(unknownMemoryText(), "Memory required: Not enough info");
}

} // namespace
} // namespace tirn
