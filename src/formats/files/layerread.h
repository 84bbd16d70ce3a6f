#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

#include <QFile>

namespace tirn {

/// Bytes of an open file at stated offsets, for several threads at once.
class PositionedFile
{
public:
    /// `file` is open for reading and outlives this.
    explicit PositionedFile(QFile& file);

    std::int64_t size() const { return m_size; }
    /// The bytes got, fewer than asked at the end of the file or on an error. The file's own position is not
    /// to be relied on afterwards.
    std::int64_t read(std::int64_t offset, std::byte* to, std::int64_t bytes) const;

private:
    QFile& m_file;
    std::int64_t m_size;
    mutable std::mutex m_mutex;
};

/// Where the layers of one channel lie: the first one's offset and the distance to the next, in bytes.
struct LayerSource
{
    const PositionedFile* file;
    std::int64_t offset;
    std::int64_t stride;

    /// The bytes of layer `index` that the file holds.
    std::int64_t available(std::int64_t index, std::int64_t layerBytes) const;
};

/// Reads `count` layers of each channel and interleaves them into `destination`, on all cores; a layer has
/// `layerSamples` samples of 1 or 2 bytes. What the files do not hold becomes 0. False on a read error.
bool readInterleavedLayers(std::span<const LayerSource> channels, std::int64_t count,
                           std::int64_t layerSamples, int sampleBytes, std::byte* destination);

} // namespace tirn
