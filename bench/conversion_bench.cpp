#include <algorithm>
#include <cstring>
#include <memory>

#include <benchmark/benchmark.h>

#include "base/parallel.h"
#include "benchstacks.h"
#include "formats/imageio.h"
#include "image/filters/pointfilters.h"
#include "image/imagefile.h"

// Conversions over 512 x 512 x 50, as bytes read and written a second. The limit is a copy by all threads,
// into fresh memory like that of a conversion that makes a new stack, or over memory that is there.

namespace tirn::bench {
namespace {

constexpr int kX = 512;
constexpr int kY = 512;
constexpr int kZ = 50;

struct Conversion
{
    const char* name;
    int bits;
    int channels;
    void (*run)(ImageFile& stack);
};

// A result that stands for itself is put in the stack's place, so that the old voxels go back as well.
constexpr Conversion kConversions[] = {
    {"flipX", 8, 1, [](ImageFile& s) { s.flip('X'); }},
    {"flipX", 16, 1, [](ImageFile& s) { s.flip('X'); }},
    {"flipX", 8, 3, [](ImageFile& s) { s.flip('X'); }},
    {"flipY", 8, 1, [](ImageFile& s) { s.flip('Y'); }},
    {"flipZ", 8, 1, [](ImageFile& s) { s.flip('Z'); }},
    {"invert", 8, 1, [](ImageFile& s) { invert(s); }},
    {"invert", 16, 1, [](ImageFile& s) { invert(s); }},
    {"addConstant", 8, 1, [](ImageFile& s) { addConstant(s, 9, -1); }},
    {"addConstant", 16, 1, [](ImageFile& s) { addConstant(s, -9, -1); }},
    {"addConstant", 8, 2, [](ImageFile& s) { addConstant(s, 9, 1); }},
    {"crop", 8, 1, [](ImageFile& s) { s.crop(10, 500, 10, 500, 1, 48); }},
    {"crop", 16, 1, [](ImageFile& s) { s.crop(10, 500, 10, 500, 1, 48); }},
    {"pad", 8, 1, [](ImageFile& s) { s.pad(530, 530, 52); }},
    {"padBack", 8, 1, [](ImageFile& s) { s.padBack(52); }},
    {"clampLower", 16, 1, [](ImageFile& s) { s.clampLower(); }},
    {"clampUpper", 16, 1, [](ImageFile& s) { s.clampUpper(); }},
    {"stackToShort", 8, 1, [](ImageFile& s) { s.stackToShort(); }},
    {"convertToDepth", 8, 1, [](ImageFile& s) { s.convertToDepth(12); }},
    {"smartLower", 16, 1, [](ImageFile& s) { s.stackToByteSmartLower(); }},
    {"smartMult", 16, 1, [](ImageFile& s) { s.stackToByteSmartMult(); }},
    {"smartMult", 16, 2, [](ImageFile& s) { s.stackToByteSmartMult(); }},
    {"byteRange", 16, 1, [](ImageFile& s) { s.stackToByteRange(100, 3000); }},
    {"subSample2", 8, 1, [](ImageFile& s) { s.subSample(2); }},
    {"subSample2", 16, 1, [](ImageFile& s) { s.subSample(2); }},
    {"subSample3", 8, 1, [](ImageFile& s) { s.subSample(3); }},
    {"subSample8", 8, 1, [](ImageFile& s) { s.subSample(8); }},
    {"subSample1", 8, 1, [](ImageFile& s) { s.subSample(1); }},
    {"subSampleMax2", 8, 1, [](ImageFile& s) { s.subSampleMax(2, 2, 2); }},
    {"subSampleMax2", 16, 1, [](ImageFile& s) { s.subSampleMax(2, 2, 2); }},
    {"subSampleMean221", 8, 1, [](ImageFile& s) { s.subSampleMean(2, 2, 1); }},
};

std::int64_t bytesOf(const ImageFile& stack)
{
    return stack.sampleCount() * stack.attributes().bytesPerSample();
}

void copyAll(const std::uint8_t* from, std::int64_t bytes, std::uint8_t* to)
{
    parallelFor(0, bytes, std::int64_t{1} << 20, [&](std::int64_t begin, std::int64_t end) {
        std::memcpy(to + begin, from + begin, static_cast<std::size_t>(end - begin));
    });
}

void setBytes(benchmark::State& state, std::int64_t bytes)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * bytes);
}

