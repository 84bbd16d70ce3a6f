#pragma once

#include <cstdint>

namespace tirn {

/// The layout of a headerless file; its channels are those of the load.
struct RawLayout
{
    /// Bytes before the first sample.
    std::int64_t headerOffset = 0;
    int x = 0;
    int y = 0;
    int z = 0;
    int bitDepth = 8;
    /// The bytes of a word stand the other way round.
    bool swapBytes = false;

    bool operator==(const RawLayout&) const = default;
};

} // namespace tirn
