#pragma once

#include "volume/voxelarray.h"

namespace tirn {

/// The numbers of two sliders, or two bounds, on one axis; inclusive.
struct SliceRange
{
    int low = 0;
    int high = 0;

    bool operator==(const SliceRange&) const = default;
};

/// Moves the upper bound, which may go as far as `limits`, and pushes the lower one along where fewer than
/// `interval` slices would be left.
SliceRange withHigh(SliceRange bounds, int high, int interval, const SliceRange& limits);
/// The same for the lower bound.
SliceRange withLow(SliceRange bounds, int low, int interval, const SliceRange& limits);

/// How the slices of a file that are drawn along one axis are counted: numbers first to last of the file,
/// every step-th of which was read, `subsample` of these made one slice, and `slices` of them drawn as
/// `drawn`.
struct FileAxis
{
    int first = 0;
    int last = 0;
    int step = 1;
    int subsample = 1;
    int slices = 1;
    int drawn = 1;

    /// Numbers of the file from one slice to the next.
    int unit() const { return step * subsample; }
    SliceRange limits() const { return {first, last}; }
    bool operator==(const FileAxis&) const = default;
};
/// Axes are 0, 1, 2 for x, y, z. A volume that is not what its first file says is counted from 0.
FileAxis fileAxisOf(const VoxelArray& array, int axis);

/// The drawn slice of a slice of the file; outside of what was read it is the nearest one, which is logged.
int fileToQuad(int fileSlice, const FileAxis& axis);
/// The slices of the file that a range of drawn slices shows, from the first to the last; at least all that
/// is drawn.
SliceRange fileRangeOf(const SliceRange& quads, const FileAxis& axis);
/// How many drawn slices `interval` slices of the file are.
int quadsOf(int interval, const FileAxis& axis);

/// The bounds of a cut box on an axis.
SliceRange cutRange(const CutBox& cut, int axis);
void setCutRange(CutBox& cut, int axis, const SliceRange& range);

/// Where the outline of a cut box lies on x, y and z, lower and upper edge, in drawing units. Along y and z
/// positions fall as slice numbers rise.
std::array<std::array<double, 2>, 3> cutBoxEdges(const StackGeometry& geometry, const CutBox& cut);

} // namespace tirn
