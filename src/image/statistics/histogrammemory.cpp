#include "image/statistics/histogrammemory.h"

#include <atomic>
#include <cstdlib>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace tirn {

namespace {

/// Blocks from this size on are cut from memory that comes straight from the system.
constexpr std::size_t kLarge = std::size_t{16} << 10;

#ifdef __linux__

constexpr std::size_t kPage = 4096;
/// What is taken from the system in one go; it lies on a multiple of its size.
constexpr std::size_t kArenaBytes = std::size_t{8} << 20;

std::size_t inPages(std::size_t bytes) { return (bytes + kPage - 1) / kPage * kPage; }

std::byte* mapped(std::size_t bytes)
{
    void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    return static_cast<std::byte*>(memory);
}

/// Memory that blocks are cut from, front to back. It goes back to the system as a whole, with the last user:
/// unmapping each block would stop all processors each time.
class Arena
{
public:
    static Arena* make(bool dense)
    {
        std::byte* area = mapped(2 * kArenaBytes);
        const std::size_t past = reinterpret_cast<std::uintptr_t>(area) % kArenaBytes;
        std::byte* start = area + (kArenaBytes - past) % kArenaBytes;
        if (start > area)
            munmap(area, static_cast<std::size_t>(start - area));
        munmap(start + kArenaBytes, static_cast<std::size_t>(area + kArenaBytes - start));
        if (dense)
            madvise(start, kArenaBytes, MADV_HUGEPAGE);
        return ::new (start) Arena;
    }

    static Arena* of(void* block)
    {
        return reinterpret_cast<Arena*>(reinterpret_cast<std::uintptr_t>(block) / kArenaBytes * kArenaBytes);
    }

    static constexpr std::size_t capacity() { return kArenaBytes - kPage; }

    /// Null when there is no room left.
    void* cut(std::size_t bytes)
    {
        if (bytes > kArenaBytes - m_used)
            return nullptr;
        std::byte* block = reinterpret_cast<std::byte*>(this) + m_used;
        m_used += bytes;
        m_users.fetch_add(1, std::memory_order_relaxed);
        return block;
    }

    void leave()
    {
        if (m_users.fetch_sub(1, std::memory_order_acq_rel) == 1)
            munmap(this, kArenaBytes);
    }

private:
    std::size_t m_used = kPage;
    /// The blocks in use, and the thread that cuts them.
    std::atomic<int> m_users = 1;
};

/// The arena that a thread cuts from at present.
class CurrentArena
{
public:
    explicit CurrentArena(bool dense) : m_dense(dense) {}
    ~CurrentArena()
    {
        if (m_arena != nullptr)
            m_arena->leave();
    }
    CurrentArena(const CurrentArena&) = delete;
    CurrentArena& operator=(const CurrentArena&) = delete;

    void* cut(std::size_t bytes)
    {
        if (void* block = m_arena != nullptr ? m_arena->cut(bytes) : nullptr)
            return block;
        Arena* next = Arena::make(m_dense);
        if (m_arena != nullptr)
            m_arena->leave();
        m_arena = next;
        return m_arena->cut(bytes);
    }

private:
    bool m_dense;
    Arena* m_arena = nullptr;
};

#endif

thread_local bool denseHistograms = false;

} // namespace

void* takeHistogramMemory(std::size_t bytes)
{
#ifdef __linux__
    if (bytes >= kLarge) {
        static thread_local CurrentArena dense(true);
        static thread_local CurrentArena sparse(false);
        const std::size_t whole = inPages(bytes);
        if (whole > Arena::capacity())
            return mapped(whole);
        return denseHistograms ? dense.cut(whole) : sparse.cut(whole);
    }
#endif
    void* memory = std::calloc(bytes == 0 ? 1 : bytes, 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void giveHistogramMemory(void* memory, std::size_t bytes) noexcept
{
#ifdef __linux__
    if (bytes >= kLarge) {
        if (inPages(bytes) > Arena::capacity())
            munmap(memory, inPages(bytes));
        else
            Arena::of(memory)->leave();
        return;
    }
#endif
    std::free(memory);
}

DenseHistograms::DenseHistograms(bool dense) { denseHistograms = dense; }

DenseHistograms::~DenseHistograms() { denseHistograms = false; }

} // namespace tirn
