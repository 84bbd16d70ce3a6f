#include "volume/seenvoxel.h"

#include <algorithm>
#include <cmath>

namespace tirn {

namespace {

using Point = std::array<double, 3>;

/// One axis of a padded, blocked stack.
struct Axis
{
    int size = 1;
    int padded = 1;
    int padding = 0;
    int blocks = 1;
    double half = 1;
    /// Voxels rise with x, and fall with y and z.
    bool rises = false;

    int blockSize() const { return padded / blocks; }
    /// From 0 to 1 in the direction of the voxels, over the padded length.
    double along(double position) const { return ((rises ? position : -position) + half) / (2 * half); }
    double positionOf(double along) const { return (rises ? 1 : -1) * (along * 2 - 1) * half; }
};

std::array<Axis, 3> axesOf(const StackGeometry& g)
{
    const double longest = g.maxPow();
    return {Axis{g.x, g.powX, g.padX(), g.xBlocks, g.powX / longest, true},
            Axis{g.y, g.powY, g.padY(), g.yBlocks, g.powY / longest, false},
            Axis{g.z, g.powZ, g.padZ(), g.zBlocks, g.powZ / longest, false}};
}

/// Texel `texel` of a block, counted over the padded axis; a coordinate at the far edge is the last one's.
int texelOf(double inBlock, int block, const Axis& axis)
{
    const int texel = static_cast<int>(inBlock * axis.blockSize());
    return block * axis.blockSize() + std::clamp(texel, 0, axis.blockSize() - 1);
}

/// What a slice shows in the line of sight: a voxel, or a texel of the padding.
struct Crossing
{
    std::array<int, 3> voxel;
    bool isData = false;
};

/// The slices of a frame, met by one line.
class Sight
{
public:
    Sight(const SeenVolume& volume, const Point& from, const Point& direction)
        : m_volume(volume), m_from(from), m_direction(direction), m_axes(axesOf(volume.geometry)),
          m_planes(clipPlanes(volume.orientation, volume.geometry, volume.cut)),
          m_walk(renderListParameters(volume.orientation, volume.geometry, volume.cut)),
          m_axis(sliceAxis(volume.orientation)), m_fast(m_axis == 0 ? 1 : 0), m_slow(m_axis == 2 ? 1 : 2)
    {}

    /// Calls `take` for each slice that is met, from the nearest on, until it returns false.
    template <class Take>
    void walk(const Take& take) const
    {
        if (m_direction[m_axis] == 0)
            return;
        // Slices are drawn from the far end.
        for (int i = m_walk.last; i != m_walk.first - m_walk.step; i -= m_walk.step) {
            const std::optional<Crossing> crossing = cross(i);
            if (crossing && !take(*crossing))
                return;
        }
    }

private:
    static std::size_t sliceAxis(Orientation orientation)
    {
        const bool isX = orientation == Orientation::YZForward || orientation == Orientation::YZReverse;
        const bool isY = orientation == Orientation::XZForward || orientation == Orientation::XZReverse;
        return isX ? 0 : isY ? 1 : 2;
    }

    std::optional<Crossing> cross(int slice) const
    {
        const double position = quadPosition(m_volume.geometry, slice, static_cast<int>(m_axis));
        const double reach = (position - m_from[m_axis]) / m_direction[m_axis];
        if (!(reach >= 0))
            return std::nullopt;
        Point at;
        for (std::size_t axis = 0; axis < 3; ++axis)
            at[axis] = m_from[axis] + reach * m_direction[axis];
        at[m_axis] = position;
        const double fast = m_axes[m_fast].along(at[m_fast]);
        const double slow = m_axes[m_slow].along(at[m_slow]);
        if (!(fast >= 0 && fast < 1 && slow >= 0 && slow < 1) || isCutOff(at))
            return std::nullopt;
        const std::optional<std::array<int, 3>> texel = texelAt(slice, fast, slow);
        return texel ? std::optional(crossingOf(*texel)) : std::nullopt;
    }

    bool isCutOff(const Point& at) const
    {
        return std::any_of(m_planes.begin(), m_planes.end(), [&](const ClipPlane& plane) {
            const auto& [a, b, c, d] = plane.equation;
            return plane.enabled && a * at[0] + b * at[1] + c * at[2] + d < 0;
        });
    }

    /// The texel of the padded stack that a slice shows at a place in it; nothing where the slice has no
    /// texture there.
    std::optional<std::array<int, 3>> texelAt(int slice, double fast, double slow) const
    {
        const double fastBlocks = fast * m_axes[m_fast].blocks;
        const double slowBlocks = slow * m_axes[m_slow].blocks;
        std::array<int, 3> block = {};
        block[m_fast] = static_cast<int>(fastBlocks);
        block[m_slow] = static_cast<int>(slowBlocks);
        std::array<int, 3> texel = {};
        if (m_volume.is3D) {
            const int quad = block[m_slow] * m_axes[m_fast].blocks + block[m_fast];
            const int brick = brickOf(m_volume.orientation, m_volume.geometry, slice, quad);
            if (brick < 0 || brick >= m_volume.geometry.blocks())
                return std::nullopt;
            const auto [x, y, z] = std::array{m_axes[0].blocks, m_axes[1].blocks, m_axes[2].blocks};
            const std::array<int, 3> shown = {brick % x, brick / x % y, brick / (x * y)};
            texel[m_axis] = texelOf(sliceCoordinate(slice), shown[m_axis], m_axes[m_axis]);
            texel[m_fast] = texelOf(fastBlocks - block[m_fast], shown[m_fast], m_axes[m_fast]);
            texel[m_slow] = texelOf(slowBlocks - block[m_slow], shown[m_slow], m_axes[m_slow]);
            return texel;
        }
        texel[m_axis] = m_axes[m_axis].padding + (m_axis == 0 ? m_volume.geometry.x - 1 - slice : slice);
        texel[m_fast] = texelOf(fastBlocks - block[m_fast], block[m_fast], m_axes[m_fast]);
        texel[m_slow] = texelOf(slowBlocks - block[m_slow], block[m_slow], m_axes[m_slow]);
        return texel;
    }

