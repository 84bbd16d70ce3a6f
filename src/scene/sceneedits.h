#pragma once

#include "scene/scene.h"

namespace tirn {

// Changes of a scene as plain functions, for SceneModel::edit and for whoever holds the scene's lock.

/// Adds to the angle about an axis, in degrees; false where there is no such axis.
bool rotateView(ViewState& view, double degrees, int axis);
/// Moves along an axis, in drawing units; false where there is no such axis.
bool translateView(ViewState& view, double offset, int axis);
/// Moves along the axes of the screen, in drawing units.
void translateOnScreen(ViewState& view, double right, double up, double nearer);

/// Gives one axis a scale; a volume that keeps its ratio has the others follow.
void setAxisScale(VoxelArray& array, int axis, double value);
/// Gives each axis its scale, within what a volume can have.
void setScale(VoxelArray& array, const AxisScale& scale);

/// Takes a mode with its own projection, whichever mode was left.
void setRenderMode(ViewState& view, RenderMode mode);

/// Makes a volume current; what played stops.
void setCurrentStack(Scene& scene, int index);

/// Rotation, translation and zoom as at the start, and the current volume's scale as loading gave it.
void resetView(Scene& scene);

} // namespace tirn
