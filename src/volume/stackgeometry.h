#pragma once

#include <array>
#include <vector>

namespace tirn {

/// Everything that quads, textures and draw order depend on: the stack's size, the padded sizes and the block
/// counts.
struct StackGeometry
{
    int x = 0;
    int y = 0;
    int z = 0;
    int powX = 1;
    int powY = 1;
    int powZ = 1;
    int xBlocks = 1;
    int yBlocks = 1;
    int zBlocks = 1;
    /// The depth that a resliced 3D stack is drawn with, -1 when it is drawn as it is.
    int finalZ = -1;

    /// Pads a stack to powers of two and cuts it into blocks of at most `limit` texels a side; the limit
    /// itself is rounded down to a power of two, at least 1.
    static StackGeometry of(int x, int y, int z, int limit);

    int finalDepth() const { return finalZ > z ? finalZ : z; }
    int blockX() const { return powX / xBlocks; }
    int blockY() const { return powY / yBlocks; }
    int blockZ() const { return powZ / zBlocks; }
    /// The empty texels before the data.
    int padX() const { return (powX - x) / 2; }
    int padY() const { return (powY - y) / 2; }
    int padZ() const { return (powZ - z) / 2; }
    int maxPow() const;
    int blocks() const { return xBlocks * yBlocks * zBlocks; }
    /// Where along z a block of the 3D target lies.
    int zBlockOf(int block) const { return block / (xBlocks * yBlocks); }
    bool isValid() const { return x > 0 && y > 0 && z > 0; }

    /// Quads, or 2D textures of one channel, in each group; planes at constant y come first, then x, then z.
    int yGroup() const { return y * xBlocks * zBlocks; }
    int xGroup() const { return x * yBlocks * zBlocks; }
    int zGroup() const { return finalDepth() * xBlocks * yBlocks; }
    int slicesOfAllAxes() const { return yGroup() + xGroup() + zGroup(); }
};

/// Position of slice i on an axis (0 x, 1 y, 2 z) in drawing units, where the longest padded side spans -1
/// to 1. Slice 0 lies at the positive end. 0 for another axis and for an axis with one slice.
double quadPosition(const StackGeometry& geometry, int i, int axis);

/// Third texture coordinate of slice i of a 3D texture on an axis. Another axis is logged and gives 0.
double texCoord(const StackGeometry& geometry, int i, int axis);

struct QuadVertex
{
    /// Texture coordinates; the 2D target leaves out r.
    float s = 0;
    float t = 0;
    float r = 0;
    float x = 0;
    float y = 0;
    float z = 0;

    bool operator==(const QuadVertex&) const = default;
};
using Quad = std::array<QuadVertex, 4>;

/// All quads in the order of their display lists: planes at constant y, then x, then z.
std::vector<Quad> quads2D(const StackGeometry& geometry);
std::vector<Quad> quads3D(const StackGeometry& geometry);

/// The two edges of the bounding box on an axis of `size` voxels: an odd size adds two voxels on the upper
/// side only, where the padding puts the odd voxel.
struct BoxEdges
{
    float low = 0;
    float high = 0;
};
BoxEdges boxEdges(int size, int maxPow);

} // namespace tirn
