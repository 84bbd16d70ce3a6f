#include "scene/fitview.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tirn {

namespace {

constexpr double kFilledShare = 0.9;
/// Half of the angle of the perspective.
constexpr double kHalfAperture = 30 * std::numbers::pi / 180;

std::array<Vector3, 8> corners(const Vector3& half)
{
    std::array<Vector3, 8> all;
    for (unsigned i = 0; i < all.size(); ++i)
        all[i] = {(i & 1) != 0 ? half.x : -half.x, (i & 2) != 0 ? half.y : -half.y,
                  (i & 4) != 0 ? half.z : -half.z};
    return all;
}

template <class Matrix>
Vector3 turned(const Matrix& m, const Vector3& v)
{
    const auto row = [&](std::size_t i) {
        return static_cast<double>(m[i]) * v.x + static_cast<double>(m[4 + i]) * v.y +
               static_cast<double>(m[8 + i]) * v.z;
    };
    return {row(0), row(1), row(2)};
}

/// The largest factor for a corner, in the middle between both eyes: on each axis factor * side stays within
/// the share of what is seen at the corner's depth, distance - factor * z.
double roomInPerspective(const Camera& camera, const Vector3& corner)
{
    const EyeSetup eyes = eyeSetup(camera);
    const std::array<double, 16> look = lookAtMatrix(camera.vpos, eyes.focus, camera.vup);
    const Vector3 seen = turned(look, corner);
    const double distance = -look[14];
    const double spread = kFilledShare * std::tan(kHalfAperture);
    const double side = std::max(std::abs(seen.x), std::abs(seen.y)) + spread * seen.z;
    return side > 0 ? spread * distance / side : kMostZoom;
}

double roomInFlat(double seen, double side) { return seen > 0 ? kFilledShare * side / seen : kMostZoom; }

} // namespace

double fittedZoom(const ViewState& view, const AxisScale& scale, const StackGeometry& stack)
{
    const double unit = 1.0 / stack.maxPow();
    const Vector3 half = {stack.x * unit * scale.x, stack.y * unit * scale.y, stack.z * unit * scale.z};
    const bool isInPerspective =
        view.renderMode == RenderMode::Anaglyph || view.renderMode == RenderMode::FullscreenStereo;
    const bool hasFlatViews = view.renderMode == RenderMode::FourViews;
    const double side = hasFlatViews ? view.ortho.right / 2 : view.ortho.right;
    const Matrix4f rotation = rotationMatrix(view.rotX, view.rotY, view.rotZ);
    double zoom = kMostZoom;
    for (const Vector3& corner : corners(half)) {
        const Vector3 seen = turned(rotation, corner);
        zoom =
            std::min(zoom, isInPerspective ? roomInPerspective(view.camera, seen)
                                           : roomInFlat(std::max(std::abs(seen.x), std::abs(seen.y)), side));
    }
    if (hasFlatViews)
        zoom = std::min(zoom, roomInFlat(std::max({half.x, half.y, half.z}), side));
    return std::max(zoom, kLeastZoom);
}

void fitView(Scene& scene)
{
    ViewState& view = scene.view;
    view.transX = view.transY = view.transZ = 0;
    const VoxelArray* array = scene.current();
    if (array != nullptr && array->geometry().isValid())
        view.zoom = fittedZoom(view, array->scale, array->geometry());
}

void lookAt(ViewState& view, ViewSide side)
{
    struct Angles
    {
        double x;
        double y;
    };
    static constexpr Angles kAngles[] = {{0, 0}, {0, 180}, {0, 90}, {0, 270}, {90, 0}, {270, 0}};
    const Angles& angles = kAngles[static_cast<std::size_t>(side)];
    view.rotX = angles.x;
    view.rotY = angles.y;
    view.rotZ = 0;
    view.spinX = view.spinY = view.spinZ = 0;
}

} // namespace tirn
