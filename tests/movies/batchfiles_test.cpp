#include <gtest/gtest.h>

#include "movies/batchfiles.h"
#include "support/qtprint.h"

namespace tirn {
namespace {

TEST(MatchingSeries, TakesNamesWithDigitsInTheSamePlaces)
{
    EXPECT_EQ(matchingSeries("cell_t01_c2.lsm", {"cell_t01_c2.lsm", "cell_t17_c1.lsm", "cell_tx1_c1.lsm",
                                                 "dish_t01_c2.lsm", "cell_t1_c2.lsm"}),
              (QStringList{"cell_t01_c2.lsm", "cell_t17_c1.lsm"}));
}

TEST(MatchingSeries, AnyWhiteSpaceWillDoAndOtherCharactersStandForThemselves)
{
    EXPECT_EQ(matchingSeries("my  cell (1)+.lsm", {"my cell (2)+.lsm", "my\tcell (3)+.lsm", "mycell (4)+.lsm",
                                                   "my cell 5++.lsm", "my cell (6).lsm"}),
              (QStringList{"my cell (2)+.lsm", "my\tcell (3)+.lsm"}));
}

TEST(MatchingSeries, OnlyTheNameInFrontOfTheFirstPointCounts)
{
    EXPECT_EQ(matchingSeries("/data/a1.ome.tif", {"a2.ome.tif", "xa3.tif", "b1.ome.tif"}),
              (QStringList{"a2.ome.tif", "xa3.tif"}))
        << "and it may stand anywhere in a name";
}

TEST(ContinuedTimes, GoOnAsTheFirstTwoDo)
{
    EXPECT_EQ(continuedTimes("00:00:10", "00:00:40", 4),
              (QStringList{"00:00:10", "00:00:40", "00:01:10", "00:01:40"}));
    EXPECT_EQ(continuedTimes("00:00:00.500", "00:00:01", 3),
              (QStringList{"00:00:00.500", "00:00:01.000", "00:00:01.500"}));
    EXPECT_EQ(continuedTimes("00:00:00", "00:00:01.250", 3),
              (QStringList{"00:00:00", "00:00:01", "00:00:02"}))
        << "the first decides whether milliseconds are shown";
    EXPECT_EQ(continuedTimes("10:00:00", "09:00:00", 3), (QStringList{"10:00:00", "09:00:00", "08:00:00"}));
}

TEST(ContinuedTimes, LongSeriesGoRoundTheDay)
{
    const QStringList times = continuedTimes("00:00:00", "23:00:00", 100);
    EXPECT_EQ(times[2], "22:00:00");
    EXPECT_EQ(times[99], "21:00:00"); // 99 * 23 hours are 94 days and 21 hours
}

TEST(ContinuedTimes, WhatIsNoTimeGivesNothing)
{
    EXPECT_TRUE(continuedTimes("soon", "00:00:01", 3).isEmpty());
    EXPECT_TRUE(continuedTimes("00:00:01", "", 3).isEmpty());
    EXPECT_TRUE(continuedTimes("25:00:00", "00:00:01", 3).isEmpty());
}

} // namespace
} // namespace tirn
