#include "scene/sceneedits.h"

namespace tirn {

namespace {

double* axisOf(double& x, double& y, double& z, int axis)
{
    double* const axes[] = {&x, &y, &z};
    return axis >= 0 && axis <= 2 ? axes[axis] : nullptr;
}

} // namespace

bool rotateView(ViewState& view, double degrees, int axis)
{
    double* const angle = axisOf(view.rotX, view.rotY, view.rotZ, axis);
    if (angle != nullptr)
        *angle = wrapDegrees(*angle + degrees);
    return angle != nullptr;
}

bool translateView(ViewState& view, double offset, int axis)
{
    double* const place = axisOf(view.transX, view.transY, view.transZ, axis);
    if (place != nullptr)
        *place += offset;
    return place != nullptr;
}

void translateOnScreen(ViewState& view, double right, double up, double nearer)
{
    // The inverse of a rotation is its transpose: each column is an axis of the volume as it is seen.
    const Matrix4f m = rotationMatrix(view.rotX, view.rotY, view.rotZ);
    const auto along = [&](std::size_t column) {
        return static_cast<double>(m[4 * column]) * right + static_cast<double>(m[4 * column + 1]) * up +
               static_cast<double>(m[4 * column + 2]) * nearer;
    };
    view.transX += along(0);
    view.transY += along(1);
    view.transZ += along(2);
}

void setScale(VoxelArray& array, const AxisScale& scale) { array.scale = clampedScale(scale); }

void setAxisScale(VoxelArray& array, int axis, double value)
{
    AxisScale scale = array.scale;
    scale[axis] = value;
    for (int k = 0; k < 3 && array.preserveScaleRatio; ++k)
        scale[k] = value * array.baseScale[k] / array.baseScale[axis];
    setScale(array, scale);
}

void setRenderMode(ViewState& view, RenderMode mode)
{
    view.renderMode = mode;
    view.ortho = projectionOf(mode);
}

void setCurrentStack(Scene& scene, int index)
{
    scene.currentIndex = index;
    if (!scene.isPlaying())
        scene.view.playing = StackId::None;
}

void resetView(Scene& scene)
{
    ViewState& view = scene.view;
    view.rotX = view.rotY = view.rotZ = 0;
    view.transX = view.transY = view.transZ = 0;
    view.spinX = view.spinY = view.spinZ = 0;
    view.zoom = 1;
    if (VoxelArray* array = scene.current())
        array->scale = array->baseScale;
}

} // namespace tirn
