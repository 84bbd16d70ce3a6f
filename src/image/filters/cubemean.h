#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "image/filters/alignedrow.h"
#include "image/filters/filterparts.h"
#include "image/filters/meanscale.h"
#include "image/targetclones.h"

namespace tirn {

/// The part of a row, in voxels, that is worked on at a time.
struct MeanTile
{
    std::int64_t x0;
    std::int64_t voxels;
};

/// Runs the windows' sums from one layer to the next: what enters a window less what leaves it is summed
/// along x, then down y, and added to the window's sum. All of it is modulo 2^n in the narrowest numbers that
/// hold the results: `Difference` along x, `Column` down y.
template <class Difference, class Column>
class CubeSums
{
public:
    CubeSums(const MeanJob& job, const MeanTile& tile)
        : m_job(job), m_tile(tile), m_window(2 * job.half + 1), m_count(tile.voxels * job.channels),
          m_first(std::max<std::int64_t>(0, tile.x0 - job.half)),
          m_last(std::min<std::int64_t>(job.x, tile.x0 + tile.voxels + job.half)),
          m_pitch(alignedPitch<Difference>(m_count)),
          m_padded(withRoom((tile.voxels + 2 * job.half) * job.channels)), m_sums(m_padded.size()),
          m_alongX(static_cast<std::size_t>(m_pitch * m_window)), m_column(withRoom(m_count))
    {}
    CubeSums(const CubeSums&) = delete;
    CubeSums& operator=(const CubeSums&) = delete;

    /// One layer. `difference(y, first, count, out)` makes what enters row y less what leaves it, from the
    /// given sample of the row on; `done(y, column)` gets what the sums of row y change by.
    template <class MakeDifference, class Done>
    TIRN_INLINE void run(const FilterPart& part, MakeDifference difference, Done done)
    {
        std::fill(m_column.begin(), m_column.end(), Column{0});
        std::fill(m_alongX.begin(), m_alongX.end(), Difference{0});
        const int half = m_job.half;
        int slot = 0;
        int before = -1;
        for (int y = part.y0 - half; y < part.y1 + half; ++y) {
            Difference* const row = m_alongX.data() + slot * m_pitch;
            const int inside = std::clamp(y, 0, m_job.y - 1);
            if (inside != before) {
                makePadded(inside, difference);
                enterPadded(row);
            } else {
                // Rows outside are those at the edge.
                const int last = slot > 0 ? slot - 1 : m_window - 1;
                enterAgain(m_alongX.data() + last * m_pitch, row);
            }
            before = inside;
            slot = slot + 1 < m_window ? slot + 1 : 0;
            if (y >= part.y0 + half)
                done(y - half, m_column.data());
        }
    }

private:
    /// Numbers of a vector; rows have room for whole ones.
    static constexpr int kLanes = kVectorAlignment / sizeof(Difference);
    static std::size_t withRoom(std::int64_t count) { return static_cast<std::size_t>(count + 2 * kLanes); }
    typedef Difference Vector __attribute__((vector_size(kVectorAlignment)));
    typedef Column ColumnVector __attribute__((vector_size(kLanes * sizeof(Column))));

    template <class MakeDifference>
    TIRN_INLINE void makePadded(int y, MakeDifference difference)
    {
        const int channels = m_job.channels;
        const std::int64_t samples = (m_last - m_first) * channels;
        Difference* const begin =
            m_padded.data() + (m_first - (m_tile.x0 - m_job.half)) * std::int64_t{channels};
        difference(y, m_first * channels, samples, begin);
        // Columns outside are those at the edge.
        for (Difference* to = begin; to > m_padded.data();)
            to = std::copy_n(begin, channels, to - channels) - channels;
        Difference* to = begin + samples;
        const Difference* last = to - channels;
        for (std::int64_t x = m_last; x < m_tile.x0 + m_tile.voxels + m_job.half; ++x)
            to = std::copy_n(last, channels, to);
    }

    /// Puts the sums along x into a row of the window in the place of the row that leaves it.
    TIRN_INLINE void enterPadded(Difference* row)
    {
        switch (m_window) {
        case 3:
            return enterSums<3>(m_padded.data(), row);
        case 5:
            return enterSums<5>(m_padded.data(), row);
        case 7:
            return enterSums<7>(m_padded.data(), row);
        case 9:
            return enterSums<9>(m_padded.data(), row);
        default:
            return enterSpans(row);
        }
    }

