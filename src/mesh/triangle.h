#pragma once

#include <algorithm>
#include <array>

namespace tirn {

/// A point or a direction: x, y, z.
using Vector3f = std::array<float, 3>;

/// A facet of a surface.
struct Triangle
{
    std::array<Vector3f, 3> vertices = {};
    Vector3f normal = {};

    float minX() const { return least(0); }
    float minY() const { return least(1); }
    float minZ() const { return least(2); }
    float maxX() const { return most(0); }
    float maxY() const { return most(1); }
    float maxZ() const { return most(2); }

    bool operator==(const Triangle&) const = default;

private:
    float least(std::size_t axis) const
    {
        return std::min({vertices[0][axis], vertices[1][axis], vertices[2][axis]});
    }
    float most(std::size_t axis) const
    {
        return std::max({vertices[0][axis], vertices[1][axis], vertices[2][axis]});
    }
};

} // namespace tirn
