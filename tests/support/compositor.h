#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "support/plainstack.h"

namespace tirn::test {

/// Four bytes R, G, B, A an entry; 256 or 4096 entries.
using ColourTable = std::vector<std::uint8_t>;

/// A table from black and transparent to `colour` (0..1) and `opacity` (0..1), in equal steps.
ColourTable rampTable(int entries, const std::array<double, 3>& colour, double opacity);

enum class Blending { Alpha, Maximum };
enum class Target { Slices2D, Volume3D };

/// How a volume is looked at: along one of its axes, without perspective, through the square from -1 to 1.
struct CompositorView
{
    /// Degrees, multiples of 90. The view's matrix is Rx * Ry * Rz: z turns the volume first.
    std::array<int, 3> rotation = {0, 0, 0};
    /// Along the volume's own axes.
    std::array<double, 3> scale = {1, 1, 1};
    Blending blending = Blending::Alpha;
    Target target = Target::Slices2D;
    /// The longest edge that a texture may have, a power of two.
    int blockLimit = 1024;
    /// The number of slices along z that a resliced 3D target is drawn with, or -1.
    int finalZ = -1;
    /// First and last drawn slice along x, y and z, all between them; nothing for the whole stack.
    std::optional<std::array<std::array<int, 2>, 3>> cut = {};
    /// One for each channel; an empty list shows all.
    std::vector<bool> hidden = {};
    std::array<std::uint8_t, 3> background = {0, 0, 0};
    /// Pixels on each side of the picture.
    int size = 128;
    /// Draws front to back. Never right; shows that a comparison notices the order.
    bool wrongOrder = false;
};

/// A square picture, first row on top, three bytes R, G, B a pixel.
struct Picture
{
    int size = 0;
    std::vector<std::uint8_t> rgb;
    /// One for each pixel: whether anything was drawn there.
    std::vector<bool> covered;

    std::array<int, 3> pixel(int column, int row) const;
};

/// The rotations that show orientations 0 to 5: the viewer on the positive and the negative side of z, x, y.
std::array<std::array<int, 3>, 6> axisRotations();
/// Which of the six orientations a view shows.
int orientationOf(const CompositorView& view);
/// The axis of the volume along which the view looks, and the voxel on it that is the second from the viewer.
int slicingAxisOf(const CompositorView& view);
int nearVoxelOf(const CompositorView& view, const PlainStack& stack);

/// What a frame of `stack` must look like: slices along the axis that faces the viewer, back to front, every
/// channel of a slice before the next slice. Predicted pixel by pixel from the voxels, without any of the
/// renderer's code. A stack with one voxel on an axis takes the 2D target, as in the program.
///
/// The place of a slice in depth has no influence on such a view. In a maximum the order of the slices has
/// none either, so that mirroring along the line of sight shows only where blending is alpha.
Picture compose(const PlainStack& stack, const std::vector<ColourTable>& tables, const CompositorView& view);

} // namespace tirn::test
