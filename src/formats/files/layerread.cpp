#include "formats/files/layerread.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <unistd.h>
#endif

#include "base/parallel.h"
#include "image/interleave.h"

namespace tirn {

namespace {

/// Bytes that one call of the system reads: a huge page straight into the stack; half the second-level cache
/// where the bytes have yet to be interleaved.
constexpr std::int64_t kDirectChunk = std::int64_t{2} << 20;
constexpr std::int64_t kInterleavedChunk = std::int64_t{128} << 10;

/// The job of one call of readInterleavedLayers: chunks of layers, in any order and on any thread.
class LayerRead
{
public:
    LayerRead(std::span<const LayerSource> channels, std::int64_t count, std::int64_t layerSamples,
              int sampleBytes, std::byte* destination)
        : m_channels(channels), m_count(count), m_layerBytes(layerSamples * sampleBytes),
          m_sampleBytes(sampleBytes), m_destination(destination)
    {
        // Layers without gaps are one long layer.
        const bool contiguous =
            std::all_of(channels.begin(), channels.end(),
                        [this](const LayerSource& source) { return source.stride == m_layerBytes; });
        if (contiguous && count > 0) {
            m_layerBytes *= count;
            m_count = 1;
        }
        m_chunkBytes = channels.size() == 1 ? kDirectChunk : kInterleavedChunk;
        m_chunksPerLayer = (m_layerBytes + m_chunkBytes - 1) / m_chunkBytes;
    }

    bool run()
    {
        const std::int64_t grain = std::max<std::int64_t>(1, kDirectChunk / m_chunkBytes);
        parallelFor(0, m_count * m_chunksPerLayer, grain, [this](std::int64_t begin, std::int64_t end) {
            for (std::int64_t chunk = begin; chunk < end; ++chunk)
                readChunk(chunk / m_chunksPerLayer, chunk % m_chunksPerLayer * m_chunkBytes);
        });
        return !m_failed.load();
    }

private:
    void readChunk(std::int64_t layer, std::int64_t start)
    {
        const std::int64_t bytes = std::min(m_chunkBytes, m_layerBytes - start);
        const auto channelCount = static_cast<std::int64_t>(m_channels.size());
        std::byte* to = m_destination + (layer * m_layerBytes + start) * channelCount;
        if (channelCount == 1) {
            readPart(m_channels[0], layer, start, to, bytes);
            return;
        }
        static thread_local std::vector<std::byte> buffer;
        buffer.resize(static_cast<std::size_t>(kInterleavedChunk * channelCount));
        std::vector<const std::byte*> parts;
        for (std::int64_t c = 0; c < channelCount; ++c) {
            std::byte* part = buffer.data() + c * kInterleavedChunk;
            readPart(m_channels[static_cast<std::size_t>(c)], layer, start, part, bytes);
            parts.push_back(part);
        }
        interleave(parts, bytes / m_sampleBytes, m_sampleBytes, to);
    }

    void readPart(const LayerSource& source, std::int64_t layer, std::int64_t start, std::byte* to,
                  std::int64_t bytes)
    {
        const std::int64_t there =
            std::clamp<std::int64_t>(source.available(layer, m_layerBytes) - start, 0, bytes);
        if (there > 0 && source.file->read(source.offset + layer * source.stride + start, to, there) != there)
            m_failed = true;
        std::memset(to + there, 0, static_cast<std::size_t>(bytes - there));
    }

    std::span<const LayerSource> m_channels;
    std::int64_t m_count;
    std::int64_t m_layerBytes;
    int m_sampleBytes;
    std::byte* m_destination;
    std::int64_t m_chunkBytes;
    std::int64_t m_chunksPerLayer;
    std::atomic<bool> m_failed = false;
};

} // namespace

PositionedFile::PositionedFile(QFile& file) : m_file(file), m_size(file.size()) {}

std::int64_t PositionedFile::read(std::int64_t offset, std::byte* to, std::int64_t bytes) const
{
#ifdef Q_OS_UNIX
    std::int64_t done = 0;
    while (done < bytes) {
        const auto got =
            ::pread(m_file.handle(), to + done, static_cast<std::size_t>(bytes - done), offset + done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
    }
    return done;
#else
    const std::scoped_lock lock(m_mutex);
    if (!m_file.seek(offset))
        return 0;
    return std::max<std::int64_t>(0, m_file.read(reinterpret_cast<char*>(to), bytes));
#endif
}

std::int64_t LayerSource::available(std::int64_t index, std::int64_t layerBytes) const
{
    return std::clamp<std::int64_t>(file->size() - (offset + index * stride), 0, layerBytes);
}

bool readInterleavedLayers(std::span<const LayerSource> channels, std::int64_t count,
                           std::int64_t layerSamples, int sampleBytes, std::byte* destination)
{
    if (channels.empty() || count < 1 || layerSamples < 1)
        return true;
    return LayerRead(channels, count, layerSamples, sampleBytes, destination).run();
}

} // namespace tirn
