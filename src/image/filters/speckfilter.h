#pragma once

#include "image/imagefile.h"

namespace tirn {

/// Keeps a voxel when one of the 3 x 3 around its place in another of the layers z - h to z + h is above the
/// threshold; all others, and the other channels, become 0.
bool zFilter(ImageFile& stack, int size, int channel, int threshold, const Progress& progress = {});

} // namespace tirn
