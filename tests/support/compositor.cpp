#include "support/compositor.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace tirn::test {

namespace {

using Matrix = std::array<std::array<int, 3>, 3>;

/// Cosine and sine of a multiple of 90 degrees.
std::array<int, 2> quarterTurns(int degrees)
{
    if (degrees % 90 != 0)
        throw std::invalid_argument("only multiples of 90 degrees show an axis");
    constexpr std::array<std::array<int, 2>, 4> turns = {{{1, 0}, {0, 1}, {-1, 0}, {0, -1}}};
    return turns[static_cast<unsigned>(((degrees / 90) % 4 + 4) % 4)];
}

Matrix product(const Matrix& a, const Matrix& b)
{
    Matrix result{};
    for (unsigned row = 0; row < 3; ++row)
        for (unsigned column = 0; column < 3; ++column)
            for (unsigned k = 0; k < 3; ++k)
                result[row][column] += a[row][k] * b[k][column];
    return result;
}

Matrix rotationMatrix(const std::array<int, 3>& degrees)
{
    const auto [cx, sx] = quarterTurns(degrees[0]);
    const auto [cy, sy] = quarterTurns(degrees[1]);
    const auto [cz, sz] = quarterTurns(degrees[2]);
    const Matrix aboutX = {{{1, 0, 0}, {0, cx, -sx}, {0, sx, cx}}};
    const Matrix aboutY = {{{cy, 0, sy}, {0, 1, 0}, {-sy, 0, cy}}};
    const Matrix aboutZ = {{{cz, -sz, 0}, {sz, cz, 0}, {0, 0, 1}}};
    return product(aboutX, product(aboutY, aboutZ));
}

/// The volume's axis that lies along an axis of the picture, and whether they point the same way.
struct Facing
{
    unsigned axis = 0;
    int sign = 1;
};

Facing facing(const Matrix& rotation, unsigned pictureAxis)
{
    for (unsigned axis = 0; axis < 3; ++axis) {
        if (rotation[pictureAxis][axis] != 0)
            return {axis, rotation[pictureAxis][axis]};
    }
    throw std::logic_error("not a rotation");
}

int nextPower(int n) { return static_cast<int>(std::bit_ceil(static_cast<unsigned>(n))); }

/// One axis of the stack as the textures hold it: padded to a power of two and cut into blocks.
struct Axis
{
    int size = 1;
    int padded = 1;
    int padding = 0;
    int blocks = 1;
    int blockSize = 1;
    /// Half the length of the padded axis in space.
    double half = 1;
    /// x grows with the voxels, y and z fall.
    bool falling = false;
};

using Axes = std::array<Axis, 3>;

Axes axesOf(const PlainStack& stack, int limit)
{
    if (limit < 2 || !std::has_single_bit(static_cast<unsigned>(limit)))
        throw std::invalid_argument("the block limit must be a power of two from 2");
    Axes axes;
    int longest = 1;
    for (int i = 0; i < 3; ++i) {
        Axis& axis = axes[static_cast<unsigned>(i)];
        axis.size = stack.size(i);
        axis.padded = nextPower(axis.size);
        axis.padding = (axis.padded - axis.size) / 2;
        axis.blocks = std::max(1, axis.padded / limit);
        axis.blockSize = axis.padded / axis.blocks;
        axis.falling = i != 0;
        longest = std::max(longest, axis.padded);
    }
    for (Axis& axis : axes)
        axis.half = static_cast<double>(axis.padded) / longest;
    return axes;
}

/// The two texels of a block between which a sample lies, and the share of the second. Counted in the
/// direction in which the voxels are.
struct Tap
{
    int block = 0;
    int first = 0;
    int second = 0;
    double share = 0;
};

/// `at` is the texture coordinate inside the block, 0 to 1 from edge to edge; texels end at the block.
Tap tapInBlock(double at, int block, int blockSize)
{
    const double texel = at * blockSize - 0.5;
    const double below = std::floor(texel);
    const int last = blockSize - 1;
    return {block, std::clamp(static_cast<int>(below), 0, last),
            std::clamp(static_cast<int>(below) + 1, 0, last), texel - below};
}

/// Where the place `position` of space lies on the axis; nothing outside of the volume.
std::optional<Tap> tapAt(double position, const Axis& axis)
{
    const double along = (axis.falling ? axis.half - position : position + axis.half) / (2 * axis.half);
    if (along < 0 || along >= 1)
        return std::nullopt;
    const double inBlocks = along * axis.blocks;
    const int block = std::min(static_cast<int>(inBlocks), axis.blocks - 1);
    return tapInBlock(inBlocks - block, block, axis.blockSize);
}

/// Where an axis is cut in space: nothing beyond is drawn.
struct Bounds
{
    double low = -1e9;
    double high = 1e9;
};

/// `drawn` slices lie along the axis, the outermost 0.004 of its half length inside of it; what lies up to
/// 0.004 of space outside of the last one is drawn. A bound that cuts nothing off is none.
Bounds boundsOf(const std::array<int, 2>& cut, const Axis& axis, int drawn)
{
    const double length = axis.half * axis.size / axis.padded;
    const auto place = [&](int slice) {
        const double along = (-0.996 + 1.992 * slice / (drawn - 1)) * length;
        return axis.falling ? -along : along;
    };
    Bounds bounds;
    double& first = axis.falling ? bounds.high : bounds.low;
    double& last = axis.falling ? bounds.low : bounds.high;
    if (cut[0] > 0)
        first = place(cut[0]) + (axis.falling ? 0.004 : -0.004);
    if (cut[1] < drawn - 1)
        last = place(cut[1]) + (axis.falling ? -0.004 : 0.004);
    return bounds;
}

/// The taps of every pixel along one side of the picture. `flipped` is set for rows, which are counted from
/// the top.
std::vector<std::optional<Tap>> tapsAlong(const Facing& faced, const Axes& axes, const CompositorView& view,
                                          const Bounds& bounds, bool flipped)
{
    std::vector<std::optional<Tap>> taps;
    for (int pixel = 0; pixel < view.size; ++pixel) {
        const double seen = (flipped ? -1 : 1) * ((pixel + 0.5) / view.size * 2 - 1);
        const double position = seen * faced.sign / view.scale[faced.axis];
        const bool isCutOff = position < bounds.low || position > bounds.high;
        taps.push_back(isCutOff ? std::nullopt : tapAt(position, axes[faced.axis]));
    }
    return taps;
}

/// The coordinate along the slicing axis that slice `slice` of a 3D target carries, in the direction of the
/// voxels. Divisions that count slices drop their remainder; those that give a coordinate do not.
double sliceCoordinate(int slice, unsigned axisNumber, const Axis& axis, int finalDepth)
{
    if (axisNumber == 2) {
        const int perBlock = finalDepth / axis.blocks;
        const int inBlock = slice % (nextPower(finalDepth) / axis.blocks);
        const double last = axis.padded - 1;
        const double offset = inBlock / perBlock == 0 ? axis.padding / last : 0.0;
        return inBlock / (perBlock - 1.0) * (1 - (axis.padded - axis.size) / last) + offset;
    }
    const int inData = slice / (axis.size / axis.blocks) == 0 ? slice + axis.padding : slice;
    const double fallen = 1 - (inData % axis.blockSize) / (axis.blockSize - 1.0);
    // Slices along x are counted against the voxels, and rows along y lie upside down in their block, so that
    // the second fall undoes the first on y only.
    return axisNumber == 0 ? fallen : 1 - fallen;
}

/// The block of a 3D target that a slice shows, numbered x fastest, from the number of the quad in its slice.
int brickNumber(unsigned sliceAxis, int slice, int quad, const Axes& axes, int finalDepth)
{
    const auto& [x, y, z] = axes;
    if (sliceAxis == 2)
        return slice / (finalDepth / z.blocks) * (x.blocks * y.blocks) + quad;
    if (sliceAxis == 0)
        return quad * x.blocks + (x.blocks - slice / (x.size / x.blocks) - 1);
    return (quad / x.blocks) * (x.blocks * z.blocks) + slice / (y.size / y.blocks) * y.blocks +
           quad % x.blocks;
}

/// The colour between two entries; the ends of the table reach half an entry further.
std::array<double, 4> lookUp(const ColourTable& table, double value)
{
    const int entries = static_cast<int>(table.size() / 4);
    const Tap tap = tapInBlock(value, 0, entries);
    std::array<double, 4> colour{};
    for (unsigned i = 0; i < 4; ++i) {
        const double first = table[4 * static_cast<unsigned>(tap.first) + i];
        const double second = table[4 * static_cast<unsigned>(tap.second) + i];
        colour[i] = (first + (second - first) * tap.share) / 255;
    }
    return colour;
}

/// What one slice shows of one channel: the texels of its quads, as if they were one texture.
struct Plane
{
    std::vector<double> texels;
    /// One for each quad of the slice; false where there is no texture for it.
    std::vector<bool> drawn;
};

/// Draws one view of one stack. Slices are numbered as the program numbers them: along x from the last voxel.
class Compositor
{
public:
    Compositor(const PlainStack& stack, const std::vector<ColourTable>& tables, const CompositorView& view);

