#include <vector>

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "mesh/segmentation.h"
#include "movies/aviwriter.h"

namespace tirn::bench {
namespace {

constexpr int kFrames = 300;
constexpr int kSide = 512;

std::vector<std::uint8_t> frame()
{
    std::vector<std::uint8_t> pixels(std::size_t{kSide} * kSide * 4);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint8_t>(i * 7);
    return pixels;
}

void setBytes(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kFrames * kSide * kSide * 4);
}

void writeAvi(benchmark::State& state)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath("movie.avi");
    const auto pixels = frame();
    for (auto _ : state) {
        AviWriter writer(name, kSide, kSide, 15);
        bool done = writer.open();
        for (int f = 0; f < kFrames; ++f)
            done = done && writer.writeFrameAt(pixels.data(), f);
        if (!writer.close() || !done)
            state.SkipWithError("not written");
        state.PauseTiming();
        QFile::remove(name);
        state.ResumeTiming();
    }
    setBytes(state);
}

/// The same bytes by plain write().
void writeAviLimit(benchmark::State& state)
{
    const QTemporaryDir folder;
    const QByteArray name = QFile::encodeName(folder.filePath("movie.raw"));
    const auto pixels = frame();
    for (auto _ : state) {
        const int file = ::open(name.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        for (int f = 0; f < kFrames; ++f) {
            const auto written = ::write(file, pixels.data(), pixels.size());
            benchmark::DoNotOptimize(written);
        }
        ::close(file);
        state.PauseTiming();
        QFile::remove(name);
        state.ResumeTiming();
    }
    setBytes(state);
}

/// A binary STL file of a million facets.
void readStl(benchmark::State& state)
{
    constexpr std::uint32_t facets = 1000000;
    const QTemporaryDir folder;
    const QString name = folder.filePath("mesh.stl");
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly))
        return state.SkipWithError("not written");
    file.write(QByteArray(80, ' '));
    file.write(reinterpret_cast<const char*>(&facets), 4);
    file.write(QByteArray(50 * static_cast<int>(facets), '\x3f'));
    file.close();
    for (auto _ : state) {
        Segmentation mesh;
        if (!mesh.load(name) || mesh.facets.size() != facets)
            state.SkipWithError("not read");
    }
}

/// The same surface as text, as real programs write it, with exponents.
void readAsciiStl(benchmark::State& state)
{
    constexpr int facets = 1000000;
    const QTemporaryDir folder;
    const QString name = folder.filePath("mesh.stl");
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly))
        return state.SkipWithError("not written");
    file.write("solid mesh\n");
    const QByteArray facet = "facet normal -9.161820e-02 0.000000e+00 -7.207260e-02\n"
                             "  outer loop\n"
                             "    vertex 3.604630e-01 0.000000e+00 2.525000e+00\n"
                             "    vertex 0.000000e+00 1.234568e+01 -2.983090e+00\n"
                             "    vertex 3.604630e-01 2.000000e-01 2.525000e+00\n"
                             "  endloop\n"
                             "endfacet\n";
    for (int i = 0; i < facets; ++i)
        file.write(facet);
    file.write("endsolid mesh\n");
    file.close();
    for (auto _ : state) {
        Segmentation mesh;
        if (!mesh.load(name) || mesh.facets.size() != facets)
            state.SkipWithError("not read");
    }
}

BENCHMARK(writeAvi)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(writeAviLimit)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(readStl)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(readAsciiStl)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace tirn::bench
