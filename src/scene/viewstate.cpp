#include "scene/viewstate.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "scene/rotation.h"

namespace tirn {

Matrix4f rotationMatrix(double xDegrees, double yDegrees, double zDegrees)
{
    Matrix4f matrix;
    std::ranges::transform(exactRotation({xDegrees, yDegrees, zDegrees}), matrix.begin(),
                           [](double value) { return static_cast<float>(value); });
    return matrix;
}

bool isStereo(RenderMode mode) { return mode == RenderMode::Anaglyph || needsStereoWindow(mode); }

bool needsStereoWindow(RenderMode mode)
{
    return mode == RenderMode::FullscreenStereo || mode == RenderMode::Stereo;
}

OrthoBounds projectionOf(RenderMode mode)
{
    return mode == RenderMode::FourViews ? OrthoBounds{-2, 2, -2, 2, -2, 2} : OrthoBounds{};
}

double wrapDegrees(double angle)
{
    if (!std::isfinite(angle))
        return 0;
    // One division in place of repeated steps, so that a huge angle costs nothing.
    angle = std::fmod(angle, 360);
    const double wrapped = angle < 0 ? angle + 360 : angle;
    // A tiny negative angle rounds up to the full turn.
    return wrapped < 360 ? wrapped : 0;
}

void stopSpin(ViewState& view) { view.spinX = view.spinY = view.spinZ = 0; }

bool spin(ViewState& view, int width)
{
    if (!view.isSpinning() || width < 1)
        return false;
    // The rate of motion along y turns about x and the other way round; all three are scaled by the width.
    const double degreesAPixel = -180.0 / width;
    view.rotX = wrapDegrees(view.rotX + view.spinY * degreesAPixel);
    view.rotY = wrapDegrees(view.rotY + view.spinX * degreesAPixel);
    view.rotZ = wrapDegrees(view.rotZ + view.spinZ * degreesAPixel);
    return true;
}

OrthoBounds widenedBounds(const ViewState& view, const AxisScale& scale)
{
    const double offset = std::hypot(view.transX, view.transY, view.transZ);
    // The additional rotation turns corners further out along x and z before they are scaled.
    const double spread = view.yRotation != 0 ? std::numbers::sqrt2 : 1;
    const double radius = std::hypot(scale.x * spread, scale.y, scale.z * spread) * 1.05 + offset;
    OrthoBounds bounds = view.ortho;
    bounds.zNear = std::min(bounds.zNear, -radius);
    bounds.zFar = std::max(bounds.zFar, radius);
    return bounds;
}

} // namespace tirn
