#include "scene/camera.h"

#include <cmath>
#include <sstream>

#include <gtest/gtest.h>

#include "support/logcapture.h"

namespace tirn {
namespace {

void expectNear(const Vector3& seen, const Vector3& expected)
{
    EXPECT_NEAR(seen.x, expected.x, 1e-12);
    EXPECT_NEAR(seen.y, expected.y, 1e-12);
    EXPECT_NEAR(seen.z, expected.z, 1e-12);
}

/// A point through a matrix given column by column.
Vector3 through(const std::array<double, 16>& m, const Vector3& p)
{
    const auto row = [&](std::size_t r) { return m[r] * p.x + m[4 + r] * p.y + m[8 + r] * p.z + m[12 + r]; };
    return {row(0) / row(3), row(1) / row(3), row(2) / row(3)};
}

TEST(Camera, BeginsTwoUnitsInFront)
{
    const Camera camera;
    EXPECT_EQ(camera.vpos, (Vector3{0, 0, 2}));
    EXPECT_EQ(camera.vdir, (Vector3{0, 0, -1}));
    EXPECT_EQ(camera.vup, (Vector3{0, 1, 0}));
    EXPECT_EQ(camera.pr, (Vector3{0, 0, 0}));
    EXPECT_EQ(camera.aperture, 60);
    EXPECT_EQ(camera.eyesep, 0.07);
    EXPECT_EQ(camera.focalLength, 2);
}

TEST(Camera, IsWrittenFieldByField)
{
    std::ostringstream text;
    text << Camera{};
    EXPECT_EQ(text.str(),
              "vpos x 0 0 2\nvdir x 0 0 -1\nvup x 0 1 0\naperture 60\neyesep 0.07\nfocalLength 2\n");
}

TEST(CameraVectors, NormaliseByTheirLength)
{
    expectNear(normalize({3, 0, -4}), {0.6, 0, -0.8});
    const test::LogCapture log;
    EXPECT_EQ(normalize({0, 0, 0}), Vector3{});
    EXPECT_EQ(log.lines(), QStringList{"normalizing length of 0, should this be happening"});
}

TEST(CameraVectors, CrossIsTheUsualProduct)
{
    EXPECT_EQ(cross({1, 0, 0}, {0, 1, 0}), (Vector3{0, 0, 1}));
    EXPECT_EQ(cross({1, 2, 3}, {4, 5, 6}), (Vector3{-3, 6, -3}));
}

TEST(EyeSetup, LooksAtTheFocusFromHalfTheSeparation)
{
    const EyeSetup eyes = eyeSetup({});
    expectNear(eyes.focus, {0, 0, 0});
    expectNear(eyes.right, {0.035, 0, 0});
}

TEST(EyeSetup, NormalisesTheDirection)
{
    Camera camera;
    camera.vpos = {1, 2, 3};
    camera.vdir = {10, 0, 0};
    camera.eyesep = 0.2;
    camera.focalLength = 3;
    const EyeSetup eyes = eyeSetup(camera);
    expectNear(eyes.focus, {4, 2, 3});
    expectNear(eyes.right, {0, 0, 0.1});
}

TEST(EyeSetup, WithoutSeparationHasOneEye)
{
    Camera camera;
    camera.eyesep = 0;
    expectNear(eyeSetup(camera).right, {0, 0, 0});
}

TEST(LookAt, FromTheStartOnlyStepsBack)
{
    const std::array<double, 16> expected = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -2, 1};
    const auto seen = lookAtMatrix({0, 0, 2}, {0, 0, 0}, {0, 1, 0});
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(seen[i], expected[i], 1e-12) << i;
}

TEST(LookAt, PutsTheFocusAheadAndTheEyeAtTheOrigin)
{
    const auto matrix = lookAtMatrix({3, 4, 0}, {3, 4, -5}, {1, 0, 0});
    expectNear(through(matrix, {3, 4, 0}), {0, 0, 0});
    expectNear(through(matrix, {3, 4, -5}), {0, 0, -5});
    // Up lies along x, so that y points to the left.
    expectNear(through(matrix, {4, 4, -5}), {0, 1, -5});
    expectNear(through(matrix, {3, 5, -5}), {-1, 0, -5});
}

TEST(Perspective, OfSixtyDegreesMapsItsEdgesToOne)
{
    const auto matrix = perspectiveMatrix(60, 1, 0.1, 10000);
    const double edge = 2 * std::tan(std::acos(-1.0) / 6);
    expectNear(through(matrix, {edge, -edge, -2}), {1, -1, through(matrix, {0, 0, -2}).z});
    EXPECT_NEAR(through(matrix, {0, 0, -0.1}).z, -1, 1e-9);
    EXPECT_NEAR(through(matrix, {0, 0, -10000}).z, 1, 1e-9);
    EXPECT_NEAR(matrix[0], std::sqrt(3.0), 1e-12);
    EXPECT_NEAR(perspectiveMatrix(60, 2, 0.1, 10000)[0], std::sqrt(3.0) / 2, 1e-12);
}

TEST(FilterColors, AreTheseSixPairs)
{
    const std::array<std::pair<const char*, const char*>, 6> expected = {{{"Red-Blue", "1001 0011"},
                                                                          {"Red-Cyan", "1001 0111"},
                                                                          {"Red-Green", "1001 0101"},
                                                                          {"Blue-Red", "0011 1001"},
                                                                          {"Cyan-Red", "0111 1001"},
                                                                          {"Green-Red", "0101 1001"}}};
    const auto digits = [](const ColorMask& mask) {
        std::string text;
        for (const bool on : {mask.red, mask.green, mask.blue, mask.alpha})
            text += on ? '1' : '0';
        return text;
    };
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_STREQ(kFilterColors[i].name, expected[i].first);
        EXPECT_EQ(digits(kFilterColors[i].left) + " " + digits(kFilterColors[i].right), expected[i].second);
    }
}

} // namespace
} // namespace tirn
