#include "volume/stackgeometry.h"

#include <algorithm>
#include <bit>

#include "base/checkedsize.h"
#include "base/log.h"

namespace tirn {

namespace {

constexpr double kOutermostSlice = 0.996;
constexpr double kSliceSpread = 1.992;

int blockCount(int padded, int limit) { return padded / limit + (padded % limit != 0 ? 1 : 0); }

int sizeOnAxis(const StackGeometry& g, int axis) { return axis == 0 ? g.x : axis == 1 ? g.y : g.z; }

int slicesOnAxis(const StackGeometry& g, int axis)
{
    return axis == 2 && g.finalZ > 0 ? g.finalZ : sizeOnAxis(g, axis);
}

double quotient(int numerator, int denominator)
{
    return denominator == 0 ? 0.0 : static_cast<double>(numerator) / denominator;
}

/// Coordinate on x or y: the slices run backward, and only the first part of the slices is moved by the
/// padding.
double flatTexCoord(int i, int size, int padded, int blocks)
{
    const int sliceBlock = std::max(1, size / blocks);
    const int textureBlock = padded / blocks;
    const int j = i / sliceBlock == 0 ? i + (padded - size) / 2 : i;
    return 1.0 - quotient(j % textureBlock, textureBlock - 1);
}

/// Coordinate on z: squeezed into the data's part of the padded texture, so that more quads than data slices
/// sample between the planes.
double deepTexCoord(const StackGeometry& g, int i)
{
    const int slices = std::max(g.z, g.finalZ);
    const int padded = next2(slices);
    const int r =
        static_cast<int>(static_cast<unsigned>(i) % static_cast<unsigned>(std::max(1, padded / g.zBlocks)));
    const int sliceBlock = std::max(1, slices / g.zBlocks);
    const double offset = r / sliceBlock == 0 ? quotient((g.powZ - g.z) / 2, g.powZ - 1) : 0.0;
    return quotient(r, sliceBlock - 1) * (1.0 - quotient(g.powZ - g.z, g.powZ - 1)) + offset;
}

/// The sides of block (bx, by, bz).
struct BlockEdges
{
    float x0, x1, y0, y1, z0, z1;
};

struct AxisBlocks
{
    float half;
    float step;
    int count;

