#include "volume/slicelayout.h"

#include <algorithm>
#include <cmath>

namespace tirn {

namespace {

using Matrix4 = std::array<double, 16>;
using Matrix3 = std::array<double, 9>;

Matrix4 product(const Matrix4& a, const Matrix4& b)
{
    Matrix4 result = {};
    for (std::size_t column = 0; column < 4; ++column) {
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t k = 0; k < 4; ++k)
                result[4 * column + row] += a[4 * k + row] * b[4 * column + k];
        }
    }
    return result;
}

/// Zeros for a map that squeezes a plane into a line.
Matrix3 inverseOf(const Matrix3& m)
{
    const auto minor = [&m](std::size_t a, std::size_t b, std::size_t c, std::size_t d) {
        return m[a] * m[b] - m[c] * m[d];
    };
    const Matrix3 cofactors = {minor(4, 8, 5, 7), minor(2, 7, 1, 8), minor(1, 5, 2, 4),
                               minor(5, 6, 3, 8), minor(0, 8, 2, 6), minor(2, 3, 0, 5),
                               minor(3, 7, 4, 6), minor(1, 6, 0, 7), minor(0, 4, 1, 3)};
    const double determinant = m[0] * cofactors[0] + m[1] * cofactors[3] + m[2] * cofactors[6];
    Matrix3 inverse = {};
    for (std::size_t i = 0; i < 9; ++i)
        inverse[i] = cofactors[i] / determinant;
    const bool isUsable =
        std::all_of(inverse.begin(), inverse.end(), [](double value) { return std::isfinite(value); });
    return isUsable ? inverse : Matrix3{};
}

/// One axis of the padded stack in space.
struct LaidAxis
{
    int size = 1;
    int padded = 1;
    int pad = 0;
    /// Half its length.
    double half = 1;
    /// x grows with the voxels, y and z fall.
    bool falls = false;

    double positionOf(double voxel) const
    {
        const double along = ((voxel + 0.5 + pad) / padded * 2 - 1) * half;
        return falls ? -along : along;
    }
    double voxelAt(double position) const
    {
        const double along = falls ? -position : position;
        return (along / half + 1) / 2 * padded - 0.5 - pad;
    }
};

LaidAxis laidAxis(const StackGeometry& g, int axis)
{
    const double longest = g.maxPow();
    switch (axis) {
    case 0:
        return {g.x, g.powX, g.padX(), g.powX / longest, false};
    case 1:
        return {g.y, g.powY, g.padY(), g.powY / longest, true};
    default:
        return {g.z, g.powZ, g.padZ(), g.powZ / longest, true};
    }
}

/// Lays the slices of one axis.
class Layout
{
public:
    Layout(const StackGeometry& geometry, bool is3D, Orientation orientation, const CutBox& cut,
           const BufferView& view);
    RasterFrame frame() const;

private:
    Matrix3 toTexel(double position) const;
    TexelArea area() const;
    RasterSlice slice(int i) const;
    void findPlanes(int i, RasterSlice& slice) const;

    StackGeometry m_geometry;
    bool m_is3D;
    Orientation m_orientation;
    CutBox m_cut;
    BufferView m_view;
    Matrix4 m_matrix;
    int m_axis;
    int m_axisU;
    int m_axisV;
    LaidAxis m_across;
    LaidAxis m_u;
    LaidAxis m_v;
    TexelArea m_area;
};

Layout::Layout(const StackGeometry& geometry, bool is3D, Orientation orientation, const CutBox& cut,
               const BufferView& view)
    : m_geometry(geometry), m_is3D(is3D), m_orientation(orientation), m_cut(cut), m_view(view),
      m_matrix(product(view.projection, view.modelView)), m_axis(slicingAxis(orientation)),
      m_axisU(m_axis == 0 ? 2 : 0), m_axisV(m_axis == 1 ? 2 : 1)
{
    // Blocks are how a card holds a volume; here it is one.
    m_geometry.xBlocks = m_geometry.yBlocks = m_geometry.zBlocks = 1;
    m_across = laidAxis(m_geometry, m_axis);
    m_u = laidAxis(m_geometry, m_axisU);
    m_v = laidAxis(m_geometry, m_axisV);
    m_area = area();
}

/// The padded plane, cut by the clip planes, which lie across its two axes.
TexelArea Layout::area() const
{
    TexelArea area = {-m_u.pad - 0.5, m_u.padded - m_u.pad - 0.5, -m_v.pad - 0.5, m_v.padded - m_v.pad - 0.5};
    for (const ClipPlane& plane : clipPlanes(m_orientation, m_geometry, m_cut)) {
        if (!plane.enabled)
            continue;
        const bool isU = plane.equation[static_cast<std::size_t>(m_axisU)] != 0;
        const LaidAxis& axis = isU ? m_u : m_v;
        const double normal = plane.equation[static_cast<std::size_t>(isU ? m_axisU : m_axisV)];
        const double bound = axis.voxelAt(-plane.equation[3] / normal);
        double& low = isU ? area.u0 : area.v0;
        double& high = isU ? area.u1 : area.v1;
        if ((normal > 0) != axis.falls)
            low = std::max(low, bound);
        else
            high = std::min(high, bound);
    }
    return area;
}

