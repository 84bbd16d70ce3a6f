#include "volume/seenvoxel.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "scene/viewstate.h"

namespace tirn {
namespace {

using test::ColourTable;
using test::PlainStack;
using Point = std::array<double, 3>;

/// A table in which an entry has the opacity, and the brightness, that a function says.
ColourTable tableOf(
    const std::function<int(int)>& opacity,
    const std::function<int(int)>& brightness = [](int entry) { return entry; })
{
    ColourTable table;
    for (int entry = 0; entry < 256; ++entry) {
        const auto colour = static_cast<std::uint8_t>(brightness(entry));
        table.insert(table.end(), {colour, colour, colour, static_cast<std::uint8_t>(opacity(entry))});
    }
    return table;
}

ColourTable rampTable()
{
    return tableOf([](int entry) { return entry; });
}

/// A stack in a picture, and what is seen of it.
struct Shown
{
    PlainStack stack;
    std::vector<ColourTable> tables;
    bool is3D = false;
    int blockLimit = 1024;
    bool isMaximum = false;
    CutBox cut = {0, stack.x - 1, 0, stack.y - 1, 0, stack.z - 1};
    mutable std::shared_ptr<ImageFile> image = nullptr;

    SeenVolume volume(Orientation orientation) const
    {
        SeenVolume seen{StackGeometry::of(stack.x, stack.y, stack.z, blockLimit), is3D, orientation, cut,
                        isMaximum};
        image = test::imageOf(stack);
        for (std::size_t c = 0; c < tables.size(); ++c)
            seen.channels.push_back({image.get(), static_cast<int>(c), tables[c],
                                     stretchExponent(stack.bits, stack.bits, false)});
        return seen;
    }
};

/// Straight along z from the front, at a place from 0 to 1 of the picture's width and height from the upper
/// left.
std::optional<VoxelPlace> seenFromFront(const Shown& shown, double x, double y)
{
    return seenVoxel(shown.volume(Orientation::XYForward), {x * 2 - 1, 1 - y * 2, 5}, {0, 0, -1});
}

/// Voxels along z at x = y = 0 with these values; all else is 0.
Shown column(const std::vector<int>& values, const ColourTable& table)
{
    Shown shown{PlainStack::blank(4, 4, static_cast<int>(values.size())), {table}};
    for (std::size_t z = 0; z < values.size(); ++z)
        shown.stack.at(0, 0, static_cast<int>(z)) = static_cast<std::uint16_t>(values[z]);
    return shown;
}

TEST(SeenVoxel, IsTheOneAtThePlace)
{
    Shown shown{test::denseStack(4, 4, 4), {tableOf([](int) { return 255; })}};
    EXPECT_EQ(seenFromFront(shown, 0.1, 0.1), (VoxelPlace{0, 0, 0}));
    EXPECT_EQ(seenFromFront(shown, 0.9, 0.1), (VoxelPlace{3, 0, 0}));
    EXPECT_EQ(seenFromFront(shown, 0.1, 0.6), (VoxelPlace{0, 2, 0}));
    EXPECT_FALSE(seenFromFront(shown, 1.1, 0.5));
    EXPECT_FALSE(seenFromFront(shown, 0.5, -0.1));
}

TEST(SeenVoxel, IsWhereTheOpacityPassesOneHalf)
{
    // 100 / 255 = 0.39, twice 0.63.
    EXPECT_EQ(seenFromFront(column({0, 100, 0, 100}, rampTable()), 0.1, 0.1), (VoxelPlace{0, 0, 3}));
    EXPECT_EQ(seenFromFront(column({0, 0, 128, 255}, rampTable()), 0.1, 0.1), (VoxelPlace{0, 0, 2}));
}

TEST(SeenVoxel, IsTheStrongestContributionWhereNothingIsOpaque)
{
    EXPECT_EQ(seenFromFront(column({20, 50, 30, 10}, rampTable()), 0.1, 0.1), (VoxelPlace{0, 0, 1}));
    // 40 behind 30: 0.157 * (1 - 0.118) = 0.138.
    EXPECT_EQ(seenFromFront(column({30, 40, 0, 0}, rampTable()), 0.1, 0.1), (VoxelPlace{0, 0, 1}));
    // 32 behind 30: 0.125 * 0.882 = 0.111, less than 0.118.
    EXPECT_EQ(seenFromFront(column({30, 32, 0, 0}, rampTable()), 0.1, 0.1), (VoxelPlace{0, 0, 0}));
    EXPECT_FALSE(seenFromFront(column({0, 0, 0, 0}, rampTable()), 0.1, 0.1));
}

TEST(SeenVoxel, IsTheBrightestInAMaximumAndOfEqualOnesTheNearest)
{
    Shown shown = column({50, 90, 90, 20}, rampTable());
    shown.isMaximum = true;
    EXPECT_EQ(seenFromFront(shown, 0.1, 0.1), (VoxelPlace{0, 0, 1}));
    // What has no opacity is not drawn, however bright.
    shown.tables = {tableOf([](int entry) { return entry == 90 ? 0 : 255; })};
    EXPECT_EQ(seenFromFront(shown, 0.1, 0.1), (VoxelPlace{0, 0, 0}));
    shown.tables = {tableOf([](int) { return 255; }, [](int entry) { return 255 - entry; })};
    EXPECT_EQ(seenFromFront(shown, 0.1, 0.1), (VoxelPlace{0, 0, 3}));
}

TEST(SeenVoxel, ChannelsOfASliceAddUp)
{
    Shown shown{PlainStack::blank(2, 2, 3, 2), {rampTable(), rampTable()}};
    shown.stack.at(0, 0, 1, 0) = 80;
    shown.stack.at(0, 0, 1, 1) = 80;
    shown.stack.at(0, 0, 2, 0) = 120;
    // 1 - 0.686 ^ 2 = 0.53.
    EXPECT_EQ(seenFromFront(shown, 0.3, 0.3), (VoxelPlace{0, 0, 1}));
    shown.stack.at(0, 0, 1, 1) = 0;
    EXPECT_EQ(seenFromFront(shown, 0.3, 0.3), (VoxelPlace{0, 0, 2}));
}

TEST(SeenVoxel, IsInsideTheCut)
{
    Shown shown{test::denseStack(4, 4, 4), {tableOf([](int) { return 255; })}};
    shown.cut = {1, 3, 0, 2, 2, 3};
    EXPECT_EQ(seenFromFront(shown, 0.4, 0.4), (VoxelPlace{1, 1, 2}));
    EXPECT_FALSE(seenFromFront(shown, 0.05, 0.4));
    EXPECT_FALSE(seenFromFront(shown, 0.4, 0.95));
}

TEST(SeenVoxel, IsTheFirstOneWithoutChannels)
{
    Shown shown{test::denseStack(8, 8, 5), {}};
    shown.cut.zMin = 2;
    EXPECT_EQ(seenFromFront(shown, 0.3, 0.3), (VoxelPlace{2, 2, 2}));
}

TEST(SeenVoxel, IsNoPaddingThatHidesWhatIsBehind)
{
    // Five voxels in eight: one before them, two behind.
    Shown shown{test::denseStack(8, 8, 5), {tableOf([](int) { return 255; })}};
    const SeenVolume volume = shown.volume(Orientation::XZForward);
    // The depth spans 5/8 of the picture, and is seen from above.
    EXPECT_EQ(seenVoxel(volume, {0.1, 5, -0.4}, {0, -1, 0})->z, 4);
    EXPECT_FALSE(seenVoxel(volume, {0.1, 5, -0.6}, {0, -1, 0}));
}

TEST(SeenVoxel, SamplesAreStretchedAsTheyAreDrawn)
{
    EXPECT_EQ(stretchExponent(8, 8, true), 0);
    EXPECT_EQ(stretchExponent(10, 10, false), 4);
    EXPECT_EQ(stretchExponent(12, 12, false), 4);
    EXPECT_EQ(stretchExponent(16, 12, false), 0);
    EXPECT_EQ(stretchExponent(16, 8, true), 8);
    EXPECT_EQ(stretchExponent(10, 10, true), 6);
    EXPECT_EQ(stretchExponent(16, 17, true), 0);
    Shown shown{PlainStack::blank(2, 2, 2, 1, 12),
                {tableOf([](int entry) { return entry >= 128 ? 255 : 0; })}};
    shown.stack.at(0, 0, 0) = 2000;
    shown.stack.at(0, 0, 1) = 2100;
    EXPECT_EQ(seenFromFront(shown, 0.3, 0.3), (VoxelPlace{0, 0, 1}));
}

TEST(SeenVoxel, ACurveMakesWhatLiesDeepBrighter)
{
    const Shown shown = column({100, 90, 80, 70}, rampTable());
    SeenVolume volume = shown.volume(Orientation::XYForward);
    volume.isMaximum = true;
    volume.channels[0].curve = {1, 1, 1.5, 1};
    EXPECT_EQ(seenVoxel(volume, {-0.9, 0.9, 5}, {0, 0, -1}), (VoxelPlace{0, 0, 2}));
}

/// The same by a search: every texel of every slice is asked whether the line passes through it.
class SlowSight
{
public:
    SlowSight(const Shown& shown, int axis, const Point& from, const Point& direction)
        : m_shown(shown), m_axis(axis), m_from(from), m_direction(direction)
    {
        for (int i = 0; i < shown.stack.size(axis); ++i)
            searchSlice(i);
        std::sort(m_hits.begin(), m_hits.end(),
                  [](const Hit& a, const Hit& b) { return a.distance < b.distance; });
    }

