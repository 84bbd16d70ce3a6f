#pragma once

#include "movies/keyframe.h"
#include "scene/scene.h"

namespace tirn {

/// Shows the view, scale, cut box, time point and channels of a key frame. `array` may be null. With the
/// scene's lock held where others read the scene.
void showKeyFrame(const KeyFrame& frame, ViewState& view, VoxelArray* array);

/// Gives the palettes the values that the frame holds of them, as far as both are there.
void showPalettes(const KeyFrame& frame, Scene& scene);

/// The key frame of what is shown, with the palettes when `palettes` says so.
KeyFrame shownKeyFrame(const ViewState& view, const Scene& scene, bool palettes);

} // namespace tirn
