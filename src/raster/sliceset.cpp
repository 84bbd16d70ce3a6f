#include "raster/sliceset.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/parallel.h"

namespace tirn {

namespace {

constexpr int kFineShift = 2;
constexpr int kCoarseShift = 4;
/// Boxes with more texels a side than this are looked up in the coarse grid.
constexpr int kMostFineTexels = 20;
/// Planes across x that are filled together, since their samples share cache lines.
constexpr int kPlanesAtOnce = 64;

int columnsAxis(int axis) { return axis == 0 ? 2 : 0; }
int rowsAxis(int axis) { return axis == 1 ? 2 : 1; }
int cellsFor(int texels, int shift) { return (texels + (1 << shift) - 1) >> shift; }

template <typename T>
const T* sampleAt(const VoxelSource& source, int x, int y, int z)
{
    const std::int64_t index = (std::int64_t{z} * source.size[1] + y) * source.size[0] + x;
    return static_cast<const T*>(source.samples) + index * source.channels + source.channel;
}

template <typename T>
void copyRow(const T* from, int channels, int count, T* to)
{
    if (channels == 1) {
        std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof(T));
        return;
    }
    for (int i = 0; i < count; ++i)
        to[i] = from[static_cast<std::ptrdiff_t>(i) * channels];
}

} // namespace

ValueRange joined(const ValueRange& a, const ValueRange& b)
{
    return {std::min(a.least, b.least), std::max(a.most, b.most)};
}

SliceSet::SliceSet(const VoxelSource& source, int axis)
    : m_axis(axis), m_bytes(source.bytesPerSample), m_planes(source.size[static_cast<std::size_t>(axis)]),
      m_width(source.size[static_cast<std::size_t>(columnsAxis(axis))]),
      m_height(source.size[static_cast<std::size_t>(rowsAxis(axis))]), m_stride(m_width + 2),
      m_planeTexels(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(m_height + 2))
{
    const std::size_t around =
        std::size_t{kRowsBefore + kRowsBehind + 1} * static_cast<std::size_t>(m_stride);
    m_texels.resize((m_planeTexels * static_cast<std::size_t>(m_planes) + around) * bytes());
    for (Grid* grid : {&m_fine, &m_coarse}) {
        grid->shift = grid == &m_fine ? kFineShift : kCoarseShift;
        grid->width = cellsFor(m_width, grid->shift);
        grid->height = cellsFor(m_height, grid->shift);
        grid->cells.resize(static_cast<std::size_t>(grid->width) * static_cast<std::size_t>(grid->height) *
                           static_cast<std::size_t>(m_planes) * 2 * bytes());
    }
    m_ranges.resize(static_cast<std::size_t>(m_planes));
    if (m_bytes == 1)
        fill<std::uint8_t>(source);
    else
        fill<std::uint16_t>(source);
}

std::size_t SliceSet::memoryUsed() const
{
    return m_texels.size() + m_fine.cells.size() + m_coarse.cells.size() +
           m_ranges.size() * sizeof(ValueRange);
}

template <typename T>
void SliceSet::fill(const VoxelSource& source)
{
    if (m_axis == 0) {
        fillAcrossX<T>(source);
        return;
    }
    parallelFor(0, m_planes, 1, [&](std::int64_t begin, std::int64_t end) {
        for (auto k = static_cast<int>(begin); k < end; ++k) {
            T* row = reinterpret_cast<T*>(m_texels.data()) + static_cast<std::size_t>(k) * m_planeTexels +
                     cornerOffset();
            for (int v = 0; v < m_height; ++v, row += m_stride) {
                const T* from = m_axis == 2 ? sampleAt<T>(source, 0, v, k) : sampleAt<T>(source, 0, k, v);
                copyRow(from, source.channels, m_width, row);
            }
            makeGrids<T>(k);
        }
    });
}

template <typename T>
void SliceSet::fillAcrossX(const VoxelSource& source)
{
    parallelFor(0, m_planes, kPlanesAtOnce, [&](std::int64_t first, std::int64_t last) {
        for (std::int64_t begin = first; begin < last; begin += kPlanesAtOnce) {
            const auto count = static_cast<int>(std::min<std::int64_t>(kPlanesAtOnce, last - begin));
            const auto lowest = static_cast<int>(begin);
            T* corner = reinterpret_cast<T*>(m_texels.data()) +
                        static_cast<std::size_t>(lowest) * m_planeTexels + cornerOffset();
            for (int y = 0; y < m_height; ++y, corner += m_stride) {
                for (int z = 0; z < m_width; ++z) {
                    const T* from = sampleAt<T>(source, lowest, y, z);
                    for (int k = 0; k < count; ++k)
                        corner[static_cast<std::size_t>(k) * m_planeTexels + static_cast<std::size_t>(z)] =
                            from[static_cast<std::ptrdiff_t>(k) * source.channels];
                }
            }
            for (int k = 0; k < count; ++k)
                makeGrids<T>(lowest + k);
        }
    });
}

