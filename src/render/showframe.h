#pragma once

#include "movies/keyframe.h"
#include "render/viewstate.h"
#include "volume/voxelarray.h"

namespace tirn {

/// Shows a key frame, but for its palettes. `array` is null while no stack is current. The caller keeps the
/// scene from being read meanwhile.
void showKeyFrame(const KeyFrame& frame, ViewState& view, VoxelArray* array);

} // namespace tirn
