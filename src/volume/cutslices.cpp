#include "volume/cutslices.h"

#include "base/log.h"

namespace tirn {

namespace {

/// How far apart the bounds stay: never more than the limits allow.
int spread(int interval, const SliceRange& limits)
{
    // Whatever numbers come, none of them overflows.
    const std::int64_t widest = std::max<std::int64_t>(0, std::int64_t{limits.high} - limits.low);
    return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{interval} - 1, 0, widest));
}

/// The drawn slice that lies at a slice of the stack.
int quadOfSlice(std::int64_t slice, const FileAxis& axis)
{
    return static_cast<int>(std::floor((axis.drawn - 1) * slice * 1.0 / (axis.slices - 1)));
}

/// What an axis along which nothing was left out is counted by.
FileAxis plainAxis(int slices, int drawn) { return {0, std::max(0, slices - 1), 1, 1, slices, drawn}; }

FileAxis flatAxis(int size, int fileSize, int subsample)
{
    FileAxis axis = plainAxis(size, size);
    axis.subsample = std::max(1, subsample);
    axis.last = size * axis.subsample - 1;
    // The last voxel may stand for fewer than the others.
    if (fileSize > (size - 1) * axis.subsample)
        axis.last = std::min(axis.last, fileSize - 1);
    return axis;
}

FileAxis deepAxis(const VoxelArray& array)
{
    FileAxis axis = plainAxis(array.depth(), array.finalDepth());
    if (array.images().empty())
        return axis;
    const ImageFile& image = *array.images().front();
    FileAxis read = axis;
    read.first = image.firstLayer();
    read.last = image.lastLayer();
    read.step = std::max(1, image.layerStep());
    read.subsample = std::max(1, array.subsample);
    const bool isWhatWasRead =
        read.first >= 0 && (read.last - read.first) / read.step / read.subsample >= read.slices - 1;
    return isWhatWasRead ? read : axis;
}

} // namespace

SliceRange withHigh(SliceRange bounds, int high, int interval, const SliceRange& limits)
{
    const int apart = spread(interval, limits);
    bounds.high = std::clamp(high, limits.low + apart, std::max(limits.low + apart, limits.high));
    bounds.low = std::min(bounds.low, bounds.high - apart);
    return bounds;
}

SliceRange withLow(SliceRange bounds, int low, int interval, const SliceRange& limits)
{
    const int apart = spread(interval, limits);
    bounds.low = std::clamp(low, std::min(limits.low, limits.high - apart), limits.high - apart);
    bounds.high = std::max(bounds.high, bounds.low + apart);
    return bounds;
}

FileAxis fileAxisOf(const VoxelArray& array, int axis)
{
    if (axis == 0)
        return flatAxis(array.width(), array.stack().fileX, array.subsample);
    if (axis == 1)
        return flatAxis(array.height(), array.stack().fileY, array.subsample);
    return deepAxis(array);
}

int fileToQuad(int fileSlice, const FileAxis& axis)
{
    if (axis.slices < 2)
        return 0;
    const std::int64_t slice = (std::int64_t{fileSlice} - axis.first) / axis.step / axis.subsample;
    const int quad = quadOfSlice(std::clamp<std::int64_t>(slice, -1, axis.slices), axis);
    if (quad < 0) {
        logDebug("quad < 0 crud!");
        return 0;
    }
    if (quad >= axis.drawn) {
        logDebug("quad beyond the last slice");
        return axis.drawn - 1;
    }
    return quad;
}

SliceRange fileRangeOf(const SliceRange& quads, const FileAxis& axis)
{
    int low = 0;
    int high = axis.slices - 1;
    while (low < high && quadOfSlice(low + 1, axis) <= quads.low)
        ++low;
    while (high > low && quadOfSlice(high - 1, axis) >= quads.high)
        --high;
    const int lastOfHigh = (high * axis.subsample + axis.subsample - 1) * axis.step;
    return {axis.first + low * axis.unit(),
            high == axis.slices - 1 ? axis.last : std::min(axis.last, axis.first + lastOfHigh)};
}

int quadsOf(int interval, const FileAxis& axis)
{
    return fileToQuad(std::min(axis.last, axis.first + std::max(1, interval) - 1), axis) + 1;
}

SliceRange cutRange(const CutBox& cut, int axis)
{
    return axis == 0   ? SliceRange{cut.xMin, cut.xMax}
           : axis == 1 ? SliceRange{cut.yMin, cut.yMax}
                       : SliceRange{cut.zMin, cut.zMax};
}

void setCutRange(CutBox& cut, int axis, const SliceRange& range)
{
    (axis == 0 ? cut.xMin : axis == 1 ? cut.yMin : cut.zMin) = range.low;
    (axis == 0 ? cut.xMax : axis == 1 ? cut.yMax : cut.zMax) = range.high;
}

std::array<std::array<double, 2>, 3> cutBoxEdges(const StackGeometry& g, const CutBox& cut)
{
    const double m = g.maxPow();
    const int depth = g.finalDepth();
    // A resliced stack counts more slices over the same length.
    const double zUnit = static_cast<double>(g.z) / depth;
    return {{{(2 * cut.xMin - g.x) / m, (g.x - 2 * (g.x - cut.xMax) + 2) / m},
             {(-2 - g.y + 2 * (g.y - cut.yMax)) / m, (g.y - 2 * cut.yMin) / m},
             {(-2 - depth + 2 * (depth - cut.zMax)) * zUnit / m, (depth - 2 * cut.zMin) * zUnit / m}}};
}

} // namespace tirn