    std::optional<VoxelPlace> seen() const
    {
        const Hit* best = nullptr;
        double most = 0;
        double left = 1;
        for (const Hit& hit : m_hits) {
            const double share = m_shown.isMaximum ? brightness(hit) : left * opacity(hit);
            if (share > most) {
                most = share;
                best = &hit;
            }
            left *= 1 - opacity(hit);
            if (!m_shown.isMaximum && 1 - left > 0.5) {
                best = &hit;
                break;
            }
        }
        if (best == nullptr || !isVoxel(*best))
            return std::nullopt;
        return VoxelPlace{best->voxel[0], best->voxel[1], best->voxel[2]};
    }

private:
    struct Hit
    {
        double distance;
        std::array<int, 3> voxel;
    };

    static int padded(int size)
    {
        int power = 1;
        while (power < size)
            power *= 2;
        return power;
    }
    double longest() const
    {
        return std::max({padded(m_shown.stack.x), padded(m_shown.stack.y), padded(m_shown.stack.z)});
    }
    /// Where slice i of an axis lies; those along x are counted from the last voxel.
    double slicePosition(int i, int axis) const
    {
        const int size = m_shown.stack.size(axis);
        return (0.996 - 1.992 / (size - 1) * i) * size / longest();
    }
    /// The slice, or the voxel, at a number counted the other way along x.
    int counted(int i, int axis) const { return axis == 0 ? m_shown.stack.x - 1 - i : i; }
    std::array<int, 2> cutOf(int axis) const
    {
        const CutBox& cut = m_shown.cut;
        return axis == 0   ? std::array{cut.xMin, cut.xMax}
               : axis == 1 ? std::array{cut.yMin, cut.yMax}
                           : std::array{cut.zMin, cut.zMax};
    }
    /// From the lower to the upper edge of a texel in space; numbers below 0 are padding.
    std::array<double, 2> edges(int voxel, int axis) const
    {
        const int size = m_shown.stack.size(axis);
        const double half = padded(size) / longest();
        const double texel = voxel + (padded(size) - size) / 2;
        const double low = -half + 2 * half * texel / padded(size);
        const double high = -half + 2 * half * (texel + 1) / padded(size);
        return axis == 0 ? std::array{low, high} : std::array{-high, -low};
    }
    bool isKept(double position, int axis) const
    {
        const auto [first, last] = cutOf(axis);
        const int size = m_shown.stack.size(axis);
        const double one = slicePosition(counted(first, axis), axis);
        const double other = slicePosition(counted(last, axis), axis);
        const bool belowFirst = first > 0 && (axis == 0 ? position < one - 0.004 : position > one + 0.004);
        const bool beyondLast =
            last < size - 1 && (axis == 0 ? position > other + 0.004 : position < other - 0.004);
        return !belowFirst && !beyondLast;
    }
    void searchSlice(int i)
    {
        const auto number = static_cast<std::size_t>(m_axis);
        const int voxel = counted(i, m_axis);
        const auto [first, last] = cutOf(m_axis);
        if (voxel < first || voxel > last)
            return;
        const double distance = (slicePosition(i, m_axis) - m_from[number]) / m_direction[number];
        std::array<int, 3> at = {};
        at[number] = voxel;
        const int u = (m_axis + 1) % 3;
        const int v = (m_axis + 2) % 3;
        for (int a = -m_shown.stack.size(u); a < 2 * m_shown.stack.size(u); ++a) {
            for (int b = -m_shown.stack.size(v); b < 2 * m_shown.stack.size(v); ++b) {
                at[static_cast<std::size_t>(u)] = a;
                at[static_cast<std::size_t>(v)] = b;
                if (isThrough(distance, a, u) && isThrough(distance, b, v))
                    m_hits.push_back({distance, at});
            }
        }
    }
    bool isThrough(double distance, int voxel, int axis) const
    {
        const int size = m_shown.stack.size(axis);
        const int padding = (padded(size) - size) / 2;
        if (voxel < -padding || voxel >= padded(size) - padding)
            return false;
        const auto number = static_cast<std::size_t>(axis);
        const double position = m_from[number] + distance * m_direction[number];
        const auto [low, high] = edges(voxel, axis);
        return position >= low && position < high && isKept(position, axis);
    }
    bool isVoxel(const Hit& hit) const
    {
        for (int axis = 0; axis < 3; ++axis) {
            const int voxel = hit.voxel[static_cast<std::size_t>(axis)];
            if (voxel < 0 || voxel >= m_shown.stack.size(axis))
                return false;
        }
        return true;
    }
    std::size_t entry(const Hit& hit, std::size_t channel) const
    {
        if (!isVoxel(hit))
            return 0;
        const auto [x, y, z] = hit.voxel;
        const int sample = m_shown.stack.at(x, y, z, static_cast<int>(channel));
        // A byte is its entry; 16 bits are spread over the entries.
        return m_shown.stack.bits == 8
                   ? static_cast<std::size_t>(sample)
                   : std::min<std::size_t>(255, static_cast<std::size_t>(sample * 256.0 / 65535));
    }
    double opacity(const Hit& hit) const
    {
        double left = 1;
        for (std::size_t c = 0; c < m_shown.tables.size(); ++c)
            left *= 1 - m_shown.tables[c][4 * entry(hit, c) + 3] / 255.0;
        return 1 - left;
    }
    double brightness(const Hit& hit) const
    {
        double most = 0;
        for (std::size_t c = 0; c < m_shown.tables.size(); ++c) {
            const std::uint8_t* colour = &m_shown.tables[c][4 * entry(hit, c)];
            if (colour[3] > 0)
                most = std::max<double>(most, colour[0] + colour[1] + colour[2]);
        }
        return most;
    }

