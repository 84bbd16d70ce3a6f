#include "scene/camera.h"

#include <cmath>
#include <numbers>
#include <ostream>

#include "base/log.h"

namespace tirn {

namespace {

constexpr ColorMask kRed = {true, false, false, true};
constexpr ColorMask kGreen = {false, true, false, true};
constexpr ColorMask kBlue = {false, false, true, true};
constexpr ColorMask kCyan = {false, true, true, true};

std::ostream& operator<<(std::ostream& stream, const Vector3& v)
{
    return stream << v.x << ' ' << v.y << ' ' << v.z;
}

} // namespace

const std::array<FilterColors, 6> kFilterColors = {{{"Red-Blue", kRed, kBlue},
                                                    {"Red-Cyan", kRed, kCyan},
                                                    {"Red-Green", kRed, kGreen},
                                                    {"Blue-Red", kBlue, kRed},
                                                    {"Cyan-Red", kCyan, kRed},
                                                    {"Green-Red", kGreen, kRed}}};

Vector3 operator+(const Vector3& a, const Vector3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vector3 operator-(const Vector3& a, const Vector3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vector3 operator*(const Vector3& a, double factor) { return {a.x * factor, a.y * factor, a.z * factor}; }
double dot(const Vector3& a, const Vector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Vector3 normalize(const Vector3& v)
{
    const double length = std::sqrt(dot(v, v));
    if (length == 0) {
        logDebug("normalizing length of 0, should this be happening");
        return {};
    }
    return {v.x / length, v.y / length, v.z / length};
}

Vector3 cross(const Vector3& a, const Vector3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

std::ostream& operator<<(std::ostream& stream, const Camera& camera)
{
    return stream << "vpos x " << camera.vpos << "\nvdir x " << camera.vdir << "\nvup x " << camera.vup
                  << "\naperture " << camera.aperture << "\neyesep " << camera.eyesep << "\nfocalLength "
                  << camera.focalLength << '\n';
}

EyeSetup eyeSetup(const Camera& camera)
{
    const Vector3 direction = normalize(camera.vdir);
    return {camera.vpos + direction * camera.focalLength,
            normalize(cross(direction, camera.vup)) * (camera.eyesep / 2)};
}

std::array<double, 16> lookAtMatrix(const Vector3& eye, const Vector3& focus, const Vector3& up)
{
    const Vector3 forward = normalize(focus - eye);
    const Vector3 side = normalize(cross(forward, up));
    const Vector3 top = cross(side, forward);
    return {side.x, top.x, -forward.x, 0, side.y,          top.y,          -forward.y,        0,
            side.z, top.z, -forward.z, 0, -dot(side, eye), -dot(top, eye), dot(forward, eye), 1};
}

std::array<double, 16> perspectiveMatrix(double fovy, double aspect, double zNear, double zFar)
{
    const double f = 1 / std::tan(fovy * std::numbers::pi / 360);
    return {f / aspect,
            0,
            0,
            0,
            0,
            f,
            0,
            0,
            0,
            0,
            (zFar + zNear) / (zNear - zFar),
            -1,
            0,
            0,
            2 * zFar * zNear / (zNear - zFar),
            0};
}

} // namespace tirn
