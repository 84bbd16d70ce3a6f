#include "scene/viewstate.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tirn {

namespace {

/// Sine and cosine that are exact at the quarter turns.
struct Turn
{
    double sine;
    double cosine;

    explicit Turn(double degrees)
    {
        const double quarter = degrees / 90;
        if (quarter == std::floor(quarter) && std::abs(quarter) < 1e6) {
            static constexpr double sines[] = {0, 1, 0, -1};
            const auto turn = static_cast<unsigned>((static_cast<long>(quarter) % 4 + 4) % 4);
            sine = sines[turn];
            cosine = sines[(turn + 1) % 4];
            return;
        }
        sine = std::sin(degrees * std::numbers::pi / 180);
        cosine = std::cos(degrees * std::numbers::pi / 180);
    }
};

} // namespace

Matrix4f rotationMatrix(double xDegrees, double yDegrees, double zDegrees)
{
    const Turn x(xDegrees);
    const Turn y(yDegrees);
    const Turn z(zDegrees);
    const auto f = [](double value) { return static_cast<float>(value); };
    return {f(y.cosine * z.cosine),
            f(x.cosine * z.sine + x.sine * y.sine * z.cosine),
            f(x.sine * z.sine - x.cosine * y.sine * z.cosine),
            0,
            f(-y.cosine * z.sine),
            f(x.cosine * z.cosine - x.sine * y.sine * z.sine),
            f(x.sine * z.cosine + x.cosine * y.sine * z.sine),
            0,
            f(y.sine),
            f(-x.sine * y.cosine),
            f(x.cosine * y.cosine),
            0,
            0,
            0,
            0,
            1};
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
