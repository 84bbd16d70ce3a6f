// Filter jobs with all that goes with them, beside the bare filter and the bare replacing of textures.

#include <benchmark/benchmark.h>

#include "base/stopwatch.h"
#include "gl/gltable.h"
#include "image/filters/medianfilter.h"
#include "threads/filterthread.h"
#include "volume/volumemaking.h"
#include "window/benchwindow.h"

namespace tirn::bench {
namespace {

constexpr int kSide = 256;
constexpr int kLayers = 64;

FilterJobParameters medianOf(int size)
{
    FilterJobParameters parameters;
    parameters.operation = FilterOperation::Median;
    parameters.size = size;
    return parameters;
}

std::unique_ptr<VoxelArray> series(int timePoints)
{
    benchWindow().hidden().makeCurrent();
    auto array = std::make_unique<VoxelArray>(VolumeOptions());
    for (int t = 0; t < timePoints; ++t)
        array->appendImage(benchBlobs(kSide, kSide, kLayers, 1));
    VolumeLayout layout;
    layout.timePoints = timePoints;
    completeVolume(*array, layout);
    return array;
}

/// A median job; the counter is what it takes beyond its filter and its textures, in percent of these.
void medianJob(benchmark::State& state)
{
    const auto timePoints = static_cast<int>(state.range(0));
    const auto size = static_cast<int>(state.range(1));
    const auto array = series(timePoints);
    RenderLock lock;
    double bare = 0;
    double job = 0;
    for (auto _ : state) {
        Stopwatch watch;
        for (const auto& image : array->images())
            medianFilter(*image, size, -1, false);
        for (int t = 0; t < timePoints; ++t)
            array->reencode(t);
        gl().Finish();
        bare += watch.restart();
        runFilterJob({array.get(), medianOf(size)}, lock, {});
        const double seconds = watch.seconds();
        job += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["bareMs"] = 1000 * bare / static_cast<double>(state.iterations());
    state.counters["overheadPercent"] = 100 * (job - bare) / bare;
}

BENCHMARK(medianJob)
    ->ArgNames({"timePoints", "size"})
    ->Args({1, 3})
    ->Args({1, 9})
    ->Args({1, 31})
    ->Args({10, 3})
    ->Args({10, 9})
    ->Args({10, 31})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

} // namespace
} // namespace tirn::bench