    const Shown& m_shown;
    int m_axis;
    Point m_from;
    Point m_direction;
    std::vector<Hit> m_hits;
};

/// A point of the viewer's space in that of the volume.
Point turnedBack(const Matrix4f& rotation, const Point& seen, const Point& scale)
{
    Point point;
    for (std::size_t axis = 0; axis < 3; ++axis)
        point[axis] = (static_cast<double>(rotation[4 * axis]) * seen[0] +
                       static_cast<double>(rotation[4 * axis + 1]) * seen[1] +
                       static_cast<double>(rotation[4 * axis + 2]) * seen[2]) /
                      scale[axis];
    return point;
}

void compareWithSearch(const Shown& shown, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> angle(0, 360);
    std::uniform_real_distribution<double> place(-0.9, 0.9);
    int found = 0;
    for (int i = 0; i < 60; ++i) {
        const Matrix4f rotation = rotationMatrix(angle(random), angle(random), angle(random));
        const Point scale = {1, 0.8, 1.3};
        const Orientation orientation = orientationOf(rotation);
        const int axis = std::array{2, 2, 0, 0, 1, 1}[static_cast<std::size_t>(orientation)];
        const SeenVolume volume = shown.volume(orientation);
        for (int k = 0; k < 8; ++k) {
            const Point from = turnedBack(rotation, {place(random), place(random), 5}, scale);
            const Point direction = turnedBack(rotation, {0, 0, -1}, scale);
            const auto seen = seenVoxel(volume, from, direction);
            EXPECT_EQ(seen, SlowSight(shown, axis, from, direction).seen()) << "pose " << i << " line " << k;
            found += seen.has_value();
        }
    }
    EXPECT_GT(found, 150);
}

TEST(SeenVoxelSearch, FindsTheSameInAlpha)
{
    compareWithSearch({test::denseStack(11, 8, 13, 2),
                       {test::rampTable(256, {1, 0, 0}, 0.3), test::rampTable(256, {0, 1, 1}, 0.2)}},
                      1);
}

TEST(SeenVoxelSearch, FindsTheSameWhereLittleIsOpaque)
{
    compareWithSearch({test::denseStack(11, 8, 13), {test::rampTable(256, {1, 1, 1}, 0.05)}}, 2);
}

TEST(SeenVoxelSearch, FindsTheSameInAMaximum)
{
    Shown shown{test::denseStack(9, 12, 10, 2, 16),
                {test::rampTable(256, {1, 0, 0}, 0.3), test::rampTable(256, {0, 1, 1}, 0.2)}};
    shown.isMaximum = true;
    compareWithSearch(shown, 3);
}

TEST(SeenVoxelSearch, FindsTheSameInACut)
{
    Shown shown{test::denseStack(11, 8, 13), {test::rampTable(256, {1, 1, 1}, 0.4)}};
    shown.cut = {2, 9, 1, 6, 0, 8};
    compareWithSearch(shown, 4);
}

TEST(SeenVoxelSearch, FindsTheSameInBlocks)
{
    Shown shown{test::denseStack(11, 8, 13), {test::rampTable(256, {1, 1, 1}, 0.4)}};
    shown.blockLimit = 4;
    compareWithSearch(shown, 5);
}

TEST(SeenVoxelSearch, FindsTheSameInAVolumeTexture)
{
    // Sizes that fill their textures: there each slice shows the layer of its number.
    Shown shown{test::denseStack(8, 16, 8), {test::rampTable(256, {1, 1, 1}, 0.3)}};
    shown.is3D = true;
    compareWithSearch(shown, 6);
}

TEST(SeenVoxel, TheMiddleOfAVoxelIsWhereItIsSeen)
{
    const StackGeometry geometry = StackGeometry::of(4, 3, 8, 1024);
    // 8 is the longest side; three voxels stand behind no padding of four.
    EXPECT_EQ(voxelCentre(geometry, {0, 0, 0}), (Point{-0.375, 0.375, 0.875}));
    EXPECT_EQ(voxelCentre(geometry, {3, 2, 7}), (Point{0.375, -0.125, -0.875}));
}

TEST(SeenVoxel, OfNothingIsNothing)
{
    EXPECT_FALSE(seenVoxel(SeenVolume(), {0, 0, 5}, {0, 0, -1}));
    Shown shown{test::denseStack(4, 4, 4), {rampTable()}};
    EXPECT_FALSE(seenVoxel(shown.volume(Orientation::XYForward), {0, 0, 5}, {0, 0, 0}));
    EXPECT_FALSE(seenVoxel(shown.volume(Orientation::XYForward), {0, 0, 5}, {std::nan(""), 0, -1}));
    EXPECT_FALSE(seenVoxel(shown.volume(Orientation::XYForward), {0, 0, -5}, {0, 0, -1})) << "behind the eye";
}

} // namespace
} // namespace tirn
