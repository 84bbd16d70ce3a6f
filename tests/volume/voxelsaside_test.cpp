#include "volume/voxelsaside.h"

#include <cstring>

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "support/smalldisk.h"

namespace tirn {
namespace {

VoxelBuffer filled(std::int64_t size, int value)
{
    VoxelBuffer voxels(size);
    std::memset(voxels.data(), value, static_cast<std::size_t>(size));
    return voxels;
}

bool isFilled(const VoxelBuffer& voxels, std::int64_t size, int value)
{
    return voxels.size() == size && std::all_of(voxels.data(), voxels.data() + size,
                                                [value](std::byte b) { return b == std::byte(value); });
}

TEST(VoxelsAside, AreHadAgainInTheOppositeOrder)
{
    VoxelsAside aside;
    aside.put(filled(1000, 1));
    aside.put(filled(3000, 2));
    aside.put(filled(2000, 3));
    EXPECT_TRUE(isFilled(aside.take(), 2000, 3));
    EXPECT_TRUE(isFilled(aside.take(), 3000, 2));
    EXPECT_TRUE(isFilled(aside.take(), 1000, 1));
    EXPECT_TRUE(aside.isEmpty());
    EXPECT_TRUE(aside.take().isNull());
}

TEST(VoxelsAside, OnlyTheLastStayInMemory)
{
    VoxelsAside aside;
    aside.put(filled(1000, 1));
    EXPECT_EQ(aside.fileBytes(), 0);
    aside.put(filled(3000, 2));
    EXPECT_EQ(aside.fileBytes(), 1000);
    aside.put(filled(1, 3));
    EXPECT_EQ(aside.fileBytes(), 4000);
}

TEST(VoxelsAside, PlaceThatWasGivenBackIsUsedAgain)
{
    VoxelsAside aside;
    for (int i = 0; i < 3; ++i)
        aside.put(filled(1000, i));
    aside.take();
    aside.take();
    aside.put(filled(500, 7));
    aside.put(filled(600, 8));
    EXPECT_TRUE(isFilled(aside.take(), 600, 8));
    EXPECT_TRUE(isFilled(aside.take(), 500, 7));
    EXPECT_TRUE(isFilled(aside.take(), 1000, 0));
}

TEST(VoxelsAside, WithoutAFileTheyStayInMemory)
{
    VoxelsAside aside("/no such folder");
    aside.put(filled(1000, 1));
    aside.put(filled(1000, 2));
    EXPECT_EQ(aside.fileBytes(), 0);
    EXPECT_TRUE(isFilled(aside.take(), 1000, 2));
    EXPECT_TRUE(isFilled(aside.take(), 1000, 1));
}

TEST(VoxelsAside, OnAFullDiskTheyStayInMemory)
{
    const QTemporaryDir directory;
    VoxelsAside aside(directory.path());
    {
        const test::SmallDisk disk(1500);
        aside.put(filled(1000, 1));
        aside.put(filled(1000, 2));
        aside.put(filled(1000, 3));
    }
    EXPECT_EQ(aside.fileBytes(), 1000);
    EXPECT_TRUE(isFilled(aside.take(), 1000, 3));
    EXPECT_TRUE(isFilled(aside.take(), 1000, 2));
    EXPECT_TRUE(isFilled(aside.take(), 1000, 1));
}

TEST(VoxelsAside, LeaveNoFileBehind)
{
    const QTemporaryDir directory;
    {
        VoxelsAside aside(directory.path());
        aside.put(filled(1000, 1));
        aside.put(filled(1000, 2));
    }
    EXPECT_TRUE(QDir(directory.path()).isEmpty());
}

} // namespace
} // namespace tirn
