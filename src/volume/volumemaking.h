#pragma once

#include "base/progress.h"
#include "volume/voxelarray.h"

namespace tirn {

/// How the images of a volume make up its channels and time points, and how they are encoded.
struct VolumeLayout
{
    int channels = 1;
    int timePoints = 1;
    GLenum target = GL_TEXTURE_2D;
    /// The depth that a 3D stack is resliced to, -1 for none.
    int finalZ = -1;
};

/// Makes a volume of the images that were appended to it: its description, textures, depth curves and the
/// scale of its voxels, complete for other contexts of the share group. False when an image cannot be encoded
/// or the work was cancelled. Progress is in percent of the whole, with a total of -1.
bool completeVolume(VoxelArray& array, const VolumeLayout& layout, const Progress& progress = {});

/// The scale that a volume's voxel size gives: the largest side 1, the others in proportion, z times the step
/// between the layers read; 1 on all axes when a side is unknown.
AxisScale scaleOfVoxels(double dimX, double dimY, double dimZ, int step);

} // namespace tirn
