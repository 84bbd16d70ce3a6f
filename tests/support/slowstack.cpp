#include "support/slowstack.h"

#include <algorithm>
#include <cmath>

namespace tirn::test {

SlowStack::SlowStack(const StackShape& size) : shape(size)
{
    values.resize(static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y) *
                  static_cast<std::size_t>(size.z) * static_cast<std::size_t>(size.channels));
}

SlowStack::SlowStack(const ImageFile& stack)
    : shape{stack.attributes().x, stack.attributes().y, stack.attributes().z, stack.attributes().channels,
            stack.attributes().bitDepth},
      values(samples(stack))
{}

bool SlowStack::inside(int x, int y, int z) const
{
    return x >= 0 && x < shape.x && y >= 0 && y < shape.y && z >= 0 && z < shape.z;
}

int& SlowStack::at(int x, int y, int z, int channel)
{
    return values[static_cast<std::size_t>(((z * shape.y + y) * shape.x + x) * shape.channels + channel)];
}

int SlowStack::at(int x, int y, int z, int channel) const
{
    return values[static_cast<std::size_t>(((z * shape.y + y) * shape.x + x) * shape.channels + channel)];
}

int SlowStack::clamped(int x, int y, int z, int channel) const
{
    return at(std::clamp(x, 0, shape.x - 1), std::clamp(y, 0, shape.y - 1), std::clamp(z, 0, shape.z - 1),
              channel);
}

::testing::AssertionResult sameVoxels(const ImageFile& stack, const SlowStack& expected)
{
    const SlowStack actual(stack);
    const auto text = [](const StackShape& s) {
        return ::testing::PrintToString(std::vector<int>{s.x, s.y, s.z, s.channels, s.bitDepth});
    };
    if (text(actual.shape) != text(expected.shape))
        return ::testing::AssertionFailure() << text(actual.shape) << " instead of " << text(expected.shape);
    for (int z = 0; z < expected.shape.z; ++z) {
        for (int y = 0; y < expected.shape.y; ++y) {
            for (int x = 0; x < expected.shape.x; ++x) {
                for (int c = 0; c < expected.shape.channels; ++c) {
                    if (actual.at(x, y, z, c) != expected.at(x, y, z, c))
                        return ::testing::AssertionFailure()
                               << "at " << x << ", " << y << ", " << z << ", channel " << c << ": "
                               << actual.at(x, y, z, c) << " instead of " << expected.at(x, y, z, c) << " in "
                               << text(actual.shape);
                }
            }
        }
    }
    return ::testing::AssertionSuccess();
}

int highest(const StackShape& shape) { return (1 << shape.bitDepth) - 1; }

namespace {

/// A stack of which every sample is what `value` says of its place.
template <class Value>
SlowStack each(const StackShape& shape, Value value)
{
    SlowStack result(shape);
    for (int z = 0; z < shape.z; ++z) {
        for (int y = 0; y < shape.y; ++y) {
            for (int x = 0; x < shape.x; ++x) {
                for (int c = 0; c < shape.channels; ++c)
                    result.at(x, y, z, c) = value(x, y, z, c);
            }
        }
    }
    return result;
}

StackShape reduced(const StackShape& shape, int factorX, int factorY, int factorZ)
{
    const auto blocks = [](int size, int factor) {
        return static_cast<int>(std::ceil(size / double(factor)));
    };
    return {blocks(shape.x, factorX), blocks(shape.y, factorY), blocks(shape.z, factorZ), shape.channels,
            shape.bitDepth};
}

} // namespace

SlowStack slowCrop(const SlowStack& stack, int minX, int maxX, int minY, int maxY, int minZ, int maxZ)
{
    const StackShape shape = {maxX - minX + 1, maxY - minY + 1, maxZ - minZ + 1, stack.shape.channels,
                              stack.shape.bitDepth};
    return each(shape, [&](int x, int y, int z, int c) { return stack.at(x + minX, y + minY, z + minZ, c); });
}

SlowStack slowPad(const SlowStack& stack, int newX, int newY, int newZ, const std::array<int, 3>& left)
{
    return each({newX, newY, newZ, stack.shape.channels, stack.shape.bitDepth},
                [&](int x, int y, int z, int c) {
                    const int oldX = x - left[0];
                    const int oldY = y - left[1];
                    const int oldZ = z - left[2];
                    return stack.inside(oldX, oldY, oldZ) ? stack.at(oldX, oldY, oldZ, c) : 0;
                });
}

SlowStack slowProject(const SlowStack& stack)
{
    StackShape shape = stack.shape;
    shape.z = 1;
    return each(shape, [&](int x, int y, int, int c) {
        int largest = 0;
        for (int z = 0; z < stack.shape.z; ++z)
            largest = std::max(largest, stack.at(x, y, z, c));
        return largest;
    });
}

SlowStack slowSubSampleMean(const SlowStack& stack, int factorX, int factorY, int factorZ)
{
    return each(reduced(stack.shape, factorX, factorY, factorZ), [&](int x, int y, int z, int c) {
        double sum = 0;
        for (int k = 0; k < factorZ; ++k) {
            for (int j = 0; j < factorY; ++j) {
                for (int i = 0; i < factorX; ++i)
                    sum += stack.clamped(x * factorX + i, y * factorY + j, z * factorZ + k, c);
            }
        }
        return static_cast<int>(std::floor(sum / (factorX * factorY * factorZ) + 0.5));
    });
}

SlowStack slowSubSampleMax(const SlowStack& stack, int factorX, int factorY, int factorZ)
{
    return each(reduced(stack.shape, factorX, factorY, factorZ), [&](int x, int y, int z, int c) {
        int largest = 0;
        for (int k = 0; k < factorZ; ++k) {
            for (int j = 0; j < factorY; ++j) {
                for (int i = 0; i < factorX; ++i)
                    largest = std::max(largest,
                                       stack.clamped(x * factorX + i, y * factorY + j, z * factorZ + k, c));
            }
        }
        return largest;
    });
}

SlowStack slowRatio(const SlowStack& stack, int channelA, int channelB)
{
    StackShape shape = stack.shape;
    shape.channels = 1;
    return each(shape, [&](int x, int y, int z, int) {
        const double a = stack.at(x, y, z, channelA);
        const double b = stack.at(x, y, z, channelB);
        const double ratio = a + b == 0 ? -1.0 : (a - b) / (a + b);
        return static_cast<int>(std::floor((ratio + 1) * highest(shape) / 2 + 0.5));
    });
}

} // namespace tirn::test
