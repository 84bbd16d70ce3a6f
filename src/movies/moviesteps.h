#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "movies/keyframe.h"
#include "movies/moviesettings.h"

namespace tirn {

/// One thing that a movie does.
struct MovieStep
{
    enum class Kind {
        /// Draw the pose and write it as `frame`.
        Frame,
        /// Draw the pose and write the same picture as `frame`, `frame` + 1, ..., `pictures` times.
        Padding,
        /// Put time point `timePoint` in place of the one that is loaded.
        LoadTimePoint,
    };

    Kind kind = Kind::Frame;
    std::int64_t frame = 0;
    std::int64_t pictures = 1;
    int timePoint = 0;

    bool operator==(const MovieStep&) const = default;
};

/// Gives the next step of a movie and makes the pose fit it, which starts as what was shown before and is the
/// same from step to step. False at the end.
using MovieSteps = std::function<bool(MovieStep& step, KeyFrame& pose)>;

/// A movie of one predefined kind with all that its steps follow from.
struct PredefinedMovie
{
    MovieSettings settings;
    TimeSettings time;
    /// What was shown before the movie.
    KeyFrame start;
    /// The frames of a custom movie.
    std::vector<KeyFrame> recorded;
    /// Between two changes of flashing channels.
    int flashMilliseconds = 300;

    std::int64_t frames() const { return movieFrames(settings, static_cast<std::int64_t>(recorded.size())); }
    /// The pose that the steps start from: the start frame without its palettes, which a movie leaves alone,
    /// at the first time point.
    KeyFrame firstPose() const;
};

/// Frame by frame for the screen. Time passes behind frame 0 already.
MovieSteps previewSteps(const PredefinedMovie& movie);
/// Frame by frame for a file. Behind the last frame of all time points, padding may come in between.
MovieSteps regularSteps(const PredefinedMovie& movie);
/// For time points that do not fit into memory together: all frames of the first one, then all of the second,
/// ..., and the padding at last. The numbers are those of the regular movie's frames.
MovieSteps batchSteps(const PredefinedMovie& movie);

} // namespace tirn
