#include "image/voxelallocation.h"

#include "image/allocationerror.h"

namespace tirn {

namespace {

VoxelBuffer usualAllocator(std::int64_t bytes) { return VoxelBuffer(bytes); }

VoxelAllocator currentAllocator = usualAllocator;

} // namespace

VoxelBuffer allocateVoxels(std::optional<std::int64_t> bytes, const char* text)
{
    if (!bytes)
        throw AllocationError(text);
    try {
        return currentAllocator(*bytes);
    } catch (const std::bad_alloc&) {
        throw AllocationError(text);
    }
}

VoxelAllocator setVoxelAllocator(VoxelAllocator allocator)
{
    const VoxelAllocator previous = currentAllocator;
    currentAllocator = allocator != nullptr ? allocator : usualAllocator;
    return previous;
}

} // namespace tirn
