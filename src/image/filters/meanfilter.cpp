#include "image/filters/meanfilter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/log.h"
#include "base/stopwatch.h"
#include "image/filters/cubemean.h"
#include "image/filters/filterparts.h"
#include "image/filters/meanscale.h"
#include "image/filters/median/columnhistograms.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// Samples of a row that are summed together, so that the sums of a window's rows stay in the cache.
constexpr std::int64_t kTile = 1024;
/// Rows, and in 3D layers, of a part: enough to pay for the sums that each part starts with.
constexpr int kPartRows = 128;
constexpr int kPartLayers = 64;

/// sums[i] += entering[i] - leaving[i], modulo 2^32.
template <class In>
TIRN_INLINE void exchange(const In* entering, const In* leaving, std::int64_t count,
                          std::uint32_t* __restrict sums)
{
    for (std::int64_t i = 0; i < count; ++i)
        sums[i] += static_cast<std::uint32_t>(entering[i]) - static_cast<std::uint32_t>(leaving[i]);
}

template <class In>
TIRN_INLINE void enter(const In* entering, std::int64_t count, std::uint32_t* __restrict sums)
{
    for (std::int64_t i = 0; i < count; ++i)
        sums[i] += entering[i];
}

/// out[i] = row[i] + row[i + step] + ... for `window` terms. The row has (window - 1) * step more samples
/// than `count` and is overwritten: spans of it double, and those of the window's binary digits are added up.
TIRN_INLINE void sumAlongRow(std::uint32_t* __restrict row, std::int64_t count, int window, std::int64_t step,
                             std::uint32_t* __restrict out)
{
    std::int64_t length = count + (window - 1) * step;
    std::int64_t used = 0;
    bool first = true;
    for (int span = 1;; span *= 2) {
        if ((window & span) != 0) {
            const std::uint32_t* term = row + used * step;
            if (first)
                std::copy_n(term, count, out);
            else
                enter(term, count, out);
            first = false;
            used += span;
        }
        if (span * 2 > window)
            return;
        length -= span * step;
#pragma GCC ivdep
        for (std::int64_t i = 0; i < length; ++i)
            row[i] += row[i + span * step];
    }
}

/// The sums of all samples up to each one.
TIRN_INLINE void sumUpRow(const std::uint32_t* __restrict row, std::int64_t count,
                          std::uint32_t* __restrict sums)
{
    using Sums = Lanes<std::uint32_t>;
    Sums before;
    std::int64_t i = 0;
    for (; i + kDigit <= count; i += kDigit) {
        Sums lanes(row + i);
        lanes.sumUp();
        lanes.numbers += before.numbers;
        lanes.store(sums + i);
        before.numbers = Sums::Vector{} + lanes.numbers[kDigit - 1];
    }
    std::uint32_t sum = before.numbers[0];
    for (; i < count; ++i)
        sums[i] = sum += row[i];
}

/// What sumAlongRow makes, from the sums of all samples up to each one: the work is the same for all windows.
TIRN_INLINE void sumByRunning(const std::uint32_t* row, std::int64_t count, int window, std::int64_t step,
                              std::uint32_t* __restrict sums, std::uint32_t* __restrict out)
{
    const std::int64_t length = count + (window - 1) * step;
    if (step == 1) {
        sumUpRow(row, length, sums);
    } else {
        std::copy_n(row, step, sums);
        for (std::int64_t i = step; i < length; ++i)
            sums[i] = sums[i - step] + row[i];
    }
    const std::int64_t reach = (window - 1) * step;
    std::copy_n(sums + reach, std::min(step, count), out);
    for (std::int64_t i = step; i < count; ++i)
        out[i] = sums[i + reach] - sums[i - step];
}

/// Makes the rows of a tile of the stack from column sums, on one thread.
template <class Sample>
class TileMean
{
public:
    TileMean(const MeanJob& job, const MeanScale& scale, std::int64_t x0, std::int64_t voxels)
        : m_job(job), m_scale(scale), m_x0(x0), m_voxels(voxels),
          m_first(std::max<std::int64_t>(0, x0 - job.half)),
          m_last(std::min<std::int64_t>(job.x, x0 + voxels + job.half)),
          m_padded(static_cast<std::size_t>((voxels + 2 * job.half) * job.channels)),
          m_scratch(m_padded.size()), m_sums(static_cast<std::size_t>(voxels * job.channels)),
          m_columns(m_padded.data() + (m_first - (x0 - job.half)) * job.channels)
    {}
    TileMean(const TileMean&) = delete;
    TileMean& operator=(const TileMean&) = delete;

    /// Samples of a row that the tile looks at.
    std::int64_t samples() const { return (m_last - m_first) * m_job.channels; }
    std::int64_t firstSample() const { return m_first * m_job.channels; }
    std::uint32_t* columns() { return m_columns; }

