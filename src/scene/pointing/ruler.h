#pragma once

#include <vector>

#include <QString>

#include "volume/seenvoxel.h"
#include "volume/stackid.h"

namespace tirn {

/// A distance between two voxels of a stack.
struct Ruler
{
    StackId stack = StackId::None;
    /// None, one, or two.
    std::vector<VoxelPlace> ends;

    bool operator==(const Ruler&) const = default;
};

/// The next end of a ruler; after the second one, and on another stack, a ruler begins anew.
Ruler withEnd(Ruler ruler, StackId stack, const VoxelPlace& end);

} // namespace tirn
