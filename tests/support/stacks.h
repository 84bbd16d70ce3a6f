#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "image/imagefile.h"

namespace tirn::test {

/// The size of a stack under test.
struct StackShape
{
    int x = 1;
    int y = 1;
    int z = 1;
    int channels = 1;
    int bitDepth = 8;
};

using StackPointer = std::unique_ptr<ImageFile>;

/// A stack in memory whose samples are what `value` says of their place.
StackPointer makeStack(const StackShape& shape,
                       const std::function<int(int x, int y, int z, int channel)>& value);
/// All samples the same.
StackPointer constantStack(const StackShape& shape, int value);
/// Reproducible noise below `limit`, by default the whole range of the depth.
StackPointer randomStack(const StackShape& shape, unsigned seed, int limit = 0);
/// Samples in memory order.
StackPointer stackFrom(const StackShape& shape, const std::vector<int>& samples);

/// The samples in memory order, whatever their width.
std::vector<int> samples(const ImageFile& stack);
/// Those of one channel.
std::vector<int> channelSamples(const ImageFile& stack, int channel);
/// One sample, without any clamping.
int sample(const ImageFile& stack, int x, int y, int z, int channel = 0);

/// Lets every allocation of voxels fail while it lives.
class NoVoxelMemory
{
public:
    NoVoxelMemory();
    ~NoVoxelMemory();
    NoVoxelMemory(const NoVoxelMemory&) = delete;
    NoVoxelMemory& operator=(const NoVoxelMemory&) = delete;

private:
    VoxelBuffer (*m_previous)(std::int64_t);
};

} // namespace tirn::test
