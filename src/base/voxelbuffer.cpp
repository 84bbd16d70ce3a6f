#include "base/voxelbuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "base/parallel.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace tirn {

namespace {

constexpr std::int64_t kHugePage = std::int64_t{2} << 20;
constexpr std::size_t kAlignment = 64;

} // namespace

void VoxelMemory::operator()(std::byte* bytes) const
{
#ifdef __linux__
    if (mapped > 0) {
        munmap(bytes, static_cast<std::size_t>(mapped));
        return;
    }
#endif
    std::free(bytes);
}

VoxelBuffer::VoxelBuffer(std::int64_t bytes)
{
    if (bytes < 0)
        throw std::bad_alloc();
    m_size = bytes;
#ifdef __linux__
    if (bytes >= 2 * kHugePage) {
        // One page more than needed, so that the part kept can begin on a huge page's boundary.
        const std::int64_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        void* area = mmap(nullptr, static_cast<std::size_t>(rounded + kHugePage), PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (area == MAP_FAILED)
            throw std::bad_alloc();
        const auto address = reinterpret_cast<std::uintptr_t>(area);
        const std::uintptr_t aligned = (address + kHugePage - 1) / kHugePage * kHugePage;
        if (aligned > address)
            munmap(area, aligned - address);
        const std::uintptr_t tail = aligned + static_cast<std::uintptr_t>(rounded);
        const std::uintptr_t end = address + static_cast<std::uintptr_t>(rounded + kHugePage);
        if (end > tail)
            munmap(reinterpret_cast<void*>(tail), end - tail);
        auto* start = reinterpret_cast<std::byte*>(aligned);
        madvise(start, static_cast<std::size_t>(rounded), MADV_HUGEPAGE);
        m_bytes = std::unique_ptr<std::byte[], VoxelMemory>(start, VoxelMemory{rounded});
        return;
    }
#endif
    const std::size_t padded = (static_cast<std::size_t>(bytes) / kAlignment + 1) * kAlignment;
    auto* start = static_cast<std::byte*>(std::aligned_alloc(kAlignment, padded));
    if (start == nullptr)
        throw std::bad_alloc();
    m_bytes = std::unique_ptr<std::byte[], VoxelMemory>(start, VoxelMemory{});
}

void VoxelBuffer::reset()
{
    m_bytes.reset();
    m_size = 0;
}

void VoxelBuffer::zero()
{
    parallelFor(0, m_size, std::int64_t{4} << 20, [this](std::int64_t begin, std::int64_t end) {
        std::memset(m_bytes.get() + begin, 0, static_cast<std::size_t>(end - begin));
    });
}

} // namespace tirn
