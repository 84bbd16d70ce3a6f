#include "support/slowfilters.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tirn::test {

namespace {

/// What a sample of the stack's width keeps of a number.
int truncated(const StackShape& shape, std::int64_t value)
{
    return static_cast<int>(value & (shape.bitDepth > 8 ? 0xFFFF : 0xFF));
}

/// The stack with the samples of the chosen channels replaced.
template <class Value>
SlowStack replaced(const SlowStack& stack, int channel, Value value)
{
    SlowStack result = stack;
    for (int z = 0; z < stack.shape.z; ++z) {
        for (int y = 0; y < stack.shape.y; ++y) {
            for (int x = 0; x < stack.shape.x; ++x) {
                for (int c = 0; c < stack.shape.channels; ++c) {
                    if (channel == -1 || channel == c)
                        result.at(x, y, z, c) = truncated(stack.shape, value(x, y, z, c));
                }
            }
        }
    }
    return result;
}

/// The samples of the window that is cut at the edges and lacks the voxels at its upper ends.
std::vector<int> cutWindow(const SlowStack& stack, int x, int y, int z, int c, int half, bool is3D)
{
    std::vector<int> values;
    for (int k = is3D ? std::max(0, z - half) : z; k < (is3D ? std::min(z + half, stack.shape.z) : z + 1);
         ++k) {
        for (int j = std::max(0, y - half); j < std::min(y + half, stack.shape.y); ++j) {
            for (int i = std::max(0, x - half); i < std::min(x + half, stack.shape.x); ++i)
                values.push_back(stack.at(i, j, k, c));
        }
    }
    return values;
}

/// The samples of the window whose edges repeat.
std::vector<int> repeatedWindow(const SlowStack& stack, int x, int y, int z, int c, int half, bool is3D)
{
    std::vector<int> values;
    for (int k = is3D ? z - half : z; k <= (is3D ? z + half : z); ++k) {
        for (int j = y - half; j <= y + half; ++j) {
            for (int i = x - half; i <= x + half; ++i)
                values.push_back(stack.clamped(i, j, k, c));
        }
    }
    return values;
}

/// The search through a histogram from `start` on.
int middle(const std::vector<int>& values, int bins, int start)
{
    std::vector<int> counters(static_cast<std::size_t>(bins));
    for (const int value : values) {
        if (value < bins)
            ++counters[static_cast<std::size_t>(value)];
    }
    const int rank = (static_cast<int>(values.size()) + 1) / 2;
    int counted = 0;
    int i = start;
    while (i < bins && counted < rank)
        counted += counters[static_cast<std::size_t>(i++)];
    return i - 1;
}

} // namespace

SlowStack slowMaxFilter(const SlowStack& stack, int size, int channel, bool is3D)
{
    return replaced(stack, channel, [&](int x, int y, int z, int c) {
        int largest = 0;
        for (const int value : cutWindow(stack, x, y, z, c, size / 2, is3D))
            largest = std::max(largest, value);
        return largest;
    });
}

SlowStack slowMinFilter(const SlowStack& stack, int size, int channel, bool is3D)
{
    return replaced(stack, channel, [&](int x, int y, int z, int c) {
        int smallest = 65535;
        for (const int value : cutWindow(stack, x, y, z, c, size / 2, is3D))
            smallest = std::min(smallest, value);
        return smallest;
    });
}

SlowStack slowMeanFilter(const SlowStack& stack, int size, int channel, bool is3D)
{
    const double divisor = static_cast<double>(size) * size;
    return replaced(stack, channel, [&](int x, int y, int z, int c) {
        std::uint32_t sum = 0;
        for (const int value : repeatedWindow(stack, x, y, z, c, size / 2, is3D))
            sum += static_cast<std::uint32_t>(value);
        return static_cast<std::int64_t>(std::floor(sum / divisor + 0.5));
    });
}

SlowStack slowMedianFilter(const SlowStack& stack, int size, int channel, bool is3D,
                           const std::vector<int>& minima)
{
    const int bins = 1 << stack.shape.bitDepth;
    return replaced(stack, channel, [&](int x, int y, int z, int c) {
        // The first voxel of a layer is searched for from 0 on.
        const int start = x == 0 && y == 0 ? 0 : minima[static_cast<std::size_t>(c)];
        return middle(repeatedWindow(stack, x, y, z, c, size / 2, is3D), bins, start);
    });
}

SlowStack slowBackgroundSubtract(const SlowStack& stack, int size, int channel, int percent,
                                 const std::vector<int>& minima)
{
    const SlowStack background = slowMedianFilter(stack, size, channel, false, minima);
    const double part = percent / 100.0;
    return replaced(stack, channel, [&](int x, int y, int z, int c) {
        const double difference = stack.at(x, y, z, c) - background.at(x, y, z, c) * part + 0.5;
        return static_cast<std::int64_t>(std::floor(difference < 0 ? 0 : difference));
    });
}

SlowStack slowZFilter(const SlowStack& stack, int size, int channel, int threshold)
{
    const int half = size / 2;
    SlowStack result(stack.shape);
    for (int z = 0; z < stack.shape.z; ++z) {
        for (int y = 0; y < stack.shape.y; ++y) {
            for (int x = 0; x < stack.shape.x; ++x) {
                for (int c = 0; c < stack.shape.channels; ++c) {
                    bool found = false;
                    for (int k = z - half; k <= z + half; ++k) {
                        for (int j = y - 1; j <= y + 1 && k != z; ++j) {
                            for (int i = x - 1; i <= x + 1; ++i)
                                found = found || stack.clamped(i, j, k, c) > threshold;
                        }
                    }
                    if (found && (channel == -1 || channel == c))
                        result.at(x, y, z, c) = stack.at(x, y, z, c);
                }
            }
        }
    }
    return result;
}

SlowStack slowAddConstant(const SlowStack& stack, int value, int channel)
{
    const std::int64_t limit = std::int64_t{1} << stack.shape.bitDepth;
    return replaced(stack, channel, [&](int x, int y, int z, int c) {
        const std::int64_t sum = std::int64_t{stack.at(x, y, z, c)} + value;
        return sum >= limit ? limit - 1 : std::max<std::int64_t>(0, sum);
    });
}

SlowStack slowConvolution(const SlowStack& stack, const std::vector<double>& kernel, int width, int height,
                          int channel)
{
    double weights = 0;
    for (const double weight : kernel)
        weights += weight;
    return replaced(stack, channel, [&](int x, int y, int z, int c) {
        double sum = 0;
        for (int j = 0; j < height; ++j) {
            for (int i = 0; i < width; ++i)
                sum += kernel[static_cast<std::size_t>(j * width + i)] *
                       stack.clamped(x + i - width / 2, y + j - height / 2, z, c);
        }
        const double result = std::floor((weights != 0 ? sum / weights : sum) + 0.5);
        return static_cast<std::int64_t>(std::clamp(result, 0.0, static_cast<double>(highest(stack.shape))));
    });
}

std::vector<int> minimaOf(const SlowStack& stack)
{
    std::vector<int> minima(static_cast<std::size_t>(stack.shape.channels), 65535);
    for (std::size_t i = 0; i < stack.values.size(); ++i) {
        int& minimum = minima[i % minima.size()];
        minimum = std::min(minimum, stack.values[i]);
    }
    return minima;
}

} // namespace tirn::test
