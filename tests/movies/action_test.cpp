#include <gtest/gtest.h>

#include "movies/actionstate.h"
#include "support/logcapture.h"
#include "support/slowposes.h"

namespace tirn {
namespace {

Action actionOf(ActionType type, double x = 0, double y = 0, double z = 0)
{
    Action action;
    action.type = type;
    action.x = x;
    action.y = y;
    action.z = z;
    return action;
}

constexpr StackSize kSize = {100, 50, 20};

TEST(Action, HasTheNamesOfTheTable)
{
    const QStringList names = {"Rotation",     "Scale",   "Translation", "Palette",
                               "Pass Through", "Rocking", "Custom",      "Timepoints"};
    for (int type = 0; type < 8; ++type)
        EXPECT_EQ(actionOf(static_cast<ActionType>(type)).name(), names[type]);
    EXPECT_EQ(actionOf(static_cast<ActionType>(8)).name(), "Not a clue");
    EXPECT_EQ(actionOf(static_cast<ActionType>(-1)).name(), "Not a clue");
}

TEST(TimeFrame, LastsFifteenFramesASecond)
{
    TimeFrame timeFrame;
    EXPECT_EQ(timeFrame.seconds, 1);
    EXPECT_EQ(timeFrame.frames(kSize), 15);
    timeFrame.seconds = 4;
    EXPECT_EQ(timeFrame.frames(kSize), 60);
    timeFrame.actions = {actionOf(ActionType::Rotation)};
    EXPECT_EQ(timeFrame.frames(kSize), 60);
    timeFrame.seconds = -1;
    EXPECT_EQ(timeFrame.frames(kSize), 0);
}

TEST(TimeFrame, ACustomActionInFrontSaysHowLongItIs)
{
    TimeFrame timeFrame;
    timeFrame.seconds = 10;
    timeFrame.actions = {actionOf(ActionType::Custom)};
    timeFrame.actions[0].keyFrames.resize(7);
    EXPECT_EQ(timeFrame.frames(kSize), 7);
    timeFrame.actions.insert(timeFrame.actions.begin(), actionOf(ActionType::Scale));
    EXPECT_EQ(timeFrame.frames(kSize), 150) << "only the first action counts";
}

TEST(TimeFrame, ASinglePlaneTakesAFrameForEachSlice)
{
    TimeFrame timeFrame;
    timeFrame.actions = {actionOf(ActionType::PassThrough, 1, 0, 0)};
    EXPECT_EQ(timeFrame.frames(kSize), 15);
    timeFrame.actions[0].passType = PassType::SinglePlane;
    EXPECT_EQ(timeFrame.frames(kSize), 100);
    timeFrame.actions[0].x = 0;
    timeFrame.actions[0].y = 1;
    EXPECT_EQ(timeFrame.frames(kSize), 50);
    timeFrame.actions[0].y = 0;
    timeFrame.actions[0].z = 1;
    EXPECT_EQ(timeFrame.frames(kSize), 20);
    timeFrame.actions[0].x = 1;
    EXPECT_EQ(timeFrame.frames(kSize), 100) << "x is asked for first";
}

TEST(TimeFrame, ActionsJoinWhereTheOnesThatAreThereAllowIt)
{
    // By row what is there, by column what is added.
    const char* table[] = {
        ".++++-++", // Rotation
        "+.++++++", // Scale
        "++.+++++", // Translation
        "+++.++++", // Palette
        "++++.+++", // Pass Through
        "-++++.++", // Rocking
        "------.-", // Custom
        "+++++++.", // Timepoints
    };
    for (int there = 0; there < 8; ++there) {
        for (int added = 0; added < 8; ++added) {
            TimeFrame timeFrame;
            timeFrame.actions = {actionOf(static_cast<ActionType>(there))};
            const TimeFrame before = timeFrame;
            const bool expected = table[there][added] == '+';
            EXPECT_EQ(addAction(timeFrame, actionOf(static_cast<ActionType>(added))), expected)
                << there << ' ' << added;
            EXPECT_EQ(timeFrame.actions.size(), expected ? 2U : 1U);
            EXPECT_TRUE(expected || timeFrame == before);
        }
    }
}

TEST(TimeFrame, TimePointsGoInFrontOfAllOthers)
{
    TimeFrame timeFrame;
    EXPECT_TRUE(addAction(timeFrame, actionOf(ActionType::Rotation)));
    EXPECT_TRUE(addAction(timeFrame, actionOf(ActionType::Scale)));
    EXPECT_TRUE(addAction(timeFrame, actionOf(ActionType::TimePoints)));
    EXPECT_FALSE(addAction(timeFrame, actionOf(ActionType::Rocking)));
    EXPECT_EQ(timeFrame.actions[0].type, ActionType::TimePoints);
    EXPECT_EQ(timeFrame.actions[2].type, ActionType::Scale);
    EXPECT_EQ(incompatibleText(actionOf(ActionType::Rocking)),
              "Rocking is not compatible with the other actions in this timeframe.");
}

TEST(TimeFrame, TimePassesInEachOneOfAStackWithSeveralTimePoints)
{
    Action rotation;
    rotation.y = 1;
    Action lost;
    lost.start = 2;
    lost.end = 5;
    Action custom;
    custom.type = ActionType::Custom;
    std::vector<TimeFrame> timeFrames = {
        {{}, 1}, {{rotation}, 1}, {{lost, rotation}, 1}, {{custom}, 1}, {{lost, custom}, 1}};
    letTimePass(timeFrames, 3);
    Action time;
    time.type = ActionType::TimePoints;
    time.framesPerTimePoint = 3;
    Action told = time;
    told.start = 2;
    told.end = 5;
    EXPECT_EQ(
        timeFrames,
        (std::vector<TimeFrame>{
            {{time}, 1}, {{time, rotation}, 1}, {{told, rotation}, 1}, {{custom}, 1}, {{told, custom}, 1}}));
    const std::vector<TimeFrame> once = timeFrames;
    letTimePass(timeFrames, 3);
    EXPECT_EQ(timeFrames, once);
}

TEST(RockingAngles, ZRocksAboutX)
{
    using Angles = std::array<double, 3>;
    const Angles expected[] = {{9, 0, 0}, {0, 9, 0}, {9, 0, 0}, {9, 9, 0}, {9, 0, 0}, {9, 9, 0}, {0, 0, 0}};
    for (int item = 0; item < 7; ++item)
        EXPECT_EQ(rockingAngles(item, 9), expected[item]) << item;
}

/// A start frame with two palettes of two entries and two channels.
KeyFrame startFrame()
{
    KeyFrame frame;
    frame.xrot = 10;
    frame.yrot = 20;
    frame.zrot = 30;
    frame.xtrans = 1;
    frame.ytrans = 2;
    frame.ztrans = 3;
    frame.xscale = 1;
    frame.yscale = 2;
    frame.zscale = 4;
    frame.xmin = 2;
    frame.ymin = 3;
    frame.zmin = 4;
    frame.xmax = 12;
    frame.ymax = 20;
    frame.zmax = 9;
    frame.timepoint = 5;
    frame.channels = {{ChannelState::Hidden, 0, 0}, {ChannelState::Shown, 0, 1}};
    frame.palettes = {{{0, 100}, {10, 110}, {20, 120}, {30, 130}},
                      {{200, 255}, {40, 41}, {7, 8}, {255, 255}}};
    return frame;
}

KeyFrame applied(const Action& action, std::int64_t i, std::int64_t frames)
{
    KeyFrame work = startFrame();
    TimePointCounter counter = 0;
    applyAction(action, startFrame(), work, {i, frames}, counter);
    return work;
}

KeyFrame finished(const Action& action, KeyFrame work, std::int64_t frames)
{
    TimePointCounter counter = 0;
    applyFinal(action, startFrame(), work, frames, counter);
    return work;
}

TEST(ActionState, RotationTurnsFromTheStart)
{
    const Action action = actionOf(ActionType::Rotation, 1, -0.5, 2);
    KeyFrame expected = startFrame();
    EXPECT_EQ(applied(action, 0, 15), expected);
    expected.xrot = 10 + 1 * 360 * 5 / 15.0;
    expected.yrot = 20 - 0.5 * 360 * 5 / 15;
    expected.zrot = 30 + 2 * 360 * 5 / 15.0;
    EXPECT_EQ(applied(action, 5, 15), expected);
    EXPECT_EQ(finished(action, expected, 15).zrot, 750);
    const test::LogCapture log;
    applied(action, 5, 15);
    EXPECT_EQ(log.lines(), QStringList{"rotate 130 -40 270"});
}

TEST(ActionState, ScaleGoesToItsTarget)
{
    const Action action = actionOf(ActionType::Scale, 3, 2, 1);
    KeyFrame expected = startFrame();
    expected.xscale = 1 + 2 * 0.25;
    expected.yscale = 2;
    expected.zscale = 4 - 3 * 0.25;
    EXPECT_EQ(applied(action, 5, 20), expected);
    const KeyFrame last = finished(action, expected, 20);
    EXPECT_EQ((std::array<double, 3>{last.xscale, last.yscale, last.zscale}),
              (std::array<double, 3>{3, 2, 1}));
}

TEST(ActionState, TranslationGoesItsDistance)
{
    const Action action = actionOf(ActionType::Translation, 3, 0, -1);
    KeyFrame expected = startFrame();
    expected.xtrans = 1 + 3 * 5 / 20.0;
    expected.ztrans = 3 - 5 / 20.0;
    EXPECT_EQ(applied(action, 5, 20), expected);
    EXPECT_EQ(finished(action, expected, 20).xtrans, 4);
}

/// What becomes of the first channel's palette.
Action paletteAction(PaletteAction action, int after = 1)
{
    Action whole = actionOf(ActionType::Palette);
    whole.paletteActions = {static_cast<int>(action)};
    whole.paletteAfter = {after};
    return whole;
}

TEST(PaletteActions, NothingChangesNothing)
{
    EXPECT_EQ(applied(paletteAction(PaletteAction::None), 3, 15), startFrame());
}

TEST(PaletteActions, ChangeToTakesTheTablesAtBothEnds)
{
    const Action action = paletteAction(PaletteAction::ChangeTo);
    KeyFrame expected = startFrame();
    expected.channels[0].state = ChannelState::Shown;
    EXPECT_EQ(applied(action, 3, 15), expected);
    expected.palettes[0] = expected.palettes[1];
    EXPECT_EQ(applied(action, 0, 15), expected);
    EXPECT_EQ(finished(action, startFrame(), 15), expected);
}

TEST(PaletteActions, OffHidesTheChannel)
{
    Action action = paletteAction(PaletteAction::Off);
    action.paletteActions = {0, 2, 2};
    action.paletteAfter = {0, 0, 0};
    const test::LogCapture log;
    KeyFrame expected = startFrame();
    expected.channels[1].state = ChannelState::Hidden;
    EXPECT_EQ(applied(action, 3, 15), expected);
    EXPECT_EQ(log.lines(), QStringList{"no channels!"});
}

TEST(PaletteActions, FadesRoundHalfUp)
{
    KeyFrame expected = startFrame();
    expected.channels[0].state = ChannelState::Shown;
    // floor(3 * t / 15 + 0.5) of 0, 100; 10, 110; 20, 120; 30, 130.
    expected.palettes[0] = {{0, 20}, {2, 22}, {4, 24}, {6, 26}};
    EXPECT_EQ(applied(paletteAction(PaletteAction::FadeIn), 3, 15), expected);
    // floor(12 * t / 15 + 0.5).
    expected.palettes[0] = {{0, 80}, {8, 88}, {16, 96}, {24, 104}};
    EXPECT_EQ(applied(paletteAction(PaletteAction::FadeOut), 3, 15), expected);
    // floor(a / 4 + 3 t / 4 + 0.5), a from palette 1.
    expected.palettes[0] = {{50, 139}, {18, 93}, {17, 92}, {86, 161}};
    EXPECT_EQ(applied(paletteAction(PaletteAction::FadeTo), 5, 20), expected);
}

TEST(PaletteActions, FadesEndWhereTheyLead)
{
    EXPECT_EQ(finished(paletteAction(PaletteAction::FadeIn), startFrame(), 15).palettes[0],
              startFrame().palettes[0]);
    EXPECT_EQ(finished(paletteAction(PaletteAction::FadeOut), startFrame(), 15).palettes[0],
              (PaletteValues{{0, 0}, {0, 0}, {0, 0}, {0, 0}}));
    EXPECT_EQ(finished(paletteAction(PaletteAction::FadeTo), startFrame(), 15).palettes[0],
              startFrame().palettes[1]);
}

TEST(PaletteActions, FadesTakeTheTableOfTheStartAndNotOfTheFrameBefore)
{
    KeyFrame work = startFrame();
    TimePointCounter counter = 0;
    for (int i = 0; i <= 3; ++i)
        applyAction(paletteAction(PaletteAction::FadeOut), startFrame(), work, {i, 15}, counter);
    EXPECT_EQ(work.palettes[0].red[1], 80);
}

TEST(PaletteActions, AFadeIsCutAt255)
{
    KeyFrame start = startFrame();
    start.palettes[0].red = {400, 300};
    start.palettes[1].red = {400, 100};
    KeyFrame work = start;
    TimePointCounter counter = 0;
    applyAction(paletteAction(PaletteAction::FadeTo), start, work, {5, 20}, counter);
    EXPECT_EQ(work.palettes[0].red, (std::vector<double>{255, 250}));
}

TEST(PaletteActions, FlashesSetTheStateAndTheOtherPalette)
{
    EXPECT_EQ(applied(paletteAction(PaletteAction::FlashOnOff), 3, 15).channels[0],
              (ChannelDisplay{ChannelState::FlashOn, 0, 0}));
    const Action action = paletteAction(PaletteAction::FlashTo);
    EXPECT_EQ(applied(action, 0, 15).channels[0], (ChannelDisplay{ChannelState::PaletteSwap, 1, 0}));
    EXPECT_EQ(applied(action, 3, 15), startFrame());
    EXPECT_EQ(finished(action, startFrame(), 15).channels[0],
              (ChannelDisplay{ChannelState::PaletteSwap, 1, 0}));
}

TEST(PaletteActions, PalettesThatAreNotThereDoNoHarm)
{
    for (const int index : {-1, 2, 1000000}) {
        for (int kind = -1; kind < 9; ++kind) {
            KeyFrame start = startFrame();
            start.channels[1].palette = index;
            Action action = paletteAction(static_cast<PaletteAction>(kind), index);
            action.paletteActions.resize(4, kind);
            action.paletteAfter.resize(3, index);
            for (const std::int64_t frames : {0, 1, 15}) {
                KeyFrame work = start;
                TimePointCounter counter = 0;
                applyAction(action, start, work, {0, frames}, counter);
                applyFinal(action, start, work, frames, counter);
                EXPECT_EQ(work.palettes[1], start.palettes[1]);
                work.palettes.clear();
                applyFinal(action, start, work, frames, counter);
            }
        }
    }
}

TEST(PaletteActions, TablesOfDifferentLengthsMeetWhereBothAreLong)
{
    KeyFrame start = startFrame();
    start.palettes[1].red = {77};
    KeyFrame work = start;
    TimePointCounter counter = 0;
    applyFinal(paletteAction(PaletteAction::ChangeTo), start, work, 15, counter);
    EXPECT_EQ(work.palettes[0].red, (std::vector<double>{77, 100}));
}

Action pass(int axis, PassType type)
{
    Action action = actionOf(ActionType::PassThrough, axis == 0, axis == 1, axis == 2);
    action.passType = type;
    return action;
}

TEST(PassThroughAction, LooksAlongItsAxisAndComesBack)
{
    const test::Pose views[] = {{0, -90, 0}, {-90, 0, 0}, {0, 0, 0}};
    for (int axis = 0; axis < 3; ++axis) {
        const Action action = pass(axis, PassType::TopToBottom);
        const KeyFrame work = applied(action, 4, 15);
        EXPECT_EQ((test::Pose{work.xrot, work.yrot, work.zrot}), views[axis]);
        EXPECT_EQ(finished(action, work, 15), startFrame());
    }
    EXPECT_EQ(applied(actionOf(ActionType::PassThrough, 1, 1, 1), 0, 15).xrot, 0) << "z goes first";
    EXPECT_EQ(applied(actionOf(ActionType::PassThrough, 1, 1, 0), 0, 15).xrot, -90);
    EXPECT_EQ(applied(actionOf(ActionType::PassThrough, 0.5, 0, 0), 0, 15).yrot, -90);
}

TEST(PassThroughAction, MovesTheSidesOfTheCutBox)
{
    // x from 2 to 12 in 4 frames: 10 / 4 = 2.5, rounded half up.
    const auto lows = [](PassType type, int frames) {
        std::vector<double> all;
        for (int i = 0; i < frames; ++i)
            all.push_back(applied(pass(0, type), i, frames).xmin);
        return all;
    };
    EXPECT_EQ(lows(PassType::TopToBottom, 4), (std::vector<double>{2, 5, 7, 10}));
    EXPECT_EQ(lows(PassType::BottomToTop, 4), (std::vector<double>{12, 9, 7, 4}));
    EXPECT_EQ(lows(PassType::SinglePlane, 4), (std::vector<double>{2, 5, 7, 10}));
    EXPECT_EQ(applied(pass(0, PassType::SinglePlane), 1, 4).xmax, 5);
    EXPECT_EQ(applied(pass(0, PassType::TopToBottom), 1, 4).xmax, 12);
    // Three frames out; two that go on from the far side: 12 - 10 * 0 / 2, 12 - 10 * 1 / 2.
    EXPECT_EQ(lows(PassType::OutAndIn, 5), (std::vector<double>{2, 5, 9, 12, 7}));
    EXPECT_EQ(lows(PassType::OutAndIn, 1), std::vector<double>{2});
}

TEST(PassThroughAction, ASinglePlaneLeavesTheHighSideWhereItWas)
{
    const Action action = pass(0, PassType::SinglePlane);
    const KeyFrame last = finished(action, applied(action, 3, 4), 4);
    EXPECT_EQ(last.xmin, 2);
    EXPECT_EQ(last.xmax, 10) << "only the view and the low sides come back";
    EXPECT_EQ(last.xrot, 10);
}

TEST(RockingAction, IsTheSlowReference)
{
    for (const int frames : {1, 2, 3, 4, 8, 15, 30, 61}) {
        for (const int swings : {1, 2, 4}) {
            if (frames < swings)
                continue;
            Action action = actionOf(ActionType::Rocking, 30, -20, 0);
            action.rotations = swings;
            for (int i = 0; i < frames; ++i) {
                const KeyFrame work = applied(action, i, frames);
                EXPECT_EQ(work.xrot, test::slowSwing(i, frames, swings, 30, 10).value_or(10));
                EXPECT_EQ(work.yrot, test::slowSwing(i, frames, swings, -20, 20).value_or(20));
                EXPECT_EQ(work.zrot, 30);
            }
        }
    }
}

TEST(RockingAction, SwingsByHand)
{
    // 8 frames: quarters of 2, a middle of 4.
    Action action = actionOf(ActionType::Rocking, 30, 0, 0);
    action.rotations = 1;
    const double expected[] = {10, -5, -20, -5, 10, 25, 40, 25};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(applied(action, i, 8).xrot, expected[i]) << i;
}

TEST(RockingAction, FramesBehindTheLastWholeSwingStandStill)
{
    // 14 frames in 3 swings of 4: 12 is the base once more, 13 is left as it was.
    Action action = actionOf(ActionType::Rocking, 30, 0, 0);
    action.rotations = 3;
    const double expected[] = {10, -20, 10, 40, 10, -20, 10, 40, 10, -20, 10, 40, 10, 99};
    for (int i = 0; i < 14; ++i) {
        KeyFrame work = startFrame();
        work.xrot = 99;
        TimePointCounter counter = 0;
        applyAction(action, startFrame(), work, {i, 14}, counter);
        EXPECT_EQ(work.xrot, expected[i]) << i;
    }
}

TEST(RockingAction, EndsAtTheStartsAngles)
{
    Action action = actionOf(ActionType::Rocking, 30, 30, 30);
    action.rotations = 3;
    KeyFrame work = startFrame();
    work.xrot = work.yrot = work.zrot = 99;
    EXPECT_EQ(finished(action, work, 16), startFrame());
    action.rotations = 0;
    EXPECT_EQ(applied(action, 3, 16), startFrame());
    action.rotations = 17;
    EXPECT_EQ(applied(action, 3, 16), startFrame()) << "a swing without frames";
}

TEST(CustomAction, ReplaysItsFramesAndComplainsPastTheEnd)
{
    Action action = actionOf(ActionType::Custom);
    action.keyFrames.resize(2);
    action.keyFrames[1].xrot = 7;
    const test::LogCapture log;
    KeyFrame replayed = action.keyFrames[1];
    replayed.palettes = startFrame().palettes;
    replayed.channels = startFrame().channels;
    EXPECT_EQ(applied(action, 1, 2), replayed) << "without palettes and channels those that were there stay";
    action.keyFrames[0].palettes = {{{1}, {2}, {3}, {4}}};
    action.keyFrames[0].channels = {{ChannelState::Hidden, 0, 0}};
    EXPECT_EQ(applied(action, 0, 2), action.keyFrames[0]);
    EXPECT_TRUE(log.lines().isEmpty());
    EXPECT_EQ(applied(action, 2, 2), startFrame());
    EXPECT_EQ(log.warnings(), QStringList{"Trying to load non-existant keyframe!!!!"});
}

struct TimeWalk
{
    std::vector<int> points;
    int last = 0;
    TimePointCounter counter = 0;
};

TimeWalk walk(const Action& action, int frames, TimePointCounter counter = 0)
{
    TimeWalk result;
    result.counter = counter;
    KeyFrame work = startFrame();
    for (int i = 0; i < frames; ++i) {
        applyAction(action, startFrame(), work, {i, frames}, result.counter);
        result.points.push_back(work.timepoint);
    }
    applyFinal(action, startFrame(), work, frames, result.counter);
    result.last = work.timepoint;
    return result;
}

Action timePoints(int perPoint, int start = -1, int end = -1)
{
    Action action = actionOf(ActionType::TimePoints);
    action.framesPerTimePoint = perPoint;
    action.start = start;
    action.end = end;
    return action;
}

TEST(TimePointsAction, GoesOnFromTheStart)
{
    const TimeWalk result = walk(timePoints(2), 5);
    EXPECT_EQ(result.points, (std::vector<int>{5, 5, 6, 6, 7}));
    EXPECT_EQ(result.last, 7) << "5 frames are 2 whole time points";
    EXPECT_EQ(result.counter, 1) << "the odd frame is left to the next time frame";
    EXPECT_EQ(walk(timePoints(2), 5, 1).points, (std::vector<int>{5, 6, 6, 7, 7}));
}

TEST(TimePointsAction, BeginsAndEndsWhereItIsTold)
{
    EXPECT_EQ(walk(timePoints(1, 2), 3).points, (std::vector<int>{2, 3, 4}));
    const TimeWalk ended = walk(timePoints(2, 0, 9), 3);
    EXPECT_EQ(ended.points, (std::vector<int>{0, 0, 1}));
    EXPECT_EQ(ended.last, 9);
    EXPECT_EQ(ended.counter, 0) << "the end is reached";
}

TEST(TimePointsAction, BeginsToCountAnewAtItsEnd)
{
    // From 5 on, a frame each; at 7 the count begins anew, but not at i = 0.
    EXPECT_EQ(walk(timePoints(1, -1, 7), 7).points, (std::vector<int>{5, 6, 7, 5, 6, 7, 5}));
    EXPECT_EQ(walk(timePoints(1, 7, 7), 3).points, (std::vector<int>{7, 8, 9}));
}

TEST(TimePointsAction, WithoutFramesTimeStandsStill)
{
    EXPECT_EQ(walk(timePoints(0), 3).points, (std::vector<int>{5, 5, 5}));
    EXPECT_EQ(walk(timePoints(0, 2, 4), 2).last, 4);
}

} // namespace
} // namespace tirn
