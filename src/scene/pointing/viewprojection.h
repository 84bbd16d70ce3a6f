#pragma once

#include <array>
#include <optional>

#include <QPointF>
#include <QSize>

#include "scene/viewstate.h"
#include "volume/draworder.h"

namespace tirn {

/// The square, centred part of a window that the picture fills; y is counted from the bottom.
struct SquareViewport
{
    int x = 0;
    int y = 0;
    int side = 0;
};
SquareViewport squareViewport(QSize size);

/// One of the flat views of four: where it stands, how it is turned, and which slices it shows.
struct FlatView
{
    double x, y;
    /// Degrees about the axis of the other two numbers.
    double angle, axisX, axisY;
    Orientation orientation;
};
extern const std::array<FlatView, 3> kFlatViews;
/// The turned view stands beside them, smaller.
inline constexpr double kSolidViewX = 1;
inline constexpr double kSolidViewY = -1;
inline constexpr double kSolidViewScale = 0.707;

/// A line of sight in the space of the volume: the point nearest to the viewer, and where it goes from there.
struct SightLine
{
    Vector3 from;
    Vector3 direction;
};

/// A place in the picture, and how far it lies from the viewer, from -1 to 1.
struct SeenPoint
{
    QPointF at;
    double depth = 0;
};

/// From the space of a volume to the pixels of a picture and back, as a frame draws it. Pixels are device
/// pixels from the upper left corner. What stands in both eyes is seen from between them.
class ViewProjection
{
public:
    /// With `flat` the projection of one of the flat views of four; otherwise that of the turned volume.
    ViewProjection(const ViewState& view, const AxisScale& scale, QSize size, const FlatView* flat = nullptr);

    SeenPoint project(const Vector3& point) const;
    /// The same in the projection's own coordinates, from -1 to 1 across the square of the picture.
    Vector3 normalised(const Vector3& point) const;
    SightLine sightLine(QPointF pixel) const;
    /// How many pixels a drawing unit is at a point, seen from the side.
    double pixelsPerUnit(const Vector3& point) const;
    /// A direction as the viewer sees it: x to the right, y up, z toward the viewer.
    Vector3 seenDirection(const Vector3& direction) const;
    Orientation orientation() const { return m_orientation; }

private:
    using Matrix = std::array<double, 16>;

    QPointF pixelOf(const Vector3& normalised) const;

    Matrix m_modelView;
    Matrix m_projection;
    Matrix m_inverse;
    QSize m_size;
    SquareViewport m_square;
    Orientation m_orientation;
};

/// The projection of the view that stands at a pixel: of four views the one of that quarter. Nothing outside
/// of the picture, and where a mode shows no volume.
std::optional<ViewProjection> projectionAt(const ViewState& view, const AxisScale& scale, QSize size,
                                           QPointF pixel);
/// Whether a mode shows the turned volume.
bool showsVolume(RenderMode mode);

} // namespace tirn
