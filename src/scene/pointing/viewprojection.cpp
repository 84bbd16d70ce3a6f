#include "scene/pointing/viewprojection.h"

#include <algorithm>
#include <cmath>

namespace tirn {

namespace {

using Matrix = std::array<double, 16>;
using Vector4 = std::array<double, 4>;

constexpr Matrix kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

double& at(Matrix& m, std::size_t row, std::size_t column) { return m[4 * column + row]; }

Matrix operator*(const Matrix& a, const Matrix& b)
{
    Matrix product = {};
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            for (std::size_t k = 0; k < 4; ++k)
                product[4 * column + row] += a[4 * k + row] * b[4 * column + k];
    return product;
}

Vector4 operator*(const Matrix& m, const Vector4& v)
{
    Vector4 product = {};
    for (std::size_t row = 0; row < 4; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            product[row] += m[4 * column + row] * v[column];
    return product;
}

Vector4 pointAt(const Vector3& v) { return {v.x, v.y, v.z, 1}; }

Vector3 divided(const Vector4& v)
{
    const double w = v[3] != 0 ? v[3] : 1;
    return {v[0] / w, v[1] / w, v[2] / w};
}

void addRow(Matrix& m, std::size_t to, std::size_t from, double factor)
{
    for (std::size_t column = 0; column < 4; ++column)
        at(m, to, column) += factor * at(m, from, column);
}

void scaleRow(Matrix& m, std::size_t row, double factor)
{
    for (std::size_t column = 0; column < 4; ++column)
        at(m, row, column) *= factor;
}

void swapRows(Matrix& m, std::size_t a, std::size_t b)
{
    for (std::size_t column = 0; column < 4; ++column)
        std::swap(at(m, a, column), at(m, b, column));
}

/// By elimination; a matrix that has none gives the identity.
Matrix inverted(Matrix m)
{
    Matrix inverse = kIdentity;
    for (std::size_t column = 0; column < 4; ++column) {
        std::size_t pivot = column;
        for (std::size_t row = column + 1; row < 4; ++row) {
            if (std::abs(at(m, row, column)) > std::abs(at(m, pivot, column)))
                pivot = row;
        }
        const double value = at(m, pivot, column);
        if (value == 0 || !std::isfinite(value))
            return kIdentity;
        swapRows(m, column, pivot);
        swapRows(inverse, column, pivot);
        scaleRow(m, column, 1 / value);
        scaleRow(inverse, column, 1 / value);
        for (std::size_t row = 0; row < 4; ++row) {
            if (row == column)
                continue;
            const double factor = -at(m, row, column);
            addRow(m, row, column, factor);
            addRow(inverse, row, column, factor);
        }
    }
    return inverse;
}

Matrix translation(double x, double y, double z) { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}; }

Matrix scaling(double x, double y, double z) { return {x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}; }

Matrix rotation(double x, double y, double z)
{
    const Matrix4f turned = rotationMatrix(x, y, z);
    Matrix matrix;
    std::copy(turned.begin(), turned.end(), matrix.begin());
    return matrix;
}

Matrix ortho(const OrthoBounds& b)
{
    Matrix m = scaling(2 / (b.right - b.left), 2 / (b.top - b.bottom), -2 / (b.zFar - b.zNear));
    m[12] = -(b.right + b.left) / (b.right - b.left);
    m[13] = -(b.top + b.bottom) / (b.top - b.bottom);
    m[14] = -(b.zFar + b.zNear) / (b.zFar - b.zNear);
    return m;
}

/// From where the turned volume is seen.
Matrix viewer(const ViewState& view)
{
    if (view.renderMode == RenderMode::FourViews)
        return translation(kSolidViewX, kSolidViewY, 0) *
               scaling(kSolidViewScale, kSolidViewScale, kSolidViewScale);
    if (!isStereo(view.renderMode))
        return kIdentity;
    return lookAtMatrix(view.camera.vpos, eyeSetup(view.camera).focus, view.camera.vup);
}

Matrix modelView(const ViewState& view, const AxisScale& scale, const FlatView* flat)
{
    const Matrix scaled = scaling(scale.x, scale.y, scale.z);
    if (flat != nullptr)
        return translation(flat->x, flat->y, 0) *
               rotation(flat->angle * flat->axisX, flat->angle * flat->axisY, 0) * scaled;
    return viewer(view) * rotation(view.rotX, view.rotY, view.rotZ) *
           translation(view.transX, view.transY, view.transZ) * scaled * rotation(0, view.yRotation, 0);
}

} // namespace

const std::array<FlatView, 3> kFlatViews = {{{-1, -1, 0, 0, 0, Orientation::XYForward},
                                             {-1, 1, 90, 1, 0, Orientation::XZForward},
                                             {1, 1, 270, 0, 1, Orientation::YZReverse}}};

SquareViewport squareViewport(QSize size)
{
    const int side = std::max(1, std::min(size.width(), size.height()));
    const int margin = (std::max(size.width(), size.height()) - side) / 2;
    return size.width() > size.height() ? SquareViewport{margin, 0, side} : SquareViewport{0, margin, side};
}

ViewProjection::ViewProjection(const ViewState& view, const AxisScale& scale, QSize size,
                               const FlatView* flat)
    : m_modelView(modelView(view, scale, flat)),
      m_projection(isStereo(view.renderMode) ? perspectiveMatrix(kStereoAngle, 1, kStereoNear, kStereoFar)
                                             : ortho(widenedBounds(view, scale))),
      m_inverse(inverted(m_projection * m_modelView)), m_size(size), m_square(squareViewport(size)),
      m_orientation(flat != nullptr ? flat->orientation
                                    : orientationOf(rotationMatrix(view.rotX, view.rotY, view.rotZ)))
{}

Vector3 ViewProjection::normalised(const Vector3& point) const
{
    return divided(m_projection * (m_modelView * pointAt(point)));
}

QPointF ViewProjection::pixelOf(const Vector3& normalised) const
{
    const double half = m_square.side / 2.0;
    return {m_square.x + (normalised.x + 1) * half, m_size.height() - m_square.y - (normalised.y + 1) * half};
}

SeenPoint ViewProjection::project(const Vector3& point) const
{
    const Vector3 seen = normalised(point);
    return {pixelOf(seen), seen.z};
}

SightLine ViewProjection::sightLine(QPointF pixel) const
{
    const double half = m_square.side / 2.0;
    const double x = (pixel.x() - m_square.x) / half - 1;
    const double y = (m_size.height() - m_square.y - pixel.y()) / half - 1;
    const Vector3 nearest = divided(m_inverse * Vector4{x, y, -1, 1});
    const Vector3 farthest = divided(m_inverse * Vector4{x, y, 1, 1});
    return {nearest, farthest - nearest};
}

double ViewProjection::pixelsPerUnit(const Vector3& point) const
{
    Vector4 seen = m_modelView * pointAt(point);
    const double here = pixelOf(divided(m_projection * seen)).x();
    seen[0] += 1;
    return pixelOf(divided(m_projection * seen)).x() - here;
}

Vector3 ViewProjection::seenDirection(const Vector3& direction) const
{
    const Vector4 seen = m_modelView * Vector4{direction.x, direction.y, direction.z, 0};
    return {seen[0], seen[1], seen[2]};
}

bool showsVolume(RenderMode mode) { return mode != RenderMode::Stereo; }

std::optional<ViewProjection> projectionAt(const ViewState& view, const AxisScale& scale, QSize size,
                                           QPointF pixel)
{
    const SquareViewport square = squareViewport(size);
    const QRectF shown(square.x, size.height() - square.y - square.side, square.side, square.side);
    if (!showsVolume(view.renderMode) || !shown.contains(pixel))
        return std::nullopt;
    if (view.renderMode != RenderMode::FourViews)
        return ViewProjection(view, scale, size);
    const bool isRight = pixel.x() >= shown.center().x();
    const bool isUp = pixel.y() < shown.center().y();
    for (const FlatView& flat : kFlatViews) {
        if ((flat.x > 0) == isRight && (flat.y > 0) == isUp)
            return ViewProjection(view, scale, size, &flat);
    }
    return ViewProjection(view, scale, size);
}

} // namespace tirn
