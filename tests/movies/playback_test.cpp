#include "movies/playback.h"

#include <climits>

#include <gtest/gtest.h>

namespace tirn {
namespace {

TEST(Playback, ATimePointLastsItsPartOfASecondInWholeMilliseconds)
{
    EXPECT_EQ(millisecondsPerTimePoint(1), 1000);
    EXPECT_EQ(millisecondsPerTimePoint(2), 500);
    EXPECT_EQ(millisecondsPerTimePoint(3), 333);
    EXPECT_EQ(millisecondsPerTimePoint(30), 33);
    EXPECT_EQ(millisecondsPerTimePoint(1000), 1);
    EXPECT_EQ(millisecondsPerTimePoint(1001), 0);
}

TEST(Playback, ARateThatIsNoneCountsAsOne)
{
    EXPECT_EQ(millisecondsPerTimePoint(0), 1000);
    EXPECT_EQ(millisecondsPerTimePoint(-5), 1000);
    EXPECT_EQ(millisecondsPerTimePoint(INT_MIN), 1000);
}

} // namespace
} // namespace tirn
