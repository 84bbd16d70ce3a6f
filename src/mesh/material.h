#pragma once

#include <array>

namespace tirn {

/// How a surface takes the light. Colours are red, green, blue, alpha.
struct Material
{
    std::array<float, 4> ambientAndDiffuse = {0.75F, 0, 0.75F, 1};
    std::array<float, 4> emission = {0.5F, 0, 0.5F, 1};
    std::array<float, 4> specular = {0.25F, 0.75F, 0.25F, 1};
    float shininess = 0.5F;

    bool operator==(const Material&) const = default;
};

} // namespace tirn
