#include "support/slowraster.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tirn::test {

namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<double, 9>;

Matrix product(const Matrix& a, const Matrix& b)
{
    Matrix result = {};
    for (unsigned i = 0; i < 9; ++i)
        for (unsigned k = 0; k < 3; ++k)
            result[i] += a[i / 3 * 3 + k] * b[3 * k + i % 3];
    return result;
}

Vector product(const Matrix& m, const Vector& v)
{
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[3] * v[0] + m[4] * v[1] + m[5] * v[2],
            m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}

double dotProduct(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vector crossProduct(const Vector& a, const Vector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector unit(const Vector& v)
{
    const double length = std::sqrt(dotProduct(v, v));
    return {v[0] / length, v[1] / length, v[2] / length};
}

Matrix turn(const Vector& degrees)
{
    const auto about = [&](unsigned axis) {
        const double angle = degrees[axis] * std::numbers::pi / 180;
        const unsigned a = (axis + 1) % 3;
        const unsigned b = (axis + 2) % 3;
        Matrix m = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        m[4 * a] = m[4 * b] = std::cos(angle);
        m[3 * a + b] = -std::sin(angle);
        m[3 * b + a] = std::sin(angle);
        return m;
    };
    return product(about(2), product(about(1), about(0)));
}

/// Turns places of space into places of the picture, times the distance along the line of sight.
class Eye
{
public:
    explicit Eye(const SlowView& view) : m_view(view), m_turn(turn(view.degrees)) {}

    Vector seen(const Vector& place) const
    {
        const Vector turned = product(m_turn, place);
        const double half = m_view.size / 2.0;
        if (!m_view.perspective)
            return {(turned[0] * m_view.zoom + 1) * half, (turned[1] * m_view.zoom + 1) * half, 1};
        const Vector back = unit(m_view.eye);
        const Vector right = unit(crossProduct({0, 1, 0}, back));
        const Vector up = crossProduct(back, right);
        const Vector from = {turned[0] - m_view.eye[0], turned[1] - m_view.eye[1], turned[2] - m_view.eye[2]};
        const double distance = -dotProduct(from, back);
        const double lens = m_view.zoom / std::tan(std::numbers::pi / 6);
        return {(dotProduct(from, right) * lens + distance) * half,
                (dotProduct(from, up) * lens + distance) * half, distance};
    }
    /// How near a place is to the viewer.
    double nearness(const Vector& place) const { return product(m_turn, place)[2]; }

private:
    SlowView m_view;
    Matrix m_turn;
};

Matrix inverse(const Matrix& m)
{
    const Vector rows[] = {{m[0], m[1], m[2]}, {m[3], m[4], m[5]}, {m[6], m[7], m[8]}};
    const Vector columns[] = {crossProduct(rows[1], rows[2]), crossProduct(rows[2], rows[0]),
                              crossProduct(rows[0], rows[1])};
    const double determinant = dotProduct(rows[0], columns[0]);
    Matrix result = {};
    for (unsigned row = 0; row < 3; ++row)
        for (unsigned column = 0; column < 3; ++column)
            result[3 * row + column] = columns[column][row] / determinant;
    return result;
}

double along(double texel, int size, bool falls)
{
    const double place = 0.95 * ((texel + 0.5) / size * 2 - 1);
    return falls ? -place : place;
}

/// The colour between two entries, 0 to 1.
std::array<double, 4> colourAt(const ColourTable& table, double value)
{
    const auto entries = static_cast<double>(table.size() / 4);
    const double place = std::clamp(value * entries - 0.5, 0.0, entries - 1);
    const auto first = static_cast<std::size_t>(place);
    const std::size_t second = std::min(first + 1, table.size() / 4 - 1);
    const double share = place - static_cast<double>(first);
    std::array<double, 4> colour = {};
    for (std::size_t k = 0; k < 4; ++k)
        colour[k] = (table[4 * first + k] * (1 - share) + table[4 * second + k] * share) / 255;
    return colour;
}

double valueAt(std::span<const float> curve, double place)
{
    const double inside = std::clamp(place, 0.0, static_cast<double>(curve.size() - 1));
    const auto first = static_cast<std::size_t>(inside);
    const std::size_t second = std::min(first + 1, curve.size() - 1);
    return curve[first] + (curve[second] - curve[first]) * (inside - static_cast<double>(first));
}

class SlowRaster
{
public:
    explicit SlowRaster(const SlowDrawing& drawing) : m_drawing(drawing) {}

    std::array<double, 4> pixel(int x, int y) const
    {
        std::array<double, 4> seen = {};
        for (const RasterSlice& slice : m_drawing.frame.slices) {
            const Vector at = product(slice.toTexel, Vector{x + 0.5, y + 0.5, 1});
            const double u = at[0] / at[2];
            const double v = at[1] / at[2];
            const TexelArea& area = slice.area;
            if (!(at[2] > 0) || at[2] > m_drawing.frame.mostW * (1 + 1e-9) || u < area.u0 || u >= area.u1 ||
                v < area.v0 || v >= area.v1)
                continue;
            for (std::size_t c = 0; c < m_drawing.frame.channels.size(); ++c)
                blend(fragment(slice, c, u, v), seen);
        }
        for (double& part : seen)
            part *= 255;
        return seen;
    }

private:
    std::array<double, 4> fragment(const RasterSlice& slice, std::size_t channel, double u, double v) const
    {
        const RasterFrame& frame = m_drawing.frame;
        const RasterChannel& how = frame.channels[channel];
        const double inU = std::clamp<double>(u, frame.clamp.u0, frame.clamp.u1);
        const double inV = std::clamp<double>(v, frame.clamp.v0, frame.clamp.v1);
        const auto c = static_cast<int>(channel);
        const double near = sample(slice.plane, inU, inV, c) * (1 - slice.share);
        double value = (near + sample(slice.nextPlane, inU, inV, c) * slice.share) * how.unit;
        if (!how.curve.empty()) {
            const double place = slice.curveBase + frame.curveU * inU + frame.curveV * inV;
            value = std::min(1.0, value * valueAt(how.curve, place) * how.curveFactor);
        }
        return colourAt(m_drawing.tables[channel], std::min(1.0, value * how.stretch));
    }

    double sample(int plane, double u, double v, int channel) const
    {
        const int u0 = static_cast<int>(std::floor(u));
        const int v0 = static_cast<int>(std::floor(v));
        double sum = 0;
        for (int corner = 0; corner < 4; ++corner) {
            const int atU = u0 + corner % 2;
            const int atV = v0 + corner / 2;
            sum += (1 - std::abs(u - atU)) * (1 - std::abs(v - atV)) * texel(plane, atU, atV, channel);
        }
        return sum;
    }

    /// 0 around the stack.
    double texel(int plane, int u, int v, int channel) const
    {
        const std::array<int, 3> places[] = {{plane, v, u}, {u, plane, v}, {u, v, plane}};
        const std::array<int, 3>& at = places[m_drawing.axis];
        for (int axis = 0; axis < 3; ++axis) {
            const int on = at[static_cast<unsigned>(axis)];
            if (on < 0 || on >= m_drawing.stack.size(axis))
                return 0;
        }
        return m_drawing.stack.at(at[0], at[1], at[2], channel);
    }

    void blend(const std::array<double, 4>& colour, std::array<double, 4>& seen) const
    {
        const bool isMaximum = m_drawing.frame.blend == RasterBlend::Maximum;
        if (isMaximum && colour[3] <= 0)
            return;
        for (std::size_t k = 0; k < 4; ++k) {
            if (isMaximum)
                seen[k] = std::max(seen[k], colour[k]);
            else
                seen[k] = (k < 3 ? colour[k] : 1) * colour[3] + (1 - colour[3]) * seen[k];
        }
    }

    const SlowDrawing& m_drawing;
};

} // namespace

RasterFrame slowFrame(const PlainStack& stack, int axis, const SlowView& view, double depth)
{
    const Eye eye(view);
    const int width = stack.size(axis == 0 ? 2 : 0);
    const int height = stack.size(axis == 1 ? 2 : 1);
    RasterFrame frame;
    frame.width = frame.height = view.size;
    frame.isProjective = view.perspective;
    frame.mostW = view.perspective ? 10 : 1;
    frame.clamp = {0, width - 1, 0, height - 1};
    const int planes = stack.size(axis);
    std::vector<std::pair<double, RasterSlice>> slices;
    for (int k = 0; k < planes; ++k) {
        const double on = depth * ((k + 0.5) / planes * 2 - 1);
        const auto place = [&](double u, double v) -> Vector {
            const double atU = along(u, width, axis == 0);
            const double atV = along(v, height, true);
            return axis == 0   ? Vector{on, atV, atU}
                   : axis == 1 ? Vector{atU, -on, atV}
                               : Vector{atU, atV, -on};
        };
        // The map is linear: three places tell it.
        const Vector origin = eye.seen(place(0, 0));
        const Vector byU = eye.seen(place(1, 0));
        const Vector byV = eye.seen(place(0, 1));
        Matrix toPixel = {};
        for (unsigned row = 0; row < 3; ++row) {
            toPixel[3 * row] = byU[row] - origin[row];
            toPixel[3 * row + 1] = byV[row] - origin[row];
            toPixel[3 * row + 2] = origin[row];
        }
        RasterSlice slice;
        slice.plane = slice.nextPlane = k;
        slice.toTexel = inverse(toPixel);
        slice.area = {-0.5, width - 0.5, -0.5, height - 0.5};
        slices.emplace_back(eye.nearness(place(width / 2.0, height / 2.0)), slice);
    }
    std::sort(slices.begin(), slices.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [nearness, slice] : slices)
        frame.slices.push_back(slice);
    return frame;
}

std::vector<std::array<double, 4>> drawSlowly(const SlowDrawing& drawing)
{
    const SlowRaster raster(drawing);
    std::vector<std::array<double, 4>> pixels;
    for (int y = 0; y < drawing.frame.height; ++y) {
        for (int x = 0; x < drawing.frame.width; ++x)
            pixels.push_back(raster.pixel(x, y));
    }
    return pixels;
}

std::vector<bool> undecidedPixels(const RasterFrame& frame)
{
    constexpr double near = 5e-5;
    std::vector<bool> undecided;
    for (int i = 0; i < frame.width * frame.height; ++i) {
        const Vector centre = {i % frame.width + 0.5, i / frame.width + 0.5, 1};
        undecided.push_back(
            std::any_of(frame.slices.begin(), frame.slices.end(), [&](const RasterSlice& slice) {
                const Vector at = product(slice.toTexel, centre);
                const double u = at[0] / at[2];
                const double v = at[1] / at[2];
                return std::min(std::abs(u - slice.area.u0), std::abs(u - slice.area.u1)) < near ||
                       std::min(std::abs(v - slice.area.v0), std::abs(v - slice.area.v1)) < near;
            }));
    }
    return undecided;
}

} // namespace tirn::test
