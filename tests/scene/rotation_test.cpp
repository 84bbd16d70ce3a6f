#include "scene/rotation.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

namespace tirn {
namespace {

/// A rotation about one axis, written down row by row.
using Rows = std::array<std::array<double, 3>, 3>;

Rows about(int axis, double degrees)
{
    const double s = std::sin(degrees * std::numbers::pi / 180);
    const double c = std::cos(degrees * std::numbers::pi / 180);
    if (axis == 0)
        return {{{1, 0, 0}, {0, c, -s}, {0, s, c}}};
    if (axis == 1)
        return {{{c, 0, s}, {0, 1, 0}, {-s, 0, c}}};
    return {{{c, -s, 0}, {s, c, 0}, {0, 0, 1}}};
}

Rows times(const Rows& a, const Rows& b)
{
    Rows result = {};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t k = 0; k < 3; ++k)
                result[i][j] += a[i][k] * b[k][j];
        }
    }
    return result;
}

Rows rowsOf(const Vector3& angles)
{
    return times(about(0, angles.x), times(about(1, angles.y), about(2, angles.z)));
}

double largestDifference(const Rows& a, const Rows& b)
{
    double largest = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j)
            largest = std::max(largest, std::abs(a[i][j] - b[i][j]));
    }
    return largest;
}

void expectAngles(const Vector3& seen, const Vector3& expected)
{
    EXPECT_NEAR(seen.x, expected.x, 1e-9);
    EXPECT_NEAR(seen.y, expected.y, 1e-9);
    EXPECT_NEAR(seen.z, expected.z, 1e-9);
}

TEST(Rotation, IsTheProductOfThreeTurns)
{
    const Vector3 angles = {25, 130, 310};
    const std::array<double, 16> m = exactRotation(angles);
    const Rows expected = rowsOf(angles);
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column)
            EXPECT_NEAR(m[4 * column + row], expected[row][column], 1e-12);
    }
}

TEST(ScreenTurn, IsATurnInFrontOfAllOthers)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> degrees(0, 360);
    for (int i = 0; i < 3000; ++i) {
        const Vector3 angles = {degrees(random), degrees(random), degrees(random)};
        const int axis = i % 3;
        const double turn = degrees(random) - 180;
        const Rows expected = times(about(axis, turn), rowsOf(angles));
        EXPECT_LT(largestDifference(rowsOf(turnedAboutScreen(angles, axis, turn)), expected), 1e-9)
            << axis << " " << turn;
    }
}

TEST(ScreenTurn, AboutTheFirstAxisAddsToTheFirstAngle)
{
    expectAngles(turnedAboutScreen({10, 20, 30}, 0, 5), {15, 20, 30});
    expectAngles(turnedAboutScreen({10, 20, 30}, 0, -15), {355, 20, 30});
}

TEST(ScreenTurn, OfAVolumeAtRestAddsToThatAngleAllTheWayRound)
{
    Vector3 y;
    Vector3 z;
    for (int degrees = 1; degrees < 360; ++degrees) {
        y = turnedAboutScreen(y, 1, 1);
        z = turnedAboutScreen(z, 2, 1);
        expectAngles(y, {0, static_cast<double>(degrees), 0});
        expectAngles(z, {0, 0, static_cast<double>(degrees)});
    }
}

TEST(ScreenTurn, WhereTwoAxesFallTogetherIsStillThatTurn)
{
    for (const double pole : {90.0, 270.0}) {
        for (int axis = 0; axis < 3; ++axis) {
            const Vector3 angles = {40, pole, 70};
            const Rows expected = times(about(axis, 25), rowsOf(angles));
            EXPECT_LT(largestDifference(rowsOf(turnedAboutScreen(angles, axis, 25)), expected), 1e-9);
        }
    }
    // Onto the pole: z keeps its angle.
    EXPECT_NEAR(turnedAboutScreen({0, 80, 0}, 1, 10).z, 0, 1e-9);
}

TEST(ViewPlanes, AreFoundByTheirAngles)
{
    EXPECT_EQ(anglesOf(ViewPlane::XY), (Vector3{0, 0, 0}));
    EXPECT_EQ(anglesOf(ViewPlane::YZ), (Vector3{0, 270, 0}));
    EXPECT_EQ(anglesOf(ViewPlane::XZ), (Vector3{90, 0, 0}));
    for (const ViewPlane plane : {ViewPlane::XY, ViewPlane::YZ, ViewPlane::XZ})
        EXPECT_EQ(planeAt(anglesOf(plane)), plane);
    EXPECT_EQ(planeAt({0, 1, 0}), std::nullopt);
}

} // namespace
} // namespace tirn
