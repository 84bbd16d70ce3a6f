#include "ui/formplaces.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

TEST(FormPosition, StandsBesideTheMainWindow)
{
    const QRect main(500, 400, 300, 200);
    const QSize form(100, 50);
    const QRect desktop(0, 0, 1920, 1080);
    EXPECT_EQ(formPosition(main, form, desktop, FormSide::Left), QPoint(400, 400));
    EXPECT_EQ(formPosition(main, form, desktop, FormSide::Right), QPoint(800, 400));
    EXPECT_EQ(formPosition(main, form, desktop, FormSide::Above), QPoint(500, 350));
    EXPECT_EQ(formPosition(main, form, desktop, FormSide::Below), QPoint(500, 600));
}

TEST(FormPosition, NeverLeavesTheDesktop)
{
    const QRect desktop(0, 0, 800, 600);
    EXPECT_EQ(formPosition({50, 10, 300, 200}, {100, 50}, desktop, FormSide::Left), QPoint(0, 10));
    EXPECT_EQ(formPosition({50, 10, 300, 200}, {100, 50}, desktop, FormSide::Above), QPoint(50, 0));
    EXPECT_EQ(formPosition({600, 10, 180, 200}, {100, 50}, desktop, FormSide::Right), QPoint(700, 10));
    EXPECT_EQ(formPosition({100, 400, 180, 200}, {100, 50}, desktop, FormSide::Below), QPoint(100, 550));
}

TEST(FirstWindow, IsCentredAndOnTheLeftHalfOfTwinMonitors)
{
    EXPECT_EQ(firstWindowPosition({1280, 1024}, 512), QPoint(384, 256));
    EXPECT_EQ(firstWindowPosition({2560, 1024}, 512), QPoint(384, 256));
    EXPECT_EQ(firstWindowPosition({2048, 1024}, 512), QPoint(768, 256));
    // Both divisions drop the rest, also below zero.
    EXPECT_EQ(firstWindowPosition({511, 509}, 512), QPoint(0, -1));
}

} // namespace
} // namespace tirn