    Picture draw();

private:
    Plane plane(int slice, int channel) const;
    void fillQuad(Plane& plane, const std::array<Tap, 3>& from, int quad, int channel) const;
    std::optional<std::array<Tap, 3>> source(int slice, int quad) const;
    void drawSlice(const Plane& plane, const ColourTable& table);
    void blend(std::size_t pixel, const std::array<double, 4>& colour);
    double texel(std::array<int, 3> at, int channel) const;
    const Axis& axis(unsigned number) const { return m_axes[number]; }
    int slicesAlong(unsigned number) const { return number == 2 ? m_finalDepth : axis(number).size; }
    /// Whether the cut leaves a slice of the slicing axis, which is numbered as the program does.
    bool isInside(int slice) const;
    Bounds bounds(unsigned number) const;
    /// The distance in a plane between neighbours along an axis of the volume.
    int stride(unsigned number) const { return number == m_fast ? 1 : axis(m_fast).padded; }

    const PlainStack& m_stack;
    const std::vector<ColourTable>& m_tables;
    const CompositorView& m_view;
    Axes m_axes;
    Matrix m_rotation;
    Facing m_column;
    Facing m_row;
    Facing m_slice;
    /// The two axes of a slice; its quads are numbered in the direction of the voxels, `m_fast` fastest.
    unsigned m_fast;
    unsigned m_slow;
    bool m_volume;
    int m_finalDepth;
    Picture m_picture;
};

Compositor::Compositor(const PlainStack& stack, const std::vector<ColourTable>& tables,
                       const CompositorView& view)
    : m_stack(stack), m_tables(tables), m_view(view), m_axes(axesOf(stack, view.blockLimit)),
      m_rotation(rotationMatrix(view.rotation)), m_column(facing(m_rotation, 0)),
      m_row(facing(m_rotation, 1)), m_slice(facing(m_rotation, 2)), m_fast(m_slice.axis == 0 ? 1 : 0),
      m_slow(m_slice.axis == 2 ? 1 : 2),
      m_volume(view.target == Target::Volume3D && std::min({stack.x, stack.y, stack.z}) > 1),
      m_finalDepth(m_volume ? std::max(stack.z, view.finalZ) : stack.z)
{
    if (tables.size() != static_cast<std::size_t>(stack.channels))
        throw std::invalid_argument("one colour table a channel");
}

Picture Compositor::draw()
{
    const auto pixels = static_cast<std::size_t>(m_view.size) * static_cast<std::size_t>(m_view.size);
    m_picture.size = m_view.size;
    m_picture.covered.assign(pixels, false);
    for (std::size_t i = 0; i < pixels; ++i)
        m_picture.rgb.insert(m_picture.rgb.end(), m_view.background.begin(), m_view.background.end());

    const int slices = slicesAlong(m_slice.axis);
    // Slice 0 lies on the positive side, so that a viewer there sees it last.
    const bool downward = (m_slice.sign > 0) != m_view.wrongOrder;
    for (int i = 0; i < slices; ++i) {
        const int slice = downward ? slices - 1 - i : i;
        for (int channel = 0; channel < m_stack.channels && isInside(slice); ++channel) {
            const auto number = static_cast<unsigned>(channel);
            if (m_view.hidden.empty() || !m_view.hidden[number])
                drawSlice(plane(slice, channel), m_tables[number]);
        }
    }
    return m_picture;
}

bool Compositor::isInside(int slice) const
{
    if (!m_view.cut)
        return true;
    const auto [first, last] = (*m_view.cut)[m_slice.axis];
    const int counted = m_slice.axis == 0 ? axis(0).size - 1 - slice : slice;
    return first <= counted && counted <= last;
}

Bounds Compositor::bounds(unsigned number) const
{
    return m_view.cut ? boundsOf((*m_view.cut)[number], axis(number), slicesAlong(number)) : Bounds{};
}

Plane Compositor::plane(int slice, int channel) const
{
    const auto length = [](int a, int b) {
        return static_cast<std::size_t>(a) * static_cast<std::size_t>(b);
    };
    Plane result{std::vector<double>(length(axis(m_fast).padded, axis(m_slow).padded)),
                 std::vector<bool>(length(axis(m_fast).blocks, axis(m_slow).blocks))};
    for (int quad = 0; quad < axis(m_fast).blocks * axis(m_slow).blocks; ++quad) {
        const std::optional<std::array<Tap, 3>> from = source(slice, quad);
        result.drawn[static_cast<unsigned>(quad)] = from.has_value();
        if (from)
            fillQuad(result, *from, quad, channel);
    }
    return result;
}

/// The block that a quad shows, and the place along the slicing axis. Nothing when the block's number is none
/// of the channel's.
std::optional<std::array<Tap, 3>> Compositor::source(int slice, int quad) const
{
    std::array<Tap, 3> from{};
    const Axis& along = axis(m_slice.axis);
    if (!m_volume) {
        const int texelNumber = along.padding + (m_slice.axis == 0 ? along.size - 1 - slice : slice);
        from[m_slice.axis] = {0, texelNumber, texelNumber, 0};
        from[m_fast].block = quad % axis(m_fast).blocks;
        from[m_slow].block = quad / axis(m_fast).blocks;
        return from;
    }
    const int brick = brickNumber(m_slice.axis, slice, quad, m_axes, m_finalDepth);
    const auto& [x, y, z] = m_axes;
    if (brick < 0 || brick >= x.blocks * y.blocks * z.blocks)
        return std::nullopt;
    from[m_slice.axis] =
        tapInBlock(sliceCoordinate(slice, m_slice.axis, along, m_finalDepth), 0, along.blockSize);
    from[0].block = brick % x.blocks;
    from[1].block = brick / x.blocks % y.blocks;
    from[2].block = brick / (x.blocks * y.blocks);
    return from;
}

void Compositor::fillQuad(Plane& plane, const std::array<Tap, 3>& from, int quad, int channel) const
{
    const Axis& fast = axis(m_fast);
    const Axis& slow = axis(m_slow);
    const Tap& along = from[m_slice.axis];
    const int base = along.block * axis(m_slice.axis).blockSize;
    const int corner =
        quad / fast.blocks * slow.blockSize * fast.padded + quad % fast.blocks * fast.blockSize;
    for (int v = 0; v < slow.blockSize; ++v) {
        for (int u = 0; u < fast.blockSize; ++u) {
            std::array<int, 3> at{};
            at[m_fast] = from[m_fast].block * fast.blockSize + u;
            at[m_slow] = from[m_slow].block * slow.blockSize + v;
            at[m_slice.axis] = base + along.first;
            const double first = texel(at, channel);
            at[m_slice.axis] = base + along.second;
            const double second = texel(at, channel);
            plane.texels[static_cast<std::size_t>(corner + v * fast.padded + u)] =
                first + (second - first) * along.share;
        }
    }
}

/// A texel of the padded stack, 0 to 1 of what it can hold: the voxel there, or 0 in the padding.
double Compositor::texel(std::array<int, 3> at, int channel) const
{
    for (unsigned i = 0; i < 3; ++i) {
        at[i] -= axis(i).padding;
        if (at[i] < 0 || at[i] >= axis(i).size)
            return 0;
    }
    return m_stack.at(at[0], at[1], at[2], channel) / (m_stack.bits > 8 ? 65535.0 : 255.0);
}

void Compositor::drawSlice(const Plane& plane, const ColourTable& table)
{
    const double stretch = m_stack.bits > 8 && m_stack.bits <= 12 ? 16 : 1;
    const int columnStride = stride(m_column.axis);
    const int rowStride = stride(m_row.axis);
    const auto rows = tapsAlong(m_row, m_axes, m_view, bounds(m_row.axis), true);
    const auto columns = tapsAlong(m_column, m_axes, m_view, bounds(m_column.axis), false);
    for (std::size_t pixel = 0; pixel < m_picture.covered.size(); ++pixel) {
        const std::optional<Tap>& row = rows[pixel / static_cast<std::size_t>(m_view.size)];
        const std::optional<Tap>& column = columns[pixel % static_cast<std::size_t>(m_view.size)];
        if (!row || !column)
            continue;
        const bool columnsAreFast = m_column.axis == m_fast;
        const int quad = columnsAreFast ? row->block * axis(m_fast).blocks + column->block
                                        : column->block * axis(m_fast).blocks + row->block;
        if (!plane.drawn[static_cast<unsigned>(quad)])
            continue;
        const int corner = row->block * axis(m_row.axis).blockSize * rowStride +
                           column->block * axis(m_column.axis).blockSize * columnStride;
        const auto along = [&](int rowTexel) {
            const double* texels = plane.texels.data() + corner + rowTexel * rowStride;
            const double first = texels[column->first * columnStride];
            return first + (texels[column->second * columnStride] - first) * column->share;
        };
        const double upper = along(row->first);
        const double value = upper + (along(row->second) - upper) * row->share;
        blend(pixel, lookUp(table, std::min(1.0, value * stretch)));
    }
}

void Compositor::blend(std::size_t pixel, const std::array<double, 4>& colour)
{
    const double alpha = colour[3];
    if (alpha <= 0)
        return;
    m_picture.covered[pixel] = true;
    for (unsigned i = 0; i < 3; ++i) {
        std::uint8_t& stored = m_picture.rgb[3 * pixel + i];
        const double old = stored / 255.0;
        const double mixed = m_view.blending == Blending::Maximum ? std::max(old, colour[i])
                                                                  : colour[i] * alpha + old * (1 - alpha);
        stored = static_cast<std::uint8_t>(std::floor(mixed * 255 + 0.5));
    }
}

} // namespace

