#pragma once

#include <cstddef>
#include <cstdint>

namespace tirn {

/// Raw memory for voxels: movable, owned, not initialised, aligned to 64 bytes, and on huge pages where it is
/// large and the system gives them.
///
/// Fresh pages cost more than what most operations do with them. So the memory of a large buffer that another
/// one replaces is kept as a spare for the next buffer of its size, which often is the result of the next
/// operation. The system may take a spare's pages back whenever it needs them. It is let go when a buffer of
/// another size is made, and when one is freed without being replaced. Any thread.
class VoxelBuffer
{
public:
    VoxelBuffer() = default;
    VoxelBuffer(VoxelBuffer&& other) noexcept;
    VoxelBuffer& operator=(VoxelBuffer&& other) noexcept;
    ~VoxelBuffer();

    /// Throws std::bad_alloc when the memory is not to be had, also for a negative size.
    explicit VoxelBuffer(std::int64_t bytes);

    std::byte* data() { return m_bytes; }
    const std::byte* data() const { return m_bytes; }
    std::int64_t size() const { return m_size; }
    bool isNull() const { return m_bytes == nullptr; }
    void reset();

    /// The bytes of all buffers that there are now.
    static std::int64_t liveBytes();

    /// Sets every byte to zero, on all cores where that pays.
    void zero();

private:
    std::byte* m_bytes = nullptr;
    std::int64_t m_size = 0;
    /// Bytes taken from the system, 0 for those of the heap.
    std::int64_t m_mapped = 0;
};

} // namespace tirn
