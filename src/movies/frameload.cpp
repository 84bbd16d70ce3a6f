#include "movies/frameload.h"

#include <algorithm>
#include <climits>

namespace tirn {

namespace {

void loadSide(double value, int& side)
{
    if (value >= 0)
        side = static_cast<int>(std::min(value, static_cast<double>(INT_MAX)));
}

void loadStack(const KeyFrame& frame, ShownStack& stack)
{
    stack.scale = {frame.xscale, frame.yscale, frame.zscale};
    loadSide(frame.xmin, stack.cutMin[0]);
    loadSide(frame.xmax, stack.cutMax[0]);
    loadSide(frame.ymin, stack.cutMin[1]);
    loadSide(frame.ymax, stack.cutMax[1]);
    loadSide(frame.zmin, stack.cutMin[2]);
    loadSide(frame.zmax, stack.cutMax[2]);
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
