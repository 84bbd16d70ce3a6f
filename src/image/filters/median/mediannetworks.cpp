#include <vector>

#include "image/filters/median/mediansource.h"
#include "image/filters/median/sortingnetwork.h"

namespace tirn {

namespace {

/// Rows of scratch memory of the same length, one after the other.
template <class Sample>
class ScratchRows
{
public:
    ScratchRows(int rows, std::int64_t length)
        : m_length((length + 63) / 64 * 64), m_samples(static_cast<std::size_t>(m_length * rows))
    {}
    Sample* operator[](int row) { return m_samples.data() + row * m_length; }

private:
    std::int64_t m_length;
    std::vector<Sample> m_samples;
};

/// Copies a row of results to their places in the stack.
template <class Sample>
TIRN_INLINE void storeRow(const MedianSource<Sample>& source, const Sample* row, int y, int z, Sample* to)
{
    Sample* out = to + (std::int64_t{z} * source.y + y) * source.x * source.channels + source.channel;
    if (source.channels == 1) {
        std::copy_n(row, source.x, out);
        return;
    }
    for (int i = 0; i < source.x; ++i)
        out[static_cast<std::int64_t>(i) * source.channels] = row[i];
}

/// The three rows in order, column by column.
template <class Sample>
TIRN_INLINE void sortColumns3(const Sample* r0, const Sample* r1, const Sample* r2, std::int64_t count,
                              Sample* __restrict low, Sample* __restrict middle, Sample* __restrict high)
{
#pragma GCC ivdep
    for (std::int64_t i = 0; i < count; ++i) {
        Sample a = r0[i];
        Sample b = r1[i];
        Sample c = r2[i];
        sort3(a, b, c);
        low[i] = a;
        middle[i] = b;
        high[i] = c;
    }
}

/// 3 x 3: the middle of the largest low, the middle middle and the smallest high value of three columns.
template <class Sample>
TIRN_INLINE void median9(const MedianSource<Sample>& source, const FilterPart& part, Sample* to)
{
    // A copy: the compiler must not fear that storing bytes changes it.
    const int width = source.x;
    const std::int64_t padded = width + 2;
    ScratchRows<Sample> rows(3, padded);
    ScratchRows<Sample> sorted(3, padded);
    ScratchRows<Sample> result(1, source.x);
    for (int z = part.z0; z < part.z1; ++z) {
        for (int y = part.y0 - 1; y < part.y1 + 1; ++y) {
            source.loadRow(y, z, 1, rows[(y + 3) % 3]);
            if (y <= part.y0)
                continue;
            sortColumns3(rows[0], rows[1], rows[2], padded, sorted[0], sorted[1], sorted[2]);
            const Sample* low = sorted[0];
            const Sample* middle = sorted[1];
            const Sample* high = sorted[2];
            Sample* __restrict out = result[0];
#pragma GCC ivdep
            for (int i = 0; i < width; ++i) {
                const Sample least = greater(greater(low[i], low[i + 1]), low[i + 2]);
                const Sample most = lesser(lesser(high[i], high[i + 1]), high[i + 2]);
                out[i] = median3(least, median3(middle[i], middle[i + 1], middle[i + 2]), most);
            }
            storeRow(source, out, y - 1, z, to);
        }
    }
}

template <class Sample>
TIRN_INLINE void median25(const MedianSource<Sample>& source, const FilterPart& part, Sample* to)
{
    // A copy: the compiler must not fear that storing bytes changes it.
    const int width = source.x;
    const std::int64_t padded = width + 4;
    ScratchRows<Sample> rows(5, padded);
    ScratchRows<Sample> sorted(5, padded);
    ScratchRows<Sample> result(1, source.x);
    for (int z = part.z0; z < part.z1; ++z) {
        for (int y = part.y0 - 2; y < part.y1 + 2; ++y) {
            source.loadRow(y, z, 2, rows[(y + 5) % 5]);
            if (y < part.y0 + 2)
                continue;
            const Sample* r[5] = {rows[0], rows[1], rows[2], rows[3], rows[4]};
            Sample* s[5] = {sorted[0], sorted[1], sorted[2], sorted[3], sorted[4]};
            Sample* __restrict s0 = s[0];
            Sample* __restrict s1 = s[1];
            Sample* __restrict s2 = s[2];
            Sample* __restrict s3 = s[3];
            Sample* __restrict s4 = s[4];
#pragma GCC ivdep
            for (std::int64_t i = 0; i < padded; ++i) {
                Sample v[5] = {r[0][i], r[1][i], r[2][i], r[3][i], r[4][i]};
                sort5(v[0], v[1], v[2], v[3], v[4]);
                s0[i] = v[0];
                s1[i] = v[1];
                s2[i] = v[2];
                s3[i] = v[3];
                s4[i] = v[4];
            }
            Sample* __restrict out = result[0];
#pragma GCC ivdep
            for (int i = 0; i < width; ++i) {
                Sample v[5][5] = {{s0[i], s0[i + 1], s0[i + 2], s0[i + 3], s0[i + 4]},
                                  {s1[i], s1[i + 1], s1[i + 2], s1[i + 3], s1[i + 4]},
                                  {s2[i], s2[i + 1], s2[i + 2], s2[i + 3], s2[i + 4]},
                                  {s3[i], s3[i + 1], s3[i + 2], s3[i + 3], s3[i + 4]},
                                  {s4[i], s4[i + 1], s4[i + 2], s4[i + 3], s4[i + 4]}};
                out[i] = medianOfSquare(v);
            }
            storeRow(source, out, y - 2, z, to);
        }
    }
}

/// The rows of three layers at one y, in order along z, and then all nine of three columns in order.
template <class Sample>
TIRN_INLINE void sortNines(const MedianSource<Sample>& source, int y, int z, ScratchRows<Sample>& scratch,
                           ScratchRows<Sample>& nines, int slot)
{
    const std::int64_t padded = source.x + 2;
    for (int k = 0; k < 3; ++k)
        source.loadRow(y, z - 1 + k, 1, scratch[k]);
    sortColumns3(scratch[0], scratch[1], scratch[2], padded, scratch[3], scratch[4], scratch[5]);
    const Sample* low = scratch[3];
    const Sample* middle = scratch[4];
    const Sample* high = scratch[5];
    Sample* to[9];
    for (int k = 0; k < 9; ++k)
        to[k] = nines[slot * 9 + k];
    const int width = source.x;
#pragma GCC ivdep
    for (int i = 0; i < width; ++i) {
        Sample v[9] = {low[i],      middle[i],  high[i],       low[i + 1], middle[i + 1],
                       high[i + 1], low[i + 2], middle[i + 2], high[i + 2]};
        mergeTriples(v);
        for (int k = 0; k < 9; ++k)
            to[k][i] = v[k];
    }
}

template <class Sample>
TIRN_INLINE void median27(const MedianSource<Sample>& source, const FilterPart& part, Sample* to)
{
    const int width = source.x;
    ScratchRows<Sample> scratch(6, width + 2);
    ScratchRows<Sample> nines(27, source.x);
    ScratchRows<Sample> result(1, source.x);
    for (int z = part.z0; z < part.z1; ++z) {
        for (int y = part.y0 - 1; y < part.y1 + 1; ++y) {
            sortNines(source, y, z, scratch, nines, (y + 3) % 3);
            if (y <= part.y0)
                continue;
            const Sample* n[27];
            for (int k = 0; k < 27; ++k)
                n[k] = nines[k];
            Sample* __restrict out = result[0];
#pragma GCC ivdep
            for (int i = 0; i < width; ++i) {
                Sample p[9];
                Sample q[9];
                Sample r[9];
                for (int k = 0; k < 9; ++k) {
                    p[k] = n[k][i];
                    q[k] = n[9 + k][i];
                    r[k] = n[18 + k][i];
                }
                out[i] = medianOfNines(p, q, r);
            }
            storeRow(source, out, y - 1, z, to);
        }
    }
}

template <class Sample>
TIRN_INLINE void medianOf3(const MedianSource<Sample>& source, bool is3D, const FilterPart& part, Sample* to)
{
    if (is3D)
        median27(source, part, to);
    else
        median9(source, part, to);
}

} // namespace

TIRN_TARGET_CLONES void medianOfPart3(const MedianSource<std::uint8_t>& source, bool is3D,
                                      const FilterPart& part, std::uint8_t* to)
{
    medianOf3(source, is3D, part, to);
}

TIRN_TARGET_CLONES void medianOfPart3(const MedianSource<std::uint16_t>& source, bool is3D,
                                      const FilterPart& part, std::uint16_t* to)
{
    medianOf3(source, is3D, part, to);
}

TIRN_TARGET_CLONES void medianOfPart5(const MedianSource<std::uint8_t>& source, const FilterPart& part,
                                      std::uint8_t* to)
{
    median25(source, part, to);
}

TIRN_TARGET_CLONES void medianOfPart5(const MedianSource<std::uint16_t>& source, const FilterPart& part,
                                      std::uint16_t* to)
{
    median25(source, part, to);
}

} // namespace tirn
