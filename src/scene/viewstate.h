#pragma once

#include <array>
#include <string>

#include <QColor>
#include <qopengl.h>

#include "pictures/colorvision.h"
#include "scene/camera.h"
#include "scene/pointing/ruler.h"
#include "volume/voxelarray.h"

namespace tirn {

/// How the window shows the volume. The numbers are the positions in the renderer form's list.
enum class RenderMode { Normal = 0, Anaglyph = 1, FullscreenStereo = 2, Stereo = 3, FourViews = 4 };

/// Corners of the window for the scale bar.
enum class ScaleBarLocation { TopLeft = 1, TopRight = 2, BottomLeft = 3, BottomRight = 4 };

/// Bounds of the orthographic projection, in drawing units.
struct OrthoBounds
{
    double left = -1;
    double right = 1;
    double bottom = -1;
    double top = 1;
    double zNear = -2;
    double zFar = 2;

    bool operator==(const OrthoBounds&) const = default;
};

/// Whether a mode is drawn in perspective, for two eyes.
bool isStereo(RenderMode mode);
/// Whether a mode needs a window with a picture for each eye.
bool needsStereoWindow(RenderMode mode);

/// The bounds that a mode begins with: four views take four times the room.
OrthoBounds projectionOf(RenderMode mode);

/// What the mouse cuts the volume by in the window: a handle on each face of the cut box.
struct CutHandles
{
    bool shown = false;
    /// How many drawn slices stay along x, y and z.
    std::array<int, 3> leastSlices = {1, 1, 1};

    bool operator==(const CutHandles&) const = default;
};

/// How far the zoom goes either way.
inline constexpr double kLeastZoom = 1e-3;
inline constexpr double kMostZoom = 1e3;

/// Everything that decides a picture besides the volume itself.
struct ViewState
{
    GLenum blendMode = GL_FUNC_ADD;
    /// Position in kFilterColors.
    int filterColors = 2;
    RenderMode renderMode = RenderMode::Normal;
    Camera camera;
    bool showBoundingBox = false;
    bool showScaleBar = false;
    ScaleBarLocation scaleBarLocation = ScaleBarLocation::BottomLeft;
    /// Length of the bar, in projection units.
    double scaleBarSize = 0.3;
    /// The bar is as much shorter as it takes to stand for a round number of microns.
    bool roundScaleBar = false;
    QColor boxColor = Qt::blue;
    QColor backgroundColor = Qt::black;
    QColor scaleBarColor = Qt::red;
    QColor cutBoxColor = Qt::white;
    /// Angles about the axes in degrees, from 0 up to 360.
    double rotX = 0;
    double rotY = 0;
    double rotZ = 0;
    double transX = 0;
    double transY = 0;
    double transZ = 0;
    /// Multiplies the scale of whatever volume is shown.
    double zoom = 1;
    /// Spin rates in pixels a frame, as the mouse moved: x about the y axis, y about the x axis.
    int spinX = 0;
    int spinY = 0;
    int spinZ = 0;
    OrthoBounds ortho;
    /// An additional rotation about y, in degrees, inside the scale.
    double yRotation = 0;
    bool dragging = false;
    bool showFrameRate = false;
    /// The outline of the cut box on top of the volume.
    bool drawCutBox = false;
    CutHandles cutHandles;
    Ruler ruler;
    /// Clicks in the picture measure.
    bool isMeasuring = false;
    bool drawOrientation = false;
    /// The label of the time point, and the file label.
    bool drawChannelTime = false;
    bool drawFileLabel = false;
    /// Scales all overlay fonts.
    double fontScale = 1.0;
    /// Multiply by the depth curves, in the 3D target.
    bool zCorrection = false;
    /// Stretch 12 and 16 bit data by the bits that they really have.
    bool autoBitDepth = false;
    /// A preview of the picture as others see it.
    ColorVision colorVision = ColorVision::Normal;
    /// A fragment program that was typed; empty for the one that the volume asks for.
    std::string programText;
    /// The volume that advances its time point by itself, `timeRate` time points a second, while it is
    /// current.
    StackId playing = StackId::None;
    int timeRate = 1;

    bool isSpinning() const { return spinX != 0 || spinY != 0 || spinZ != 0; }
    bool operator==(const ViewState&) const = default;
};

using Matrix4f = std::array<float, 16>;

/// Rotation about x, then y, then z, column by column.
Matrix4f rotationMatrix(double xDegrees, double yDegrees, double zDegrees);

/// Brings an angle into the range from 0 up to 360.
double wrapDegrees(double angle);

void stopSpin(ViewState& view);

/// One step of the spin: the angles move by rate * -180 / width each. Returns whether they moved.
bool spin(ViewState& view, int width);

/// Near and far that hold the whole scaled volume, and never less than the stored bounds.
OrthoBounds widenedBounds(const ViewState& view, const AxisScale& scale);

} // namespace tirn