    template <int Terms>
    TIRN_INLINE void enterSums(const Difference* padded, Difference* row)
    {
        if (m_job.channels == 1)
            enterTerms<Terms>(padded, 1, row);
        else
            enterTerms<Terms>(padded, m_job.channels, row);
    }

    template <int Terms>
    TIRN_INLINE void enterTerms(const Difference* padded, std::int64_t step, Difference* __restrict row)
    {
        Column* __restrict column = m_column.data();
        const std::int64_t count = m_count;
        for (std::int64_t i = 0; i < count; ++i) {
            auto sum = padded[i];
            for (int k = 1; k < Terms; ++k)
                sum = static_cast<Difference>(sum + padded[i + k * step]);
            column[i] = changed(column[i], sum, row[i]);
            row[i] = sum;
        }
    }

    /// Spans are summed first, as wide as there are of them in the window: both kinds of sums have few terms.
    TIRN_INLINE void enterSpans(Difference* row)
    {
        if (m_job.channels == 1)
            enterSpansOf(1, row);
        else
            enterSpansOf(m_job.channels, row);
    }

    TIRN_INLINE void enterSpansOf(std::int64_t step, Difference* row)
    {
        const int span = m_window < 25 ? 4 : m_window < 45 ? 6 : 7;
        const int spans = m_window / span;
        const Difference* padded = m_padded.data();
        Difference* sums = m_sums.data();
        const std::int64_t length = m_count + (m_window - span) * step;
        for (std::int64_t i = 0; i < length; i += kLanes) {
            Vector sum = {};
            addTerms(padded + i, span, step, sum);
            std::memcpy(sums + i, &sum, sizeof sum);
        }
        Column* column = m_column.data();
        const Difference* rest = padded + spans * span * step;
        for (std::int64_t i = 0; i < m_count; i += kLanes) {
            Vector sum = {};
            addTerms(sums + i, spans, span * step, sum);
            addTerms(rest + i, m_window - spans * span, step, sum);
            Vector leaving;
            std::memcpy(&leaving, row + i, sizeof leaving);
            std::memcpy(row + i, &sum, sizeof sum);
            ColumnVector total;
            std::memcpy(&total, column + i, sizeof total);
            total += __builtin_convertvector(sum - leaving, ColumnVector);
            std::memcpy(column + i, &total, sizeof total);
        }
    }

    /// Adds vectors that begin `distance` numbers apart.
    TIRN_INLINE static void addTerms(const Difference* terms, int count, std::int64_t distance, Vector& sum)
    {
        for (int k = 0; k < count; ++k) {
            Vector term;
            std::memcpy(&term, terms + k * distance, sizeof term);
            sum += term;
        }
    }

    TIRN_INLINE void enterAgain(const Difference* before, Difference* row)
    {
        Column* __restrict column = m_column.data();
        for (std::int64_t i = 0; i < m_count; ++i) {
            const Difference sum = before[i];
            column[i] = changed(column[i], sum, row[i]);
            row[i] = sum;
        }
    }

    TIRN_INLINE static Column changed(Column column, Difference entering, Difference leaving)
    {
        return static_cast<Column>(column + static_cast<Column>(static_cast<Difference>(entering - leaving)));
    }

