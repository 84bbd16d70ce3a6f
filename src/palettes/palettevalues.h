#pragma once

#include <vector>

namespace tirn {

/// The red, green, blue and alpha tables of a palette on a 0..255 scale, one element an index.
struct PaletteValues
{
    std::vector<double> red;
    std::vector<double> green;
    std::vector<double> blue;
    std::vector<double> alpha;

    bool operator==(const PaletteValues&) const = default;
};

} // namespace tirn
