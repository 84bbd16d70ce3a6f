#pragma once

#include <cstdint>
#include <optional>

#include "base/voxelbuffer.h"

namespace tirn {

/// Memory for a stack. Throws AllocationError with `text`, a literal, when `bytes` has no value (a product
/// that overflowed) or the memory is not to be had.
VoxelBuffer allocateVoxels(std::optional<std::int64_t> bytes, const char* text);

/// What makes voxel memory; it throws std::bad_alloc when it cannot.
using VoxelAllocator = VoxelBuffer (*)(std::int64_t bytes);

/// Puts another allocator in place, null for the usual one, and returns the one before. Not thread safe: it
/// is there so that a test can let memory run out.
VoxelAllocator setVoxelAllocator(VoxelAllocator allocator);

} // namespace tirn
