#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>
#ifdef TIRN_BENCH_PEERS
#include <tiffio.h>
#endif

#include "base/parallel.h"
#include "benchstacks.h"
#include "formats/files/bytewriter.h"
#include "formats/tiff/ifdentry.h"
#include "formats/tiff/mtiffio.h"
#include "formats/tiff/tiffseriesio.h"
#include "formats/vendor/metamorphio.h"
#include "image/imagefile.h"

// What the program does; under "limit" the barest loop that moves the same bytes; under "libtiff" that
// library.

namespace tirn::bench {
namespace {

constexpr int kSide = 512;
constexpr int kLayers = 200;
constexpr int kChannels = 2;
constexpr std::int64_t kPageBytes = std::int64_t{kSide} * kSide * kChannels * 2;
constexpr std::int64_t kChunk = std::int64_t{2} << 20;

const QTemporaryDir& folder()
{
    static const QTemporaryDir made;
    return made;
}

/// A TIFF file of square pages, 16 bit, each page's strips and tables in front of its directory.
QString tiffFile(int pages, int side, int channels, int strips)
{
    static std::map<std::vector<int>, QString> made;
    QString& name = made[{pages, side, channels, strips}];
    if (!name.isEmpty())
        return name;
    name = folder().filePath(QString("%1.tif").arg(made.size()));
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly))
        return name;
    const auto pageBytes = static_cast<std::uint32_t>(side * side * channels * 2);
    const std::uint32_t stripBytes = pageBytes / static_cast<std::uint32_t>(strips);
    const auto page = confocalStack(side, side, 1, channels, 16, 4096);
    std::uint32_t at = 8;
    ByteWriter header;
    header.u16(0x4949);
    header.u16(42);
    header.u32(at + pageBytes);
    file.write(reinterpret_cast<const char*>(header.bytes().data()), 8);
    for (int z = 0; z < pages; ++z) {
        std::vector<std::uint32_t> offsets;
        for (int strip = 0; strip < strips; ++strip)
            offsets.push_back(at + static_cast<std::uint32_t>(strip) * stripBytes);
        const auto n = [](int value) { return static_cast<std::uint32_t>(value); };
        const std::uint32_t directory = at + pageBytes;
        const std::uint32_t tables = directory + 2 + 9 * 12 + 4;
        ByteWriter writer;
        writer.u16(9);
        const IFDEntry entries[] = {{256, 4, 1, 0, {n(side)}},
                                    {257, 4, 1, 0, {n(side)}},
                                    {258, 3, n(channels), 0, std::vector<std::uint32_t>(n(channels), 16)},
                                    {259, 3, 1, 0, {1}},
                                    {262, 3, 1, 0, {1}},
                                    {273, 4, n(strips), tables - directory, offsets},
                                    {277, 3, 1, 0, {n(channels)}},
                                    {278, 3, 1, 0, {n(side / strips)}},
                                    {279, 4, n(strips), tables - directory + 4 * n(strips),
                                     std::vector<std::uint32_t>(n(strips), stripBytes)}};
        for (IFDEntry entry : entries)
            writeEntry(writer, entry);
        const bool last = z + 1 == pages;
        const auto size = static_cast<std::uint32_t>(2 + 9 * 12 + 4 + (strips > 1 ? 8 * strips : 0));
        writer.u32(last ? 0 : directory + size + pageBytes);
        writer.reserveUpTo(size);
        // The tables' offsets were counted from the directory, so that they could be written in place.
        QByteArray bytes(reinterpret_cast<const char*>(writer.bytes().data()), static_cast<int>(size));
        for (const int entry : {5, 8}) {
            if (strips == 1)
                continue;
            std::uint32_t offset = 0;
            std::memcpy(&offset, bytes.constData() + 2 + 12 * entry + 8, 4);
            offset += directory;
            std::memcpy(bytes.data() + 2 + 12 * entry + 8, &offset, 4);
        }
        file.write(reinterpret_cast<const char*>(page->stackData()), pageBytes);
        file.write(bytes);
        at = directory + size;
    }
    return name;
}

void setBytes(benchmark::State& state, std::int64_t bytes)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * bytes);
}

void readTiff(benchmark::State& state, int strips)
{
    ImageFile stack;
    MTiffIO reader(stack, {tiffFile(kLayers, kSide, kChannels, strips)});
    for (auto _ : state) {
        if (!reader.readLayers(0, kLayers - 1, 1))
            state.SkipWithError("not read");
    }
    setBytes(state, kPageBytes * kLayers);
}

void readTiffLimit(benchmark::State& state, int strips)
{
    const int file =
        ::open(QFile::encodeName(tiffFile(kLayers, kSide, kChannels, strips)).constData(), O_RDONLY);
    for (auto _ : state) {
        VoxelBuffer buffer(kPageBytes * kLayers);
        parallelFor(0, kPageBytes * kLayers, kChunk, [&](std::int64_t begin, std::int64_t end) {
            const auto got =
                ::pread(file, buffer.data() + begin, static_cast<std::size_t>(end - begin), begin);
            benchmark::DoNotOptimize(got);
        });
    }
    ::close(file);
    setBytes(state, kPageBytes * kLayers);
}

