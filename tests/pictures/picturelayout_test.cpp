#include <gtest/gtest.h>

#include "pictures/picturelayout.h"

namespace tirn {
namespace {

TEST(PictureLayout, AGridStartsAboutSquare)
{
    EXPECT_EQ(gridCells(3), 4);
    EXPECT_EQ(firstGridSide(3), 2);
    EXPECT_EQ(firstGridSide(4), 2);
    EXPECT_EQ(firstGridSide(5), 2);
    EXPECT_EQ(firstGridSide(7), 3);
}

TEST(PictureLayout, OneChannelLeavesTheGridAsItIs)
{
    EXPECT_EQ(configuredGridSide(1), std::nullopt);
    EXPECT_EQ(configuredGridSide(2), 2);
    EXPECT_EQ(configuredGridSide(8), 3);
}

TEST(PictureLayout, TheOtherSideOfAGridHasJustRoomEnough)
{
    EXPECT_EQ(otherGridSide(4, 1, 2), 4);
    EXPECT_EQ(otherGridSide(4, 4, 2), 1);
    EXPECT_EQ(otherGridSide(5, 2, 9), 3);
    EXPECT_EQ(otherGridSide(5, 3, 1), 2);
    EXPECT_EQ(otherGridSide(4, 9, 3), 1);
    // Nonsense stays within bounds.
    EXPECT_EQ(otherGridSide(4, 0, 0), 4);
}

TEST(PictureLayout, CellsOfferTheChannelsAllAndOff)
{
    EXPECT_EQ(gridItems(2), (QStringList{"0", "1", "All", "Off"}));
    EXPECT_EQ(firstGridItem(0, 2), 0);
    EXPECT_EQ(firstGridItem(1, 2), 1);
    EXPECT_EQ(firstGridItem(2, 2), 2);
    EXPECT_EQ(firstGridItem(3, 2), 3);
    EXPECT_EQ(firstGridItem(8, 2), 3);
}

/// A stack of 200 x 100 x 40 in frames of 500 x 400: zthick = 500 * 40 / 200 + 10, ythick = 400 * 40 / 200.
TEST(PictureLayout, ACrossHasTheSidesThickAsTheStackIsDeep)
{
    const CrossLayout layout = crossLayout({500, 400}, 200, 100, 40, {});
    EXPECT_EQ(layout.zThick, 110);
    EXPECT_EQ(layout.yThick, 80);
    EXPECT_EQ(layout.offset, (500 - 110) / 2);
    EXPECT_EQ(layout.canvas, QSize(500 + 2 * 115, 400 + 2 * 95));
    const QList<CrossView> views = layout.views();
    ASSERT_EQ(views.size(), 5);
    const auto expect = [&](int i, double rotX, double rotY, const QRect& from, const QPoint& to) {
        EXPECT_EQ(views[i].rotX, rotX) << i;
        EXPECT_EQ(views[i].rotY, rotY) << i;
        EXPECT_EQ(views[i].from, from) << i;
        EXPECT_EQ(views[i].to, to) << i;
    };
    expect(0, 90, 0, {0, 195, 500, 90}, {115, 0});
    expect(1, 0, 90, {195, 0, 110, 400}, {0, 95});
    expect(2, 0, -90, {195, 0, 110, 400}, {115 + 5 + 500, 95});
    expect(3, -90, 0, {0, 195, 500, 90}, {115, 95 + 5 + 400});
    expect(4, 0, 0, {0, 0, 500, 400}, {115, 95});
}

TEST(PictureLayout, SidesThatAreNotWantedTakeNoRoom)
{
    const CrossLayout layout = crossLayout({500, 400}, 200, 100, 40, {false, false, true, false});
    EXPECT_EQ(layout.canvas, QSize(500 + 115, 400));
    const QList<CrossView> views = layout.views();
    ASSERT_EQ(views.size(), 2);
    EXPECT_EQ(views[0].to, QPoint(505, 0));
    EXPECT_EQ(views[1].to, QPoint(0, 0));
}

TEST(PictureLayout, AThickStackIsHeldWithinTheFrame)
{
    // zthick would be 1010, ythick is 100 and stays.
    EXPECT_EQ(crossLayout({500, 50}, 10, 10, 20, {}).zThick, 500);
    // The strip of 400 + 10 rows is higher than the frame is wide: zthick becomes the height.
    const CrossLayout tall = crossLayout({300, 400}, 10, 10, 10, {});
    EXPECT_EQ(tall.yThick, 400);
    EXPECT_EQ(tall.zThick, 400);
    EXPECT_EQ(tall.offset, -50);
}

TEST(PictureLayout, TheDominantEyeDecidesWhichFrameStandsLeft)
{
    EXPECT_EQ(stereoPlaces(100, true).minus, 0);
    EXPECT_EQ(stereoPlaces(100, true).plus, 100);
    EXPECT_EQ(stereoPlaces(100, false).minus, 100);
    EXPECT_EQ(stereoPlaces(100, false).plus, 0);
}

} // namespace
} // namespace tirn
