#pragma once

#include <array>
#include <optional>

#include "scene/camera.h"

namespace tirn {

// The rotation of a volume as three angles in degrees: the matrix is Rx * Ry * Rz.

/// The matrix of three angles, column by column; exact at quarter turns.
std::array<double, 16> exactRotation(const Vector3& angles);

/// The angles of a volume that stood at `angles` and was turned about an axis of the screen: 0 to the right,
/// 1 upwards, 2 towards the viewer. Of all angles that stand for that rotation, those nearest to the old
/// ones.
Vector3 turnedAboutScreen(const Vector3& angles, int axis, double degrees);

/// The planes of a volume that can face the viewer.
enum class ViewPlane { XY = 0, YZ = 1, XZ = 2 };

/// The angles that turn a plane to the viewer; they are those of the flat ones among the four views.
Vector3 anglesOf(ViewPlane plane);
/// The plane whose angles these are.
std::optional<ViewPlane> planeAt(const Vector3& angles);

} // namespace tirn