    const MeanJob& m_job;
    const MeanTile& m_tile;
    int m_window;
    std::int64_t m_count;
    std::int64_t m_first;
    std::int64_t m_last;
    std::int64_t m_pitch;
    /// A row of differences, with room for the columns outside on either side.
    AlignedVector<Difference> m_padded;
    /// The sums of its spans.
    AlignedVector<Difference> m_sums;
    /// The sums along x of the window's rows, which take turns.
    AlignedVector<Difference> m_alongX;
    AlignedVector<Column> m_column;
};

/// The widest window of CubeMean: twice what a row of bytes sums up to fits in 16 bits with a sign.
constexpr int kWidestCube = 63;

/// The widest window whose columns of bytes sum up to 16 bits with a sign.
constexpr int kWidestShortColumn = 11;

/// A tile of a part of the stack in 3D: `Difference`, `Column` and `Sum` are what CubeSums makes.
template <class Sample, class Difference, class Column, class Sum>
class CubeMean
{
public:
    CubeMean(const Sample* stack, const MeanJob& job, const MeanScale& scale, const FilterPart& part,
             const MeanTile& tile)
        : m_stack(stack), m_job(job), m_scale(scale), m_part(part), m_tile(tile),
          m_count(tile.voxels * job.channels), m_pitch(alignedPitch<Sum>(m_count)),
          m_sums(static_cast<std::size_t>(m_pitch * (part.y1 - part.y0)), Sum{0})
    {}
    CubeMean(const CubeMean&) = delete;
    CubeMean& operator=(const CubeMean&) = delete;

    TIRN_INLINE void run(Sample* to)
    {
        firstLayer(to);
        CubeSums<Difference, Column> sums(m_job, m_tile);
        for (int z = m_part.z0 + 1; z < m_part.z1; ++z) {
            const auto difference = [&](int y, std::int64_t first, std::int64_t count,
                                        Difference* __restrict out) TIRN_INLINED_LAMBDA {
                const Sample* entering = m_job.row(m_stack, y, z + m_job.halfZ) + first;
                const Sample* leaving = m_job.row(m_stack, y, z - m_job.halfZ - 1) + first;
                // The rows lie layers apart, where processors do not guess that they are wanted.
                fetch(m_job.row(m_stack, y + kRowsAhead, z + m_job.halfZ) + first, count);
                fetch(m_job.row(m_stack, y + kRowsAhead, z - m_job.halfZ - 1) + first, count);
                for (std::int64_t i = 0; i < count; ++i)
                    out[i] = static_cast<Difference>(static_cast<Difference>(entering[i]) -
                                                     static_cast<Difference>(leaving[i]));
            };
            sums.run(m_part, difference,
                     [&](int y, const Column* column) TIRN_INLINED_LAMBDA { finish(y, z, column, to); });
        }
    }

private:
    static constexpr int kRowsAhead = 4;

    TIRN_INLINE static void fetch(const Sample* row, std::int64_t count)
    {
        constexpr std::int64_t kCacheLine = 64 / sizeof(Sample);
        for (std::int64_t i = 0; i < count; i += kCacheLine)
            __builtin_prefetch(row + i);
    }

    /// The sums of whole windows, which differences are added to.
    TIRN_INLINE void firstLayer(Sample* to)
    {
        const int z = m_part.z0;
        const auto whole = [&](int y, std::int64_t first, std::int64_t count, Sum* __restrict out)
                               TIRN_INLINED_LAMBDA {
                                   std::fill_n(out, count, Sum{0});
                                   for (int k = z - m_job.halfZ; k <= z + m_job.halfZ; ++k) {
                                       const Sample* row = m_job.row(m_stack, y, k) + first;
                                       for (std::int64_t i = 0; i < count; ++i)
                                           out[i] = static_cast<Sum>(out[i] + row[i]);
                                   }
                               };
        CubeSums<Sum, Sum>(m_job, m_tile)
            .run(m_part, whole,
                 [&](int y, const Sum* column) TIRN_INLINED_LAMBDA { finish(y, z, column, to); });
    }

    template <class Change>
    TIRN_INLINE void finish(int y, int z, const Change* column, Sample* to)
    {
        Sum* __restrict sums = m_sums.data() + (y - m_part.y0) * m_pitch;
        for (std::int64_t i = 0; i < m_count; ++i)
            sums[i] = static_cast<Sum>(sums[i] + static_cast<Sum>(column[i]));
        scaleRow(sums, m_count, m_scale, m_job.divisor,
                 to + (std::int64_t{z} * m_job.y + y) * m_job.rowSamples() + m_tile.x0 * m_job.channels);
    }

    const Sample* m_stack;
    const MeanJob& m_job;
    const MeanScale& m_scale;
    const FilterPart& m_part;
    MeanTile m_tile;
    std::int64_t m_count;
    std::int64_t m_pitch;
    AlignedVector<Sum> m_sums;
};

} // namespace tirn
