#pragma once

#include <cstdint>
#include <vector>

#include "movies/action.h"
#include "movies/moviesteps.h"

namespace tirn {

/// A movie composed of time frames, one after the other.
struct TimeFrameMovie
{
    std::vector<TimeFrame> timeFrames;
    StackSize size = {};
    /// What was shown before the movie, with all palettes.
    KeyFrame start;
    bool useOrientation = false;
    /// Between two changes of flashing channels.
    int flashMilliseconds = 300;

    std::int64_t frames() const;
    /// The frame that the first time frame begins with.
    KeyFrame firstPose() const;
};

/// Frame by frame, for the screen and for a file.
MovieSteps timeFrameSteps(const TimeFrameMovie& movie);

/// The frames that show each of so many time points, in ascending order. Time points past the last begin
/// again at the first.
std::vector<std::vector<std::int64_t>> framesByTimePoint(const TimeFrameMovie& movie, int timePoints);

/// For time points that do not fit into memory together: all frames of the first one, then all of the second,
/// and so on. Each time frame begins with what the ends of those before it make of the first pose, so that
/// the frames can come in any order; nothing flashes.
MovieSteps timeFrameBatchSteps(const TimeFrameMovie& movie, int timePoints);

} // namespace tirn
