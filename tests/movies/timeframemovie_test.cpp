#include <gtest/gtest.h>

#include "movies/actionstate.h"
#include "movies/timeframemovie.h"
#include "support/logcapture.h"

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

Action timePoints(int perPoint)
{
    Action action = actionOf(ActionType::TimePoints);
    action.framesPerTimePoint = perPoint;
    return action;
}

/// A single plane along z lasts as many frames as the stack has slices.
Action singlePlane()
{
    Action action = actionOf(ActionType::PassThrough, 0, 0, 1);
    action.passType = PassType::SinglePlane;
    return action;
}

std::vector<KeyFrame> poses(const MovieSteps& steps, const KeyFrame& first = {})
{
    std::vector<KeyFrame> all;
    MovieStep step;
    KeyFrame pose = first;
    while (steps(step, pose)) {
        if (step.kind == MovieStep::Kind::Frame) {
            EXPECT_EQ(step.frame, static_cast<std::int64_t>(all.size()));
            all.push_back(pose);
        }
    }
    return all;
}

TEST(TimeFrameMovie, ATimeFrameWithoutActionsIsAStillPicture)
{
    TimeFrameMovie movie;
    movie.timeFrames = {{{}, 2}};
    movie.start.xrot = 30;
    movie.start.xscale = 3;
    KeyFrame still = movie.start;
    still.xrot = 0;
    EXPECT_EQ(movie.frames(), 30);
    EXPECT_EQ(poses(timeFrameSteps(movie)), std::vector<KeyFrame>(30, still));
    movie.useOrientation = true;
    EXPECT_EQ(poses(timeFrameSteps(movie)), std::vector<KeyFrame>(30, movie.start));
}

TEST(TimeFrameMovie, EachTimeFrameStartsWithTheEndOfTheOneBefore)
{
    TimeFrameMovie movie;
    movie.timeFrames = {
        {{actionOf(ActionType::Rotation, 1, 0, 0), actionOf(ActionType::Scale, 2, 1, 1)}, 1},
        {{actionOf(ActionType::Translation, 0, 3, 0), actionOf(ActionType::Rotation, 0, 0.5, 0)}, 1}};
    const std::vector<KeyFrame> all = poses(timeFrameSteps(movie));
    ASSERT_EQ(all.size(), 30U);
    EXPECT_EQ(all[0].xrot, 0);
    EXPECT_EQ(all[14].xrot, 360 * 14 / 15.0);
    EXPECT_EQ(all[15].xrot, 360);
    EXPECT_EQ(all[15].xscale, 2);
    EXPECT_EQ(all[15].ytrans, 0);
    EXPECT_EQ(all[20].ytrans, 5 * 3.0 / 15);
    EXPECT_EQ(all[20].yrot, 0.5 * 360 * 5 / 15);
}

TEST(TimeFrameMovie, ACustomTimeFrameLastsAsLongAsItsFrames)
{
    TimeFrameMovie movie;
    Action custom = actionOf(ActionType::Custom);
    custom.keyFrames.resize(3);
    custom.keyFrames[2].xtrans = 9;
    movie.timeFrames = {{{custom}, 100}, {{}, 1}, {{actionOf(ActionType::Custom)}, 5}};
    EXPECT_EQ(movie.frames(), 18);
    const std::vector<KeyFrame> all = poses(timeFrameSteps(movie));
    ASSERT_EQ(all.size(), 18U);
    EXPECT_EQ(all[2], custom.keyFrames[2]);
    EXPECT_EQ(all[3], custom.keyFrames[2]) << "the next one goes on from there";
}

TEST(TimeFrameMovie, LogsWhatItDoes)
{
    TimeFrameMovie movie;
    movie.timeFrames = {{{singlePlane(), actionOf(ActionType::Scale, 1, 1, 1)}, 1}};
    movie.size = {8, 8, 1};
    movie.start.timepoint = 4;
    const test::LogCapture log;
    poses(timeFrameSteps(movie));
    EXPECT_EQ(log.lines(),
              (QStringList{"flashcount 4", "doing timeframe", "doing Action 0", "doing Action 1",
                           "Frame 1 timepoint 4", "doing Action final 0", "doing Action final 1"}));
}

