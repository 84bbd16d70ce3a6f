#include "movies/aviwriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <vector>

#include <QtEndian>

#include "base/checkedsize.h"
#include "base/log.h"
#include "formats/files/bytewriter.h"

namespace tirn {

namespace {

// Sizes and positions of the AVI 1.0 layout.
constexpr std::int64_t kDataStart = 224;
constexpr std::int64_t kIndexEntry = 16;
constexpr std::uint32_t kHasIndex = 0x10;
constexpr std::uint32_t kIndexFlags = 0x12;
constexpr std::uint32_t kMicroseconds = 1000000;
/// Entries of the index that are put together at a time.
constexpr std::int64_t kIndexPiece = 4096;

constexpr std::uint32_t fourCharacters(const char (&text)[5])
{
    std::uint32_t code = 0;
    for (unsigned i = 0; i < 4; ++i)
        code |= std::uint32_t{static_cast<unsigned char>(text[i])} << 8 * i;
    return code;
}

/// Wraps silently: the format has no wider fields.
std::uint32_t field(std::int64_t value) { return static_cast<std::uint32_t>(value); }

std::int64_t riffBytes(std::int64_t chunkBytes, std::int64_t frames)
{
    return chunkBytes * frames + kDataStart + kIndexEntry * frames;
}

std::uint32_t microsecondsPerFrame(float rate)
{
    const float quotient = std::floor(1000000.0F / rate);
    return quotient >= 0 && quotient < 4294967296.0F ? static_cast<std::uint32_t>(quotient) : 0;
}

void put32(ByteWriter& out, std::initializer_list<std::uint32_t> values)
{
    for (const std::uint32_t value : values)
        out.u32(value);
}

void putStreamHeaders(ByteWriter& out, std::uint32_t width, std::uint32_t height, std::uint32_t microseconds)
{
    put32(out, {fourCharacters("LIST"), 116, fourCharacters("strl"), fourCharacters("strh"), 56,
                fourCharacters("vids"), fourCharacters("DIB "), 0});
    // Priority and language; initial frames, scale, rate, start, length, buffer, quality, sample size.
    put32(out, {0, 0, microseconds, kMicroseconds, 0, 0, 0, 0xFFFFFFFF, 0});
    out.u16(0);
    out.u16(0);
    out.u16(static_cast<std::uint16_t>(width));
    out.u16(static_cast<std::uint16_t>(height));
    put32(out, {fourCharacters("strf"), 40, 40, width, height});
    out.u16(1);
    out.u16(32);
    put32(out, {0, 0, 0, 0, 0, 0});
}

/// Everything in front of the first frame.
ByteWriter headers(std::uint32_t width, std::uint32_t height, float rate, std::int64_t chunkBytes,
                   std::int64_t frames)
{
    ByteWriter out;
    const std::uint32_t microseconds = microsecondsPerFrame(rate);
    put32(out, {fourCharacters("RIFF"), field(riffBytes(chunkBytes, frames)), fourCharacters("AVI "),
                fourCharacters("LIST"), 192, fourCharacters("hdrl"), fourCharacters("avih"), 56});
    // Rate of bytes, padding, flags, frames, initial frames, streams, buffer; four reserved words at the end.
    put32(out, {microseconds, 0, 0, kHasIndex, 0, 0, 1, 0, width, height, 0, 0, 0, 0});
    putStreamHeaders(out, width, height, microseconds);
    put32(out, {fourCharacters("LIST"), field(chunkBytes * frames + 4), fourCharacters("movi")});
    return out;
}

} // namespace

AviWriter::AviWriter(QString fileName, int width, int height, float frameRate)
    : m_fileName(std::move(fileName)), m_width(width), m_height(height),
      m_frameBytes(checkedProduct({width, height, 4}).value_or(-1)), m_frameRate(frameRate)
{}

AviWriter::~AviWriter() = default;

bool AviWriter::open()
{
    if (m_file != nullptr || m_frameBytes < 0)
        return false;
    try {
        m_file = std::make_unique<QFile>(m_fileName);
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate movie file object");
        return false;
    }
    if (!m_file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        m_file.reset();
        return false;
    }
    logDebug("avih %d", 56);
    m_failed = false;
    m_dataStart = kDataStart;
    const ByteWriter out = headers(field(m_width), field(m_height), m_frameRate, chunkBytes(), m_frames);
    if (put(out.bytes().data(), static_cast<std::int64_t>(out.bytes().size())))
        return true;
    m_file->remove();
    m_file.reset();
    return false;
}

bool AviWriter::put(const void* bytes, std::int64_t count)
{
    const bool whole = m_file->write(static_cast<const char*>(bytes), count) == count;
    m_failed = m_failed || !whole;
    return whole;
}

bool AviWriter::pad(std::int64_t frames)
{
    if (frames < 1 || m_file == nullptr)
        return false;
    std::vector<std::uint8_t> block;
    try {
        block.resize(static_cast<std::size_t>(chunkBytes()));
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate memory to pad movie");
        throw;
    }
    if (!m_file->seek(m_dataStart))
        return false;
    for (std::int64_t frame = 0; frame < frames; ++frame) {
        if (!put(block.data(), chunkBytes()))
            return false;
    }
    return true;
}

bool AviWriter::writeFrame(const std::uint8_t* pixels)
{
    if (pixels == nullptr || m_file == nullptr || m_failed)
        return false;
    std::array<char, 8> head;
    qToLittleEndian(fourCharacters("00db"), head.data());
    qToLittleEndian(field(m_frameBytes), head.data() + 4);
    if (!put(head.data(), 8) || !put(pixels, m_frameBytes))
        return false;
    ++m_frames;
    return true;
}

bool AviWriter::writeFrameAt(const std::uint8_t* pixels, std::int64_t index)
{
    if (pixels == nullptr || m_file == nullptr || index < 0 || !m_file->seek(position(index)))
        return false;
    return writeFrame(pixels);
}

bool AviWriter::patch(std::int64_t position, std::int64_t value)
{
    ByteWriter out;
    out.u32(field(value));
    return m_file->seek(position) && put(out.bytes().data(), 4);
}

bool AviWriter::writeIndex()
{
    ByteWriter head;
    put32(head, {fourCharacters("idx1"), field(kIndexEntry * m_frames)});
    if (!m_file->seek(position(m_frames)) || !put(head.bytes().data(), 8))
        return false;
    for (std::int64_t first = 0; first < m_frames; first += kIndexPiece) {
        ByteWriter out;
        for (std::int64_t frame = first; frame < std::min(m_frames, first + kIndexPiece); ++frame)
            put32(out, {fourCharacters("00db"), kIndexFlags, field(position(frame)), field(m_frameBytes)});
        if (!put(out.bytes().data(), static_cast<std::int64_t>(out.bytes().size())))
            return false;
    }
    return true;
}

bool AviWriter::writeIndexWhereItFits()
{
    if (!m_failed && writeIndex())
        return true;
    // A full disk: what stands behind the last whole frame makes room, and then that frame itself.
    for (;; --m_frames) {
        m_failed = false;
        if (m_file->resize(position(m_frames)) && writeIndex())
            return true;
        if (m_frames == 0)
            return false;
    }
}

bool AviWriter::close()
{
    if (m_file == nullptr)
        return false;
    logDebug("writing index");
    const bool valid = writeIndexWhereItFits() && patch(4, riffBytes(chunkBytes(), m_frames)) &&
                       patch(48, m_frames) && patch(140, m_frames) && patch(216, chunkBytes() * m_frames + 4);
    m_file->close();
    m_file.reset();
    return valid;
}

std::int64_t aviFileBytes(int width, int height, std::int64_t frames)
{
    const std::int64_t chunk = std::int64_t{width} * height * 4 + 8;
    return riffBytes(chunk, frames) + 8;
}

} // namespace tirn
