#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tirn {

enum class ByteOrder { Little, Big };

/// Reads numbers from a span of bytes in a stated byte order, never outside the span.
///
/// A read past the end yields zeros for what is missing and sets `failed`; the position then stays at the
/// end.
class ByteReader
{
public:
    explicit ByteReader(std::span<const std::byte> bytes, ByteOrder order = ByteOrder::Little)
        : m_bytes(bytes), m_order(order)
    {}
    ByteReader(const void* bytes, std::size_t size, ByteOrder order = ByteOrder::Little)
        : ByteReader(std::span(static_cast<const std::byte*>(bytes), size), order)
    {}

    void setOrder(ByteOrder order) { m_order = order; }
    ByteOrder order() const { return m_order; }

    std::uint64_t position() const { return m_position; }
    std::uint64_t size() const { return m_bytes.size(); }
    std::uint64_t remaining() const { return m_bytes.size() - m_position; }
    bool failed() const { return m_failed; }

    /// Moves to an offset; one past the end counts as a failed read and moves to the end.
    void seek(std::uint64_t offset)
    {
        m_failed = m_failed || offset > m_bytes.size();
        m_position = offset > m_bytes.size() ? m_bytes.size() : offset;
    }
    void skip(std::uint64_t count) { seek(count > remaining() ? m_bytes.size() + 1 : m_position + count); }

    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::uint64_t u64() { return number(8); }
    std::int16_t i16() { return static_cast<std::int16_t>(u16()); }
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    float f32()
    {
        const std::uint32_t bits = u32();
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    double f64()
    {
        const std::uint64_t bits = u64();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    /// The next `count` bytes, fewer (and `failed`) at the end.
    std::span<const std::byte> bytes(std::uint64_t count)
    {
        const std::uint64_t there = count > remaining() ? remaining() : count;
        m_failed = m_failed || there < count;
        const auto part = m_bytes.subspan(m_position, there);
        m_position += there;
        return part;
    }

private:
    std::uint64_t number(unsigned size)
    {
        std::uint64_t value = 0;
        const auto part = bytes(size);
        for (std::size_t i = 0; i < part.size(); ++i) {
            const auto byte = static_cast<std::uint64_t>(part[i]);
            const unsigned shift = m_order == ByteOrder::Little ? 8 * i : 8 * (size - 1 - i);
            value |= byte << shift;
        }
        return value;
    }

    std::span<const std::byte> m_bytes;
    ByteOrder m_order;
    std::uint64_t m_position = 0;
    bool m_failed = false;
};

} // namespace tirn