TEST(TimeFrameMovie, OddFramesGoOnIntoTheNextTimeFrame)
{
    TimeFrameMovie movie;
    movie.size = {8, 8, 5};
    movie.timeFrames = {{{singlePlane(), timePoints(2)}, 1}, {{singlePlane(), timePoints(2)}, 1}};
    std::vector<int> points;
    for (const KeyFrame& pose : poses(timeFrameSteps(movie)))
        points.push_back(pose.timepoint);
    EXPECT_EQ(points, (std::vector<int>{0, 0, 1, 1, 2, 2, 3, 3, 4, 4}));
}

TEST(TimeFrameMovie, ChannelsFlashInWholeFrames)
{
    TimeFrameMovie movie;
    movie.size = {8, 8, 10};
    movie.timeFrames = {{{singlePlane()}, 1}};
    movie.flashMilliseconds = 250; // 3.75 frames
    movie.start.channels = {{ChannelState::FlashOn, 0, 0},
                            {ChannelState::PaletteSwap, 1, 2},
                            {ChannelState::RotatingFlashOn, 0, 0},
                            {ChannelState::RotatingFlashWaiting, 0, 0}};
    QString first;
    QString palettes;
    for (const KeyFrame& pose : poses(timeFrameSteps(movie))) {
        first += isHidden(pose.channels[0].state) ? '.' : '#';
        palettes += QString::number(pose.channels[1].palette);
        EXPECT_EQ(pose.channels[2].state, ChannelState::RotatingFlashOn) << "no light goes round here";
    }
    EXPECT_EQ(first, "...###...#");
    EXPECT_EQ(palettes, "1112221112");
    movie.flashMilliseconds = 10;
    first.clear();
    for (const KeyFrame& pose : poses(timeFrameSteps(movie)))
        first += isHidden(pose.channels[0].state) ? '.' : '#';
    EXPECT_EQ(first, ".#.#.#.#.#") << "at least a frame each";
}

TEST(TimeFrameMovie, AFadeGoesOnFromWhatTheOneBeforeLeft)
{
    TimeFrameMovie movie;
    Action fadeOut = actionOf(ActionType::Palette);
    fadeOut.paletteActions = {static_cast<int>(PaletteAction::FadeOut)};
    fadeOut.paletteAfter = {0};
    Action fadeTo = fadeOut;
    fadeTo.paletteActions = {static_cast<int>(PaletteAction::FadeTo)};
    fadeTo.paletteAfter = {1};
    movie.timeFrames = {{{fadeOut}, 1}, {{fadeTo}, 1}};
    movie.start.channels = {{ChannelState::Shown, 0, 0}};
    movie.start.palettes = {{{150}, {30}, {0}, {60}}, {{15}, {45}, {75}, {105}}};
    const std::vector<KeyFrame> all = poses(timeFrameSteps(movie));
    EXPECT_EQ(all[5].palettes[0], (PaletteValues{{100}, {20}, {0}, {40}}));
    EXPECT_EQ(all[15].palettes[0], (PaletteValues{{0}, {0}, {0}, {0}}));
    EXPECT_EQ(all[20].palettes[0], (PaletteValues{{5}, {15}, {25}, {35}}));
    EXPECT_EQ(all[20].palettes[1], movie.start.palettes[1]);
}

TEST(TimeFrameMovie, AFadeBehindRecordedFramesWithoutPalettesFadesWhatWasThere)
{
    TimeFrameMovie movie;
    Action custom = actionOf(ActionType::Custom);
    custom.keyFrames.resize(2);
    Action fadeOut = actionOf(ActionType::Palette);
    fadeOut.paletteActions = {static_cast<int>(PaletteAction::FadeOut)};
    fadeOut.paletteAfter = {0};
    movie.timeFrames = {{{custom}, 1}, {{fadeOut}, 1}};
    movie.start.channels = {{ChannelState::Shown, 0, 0}};
    movie.start.palettes = {{{150}, {30}, {0}, {60}}};
    const std::vector<KeyFrame> all = poses(timeFrameSteps(movie));
    ASSERT_EQ(all.size(), 17U);
    EXPECT_EQ(all[1].palettes, movie.start.palettes);
    EXPECT_EQ(all[2 + 5].palettes[0], (PaletteValues{{100}, {20}, {0}, {40}}));
}