#ifdef TIRN_BENCH_PEERS
/// Hands each strip of each page, and a place for it, to `read`, which returns the bytes that it put there.
template <class Read>
void forEachStrip(int strips, std::byte* to, Read read)
{
    const QByteArray name = QFile::encodeName(tiffFile(kLayers, kSide, kChannels, strips));
    TIFFSetWarningHandler(nullptr);
    TIFF* tiff = TIFFOpen(name.constData(), "r");
    do {
        for (tstrip_t strip = 0; strip < TIFFNumberOfStrips(tiff); ++strip)
            to += read(tiff, strip, to);
    } while (TIFFReadDirectory(tiff) != 0);
    TIFFClose(tiff);
}

/// As its manual shows: decoded strips, into memory of the ordinary kind.
void readTiffLibtiff(benchmark::State& state, int strips)
{
    for (auto _ : state) {
        const std::unique_ptr<std::byte[]> buffer(new std::byte[kPageBytes * kLayers]);
        forEachStrip(strips, buffer.get(), [](TIFF* tiff, tstrip_t strip, std::byte* to) {
            return TIFFReadEncodedStrip(tiff, strip, to, -1);
        });
        benchmark::DoNotOptimize(buffer.get());
    }
    setBytes(state, kPageBytes * kLayers);
}
/// The most that can be got out of it: raw strips, into our memory of huge pages.
void readTiffLibtiffRaw(benchmark::State& state, int strips)
{
    for (auto _ : state) {
        VoxelBuffer buffer(kPageBytes * kLayers);
        forEachStrip(strips, buffer.data(), [](TIFF* tiff, tstrip_t strip, std::byte* to) {
            return TIFFReadRawStrip(tiff, strip, to, kPageBytes);
        });
        benchmark::DoNotOptimize(buffer.data());
    }
    setBytes(state, kPageBytes * kLayers);
}
BENCHMARK_CAPTURE(readTiffLibtiff, one_strip, 1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(readTiffLibtiff, eight_strips, 8)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(readTiffLibtiffRaw, one_strip, 1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(readTiffLibtiffRaw, eight_strips, 8)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

BENCHMARK_CAPTURE(readTiff, one_strip, 1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(readTiff, eight_strips, 8)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(readTiffLimit, one_strip, 1)->Unit(benchmark::kMillisecond)->UseRealTime();

void openManyPages(benchmark::State& state)
{
    const QString name = tiffFile(10000, 16, 1, 1);
    for (auto _ : state) {
        ImageFile stack;
        const MTiffIO reader(stack, {name});
        if (stack.attributes().fileZ != 10000)
            state.SkipWithError("not read");
    }
}
BENCHMARK(openManyPages)->Unit(benchmark::kMillisecond)->UseRealTime();

using Writer = QStringList (*)(const QStringList&, const ImageAttributes&, const std::uint8_t*, int, int, int,
                               bool);

const ImageFile& writtenStack()
{
    static const auto stack = confocalStack(kSide, kSide, kLayers, kChannels, 16, 4096);
    return *stack;
}

void writeTiff(benchmark::State& state, Writer writer, const char* name)
{
    const ImageFile& stack = writtenStack();
    for (auto _ : state) {
        if (!writer({folder().filePath(name)}, stack.attributes(), stack.stackData(), 0, kLayers - 1, 1, true)
                 .isEmpty())
            state.SkipWithError("not written");
    }
    setBytes(state, kPageBytes * kLayers);
}

/// write() of the same bytes to so many files.
void writeTiffLimit(benchmark::State& state, int files)
{
    const ImageFile& stack = writtenStack();
    const std::int64_t fileBytes = kPageBytes * kLayers / files;
    for (auto _ : state) {
        for (int i = 0; i < files; ++i) {
            const QByteArray name = QFile::encodeName(folder().filePath(QString("limit%1").arg(i)));
            const int file = ::open(name.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            const std::uint8_t* from = stack.stackData() + i * fileBytes;
            for (std::int64_t done = 0; done < fileBytes;) {
                const auto got = ::write(file, from + done, static_cast<std::size_t>(fileBytes - done));
                if (got <= 0) {
                    state.SkipWithError("not written");
                    break;
                }
                done += got;
            }
            ::close(file);
        }
    }
    setBytes(state, kPageBytes * kLayers);
}

BENCHMARK_CAPTURE(writeTiff, mtiff, MTiffIO::write, "w.tif")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(writeTiff, series, TiffSeriesIO::write, "s.tif")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(writeTiff, stk, MetaMorphIO::write, "w.stk")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(writeTiffLimit, one_file, 1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(writeTiffLimit, a_file_a_layer, kLayers)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace tirn::bench
