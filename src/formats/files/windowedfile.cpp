#include "formats/files/windowedfile.h"

#include <algorithm>

namespace tirn {

namespace {
constexpr std::int64_t kWindowBytes = 4096;
}

std::span<const std::byte> WindowedFile::at(std::int64_t offset, std::int64_t count)
{
    if (offset < 0 || offset >= size() || count < 1)
        return {};
    const std::int64_t there = std::min(count, size() - offset);
    const auto held = static_cast<std::int64_t>(m_window.size());
    if (offset < m_start || offset + there > m_start + held) {
        m_window.resize(static_cast<std::size_t>(std::min(std::max(there, kWindowBytes), size() - offset)));
        m_start = offset;
        const std::int64_t got =
            m_file.read(offset, m_window.data(), static_cast<std::int64_t>(m_window.size()));
        m_window.resize(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
    }
    const auto window = std::span<const std::byte>(m_window).subspan(static_cast<std::size_t>(
        std::min<std::int64_t>(offset - m_start, static_cast<std::int64_t>(m_window.size()))));
    return window.first(std::min(window.size(), static_cast<std::size_t>(there)));
}

} // namespace tirn
