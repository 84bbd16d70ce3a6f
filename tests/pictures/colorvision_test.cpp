#include "pictures/colorvision.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace tirn {
namespace {

using Pixel = std::array<std::uint8_t, 4>;

constexpr ColorVision kDeficient[] = {ColorVision::Protan, ColorVision::Deutan, ColorVision::Tritan};

Pixel seen(ColorVision vision, Pixel pixel, bool premultiplied = false)
{
    seeAs(vision, pixel, premultiplied);
    return pixel;
}

/// The same in exact arithmetic.
Pixel exact(ColorVision vision, const Pixel& pixel)
{
    const auto toLinear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    const auto fromLinear = [](double c) {
        return c <= 0.0031308 ? c * 12.92 : 1.055 * std::pow(c, 1 / 2.4) - 0.055;
    };
    Pixel result = pixel;
    for (std::size_t row = 0; row < 3; ++row) {
        double light = 0;
        for (std::size_t k = 0; k < 3; ++k)
            light += visionMatrix(vision)[row][k] * toLinear(pixel[k] / 255.0);
        result[row] = static_cast<std::uint8_t>(std::lround(fromLinear(std::clamp(light, 0.0, 1.0)) * 255));
    }
    return result;
}

TEST(ColorVision, GreysStayGreysForEverybody)
{
    for (const ColorVision vision : kDeficient) {
        for (int grey = 0; grey <= 255; ++grey) {
            const auto value = static_cast<std::uint8_t>(grey);
            const Pixel result = seen(vision, {value, value, value, 7});
            for (std::size_t k = 0; k < 3; ++k)
                EXPECT_NEAR(result[k], grey, 1);
            EXPECT_EQ(result[3], 7);
        }
    }
}

TEST(ColorVision, TheMatricesAreThePublishedOnes)
{
    EXPECT_DOUBLE_EQ(visionMatrix(ColorVision::Protan)[0][1], 1.052583);
    EXPECT_DOUBLE_EQ(visionMatrix(ColorVision::Deutan)[1][0], 0.280085);
    EXPECT_DOUBLE_EQ(visionMatrix(ColorVision::Tritan)[2][2], 0.303900);
    for (const ColorVision vision : kDeficient) {
        for (const auto& row : visionMatrix(vision))
            EXPECT_NEAR(row[0] + row[1] + row[2], 1, 2e-6);
    }
}

TEST(ColorVision, FollowsTheMatrixInLinearLight)
{
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        const auto byte = [&] { return static_cast<std::uint8_t>(random()); };
        const Pixel pixel = {byte(), byte(), byte(), byte()};
        const ColorVision vision = kDeficient[i % 3];
        const Pixel result = seen(vision, pixel);
        const Pixel expected = exact(vision, pixel);
        for (std::size_t k = 0; k < 4; ++k)
            ASSERT_NEAR(result[k], expected[k], 1) << i;
    }
}

TEST(ColorVision, RedAndGreenComeNearerToEachOther)
{
    const auto distance = [](const Pixel& a, const Pixel& b) {
        return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]);
    };
    // A red and a green of about the same lightness.
    const Pixel red = {200, 60, 40, 255};
    const Pixel green = {90, 120, 40, 255};
    EXPECT_LT(distance(seen(ColorVision::Deutan, red), seen(ColorVision::Deutan, green)),
              distance(red, green) / 3);
    const Pixel magenta = {255, 0, 255, 255};
    const Pixel lime = {0, 255, 0, 255};
    EXPECT_GT(distance(seen(ColorVision::Deutan, magenta), seen(ColorVision::Deutan, lime)), 250);
}

TEST(ColorVision, NormalIsThePictureAsItIs)
{
    EXPECT_EQ(seen(ColorVision::Normal, {1, 2, 3, 4}), (Pixel{1, 2, 3, 4}));
}

TEST(ColorVision, OpacityComesOffBeforeAndGoesOnAfterwards)
{
    // Half of a full red.
    const Pixel full = seen(ColorVision::Protan, {255, 0, 0, 255});
    const Pixel half = seen(ColorVision::Protan, {128, 0, 0, 128}, true);
    for (std::size_t k = 0; k < 3; ++k)
        EXPECT_NEAR(half[k], full[k] * 128 / 255.0, 1);
    EXPECT_EQ(half[3], 128);
    EXPECT_EQ(seen(ColorVision::Protan, {0, 0, 0, 0}, true), (Pixel{0, 0, 0, 0}));
}

TEST(ColorVision, LargePicturesAreSeenAsAWhole)
{
    std::vector<std::uint8_t> picture(4 * 100000);
    for (std::size_t i = 0; i < picture.size(); ++i)
        picture[i] = i % 4 == 0 ? 200 : 30;
    const Pixel expected = exact(ColorVision::Tritan, {200, 30, 30, 30});
    seeAs(ColorVision::Tritan, picture, false);
    for (std::size_t i = 0; i < picture.size(); ++i)
        ASSERT_NEAR(picture[i], expected[i % 4], 1) << i;
}

} // namespace
} // namespace tirn
