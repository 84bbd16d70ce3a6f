#pragma once

#include <array>
#include <cstdint>

#include "volume/stackgeometry.h"
#include "volume/voxelarray.h"

namespace tirn {

/// From which side a volume is seen. The numbers are part of the program's language.
enum class Orientation {
    XYForward = 0, ///< planes at constant z, viewer on the positive side
    XYReverse = 1,
    YZForward = 2, ///< planes at constant x
    YZReverse = 3,
    XZForward = 4, ///< planes at constant y
    XZReverse = 5,
    Current = 6, ///< whatever the matrix yields now
};

/// "XY FORWARD" and so on, as the frame overlay shows it.
const char* orientationName(Orientation orientation);

/// The orientation of a view matrix (16 numbers, column by column). Ties go to x over y over z.
Orientation orientationOf(const std::array<float, 16>& matrix);

/// Position of an orientation's list among the six of a time point.
int orientationSlot(Orientation orientation);

/// Which slices a render list walks: first, first + step, ... up to and including last, far slices first.
struct SliceWalk
{
    /// Quads of one slice, and the first quad of the group.
    int perSlice = 0;
    int base = 0;
    int first = 0;
    int last = 0;
    int step = 1;

    bool operator==(const SliceWalk&) const = default;
};

/// A cut box that a volume can have: bounds in order, and inside. Whatever draws a cut box draws this one,
/// and one that comes from outside is stored so.
CutBox boundedCut(const CutBox& cut, const StackGeometry& geometry);
CutBox boundedCut(const CutBox& cut, const VoxelArray& array);

/// The walk of an orientation through a cut box. An impossible orientation is logged and gives an empty walk.
SliceWalk renderListParameters(Orientation orientation, const StackGeometry& geometry, const CutBox& cut);

/// Index of the 3D texture block that a slice's quad shows; may lie outside the grid where sizes do not split
/// evenly.
int brickOf(Orientation orientation, const StackGeometry& geometry, int slice, int block);

/// One clip plane: a x + b y + c z + d >= 0 is kept, in the volume's own space.
struct ClipPlane
{
    bool enabled = false;
    std::array<double, 4> equation = {};
};

/// The six planes that cut the axes across the slices: y low, y high, x high, x low, z low, z high in slice
/// numbers. Slices on the bound are kept.
std::array<ClipPlane, 6> clipPlanes(Orientation orientation, const StackGeometry& geometry,
                                    const CutBox& cut);

} // namespace tirn