TEST(FramesByTimePoint, NamesEachFrameOnceInAscendingOrder)
{
    TimeFrameMovie movie;
    movie.size = {8, 8, 7};
    movie.timeFrames = {{{singlePlane(), timePoints(2)}, 1}, {{singlePlane(), timePoints(2)}, 1}};
    // 0 0 1 1 2 2 0 | 0 1 1 2 2 0 0, the second time frame going on with time point 3 and one odd frame.
    EXPECT_EQ(framesByTimePoint(movie, 3),
              (std::vector<std::vector<std::int64_t>>{{0, 1, 6, 7, 12, 13}, {2, 3, 8, 9}, {4, 5, 10, 11}}));
    EXPECT_EQ(framesByTimePoint(movie, 1)[0].size(), 14U);
    EXPECT_TRUE(framesByTimePoint(movie, 0).empty());
}

TEST(TimeFrameBatch, DrawsThePosesOfTheMovieTimePointByTimePoint)
{
    TimeFrameMovie movie;
    movie.size = {8, 8, 4};
    movie.timeFrames = {{{timePoints(2), actionOf(ActionType::Rotation, 1, 0, 0)}, 1},
                        {{timePoints(2), actionOf(ActionType::Translation, 1, 0, 0)}, 1}};
    const std::vector<KeyFrame> expected = poses(timeFrameSteps(movie));
    const MovieSteps steps = timeFrameBatchSteps(movie, 3);
    MovieStep step;
    KeyFrame pose;
    std::vector<int> loaded;
    std::vector<std::int64_t> frames;
    while (steps(step, pose)) {
        if (step.kind == MovieStep::Kind::LoadTimePoint) {
            loaded.push_back(step.timePoint);
            continue;
        }
        frames.push_back(step.frame);
        const KeyFrame& same = expected[static_cast<std::size_t>(step.frame)];
        EXPECT_EQ(pose.xrot, same.xrot);
        EXPECT_EQ(pose.xtrans, same.xtrans);
        EXPECT_EQ(same.timepoint % 3, loaded.back());
    }
    EXPECT_EQ(loaded, (std::vector<int>{0, 1, 2}));
    std::vector<std::int64_t> wanted;
    for (const auto& row : framesByTimePoint(movie, 3))
        wanted.insert(wanted.end(), row.begin(), row.end());
    EXPECT_EQ(frames, wanted);
    EXPECT_EQ(frames.size(), 30U);
}

TEST(TimeFrameBatch, StartsTimeFramesWithTheEndsOfThoseBefore)
{
    // What the frames of a time frame leave behind beyond its end does not get through: here the frames of a
    // custom one, which have no end of their own.
    TimeFrameMovie movie;
    Action custom = actionOf(ActionType::Custom);
    custom.keyFrames.resize(1);
    custom.keyFrames[0].xtrans = 9;
    movie.timeFrames = {{{custom}, 1}, {{}, 1}};
    movie.start.xtrans = 1;
    const std::vector<KeyFrame> all = poses(timeFrameBatchSteps(movie, 1));
    ASSERT_EQ(all.size(), 16U);
    EXPECT_EQ(all[0].xtrans, 9);
    EXPECT_EQ(all[1].xtrans, 1);
}

TEST(TimeFrameBatch, NothingFlashesAndEmptyTimePointsAreLoadedAllTheSame)
{
    TimeFrameMovie movie;
    movie.timeFrames = {{{}, 1}};
    movie.start.channels = {{ChannelState::FlashOn, 0, 0}};
    const MovieSteps steps = timeFrameBatchSteps(movie, 3);
    MovieStep step;
    KeyFrame pose;
    int loads = 0;
    while (steps(step, pose)) {
        loads += step.kind == MovieStep::Kind::LoadTimePoint;
        EXPECT_TRUE(pose.channels.empty() || pose.channels[0].state == ChannelState::FlashOn);
    }
    EXPECT_EQ(loads, 3);
}

} // namespace
} // namespace tirn
