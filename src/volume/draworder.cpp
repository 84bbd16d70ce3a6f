#include "volume/draworder.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "base/log.h"

namespace tirn {

namespace {

constexpr const char* kNames[] = {"XY FORWARD", "XY REVERSE", "YZ FORWARD",
                                  "YZ REVERSE", "XZ FORWARD", "XZ REVERSE"};

/// How far a clip plane stands outside the slice on the bound.
constexpr double kClipMargin = 0.004;

/// Absolute z component of a column after normalising it, in single precision throughout.
float normalisedZ(const std::array<float, 16>& m, std::size_t column)
{
    const float x = m[4 * column];
    const float y = m[4 * column + 1];
    const float z = m[4 * column + 2];
    const auto length = static_cast<float>(std::sqrt(static_cast<double>(x * x + y * y + z * z)));
    return length > 0 ? std::abs(z / length) : 0.0F;
}

int quotient(int numerator, int denominator) { return numerator / std::max(1, denominator); }

} // namespace

const char* orientationName(Orientation orientation)
{
    const auto index = static_cast<std::size_t>(orientation);
    return index < std::size(kNames) ? kNames[index] : "";
}

Orientation orientationOf(const std::array<float, 16>& m)
{
    const float a = normalisedZ(m, 0);
    const float b = normalisedZ(m, 1);
    const float c = normalisedZ(m, 2);
    const bool xWins = c <= b ? b <= a : c <= a;
    if (xWins)
        return m[2] >= 0 ? Orientation::YZForward : Orientation::YZReverse;
    if (c <= b)
        return m[6] >= 0 ? Orientation::XZForward : Orientation::XZReverse;
    return m[10] >= 0 ? Orientation::XYForward : Orientation::XYReverse;
}

int orientationSlot(Orientation orientation)
{
    switch (orientation) {
    case Orientation::XYForward:
        return 4;
    case Orientation::XYReverse:
        return 5;
    case Orientation::YZForward:
        return 2;
    case Orientation::YZReverse:
        return 3;
    case Orientation::XZForward:
        return 0;
    case Orientation::XZReverse:
        return 1;
    case Orientation::Current:
        break;
    }
    logWarning("Hit impossible orientation!");
    return 0;
}

namespace {

CutBox cutWithin(CutBox box, int x, int y, int z)
{
    const auto bound = [](int& least, int& most, int size) {
        std::tie(least, most) = std::minmax(
            {std::clamp(least, 0, std::max(0, size - 1)), std::clamp(most, 0, std::max(0, size - 1))});
    };
    bound(box.xMin, box.xMax, x);
    bound(box.yMin, box.yMax, y);
    bound(box.zMin, box.zMax, z);
    return box;
}

} // namespace

CutBox boundedCut(const CutBox& cut, const StackGeometry& geometry)
{
    return cutWithin(cut, geometry.x, geometry.y, geometry.finalDepth());
}

CutBox boundedCut(const CutBox& cut, const VoxelArray& array)
{
    return cutWithin(cut, array.width(), array.height(), array.finalDepth());
}

SliceWalk renderListParameters(Orientation orientation, const StackGeometry& g, const CutBox& cutBox)
{
    const CutBox cut = boundedCut(cutBox, g);
    const int zGroup = g.yGroup() + g.xGroup();
    const int xGroup = g.yGroup();
    switch (orientation) {
    case Orientation::XYForward:
        return {g.xBlocks * g.yBlocks, zGroup, cut.zMax, cut.zMin, -1};
    case Orientation::XYReverse:
        return {g.xBlocks * g.yBlocks, zGroup, cut.zMin, cut.zMax, 1};
    // The slices along x are stored from the far end, so their bounds are mirrored.
    case Orientation::YZForward:
        return {g.yBlocks * g.zBlocks, xGroup, g.x - cut.xMin - 1, g.x - cut.xMax - 1, -1};
    case Orientation::YZReverse:
        return {g.yBlocks * g.zBlocks, xGroup, g.x - cut.xMax - 1, g.x - cut.xMin - 1, 1};
    case Orientation::XZForward:
        return {g.xBlocks * g.zBlocks, 0, cut.yMax, cut.yMin, -1};
    case Orientation::XZReverse:
        return {g.xBlocks * g.zBlocks, 0, cut.yMin, cut.yMax, 1};
    case Orientation::Current:
        break;
    }
    logWarning("Hit impossible orientation in rebuild_render_list()");
    return {0, 0, 0, 0, 1};
}

int brickOf(Orientation orientation, const StackGeometry& g, int slice, int block)
{
    switch (orientation) {
    case Orientation::XYForward:
    case Orientation::XYReverse:
        return quotient(slice, g.finalDepth() / g.zBlocks) * (g.xBlocks * g.yBlocks) + block;
    case Orientation::YZForward:
    case Orientation::YZReverse:
        return block * g.xBlocks + (g.xBlocks - quotient(slice, g.x / g.xBlocks) - 1);
    case Orientation::XZForward:
    case Orientation::XZReverse:
        // The factors are those of z and y, not of y and x; it matters only for several blocks on both.
        return (block / g.xBlocks) * (g.xBlocks * g.zBlocks) + quotient(slice, g.y / g.yBlocks) * g.yBlocks +
               block % g.xBlocks;
    case Orientation::Current:
        break;
    }
    logWarning("Hit impossible orientation!");
    return 0;
}

std::array<ClipPlane, 6> clipPlanes(Orientation orientation, const StackGeometry& g, const CutBox& cutBox)
{
    const CutBox cut = boundedCut(cutBox, g);
    std::array<ClipPlane, 6> planes;
    // Positions fall as slice numbers rise, so a low slice number bounds the positive end.
    const auto below = [&](int slice, int axis, std::array<double, 3> normal) {
        return ClipPlane{true, {normal[0], normal[1], normal[2], quadPosition(g, slice, axis) + kClipMargin}};
    };
    const auto above = [&](int slice, int axis, std::array<double, 3> normal) {
        return ClipPlane{true,
                         {normal[0], normal[1], normal[2], -(quadPosition(g, slice, axis) - kClipMargin)}};
    };
    if (orientation != Orientation::XZForward && orientation != Orientation::XZReverse) {
        if (cut.yMin > 0)
            planes[0] = below(cut.yMin, 1, {0, -1, 0});
        if (cut.yMax < g.y - 1)
            planes[1] = above(cut.yMax, 1, {0, 1, 0});
    }
    if (orientation != Orientation::YZForward && orientation != Orientation::YZReverse) {
        if (g.x - cut.xMax - 1 > 0)
            planes[2] = below(g.x - cut.xMax - 1, 0, {-1, 0, 0});
        if (g.x - cut.xMin - 1 < g.x - 1)
            planes[3] = above(g.x - cut.xMin - 1, 0, {1, 0, 0});
    }
    if (orientation != Orientation::XYForward && orientation != Orientation::XYReverse) {
        if (cut.zMin > 0)
            planes[4] = below(cut.zMin, 2, {0, 0, -1});
        if (cut.zMax < g.finalDepth() - 1)
            planes[5] = above(cut.zMax, 2, {0, 0, 1});
    }
    return planes;
}

} // namespace tirn
