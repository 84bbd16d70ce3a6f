// Composites of pictures, with a camera that notes what it sees.

#include <gtest/gtest.h>

#include "glsupport/recordedrig.h"
#include "render/snapshots.h"

namespace tirn {
namespace {

using test::denseStack;
using test::LogCapture;
using test::RecordedRig;

/// What a picture was taken of.
struct Seen
{
    std::vector<int> states;
    double rotX = 0;
    double rotY = 0;
    double rotZ = 0;
    double yRotation = 0;

    bool operator==(const Seen&) const = default;
};

class Snapshots : public ::testing::Test
{
protected:
    Snapshots() { rig.show({denseStack(4, 2, 2, 3)}); }

    std::vector<int> states()
    {
        std::vector<int> all;
        for (const Channel& channel : rig.scene.current()->channels())
            all.push_back(static_cast<int>(channel.display.state));
        return all;
    }
    /// Pictures of plain colours: the n-th is (n, 2n, 3n) * 10.
    QImage take()
    {
        seen.push_back({states(), rig.scene.view.rotX, rig.scene.view.rotY, rig.scene.view.rotZ,
                        rig.scene.view.yRotation});
        const int n = static_cast<int>(seen.size());
        if (n == failAt)
            return {};
        QImage picture(frame, QImage::Format_RGB32);
        picture.fill(colour(n));
        return picture;
    }
    static QRgb colour(int n) { return qRgb(10 * n, 20 * n, 30 * n); }
    SnapshotSource source()
    {
        return {rig.scene, frame, [this] { return take(); },
                [this](double x, double y, double z) {
                    rig.scene.view.rotX = x;
                    rig.scene.view.rotY = y;
                    rig.scene.view.rotZ = z;
                }};
    }

