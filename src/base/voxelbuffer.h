#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tirn {

/// Gives voxel memory back the way it was taken: `mapped` bytes to the system, or to the heap when that is 0.
struct VoxelMemory
{
    std::int64_t mapped = 0;
    void operator()(std::byte* bytes) const;
};

/// Raw memory for voxels: movable, owned, not initialised, aligned to 64 bytes, and on huge pages where it is
/// large and the system gives them.
class VoxelBuffer
{
public:
    VoxelBuffer() = default;

    /// Throws std::bad_alloc when the memory is not to be had, also for a negative size.
    explicit VoxelBuffer(std::int64_t bytes);

    std::byte* data() { return m_bytes.get(); }
    const std::byte* data() const { return m_bytes.get(); }
    std::int64_t size() const { return m_size; }
    bool isNull() const { return m_bytes == nullptr; }
    void reset();

    /// Sets every byte to zero, on all cores where that pays.
    void zero();

private:
    std::unique_ptr<std::byte[], VoxelMemory> m_bytes;
    std::int64_t m_size = 0;
};

} // namespace tirn
