#pragma once

#include "image/imageattributes.h"

namespace tirn {

/// What a stack is, for people: its size, channels, time points, bits and voxel size, as far as they are
/// known.
QString stackFacts(const ImageAttributes& attributes, int channels, int timePoints);

} // namespace tirn
