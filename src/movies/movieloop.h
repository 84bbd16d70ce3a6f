#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include <QString>

#include "base/progress.h"
#include "movies/framesink.h"
#include "movies/moviesteps.h"

namespace tirn {

/// What draws the frames of a movie: a window, or the card without one.
class FrameSource
{
public:
    virtual ~FrameSource() = default;

    /// Draws a pose. Its angles may lie outside of 0 to 360 degrees; without palettes those of the viewer
    /// stay. Where `picture` is not null it becomes what was drawn, valid until the next call.
    virtual bool draw(const KeyFrame& pose, FramePicture* picture) = 0;
    /// Puts another time point in place of the one that is loaded.
    virtual bool loadTimePoint(int timePoint) = 0;
    /// What people read when one of these failed.
    virtual QString error() const = 0;
};

/// Frames of a movie, both bounds inclusive.
struct FrameRange
{
    std::int64_t first = 0;
    std::int64_t last = 0;
};

/// A movie to be made.
struct MovieJob
{
    MovieSteps steps;
    /// The pose before the first step.
    KeyFrame start;
    /// The number of frames, for the progress.
    std::int64_t total = 0;
    /// Frames come out of order, so that a file needs their places in advance.
    bool outOfOrder = false;
    /// Only these are drawn and written, with the numbers of the whole movie.
    std::optional<FrameRange> range;

    /// The frames that are drawn and written, padding apart.
    std::int64_t wanted() const;
    bool isWanted(std::int64_t frame) const;
    /// Names each picture that will be written, padding among them, in the order in which they come.
    void forEachPicture(const std::function<void(std::int64_t frame)>& act) const;
};

/// How a movie ended.
struct MovieResult
{
    /// Pictures that were written, or drawn where there is no sink.
    std::int64_t pictures = 0;
    bool cancelled = false;
    /// Empty when the movie is complete or was cancelled.
    QString error;
};

/// Makes a movie: each step is drawn by the source and goes to the sink, or only to the screen where there is
/// none. Stops after the frame at hand when cancelled, and at the first failure; the sink is finished in
/// either case, so that what was written so far is readable, unless the first picture already failed. Each
/// frame costs the same, and none is kept.
MovieResult runMovie(const MovieJob& job, FrameSource& source, FrameSink* sink,
                     const Progress& progress = {});

} // namespace tirn
