#pragma once

#include <array>
#include <vector>

#include "support/stacks.h"

namespace tirn::test {

/// A stack as plain numbers, for references that are slow and obvious. Channels are interleaved, x is
/// fastest.
struct SlowStack
{
    StackShape shape;
    std::vector<int> values;

    explicit SlowStack(const StackShape& size);
    explicit SlowStack(const ImageFile& stack);

    bool inside(int x, int y, int z) const;
    int& at(int x, int y, int z, int channel);
    int at(int x, int y, int z, int channel) const;
    /// The nearest voxel of the stack.
    int clamped(int x, int y, int z, int channel) const;
};

/// True when size, depth and all samples agree; otherwise says where they do not.
::testing::AssertionResult sameVoxels(const ImageFile& stack, const SlowStack& expected);

/// 2^bitDepth - 1.
int highest(const StackShape& shape);

// Each by its definition, voxel by voxel and window by window.

SlowStack slowCrop(const SlowStack& stack, int minX, int maxX, int minY, int maxY, int minZ, int maxZ);
/// The old stack `left` voxels from the first corner of a stack of zeros.
SlowStack slowPad(const SlowStack& stack, int newX, int newY, int newZ, const std::array<int, 3>& left);
SlowStack slowProject(const SlowStack& stack);
SlowStack slowSubSampleMean(const SlowStack& stack, int factorX, int factorY, int factorZ);
SlowStack slowSubSampleMax(const SlowStack& stack, int factorX, int factorY, int factorZ);
SlowStack slowRatio(const SlowStack& stack, int channelA, int channelB);

} // namespace tirn::test