    /// From 0 to 1 along the texture, in the direction of the voxels: rows along y lie upside down.
    double sliceCoordinate(int slice) const
    {
        const double coordinate = texCoord(m_volume.geometry, slice, static_cast<int>(m_axis));
        return m_axis == 1 ? 1 - coordinate : coordinate;
    }

    Crossing crossingOf(const std::array<int, 3>& texel) const
    {
        Crossing crossing{{}, true};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            crossing.voxel[axis] = texel[axis] - m_axes[axis].padding;
            crossing.isData =
                crossing.isData && crossing.voxel[axis] >= 0 && crossing.voxel[axis] < m_axes[axis].size;
        }
        return crossing;
    }

    const SeenVolume& m_volume;
    Point m_from;
    Point m_direction;
    std::array<Axis, 3> m_axes;
    std::array<ClipPlane, 6> m_planes;
    SliceWalk m_walk;
    std::size_t m_axis;
    std::size_t m_fast;
    std::size_t m_slow;
};

/// The entry of the palette that a channel shows at a crossing; null without a palette.
const std::uint8_t* entryOf(const SeenChannel& channel, const Crossing& crossing)
{
    const std::size_t entries = channel.table.size() / 4;
    if (entries == 0)
        return nullptr;
    const auto [x, y, z] = crossing.voxel;
    const int sample = crossing.isData ? channel.image->voxelValue(x, y, z, channel.channel) : 0;
    double value = sample / (channel.image->attributes().hasWords() ? 65535.0 : 255.0);
    if (static_cast<std::size_t>(z) < channel.curve.size() && crossing.isData)
        value = std::min(1.0, value * channel.curve[static_cast<std::size_t>(z)]);
    value = std::clamp(value * (1 << channel.stretch), 0.0, 1.0);
    const auto entry = static_cast<std::size_t>(value * static_cast<double>(entries));
    return channel.table.data() + 4 * std::min(entry, entries - 1);
}

double opacityOf(const SeenVolume& volume, const Crossing& crossing)
{
    double transparency = 1;
    for (const SeenChannel& channel : volume.channels) {
        if (const std::uint8_t* entry = entryOf(channel, crossing))
            transparency *= 1 - entry[3] / 255.0;
    }
    return 1 - transparency;
}

int brightnessOf(const SeenVolume& volume, const Crossing& crossing)
{
    int brightest = 0;
    for (const SeenChannel& channel : volume.channels) {
        const std::uint8_t* entry = entryOf(channel, crossing);
        // What has no opacity at all is not drawn.
        if (entry != nullptr && entry[3] > 0)
            brightest = std::max(brightest, entry[0] + entry[1] + entry[2]);
    }
    return brightest;
}

/// The crossing that shows most so far.
struct Best
{
    Crossing crossing;
    double share = 0;

    void offer(const Crossing& other, double otherShare)
    {
        if (otherShare > share)
            *this = {other, otherShare};
    }
};

Best firstVoxel(const Sight& sight)
{
    Best best;
    sight.walk([&](const Crossing& crossing) {
        best.offer(crossing, crossing.isData ? 1 : 0);
        return !crossing.isData;
    });
    return best;
}

Best brightestVoxel(const Sight& sight, const SeenVolume& volume)
{
    Best best;
    sight.walk([&](const Crossing& crossing) {
        best.offer(crossing, brightnessOf(volume, crossing));
        return true;
    });
    return best;
}

Best mostOpaqueVoxel(const Sight& sight, const SeenVolume& volume)
{
    Best best;
    double transparency = 1;
    sight.walk([&](const Crossing& crossing) {
        const double opacity = opacityOf(volume, crossing);
        best.offer(crossing, transparency * opacity);
        transparency *= 1 - opacity;
        const bool isHidden = transparency < 0.5;
        if (isHidden)
            best = {crossing, 1};
        return !isHidden;
    });
    return best;
}

} // namespace

Point voxelCentre(const StackGeometry& geometry, const VoxelPlace& voxel)
{
    const std::array<Axis, 3> axes = axesOf(geometry);
    const std::array<int, 3> numbers = {voxel.x, voxel.y, voxel.z};
    Point centre;
    for (std::size_t i = 0; i < 3; ++i)
        centre[i] = axes[i].positionOf((numbers[i] + axes[i].padding + 0.5) / axes[i].padded);
    return centre;
}

int stretchExponent(int bitsPerSample, int significantBits, bool usesSignificantBits)
{
    if (bitsPerSample <= 8)
        return 0;
    if (usesSignificantBits)
        return std::max(0, 16 - significantBits);
    return bitsPerSample <= 12 ? 4 : 0;
}

std::optional<VoxelPlace> seenVoxel(const SeenVolume& volume, const Point& from, const Point& direction)
{
    if (!volume.geometry.isValid() || volume.orientation == Orientation::Current)
        return std::nullopt;
    const Sight sight(volume, from, direction);
    const Best best = volume.channels.empty() ? firstVoxel(sight)
                      : volume.isMaximum      ? brightestVoxel(sight, volume)
                                              : mostOpaqueVoxel(sight, volume);
    if (best.share <= 0 || !best.crossing.isData)
        return std::nullopt;
    const auto [x, y, z] = best.crossing.voxel;
    return VoxelPlace{x, y, z};
}

} // namespace tirn
