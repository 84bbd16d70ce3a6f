#pragma once

#include <cstdint>

#include "movies/action.h"

namespace tirn {

/// Where an action stands: frame i of N of a time frame.
struct FramePlace
{
    std::int64_t i = 0;
    std::int64_t frames = 0;
};

/// The frames that have passed at a time point. One for a whole movie, at 0 when it begins.
using TimePointCounter = std::int64_t;

/// Writes an action's share of a frame into `work`, from `start`, which the time frame began with.
void applyAction(const Action& action, const KeyFrame& start, KeyFrame& work, const FramePlace& place,
                 TimePointCounter& counter);

/// The same at the end of the time frame, i = N, where rocking has come back to the start's angles.
void applyFinal(const Action& action, const KeyFrame& start, KeyFrame& work, std::int64_t frames,
                TimePointCounter& counter);

} // namespace tirn
