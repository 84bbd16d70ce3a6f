#include <functional>
#include <memory>

#include <benchmark/benchmark.h>

#include "base/parallel.h"
#include "benchstacks.h"
#include "image/filters/extremafilters.h"
#include "image/filters/meanfilter.h"
#include "image/filters/medianfilter.h"
#include "image/imagefile.h"

// Filters over 512 x 512 x 50, as voxels a second. A filter's input is the output of the run before it, so
// the first run is not like the others; medians and extrema soon come to rest, which is why every run gets a
// copy.

namespace tirn::bench {
namespace {

constexpr int kX = 512;
constexpr int kY = 512;
constexpr int kZ = 50;

/// 8: bytes; 12: values below 4096 in words; 16: the full range of words.
std::unique_ptr<ImageFile> filterStack(int bits)
{
    return noiseStack(kX, kY, kZ, 1, bits > 8 ? 16 : 8, 1 << bits);
}

void runFilter(benchmark::State& state, const std::function<void(ImageFile&)>& filter)
{
    const auto original = filterStack(static_cast<int>(state.range(0)));
    original->generateStatistics();
    ImageFile stack(kX, kY, kZ, 1, original->attributes().bitDepth);
    stack.attributes().maxValue = original->attributes().maxValue;
    const auto bytes =
        static_cast<std::size_t>(original->sampleCount() * original->attributes().bytesPerSample());
    const auto restore = [&] {
        if (!stack.isLoaded())
            return;
        parallelFor(0, static_cast<std::int64_t>(bytes), 1 << 21, [&](std::int64_t begin, std::int64_t end) {
            std::copy(original->stackData() + begin, original->stackData() + end, stack.stackData() + begin);
        });
    };
    restore();
    stack.generateStatistics();
    // Once for nothing: what follows finds memory that the system has handed out before.
    filter(stack);
    for (auto _ : state) {
        state.PauseTiming();
        restore();
        state.ResumeTiming();
        filter(stack);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kX * kY * kZ);
}

void maxFilter2D(benchmark::State& state)
{
    runFilter(state, [&](ImageFile& s) { maxFilter(s, static_cast<int>(state.range(1)), -1, false); });
}

void maxFilter3D(benchmark::State& state)
{
    runFilter(state, [&](ImageFile& s) { maxFilter(s, static_cast<int>(state.range(1)), -1, true); });
}

void minFilter2D(benchmark::State& state)
{
    runFilter(state, [&](ImageFile& s) { minFilter(s, static_cast<int>(state.range(1)), -1, false); });
}

void meanFilter2D(benchmark::State& state)
{
    runFilter(state, [&](ImageFile& s) { meanFilter(s, static_cast<int>(state.range(1)), -1, false); });
}

void meanFilter3D(benchmark::State& state)
{
    runFilter(state, [&](ImageFile& s) { meanFilter(s, static_cast<int>(state.range(1)), -1, true); });
}

void medianFilter2D(benchmark::State& state)
{
    runFilter(state, [&](ImageFile& s) { medianFilter(s, static_cast<int>(state.range(1)), -1, false); });
}

void medianFilter3D(benchmark::State& state)
{
    runFilter(state, [&](ImageFile& s) { medianFilter(s, static_cast<int>(state.range(1)), -1, true); });
}

void medianRows2D(benchmark::internal::Benchmark* row)
{
    row->ArgNames({"bits", "size"})->ArgsProduct({{8, 12, 16}, {3, 5, 9, 31, 63}});
    row->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
}

void medianRows3D(benchmark::internal::Benchmark* row)
{
    row->ArgNames({"bits", "size"})->ArgsProduct({{8, 12, 16}, {3, 5, 9}});
    row->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
}

void bytesAndWords(benchmark::internal::Benchmark* row)
{
    row->ArgNames({"bits", "size"})->ArgsProduct({{8, 16}, {3, 9, 31}});
    row->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
}

BENCHMARK(maxFilter2D)->Apply(bytesAndWords);
BENCHMARK(maxFilter3D)->Apply(bytesAndWords);
BENCHMARK(meanFilter2D)->Apply(bytesAndWords);
BENCHMARK(meanFilter3D)->Apply(bytesAndWords);
BENCHMARK(medianFilter2D)->Apply(medianRows2D);
BENCHMARK(medianFilter3D)->Apply(medianRows3D);
BENCHMARK(minFilter2D)->Apply(bytesAndWords);

} // namespace
} // namespace tirn::bench