/// From a place of the viewport to a texel of the plane at a position on its axis.
Matrix3 Layout::toTexel(double position) const
{
    const auto seen = [&](double u, double v) -> std::array<double, 3> {
        std::array<double, 4> place = {0, 0, 0, 1};
        place[static_cast<std::size_t>(m_axis)] = position;
        place[static_cast<std::size_t>(m_axisU)] = m_u.positionOf(u);
        place[static_cast<std::size_t>(m_axisV)] = m_v.positionOf(v);
        std::array<double, 4> clip = {};
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t k = 0; k < 4; ++k)
                clip[row] += m_matrix[4 * k + row] * place[k];
        }
        const auto pixel = [&](std::size_t axis) {
            return (clip[axis] + clip[3]) / 2 * m_view.viewport[2 + axis];
        };
        return {pixel(0), pixel(1), clip[3]};
    };
    // Far apart, so that little is lost in the differences.
    const double spanU = m_u.padded;
    const double spanV = m_v.padded;
    const std::array<double, 3> origin = seen(0, 0);
    const std::array<double, 3> byU = seen(spanU, 0);
    const std::array<double, 3> byV = seen(0, spanV);
    Matrix3 toPixel = {};
    for (std::size_t row = 0; row < 3; ++row) {
        toPixel[3 * row] = (byU[row] - origin[row]) / spanU;
        toPixel[3 * row + 1] = (byV[row] - origin[row]) / spanV;
        toPixel[3 * row + 2] = origin[row];
    }
    return inverseOf(toPixel);
}

/// A slice of the 2D target shows one plane; one of the 3D target lies between planes.
void Layout::findPlanes(int i, RasterSlice& slice) const
{
    if (!m_is3D) {
        // Slices along x are counted from the far end.
        slice.plane = slice.nextPlane = m_axis == 0 ? m_geometry.x - 1 - i : i;
        return;
    }
    const double coordinate = texCoord(m_geometry, i, m_axis);
    const double texel = (m_axis == 1 ? 1 - coordinate : coordinate) * m_across.padded - 0.5;
    const double voxel = std::clamp(texel, 0.0, m_across.padded - 1.0) - m_across.pad;
    const double below = std::floor(voxel);
    const auto planeOf = [&](double at) { return at >= 0 && at < m_across.size ? static_cast<int>(at) : -1; };
    slice.plane = planeOf(below);
    slice.share = voxel - below;
    slice.nextPlane = slice.share > 0 ? planeOf(below + 1) : slice.plane;
    if (m_axis == 2)
        slice.curveBase = coordinate * m_geometry.powZ - 0.5;
}

RasterSlice Layout::slice(int i) const
{
    RasterSlice slice;
    slice.toTexel = toTexel(static_cast<float>(quadPosition(m_geometry, i, m_axis)));
    slice.area = m_area;
    // Where planes run along z, a texel's place on the curve is its place in the padded stack.
    slice.curveBase = m_geometry.padZ();
    findPlanes(i, slice);
    return slice;
}

RasterFrame Layout::frame() const
{
    RasterFrame frame;
    const auto& [left, bottom, width, height] = m_view.viewport;
    frame.x = std::max(0, -left);
    frame.y = std::max(0, -bottom);
    frame.width = std::max(0, std::min(width, m_view.width - left) - frame.x);
    frame.height = std::max(0, std::min(height, m_view.height - bottom) - frame.y);
    const auto low = [](const LaidAxis& axis) { return axis.pad > 0 ? -1 : 0; };
    const auto high = [](const LaidAxis& axis) {
        return axis.padded > axis.pad + axis.size ? axis.size : axis.size - 1;
    };
    frame.clamp = {low(m_u), high(m_u), low(m_v), high(m_v)};
    frame.curveU = m_axisU == 2 ? 1 : 0;
    frame.curveV = m_axisV == 2 ? 1 : 0;
    frame.isProjective = m_view.projection[11] != 0;
    // What is nearer than the projection's near plane is not seen.
    if (frame.isProjective)
        frame.mostW = (m_view.projection[10] - 1) / m_view.projection[14];
    const SliceWalk walk = renderListParameters(m_orientation, m_geometry, m_cut);
    for (int i = walk.first; walk.perSlice > 0 && i != walk.last + walk.step; i += walk.step) {
        RasterSlice laid = slice(i);
        if (laid.toTexel != Matrix3{})
            frame.slices.push_back(laid);
    }
    return frame;
}

} // namespace

int slicingAxis(Orientation orientation)
{
    switch (orientation) {
    case Orientation::YZForward:
    case Orientation::YZReverse:
        return 0;
    case Orientation::XZForward:
    case Orientation::XZReverse:
        return 1;
    default:
        return 2;
    }
}

RasterFrame layoutSlices(const StackGeometry& geometry, bool is3D, Orientation orientation, const CutBox& cut,
                         const BufferView& view)
{
    return Layout(geometry, is3D, orientation, cut, view).frame();
}

} // namespace tirn
