// Layers of slices laid over each other on the processor: 512 x 512 pixels, a slant of 30 degrees about x and
// y. The bare limit is the same number of bytes read and written.

#include <cmath>
#include <memory>
#include <numbers>
#include <random>

#include <benchmark/benchmark.h>

#include "raster/compositing.h"
#include "raster/tilekernels.h"

namespace tirn::bench {
namespace {

constexpr int kSide = 512;

enum Look { Cells, Noise };

struct Size
{
    int across;
    int planes;
};

/// Sixty bright balls on nothing.
std::vector<std::uint8_t> cells(const Size& size, int seed)
{
    std::vector<std::uint8_t> voxels(std::size_t(size.across) * size.across * size.planes);
    std::mt19937 random(seed);
    const auto between = [&](double a, double b) {
        return std::uniform_real_distribution<double>(a, b)(random);
    };
    for (int i = 0; i < 60; ++i) {
        const double radius = between(0.02, 0.055) * size.across;
        const double depth = std::max(2.0, radius * size.planes / size.across * 1.6);
        const double x = between(0.08, 0.92) * size.across;
        const double y = between(0.08, 0.92) * size.across;
        const double z = between(0.1, 0.9) * size.planes;
        const double bright = between(90, 250);
        for (int k = std::max(0, int(z - 1.3 * depth)); k < std::min<int>(size.planes, int(z + 1.3 * depth));
             ++k) {
            for (int j = std::max(0, int(y - 1.3 * radius));
                 j < std::min<int>(size.across, int(y + 1.3 * radius)); ++j) {
                for (int l = std::max(0, int(x - 1.3 * radius));
                     l < std::min<int>(size.across, int(x + 1.3 * radius)); ++l) {
                    const double far = std::pow((l - x) / radius, 2) + std::pow((j - y) / radius, 2) +
                                       std::pow((k - z) / depth, 2);
                    auto& voxel = voxels[(std::size_t(k) * size.across + j) * size.across + l];
                    if (far < 1.6)
                        voxel = std::max(voxel, std::uint8_t(bright * std::exp(-1.2 * far)));
                }
            }
        }
    }
    return voxels;
}

std::vector<std::uint8_t> noise(const Size& size, int seed)
{
    std::vector<std::uint8_t> voxels(std::size_t(size.across) * size.across * size.planes);
    std::mt19937 random(seed);
    for (auto& voxel : voxels)
        voxel = std::uint8_t(random());
    return voxels;
}

std::vector<std::uint8_t> ramp(int channel)
{
    std::vector<std::uint8_t> table;
    for (int i = 0; i < 256; ++i)
        for (const int part : {i, i * (channel + 1) / 4, 255 - i, i})
            table.push_back(std::uint8_t(part));
    return table;
}

/// Planes across z, seen from the front after turning 30 degrees about y and then about x.
RasterFrame frameOf(const Size& size)
{
    RasterFrame frame;
    frame.width = frame.height = kSide;
    frame.clamp = {0, size.across - 1, 0, size.across - 1};
    const double c = std::cos(std::numbers::pi / 6);
    const double s = std::sin(std::numbers::pi / 6);
    for (int k = 0; k < size.planes; ++k) {
        const double z =
            (0.996 - 1.992 / (size.planes - 1) * (size.planes - 1 - k)) * size.planes / size.across;
        // x' = c x + s z and y' = s s x + c y - s c z, for x and y from -1 to 1.
        const double half = kSide / 2.0;
        const double texels = size.across / 2.0;
        RasterSlice slice;
        slice.plane = slice.nextPlane = size.planes - 1 - k;
        const double xByColumn = 1 / (c * half);
        const double x0 = -(1 + s * z) / c;
        const double yByRow = 1 / (c * half);
        const double yByColumn = -s * s * xByColumn / c;
        const double y0 = (-1 - s * s * x0 + s * c * z) / c;
        slice.toTexel = {xByColumn * texels,
                         0,
                         (x0 + 1) * texels - 0.5,
                         yByColumn * -texels,
                         yByRow * -texels,
                         (1 - y0) * texels - 0.5,
                         0,
                         0,
                         1};
        slice.area = {-0.5, size.across - 0.5, -0.5, size.across - 0.5};
        frame.slices.push_back(slice);
    }
    return frame;
}

void layer(benchmark::State& state, Look look, Size size, int channels, RasterBlend blend, KernelKind kernel)
{
    if (!hasKernel(kernel)) {
        state.SkipWithError("this processor does not run the kernel");
        return;
    }
    forceKernel(kernel);
    std::vector<std::unique_ptr<SliceSet>> sets;
    std::vector<ColourLookup> lookups;
    lookups.reserve(static_cast<std::size_t>(channels));
    RasterFrame frame = frameOf(size);
    frame.blend = blend;
    for (int c = 0; c < channels; ++c) {
        const auto voxels = look == Cells ? cells(size, 10 + c) : noise(size, 20 + c);
        sets.push_back(std::make_unique<SliceSet>(
            VoxelSource{voxels.data(), 1, 1, 0, {size.across, size.across, size.planes}}, 2));
        lookups.emplace_back(ramp(c));
        RasterChannel channel;
        channel.slices = sets.back().get();
        channel.colours = &lookups.back();
        frame.channels.push_back(channel);
    }
    RasterLayer made;
    for (auto _ : state)
        made = composite(frame, std::move(made));
    useFastestKernel();
}

void planes(benchmark::State& state, Size size, int axis)
{
    const auto voxels = noise(size, 1);
    const VoxelSource source{voxels.data(), 1, 1, 0, {size.across, size.across, size.planes}};
    for (auto _ : state)
        benchmark::DoNotOptimize(SliceSet(source, axis));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * std::ssize(voxels));
}

constexpr Size kThin = {256, 64};
constexpr Size kWide = {512, 64};
constexpr Size kThick = {512, 256};

#define TIRN_LAYER(name, ...)                                                                                \
    BENCHMARK_CAPTURE(layer, name, __VA_ARGS__)                                                              \
        ->Unit(benchmark::kMillisecond)                                                                      \
        ->MeasureProcessCPUTime()                                                                            \
        ->UseRealTime()

TIRN_LAYER(cells256x64, Cells, kThin, 1, RasterBlend::Alpha, KernelKind::Avx512);
TIRN_LAYER(noise256x64, Noise, kThin, 1, RasterBlend::Alpha, KernelKind::Avx512);
TIRN_LAYER(cells256x64_3, Cells, kThin, 3, RasterBlend::Alpha, KernelKind::Avx512);
TIRN_LAYER(noise256x64_3, Noise, kThin, 3, RasterBlend::Alpha, KernelKind::Avx512);
TIRN_LAYER(cells256x64_3_maximum, Cells, kThin, 3, RasterBlend::Maximum, KernelKind::Avx512);
TIRN_LAYER(noise256x64_3_maximum, Noise, kThin, 3, RasterBlend::Maximum, KernelKind::Avx512);
TIRN_LAYER(cells512x64_3, Cells, kWide, 3, RasterBlend::Alpha, KernelKind::Avx512);
TIRN_LAYER(noise512x64_3, Noise, kWide, 3, RasterBlend::Alpha, KernelKind::Avx512);
TIRN_LAYER(cells512x256, Cells, kThick, 1, RasterBlend::Alpha, KernelKind::Avx512);
TIRN_LAYER(cells256x64_avx2, Cells, kThin, 1, RasterBlend::Alpha, KernelKind::Avx2);
TIRN_LAYER(noise256x64_avx2, Noise, kThin, 1, RasterBlend::Alpha, KernelKind::Avx2);
TIRN_LAYER(cells256x64_plain, Cells, kThin, 1, RasterBlend::Alpha, KernelKind::Plain);
TIRN_LAYER(noise256x64_plain, Noise, kThin, 1, RasterBlend::Alpha, KernelKind::Plain);

BENCHMARK_CAPTURE(planes, x256x64, kThin, 0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(planes, y256x64, kThin, 1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(planes, z256x64, kThin, 2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(planes, z512x256, kThick, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace tirn::bench