    /// One row of means from the sums of the columns.
    TIRN_INLINE void finish(Sample* row)
    {
        const int channels = m_job.channels;
        const int half = m_job.half;
        // Columns outside are those at the edge.
        for (std::uint32_t* to = m_columns; to > m_padded.data();)
            to = std::copy_n(m_columns, channels, to - channels) - channels;
        const std::uint32_t* last = m_columns + samples() - channels;
        std::uint32_t* end = m_columns + samples();
        for (std::int64_t x = m_last; x < m_x0 + m_voxels + half; ++x)
            end = std::copy_n(last, channels, end);
        const std::int64_t count = m_voxels * channels;
        const int window = 2 * half + 1;
        if (half > (channels == 1 ? kFewDigits : kFewDigitsOfMany)) {
            sumByRunning(m_padded.data(), count, window, channels, m_scratch.data(), m_sums.data());
        } else {
            std::copy_n(m_padded.data(), m_padded.size(), m_scratch.data());
            sumAlongRow(m_scratch.data(), count, window, channels, m_sums.data());
        }
        scaleRow(m_sums.data(), count, m_scale, m_job.divisor, row + m_x0 * channels);
    }

private:
    /// Half-widths up to which adding up binary digits of the window is cheaper than running sums: these are
    /// made of whole vectors for one channel only.
    static constexpr int kFewDigits = 1;
    static constexpr int kFewDigitsOfMany = 16;

    const MeanJob& m_job;
    const MeanScale& m_scale;
    std::int64_t m_x0;
    std::int64_t m_voxels;
    std::int64_t m_first;
    std::int64_t m_last;
    /// The sums of the tile's columns, with room for those outside on either side.
    std::vector<std::uint32_t> m_padded;
    std::vector<std::uint32_t> m_scratch;
    std::vector<std::uint32_t> m_sums;
    std::uint32_t* m_columns;
};

/// A part in 2D: the column sums run down the rows of each layer.
template <class Sample>
TIRN_INLINE void meanInLayers(const Sample* stack, const MeanJob& job, const MeanScale& scale,
                              const FilterPart& part, Sample* to)
{
    const std::int64_t tileVoxels = std::max<std::int64_t>(1, kTile / job.channels);
    for (int z = part.z0; z < part.z1; ++z) {
        for (std::int64_t x0 = 0; x0 < job.x; x0 += tileVoxels) {
            TileMean<Sample> tile(job, scale, x0, std::min(tileVoxels, job.x - x0));
            const std::int64_t first = tile.firstSample();
            for (int y = part.y0 - job.half; y <= part.y0 + job.half; ++y)
                enter(job.row(stack, y, z) + first, tile.samples(), tile.columns());
            for (int y = part.y0; y < part.y1; ++y) {
                if (y > part.y0)
                    exchange(job.row(stack, y + job.half, z) + first,
                             job.row(stack, y - job.half - 1, z) + first, tile.samples(), tile.columns());
                tile.finish(to + (std::int64_t{z} * job.y + y) * job.rowSamples());
            }
        }
    }
}

/// A part in 3D: sums along z of all rows that the part's windows reach run from layer to layer, and the
/// column sums run down those.
template <class Sample>
TIRN_INLINE void meanInStack(const Sample* stack, const MeanJob& job, const MeanScale& scale,
                             const FilterPart& part, Sample* to)
{
    const std::int64_t tileVoxels = std::max<std::int64_t>(1, kTile / job.channels);
    const int firstRow = std::max(0, part.y0 - job.half);
    const int lastRow = std::min(job.y, part.y1 + job.half);
    for (std::int64_t x0 = 0; x0 < job.x; x0 += tileVoxels) {
        TileMean<Sample> tile(job, scale, x0, std::min(tileVoxels, job.x - x0));
        const std::int64_t first = tile.firstSample();
        const std::int64_t count = tile.samples();
        std::vector<std::uint32_t> alongZ(static_cast<std::size_t>(count * (lastRow - firstRow)));
        const auto zSums = [&](int y) {
            return alongZ.data() + (std::clamp(y, firstRow, lastRow - 1) - firstRow) * count;
        };
        for (int z = part.z0; z < part.z1; ++z) {
            for (int y = firstRow; y < lastRow; ++y) {
                if (z > part.z0) {
                    exchange(job.row(stack, y, z + job.halfZ) + first,
                             job.row(stack, y, z - job.halfZ - 1) + first, count, zSums(y));
                    continue;
                }
                for (int k = z - job.halfZ; k <= z + job.halfZ; ++k)
                    enter(job.row(stack, y, k) + first, count, zSums(y));
            }
            std::fill_n(tile.columns(), count, 0U);
            for (int y = part.y0 - job.half; y <= part.y0 + job.half; ++y)
                enter(zSums(y), count, tile.columns());
            for (int y = part.y0; y < part.y1; ++y) {
                if (y > part.y0)
                    exchange(zSums(y + job.half), zSums(y - job.half - 1), count, tile.columns());
                tile.finish(to + (std::int64_t{z} * job.y + y) * job.rowSamples());
            }
        }
    }
}

