#pragma once

#include "raster/rasterframe.h"

namespace tirn {

/// Lays the slices of a frame over each other, exactly: colours are summed with more than 16 bits and rounded
/// once. Works on all cores. The layer holds the rectangle that the slices cover.
///
/// A slice is sampled where the pixels' centres lie on it, between four texels, or eight where it shows what
/// lies between two planes; colours are looked up after that. Its channels are drawn in their order, each
/// over the one before. What a pixel shows does not depend on which part of the picture is wanted. Throws
/// std::bad_alloc.
/// `room` is a layer that is no longer needed.
RasterLayer composite(const RasterFrame& frame, RasterLayer room = {});

/// The rectangle of the wanted part outside of which no slice lies.
struct PixelRect
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};
PixelRect coveredPart(const RasterFrame& frame);

} // namespace tirn
