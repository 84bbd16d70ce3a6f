#include <vector>

#include "image/filters/median/columnhistograms.h"
#include "image/filters/median/mediansearch.h"
#include "image/filters/median/mediansource.h"

namespace tirn {

namespace {

/// A window of the filter, and how many bits its values have.
struct WindowShape
{
    int half;
    int halfZ;
    int bits;

    int side() const { return 2 * half + 1; }
    int depth() const { return 2 * halfZ + 1; }
    /// Values of a column.
    int column() const { return side() * depth(); }
    std::int64_t voxels() const { return std::int64_t{side()} * column(); }
    std::int64_t rank() const { return (voxels() + 1) / 2; }
    /// Bits behind the eight highest.
    int lowerBits() const { return std::max(0, bits - 8); }
};

/// What finding a median costs, in about the cycles of a processor, by the three ways there are.
struct MedianCosts
{
    double search;
    double histograms;
    double lowerSearch;
    double lowerCounters;

    MedianCosts(const WindowShape& shape, std::size_t sampleBytes)
    {
        const double bit = static_cast<double>(shape.voxels()) * static_cast<double>(sampleBytes) * 0.026;
        search = bit * shape.bits;
        histograms = 45.0 + 8.0 * shape.depth();
        lowerSearch = shape.lowerBits() > 0 ? 10 + bit * shape.lowerBits() : 0;
        const int levels = (shape.lowerBits() + 3) / 4;
        lowerCounters = levels * (25.0 + 4.0 * shape.column());
    }
    bool searchAlone() const { return search < histograms + std::min(lowerSearch, lowerCounters); }
};

/// The place of a row's first sample in a stack laid out like the source.
template <class Sample>
Sample* rowIn(const MedianSource<Sample>& source, Sample* stack, int y, int z)
{
    return stack + (std::int64_t{z} * source.y + y) * source.x * source.channels + source.channel;
}

template <class Sample>
TIRN_INLINE void storeRow(const MedianSource<Sample>& source, const Sample* row, Sample* out)
{
    for (int x = 0; x < source.x; ++x)
        out[std::int64_t{x} * source.channels] = row[x];
}

/// A part by bit search alone.
template <class Sample>
TIRN_INLINE void searchPart(const MedianSource<Sample>& source, const WindowShape& shape,
                            const FilterPart& part, Sample* to)
{
    WindowRows<Sample> rows(source, shape.half, shape.halfZ);
    std::vector<Sample> results(static_cast<std::size_t>(source.x + BitSearch<Sample>::kBlock));
    for (int z = part.z0; z < part.z1; ++z) {
        for (int y = part.y0 - shape.half; y < part.y0 + shape.half; ++y)
            rows.take(y, z);
        for (int y = part.y0; y < part.y1; ++y) {
            rows.take(y + shape.half, z);
            std::fill(results.begin(), results.end(), Sample{0});
            BitSearch<Sample>::run(rows, shape.side(), source.x, shape.bits, shape.rank(), results.data());
            storeRow(source, results.data(), rowIn(source, to, y, z));
        }
    }
}

/// The values of the columns of a window's rows: those of each row of its layers lie together, and rows take
/// turns.
template <class Sample>
class ColumnValues
{
public:
    ColumnValues(int columns, const WindowShape& shape)
        : m_half(shape.half), m_size(shape.column()),
          m_values(static_cast<std::size_t>(std::int64_t{columns} * m_size))
    {
        for (int x = -m_half; x <= columns + m_half; ++x)
            m_nearest.push_back(m_values.data() + std::int64_t{std::clamp(x, 0, columns - 1)} * m_size);
    }
    ColumnValues(const ColumnValues&) = delete;
    ColumnValues& operator=(const ColumnValues&) = delete;

    int size() const { return m_size; }
    Sample* all() { return m_values.data(); }
    /// The column at x, or the nearest one inside.
    const Sample* operator[](int x) const { return m_nearest[static_cast<std::size_t>(x + m_half)]; }

private:
    int m_half;
    int m_size;
    std::vector<Sample> m_values;
    std::vector<const Sample*> m_nearest;
};

/// Makes the medians of a part from histograms of its columns, row by row, on one thread.
template <class Sample, class Count, class Total>
class HistogramMedian
{
public:
    HistogramMedian(const MedianSource<Sample>& source, const WindowShape& shape, bool searchLower)
        : m_source(source), m_shape(shape), m_searchLower(searchLower), m_columns(source.x, shape.half),
          m_values(source.x, shape), m_found(static_cast<std::size_t>(source.x + BitSearch<Sample>::kBlock)),
          m_ranks(static_cast<std::size_t>(source.x))
    {}

    TIRN_INLINE void run(const FilterPart& part, Sample* to)
    {
        if (m_shape.lowerBits() == 0)
            forEachRow(
                part, to, [](int, int) {}, []() {});
        else if (m_searchLower)
            runWithSearch(part, to);
        else
            runWithCounters(part, to);
    }

private:
    // The lambdas must become part of the clone that they are in: on their own they would be compiled for the
    // oldest processor.

    TIRN_INLINE void runWithSearch(const FilterPart& part, Sample* to)
    {
        WindowRows<Sample> rows(m_source, m_shape.half, m_shape.halfZ);
        const auto taken = [&](int y, int z) __attribute__((always_inline)) { rows.take(y, z); };
        const auto finish = [&]() __attribute__((always_inline))
        {
            for (int x = 0; x < m_source.x; ++x) {
                Sample& found = m_found[static_cast<std::size_t>(x)];
                found = static_cast<Sample>(found << m_shape.lowerBits());
            }
            BitSearch<Sample>::run(rows, m_shape.side(), m_source.x, m_shape.lowerBits(), m_shape.rank(),
                                   m_found.data());
        };
        forEachRow(part, to, taken, finish);
    }

