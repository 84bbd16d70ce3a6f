#pragma once

#include <cstdint>
#include <functional>

#include "base/progress.h"
#include "image/allocationerror.h"
#include "image/imagefile.h"

namespace tirn {

// All filters of this room: `channel` -1 means all. They return false, and leave the stack as it was, when
// there is no stack or the work was cancelled; without room they throw AllocationError. `size` is that of a
// window, h = size / 2; `is3D` extends it along z.

/// A piece of a stack that one thread filters at a time: rows [y0, y1) of layers [z0, z1).
struct FilterPart
{
    int z0;
    int z1;
    int y0;
    int y1;
};

/// How a stack is cut into parts.
struct PartLimits
{
    /// The most layers of a part.
    int layers = 1;
    /// Where there are too few layers to go round, rows are split, too, into at least and at most these.
    int leastRows = 64;
    int mostRows = 1 << 30;
};

/// Calls `body` for parts that together cover the stack, on all cores. False when cancelled, which is looked
/// at between parts.
bool forEachPart(const ImageAttributes& attributes, const PartLimits& limits, const Progress& progress,
                 const std::function<void(const FilterPart&)>& body);

/// True when a filter can work on a channel, or on all for -1, after reading the voxels again if need be.
bool canFilter(ImageFile& stack, int channel);

/// The widest window of the filters that repeat the edges; wider ones are refused.
constexpr int kWidestWindow = 1023;

/// Runs a filter; std::bad_alloc on the way becomes an AllocationError with `text`, a literal.
template <class Body>
auto withAllocationText(const char* text, Body body)
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        throw AllocationError(text);
    }
}

/// Gives all channels but one of `result` the samples of `stack`; nothing to do for channel -1.
void keepOtherChannels(const ImageFile& stack, int channel, VoxelBuffer& result);

} // namespace tirn
