#include "formats/files/segmentread.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "base/parallel.h"

namespace tirn {

namespace {

/// Bytes that one call of the system reads.
constexpr std::int64_t kChunkBytes = std::int64_t{2} << 20;

std::int64_t heldOf(const Segment& segment, std::int64_t fileSize)
{
    if (segment.offset < 0)
        return 0;
    return std::clamp<std::int64_t>(fileSize - segment.offset, 0, segment.bytes);
}

} // namespace

void SegmentPlan::append(std::int64_t offset, std::int64_t bytes)
{
    const std::int64_t fitting = std::clamp<std::int64_t>(m_bufferBytes - m_place, 0, bytes);
    m_place += bytes;
    if (fitting == 0)
        return;
    const std::int64_t start = m_place - bytes;
    if (!m_segments.empty()) {
        Segment& last = m_segments.back();
        // Neighbours in the file and in the buffer are one run.
        if (last.offset + last.bytes == offset && last.place + last.bytes == start) {
            last.bytes += fitting;
            return;
        }
    }
    m_segments.push_back({offset, fitting, start});
}

std::int64_t SegmentPlan::held(std::int64_t fileSize) const
{
    std::int64_t held = 0;
    for (const Segment& segment : m_segments)
        held += heldOf(segment, fileSize);
    return held;
}

bool SegmentPlan::startsOutside(std::int64_t fileSize) const
{
    return std::any_of(m_segments.begin(), m_segments.end(), [fileSize](const Segment& segment) {
        return segment.offset < 0 || segment.offset > fileSize;
    });
}

bool SegmentPlan::endsOutside(std::int64_t fileSize) const
{
    return std::any_of(m_segments.begin(), m_segments.end(), [fileSize](const Segment& segment) {
        return segment.offset + segment.bytes > fileSize;
    });
}

bool SegmentPlan::read(const PositionedFile& file, std::byte* buffer) const
{
    // Chunks of long runs, so that one long run keeps all cores busy.
    std::vector<Segment> chunks;
    std::int64_t filled = 0;
    const auto clearUpTo = [&](std::int64_t place) {
        if (place > filled)
            std::memset(buffer + filled, 0, static_cast<std::size_t>(place - filled));
    };
    for (const Segment& segment : m_segments) {
        const std::int64_t held = heldOf(segment, file.size());
        clearUpTo(segment.place);
        filled = segment.place + held;
        for (std::int64_t start = 0; start < held; start += kChunkBytes)
            chunks.push_back(
                {segment.offset + start, std::min(kChunkBytes, held - start), segment.place + start});
    }
    clearUpTo(m_bufferBytes);

    std::atomic<bool> failed = false;
    const auto count = static_cast<std::int64_t>(chunks.size());
    const std::int64_t meanBytes = count > 0 ? std::max<std::int64_t>(m_bufferBytes / count, 1) : 1;
    parallelFor(0, count, std::max<std::int64_t>(1, kChunkBytes / meanBytes),
                [&](std::int64_t begin, std::int64_t end) {
                    for (std::int64_t i = begin; i < end; ++i) {
                        const Segment& chunk = chunks[static_cast<std::size_t>(i)];
                        const std::int64_t got = file.read(chunk.offset, buffer + chunk.place, chunk.bytes);
                        if (got == chunk.bytes)
                            continue;
                        failed = true;
                        std::memset(buffer + chunk.place + got, 0,
                                    static_cast<std::size_t>(chunk.bytes - got));
                    }
                });
    return !failed;
}

bool isJustified(std::int64_t stackBytes, std::int64_t heldBytes)
{
    return heldBytes > 0 && stackBytes / kLargestGrowth <= heldBytes;
}

} // namespace tirn
