#pragma once

#include <array>

#include "raster/rasterframe.h"
#include "volume/draworder.h"

namespace tirn {

/// How space is seen in a buffer of `width` by `height` pixels: the matrices, column by column, and the
/// viewport in pixels from the lower left, which may reach beyond the buffer. Nothing is seen outside of it.
struct BufferView
{
    std::array<double, 16> modelView = {};
    std::array<double, 16> projection = {};
    std::array<int, 4> viewport = {};
    int width = 0;
    int height = 0;
};

/// The axis that the slices of an orientation are cut across: 0 x, 1 y, 2 z.
int slicingAxis(Orientation orientation);

/// Where the slices of a volume lie in a buffer, and what they show, exactly as its quads would, except that
/// blocks have no seams. Pixels are those of the viewport. Channels, blending and curves are left to the
/// caller.
RasterFrame layoutSlices(const StackGeometry& geometry, bool is3D, Orientation orientation, const CutBox& cut,
                         const BufferView& view);

} // namespace tirn
