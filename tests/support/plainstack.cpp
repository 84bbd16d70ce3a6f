#include "support/plainstack.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace tirn::test {

namespace {

/// A number in 0..1 that looks random, the same on every machine.
double noiseAt(int x, int y, int z, int channel)
{
    std::uint32_t h = 0x9E3779B9U * static_cast<std::uint32_t>(channel + 1);
    for (const int part : {x, y, z}) {
        h ^= static_cast<std::uint32_t>(part) + 0x85EBCA6BU + (h << 6) + (h >> 2);
        h *= 0xC2B2AE35U;
        h ^= h >> 15;
    }
    return (h & 0xFFFF) / 65535.0;
}

/// Noise with a knot every `cell` voxels and straight lines between them.
double smoothNoise(double x, double y, double z, int channel, double cell)
{
    const std::array<double, 3> at = {x / cell, y / cell, z / cell};
    double sum = 0;
    for (int corner = 0; corner < 8; ++corner) {
        double weight = 1;
        std::array<int, 3> knot{};
        for (unsigned axis = 0; axis < 3; ++axis) {
            const double base = std::floor(at[axis]);
            const int side = (corner >> axis) & 1;
            knot[axis] = static_cast<int>(base) + side;
            weight *= side ? at[axis] - base : 1 - (at[axis] - base);
        }
        sum += weight * noiseAt(knot[0], knot[1], knot[2], channel);
    }
    return sum;
}

template <typename Source>
PlainStack remade(const PlainStack& stack, const Source& source)
{
    PlainStack result = stack;
    for (int z = 0; z < stack.z; ++z)
        for (int y = 0; y < stack.y; ++y)
            for (int x = 0; x < stack.x; ++x)
                for (int c = 0; c < stack.channels; ++c)
                    result.at(x, y, z, c) = source(std::array<int, 3>{x, y, z}, c);
    return result;
}

} // namespace

PlainStack PlainStack::blank(int x, int y, int z, int channels, int bits)
{
    PlainStack stack{x, y, z, channels, bits, {}};
    stack.voxels.resize(static_cast<std::size_t>(x) * static_cast<std::size_t>(y) *
                        static_cast<std::size_t>(z) * static_cast<std::size_t>(channels));
    return stack;
}

std::size_t PlainStack::index(int xAt, int yAt, int zAt, int channel) const
{
    if (xAt < 0 || xAt >= x || yAt < 0 || yAt >= y || zAt < 0 || zAt >= z || channel < 0 ||
        channel >= channels)
        throw std::out_of_range("no such voxel");
    const std::int64_t voxel = (std::int64_t{zAt} * y + yAt) * x + xAt;
    return static_cast<std::size_t>(voxel * channels + channel);
}

std::vector<std::uint8_t> PlainStack::bytes() const
{
    if (bits <= 8)
        return {voxels.begin(), voxels.end()};
    std::vector<std::uint8_t> result(voxels.size() * 2);
    std::memcpy(result.data(), voxels.data(), result.size());
    return result;
}

PlainStack denseStack(int x, int y, int z, int channels, int bits)
{
    const double top = (1 << bits) - 1;
    return remade(PlainStack::blank(x, y, z, channels, bits), [&](const std::array<int, 3>& at, int channel) {
        const double coarse = smoothNoise(at[0], at[1], at[2], channel, 5.3);
        const double fine = smoothNoise(at[0], at[1], at[2], channel + 100, 2.1);
        const double slope = (0.5 * at[0] / x + 0.3 * at[1] / y + 0.2 * at[2] / z);
        const double value = 0.45 * coarse + 0.35 * fine + 0.2 * (channel % 2 ? 1 - slope : slope);
        return static_cast<std::uint16_t>(std::clamp(1.6 * value - 0.3, 0.02, 1.0) * top);
    });
}

PlainStack mirrored(const PlainStack& stack, int axis)
{
    return remade(stack, [&](std::array<int, 3> at, int channel) {
        int& along = at[static_cast<unsigned>(axis)];
        along = stack.size(axis) - 1 - along;
        return stack.at(at[0], at[1], at[2], channel);
    });
}

PlainStack withSwappedChannels(const PlainStack& stack, int first, int second)
{
    return remade(stack, [&](const std::array<int, 3>& at, int channel) {
        const int from = channel == first ? second : channel == second ? first : channel;
        return stack.at(at[0], at[1], at[2], from);
    });
}

PlainStack withShiftedSlice(const PlainStack& stack, int axis, int slice, int distance)
{
    return remade(stack, [&](std::array<int, 3> at, int channel) {
        if (at[static_cast<unsigned>(axis)] == slice) {
            const int along = (axis + 1) % 3;
            int& moved = at[static_cast<unsigned>(along)];
            const int length = stack.size(along);
            moved = ((moved - distance) % length + length) % length;
        }
        return stack.at(at[0], at[1], at[2], channel);
    });
}

} // namespace tirn::test
