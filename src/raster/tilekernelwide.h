#pragma once

#include "raster/tilekernels.h"

#if defined(__x86_64__) && defined(__GNUC__)
#define TIRN_WIDE_KERNELS
#endif

#ifdef TIRN_WIDE_KERNELS
namespace tirn {

/// Kernels that only some processors run; who calls them has asked which.
float drawTileAvx2(const TileFrame& frame, const TileSlice& slice, const TilePlace& place,
                   std::span<const TileSample> samples, TileColours& colours);
float drawTileAvx512(const TileFrame& frame, const TileSlice& slice, const TilePlace& place,
                     std::span<const TileSample> samples, TileColours& colours);

} // namespace tirn
#endif