template <typename T>
void SliceSet::makeGrids(int k)
{
    const auto cellsOf = [k](Grid& grid) {
        return reinterpret_cast<T*>(grid.cells.data()) + static_cast<std::size_t>(k) * 2 *
                                                             static_cast<std::size_t>(grid.width) *
                                                             static_cast<std::size_t>(grid.height);
    };
    T* fine = cellsOf(m_fine);
    T* coarse = cellsOf(m_coarse);
    const std::size_t coarseCells =
        static_cast<std::size_t>(m_coarse.width) * static_cast<std::size_t>(m_coarse.height);
    for (std::size_t i = 0; i < coarseCells; ++i) {
        coarse[2 * i] = std::numeric_limits<T>::max();
        coarse[2 * i + 1] = 0;
    }
    std::vector<T> least(static_cast<std::size_t>(m_stride));
    std::vector<T> most(static_cast<std::size_t>(m_stride));
    const T* texels = reinterpret_cast<const T*>(plane(k));
    ValueRange all{std::numeric_limits<T>::max(), 0};
    for (int cellV = 0; cellV < m_fine.height; ++cellV) {
        std::fill(least.begin(), least.end(), std::numeric_limits<T>::max());
        std::fill(most.begin(), most.end(), T{0});
        const int end = std::min(m_height, (cellV + 1) << kFineShift);
        for (int v = cellV << kFineShift; v < end; ++v) {
            const T* row = texels + static_cast<std::ptrdiff_t>(v) * m_stride;
            for (int u = 0; u < m_width; ++u) {
                const auto at = static_cast<std::size_t>(u);
                least[at] = std::min(least[at], row[u]);
                most[at] = std::max(most[at], row[u]);
            }
        }
        T* coarseRow =
            coarse + 2 * static_cast<std::ptrdiff_t>(cellV >> (kCoarseShift - kFineShift)) * m_coarse.width;
        for (int cellU = 0; cellU < m_fine.width; ++cellU, fine += 2) {
            const auto from = static_cast<std::ptrdiff_t>(cellU) << kFineShift;
            const auto to = std::min<std::ptrdiff_t>(m_width, from + (1 << kFineShift));
            fine[0] = *std::min_element(least.begin() + from, least.begin() + to);
            fine[1] = *std::max_element(most.begin() + from, most.begin() + to);
            T* cell = coarseRow + 2 * static_cast<std::ptrdiff_t>(cellU >> (kCoarseShift - kFineShift));
            cell[0] = std::min(cell[0], fine[0]);
            cell[1] = std::max(cell[1], fine[1]);
            all = joined(all, {fine[0], fine[1]});
        }
    }
    m_ranges[static_cast<std::size_t>(k)] = all;
}

ValueRange SliceSet::range(int k, const TexelBox& box) const
{
    const bool isInside = box.u0 >= 0 && box.v0 >= 0 && box.u1 < m_width && box.v1 < m_height;
    const TexelBox cut = {std::max(box.u0, 0), std::max(box.v0, 0), std::min(box.u1, m_width - 1),
                          std::min(box.v1, m_height - 1)};
    if (cut.u0 > cut.u1 || cut.v0 > cut.v1)
        return {0, 0};
    const bool isSmall = cut.u1 - cut.u0 < kMostFineTexels && cut.v1 - cut.v0 < kMostFineTexels;
    const Grid& grid = isSmall ? m_fine : m_coarse;
    const ValueRange found =
        m_bytes == 1 ? rangeOf<std::uint8_t>(grid, k, cut) : rangeOf<std::uint16_t>(grid, k, cut);
    return isInside ? found : joined(found, {0, 0});
}

template <typename T>
ValueRange SliceSet::rangeOf(const Grid& grid, int k, const TexelBox& box) const
{
    const int u0 = box.u0 >> grid.shift;
    const int u1 = box.u1 >> grid.shift;
    const int v1 = box.v1 >> grid.shift;
    T least = std::numeric_limits<T>::max();
    T most = 0;
    for (int v = box.v0 >> grid.shift; v <= v1; ++v) {
        const std::size_t row = (static_cast<std::size_t>(k) * static_cast<std::size_t>(grid.height) +
                                 static_cast<std::size_t>(v)) *
                                static_cast<std::size_t>(grid.width);
        const T* cells = reinterpret_cast<const T*>(grid.cells.data()) + 2 * row;
        for (int u = u0; u <= u1; ++u) {
            least = std::min(least, cells[2 * u]);
            most = std::max(most, cells[2 * u + 1]);
        }
    }
    return {least, most};
}

} // namespace tirn
