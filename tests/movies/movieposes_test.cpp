#include <gtest/gtest.h>

#include "movies/movieposes.h"
#include "support/slowposes.h"

namespace tirn {
namespace {

using test::Pose;

KeyFrame startFrame()
{
    KeyFrame frame;
    frame.xrot = 10;
    frame.yrot = 20;
    frame.zrot = 40;
    frame.xtrans = 0.5;
    frame.xmin = 2;
    frame.ymin = 3;
    frame.zmin = 4;
    frame.xmax = 12;
    frame.ymax = 20;
    frame.zmax = 9;
    frame.timepoint = 3;
    return frame;
}

Pose angles(const KeyFrame& frame) { return {frame.xrot, frame.yrot, frame.zrot}; }

using Table = std::vector<Pose>;

std::int64_t framesOf(const RotationSettings& settings)
{
    MovieSettings movie;
    movie.type = MovieType::Rotation;
    movie.rotation = settings;
    return movieFrames(movie, 0);
}

std::int64_t framesOf(const RockingSettings& settings)
{
    MovieSettings movie;
    movie.type = MovieType::Rocking;
    movie.rocking = settings;
    return movieFrames(movie, 0);
}

std::int64_t framesOf(const PassSettings& settings)
{
    MovieSettings movie;
    movie.type = MovieType::PassThrough;
    movie.pass = settings;
    return movieFrames(movie, 0);
}

Table rotations(const RotationSettings& settings)
{
    Table table;
    const std::int64_t total = framesOf(settings);
    KeyFrame pose = startFrame();
    for (std::int64_t f = 0; f < total; ++f) {
        poseRotation(settings, startFrame(), f, pose);
        table.push_back(angles(pose));
    }
    return table;
}

Table rockings(const RockingSettings& settings)
{
    Table table;
    const std::int64_t total = framesOf(settings);
    KeyFrame pose = startFrame();
    for (std::int64_t f = 0; f < total; ++f) {
        poseRocking(settings, startFrame(), f, total, pose);
        table.push_back(angles(pose));
    }
    return table;
}

TEST(MovieFrames, FollowFromTheTypeAndTheAxis)
{
    MovieSettings settings;
    settings.type = MovieType::Custom;
    EXPECT_EQ(movieFrames(settings, 7), 7);
    EXPECT_EQ(movieFrames(settings, 0), 0);
    settings.type = MovieType::PassThrough;
    settings.pass.frames = 9;
    for (const auto& [type, frames] :
         {std::pair(PassType::TopToBottom, 9), std::pair(PassType::BottomToTop, 9),
          std::pair(PassType::OutAndIn, 18), std::pair(PassType::SinglePlane, 9)}) {
        settings.pass.type = type;
        EXPECT_EQ(movieFrames(settings, 7), frames);
    }
    settings.type = MovieType::TimeOnly;
    settings.timeOnlyFrames = 11;
    EXPECT_EQ(movieFrames(settings, 7), 11);
    const int axes[] = {1, 1, 1, 2, 2, 2, 3, 1, 1, 1};
    for (int item = 0; item < 10; ++item) {
        settings.rotation = {static_cast<MovieAxis>(item), 3, 7};
        settings.rocking = {static_cast<MovieAxis>(item), 3, 7};
        settings.type = MovieType::Rotation;
        EXPECT_EQ(movieFrames(settings, 0), 21 * axes[item]);
        settings.type = MovieType::Rocking;
        EXPECT_EQ(movieFrames(settings, 0), 84 * axes[item]);
    }
}

TEST(MovieFrames, LargeNumbersDoNotOverflow)
{
    MovieSettings settings;
    settings.type = MovieType::Rocking;
    settings.rocking = {MovieAxis::XThenYThenZ, 10000, 10000};
    EXPECT_EQ(movieFrames(settings, 0), 1200000000);
    settings.type = MovieType::Rotation;
    settings.rotation = {MovieAxis::XThenYThenZ, 1000000, 10000};
    EXPECT_EQ(movieFrames(settings, 0), 30000000000);
    settings.rotation.rotations = -1;
    EXPECT_EQ(movieFrames(settings, 0), 0);
}

TEST(Rotation, OneAxisTurnsFromNothing)
{
    EXPECT_EQ(rotations({MovieAxis::X, 1, 4}), (Table{{0, 0, 0}, {90, 0, 0}, {180, 0, 0}, {270, 0, 0}}));
    EXPECT_EQ(rotations({MovieAxis::Y, 1, 4}), (Table{{0, 0, 0}, {0, 90, 0}, {0, 180, 0}, {0, 270, 0}}));
    EXPECT_EQ(rotations({MovieAxis::Z, 2, 2}), (Table{{0, 0, 0}, {0, 0, 180}, {0, 0, 360}, {0, 0, 540}}));
}

TEST(Rotation, OrFromTheOrientationThatThereIs)
{
    EXPECT_EQ(rotations({MovieAxis::X, 1, 2, true}), (Table{{10, 20, 40}, {190, 20, 40}}));
    EXPECT_EQ(rotations({MovieAxis::Y, 1, 2, true}), (Table{{10, 20, 40}, {10, 200, 40}}));
    EXPECT_EQ(rotations({MovieAxis::Z, 1, 2, true}), (Table{{10, 20, 40}, {10, 20, 220}}));
}

TEST(Rotation, OneAxisAfterTheOtherGoesOnCounting)
{
    EXPECT_EQ(rotations({MovieAxis::XThenY, 1, 2}),
              (Table{{0, 0, 0}, {180, 0, 0}, {0, 360, 0}, {0, 540, 0}}));
    EXPECT_EQ(rotations({MovieAxis::XThenZ, 1, 2}),
              (Table{{0, 0, 0}, {180, 0, 0}, {0, 0, 360}, {0, 0, 540}}));
    EXPECT_EQ(rotations({MovieAxis::YThenZ, 1, 2}),
              (Table{{0, 0, 0}, {0, 180, 0}, {0, 0, 360}, {0, 0, 540}}));
    EXPECT_EQ(rotations({MovieAxis::XThenYThenZ, 1, 2}),
              (Table{{0, 0, 0}, {180, 0, 0}, {0, 360, 0}, {0, 540, 0}, {0, 0, 720}, {0, 0, 900}}));
}

TEST(Rotation, TwoAxesTogetherTakeTheAngleOfX)
{
    EXPECT_EQ(rotations({MovieAxis::XAndY, 1, 2, true}), (Table{{10, 10, 40}, {190, 190, 40}}));
    EXPECT_EQ(rotations({MovieAxis::XAndZ, 1, 2, true}), (Table{{10, 20, 10}, {190, 20, 190}}));
    EXPECT_EQ(rotations({MovieAxis::YAndZ, 1, 2, true}), (Table{{10, 10, 10}, {10, 190, 190}}));
}

TEST(Rotation, FramesThatDoNotDivideACircleGiveUnevenAngles)
{
    const Table table = rotations({MovieAxis::X, 1, 7});
    for (std::size_t f = 0; f < 7; ++f)
        EXPECT_EQ(table[f][0], static_cast<double>(f) * 360.0 / 7);
}

TEST(Rotation, EveryAxisIsTheSlowReference)
{
    for (int item = 0; item < 10; ++item) {
        for (const int turns : {1, 2, 3}) {
            for (const int frames : {1, 2, 7, 60}) {
                for (const bool oriented : {false, true}) {
                    const Table table = rotations({static_cast<MovieAxis>(item), turns, frames, oriented});
                    const Pose base = oriented ? angles(startFrame()) : Pose{};
                    for (std::size_t f = 0; f < table.size(); ++f)
                        ASSERT_EQ(table[f],
                                  test::slowRotation(item, static_cast<int>(f), frames, turns, base))
                            << item << ' ' << f;
                }
            }
        }
    }
}

TEST(Rocking, SwingsToMinusThroughPlusAndBack)
{
    EXPECT_EQ(rockings({MovieAxis::X, 1, 2, 30}), (Table{{0, 0, 0},
                                                         {-15, 0, 0},
                                                         {-30, 0, 0},
                                                         {-15, 0, 0},
                                                         {0, 0, 0},
                                                         {15, 0, 0},
                                                         {30, 0, 0},
                                                         {15, 0, 0}}));
    EXPECT_EQ(rockings({MovieAxis::Y, 1, 1, 30, true}),
              (Table{{10, 20, 40}, {10, -10, 40}, {10, 20, 40}, {10, 50, 40}}));
    EXPECT_EQ(
        rockings({MovieAxis::X, 2, 1, 30}),
        (Table{
            {0, 0, 0}, {-30, 0, 0}, {0, 0, 0}, {30, 0, 0}, {0, 0, 0}, {-30, 0, 0}, {0, 0, 0}, {30, 0, 0}}));
}

TEST(Rocking, ZTakesTheThirdFormulaForAllPhases)
{
    // (0 + 30) - (i - 3) * 30.
    EXPECT_EQ(rockings({MovieAxis::Z, 1, 1, 30}), (Table{{0, 0, 120}, {0, 0, 90}, {0, 0, 60}, {0, 0, 30}}));
}

TEST(Rocking, AfterItsFirstPeriodXNeverComesBack)
{
    // Two rotations of one axis after the other: 16 frames in periods of 4.
    const Table table = rockings({MovieAxis::XThenY, 2, 1, 30});
    ASSERT_EQ(table.size(), 16U);
    const double swing[] = {0, -30, 0, 30};
    for (std::size_t f = 0; f < 16; ++f)
        EXPECT_EQ(table[f], (f < 4 ? Pose{swing[f % 4], 0, 0} : Pose{0, swing[f % 4], 0})) << f;

    const Table three = rockings({MovieAxis::XThenYThenZ, 2, 1, 30});
    ASSERT_EQ(three.size(), 24U);
    EXPECT_EQ(three[3], (Pose{30, 0, 0}));
    EXPECT_EQ(three[5], (Pose{0, -30, 0}));
    for (std::size_t f = 8; f < 24; ++f)
        EXPECT_EQ(three[f], (Pose{0, 0, 120 - 30.0 * static_cast<double>(f % 4)})) << f;

    const Table xz = rockings({MovieAxis::XThenZ, 1, 1, 30});
    EXPECT_EQ(
        xz,
        (Table{
            {0, 0, 0}, {-30, 0, 0}, {0, 0, 0}, {30, 0, 0}, {0, 0, 120}, {0, 0, 90}, {0, 0, 60}, {0, 0, 30}}));
}

TEST(Rocking, YThenZLeavesTheFirstPeriodAloneAndNeverComesToZ)
{
    const Table table = rockings({MovieAxis::YThenZ, 1, 1, 30});
    EXPECT_EQ(table, (Table{{10, 20, 40},
                            {10, 20, 40},
                            {10, 20, 40},
                            {10, 20, 40},
                            {0, 0, 0},
                            {0, -30, 0},
                            {0, 0, 0},
                            {0, 30, 0}}));
}

TEST(Rocking, TwoAxesTogetherGoEachFromItsOwnBase)
{
    EXPECT_EQ(rockings({MovieAxis::XAndY, 1, 1, 30, true}),
              (Table{{10, 20, 40}, {-20, -10, 40}, {10, 20, 40}, {40, 50, 40}}));
    EXPECT_EQ(rockings({MovieAxis::XAndZ, 1, 1, 30, true}),
              (Table{{10, 20, 40}, {-20, 20, 10}, {10, 20, 40}, {40, 20, 70}}));
    EXPECT_EQ(rockings({MovieAxis::YAndZ, 1, 1, 30, true}),
              (Table{{10, 20, 40}, {10, -10, 10}, {10, 20, 40}, {10, 50, 70}}));
}

TEST(Rocking, EveryAxisIsTheSlowReference)
{
    for (int item = 0; item < 10; ++item) {
        for (const int swings : {1, 2, 3}) {
            for (const int move : {1, 3, 30}) {
                for (const bool oriented : {false, true}) {
                    const Table table = rockings({static_cast<MovieAxis>(item), swings, move, 35, oriented});
                    const Pose base = oriented ? angles(startFrame()) : Pose{};
                    Pose shown = angles(startFrame());
                    for (std::size_t f = 0; f < table.size(); ++f) {
                        shown = test::slowRocking(item, static_cast<int>(f), static_cast<int>(table.size()),
                                                  35, move, swings, base)
                                    .value_or(shown);
                        ASSERT_EQ(table[f], shown) << item << ' ' << f;
                    }
                }
            }
        }
    }
}

TEST(Rocking, SettingsThatMakeNoSenseDoNoHarm)
{
    KeyFrame pose;
    poseRocking({MovieAxis::XThenY, 0, 0, 30}, {}, 5, 0, pose);
    poseRotation({MovieAxis::XThenY, 0, 0}, {}, 5, pose);
    posePassThrough({7, PassType::OutAndIn, 0}, {}, 0, 0, pose);
    EXPECT_EQ(framesPerFlash(0), 1);
    EXPECT_EQ(framesPerFlash(-1000), 1);
}

using Sides = std::array<int, 2>;

std::vector<Sides> passes(const PassSettings& settings)
{
    std::vector<Sides> table;
    const std::int64_t total = framesOf(settings);
    KeyFrame pose = startFrame();
    for (std::int64_t f = 0; f < total; ++f) {
        posePassThrough(settings, startFrame(), f, total, pose);
        const Sides x = {static_cast<int>(pose.xmin), static_cast<int>(pose.xmax)};
        const Sides y = {static_cast<int>(pose.ymin), static_cast<int>(pose.ymax)};
        const Sides z = {static_cast<int>(pose.zmin), static_cast<int>(pose.zmax)};
        const Sides all[] = {x, y, z};
        const Sides before[] = {{2, 12}, {3, 20}, {4, 9}};
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_TRUE(axis == settings.axis || all[axis] == before[axis]) << axis;
        }
        table.push_back(all[settings.axis]);
    }
    return table;
}

TEST(PassThrough, MovesTheLowSide)
{
    // x from 2 to 12 in four frames: 10 / 4 = 2.5, 5, 7.5, rounded half up.
    EXPECT_EQ(passes({0, PassType::TopToBottom, 4}),
              (std::vector<Sides>{{2, 12}, {5, 12}, {7, 12}, {10, 12}}));
    EXPECT_EQ(passes({0, PassType::BottomToTop, 4}),
              (std::vector<Sides>{{12, 12}, {9, 12}, {7, 12}, {4, 12}}));
}

TEST(PassThrough, OutAndInComesBackTheSameWay)
{
    // Of six frames three go out and three come back: 10 * f / 3 and 10 * (6 - f) / 3.
    EXPECT_EQ(passes({0, PassType::OutAndIn, 3}),
              (std::vector<Sides>{{2, 12}, {5, 12}, {9, 12}, {12, 12}, {9, 12}, {5, 12}}));
}

TEST(PassThrough, ASinglePlaneMovesBothSides)
{
    EXPECT_EQ(passes({2, PassType::SinglePlane, 5}),
              (std::vector<Sides>{{4, 4}, {5, 5}, {6, 6}, {7, 7}, {8, 8}}));
}

TEST(PassThrough, LooksAlongItsAxisUnlessTheOrientationIsKept)
{
    const Pose views[] = {{0, -90, 0}, {-90, 0, 0}, {0, 0, 0}};
    for (int axis = 0; axis < 3; ++axis) {
        KeyFrame pose = startFrame();
        posePassThrough({axis, PassType::TopToBottom, 4}, startFrame(), 1, 4, pose);
        EXPECT_EQ(angles(pose), views[axis]);
        pose = startFrame();
        posePassThrough({axis, PassType::TopToBottom, 4, true}, startFrame(), 1, 4, pose);
        EXPECT_EQ(angles(pose), angles(startFrame()));
    }
}

TEST(PassThrough, EveryAxisAndTypeIsTheSlowReference)
{
    const Sides sides[] = {{2, 12}, {3, 20}, {4, 9}};
    for (int axis = 0; axis < 3; ++axis) {
        for (int type = 0; type < 4; ++type) {
            for (const int frames : {1, 2, 5, 17}) {
                const auto table = passes({axis, static_cast<PassType>(type), frames});
                const int total = static_cast<int>(table.size());
                for (int f = 0; f < total; ++f)
                    ASSERT_EQ(table[static_cast<std::size_t>(f)],
                              test::slowPass(type, f, total, sides[axis][0], sides[axis][1]));
            }
        }
    }
}

TEST(PassThrough, AnOddTotalOutAndInTakesTheLongerHalfFirst)
{
    // 5 frames: 3 out, 2 back. 10 / 3 * f, then 10 / 2 * (5 - f).
    const int expected[] = {2, 5, 9, 12, 7};
    for (int f = 0; f < 5; ++f) {
        KeyFrame pose;
        posePassThrough({0, PassType::OutAndIn, 5}, startFrame(), f, 5, pose);
        EXPECT_EQ(pose.xmin, expected[f]);
    }
}

TEST(CustomMovie, ShowsEachRecordedFrameWhole)
{
    std::vector<KeyFrame> recorded(2, startFrame());
    recorded[1].xrot = 77;
    recorded[1].palettes = {{{1}, {2}, {3}, {4}}};
    KeyFrame pose;
    poseCustom(recorded, 1, pose);
    EXPECT_EQ(pose, recorded[1]);
    poseCustom(recorded, 2, pose);
    poseCustom(recorded, -1, pose);
    EXPECT_EQ(pose, recorded[1]);
}

TEST(FrameCounter, TurnsFlashesAtFifteenFramesASecond)
{
    EXPECT_EQ(framesPerFlash(1000), 15);
    EXPECT_EQ(framesPerFlash(300), 5) << "4.5 rounds up";
    KeyFrame pose;
    pose.channels = {{ChannelState::FlashOn, 0, 0},
                     {ChannelState::FlashOff, 0, 0},
                     {ChannelState::RotatingFlashWaiting, 0, 0},
                     {ChannelState::RotatingFlashOn, 0, 0},
                     {ChannelState::PaletteSwap, 1, 2}};
    const KeyFrame before = pose;
    countFrame(4, 300, pose);
    EXPECT_EQ(pose, before);
    countFrame(5, 300, pose);
    EXPECT_EQ(pose.channels[0].state, ChannelState::FlashOff);
    EXPECT_EQ(pose.channels[1].state, ChannelState::FlashOn);
    EXPECT_EQ(pose.channels[2].state, ChannelState::RotatingFlashOn) << "from the start again";
    EXPECT_EQ(pose.channels[3].state, ChannelState::RotatingFlashWaiting);
    EXPECT_EQ(pose.channels[4], before.channels[4]) << "palettes are not swapped here";
    countFrame(0, 300, pose);
    EXPECT_EQ(pose, before);
}

TEST(FrameRates, AreThoseOfTheList)
{
    EXPECT_EQ((std::vector<int>{frameRate(0), frameRate(1), frameRate(2), frameRate(3), frameRate(4)}),
              (std::vector<int>{1, 5, 10, 15, 30}));
    EXPECT_EQ(frameRate(5), 15);
    EXPECT_EQ(frameRate(-1), 15);
}

} // namespace
} // namespace tirn