std::unique_ptr<ImageFile> stackOf(int bits, int channels)
{
    return confocalStack(kX, kY, kZ, channels, bits, bits > 8 ? 4096 : 256);
}

/// Puts the voxels and attributes of `original` back, and the statistics that conversions go by.
void restore(const ImageFile& original, ImageFile& stack)
{
    if (bytesOf(stack) != bytesOf(original) || !stack.isLoaded())
        stack.setStackData(VoxelBuffer(bytesOf(original)));
    stack.attributes() = original.attributes();
    copyAll(original.stackData(), bytesOf(original), stack.stackData());
}

void conversion(benchmark::State& state, const Conversion& what)
{
    const auto original = stackOf(what.bits, what.channels);
    ImageFile stack(kX, kY, kZ, what.channels, what.bits);
    restore(*original, stack);
    stack.generateStatistics();
    std::int64_t bytes = 0;
    // Once for nothing: what follows finds memory that the system has handed out before.
    what.run(stack);
    for (auto _ : state) {
        state.PauseTiming();
        restore(*original, stack);
        state.ResumeTiming();
        what.run(stack);
        bytes = bytesOf(*original) + bytesOf(stack);
    }
    setBytes(state, bytes);
}

void projection(benchmark::State& state, int bits)
{
    const auto original = stackOf(bits, 1);
    const int z = original->attributes().z;
    ImageFile stack(kX, kY, kZ, 1, bits);
    for (auto _ : state) {
        state.PauseTiming();
        restore(*original, stack);
        stack.attributes().z = z;
        state.ResumeTiming();
        stack.maxIntensityProject();
    }
    setBytes(state, bytesOf(*original));
}

void extraction(benchmark::State& state, int bits, int channels)
{
    const auto stack = stackOf(bits, channels);
    std::unique_ptr<ImageFile> result;
    for (auto _ : state) {
        result.reset();
        result = stack->extractChannel(1);
    }
    setBytes(state, bytesOf(*stack) + bytesOf(*result));
}

void ratioOfChannels(benchmark::State& state, int bits)
{
    const auto stack = stackOf(bits, 2);
    std::unique_ptr<ImageFile> result;
    for (auto _ : state) {
        result.reset();
        result = stack->ratio(0, 1);
    }
    setBytes(state, bytesOf(*stack) + bytesOf(*result));
}

void largerOfTwo(benchmark::State& state, int bits)
{
    const auto one = stackOf(bits, 1);
    const auto other = noiseStack(kX, kY, kZ, 1, bits, 1 << std::min(bits, 12));
    for (auto _ : state)
        one->maxMerge(*other);
    setBytes(state, 3 * bytesOf(*one));
}

/// Two stacks of one channel become one of two, in fresh memory.
void mergedChannels(benchmark::State& state, int bits)
{
    const auto one = stackOf(bits, 1);
    const auto other = stackOf(bits, 1);
    ImageAttributes attributes = one->attributes();
    attributes.channels = 2;
    const std::byte* const channels[] = {reinterpret_cast<const std::byte*>(one->stackData()),
                                         reinterpret_cast<const std::byte*>(other->stackData())};
    for (auto _ : state) {
        VoxelBuffer result(2 * bytesOf(*one));
        ImageIO::mergeChannels(channels, result.data(), attributes);
        benchmark::DoNotOptimize(result.data());
    }
    setBytes(state, 4 * bytesOf(*one));
}

/// A copy that takes the place of what it was made from, as the results of conversions do.
void copyReplacingLimit(benchmark::State& state, int bits, int channels)
{
    const auto stack = stackOf(bits, channels);
    const auto copy = [&stack] {
        VoxelBuffer result(bytesOf(*stack));
        copyAll(stack->stackData(), bytesOf(*stack), reinterpret_cast<std::uint8_t*>(result.data()));
        stack->setStackData(std::move(result));
    };
    copy();
    for (auto _ : state)
        copy();
    setBytes(state, 2 * bytesOf(*stack));
}

