#pragma once

#include <cstdint>
#include <span>

#include "movies/keyframe.h"
#include "movies/moviesettings.h"

namespace tirn {

// The pose of frame f of a movie of T frames, as plain functions: `start` is what was shown before the movie,
// `pose` what is shown now. Each function writes the part of the pose that the movie moves and leaves the
// rest. Frames count from 0.

/// Absolute angles of rotation in degrees.
void poseRotation(const RotationSettings& settings, const KeyFrame& start, std::int64_t f, KeyFrame& pose);

/// From the base to -angle, through to +angle and back to the base, again and again.
void poseRocking(const RockingSettings& settings, const KeyFrame& start, std::int64_t f, std::int64_t total,
                 KeyFrame& pose);

/// Looks along the axis and moves a side of the cut box by whole slices.
void posePassThrough(const PassSettings& settings, const KeyFrame& start, std::int64_t f, std::int64_t total,
                     KeyFrame& pose);

/// The recorded frame f with all that it holds.
void poseCustom(std::span<const KeyFrame> frames, std::int64_t f, KeyFrame& pose);

/// One of these by the movie's type; nothing moves where only time passes.
void poseMovie(const MovieSettings& settings, const KeyFrame& start, std::span<const KeyFrame> frames,
               std::int64_t f, std::int64_t total, KeyFrame& pose);

/// The frames between two changes of flashing channels: `flashMilliseconds` at 15 frames a second, at least
/// one.
std::int64_t framesPerFlash(int flashMilliseconds);

/// What the counter of frames does to the channels: at every `framesPerFlash`-th frame flashes turn and the
/// rotating light goes on.
void countFrame(std::int64_t f, int flashMilliseconds, KeyFrame& pose);

} // namespace tirn
