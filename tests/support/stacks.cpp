#include "support/stacks.h"

#include <cstring>
#include <random>

#include "image/voxelallocation.h"

namespace tirn::test {

StackPointer stackFrom(const StackShape& shape, const std::vector<int>& values)
{
    VoxelBuffer buffer(static_cast<std::int64_t>(values.size()) * (shape.bitDepth > 8 ? 2 : 1));
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (shape.bitDepth > 8) {
            const auto word = static_cast<std::uint16_t>(values[i]);
            std::memcpy(buffer.data() + 2 * i, &word, 2);
        } else {
            buffer.data()[i] = static_cast<std::byte>(values[i]);
        }
    }
    return std::make_unique<ImageFile>(std::move(buffer), shape.x, shape.y, shape.z, shape.channels,
                                       shape.bitDepth);
}

StackPointer makeStack(const StackShape& shape, const std::function<int(int, int, int, int)>& value)
{
    std::vector<int> values;
    for (int z = 0; z < shape.z; ++z) {
        for (int y = 0; y < shape.y; ++y) {
            for (int x = 0; x < shape.x; ++x) {
                for (int c = 0; c < shape.channels; ++c)
                    values.push_back(value(x, y, z, c));
            }
        }
    }
    return stackFrom(shape, values);
}

StackPointer constantStack(const StackShape& shape, int value)
{
    return makeStack(shape, [value](int, int, int, int) { return value; });
}

StackPointer randomStack(const StackShape& shape, unsigned seed, int limit)
{
    std::mt19937 generator(seed);
    const auto range = static_cast<unsigned>(limit > 0 ? limit : 1 << shape.bitDepth);
    return makeStack(shape, [&](int, int, int, int) { return static_cast<int>(generator() % range); });
}

std::vector<int> samples(const ImageFile& stack)
{
    std::vector<int> values;
    for (std::int64_t i = 0; i < stack.sampleCount(); ++i)
        values.push_back(stack.attributes().bitDepth > 8 ? stack.stackData16()[i] : stack.stackData()[i]);
    return values;
}

std::vector<int> channelSamples(const ImageFile& stack, int channel)
{
    const std::vector<int> all = samples(stack);
    std::vector<int> values;
    const auto step = static_cast<std::size_t>(stack.attributes().channels);
    for (auto i = static_cast<std::size_t>(channel); i < all.size(); i += step)
        values.push_back(all[i]);
    return values;
}

int sample(const ImageFile& stack, int x, int y, int z, int channel)
{
    const ImageAttributes& a = stack.attributes();
    const std::int64_t at = ((std::int64_t{z} * a.y + y) * a.x + x) * a.channels + channel;
    return a.bitDepth > 8 ? stack.stackData16()[at] : stack.stackData()[at];
}

NoVoxelMemory::NoVoxelMemory()
    : m_previous(setVoxelAllocator([](std::int64_t) -> VoxelBuffer { throw std::bad_alloc(); }))
{}

NoVoxelMemory::~NoVoxelMemory() { setVoxelAllocator(m_previous); }

} // namespace tirn::test
