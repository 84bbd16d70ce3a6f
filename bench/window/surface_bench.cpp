// A surface of a million facets in a window of 512 x 512 pixels.

#include <cmath>
#include <numbers>

#include <benchmark/benchmark.h>

#include "volume/meshfit.h"
#include "window/benchwindow.h"

namespace tirn::bench {
namespace {

constexpr int kRings = 500;
constexpr int kSectors = 1000;

/// A bumpy ball of two facets a cell.
std::unique_ptr<Segmentation> millionFacets()
{
    const auto at = [](int ring, int sector) {
        const double polar = std::numbers::pi * ring / kRings;
        const double around = 2 * std::numbers::pi * sector / kSectors;
        const double radius = 10 + std::sin(7 * polar) * std::cos(9 * around);
        return Vector3f{static_cast<float>(radius * std::sin(polar) * std::cos(around)),
                        static_cast<float>(radius * std::sin(polar) * std::sin(around)),
                        static_cast<float>(radius * std::cos(polar))};
    };
    auto mesh = std::make_unique<Segmentation>();
    for (int ring = 0; ring < kRings; ++ring) {
        for (int sector = 0; sector < kSectors; ++sector) {
            const Vector3f a = at(ring, sector);
            const Vector3f b = at(ring + 1, sector);
            const Vector3f c = at(ring, sector + 1);
            const Vector3f d = at(ring + 1, sector + 1);
            mesh->facets.push_back({{a, b, c}, a});
            mesh->facets.push_back({{b, d, c}, d});
        }
    }
    mesh->bounds = boundsOf(mesh->facets);
    mesh->facetsChanged();
    return mesh;
}

void add(BenchWindow& window, std::unique_ptr<Segmentation> mesh)
{
    window.widget().stopAndWait();
    window.model().edit({}, [&](Scene& scene) {
        scene.segmentations.clear();
        if (mesh != nullptr)
            scene.segmentations.push_back(std::move(mesh));
    });
}

} // namespace

/// Moving a million facets into the volume.
static void fitSurface(benchmark::State& state)
{
    const std::unique_ptr<Segmentation> mesh = millionFacets();
    const StackGeometry geometry = StackGeometry::of(256, 256, 64, 1024);
    for (auto _ : state)
        fitMesh(*mesh, MeshFit::Volume, geometry);
}
BENCHMARK(fitSurface)->Unit(benchmark::kMillisecond);

/// A frame over a small volume; the first one makes the surface's list.
static void surfaceFrame(benchmark::State& state, bool isFirst)
{
    BenchWindow& window = benchWindow();
    VoxelArray& array = window.show(16, 16, 16, 1);
    for (auto _ : state) {
        state.PauseTiming();
        if (isFirst || window.scene().segmentations.empty()) {
            std::unique_ptr<Segmentation> mesh = millionFacets();
            fitMesh(*mesh, MeshFit::Volume, array.geometry());
            add(window, nullptr);
            window.frame();
            add(window, std::move(mesh));
            if (!isFirst)
                window.frame();
        }
        state.ResumeTiming();
        state.SetIterationTime(window.frame());
    }
    add(window, nullptr);
    window.closeAll();
}
BENCHMARK_CAPTURE(surfaceFrame, first, true)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_CAPTURE(surfaceFrame, steady, false)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);

} // namespace tirn::bench