ColourTable rampTable(int entries, const std::array<double, 3>& colour, double opacity)
{
    ColourTable table;
    for (int i = 0; i < entries; ++i) {
        const double share = 255.0 * i / (entries - 1);
        for (const double part : {colour[0], colour[1], colour[2], opacity})
            table.push_back(static_cast<std::uint8_t>(std::floor(part * share + 0.5)));
    }
    return table;
}

std::array<int, 3> Picture::pixel(int column, int row) const
{
    const auto at = 3 * (static_cast<std::size_t>(row) * static_cast<std::size_t>(size) +
                         static_cast<std::size_t>(column));
    return {rgb.at(at), rgb.at(at + 1), rgb.at(at + 2)};
}

std::array<std::array<int, 3>, 6> axisRotations()
{
    return {{{0, 0, 0}, {0, 180, 0}, {0, 270, 0}, {0, 90, 0}, {90, 0, 0}, {270, 0, 0}}};
}

int orientationOf(const CompositorView& view)
{
    constexpr std::array<int, 3> viewedFromAbove = {2, 4, 0};
    const Facing toViewer = facing(rotationMatrix(view.rotation), 2);
    return viewedFromAbove[toViewer.axis] + (toViewer.sign > 0 ? 0 : 1);
}

int slicingAxisOf(const CompositorView& view)
{
    return static_cast<int>(facing(rotationMatrix(view.rotation), 2).axis);
}

int nearVoxelOf(const CompositorView& view, const PlainStack& stack)
{
    const Facing toViewer = facing(rotationMatrix(view.rotation), 2);
    const bool lastIsNear = (toViewer.axis == 0) == (toViewer.sign > 0);
    return lastIsNear ? stack.size(static_cast<int>(toViewer.axis)) - 2 : 1;
}

Picture compose(const PlainStack& stack, const std::vector<ColourTable>& tables, const CompositorView& view)
{
    return Compositor(stack, tables, view).draw();
}

} // namespace tirn::test