    AxisBlocks(int padded, int maxPow, int blocks)
        : half(static_cast<float>(padded * 1.0 / maxPow)), step(2 * half / static_cast<float>(blocks)),
          count(blocks)
    {}
    float low(int block) const { return static_cast<float>(block) * step - half; }
    float high(int block) const { return static_cast<float>(block - count + 1) * step + half; }
};

class BlockGrid
{
public:
    explicit BlockGrid(const StackGeometry& g)
        : m_x(g.powX, g.maxPow(), g.xBlocks), m_y(g.powY, g.maxPow(), g.yBlocks),
          m_z(g.powZ, g.maxPow(), g.zBlocks)
    {}
    BlockEdges edges(int bx, int by, int bz) const
    {
        return {m_x.low(bx), m_x.high(bx), m_y.low(by), m_y.high(by), m_z.low(bz), m_z.high(bz)};
    }

private:
    AxisBlocks m_x;
    AxisBlocks m_y;
    AxisBlocks m_z;
};

Quad yQuad2D(float p, const BlockEdges& e)
{
    return {QuadVertex{0, 0, 0, e.x0, p, e.z1}, QuadVertex{1, 0, 0, e.x1, p, e.z1},
            QuadVertex{1, 1, 0, e.x1, p, e.z0}, QuadVertex{0, 1, 0, e.x0, p, e.z0}};
}

Quad xQuad2D(float p, const BlockEdges& e)
{
    return {QuadVertex{0, 0, 0, p, e.y0, e.z1}, QuadVertex{1, 0, 0, p, e.y0, e.z0},
            QuadVertex{1, 1, 0, p, e.y1, e.z0}, QuadVertex{0, 1, 0, p, e.y1, e.z1}};
}

Quad zQuad2D(float p, const BlockEdges& e)
{
    return {QuadVertex{0, 0, 0, e.x0, e.y0, p}, QuadVertex{1, 0, 0, e.x1, e.y0, p},
            QuadVertex{1, 1, 0, e.x1, e.y1, p}, QuadVertex{0, 1, 0, e.x0, e.y1, p}};
}

Quad yQuad3D(float p, float f, const BlockEdges& e)
{
    return {QuadVertex{0, f, 0, e.x0, p, e.z1}, QuadVertex{1, f, 0, e.x1, p, e.z1},
            QuadVertex{1, f, 1, e.x1, p, e.z0}, QuadVertex{0, f, 1, e.x0, p, e.z0}};
}

Quad xQuad3D(float p, float f, const BlockEdges& e)
{
    return {QuadVertex{f, 0, 0, p, e.y0, e.z1}, QuadVertex{f, 0, 1, p, e.y0, e.z0},
            QuadVertex{f, 1, 1, p, e.y1, e.z0}, QuadVertex{f, 1, 0, p, e.y1, e.z1}};
}

Quad zQuad3D(float p, float f, const BlockEdges& e)
{
    return {QuadVertex{0, 0, f, e.x0, e.y0, p}, QuadVertex{1, 0, f, e.x1, e.y0, p},
            QuadVertex{1, 1, f, e.x1, e.y1, p}, QuadVertex{0, 1, f, e.x0, e.y1, p}};
}

float builderPosition(const StackGeometry& g, int i, int axis)
{
    return static_cast<float>(quadPosition(g, i, axis));
}

} // namespace

StackGeometry StackGeometry::of(int x, int y, int z, int limit)
{
    StackGeometry g;
    g.x = x;
    g.y = y;
    g.z = z;
    g.powX = next2(x);
    g.powY = next2(y);
    g.powZ = next2(z);
    const int edge = static_cast<int>(std::bit_floor(static_cast<unsigned>(std::max(1, limit))));
    g.xBlocks = blockCount(g.powX, edge);
    g.yBlocks = blockCount(g.powY, edge);
    g.zBlocks = blockCount(g.powZ, edge);
    return g;
}

int StackGeometry::maxPow() const { return std::max({powX, powY, powZ}); }

double quadPosition(const StackGeometry& geometry, int i, int axis)
{
    if (axis < 0 || axis > 2)
        return 0.0;
    const int slices = slicesOnAxis(geometry, axis);
    if (slices < 2)
        return 0.0;
    return (kOutermostSlice - (kSliceSpread / (slices - 1)) * i) * sizeOnAxis(geometry, axis) /
           geometry.maxPow();
}

double texCoord(const StackGeometry& geometry, int i, int axis)
{
    switch (axis) {
    case 0:
        return flatTexCoord(i, geometry.x, geometry.powX, geometry.xBlocks);
    case 1:
        return flatTexCoord(i, geometry.y, geometry.powY, geometry.yBlocks);
    case 2:
        return deepTexCoord(geometry, i);
    default:
        logWarning("Unknown axis for getTexCoord");
        return 0.0;
    }
}

std::vector<Quad> quads2D(const StackGeometry& g)
{
    const BlockGrid grid(g);
    std::vector<Quad> quads;
    for (int i = 0; i < g.y; ++i) {
        for (int bz = 0; bz < g.zBlocks; ++bz) {
            for (int bx = 0; bx < g.xBlocks; ++bx)
                quads.push_back(yQuad2D(builderPosition(g, i, 1), grid.edges(bx, 0, bz)));
        }
    }
    for (int i = 0; i < g.x; ++i) {
        for (int by = 0; by < g.yBlocks; ++by) {
            for (int bz = 0; bz < g.zBlocks; ++bz)
                quads.push_back(xQuad2D(builderPosition(g, i, 0), grid.edges(0, by, bz)));
        }
    }
    for (int i = 0; i < g.z; ++i) {
        for (int by = 0; by < g.yBlocks; ++by) {
            for (int bx = 0; bx < g.xBlocks; ++bx)
                quads.push_back(zQuad2D(builderPosition(g, i, 2), grid.edges(bx, by, 0)));
        }
    }
    return quads;
}

std::vector<Quad> quads3D(const StackGeometry& g)
{
    const BlockGrid grid(g);
    std::vector<Quad> quads;
    for (int i = 0; i < g.y; ++i) {
        const auto f = static_cast<float>(texCoord(g, i, 1));
        for (int bz = g.zBlocks - 1; bz >= 0; --bz) {
            for (int bx = 0; bx < g.xBlocks; ++bx)
                quads.push_back(yQuad3D(builderPosition(g, i, 1), f, grid.edges(bx, 0, bz)));
        }
    }
    for (int i = 0; i < g.x; ++i) {
        const auto f = static_cast<float>(texCoord(g, i, 0));
        for (int bz = g.zBlocks - 1; bz >= 0; --bz) {
            for (int by = g.yBlocks - 1; by >= 0; --by)
                quads.push_back(xQuad3D(builderPosition(g, i, 0), f, grid.edges(0, by, bz)));
        }
    }
    for (int i = 0; i < g.finalDepth(); ++i) {
        const auto f = static_cast<float>(texCoord(g, i, 2));
        for (int by = g.yBlocks - 1; by >= 0; --by) {
            for (int bx = 0; bx < g.xBlocks; ++bx)
                quads.push_back(zQuad3D(builderPosition(g, i, 2), f, grid.edges(bx, by, 0)));
        }
    }
    return quads;
}

BoxEdges boxEdges(int size, int maxPow)
{
    const int odd = size % 2;
    return {static_cast<float>(-0.999 * size / maxPow),
            static_cast<float>(0.999 * (size + 2 * odd) / maxPow)};
}

} // namespace tirn
