#include "scene/eyeroom.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "scene/rotation.h"

namespace tirn {

namespace {

/// Half of the box around a volume's voxels before it is scaled.
Vector3 halfBox(const ViewState& view, const StackGeometry& geometry)
{
    // An odd voxel lies on one side.
    const auto half = [&](int size) { return static_cast<double>(size + size % 2) / geometry.maxPow(); };
    const Vector3 box = {half(geometry.x), half(geometry.y), half(geometry.z)};
    // The additional rotation about y may bring any corner to any side.
    const double around = std::hypot(box.x, box.z);
    return view.yRotation != 0 ? Vector3{around, box.y, around} : box;
}

/// A point before the viewer as the volume sees it: neither rotated nor moved, but not scaled.
Vector3 seenByVolume(const ViewState& view, const Vector3& point)
{
    const std::array<double, 16> m = exactRotation({view.rotX, view.rotY, view.rotZ});
    const auto along = [&](std::size_t column) {
        return m[4 * column] * point.x + m[4 * column + 1] * point.y + m[4 * column + 2] * point.z;
    };
    return Vector3{along(0), along(1), along(2)} - Vector3{view.transX, view.transY, view.transZ};
}

} // namespace

double growthBeforeEyes(const ViewState& view, const AxisScale& scale, const StackGeometry& geometry)
{
    double growth = std::numeric_limits<double>::infinity();
    if (!isStereo(view.renderMode))
        return growth;
    const Vector3 half = halfBox(view, geometry);
    const Vector3 right = eyeSetup(view.camera).right;
    for (const Vector3& eye : {view.camera.vpos - right, view.camera.vpos + right}) {
        const Vector3 at = seenByVolume(view, eye);
        // What is nearer than the nearest that an eye sees would be cut open.
        const auto room = [](double distance, double size) {
            return (std::abs(distance) - kStereoNear) / size;
        };
        growth = std::min(growth, std::max({room(at.x, half.x * scale.x), room(at.y, half.y * scale.y),
                                            room(at.z, half.z * scale.z)}));
    }
    return growth;
}

} // namespace tirn
