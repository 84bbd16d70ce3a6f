#include "scene/pointing/ruler.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

constexpr StackId kStack{7};
constexpr VoxelPlace kA = {1, 2, 3};
constexpr VoxelPlace kB = {4, 5, 6};
constexpr VoxelPlace kC = {7, 8, 9};

TEST(Ruler, HasTwoEndsAndBeginsAnewWithAThird)
{
    const Ruler one = withEnd({}, kStack, kA);
    EXPECT_EQ(one, (Ruler{kStack, {kA}}));
    const Ruler two = withEnd(one, kStack, kB);
    EXPECT_EQ(two, (Ruler{kStack, {kA, kB}}));
    EXPECT_EQ(withEnd(two, kStack, kC), (Ruler{kStack, {kC}}));
}

TEST(Ruler, BeginsAnewOnAnotherStack)
{
    const Ruler one = withEnd({}, kStack, kA);
    EXPECT_EQ(withEnd(one, StackId{8}, kB), (Ruler{StackId{8}, {kB}}));
}

} // namespace
} // namespace tirn
