#include "raster/sliceset.h"

#include <gtest/gtest.h>

#include "support/rasterrig.h"

namespace tirn::test {
namespace {

std::array<int, 3> voxelOf(int axis, int plane, int u, int v)
{
    return axis == 0   ? std::array{plane, v, u}
           : axis == 1 ? std::array{u, plane, v}
                       : std::array{u, v, plane};
}

int texelOf(const SliceSet& set, int plane, int u, int v)
{
    const std::uint8_t* corner = set.plane(plane);
    const std::ptrdiff_t at = std::ptrdiff_t{v} * set.stride() + u;
    return set.bytesPerSample() == 1 ? corner[at] : reinterpret_cast<const std::uint16_t*>(corner)[at];
}

/// Of what the stack has in a box of a plane; 0 outside.
ValueRange slowRange(const PlainStack& stack, const SliceSet& set, int plane, int channel,
                     const TexelBox& box)
{
    ValueRange range{65535, 0};
    for (int v = box.v0; v <= box.v1; ++v) {
        for (int u = box.u0; u <= box.u1; ++u) {
            const auto [x, y, z] = voxelOf(set.axis(), plane, u, v);
            const bool isInside = u >= 0 && v >= 0 && u < set.width() && v < set.height();
            const int value = isInside ? stack.at(x, y, z, channel) : 0;
            range = {std::min(range.least, value), std::max(range.most, value)};
        }
    }
    return range;
}

TEST(SliceSet, PlanesHoldTheVoxelsOfOneChannelAndZerosAroundThem)
{
    for (const int bits : {8, 12}) {
        const PlainStack stack = denseStack(70, 13, 9, 3, bits);
        const std::vector<std::uint8_t> bytes = stack.bytes();
        for (int axis = 0; axis < 3; ++axis) {
            const SliceSet set(sourceOf(stack, bytes, 1), axis);
            ASSERT_EQ(set.planes(), stack.size(axis));
            for (int k = 0; k < set.planes(); ++k) {
                for (int v = -1; v <= set.height(); ++v) {
                    for (int u = -1; u <= set.width(); ++u) {
                        const ValueRange wanted = slowRange(stack, set, k, 1, {u, v, u, v});
                        ASSERT_EQ(texelOf(set, k, u, v), wanted.most)
                            << axis << " " << k << " " << u << " " << v;
                    }
                }
            }
        }
    }
}

TEST(SliceSet, RangesHoldAllThatLiesInABox)
{
    const PlainStack stack = denseStack(61, 50, 47, 2, 12);
    const std::vector<std::uint8_t> bytes = stack.bytes();
    for (int axis = 0; axis < 3; ++axis) {
        const SliceSet set(sourceOf(stack, bytes, 1), axis);
        for (const TexelBox& box :
             {TexelBox{5, 6, 7, 8}, TexelBox{0, 0, 46, 46}, TexelBox{-3, 2, 4, 5}, TexelBox{40, 40, 90, 60},
              TexelBox{-9, -9, -2, -2}, TexelBox{16, 16, 31, 31}, TexelBox{3, 1, 25, 23},
              TexelBox{33, 2, 46, 40}}) {
            const ValueRange wanted = slowRange(stack, set, 3, 1, box);
            const ValueRange found = set.range(3, box);
            EXPECT_LE(found.least, wanted.least);
            EXPECT_GE(found.most, wanted.most);
        }
        // Boxes of three cells a side are exact.
        const TexelBox cells{16, 16, 27, 27};
        EXPECT_EQ(set.range(3, cells), slowRange(stack, set, 3, 1, cells));
        EXPECT_EQ(set.range(3), slowRange(stack, set, 3, 1, {0, 0, set.width() - 1, set.height() - 1}));
    }
}

TEST(SliceSet, TakesAtMostAFifthMoreThanTheVoxels)
{
    const PlainStack stack = PlainStack::blank(128, 128, 64);
    const std::vector<std::uint8_t> bytes = stack.bytes();
    for (int axis = 0; axis < 3; ++axis) {
        const SliceSet set(sourceOf(stack, bytes, 0), axis);
        EXPECT_LE(set.memoryUsed(), bytes.size() * 12 / 10);
    }
}

} // namespace
} // namespace tirn::test
