#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "render/meshdrawing.h"
#include "scene/light.h"

namespace tirn {
namespace {

using test::GlCall;
using test::GlRecorder;

std::string numberOf(const std::vector<GlCall>& calls) { return calls.front().arguments.front(); }

TEST(Light, StartsWithItsDefaults)
{
    const Light light;
    EXPECT_EQ(light.ambient, (std::array<float, 4>{0.5F, 0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(light.diffuse, (std::array<float, 4>{0.5F, 0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(light.specular, (std::array<float, 4>{0.25F, 0.25F, 0.25F, 0.25F}));
    EXPECT_EQ(light.position[0], 0);
    EXPECT_EQ(light.position[1], 1);
    EXPECT_EQ(light.position[2], 3);
    EXPECT_EQ(light.attenuation, 0.4F);
}

TEST(Light, OfItsVectorsThePositionIsSentLastUnderTheSameName)
{
    GlRecorder gl(GlRecorder::Mode::StandAlone);
    Light light;
    light.ambient = {1, 2, 3, 4};
    light.diffuse = {5, 6, 7, 8};
    light.specular = {9, 10, 11, 12};
    light.apply();
    const std::vector<GlCall> vectors = gl.callsOf("Lightfv");
    ASSERT_EQ(vectors.size(), 4U);
    for (const GlCall& vector : vectors)
        EXPECT_EQ(vector.number(1), GL_POSITION);
    EXPECT_EQ(vectors[0].values, (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(vectors[1].values, (std::vector<double>{5, 6, 7, 8}));
    EXPECT_EQ(vectors[2].values, (std::vector<double>{9, 10, 11, 12}));
    EXPECT_EQ(vectors[3].values, (std::vector<double>{0, 1, 3, 0}));
}

/// The number belongs to the count of lights, not to the light that is applied.
TEST(Light, TheNumberIsThatBehindTheLastLightMade)
{
    GlRecorder gl(GlRecorder::Mode::StandAlone);
    const Light first;
    for (int made = 0; made < 20; ++made) {
        const Light another;
        gl.clear();
        first.apply();
        const int expected = GL_LIGHT1 + (Light::count() - 1) % 7;
        EXPECT_EQ(numberOf(gl.callsOf("Enable")), std::to_string(expected));
        EXPECT_EQ(numberOf(gl.callsOf("Lightf")), std::to_string(expected));
        // The first light of the driver shines by itself, and past the eighth there is none.
        EXPECT_GT(expected, GL_LIGHT0);
        EXPECT_LE(expected, GL_LIGHT7);
    }
}

TEST(Material, IsSentForBothSides)
{
    GlRecorder gl(GlRecorder::Mode::StandAlone);
    applyMaterial(Material());
    const std::vector<GlCall> vectors = gl.callsOf("Materialfv");
    ASSERT_EQ(vectors.size(), 3U);
    EXPECT_EQ(vectors[0].text(), "Materialfv(1032, 5634, data)");
    EXPECT_EQ(vectors[0].values, (std::vector<double>{0.75, 0, 0.75, 1}));
    EXPECT_EQ(vectors[1].text(), "Materialfv(1032, 5632, data)");
    EXPECT_EQ(vectors[1].values, (std::vector<double>{0.5, 0, 0.5, 1}));
    EXPECT_EQ(vectors[2].text(), "Materialfv(1032, 4610, data)");
    EXPECT_EQ(vectors[2].values, (std::vector<double>{0.25, 0.75, 0.25, 1}));
    EXPECT_EQ(gl.callsOf("Materialf").front().text(), "Materialf(1032, 5633, 0.5)");
}

} // namespace
} // namespace tirn
