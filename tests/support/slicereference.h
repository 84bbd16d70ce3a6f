#pragma once

#include <cstdint>
#include <vector>

#include "support/plainstack.h"

namespace tirn::test {

/// One texture as it must be sent: rows from the first, layers from the first.
struct ReferenceTexture
{
    int width = 1;
    int height = 1;
    int depth = 1;
    std::vector<std::uint16_t> texels;

    /// The texels in memory order, a byte or two each.
    std::vector<std::uint8_t> bytes(int bits) const;
    bool operator==(const ReferenceTexture&) const = default;
};

/// The textures of one channel in the order of their upload, made voxel by voxel. `limit` is the longest
/// edge, a power of two.
std::vector<ReferenceTexture> slicesAcrossY(const PlainStack& stack, int channel, int limit);
std::vector<ReferenceTexture> slicesAcrossX(const PlainStack& stack, int channel, int limit);
std::vector<ReferenceTexture> slicesAcrossZ(const PlainStack& stack, int channel, int limit);
/// The three above, one after the other.
std::vector<ReferenceTexture> referenceSlices(const PlainStack& stack, int channel, int limit);
std::vector<ReferenceTexture> referenceBlocks(const PlainStack& stack, int channel, int limit);

} // namespace tirn::test
