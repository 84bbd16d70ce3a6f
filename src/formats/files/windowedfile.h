#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "formats/files/layerread.h"

namespace tirn {

/// Small pieces of an open file at any offset, read in windows so that neighbours cost one call of the
/// system.
class WindowedFile
{
public:
    /// `file` is open for reading and outlives this.
    explicit WindowedFile(QFile& file) : m_file(file) {}

    std::int64_t size() const { return m_file.size(); }
    /// `count` bytes from `offset` on, fewer at the end of the file; valid until the next call.
    std::span<const std::byte> at(std::int64_t offset, std::int64_t count);

private:
    PositionedFile m_file;
    std::vector<std::byte> m_window;
    std::int64_t m_start = 0;
};

} // namespace tirn
