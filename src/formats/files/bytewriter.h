#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/bytereader.h"

namespace tirn {

/// Puts numbers into growing memory at any position; what is skipped is zero.
class ByteWriter
{
public:
    explicit ByteWriter(ByteOrder order = ByteOrder::Little) : m_order(order) {}

    std::size_t position() const { return m_position; }
    void seek(std::size_t position) { m_position = position; }
    const std::vector<std::byte>& bytes() const { return m_bytes; }
    /// Grows to `size` bytes, so that a table behind the last number is there, too.
    void reserveUpTo(std::size_t size)
    {
        if (m_bytes.size() < size)
            m_bytes.resize(size);
    }

    void u8(std::uint8_t value) { number(value, 1); }
    void u16(std::uint16_t value) { number(value, 2); }
    void u32(std::uint32_t value) { number(value, 4); }

private:
    void number(std::uint64_t value, unsigned size)
    {
        reserveUpTo(m_position + size);
        for (unsigned i = 0; i < size; ++i) {
            const unsigned shift = m_order == ByteOrder::Little ? 8 * i : 8 * (size - 1 - i);
            m_bytes[m_position++] = static_cast<std::byte>(value >> shift & 0xFF);
        }
    }

    std::vector<std::byte> m_bytes;
    std::size_t m_position = 0;
    ByteOrder m_order;
};

} // namespace tirn
