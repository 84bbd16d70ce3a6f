#include "ui/formplaces.h"

#include <vector>

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

TEST(FormPosition, StaysOnAScreenThatDoesNotBeginAtZero)
{
    const QRect second(1920, 100, 800, 600);
    EXPECT_EQ(formPosition({1950, 110, 300, 200}, {100, 50}, second, FormSide::Left), QPoint(1920, 110));
    EXPECT_EQ(formPosition({2600, 110, 100, 200}, {100, 50}, second, FormSide::Right), QPoint(2620, 110));
    EXPECT_EQ(onScreen({0, 0}, {100, 50}, second), QPoint(1920, 100));
    EXPECT_EQ(onScreen({5000, 5000}, {100, 50}, second), QPoint(2620, 650));
    // What is larger than the screen begins where it begins.
    EXPECT_EQ(onScreen({5000, 5000}, {1000, 900}, second), QPoint(1920, 100));
}

/// Places that forms of a size take when they come up one after the other on one side.
std::vector<QRect> openedInARow(int forms, QSize size, const QRect& mainFrame, const QRect& screen,
                                const QRect& menu)
{
    std::vector<QRect> taken = {menu};
    for (int i = 0; i < forms; ++i)
        taken.push_back({freeFormPosition(mainFrame, size, screen, taken, FormSide::Left), size});
    return taken;
}

TEST(FormPosition, TheFirstFormStandsWhereItsSideSays)
{
    const QRect mainFrame(400, 256, 512, 560);
    const auto taken = openedInARow(1, {300, 200}, mainFrame, {0, 0, 1280, 1024}, {400, 280, 512, 24});
    EXPECT_EQ(taken[1].topLeft(), QPoint(100, 256));
}

TEST(FormPosition, FormsInARowCoverNeitherEachOtherNorTheMenuNorLeaveTheScreen)
{
    const QRect mainFrame(384, 256, 512, 560);
    const QRect menu(384, 280, 512, 24);
    const QRect screen(0, 0, 1280, 1024);
    struct Case
    {
        int forms;
        QSize size;
    };
    // Of the largest one fits at each side, and one below the menu.
    for (const auto& [forms, size] : {Case{6, {300, 250}}, Case{3, {384, 500}}, Case{12, {200, 100}}}) {
        const auto taken = openedInARow(forms, size, mainFrame, screen, menu);
        for (std::size_t i = 0; i < taken.size(); ++i) {
            EXPECT_TRUE(screen.contains(taken[i])) << i;
            for (std::size_t k = i + 1; k < taken.size(); ++k)
                EXPECT_FALSE(taken[i].intersects(taken[k]))
                    << i << " and " << k << ", width " << size.width();
        }
    }
}

TEST(FormPosition, WithoutRoomAFormCoversAsLittleAsItCan)
{
    const QRect screen(0, 0, 600, 400);
    const std::vector<QRect> taken = {{0, 0, 600, 300}};
    const QPoint corner = freeFormPosition({200, 0, 200, 300}, {300, 200}, screen, taken, FormSide::Left);
    EXPECT_EQ(corner.y(), 200);
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
