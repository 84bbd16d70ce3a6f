#include "volume/meshfit.h"

#include <algorithm>

namespace tirn {

namespace {

/// What each coordinate is multiplied by, and what is added then.
struct AxisMap
{
    double factor = 1;
    double offset = 0;
};

struct AxisSizes
{
    int size;
    int pow;
    int pad;
};

std::array<AxisSizes, 3> sizesOf(const StackGeometry& geometry)
{
    return {AxisSizes{geometry.x, geometry.powX, geometry.padX()},
            AxisSizes{geometry.y, geometry.powY, geometry.padY()},
            AxisSizes{geometry.z, geometry.powZ, geometry.padZ()}};
}

/// Voxels of an axis: x to the right, y and z from the positive end to the negative one.
AxisMap voxelMap(const AxisSizes& axis, int maxPow, bool falling)
{
    const double unit = 2.0 / maxPow;
    const double first = (axis.pad + 0.5) * unit - static_cast<double>(axis.pow) / maxPow;
    return falling ? AxisMap{-unit, -first} : AxisMap{unit, first};
}

std::array<AxisMap, 3> volumeMaps(const MeshBounds& bounds, const StackGeometry& geometry)
{
    const std::array<AxisSizes, 3> sizes = sizesOf(geometry);
    double factor = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double extent = double{bounds.max[axis]} - double{bounds.min[axis]};
        const double room = 2.0 * sizes[axis].size / geometry.maxPow();
        if (extent > 0)
            factor = factor == 0 ? room / extent : std::min(factor, room / extent);
    }
    factor = factor == 0 ? 1 : factor;
    std::array<AxisMap, 3> maps;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const BoxEdges edges = boxEdges(sizes[axis].size, geometry.maxPow());
        const double middle = (double{bounds.min[axis]} + double{bounds.max[axis]}) / 2;
        maps[axis] = {factor, (double{edges.low} + double{edges.high}) / 2 - factor * middle};
    }
    return maps;
}

std::array<AxisMap, 3> gridMaps(const StackGeometry& geometry, const std::array<double, 3>& voxelSize,
                                bool microns)
{
    const std::array<AxisSizes, 3> sizes = sizesOf(geometry);
    std::array<AxisMap, 3> maps;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        maps[axis] = voxelMap(sizes[axis], geometry.maxPow(), axis > 0);
        if (microns) {
            // Half a voxel lies between its corner and its middle.
            maps[axis].offset -= maps[axis].factor / 2;
            maps[axis].factor /= voxelSize[axis];
        }
    }
    return maps;
}

} // namespace

void fitMesh(Segmentation& mesh, MeshFit fit, const StackGeometry& geometry,
             const std::array<double, 3>& voxelSize)
{
    if (fit == MeshFit::None)
        return;
    const std::array<AxisMap, 3> maps = fit == MeshFit::Volume
                                            ? volumeMaps(mesh.bounds, geometry)
                                            : gridMaps(geometry, voxelSize, fit == MeshFit::Microns);
    for (Triangle& facet : mesh.facets) {
        for (Vector3f& vertex : facet.vertices) {
            for (std::size_t axis = 0; axis < 3; ++axis)
                vertex[axis] = static_cast<float>(vertex[axis] * maps[axis].factor + maps[axis].offset);
        }
        for (std::size_t axis = 0; axis < 3; ++axis)
            facet.normal[axis] = maps[axis].factor < 0 ? -facet.normal[axis] : facet.normal[axis];
    }
    mesh.bounds = boundsOf(mesh.facets);
    mesh.facetsChanged();
}

std::optional<std::array<double, 3>> drawnVoxelSize(const ImageAttributes& stack, int layerStep)
{
    // Written so that a size that is no number counts as unknown.
    if (!(stack.dimX > 0) || !(stack.dimY > 0) || !(stack.dimZ > 0))
        return std::nullopt;
    return std::array{double{stack.dimX}, double{stack.dimY}, stack.dimZ * std::max(1, layerStep)};
}

} // namespace tirn