    TIRN_INLINE void runWithCounters(const FilterPart& part, Sample* to)
    {
        if constexpr (sizeof(Sample) > 1) {
            LowerDigits<Total> lower(m_shape.bits);
            const auto finish = [&]() __attribute__((always_inline)) { findLower(lower); };
            forEachRow(
                part, to, [](int, int) {}, finish);
        }
    }

    /// Makes the rows of a part: `taken` hears of each row that comes into the window, `finish` completes the
    /// results in m_found from the eight highest bits.
    template <class Taken, class Finish>
    TIRN_INLINE void forEachRow(const FilterPart& part, Sample* to, Taken taken, Finish finish)
    {
        const int half = m_shape.half;
        for (int z = part.z0; z < part.z1; ++z) {
            m_columns.clear();
            for (int y = part.y0 - half; y < part.y1 + half; ++y) {
                if (y <= part.y0 + half)
                    takeRows<false>(y, z);
                else
                    takeRows<true>(y, z);
                taken(y, z);
                if (y < part.y0 + half)
                    continue;
                findHighest();
                finish();
                storeRow(m_source, m_found.data(), rowIn(m_source, to, y - half, z));
            }
        }
    }

    /// Takes a row of each of the window's layers into the columns, where `Full` in the place of the oldest
    /// ones.
    template <bool Full>
    TIRN_INLINE void takeRows(int y, int z)
    {
        const int side = m_shape.side();
        const int depth = m_shape.depth();
        const int turn = (y % side + side) % side;
        const MedianSource<Sample> source = m_source;
        const int shift = m_shape.lowerBits();
        for (int k = 0; k < depth; ++k) {
            const Sample* row = source.row(y, z - m_shape.halfZ + k);
            Sample* place = m_values.all() + turn * depth + k;
            for (int x = 0; x < source.x; ++x, place += side * depth) {
                const Sample entering = source.seen(row[std::int64_t{x} * source.channels]);
                if constexpr (Full)
                    m_columns.exchange(x, entering >> shift, *place >> shift);
                else
                    m_columns.enter(x, entering >> shift);
                *place = entering;
            }
        }
    }

    /// The eight highest bits of a row's medians, and their ranks among the values that share them.
    TIRN_INLINE void findHighest()
    {
        Window<Count, Total> window(m_columns, m_shape.half, m_shape.column());
        Sample* found = m_found.data();
        Total* ranks = m_ranks.data();
        const auto middle = static_cast<Total>(m_shape.rank());
        const int width = m_source.x;
        window.start();
        for (int x = 0; x < width; ++x) {
            if (x > 0)
                window.step(x);
            Total rank = middle;
            found[x] = static_cast<Sample>(window.find(x, rank));
            ranks[x] = rank;
        }
    }

    /// Completes a row's medians by counting all values of the windows.
    TIRN_INLINE void findLower(LowerDigits<Total>& lower)
    {
        const int half = m_shape.half;
        const int width = m_source.x;
        const int size = m_values.size();
        for (int x = -half; x <= half; ++x)
            lower.enter(m_values[x], size);
        for (int x = 0; x < width; ++x) {
            const auto at = static_cast<std::size_t>(x);
            m_found[at] = static_cast<Sample>(lower.find(m_found[at], m_ranks[at]));
            // Well before they are looked at: wide loads of counters must not wait for narrow stores.
            lower.exchange(m_values[x - half], m_values[x + half + 1], size);
        }
        for (int x = width - half; x <= width + half; ++x)
            lower.leave(m_values[x], size);
    }

    const MedianSource<Sample>& m_source;
    WindowShape m_shape;
    bool m_searchLower;
    Columns<Count> m_columns;
    ColumnValues<Sample> m_values;
    std::vector<Sample> m_found;
    std::vector<Total> m_ranks;
};

/// The cheapest way, with counters as narrow as the window allows.
template <class Sample>
TIRN_INLINE void medianOfAny(const MedianSource<Sample>& source, const WindowShape& shape,
                             const FilterPart& part, Sample* to)
{
    const MedianCosts costs(shape, sizeof(Sample));
    const bool searchLower = costs.lowerSearch <= costs.lowerCounters;
    if (costs.searchAlone())
        searchPart(source, shape, part, to);
    else if (shape.column() <= 255 && shape.voxels() <= 65535)
        HistogramMedian<Sample, std::uint8_t, std::uint16_t>(source, shape, searchLower).run(part, to);
    else if (shape.voxels() <= 65535)
        HistogramMedian<Sample, std::uint16_t, std::uint16_t>(source, shape, searchLower).run(part, to);
    else
        HistogramMedian<Sample, std::uint16_t, std::uint32_t>(source, shape, searchLower).run(part, to);
}

} // namespace

TIRN_TARGET_CLONES void medianOfPart(const MedianSource<std::uint8_t>& source, int half, int halfZ, int bits,
                                     const FilterPart& part, std::uint8_t* to)
{
    medianOfAny(source, {half, halfZ, bits}, part, to);
}

TIRN_TARGET_CLONES void medianOfPart(const MedianSource<std::uint16_t>& source, int half, int halfZ, int bits,
                                     const FilterPart& part, std::uint16_t* to)
{
    medianOfAny(source, {half, halfZ, bits}, part, to);
}

} // namespace tirn
