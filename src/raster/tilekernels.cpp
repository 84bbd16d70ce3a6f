#include "raster/tilekernels.h"

#include <atomic>

#include "raster/tilekernelbody.h"

namespace tirn {

namespace {

float drawPlain(const TilePlace& place, std::span<const TileSample> channels, RasterBlend blend,
                TileColours& colours)
{
    return tilekernel::drawSlice(place, channels, blend, colours);
}

#if defined(__x86_64__) && defined(__GNUC__)
#define TIRN_AVX2 __attribute__((target("avx2")))
#define TIRN_AVX512 __attribute__((target("avx2,avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi")))

TIRN_AVX2 float drawAvx2(const TilePlace& place, std::span<const TileSample> channels, RasterBlend blend,
                         TileColours& colours)
{
    return tilekernel::drawSlice(place, channels, blend, colours);
}

TIRN_AVX512 float drawAvx512(const TilePlace& place, std::span<const TileSample> channels, RasterBlend blend,
                             TileColours& colours)
{
    return tilekernel::drawSlice(place, channels, blend, colours);
}

TileKernel kernelOf(KernelKind kind)
{
    constexpr TileKernel kernels[] = {&drawPlain, &drawAvx2, &drawAvx512};
    return kernels[static_cast<int>(kind)];
}
#else
TileKernel kernelOf(KernelKind /*kind*/) { return &drawPlain; }
#endif

KernelKind fastestKernel()
{
    for (const KernelKind kind : {KernelKind::Avx512, KernelKind::Avx2}) {
        if (hasKernel(kind))
            return kind;
    }
    return KernelKind::Plain;
}

std::atomic<KernelKind>& usedKernel()
{
    static std::atomic<KernelKind> used = fastestKernel();
    return used;
}

} // namespace

bool hasKernel(KernelKind kind)
{
#if defined(__x86_64__) && defined(__GNUC__)
    switch (kind) {
    case KernelKind::Plain:
        return true;
    case KernelKind::Avx2:
        return __builtin_cpu_supports("avx2") != 0;
    case KernelKind::Avx512:
        return __builtin_cpu_supports("avx512vbmi") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
               __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512dq") != 0;
    }
#endif
    return kind == KernelKind::Plain;
}

TileKernel tileKernel() { return kernelOf(usedKernel()); }

void forceKernel(KernelKind kind) { usedKernel() = kind; }

void useFastestKernel() { usedKernel() = fastestKernel(); }

} // namespace tirn
