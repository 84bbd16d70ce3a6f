#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "image/filters/median/mediansource.h"
#include "image/targetclones.h"

namespace tirn {

/// The rows of a window of medians, as wide as the stack and half a window more on either side. Samples are
/// moved to signed numbers of the same order, which is what processors compare.
template <class Sample>
class WindowRows
{
public:
    using Signed = std::make_signed_t<Sample>;

    /// What is read behind a row's end, at most.
    static constexpr int kSlack = 256;
    static constexpr Sample kBias = static_cast<Sample>(Sample{1} << (8 * sizeof(Sample) - 1));

    WindowRows(const MedianSource<Sample>& source, int half, int halfZ)
        : m_source(source), m_half(half), m_halfZ(halfZ), m_side(2 * half + 1), m_depth(2 * halfZ + 1),
          m_length(source.x + 2 * half + kSlack),
          m_rows(static_cast<std::size_t>(m_length * m_side * m_depth))
    {
        for (int i = 0; i < m_side * m_depth; ++i)
            m_all.push_back(reinterpret_cast<const Signed*>(m_rows.data() + i * m_length));
    }
    WindowRows(const WindowRows&) = delete;
    WindowRows& operator=(const WindowRows&) = delete;

    /// Takes row y of all layers around z in the place of the oldest one.
    TIRN_INLINE void take(int y, int z)
    {
        const int turn = (y % m_side + m_side) % m_side;
        for (int k = 0; k < m_depth; ++k) {
            Sample* row = m_rows.data() + (turn * m_depth + k) * m_length;
            m_source.loadRow(y, z - m_halfZ + k, m_half, row);
            const std::int64_t used = m_source.x + 2 * m_half;
            for (std::int64_t i = 0; i < used; ++i)
                row[i] = static_cast<Sample>(row[i] ^ kBias);
        }
    }

    /// All rows, in no certain order: a median does not ask for it.
    const Signed* const* all() const { return m_all.data(); }
    int count() const { return m_side * m_depth; }

private:
    const MedianSource<Sample>& m_source;
    int m_half;
    int m_halfZ;
    int m_side;
    int m_depth;
    std::int64_t m_length;
    std::vector<Sample> m_rows;
    std::vector<const Signed*> m_all;
};

/// Finds medians bit by bit: a bit is set when too few values of the window lie below the number with it. The
/// work grows with the window's volume, but voxels side by side are done at once and nothing depends on the
/// data.
template <class Sample>
class BitSearch
{
public:
    /// Results of a row must have room for as many more samples.
    static constexpr int kBlock = 4 * 32 / static_cast<int>(sizeof(Sample));

    /// `results` hold the bits above the lowest `bits` and get those. A window has `side` columns of the
    /// rows.
    TIRN_INLINE static void run(const WindowRows<Sample>& rows, int side, int width, int bits,
                                std::int64_t rank, Sample* results)
    {
        for (int x = 0; x < width; x += kBlock)
            searchBlock(rows, side, x, bits, rank, results + x);
    }

private:
    using Signed = typename WindowRows<Sample>::Signed;
    static constexpr int kVectors = 4;
    static constexpr int kLanes = 32 / static_cast<int>(sizeof(Sample));
    typedef Signed Vector __attribute__((vector_size(32)));
    typedef Sample Unsigned __attribute__((vector_size(32)));
    typedef std::int32_t Wide __attribute__((vector_size(kLanes * 4)));

    /// Values counted in a lane before it could overflow.
    static constexpr int kMostCounted = sizeof(Sample) == 1 ? 255 : 65535;

    TIRN_INLINE static void searchBlock(const WindowRows<Sample>& rows, int side, int x, int bits,
                                        std::int64_t rank, Sample* results)
    {
        const int rowsAtOnce = std::max(1, kMostCounted / side);
        Vector found[kVectors];
        std::memcpy(found, results, sizeof found);
        for (int bit = bits - 1; bit >= 0; --bit) {
            Vector limits[kVectors];
            Vector tried[kVectors];
            Wide below[kVectors];
            // Named, since instrumented builds take the cast expressions for plain integers.
            const auto bitValue = static_cast<Signed>(1 << bit);
            const auto bias = static_cast<Signed>(WindowRows<Sample>::kBias);
            for (int v = 0; v < kVectors; ++v) {
                tried[v] = found[v] | bitValue;
                limits[v] = tried[v] ^ bias;
                below[v] = Wide{};
            }
            for (int row = 0; row < rows.count(); row += rowsAtOnce) {
                const int end = std::min(rows.count(), row + rowsAtOnce);
                countBelow(rows.all() + row, end - row, side, x, limits, below);
            }
            for (int v = 0; v < kVectors; ++v) {
                const auto set = __builtin_convertvector(below[v] < static_cast<std::int32_t>(rank), Vector);
                found[v] = (tried[v] & set) | (found[v] & ~set);
            }
        }
        std::memcpy(results, found, sizeof found);
    }

    TIRN_INLINE static void countBelow(const Signed* const* rows, int count, int side, int x,
                                       const Vector (&limits)[kVectors], Wide (&below)[kVectors])
    {
        // Unsigned: as many values as a lane holds are counted, and a mask of -1 is taken off by wrapping.
        Unsigned counts[kVectors] = {};
        for (int row = 0; row < count; ++row) {
            const Signed* values = rows[row] + x;
            for (int column = 0; column < side; ++column, ++values) {
                for (int v = 0; v < kVectors; ++v) {
                    Vector some;
                    std::memcpy(&some, values + v * kLanes, sizeof some);
                    counts[v] -= reinterpret_cast<Unsigned>(some < limits[v]);
                }
            }
        }
        for (int v = 0; v < kVectors; ++v)
            below[v] += __builtin_convertvector(counts[v], Wide);
    }
};

} // namespace tirn
