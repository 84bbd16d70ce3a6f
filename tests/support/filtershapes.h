#pragma once

#include <random>
#include <string>
#include <vector>

#include "support/stacks.h"

namespace tirn::test {

/// A filter's arguments with the stack that it gets.
struct FilterCase
{
    StackShape shape;
    int size;
    int channel;
    bool is3D;
    unsigned seed;

    std::string text() const
    {
        return ::testing::PrintToString(
                   std::vector<int>{shape.x, shape.y, shape.z, shape.channels, shape.bitDepth}) +
               " size " + std::to_string(size) + " channel " + std::to_string(channel) +
               (is3D ? " 3D" : " 2D");
    }
};

/// Random stacks of all depths, 1 to 4 channels, sizes 1 to 33, windows from 1 to `largest` with even ones
/// and ones larger than the stack, one channel and all; the same at each run.
inline std::vector<FilterCase> filterCases(int count, int largest, unsigned seed)
{
    std::mt19937 generator(seed);
    const auto below = [&](int limit) {
        return static_cast<int>(generator() % static_cast<unsigned>(limit));
    };
    const auto side = [&] { return below(4) == 0 ? 1 + below(3) : 1 + below(33); };
    constexpr int kDepths[] = {8, 12, 16};
    std::vector<FilterCase> cases;
    for (int i = 0; i < count; ++i) {
        FilterCase one;
        one.is3D = i % 2 == 1;
        one.shape = {side(), side(), one.is3D ? 1 + below(9) : 1 + below(3), 1 + below(4), kDepths[i % 3]};
        one.size = below(3) == 0 ? 3 + 2 * below(2) : 1 + below(largest);
        one.channel = below(2) == 0 ? -1 : below(one.shape.channels);
        one.seed = generator();
        cases.push_back(one);
    }
    return cases;
}

} // namespace tirn::test
