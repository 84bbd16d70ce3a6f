#include "base/voxelbuffer.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "base/parallel.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace tirn {

namespace {

constexpr std::int64_t kHugePage = std::int64_t{2} << 20;
constexpr std::size_t kAlignment = 64;

std::atomic<std::int64_t> live = 0;

#ifdef __linux__
void unmap(std::byte* bytes, std::int64_t size)
{
    if (bytes != nullptr)
        munmap(bytes, static_cast<std::size_t>(size));
}

/// Memory on the boundaries of huge pages, or null.
std::byte* map(std::int64_t size)
{
    // One page more than needed, so that the part kept can begin on a huge page's boundary.
    void* area = mmap(nullptr, static_cast<std::size_t>(size + kHugePage), PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED)
        return nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(area);
    const std::uintptr_t aligned = (address + kHugePage - 1) / kHugePage * kHugePage;
    if (aligned > address)
        munmap(area, aligned - address);
    const std::uintptr_t tail = aligned + static_cast<std::uintptr_t>(size);
    const std::uintptr_t end = address + static_cast<std::uintptr_t>(size + kHugePage);
    if (end > tail)
        munmap(reinterpret_cast<void*>(tail), end - tail);
    auto* start = reinterpret_cast<std::byte*>(aligned);
    madvise(start, static_cast<std::size_t>(size), MADV_HUGEPAGE);
    return start;
}

/// The memory of the buffer replaced last. It has no destructor: buffers of other static objects may be freed
/// after it would have run.
class Spare
{
public:
    void keep(std::byte* bytes, std::int64_t size)
    {
#ifdef MADV_FREE
        madvise(bytes, static_cast<std::size_t>(size), MADV_FREE);
#endif
        const std::scoped_lock lock(m_mutex);
        unmap(m_bytes, m_size);
        m_bytes = bytes;
        m_size = size;
    }

    /// Null, and the spare is gone, when it has another size.
    std::byte* take(std::int64_t size)
    {
        const std::scoped_lock lock(m_mutex);
        std::byte* bytes = std::exchange(m_bytes, nullptr);
        if (bytes == nullptr || m_size == size)
            return bytes;
        unmap(bytes, m_size);
        return nullptr;
    }

    void drop() { take(0); }

private:
    std::mutex m_mutex;
    std::byte* m_bytes = nullptr;
    std::int64_t m_size = 0;
};

Spare spare;
#endif

} // namespace

VoxelBuffer::VoxelBuffer(std::int64_t bytes)
{
    if (bytes < 0)
        throw std::bad_alloc();
#ifdef __linux__
    if (bytes >= 2 * kHugePage) {
        const std::int64_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        m_bytes = spare.take(rounded);
        if (m_bytes == nullptr)
            m_bytes = map(rounded);
        if (m_bytes == nullptr)
            throw std::bad_alloc();
        m_size = bytes;
        m_mapped = rounded;
        live += m_size;
        return;
    }
#endif
    const std::size_t padded = (static_cast<std::size_t>(bytes) / kAlignment + 1) * kAlignment;
    m_bytes = static_cast<std::byte*>(std::aligned_alloc(kAlignment, padded));
    if (m_bytes == nullptr)
        throw std::bad_alloc();
    m_size = bytes;
    live += m_size;
}

VoxelBuffer::VoxelBuffer(VoxelBuffer&& other) noexcept
    : m_bytes(std::exchange(other.m_bytes, nullptr)), m_size(std::exchange(other.m_size, 0)),
      m_mapped(std::exchange(other.m_mapped, 0))
{}

VoxelBuffer& VoxelBuffer::operator=(VoxelBuffer&& other) noexcept
{
    if (this == &other)
        return *this;
#ifdef __linux__
    if (m_mapped > 0 && other.m_bytes != nullptr) {
        live -= std::exchange(m_size, 0);
        spare.keep(std::exchange(m_bytes, nullptr), std::exchange(m_mapped, 0));
    }
#endif
    reset();
    m_bytes = std::exchange(other.m_bytes, nullptr);
    m_size = std::exchange(other.m_size, 0);
    m_mapped = std::exchange(other.m_mapped, 0);
    return *this;
}

VoxelBuffer::~VoxelBuffer() { reset(); }

void VoxelBuffer::reset()
{
#ifdef __linux__
    if (m_mapped > 0) {
        unmap(std::exchange(m_bytes, nullptr), std::exchange(m_mapped, 0));
        spare.drop();
    }
#endif
    std::free(std::exchange(m_bytes, nullptr));
    live -= std::exchange(m_size, 0);
}

std::int64_t VoxelBuffer::liveBytes() { return live; }

void VoxelBuffer::zero()
{
    parallelFor(0, m_size, std::int64_t{4} << 20, [this](std::int64_t begin, std::int64_t end) {
        std::memset(m_bytes + begin, 0, static_cast<std::size_t>(end - begin));
    });
}

} // namespace tirn
