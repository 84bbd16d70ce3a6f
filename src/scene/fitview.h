#pragma once

#include "scene/scene.h"

namespace tirn {

/// How far the zoom goes either way.
inline constexpr double kLeastZoom = 1e-3;
inline constexpr double kMostZoom = 1e3;

/// The zoom with which the box of a stack, as it is turned and scaled, fills 90 % of the window's square, or
/// of its quarter where there are four views.
double fittedZoom(const ViewState& view, const AxisScale& scale, const StackGeometry& stack);

/// Puts the current volume in the middle, with that zoom.
void fitView(Scene& scene);

/// The pose of the start, and for the current volume the scale that loading gave.
void freshView(Scene& scene);

/// The faces of the box, in the order of their keys.
enum class ViewSide { Front, Back, Left, Right, Top, Bottom };
/// Turns that face to the viewer.
void lookAt(ViewState& view, ViewSide side);

} // namespace tirn
