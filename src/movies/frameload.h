#pragma once

#include <array>
#include <optional>
#include <vector>

#include "movies/keyframe.h"

namespace tirn {

/// What a viewer shows of a stack. Arrays are in the order x, y, z.
struct ShownStack
{
    /// Voxel scale.
    std::array<double, 3> scale = {1, 1, 1};
    /// Slices along each axis.
    std::array<int, 3> slices = {};
    /// The cut box in slices, inclusive.
    std::array<int, 3> cutMin = {};
    std::array<int, 3> cutMax = {};
    int timePoint = 0;
    std::vector<ChannelDisplay> channels;

    bool operator==(const ShownStack&) const = default;
};

/// The part of a viewer that a key frame sets, besides the palettes.
struct ShownFrame
{
    /// In degrees.
    std::array<double, 3> rotation = {};
    std::array<double, 3> translation = {};
    /// Absent while no stack is current.
    std::optional<ShownStack> stack;

    bool operator==(const ShownFrame&) const = default;
};

/// Shows a key frame: sides of the cut box are truncated, and negative ones leave theirs as it was; the box
/// is then sorted and kept within the stack, since files may hold any numbers. Channels are set as far as
/// both are there. The time point is taken as it stands.
void loadKeyFrame(const KeyFrame& frame, ShownFrame& shown);

/// The key frame of what is shown, without palettes. Without a stack its part keeps its defaults.
KeyFrame keyFrameOf(const ShownFrame& shown);

} // namespace tirn
