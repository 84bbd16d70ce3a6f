#pragma once

#include <array>

namespace tirn {

/// The light that surfaces are drawn in; it stands still before the viewer's eye.
struct Light
{
    /// Counts the lights that were ever made.
    Light();

    std::array<float, 4> ambient = {0.5F, 0.5F, 0.5F, 0.5F};
    std::array<float, 4> diffuse = {0.5F, 0.5F, 0.5F, 0.5F};
    std::array<float, 4> specular = {0.25F, 0.25F, 0.25F, 0.25F};
    /// x, y, z, w. No one sets w.
    std::array<float, 4> position = {0, 1, 3, 0};
    float attenuation = 0.4F;

    bool operator==(const Light&) const = default;

    /// Hands the light to the card, under the number behind that of the last light that was made. Of the four
    /// vectors only the position arrives, since all are sent as one.
    void apply() const;
    /// How many lights were made so far.
    static int count();
};

} // namespace tirn
