#pragma once

#include "image/filters/filterkernel.h"
#include "image/imagefile.h"

namespace tirn {

/// Lays a table of weights, as it stands, over each voxel and its neighbours in the layer; its centre is at
/// (width / 2, height / 2), edges repeat. The sum of the products is divided by that of the weights, where
/// this is not 0, rounded and kept within the depth.
bool kernelFilter(ImageFile& stack, const FilterKernel& kernel, int channel, const Progress& progress = {});

} // namespace tirn
