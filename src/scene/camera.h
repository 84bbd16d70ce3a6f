#pragma once

#include <array>
#include <iosfwd>

namespace tirn {

/// A point or direction in drawing units.
struct Vector3
{
    double x = 0;
    double y = 0;
    double z = 0;

    bool operator==(const Vector3&) const = default;
};
Vector3 operator+(const Vector3& a, const Vector3& b);
Vector3 operator-(const Vector3& a, const Vector3& b);
Vector3 operator*(const Vector3& a, double factor);
/// Divides by the length; a length of 0 is logged and gives 0.
Vector3 normalize(const Vector3& v);
Vector3 cross(const Vector3& a, const Vector3& b);
double dot(const Vector3& a, const Vector3& b);

/// What a stereo view needs. The normal view does not use it.
struct Camera
{
    /// Viewer position, view direction, up vector and rotation point.
    Vector3 vpos = {0, 0, 2};
    Vector3 vdir = {0, 0, -1};
    Vector3 vup = {0, 1, 0};
    Vector3 pr;
    /// Degrees.
    double aperture = 60;
    /// Distance between the eyes, and of the focal point along `vdir`.
    double eyesep = 0.07;
    double focalLength = 2;

    bool operator==(const Camera&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Camera& camera);

/// Where both eyes look, and the vector from the middle to the right eye.
struct EyeSetup
{
    Vector3 focus;
    Vector3 right;
};
EyeSetup eyeSetup(const Camera& camera);

/// The matrix, column by column, that looks from `eye` at `focus` with `up` upward.
std::array<double, 16> lookAtMatrix(const Vector3& eye, const Vector3& focus, const Vector3& up);
/// The perspective of stereo views: degrees from bottom to top, and where the eye sees first and last.
inline constexpr double kStereoAngle = 60;
inline constexpr double kStereoNear = 0.1;
inline constexpr double kStereoFar = 10000;

/// The matrix, column by column, of a perspective; `fovy` in degrees.
std::array<double, 16> perspectiveMatrix(double fovy, double aspect, double zNear, double zFar);

/// The colours that each eye of an anaglyph sees.
struct ColorMask
{
    bool red = true;
    bool green = true;
    bool blue = true;
    bool alpha = true;

    bool operator==(const ColorMask&) const = default;
};
struct FilterColors
{
    const char* name;
    ColorMask left;
    ColorMask right;
};
/// The pairs in the order of the renderer form's list.
extern const std::array<FilterColors, 6> kFilterColors;

} // namespace tirn
