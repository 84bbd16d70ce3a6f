#pragma once

#include "scene/scene.h"

namespace tirn {

/// The zoom with which the box of a stack, as it is turned and scaled, fills 90 % of the window's square, or
/// of its quarter where there are four views.
double fittedZoom(const ViewState& view, const AxisScale& scale, const StackGeometry& stack);

/// Puts the current volume in the middle, with that zoom.
void fitView(Scene& scene);

/// The faces of the box, in the order of their keys.
enum class ViewSide { Front, Back, Left, Right, Top, Bottom };
/// Turns that face to the viewer.
void lookAt(ViewState& view, ViewSide side);

} // namespace tirn
