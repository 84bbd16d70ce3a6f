#include "scene/rotation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "scene/viewstate.h"

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

/// Nearer to the poles than this cosine, x and z turn about the same axis.
constexpr double kPole = 1e-9;

double degreesOf(double sine, double cosine) { return std::atan2(sine, cosine) * 180 / std::numbers::pi; }

/// The upper left part of a product; the matrices are rotations.
std::array<double, 16> product(const std::array<double, 16>& a, const std::array<double, 16>& b)
{
    std::array<double, 16> result = {};
    for (std::size_t column = 0; column < 3; ++column) {
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t k = 0; k < 3; ++k)
                result[4 * column + row] += a[4 * k + row] * b[4 * column + k];
        }
    }
    result[15] = 1;
    return result;
}

/// How far apart two directions are, from 0 to 180 degrees.
double angleBetween(double a, double b)
{
    const double apart = wrapDegrees(a - b);
    return std::min(apart, 360 - apart);
}

double distance(const Vector3& a, const Vector3& b)
{
    return angleBetween(a.x, b.x) + angleBetween(a.y, b.y) + angleBetween(a.z, b.z);
}

Vector3 wrapped(const Vector3& angles)
{
    return {wrapDegrees(angles.x), wrapDegrees(angles.y), wrapDegrees(angles.z)};
}

/// The angles of a matrix, as near as can be to angles that are known.
Vector3 anglesNear(const std::array<double, 16>& m, const Vector3& near)
{
    const double sine = std::clamp(m[8], -1.0, 1.0);
    const double cosine = std::hypot(m[0], m[4]);
    if (cosine < kPole) {
        // Only the sum of x and z, or their difference, is left: z stays.
        const double both = degreesOf(m[1], m[5]);
        return wrapped(sine > 0 ? Vector3{both - near.z, 90, near.z} : Vector3{near.z - both, -90, near.z});
    }
    const Vector3 first = wrapped({degreesOf(-m[9], m[10]), degreesOf(sine, cosine), degreesOf(-m[4], m[0])});
    const Vector3 second = wrapped({first.x + 180, 180 - first.y, first.z + 180});
    return distance(first, near) <= distance(second, near) ? first : second;
}

} // namespace

std::array<double, 16> exactRotation(const Vector3& angles)
{
    const Turn x(angles.x);
    const Turn y(angles.y);
    const Turn z(angles.z);
    return {y.cosine * z.cosine,
            x.cosine * z.sine + x.sine * y.sine * z.cosine,
            x.sine * z.sine - x.cosine * y.sine * z.cosine,
            0,
            -y.cosine * z.sine,
            x.cosine * z.cosine - x.sine * y.sine * z.sine,
            x.sine * z.cosine + x.cosine * y.sine * z.sine,
            0,
            y.sine,
            -x.sine * y.cosine,
            x.cosine * y.cosine,
            0,
            0,
            0,
            0,
            1};
}

Vector3 turnedAboutScreen(const Vector3& angles, int axis, double degrees)
{
    const Vector3 turn = {axis == 0 ? degrees : 0, axis == 1 ? degrees : 0, axis == 2 ? degrees : 0};
    return anglesNear(product(exactRotation(turn), exactRotation(angles)), angles);
}

Vector3 anglesOf(ViewPlane plane)
{
    switch (plane) {
    case ViewPlane::YZ:
        return {0, 270, 0};
    case ViewPlane::XZ:
        return {90, 0, 0};
    case ViewPlane::XY:
        break;
    }
    return {};
}

std::optional<ViewPlane> planeAt(const Vector3& angles)
{
    for (const ViewPlane plane : {ViewPlane::XY, ViewPlane::YZ, ViewPlane::XZ}) {
        if (anglesOf(plane) == angles)
            return plane;
    }
    return std::nullopt;
}

} // namespace tirn