template <class Difference, class Column, class Sum, class Sample>
TIRN_INLINE void meanInCubes(const Sample* stack, const MeanJob& job, const MeanScale& scale,
                             const FilterPart& part, Sample* to)
{
    const std::int64_t tileVoxels = std::max<std::int64_t>(1, kTile / job.channels);
    for (std::int64_t x0 = 0; x0 < job.x; x0 += tileVoxels)
        CubeMean<Sample, Difference, Column, Sum>(stack, job, scale, part,
                                                  {x0, std::min(tileVoxels, job.x - x0)})
            .run(to);
}

TIRN_TARGET_CLONES void meanOfPart(const std::uint8_t* stack, const MeanJob& job, const MeanScale& scale,
                                   const FilterPart& part, std::uint8_t* to)
{
    const int window = 2 * job.half + 1;
    if (job.halfZ == 0)
        meanInLayers(stack, job, scale, part, to);
    else if (scale.brief.valid)
        meanInCubes<std::uint16_t, std::uint16_t, std::uint16_t>(stack, job, scale, part, to);
    else if (window <= kWidestShortColumn)
        meanInCubes<std::int16_t, std::int16_t, std::uint32_t>(stack, job, scale, part, to);
    else if (window <= kWidestCube)
        meanInCubes<std::int16_t, std::uint32_t, std::uint32_t>(stack, job, scale, part, to);
    else
        meanInStack(stack, job, scale, part, to);
}

TIRN_TARGET_CLONES void meanOfPart(const std::uint16_t* stack, const MeanJob& job, const MeanScale& scale,
                                   const FilterPart& part, std::uint16_t* to)
{
    if (job.halfZ == 0)
        meanInLayers(stack, job, scale, part, to);
    else if (2 * job.half + 1 <= kWidestCube)
        meanInCubes<std::uint32_t, std::uint32_t, std::uint32_t>(stack, job, scale, part, to);
    else
        meanInStack(stack, job, scale, part, to);
}

/// The largest sum that a window can have.
double largestSum(const MeanJob& job, bool words)
{
    const double side = 2.0 * job.half + 1;
    const double voxels = side * side * (2.0 * job.halfZ + 1);
    return std::min(4294967295.0, voxels * (words ? 65535 : 255));
}

/// The filtered samples in `to`; false when cancelled.
template <class Sample>
bool filterStack(const Sample* from, const ImageAttributes& a, int size, bool is3D, const Progress& progress,
                 Sample* to)
{
    const int half = std::max(0, size / 2);
    const MeanJob job = {a.x, a.y, a.z, a.channels, half, is3D ? half : 0, static_cast<double>(size) * size};
    // A divisor of 0 leaves no number that a sample could hold.
    if (size == 0) {
        std::fill_n(to, job.rowSamples() * a.y * a.z, Sample{0});
        return true;
    }
    const MeanScale scale(job, largestSum(job, sizeof(Sample) == 2));
    PartLimits limits;
    if (job.halfZ > 0)
        limits = {kPartLayers, kPartRows / 4, kPartRows};
    return forEachPart(a, limits, progress,
                       [&](const FilterPart& part) { meanOfPart(from, job, scale, part, to); });
}

} // namespace

bool meanFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress)
{
    if (!canFilter(stack, channel) || size > kWidestWindow)
        return false;
    const ImageAttributes& a = stack.attributes();
    const Stopwatch stopwatch;
    const char* text = "Could not allocate memory for meanfilter";
    VoxelBuffer result = allocateVoxels(stack.sampleCount() * a.bytesPerSample(), text);
    const bool done = withAllocationText(text, [&] {
        return a.hasWords() ? filterStack(stack.stackData16(), a, size, is3D, progress,
                                          reinterpret_cast<std::uint16_t*>(result.data()))
                            : filterStack(stack.stackData(), a, size, is3D, progress,
                                          reinterpret_cast<std::uint8_t*>(result.data()));
    });
    if (!done)
        return false;
    keepOtherChannels(stack, channel, result);
    logDebug("mean %dx%d elapsed %dms", size, size, static_cast<int>(stopwatch.seconds()));
    stack.replaceVoxels(std::move(result));
    return true;
}

} // namespace tirn
