#pragma once

#include <array>
#include <vector>

#include "raster/rasterframe.h"
#include "support/compositor.h"
#include "support/plainstack.h"

namespace tirn::test {

/// How slices of a stack lie in a picture: turned by angles in degrees (x first), seen from the front through
/// the square from -1 to 1, or with perspective from `eye` at the middle.
struct SlowView
{
    std::array<double, 3> degrees = {0, 0, 0};
    int size = 64;
    double zoom = 1;
    bool perspective = false;
    std::array<double, 3> eye = {0, 0, 2};
};

/// What is drawn: channel c takes its samples from channel c of the stack. The frame says where its slices
/// lie and what its channels multiply by; the planes and tables that it names are not looked at.
struct SlowDrawing
{
    const PlainStack& stack;
    const std::vector<ColourTable>& tables;
    const RasterFrame& frame;
    int axis;
};

/// The slices of a stack across an axis, far ones first, all of each; planes of a stack reach from -0.95 to
/// 0.95 on their axis, and the axis from -`depth` to `depth`.
RasterFrame slowFrame(const PlainStack& stack, int axis, const SlowView& view, double depth = 0.9);

/// Red, green, blue and opacity of each pixel, 0 to 255, rows from the bottom: every slice over all before
/// it, in double precision, straight from what is meant.
std::vector<std::array<double, 4>> drawSlowly(const SlowDrawing& drawing);

/// One for each pixel: whether its centre lies so near to the edge of a slice, 1 / 20000 of a texel, that
/// rounding alone decides what is drawn.
std::vector<bool> undecidedPixels(const RasterFrame& frame);

} // namespace tirn::test
