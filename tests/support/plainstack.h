#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tirn::test {

/// A stack as plain numbers, whatever its depth: channels interleaved, x fastest, then y, then z.
struct PlainStack
{
    int x = 1;
    int y = 1;
    int z = 1;
    int channels = 1;
    int bits = 8;
    std::vector<std::uint16_t> voxels;

    /// All voxels 0.
    static PlainStack blank(int x, int y, int z, int channels = 1, int bits = 8);

    std::size_t index(int xAt, int yAt, int zAt, int channel = 0) const;
    std::uint16_t at(int xAt, int yAt, int zAt, int channel = 0) const
    {
        return voxels[index(xAt, yAt, zAt, channel)];
    }
    std::uint16_t& at(int xAt, int yAt, int zAt, int channel = 0)
    {
        return voxels[index(xAt, yAt, zAt, channel)];
    }
    int size(int axis) const { return axis == 0 ? x : axis == 1 ? y : z; }

    /// The same voxels in the order that the program keeps them: a byte each up to 8 bits, above that two
    /// bytes in the machine's order.
    std::vector<std::uint8_t> bytes() const;

    bool operator==(const PlainStack&) const = default;
};

/// A stack without an empty voxel, rough on every scale down to two voxels and alike in no two directions or
/// channels, whose values spread over all of `bits`.
PlainStack denseStack(int x, int y, int z, int channels = 1, int bits = 8);

/// Copies with one thing wrong, to show that a comparison would notice it. Axes are 0, 1, 2 for x, y, z.
PlainStack mirrored(const PlainStack& stack, int axis);
PlainStack withSwappedChannels(const PlainStack& stack, int first, int second);
/// Slice `slice` of `axis` moved by `distance` voxels along the next axis, what leaves coming in again.
PlainStack withShiftedSlice(const PlainStack& stack, int axis, int slice, int distance);

} // namespace tirn::test
