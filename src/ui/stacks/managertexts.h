#pragma once

#include <QString>

#include "volume/voxelarray.h"

namespace tirn {

// What the stack manager says of a volume.

/// The first 30 characters of the file's name.
QString fileNameText(const VoxelArray& array);
/// The type and the depth.
QString fileTypeText(const VoxelArray& array);
/// The size in the file and the layers that were read.
QString stackSizeText(const VoxelArray& array);
/// The voxel size in microns, as far as it is known; empty when x or y is unknown.
QString voxelSizeText(const ImageAttributes& stack);
QString detailsText(const VoxelArray& array);

} // namespace tirn
