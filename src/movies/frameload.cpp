#include "movies/frameload.h"

#include <algorithm>

namespace tirn {

namespace {

/// A side of the cut box: truncated and within the stack. A negative value, and what is no number, leave the
/// present one.
int loadedSide(double value, int present, int last)
{
    if (!(value >= 0))
        return std::clamp(present, 0, last);
    return static_cast<int>(std::min(value, static_cast<double>(last)));
}

void loadStack(const KeyFrame& frame, ShownStack& stack)
{
    stack.scale = {frame.xscale, frame.yscale, frame.zscale};
    const std::array<double, 3> low = {frame.xmin, frame.ymin, frame.zmin};
    const std::array<double, 3> high = {frame.xmax, frame.ymax, frame.zmax};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const int last = std::max(stack.slices[axis] - 1, 0);
        const int one = loadedSide(low[axis], stack.cutMin[axis], last);
        const int other = loadedSide(high[axis], stack.cutMax[axis], last);
        stack.cutMin[axis] = std::min(one, other);
        stack.cutMax[axis] = std::max(one, other);
    }
    stack.timePoint = frame.timepoint;
    const std::size_t channels = std::min(frame.channels.size(), stack.channels.size());
    std::copy_n(frame.channels.begin(), channels, stack.channels.begin());
}

} // namespace

void loadKeyFrame(const KeyFrame& frame, ShownFrame& shown)
{
    shown.rotation = {frame.xrot, frame.yrot, frame.zrot};
    shown.translation = {frame.xtrans, frame.ytrans, frame.ztrans};
    if (shown.stack)
        loadStack(frame, *shown.stack);
}

KeyFrame keyFrameOf(const ShownFrame& shown)
{
    KeyFrame frame;
    frame.xrot = shown.rotation[0];
    frame.yrot = shown.rotation[1];
    frame.zrot = shown.rotation[2];
    frame.xtrans = shown.translation[0];
    frame.ytrans = shown.translation[1];
    frame.ztrans = shown.translation[2];
    if (!shown.stack)
        return frame;
    const ShownStack& stack = *shown.stack;
    frame.xscale = stack.scale[0];
    frame.yscale = stack.scale[1];
    frame.zscale = stack.scale[2];
    frame.xmin = stack.cutMin[0];
    frame.ymin = stack.cutMin[1];
    frame.zmin = stack.cutMin[2];
    frame.xmax = stack.cutMax[0];
    frame.ymax = stack.cutMax[1];
    frame.zmax = stack.cutMax[2];
    frame.timepoint = stack.timePoint;
    frame.channels = stack.channels;
    return frame;
}

} // namespace tirn
