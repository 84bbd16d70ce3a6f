#include <atomic>
#include <numeric>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "base/voxelbuffer.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

TEST(CheckedSize, AProductThatOverflowsIsRefused)
{
    EXPECT_EQ(checkedProduct({3, 4, 5}), 60);
    EXPECT_EQ(checkedProduct({0, 1LL << 62, 1LL << 62}), 0);
    EXPECT_FALSE(checkedProduct({1LL << 32, 1LL << 31}));
    EXPECT_FALSE(checkedProduct({-1, 2}));
    EXPECT_FALSE(checkedSum({INT64_MAX, 1}));
}

TEST(CheckedSize, Next2KeepsPowersOfTwoAndRoundsTheRestUp)
{
    EXPECT_EQ(next2(0), 1);
    EXPECT_EQ(next2(1), 1);
    EXPECT_EQ(next2(256), 256);
    EXPECT_EQ(next2(257), 512);
}

TEST(CheckedSize, BitCountIsThatOfTheValue)
{
    EXPECT_EQ(bitCount(0), 0);
    EXPECT_EQ(bitCount(255), 8);
    EXPECT_EQ(bitCount(4095), 12);
    EXPECT_EQ(bitCount(4096), 13);
}

TEST(Parallel, EveryItemIsVisitedOnce)
{
    std::vector<std::atomic<int>> visits(1001);
    parallelFor(0, 1001, 7, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i)
            ++visits[static_cast<std::size_t>(i)];
    });
    EXPECT_TRUE(std::all_of(visits.begin(), visits.end(), [](const auto& count) { return count == 1; }));
}

TEST(Parallel, AnExceptionReachesTheCaller)
{
    const auto fail = [](std::int64_t begin, std::int64_t) {
        if (begin == 50)
            throw std::runtime_error("part 50");
    };
    EXPECT_THROW(parallelFor(0, 100, 1, fail), std::runtime_error);
    std::atomic<int> after = 0;
    parallelFor(0, 100, 1, [&](std::int64_t, std::int64_t) { ++after; });
    EXPECT_EQ(after, 100);
}

TEST(Parallel, ALoopInsideALoopIsDoneByItsCaller)
{
    std::atomic<int> sum = 0;
    parallelFor(0, 10, 1, [&](std::int64_t, std::int64_t) {
        parallelFor(0, 10, 1,
                    [&](std::int64_t begin, std::int64_t end) { sum += static_cast<int>(end - begin); });
    });
    EXPECT_EQ(sum, 100);
}

TEST(Parallel, LoopsFromSeveralThreadsDoNotMix)
{
    std::atomic<int> sum = 0;
    std::vector<std::thread> callers;
    for (int t = 0; t < 4; ++t) {
        callers.emplace_back([&] {
            for (int round = 0; round < 200; ++round)
                parallelFor(0, 16, 1, [&](std::int64_t begin, std::int64_t end) {
                    sum += static_cast<int>(end - begin);
                });
        });
    }
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(sum, 4 * 200 * 16);
}

TEST(VoxelBuffer, IsAlignedAndMovable)
{
    VoxelBuffer large(9 << 20);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(large.data()) % 64, 0U);
    large.zero();
    EXPECT_EQ(large.data()[(9 << 20) - 1], std::byte{0});
    VoxelBuffer moved = std::move(large);
    EXPECT_EQ(moved.size(), 9 << 20);
    moved.reset();
    EXPECT_TRUE(moved.isNull());
}

TEST(VoxelBuffer, LivingBytesAreCounted)
{
    const std::int64_t before = VoxelBuffer::liveBytes();
    {
        VoxelBuffer small(100);
        VoxelBuffer large(9 << 20);
        EXPECT_EQ(VoxelBuffer::liveBytes() - before, 100 + (9 << 20));
        const VoxelBuffer moved = std::move(small);
        large = VoxelBuffer(8 << 20);
        EXPECT_EQ(VoxelBuffer::liveBytes() - before, 100 + (8 << 20));
        large.reset();
        EXPECT_EQ(VoxelBuffer::liveBytes() - before, 100);
    }
    EXPECT_EQ(VoxelBuffer::liveBytes(), before);
}

TEST(VoxelBuffer, WhatIsReplacedServesTheNextOfItsSize)
{
    VoxelBuffer voxels(9 << 20);
    const std::byte* replaced = voxels.data();
    voxels = VoxelBuffer(9 << 20);
    voxels.data()[0] = std::byte{7};
    {
        const VoxelBuffer next(9 << 20);
        EXPECT_EQ(next.data(), replaced);
        EXPECT_EQ(voxels.data()[0], std::byte{7});
    }
    // A result of another size lets the spare go, one on the heap does not ask for it.
    voxels = VoxelBuffer(5 << 20);
    const VoxelBuffer small(100);
    EXPECT_NE(small.data(), nullptr);
    VoxelBuffer other(7 << 20);
    other.zero();
    EXPECT_EQ(other.data()[(7 << 20) - 1], std::byte{0});
}

TEST(VoxelBuffer, TakesItselfAndNothing)
{
    VoxelBuffer voxels(9 << 20);
    VoxelBuffer& same = voxels;
    voxels = std::move(same);
    EXPECT_EQ(voxels.size(), 9 << 20);
    voxels = VoxelBuffer();
    EXPECT_TRUE(voxels.isNull());
    EXPECT_EQ(voxels.size(), 0);
    voxels = VoxelBuffer(100);
    EXPECT_EQ(voxels.size(), 100);
}

TEST(VoxelBuffer, WhatCannotBeHadThrows)
{
    EXPECT_THROW(VoxelBuffer(-1), std::bad_alloc);
    EXPECT_THROW(VoxelBuffer(INT64_MAX / 2), std::bad_alloc);
}

TEST(Log, NumbersDoNotFollowTheLocale)
{
    const test::LogCapture capture;
    logDebug("%f %d %s", 1.5, 12345, "text");
    EXPECT_EQ(capture.debugLines(), QStringList{"1.500000 12345 text"});
    EXPECT_EQ(plainNumber(1234.5678), QString("1234.57"));
}

TEST(Log, AssertionsCarryOnAsWarnings)
{
    const test::LogCapture capture;
    logAssertion("a < b", "zcurve", 83);
    EXPECT_EQ(capture.warnings(), QStringList{"ASSERT: \"a < b\" in zcurve (83)"});
}

} // namespace
} // namespace tirn
