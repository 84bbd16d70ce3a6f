#include "raster/tilekernelbody.h"
#include "raster/tilekernelwide.h"

#ifdef TIRN_WIDE_KERNELS
namespace tirn {

__attribute__((target("avx2"))) float drawTileAvx2(const TileFrame& frame, const TileSlice& slice,
                                                   const TilePlace& place,
                                                   std::span<const TileSample> samples, TileColours& colours)
{
    return tilekernel::drawSlice(frame, slice, place, samples, colours);
}

} // namespace tirn
#endif
