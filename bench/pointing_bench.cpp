#include <benchmark/benchmark.h>

#include "benchstacks.h"
#include "palettes/palette.h"
#include "scene/pointing/viewprojection.h"
#include "volume/seenvoxel.h"

namespace tirn::bench {
namespace {

/// What is under the mouse of a turned volume, from the palettes' values on.
void voxelUnderMouse(benchmark::State& state, int channels, bool isMaximum)
{
    constexpr int kSide = 512;
    constexpr int kDepth = 256;
    const auto stack = confocalStack(kSide, kSide, kDepth, channels, 8, 256);
    const Palette palette("grey", 8);
    ViewState view;
    view.rotX = 30;
    view.rotY = 40;
    const ViewProjection projection(view, {}, {kSide, kSide});
    double x = 100;
    for (auto _ : state) {
        SeenVolume volume{StackGeometry::of(kSide, kSide, kDepth, 1024),
                          false,
                          projection.orientation(),
                          {0, kSide - 1, 0, kSide - 1, 0, kDepth - 1},
                          isMaximum};
        for (int c = 0; c < channels; ++c)
            volume.channels.push_back({stack.get(), c, palette.rgbaBytes()});
        const auto [from, direction] = projection.sightLine({x, 250});
        benchmark::DoNotOptimize(
            seenVoxel(volume, {from.x, from.y, from.z}, {direction.x, direction.y, direction.z}));
        x = x < 400 ? x + 1 : 100;
    }
}

BENCHMARK_CAPTURE(voxelUnderMouse, alpha, 1, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(voxelUnderMouse, maximum, 1, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(voxelUnderMouse, maximum3channels, 3, true)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace tirn::bench
