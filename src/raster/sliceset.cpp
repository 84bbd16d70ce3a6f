#include "raster/sliceset.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/parallel.h"

namespace tirn {

namespace {

constexpr int kFineShift = 2;
constexpr int kCoarseShift = 4;
/// Each cell stands for so many along a side, so that one look-up answers for most boxes.
constexpr int kSpread = 3;
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
    // Rows of few texels are read beyond their end, too.
    constexpr std::size_t longestRead = 64;
    m_texels.resize((m_planeTexels * static_cast<std::size_t>(m_planes) + around) * bytes() + longestRead);
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
T* SliceSet::cellsOf(Grid& grid, int k)
{
    return reinterpret_cast<T*>(grid.cells.data()) + static_cast<std::size_t>(k) * 2 *
                                                         static_cast<std::size_t>(grid.width) *
                                                         static_cast<std::size_t>(grid.height);
}

template <typename T>
void SliceSet::makeGrids(int k)
{
    T* fine = cellsOf<T>(m_fine, k);
    T* coarse = cellsOf<T>(m_coarse, k);
    findCells(reinterpret_cast<const T*>(plane(k)), fine);
    joinCells(m_fine, fine, m_coarse, coarse);
    ValueRange all{std::numeric_limits<T>::max(), 0};
    for (int i = 0; i < m_coarse.width * m_coarse.height; ++i)
        all = joined(all, {coarse[2 * i], coarse[2 * i + 1]});
    m_ranges[static_cast<std::size_t>(k)] = all;
    spreadCells(m_fine, fine);
    spreadCells(m_coarse, coarse);
}

template <typename T>
void SliceSet::findCells(const T* texels, T* cells) const
{
    std::vector<T> least(static_cast<std::size_t>(m_stride));
    std::vector<T> most(static_cast<std::size_t>(m_stride));
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
        for (int cellU = 0; cellU < m_fine.width; ++cellU, cells += 2) {
            const auto from = static_cast<std::ptrdiff_t>(cellU) << kFineShift;
            const auto to = std::min<std::ptrdiff_t>(m_width, from + (1 << kFineShift));
            cells[0] = *std::min_element(least.begin() + from, least.begin() + to);
            cells[1] = *std::max_element(most.begin() + from, most.begin() + to);
        }
    }
}

/// The cells of a coarser grid.
template <typename T>
void SliceSet::joinCells(const Grid& fine, const T* from, const Grid& coarse, T* to)
{
    const int shift = coarse.shift - fine.shift;
    for (int i = 0; i < coarse.width * coarse.height; ++i) {
        to[2 * i] = std::numeric_limits<T>::max();
        to[2 * i + 1] = 0;
    }
    for (int v = 0; v < fine.height; ++v) {
        for (int u = 0; u < fine.width; ++u, from += 2) {
            T* cell = to + 2 * (std::ptrdiff_t{v >> shift} * coarse.width + (u >> shift));
            cell[0] = std::min(cell[0], from[0]);
            cell[1] = std::max(cell[1], from[1]);
        }
    }
}

/// Makes each cell stand for those right of and below it, too.
template <typename T>
void SliceSet::spreadCells(const Grid& grid, T* cells)
{
    const auto spread = [cells](std::ptrdiff_t at, std::ptrdiff_t step, int behind) {
        for (int i = 1; i < std::min(kSpread, behind); ++i) {
            cells[2 * at] = std::min(cells[2 * at], cells[2 * (at + i * step)]);
            cells[2 * at + 1] = std::max(cells[2 * at + 1], cells[2 * (at + i * step) + 1]);
        }
    };
    for (int v = 0; v < grid.height; ++v) {
        for (int u = 0; u < grid.width; ++u)
            spread(std::ptrdiff_t{v} * grid.width + u, 1, grid.width - u);
    }
    for (int v = 0; v < grid.height; ++v) {
        for (int u = 0; u < grid.width; ++u)
            spread(std::ptrdiff_t{v} * grid.width + u, grid.width, grid.height - v);
    }
}

ValueRange SliceSet::range(int k, const TexelBox& box) const
{
    const bool isInside = box.u0 >= 0 && box.v0 >= 0 && box.u1 < m_width && box.v1 < m_height;
    const TexelBox cut = {std::max(box.u0, 0), std::max(box.v0, 0), std::min(box.u1, m_width - 1),
                          std::min(box.v1, m_height - 1)};
    if (cut.u0 > cut.u1 || cut.v0 > cut.v1)
        return {0, 0};
    const auto fits = [&cut](const Grid& grid) {
        constexpr int most = 2 * kSpread - 1;
        return (cut.u1 >> grid.shift) - (cut.u0 >> grid.shift) <= most &&
               (cut.v1 >> grid.shift) - (cut.v0 >> grid.shift) <= most;
    };
    const Grid* grid = fits(m_fine) ? &m_fine : fits(m_coarse) ? &m_coarse : nullptr;
    if (grid == nullptr)
        return joined(range(k), {0, 0});
    const ValueRange found =
        m_bytes == 1 ? rangeOf<std::uint8_t>(*grid, k, cut) : rangeOf<std::uint16_t>(*grid, k, cut);
    return isInside ? found : joined(found, {0, 0});
}

/// Of at most twice as many cells along a side as one stands for.
template <typename T>
ValueRange SliceSet::rangeOf(const Grid& grid, int k, const TexelBox& box) const
{
    const int u0 = box.u0 >> grid.shift;
    const int v0 = box.v0 >> grid.shift;
    const int u1 = (box.u1 >> grid.shift) - (kSpread - 1);
    const int v1 = (box.v1 >> grid.shift) - (kSpread - 1);
    const T* cells = reinterpret_cast<const T*>(grid.cells.data()) +
                     2 * static_cast<std::ptrdiff_t>(k) * grid.width * grid.height;
    const auto at = [&](int u, int v) -> ValueRange {
        const T* cell = cells + 2 * (std::ptrdiff_t{v} * grid.width + u);
        return {cell[0], cell[1]};
    };
    ValueRange found = at(u0, v0);
    if (u1 > u0)
        found = joined(found, at(u1, v0));
    if (v1 > v0)
        found = joined(found, at(u0, v1));
    if (u1 > u0 && v1 > v0)
        found = joined(found, at(u1, v1));
    return found;
}

} // namespace tirn
