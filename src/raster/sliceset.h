#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tirn {

/// One channel of a stack in memory: samples interleaved by `channels`, x fastest, then y, then z; bytes or
/// words.
struct VoxelSource
{
    const void* samples = nullptr;
    int bytesPerSample = 1;
    int channels = 1;
    int channel = 0;
    /// Voxels along x, y and z.
    std::array<int, 3> size = {};
};

/// The least and the largest value of a part of a plane.
struct ValueRange
{
    int least = 0;
    int most = 0;

    bool operator==(const ValueRange&) const = default;
};
/// The range that holds both.
ValueRange joined(const ValueRange& a, const ValueRange& b);

/// A box of texels, inclusive; it may reach beyond its plane.
struct TexelBox
{
    int u0 = 0;
    int v0 = 0;
    int u1 = 0;
    int v1 = 0;
};

/// One channel cut into planes across an axis (0 x, 1 y, 2 z), with grids of smallest and largest values.
///
/// Plane k shows voxel k of the axis. Its columns u are voxels along x, its rows v voxels along the third
/// axis; planes across x have columns along z and rows along y. Around each plane lies a border of one texel
/// of value 0. What lies up to 2 rows before and 16 rows behind a plane may be read, too.
class SliceSet
{
public:
    /// Throws std::bad_alloc.
    SliceSet(const VoxelSource& source, int axis);

    int axis() const { return m_axis; }
    int planes() const { return m_planes; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    int bytesPerSample() const { return m_bytes; }
    /// From one row to the next, in samples.
    int stride() const { return m_stride; }
    /// Texel (0, 0) of plane k.
    const std::uint8_t* plane(int k) const
    {
        return m_texels.data() + (static_cast<std::size_t>(k) * m_planeTexels + cornerOffset()) * bytes();
    }
    /// The values in a box of plane k; what lies outside of the plane is 0. A range may hold more than the
    /// box has, by what lies in the same cells.
    ValueRange range(int k, const TexelBox& box) const;
    /// The values of all of plane k.
    const ValueRange& range(int k) const { return m_ranges[static_cast<std::size_t>(k)]; }
    /// Bytes of texels and grids.
    std::size_t memoryUsed() const;

private:
    /// Cells of 1 << shift texels a side, each the least and the largest value of itself and its neighbours
    /// to the right and below.
    struct Grid
    {
        int shift = 2;
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> cells;
    };

    static constexpr int kRowsBefore = 2;
    static constexpr int kRowsBehind = 16;

    std::size_t bytes() const { return static_cast<std::size_t>(m_bytes); }
    /// Texel (0, 0) of the first plane, behind rows that may be read and its border.
    std::size_t cornerOffset() const
    {
        return std::size_t{kRowsBefore + 1} * static_cast<std::size_t>(m_stride) + 1;
    }
    template <typename T>
    void fill(const VoxelSource& source);
    template <typename T>
    void fillAcrossX(const VoxelSource& source);
    template <typename T>
    static T* cellsOf(Grid& grid, int k);
    template <typename T>
    void makeGrids(int k);
    template <typename T>
    void findCells(const T* texels, T* cells) const;
    template <typename T>
    static void joinCells(const Grid& fine, const T* from, const Grid& coarse, T* to);
    template <typename T>
    static void spreadCells(const Grid& grid, T* cells);
    template <typename T>
    ValueRange rangeOf(const Grid& grid, int k, const TexelBox& box) const;

    int m_axis;
    int m_bytes;
    int m_planes;
    int m_width;
    int m_height;
    int m_stride;
    std::size_t m_planeTexels;
    std::vector<std::uint8_t> m_texels;
    Grid m_fine;
    Grid m_coarse;
    std::vector<ValueRange> m_ranges;
};

} // namespace tirn