/// Every byte is looked at and nothing is written: what all that makes a small result has to do at least.
void lookAtEachByteLimit(benchmark::State& state, int bits)
{
    const auto stack = stackOf(bits, 1);
    for (auto _ : state) {
        parallelFor(0, bytesOf(*stack), std::int64_t{1} << 18, [&](std::int64_t begin, std::int64_t end) {
            std::uint64_t sums[8] = {};
            for (std::int64_t i = begin; i < end; i += std::int64_t{sizeof sums}) {
                std::uint64_t numbers[8];
                std::memcpy(numbers, stack->stackData() + i, sizeof numbers);
                for (int k = 0; k < 8; ++k)
                    sums[k] += numbers[k];
            }
            benchmark::DoNotOptimize(sums);
        });
    }
    setBytes(state, bytesOf(*stack));
}

/// A copy into fresh memory, like what makes a stack of its own.
void copyFreshLimit(benchmark::State& state, int bits, int channels)
{
    const auto stack = stackOf(bits, channels);
    for (auto _ : state) {
        VoxelBuffer result(bytesOf(*stack));
        copyAll(stack->stackData(), bytesOf(*stack), reinterpret_cast<std::uint8_t*>(result.data()));
        benchmark::DoNotOptimize(result.data());
    }
    setBytes(state, 2 * bytesOf(*stack));
}

/// A copy over memory that is there.
void copyOverLimit(benchmark::State& state, int bits, int channels)
{
    const auto from = stackOf(bits, channels);
    const auto to = stackOf(bits, channels);
    for (auto _ : state)
        copyAll(from->stackData(), bytesOf(*from), to->stackData());
    setBytes(state, 2 * bytesOf(*from));
}

void shared(benchmark::internal::Benchmark* row)
{
    row->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
}

const bool registered = [] {
    for (const Conversion& what : kConversions) {
        const QString name = QStringLiteral("conversion/%1/bits:%2/channels:%3")
                                 .arg(what.name)
                                 .arg(what.bits)
                                 .arg(what.channels);
        benchmark::RegisterBenchmark(name.toLatin1().constData(), conversion, what)->Apply(shared);
    }
    return true;
}();

BENCHMARK_CAPTURE(projection, 8bit, 8)->Apply(shared);
BENCHMARK_CAPTURE(projection, 16bit, 16)->Apply(shared);
BENCHMARK_CAPTURE(extraction, 8bit_2channels, 8, 2)->Apply(shared);
BENCHMARK_CAPTURE(extraction, 16bit_2channels, 16, 2)->Apply(shared);
BENCHMARK_CAPTURE(extraction, 8bit_3channels, 8, 3)->Apply(shared);
BENCHMARK_CAPTURE(mergedChannels, 8bit, 8)->Apply(shared);
BENCHMARK_CAPTURE(mergedChannels, 16bit, 16)->Apply(shared);
BENCHMARK_CAPTURE(ratioOfChannels, 8bit, 8)->Apply(shared);
BENCHMARK_CAPTURE(ratioOfChannels, 16bit, 16)->Apply(shared);
BENCHMARK_CAPTURE(largerOfTwo, 8bit, 8)->Apply(shared);
BENCHMARK_CAPTURE(largerOfTwo, 16bit, 16)->Apply(shared);
BENCHMARK_CAPTURE(lookAtEachByteLimit, 8bit, 8)->Apply(shared);
BENCHMARK_CAPTURE(lookAtEachByteLimit, 16bit, 16)->Apply(shared);
BENCHMARK_CAPTURE(copyReplacingLimit, 8bit, 8, 1)->Apply(shared);
BENCHMARK_CAPTURE(copyReplacingLimit, 16bit, 16, 1)->Apply(shared);
BENCHMARK_CAPTURE(copyReplacingLimit, 16bit_2channels, 16, 2)->Apply(shared);
BENCHMARK_CAPTURE(copyFreshLimit, 8bit, 8, 1)->Apply(shared);
BENCHMARK_CAPTURE(copyFreshLimit, 16bit, 16, 1)->Apply(shared);
BENCHMARK_CAPTURE(copyFreshLimit, 16bit_2channels, 16, 2)->Apply(shared);
BENCHMARK_CAPTURE(copyOverLimit, 8bit, 8, 1)->Apply(shared);
BENCHMARK_CAPTURE(copyOverLimit, 16bit, 16, 1)->Apply(shared);
BENCHMARK_CAPTURE(copyOverLimit, 8bit_3channels, 8, 3)->Apply(shared);

} // namespace
} // namespace tirn::bench