    LogCapture log;
    RecordedRig rig{RenderThreadKind::FragmentProgram};
    QSize frame{6, 4};
    std::vector<Seen> seen;
    int failAt = 0;
};

constexpr QRgb kBlack = 0xff000000;
constexpr QRgb kWhite = 0xffffffff;

TEST_F(Snapshots, AGridShowsEachChannelAllOfThemOrNothing)
{
    rig.scene.current()->channels()[2].display.state = ChannelState::FlashOn;
    const QImage grid = channelGrid(source(), {2, 3}, {0, 2, 4, 3, 1});
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_EQ(seen[0].states, (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(seen[1].states, (std::vector<int>{1, 1, 0}));
    EXPECT_EQ(seen[2].states, (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(seen[3].states, (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(states(), (std::vector<int>{0, 0, 2}));
    ASSERT_EQ(grid.size(), QSize(12, 12));
    EXPECT_EQ(grid.pixel(0, 0), colour(1));
    EXPECT_EQ(grid.pixel(5, 3), colour(1));
    EXPECT_EQ(grid.pixel(6, 0), colour(2));
    // "Off", and the cell without an item.
    EXPECT_EQ(grid.pixel(0, 4), kBlack);
    EXPECT_EQ(grid.pixel(6, 4), colour(3));
    EXPECT_EQ(grid.pixel(0, 8), colour(4));
    EXPECT_EQ(grid.pixel(11, 11), kBlack);
}

TEST_F(Snapshots, AGridOfOffIsBlack)
{
    const QImage grid = channelGrid(source(), {2, 1}, {4, 4});
    EXPECT_TRUE(seen.empty());
    QImage black(12, 4, QImage::Format_RGB32);
    black.fill(Qt::black);
    EXPECT_EQ(grid, black);
}

TEST_F(Snapshots, AStereoPairTurnsByHalfTheAngleToBothSides)
{
    rig.scene.view.rotY = 33;
    const QImage right = stereoPair(source(), 8, true);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].yRotation, -4);
    EXPECT_EQ(seen[1].yRotation, 4);
    EXPECT_EQ(seen[0].rotY, 33);
    EXPECT_EQ(rig.scene.view.yRotation, 0);
    ASSERT_EQ(right.size(), QSize(12, 4));
    EXPECT_EQ(right.pixel(0, 0), colour(1));
    EXPECT_EQ(right.pixel(6, 3), colour(2));
}

TEST_F(Snapshots, TheLeftEyeSwapsThePair)
{
    const QImage left = stereoPair(source(), 8, false);
    EXPECT_EQ(left.pixel(0, 0), colour(2));
    EXPECT_EQ(left.pixel(6, 0), colour(1));
}

TEST_F(Snapshots, ACrossTurnsAbsolutelyAndBackToWholeDegrees)
{
    rig.scene.view.rotX = 12.7;
    rig.scene.view.rotY = 200.9;
    rig.scene.view.rotZ = 5.5;
    frame = {100, 80};
    const QImage cross = orthographicCross(source(), {});
    ASSERT_EQ(seen.size(), 5U);
    const std::vector<std::pair<double, double>> turns = {{90, 0}, {0, 90}, {0, -90}, {-90, 0}, {0, 0}};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(seen[i].rotX, turns[i].first) << i;
        EXPECT_EQ(seen[i].rotY, turns[i].second) << i;
        EXPECT_EQ(seen[i].rotZ, 0) << i;
    }
    EXPECT_EQ(rig.scene.view.rotX, 12);
    EXPECT_EQ(rig.scene.view.rotY, 200);
    EXPECT_EQ(rig.scene.view.rotZ, 5);
    // A stack 4 x 2 x 2: half as deep as wide. zthick 60, ythick 40.
    EXPECT_TRUE(log.contains("zthick 60 zoffset 20"));
    ASSERT_EQ(cross.size(), QSize(100 + 2 * 65, 80 + 2 * 55));
    EXPECT_EQ(cross.pixel(65, 0), colour(1));
    EXPECT_EQ(cross.pixel(164, 49), colour(1));
    EXPECT_EQ(cross.pixel(64, 0), kWhite);
    EXPECT_EQ(cross.pixel(65, 50), kWhite);
    EXPECT_EQ(cross.pixel(0, 55), colour(2));
    EXPECT_EQ(cross.pixel(59, 134), colour(2));
    EXPECT_EQ(cross.pixel(60, 100), kWhite);
    EXPECT_EQ(cross.pixel(65 + 5 + 100, 55), colour(3));
    EXPECT_EQ(cross.pixel(65, 55 + 5 + 80), colour(4));
    EXPECT_EQ(cross.pixel(65, 55), colour(5));
    EXPECT_EQ(cross.pixel(164, 134), colour(5));
    EXPECT_EQ(cross.pixel(165, 134), kWhite);
}

TEST_F(Snapshots, AFailedPictureEndsTheCompositeAndRestoresTheView)
{
    rig.scene.view.rotX = 45;
    failAt = 2;
    EXPECT_TRUE(channelGrid(source(), {2, 2}, {0, 1, 2, 3}).isNull());
    EXPECT_EQ(seen.size(), 2U);
    EXPECT_EQ(states(), (std::vector<int>{0, 0, 0}));
    seen.clear();
    EXPECT_TRUE(stereoPair(source(), 10, true).isNull());
    EXPECT_EQ(rig.scene.view.yRotation, 0);
    seen.clear();
    EXPECT_TRUE(orthographicCross(source(), {}).isNull());
    EXPECT_EQ(rig.scene.view.rotX, 45);
}

TEST_F(Snapshots, WithoutAStackThereIsNothingToTake)
{
    rig.scene.currentIndex = -1;
    EXPECT_TRUE(channelGrid(source(), {2, 2}, {0, 1}).isNull());
    EXPECT_TRUE(orthographicCross(source(), {}).isNull());
    EXPECT_TRUE(seen.empty());
}

} // namespace
} // namespace tirn
