#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tirn {

/// destination[i * channels + c] = channels[c][i] for `count` samples a channel, on all cores where that
/// pays.
void interleave8(std::span<const std::byte* const> channels, std::int64_t count, void* destination);
void interleave16(std::span<const std::byte* const> channels, std::int64_t count, void* destination);
/// One of the two, by the bytes of a sample.
inline void interleave(std::span<const std::byte* const> channels, std::int64_t count, int sampleBytes,
                       void* destination)
{
    sampleBytes == 1 ? interleave8(channels, count, destination) : interleave16(channels, count, destination);
}

/// channels[c][i] = source[i * channels + c].
void deinterleave8(const void* source, std::int64_t count, std::span<std::byte* const> channels);
void deinterleave16(const void* source, std::int64_t count, std::span<std::byte* const> channels);

/// Reverses the bytes of each of `count` elements of `size` bytes.
void swapBytes(void* buffer, std::int64_t count, int size);

} // namespace tirn
