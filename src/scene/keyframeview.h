#pragma once

#include "movies/keyframe.h"
#include "scene/scene.h"

namespace tirn {

/// Shows the view, scale, cut box, time point and channels of a key frame. With the scene's lock held where
/// others read the scene.
void showKeyFrame(const KeyFrame& frame, Scene& scene);

/// Gives the palettes the values that the frame holds of them, as far as both are there.
void showPalettes(const KeyFrame& frame, Scene& scene);

/// The key frame of a frame, without palettes.
KeyFrame keyFrameOf(const FrameState& frame);

/// The key frame of what is shown, with the palettes when `palettes` says so. Takes the scene's lock.
KeyFrame shownKeyFrame(const Scene& scene, bool palettes);

} // namespace tirn
