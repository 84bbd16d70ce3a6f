#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <QString>

#include "movies/keyframe.h"
#include "movies/moviesettings.h"

namespace tirn {

/// What an action does; the numbers are the rows of the table of time frames.
enum class ActionType {
    Rotation = 0,
    Scale = 1,
    Translation = 2,
    Palette = 3,
    PassThrough = 4,
    Rocking = 5,
    Custom = 6,
    TimePoints = 7,
};

/// What becomes of a channel's palette; the numbers are the positions in the list.
enum class PaletteAction {
    None = 0,
    ChangeTo = 1,
    Off = 2,
    FadeIn = 3,
    FadeOut = 4,
    FadeTo = 5,
    FlashOnOff = 6,
    FlashTo = 7,
};

/// Size of a stack in voxels: width, height, slices.
using StackSize = std::array<int, 3>;

/// One thing that happens during a time frame. Only the fields of its type count.
struct Action
{
    ActionType type = ActionType::Rotation;
    /// Rocking: the number of swings.
    int rotations = 0;
    /// Rotation: turns about each axis. Scale: the scale at the end. Translation: the distance. Pass through:
    /// 1.0 on the axis. Rocking: degrees about each axis.
    double x = 0;
    double y = 0;
    double z = 0;
    PassType passType = PassType::TopToBottom;
    /// Time points: 0 for time that stands still; the first and the last one, -1 for what follows by itself.
    int framesPerTimePoint = 0;
    int start = -1;
    int end = -1;
    /// Custom: the recorded frames.
    std::vector<KeyFrame> keyFrames;
    /// Palette: what is done to each channel, a PaletteAction, and the index of the palette that follows.
    std::vector<int> paletteActions;
    std::vector<int> paletteAfter;

    /// "Rotation", "Scale", "Translation", "Palette", "Pass Through", "Rocking", "Custom", "Timepoints", and
    /// "Not a clue" for anything else.
    QString name() const;

    bool operator==(const Action&) const = default;
};

/// Frames of a second of a time frame.
constexpr int kFramesPerSecond = 15;

/// The range of a time frame's seconds.
constexpr int kLeastSeconds = 1;
constexpr int kMostSeconds = 9999;

/// Actions that run together for some seconds.
struct TimeFrame
{
    std::vector<Action> actions;
    int seconds = 1;

    /// Its frames: 15 a second, unless the first action says otherwise: the recorded frames of a custom one,
    /// the slices along the axis of a single plane. Never negative.
    std::int64_t frames(const StackSize& size) const;

    bool operator==(const TimeFrame&) const = default;
};

/// Whether `added` may join `existing` in a time frame. The rule goes one way: Custom may join others,
/// nothing joins Custom.
bool areCompatible(const Action& existing, const Action& added);

/// Adds an action, time points in front of all others. False, and nothing changes, when one that is there
/// does not go with it.
bool addAction(TimeFrame& timeFrame, const Action& action);

/// What people read then.
QString incompatibleText(const Action& action);

/// Makes time pass in each time frame of a stack with several time points, as a new time frame of one does. A
/// rotation by nothing in front, which is what a session file makes of time points, is replaced; a time frame
/// of recorded frames, which bring their own time points, stays as it is.
void letTimePass(std::vector<TimeFrame>& timeFrames, int framesPerTimePoint);

/// The angles about the axes that an item of the rocking axis box gives: X, Y, Z, X and Y, X and Z, Y and Z.
std::array<double, 3> rockingAngles(int item, double angle);

} // namespace tirn
