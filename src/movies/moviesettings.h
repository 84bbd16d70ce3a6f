#pragma once

#include <array>
#include <cstdint>

namespace tirn {

/// The movie kinds; the numbers are the positions in the form's list.
enum class MovieType { Custom = 0, PassThrough = 1, Rotation = 2, Rocking = 3, TimeOnly = 4 };

/// What rotates or rocks; the numbers are the positions in the form's list. "Then" does one axis after the
/// other, "And" moves them together.
enum class MovieAxis {
    X = 0,
    Y = 1,
    Z = 2,
    XThenY = 3,
    XThenZ = 4,
    YThenZ = 5,
    XThenYThenZ = 6,
    XAndY = 7,
    XAndZ = 8,
    YAndZ = 9,
};

/// How a pass through cuts the volume; the numbers are the positions in the form's list.
enum class PassType { TopToBottom = 0, BottomToTop = 1, OutAndIn = 2, SinglePlane = 3 };

struct RotationSettings
{
    MovieAxis axis = MovieAxis::X;
    int rotations = 1;
    int framesPerRotation = 60;
    bool useOrientation = false;

    bool operator==(const RotationSettings&) const = default;
};

struct RockingSettings
{
    MovieAxis axis = MovieAxis::X;
    int rotations = 1;
    int framesPerMove = 30;
    /// In degrees to each side.
    int angle = 30;
    bool useOrientation = false;

    bool operator==(const RockingSettings&) const = default;
};

struct PassSettings
{
    /// 0, 1, 2 for x, y, z.
    int axis = 0;
    PassType type = PassType::TopToBottom;
    int frames = 1;
    bool useOrientation = false;

    bool operator==(const PassSettings&) const = default;
};

/// A movie of one predefined kind. Only the settings of its type count.
struct MovieSettings
{
    MovieType type = MovieType::Rotation;
    RotationSettings rotation;
    RockingSettings rocking;
    PassSettings pass;
    /// The frames of a movie in which only time passes.
    int timeOnlyFrames = 1;

    bool operator==(const MovieSettings&) const = default;
};

/// How time passes in a movie.
struct TimeSettings
{
    int timePoints = 1;
    int framesPerTimePoint = 1;
    /// Pictures that stand still whenever the time points begin again.
    int paddingFrames = 0;
    /// Where the movie begins, where it does not begin with time point 0.
    bool useCurrentTimePoint = false;
    int currentTimePoint = 0;

    bool operator==(const TimeSettings&) const = default;
};

/// Frames a second of the form's list, and of a place that is not in it.
constexpr std::array<int, 5> kFrameRates = {1, 5, 10, 15, 30};
constexpr int frameRate(int item)
{
    return item >= 0 && item < static_cast<int>(kFrameRates.size())
               ? kFrameRates[static_cast<std::size_t>(item)]
               : 15;
}

/// The frames that a movie has; `keyFrames` is the number of recorded frames of a custom one. Never negative.
std::int64_t movieFrames(const MovieSettings& settings, std::int64_t keyFrames);

} // namespace tirn
