#pragma once

#include "scene/pointing/viewprojection.h"
#include "volume/seenvoxel.h"

namespace tirn {

struct Scene;

/// The voxel of the current volume that a place of the picture shows.
struct PointedVoxel
{
    VoxelPlace voxel;
    /// What it holds in each channel, hidden ones too; empty where the voxels were let go, and then the first
    /// voxel in the line of sight is meant.
    std::vector<int> values;

    bool operator==(const PointedVoxel&) const = default;
};

/// Places are in device pixels of a picture of `size`. With the scene's lock held where others write, and
/// only while nobody works on the volume's voxels. Nothing where the picture shows none.
std::optional<PointedVoxel> pointAt(const Scene& scene, QPointF pixel, QSize size);

/// "x 12 y 40 z 3: 55, 4095  (1.20, 4.00, 0.60 µm)": numbers of the file, what each channel holds there, and
/// where in the file that is; what is not known is left out.
QString pointedText(const VoxelArray& array, const PointedVoxel& pointed);

/// The distance between the middles of two voxels, in microns, or in voxels where their size is not known.
QString distanceText(const VoxelArray& array, const VoxelPlace& from, const VoxelPlace& to);

} // namespace tirn
