#include <gtest/gtest.h>

#include "volume/stackgeometry.h"

namespace tirn {
namespace {

constexpr float kFirst = 0.996F;

/// The first corner of a quad, where the order of blocks shows.
std::array<float, 3> corner(const Quad& quad) { return {quad[0].x, quad[0].y, quad[0].z}; }

using Corners = std::vector<std::array<float, 3>>;

Corners corners(const std::vector<Quad>& quads, std::size_t first, std::size_t count)
{
    Corners all;
    for (std::size_t i = first; i < first + count; ++i)
        all.push_back(corner(quads[i]));
    return all;
}

TEST(Quads2D, ASmallStackHasTheseVertices)
{
    const std::vector<Quad> quads = quads2D(StackGeometry::of(2, 1, 1, 1024));
    ASSERT_EQ(quads.size(), 4U);
    EXPECT_EQ(quads[0], (Quad{{{0, 0, 0, -1, 0, 0.5F},
                               {1, 0, 0, 1, 0, 0.5F},
                               {1, 1, 0, 1, 0, -0.5F},
                               {0, 1, 0, -1, 0, -0.5F}}}));
    EXPECT_EQ(quads[1], (Quad{{{0, 0, 0, kFirst, -0.5F, 0.5F},
                               {1, 0, 0, kFirst, -0.5F, -0.5F},
                               {1, 1, 0, kFirst, 0.5F, -0.5F},
                               {0, 1, 0, kFirst, 0.5F, 0.5F}}}));
    EXPECT_FLOAT_EQ(quads[2][0].x, -kFirst);
    EXPECT_EQ(quads[3], (Quad{{{0, 0, 0, -1, -0.5F, 0},
                               {1, 0, 0, 1, -0.5F, 0},
                               {1, 1, 0, 1, 0.5F, 0},
                               {0, 1, 0, -1, 0.5F, 0}}}));
}

TEST(Quads2D, BlocksComeInTheOrderOfTheirTextures)
{
    const std::vector<Quad> quads = quads2D(StackGeometry::of(4, 4, 4, 2));
    ASSERT_EQ(quads.size(), 48U);
    EXPECT_EQ(corners(quads, 0, 4),
              (Corners{{-1, kFirst, 0}, {0, kFirst, 0}, {-1, kFirst, 1}, {0, kFirst, 1}}));
    EXPECT_EQ(corners(quads, 16, 4),
              (Corners{{kFirst, -1, 0}, {kFirst, -1, 1}, {kFirst, 0, 0}, {kFirst, 0, 1}}));
    EXPECT_EQ(corners(quads, 32, 4),
              (Corners{{-1, -1, kFirst}, {0, -1, kFirst}, {-1, 0, kFirst}, {0, 0, kFirst}}));
}

TEST(Quads2D, SeamsBetweenBlocksCoincide)
{
    const StackGeometry g = StackGeometry::of(700, 90, 3, 64);
    const std::vector<Quad> quads = quads2D(g);
    const std::size_t zGroup = static_cast<std::size_t>(g.yGroup() + g.xGroup());
    ASSERT_EQ(g.xBlocks, 16);
    ASSERT_EQ(g.yBlocks, 2);
    for (std::size_t bx = 0; bx + 1 < 16; ++bx)
        EXPECT_EQ(quads[zGroup + bx][1].x, quads[zGroup + bx + 1][0].x) << bx;
    EXPECT_EQ(quads[zGroup][3].y, quads[zGroup + 16][0].y);
    EXPECT_EQ(quads[zGroup][0].x, -1.0F);
    EXPECT_EQ(quads[zGroup + 15][1].x, 1.0F);
    EXPECT_EQ(quads[zGroup][0].y, -0.125F);
    EXPECT_EQ(quads[zGroup + 16][3].y, 0.125F);
}

TEST(Quads2D, CountFollowsTheStackAndNotTheReslicedDepth)
{
    StackGeometry g = StackGeometry::of(5, 3, 4, 4);
    g.finalZ = 9;
    EXPECT_EQ(quads2D(g).size(), 6U + 5U + 8U);
    EXPECT_EQ(quads3D(g).size(), 6U + 5U + 18U);
}

TEST(Quads3D, ASmallStackHasTheseVertices)
{
    const std::vector<Quad> quads = quads3D(StackGeometry::of(2, 2, 2, 1024));
    ASSERT_EQ(quads.size(), 6U);
    EXPECT_EQ(quads[0], (Quad{{{0, 1, 0, -1, kFirst, 1},
                               {1, 1, 0, 1, kFirst, 1},
                               {1, 1, 1, 1, kFirst, -1},
                               {0, 1, 1, -1, kFirst, -1}}}));
    EXPECT_EQ(quads[2], (Quad{{{1, 0, 0, kFirst, -1, 1},
                               {1, 0, 1, kFirst, -1, -1},
                               {1, 1, 1, kFirst, 1, -1},
                               {1, 1, 0, kFirst, 1, 1}}}));
    EXPECT_EQ(quads[4], (Quad{{{0, 0, 0, -1, -1, kFirst},
                               {1, 0, 0, 1, -1, kFirst},
                               {1, 1, 0, 1, 1, kFirst},
                               {0, 1, 0, -1, 1, kFirst}}}));
    EXPECT_EQ(quads[1][0].t, 0.0F);
    EXPECT_EQ(quads[3][0].s, 0.0F);
    EXPECT_EQ(quads[5][0].r, 1.0F);
}

TEST(Quads3D, BlocksRunDownwardOnZAndY)
{
    const std::vector<Quad> quads = quads3D(StackGeometry::of(4, 4, 4, 2));
    ASSERT_EQ(quads.size(), 48U);
    EXPECT_EQ(corners(quads, 0, 4),
              (Corners{{-1, kFirst, 1}, {0, kFirst, 1}, {-1, kFirst, 0}, {0, kFirst, 0}}));
    EXPECT_EQ(corners(quads, 16, 4),
              (Corners{{kFirst, 0, 1}, {kFirst, -1, 1}, {kFirst, 0, 0}, {kFirst, -1, 0}}));
    EXPECT_EQ(corners(quads, 32, 4),
              (Corners{{-1, 0, kFirst}, {0, 0, kFirst}, {-1, -1, kFirst}, {0, -1, kFirst}}));
    const std::array<float, 4> acrossY = {1, 0, 1, 0};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(quads[4 * i][0].t, acrossY[i]);
        EXPECT_EQ(quads[16 + 4 * i][0].s, acrossY[i]);
        EXPECT_EQ(quads[32 + 4 * i][0].r, 1 - acrossY[i]);
    }
}

} // namespace
} // namespace tirn
