#pragma once

#include <cstdint>
#include <memory>

#include <QFile>
#include <QString>

namespace tirn {

/// Writes an AVI file of uncompressed 32-bit frames, bottom row first, blue in the first byte, with the index
/// (AVI 1.0, RIFF) at its end.
///
/// Positions in the file are 64 bits wide; the file's own fields have 32 and wrap silently past that.
class AviWriter
{
public:
    /// Touches no disk. `frameRate` is in frames a second.
    AviWriter(QString fileName, int width, int height, float frameRate);
    ~AviWriter();
    AviWriter(const AviWriter&) = delete;
    AviWriter& operator=(const AviWriter&) = delete;

    /// The headers, with room for the counts that `close` fills in. False, touching nothing, when the file
    /// exists; false, too, when it cannot be written.
    bool open();
    /// Fills the place of so many frames with zeros; does not count them. False for fewer than one. Throws
    /// std::bad_alloc.
    bool pad(std::int64_t frames);
    /// Appends a frame of `frameBytes` bytes where the file stands, and counts it. False without pixels or
    /// file, or when it was not written whole; then the file is cut by `close`.
    bool writeFrame(const std::uint8_t* pixels);
    /// The same at the place of a frame. Whoever writes out of order must write each frame once.
    bool writeFrameAt(const std::uint8_t* pixels, std::int64_t index);
    /// The index and the counts. After a failed write the file is cut to whole frames first, and where the
    /// disk has no room for the index, frames at the end are given up for it. False when no valid file
    /// stands, and the second time.
    bool close();

    const QString& fileName() const { return m_fileName; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    /// Frames counted so far.
    std::int64_t frames() const { return m_frames; }
    /// Lets the count begin somewhere else than at 0, for frames that are already there.
    void setFrames(std::int64_t frames) { m_frames = frames; }
    /// Where the first frame lies: 224 in an open file.
    std::int64_t dataStart() const { return m_dataStart; }
    /// Bytes of the pixels of a frame.
    std::int64_t frameBytes() const { return m_frameBytes; }

private:
    std::int64_t chunkBytes() const { return m_frameBytes + 8; }
    std::int64_t position(std::int64_t frame) const { return m_dataStart + chunkBytes() * frame; }
    bool put(const void* bytes, std::int64_t count);
    bool patch(std::int64_t position, std::int64_t value);
    bool writeIndex();
    bool writeIndexWhereItFits();

    QString m_fileName;
    std::unique_ptr<QFile> m_file;
    int m_width;
    int m_height;
    std::int64_t m_frameBytes;
    std::int64_t m_frames = 0;
    float m_frameRate;
    std::int64_t m_dataStart = 0;
    bool m_failed = false;
};

/// The size of a finished file.
std::int64_t aviFileBytes(int width, int height, std::int64_t frames);

/// Files above this many bytes are beyond what readers of the format understand.
constexpr std::int64_t kAviLimit = (std::int64_t{1} << 31) - 1;

} // namespace tirn
