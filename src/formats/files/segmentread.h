#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "formats/files/layerread.h"

namespace tirn {

/// A run of bytes in a file and its place in a buffer.
struct Segment
{
    std::int64_t offset = 0;
    std::int64_t bytes = 0;
    std::int64_t place = 0;
};

/// Segments in rising order of their places, none beyond the end of the buffer.
class SegmentPlan
{
public:
    explicit SegmentPlan(std::int64_t bufferBytes) : m_bufferBytes(bufferBytes) {}

    /// Puts the next bytes at the current place, which moves on. What does not fit is left out.
    void append(std::int64_t offset, std::int64_t bytes);
    /// Goes on at a later place.
    void moveTo(std::int64_t place) { m_place = place; }
    std::int64_t place() const { return m_place; }
    std::int64_t bufferBytes() const { return m_bufferBytes; }
    /// Where the first run begins in the file, 0 without one.
    std::int64_t firstOffset() const { return m_segments.empty() ? 0 : m_segments.front().offset; }

    /// The bytes of the buffer that a file of this size fills.
    std::int64_t held(std::int64_t fileSize) const;
    /// True when a run begins in front of a file of this size, or behind its end.
    bool startsOutside(std::int64_t fileSize) const;
    /// True when a run ends behind it.
    bool endsOutside(std::int64_t fileSize) const;
    /// Reads all of it on all cores; what cannot be read, and what no segment fills, becomes 0. False on a
    /// read error. `buffer` is as long as the plan's.
    bool read(const PositionedFile& file, std::byte* buffer) const;

private:
    std::int64_t m_bufferBytes;
    std::int64_t m_place = 0;
    std::vector<Segment> m_segments;
};

/// A stack needs memory that its files can justify: one more than this many times as large as what they hold
/// of it is not the stack that its header promises.
constexpr std::int64_t kLargestGrowth = 16;
bool isJustified(std::int64_t stackBytes, std::int64_t heldBytes);

} // namespace tirn
