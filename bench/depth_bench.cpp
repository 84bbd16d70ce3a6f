#include <benchmark/benchmark.h>

#include "benchstacks.h"
#include "depth/curvebaking.h"
#include "depth/curvesearch.h"

namespace tirn::bench {
namespace {

/// One evaluation of what the searches for the power look at.
void entropyEvaluation(benchmark::State& state, int bitDepth, int limit)
{
    const auto stack = confocalStack(512, 512, 200, 1, bitDepth, limit);
    stack->generateStatistics();
    std::vector<double> curve(200);
    double power = 0.5;
    for (auto _ : state) {
        benchmark::DoNotOptimize(entropyDeficit(*stack, 0, {1, power, 0, 4}, curve));
        power = power < 3 ? power + 0.01 : 0.5;
    }
}

void bakeCurve(benchmark::State& state, int bitDepth, int limit)
{
    const auto stack = confocalStack(512, 512, 200, 1, bitDepth, limit);
    const std::vector<std::vector<double>> curves = {std::vector<double>(200, 1.0)};
    for (auto _ : state)
        bakeCurves(*stack, curves);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * stack->sampleCount() *
                            stack->attributes().bytesPerSample());
}

BENCHMARK_CAPTURE(entropyEvaluation, 8bit, 8, 256)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(entropyEvaluation, 12bit, 12, 4096)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(bakeCurve, 8bit, 8, 256)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(bakeCurve, 16bit, 16, 4096)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace tirn::bench
