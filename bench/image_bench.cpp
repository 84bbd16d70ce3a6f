#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include <QFile>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "base/parallel.h"
#include "benchstacks.h"
#include "formats/vendor/bioradio.h"
#include "image/imagefile.h"

// Rows come in pairs: what the program does, and under "limit" the barest loop that touches the same memory.

namespace tirn::bench {
namespace {

constexpr std::int64_t kHeader = 76;
constexpr std::int64_t kChunk = std::int64_t{2} << 20;

void setBytes(benchmark::State& state, std::int64_t bytes)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * bytes);
}

void readPic(benchmark::State& state, int channels, int bitDepth)
{
    const QStringList names = picFiles(512, 512, 200, channels, bitDepth);
    ImageFile stack;
    BioradIO reader(stack, names);
    for (auto _ : state) {
        if (!reader.readLayers(0, 199, 1))
            state.SkipWithError("not read");
    }
    setBytes(state, stack.sampleCount() * stack.attributes().bytesPerSample());
}

/// pread() of all files into fresh huge pages, on all cores.
void readLimit(benchmark::State& state, int channels, int bitDepth)
{
    const QStringList names = picFiles(512, 512, 200, channels, bitDepth);
    std::vector<int> files;
    for (const QString& name : names)
        files.push_back(::open(QFile::encodeName(name).constData(), O_RDONLY));
    const std::int64_t bytes = std::int64_t{512} * 512 * 200 * (bitDepth / 8);
    for (auto _ : state) {
        VoxelBuffer buffer(bytes * channels);
        for (int c = 0; c < channels; ++c) {
            parallelFor(0, bytes, kChunk, [&](std::int64_t begin, std::int64_t end) {
                const auto got =
                    ::pread(files[static_cast<std::size_t>(c)], buffer.data() + c * bytes + begin,
                            static_cast<std::size_t>(end - begin), kHeader + begin);
                benchmark::DoNotOptimize(got);
            });
        }
    }
    for (const int file : files)
        ::close(file);
    setBytes(state, bytes * channels);
}

BENCHMARK_CAPTURE(readPic, 8bit, 1, 8)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK_CAPTURE(readLimit, 8bit, 1, 8)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(readPic, 16bit, 1, 16)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(readLimit, 16bit, 1, 16)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(readPic, 16bit_2channels, 2, 16)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(readLimit, 16bit_2channels, 2, 16)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(readPic, 8bit_3channels, 3, 8)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(readLimit, 8bit_3channels, 3, 8)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

/// Which stack the statistics are made of.
enum class Data { Bytes, Twelve, TwelveUnknown, Full, FullTwoChannels };

std::unique_ptr<ImageFile> statisticsStack(Data data)
{
    switch (data) {
    case Data::Bytes:
        return confocalStack(512, 512, 200, 1, 8, 256);
    case Data::Twelve:
    case Data::TwelveUnknown:
        return confocalStack(512, 512, 200, 1, 16, 4096);
    case Data::Full:
        return noiseStack(512, 512, 200, 1, 16, 65536);
    case Data::FullTwoChannels:
        return confocalStack(512, 512, 200, 2, 16, 65536);
    }
    return {};
}

void statistics(benchmark::State& state, Data data)
{
    const auto stack = statisticsStack(data);
    for (auto _ : state) {
        stack->attributes().maxValue = data == Data::Twelve ? 4095 : -1;
        stack->generateStatistics();
    }
    setBytes(state, stack->sampleCount() * stack->attributes().bytesPerSample());
}

template <class Sample, int Tables>
void bareHistogram(const Sample* samples, std::int64_t count, std::size_t bins, std::uint32_t* tables)
{
    std::int64_t i = 0;
    for (; i + Tables <= count; i += Tables) {
        for (int k = 0; k < Tables; ++k)
            ++tables[static_cast<std::size_t>(k) * bins + samples[i + k]];
    }
}

/// A histogram of each slice with several counters a bin, on all cores, and nothing else.
template <class Sample, int Tables>
void statisticsLimitOf(benchmark::State& state, const ImageFile& stack, std::size_t bins)
{
    const auto* samples = reinterpret_cast<const Sample*>(stack.stackData());
    const std::int64_t layer = stack.sampleCount() / stack.attributes().z;
    std::vector<std::vector<std::uint64_t>> histograms(static_cast<std::size_t>(stack.attributes().z),
                                                       std::vector<std::uint64_t>(bins));
    for (auto _ : state) {

        parallelFor(0, stack.attributes().z, 4, [&](std::int64_t begin, std::int64_t end) {
            std::vector<std::uint32_t> tables(bins * Tables);
            for (std::int64_t z = begin; z < end; ++z) {
                std::fill(tables.begin(), tables.end(), 0U);
                bareHistogram<Sample, Tables>(samples + z * layer, layer, bins, tables.data());
                std::vector<std::uint64_t>& histogram = histograms[static_cast<std::size_t>(z)];
                std::fill(histogram.begin(), histogram.end(), 0U);
                for (std::size_t i = 0; i < bins; ++i) {
                    for (std::size_t k = 0; k < Tables; ++k)
                        histogram[i] += tables[k * bins + i];
                }
            }
        });
        benchmark::DoNotOptimize(histograms.data());
    }
    setBytes(state, stack.sampleCount() * static_cast<std::int64_t>(sizeof(Sample)));
}

void statisticsLimit(benchmark::State& state, Data data)
{
    const auto stack = statisticsStack(data);
    if (data == Data::Bytes)
        statisticsLimitOf<std::uint8_t, 8>(state, *stack, 256);
    else if (data == Data::Twelve || data == Data::TwelveUnknown)
        statisticsLimitOf<std::uint16_t, 4>(state, *stack, 4096);
    else
        statisticsLimitOf<std::uint16_t, 2>(state, *stack, 65536);
}

BENCHMARK_CAPTURE(statistics, 8bit, Data::Bytes)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(statisticsLimit, 8bit, Data::Bytes)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(statistics, 12in16bit, Data::Twelve)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(statisticsLimit, 12in16bit, Data::Twelve)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(statistics, 12in16bit_unknown, Data::TwelveUnknown)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(statistics, 16bit, Data::Full)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(statisticsLimit, 16bit, Data::Full)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(statistics, 16bit_2channels, Data::FullTwoChannels)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

/// Writing a new file each time.
void writePic(benchmark::State& state)
{
    const QStringList names = picFiles(512, 512, 200, 1, 8);
    ImageFile stack(names);
    stack.read();
    const QString target = names.first() + QStringLiteral(".out.pic");
    for (auto _ : state) {
        QFile::remove(target);
        if (!stack.write({target}, ImageType::BioRad))
            state.SkipWithError("not written");
    }
    setBytes(state, stack.sampleCount());
}

void writeLimit(benchmark::State& state)
{
    const QStringList names = picFiles(512, 512, 200, 1, 8);
    ImageFile stack(names);
    stack.read();
    const QByteArray target = QFile::encodeName(names.first() + QStringLiteral(".limit"));
    for (auto _ : state) {
        ::unlink(target.constData());
        const int file = ::open(target.constData(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
        benchmark::DoNotOptimize(
            ::write(file, stack.stackData(), static_cast<std::size_t>(stack.sampleCount())));
        ::close(file);
    }
    setBytes(state, stack.sampleCount());
}

BENCHMARK(writePic)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(writeLimit)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

} // namespace
} // namespace tirn::bench
