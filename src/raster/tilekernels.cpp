#include "raster/tilekernels.h"

#include <algorithm>
#include <atomic>

#include "raster/tilekernelbody.h"
#include "raster/tilekernelwide.h"

namespace tirn {

namespace {

float drawPlain(const TileFrame& frame, const TileSlice& slice, const TilePlace& place,
                std::span<const TileSample> samples, TileColours& colours)
{
    return tilekernel::drawSlice(frame, slice, place, samples, colours);
}

#ifdef TIRN_WIDE_KERNELS
bool runsAvx2() { return __builtin_cpu_supports("avx2") != 0; }

bool runsAvx512()
{
    return __builtin_cpu_supports("avx512vbmi") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
           __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512dq") != 0;
}
#endif

struct KernelRow
{
    KernelKind kind;
    TileKernel kernel;
    bool (*isThere)();
};

/// The fastest first.
constexpr KernelRow kKernels[] = {
#ifdef TIRN_WIDE_KERNELS
    {KernelKind::Avx512, &drawTileAvx512, &runsAvx512},
    {KernelKind::Avx2, &drawTileAvx2, &runsAvx2},
#endif
    {KernelKind::Plain, &drawPlain, [] { return true; }},
};

KernelKind fastestKernel()
{
    return std::find_if(std::begin(kKernels), std::end(kKernels),
                        [](const KernelRow& row) { return row.isThere(); })
        ->kind;
}

std::atomic<KernelKind>& usedKernel()
{
    static std::atomic<KernelKind> used = fastestKernel();
    return used;
}

const KernelRow* rowOf(KernelKind kind)
{
    const auto* row = std::find_if(std::begin(kKernels), std::end(kKernels),
                                   [kind](const KernelRow& candidate) { return candidate.kind == kind; });
    return row != std::end(kKernels) && row->isThere() ? row : nullptr;
}

} // namespace

int TileOffsets::window() const
{
    // The first pixel may lie a whole part further, and a sample reaches to the next texel.
    return *std::max_element(texels.begin(), texels.end()) + 3;
}

TileOffsets tileOffsets(double across, double along)
{
    TileOffsets offsets;
    for (std::size_t p = 0; p < kTilePixels; ++p)
        offsets.parts[p] =
            partsOf(across * static_cast<double>(p % kTileSide) + along * static_cast<double>(p / kTileSide));
    const auto [least, most] = std::minmax_element(offsets.parts.begin(), offsets.parts.end());
    offsets.leastPart = *least;
    offsets.mostPart = *most;
    offsets.leastTexel = *least >> kFractionBits;
    for (std::size_t p = 0; p < kTilePixels; ++p) {
        const std::int32_t texel = (offsets.parts[p] >> kFractionBits) - offsets.leastTexel;
        offsets.texels[p] = static_cast<std::uint16_t>(std::min(texel, 0x7fff));
        offsets.rest[p] = static_cast<std::uint16_t>(offsets.parts[p] & (kFractions - 1));
    }
    return offsets;
}

bool hasKernel(KernelKind kind) { return rowOf(kind) != nullptr; }

TileKernel tileKernel() { return rowOf(usedKernel())->kernel; }

void forceKernel(KernelKind kind) { usedKernel() = kind; }

void useFastestKernel() { usedKernel() = fastestKernel(); }

} // namespace tirn
