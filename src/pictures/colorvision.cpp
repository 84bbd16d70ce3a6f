#include "pictures/colorvision.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/parallel.h"

namespace tirn {

namespace {

constexpr ColorMatrix kNormal = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
constexpr ColorMatrix kProtan = {
    {{0.152286, 1.052583, -0.204868}, {0.114503, 0.786281, 0.099216}, {-0.003882, -0.048116, 1.051998}}};
constexpr ColorMatrix kDeutan = {
    {{0.367322, 0.860646, -0.227968}, {0.280085, 0.672501, 0.047413}, {-0.011820, 0.042940, 0.968881}}};
constexpr ColorMatrix kTritan = {
    {{1.255528, -0.076749, -0.178779}, {-0.078411, 0.930809, 0.147602}, {0.004733, 0.691367, 0.303900}}};

/// Fine enough for the dark end of sRGB, where a byte is 1/3300 of the light.
constexpr int kEncodingSteps = 1 << 14;

struct SrgbTables
{
    std::array<float, 256> linear;
    std::vector<std::uint8_t> encoded;
};

/// IEC 61966-2-1, both ways.
const SrgbTables& srgbTables()
{
    static const SrgbTables tables = [] {
        SrgbTables made;
        for (std::size_t i = 0; i < made.linear.size(); ++i) {
            const double c = static_cast<double>(i) / 255;
            made.linear[i] =
                static_cast<float>(c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4));
        }
        for (int i = 0; i <= kEncodingSteps; ++i) {
            const double light = static_cast<double>(i) / kEncodingSteps;
            const double c = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
            made.encoded.push_back(static_cast<std::uint8_t>(std::lround(c * 255)));
        }
        return made;
    }();
    return tables;
}

std::uint8_t encoded(double light)
{
    const double step = std::clamp(light, 0.0, 1.0) * kEncodingSteps + 0.5;
    return srgbTables().encoded[static_cast<std::size_t>(step)];
}

void seePixel(const ColorMatrix& matrix, std::uint8_t* pixel)
{
    const auto& linear = srgbTables().linear;
    const std::array<double, 3> light = {linear[pixel[0]], linear[pixel[1]], linear[pixel[2]]};
    for (std::size_t row = 0; row < 3; ++row)
        pixel[row] =
            encoded(matrix[row][0] * light[0] + matrix[row][1] * light[1] + matrix[row][2] * light[2]);
}

void seePremultiplied(const ColorMatrix& matrix, std::uint8_t* pixel)
{
    const int opacity = pixel[3];
    if (opacity == 0)
        return;
    for (int k = 0; k < 3; ++k)
        pixel[k] = static_cast<std::uint8_t>(std::min(255, (pixel[k] * 255 + opacity / 2) / opacity));
    seePixel(matrix, pixel);
    for (int k = 0; k < 3; ++k)
        pixel[k] = static_cast<std::uint8_t>((pixel[k] * opacity + 127) / 255);
}

} // namespace

const ColorMatrix& visionMatrix(ColorVision vision)
{
    switch (vision) {
    case ColorVision::Normal:
        break;
    case ColorVision::Protan:
        return kProtan;
    case ColorVision::Deutan:
        return kDeutan;
    case ColorVision::Tritan:
        return kTritan;
    }
    return kNormal;
}

void seeAs(ColorVision vision, std::span<std::uint8_t> rgba, bool premultiplied)
{
    if (vision == ColorVision::Normal)
        return;
    constexpr std::int64_t grain = 1 << 14;
    const ColorMatrix& matrix = visionMatrix(vision);
    parallelFor(0, static_cast<std::int64_t>(rgba.size() / 4), grain,
                [&](std::int64_t begin, std::int64_t end) {
                    for (std::int64_t i = begin; i < end; ++i) {
                        std::uint8_t* pixel = rgba.data() + 4 * i;
                        premultiplied ? seePremultiplied(matrix, pixel) : seePixel(matrix, pixel);
                    }
                });
}

} // namespace tirn
