#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "image/targetclones.h"

namespace tirn {

/// Values of a digit: histograms are trees of sixteen counters a node.
constexpr int kDigit = 16;

/// Sixteen numbers side by side, which the processor adds and compares at once.
template <class Number>
struct Lanes
{
    typedef Number Vector __attribute__((vector_size(kDigit * sizeof(Number))));
    Vector numbers = {};

    Lanes() = default;
    TIRN_INLINE explicit Lanes(const Number* from) { std::memcpy(&numbers, from, sizeof numbers); }
    TIRN_INLINE void store(Number* to) const { std::memcpy(to, &numbers, sizeof numbers); }

    /// The counts of another width as numbers of this one.
    template <class Other>
    TIRN_INLINE void add(const Other* counts)
    {
        numbers += __builtin_convertvector(Lanes<Other>(counts).numbers, Vector);
    }
    template <class Other>
    TIRN_INLINE void take(const Other* counts)
    {
        numbers -= __builtin_convertvector(Lanes<Other>(counts).numbers, Vector);
    }

    template <class Other>
    TIRN_INLINE void addLanes(const Lanes<Other>& other)
    {
        numbers += __builtin_convertvector(other.numbers, Vector);
    }

    /// How many of the numbers are below `limit`, when they rise from the first to the last.
    TIRN_INLINE int countBelow(Number limit) const
    {
        typedef std::int8_t Bytes __attribute__((vector_size(kDigit)));
        const auto bytes = __builtin_convertvector(numbers < limit, Bytes);
#ifdef __SSE2__
        return std::countr_one(static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(bytes))));
#else
        std::uint64_t halves[2];
        std::memcpy(halves, &bytes, sizeof halves);
        return (std::popcount(halves[0]) + std::popcount(halves[1])) / 8;
#endif
    }

    /// Each number becomes the sum of all up to it.
    TIRN_INLINE void sumUp()
    {
        constexpr auto places = std::make_integer_sequence<int, kDigit>();
        addShifted<1>(places);
        addShifted<2>(places);
        addShifted<4>(places);
        addShifted<8>(places);
    }

private:
    template <int By, int... Place>
    TIRN_INLINE void addShifted(std::integer_sequence<int, Place...>)
    {
        const Vector zeros = {};
        numbers += __builtin_shufflevector(zeros, numbers, (Place < By ? Place : kDigit + Place - By)...);
    }
};

/// Steps[v] has a one in each place above v: added for each value, place k counts the values below k.
template <class Number>
struct Steps
{
    alignas(64) Number places[kDigit][kDigit];

    Steps()
    {
        for (int value = 0; value < kDigit; ++value) {
            for (int place = 0; place < kDigit; ++place)
                places[value][place] = place > value ? 1 : 0;
        }
    }
};

/// Histograms of the columns of a window by the eight highest bits of their values: the first digit in one
/// node, the second in sixteen. All counters tell how many values lie below their own.
template <class Count>
class Columns
{
public:
    /// Columns outside stand for the nearest one.
    Columns(int columns, int half) : m_counts(static_cast<std::size_t>(columns) * kColumn)
    {
        for (int column = -half - 1; column <= columns + half; ++column)
            m_at.push_back(m_counts.data() + std::clamp(column, 0, columns - 1) * kColumn);
    }
    Columns(const Columns&) = delete;
    Columns& operator=(const Columns&) = delete;

    /// The first nodes of the columns; that of column 0 is at half + 1.
    const Count* const* table() const { return m_at.data(); }

    void clear() { std::fill(m_counts.begin(), m_counts.end(), Count{0}); }

    /// Adds a value of eight bits to a column inside.
    TIRN_INLINE void enter(int column, int value)
    {
        Count* at = m_counts.data() + column * kColumn;
        Lanes<Count> first(at);
        first.add(m_steps.places[value >> 4]);
        first.store(at);
        Count* node = at + kDigit + (value >> 4) * kDigit;
        Lanes<Count> second(node);
        second.add(m_steps.places[value & 15]);
        second.store(node);
    }

    /// Puts one value in the place of another.
    TIRN_INLINE void exchange(int column, int entering, int leaving)
    {
        Count* at = m_counts.data() + column * kColumn;
        Lanes<Count> first(at);
        first.add(m_steps.places[entering >> 4]);
        first.take(m_steps.places[leaving >> 4]);
        first.store(at);
        Count* node = at + kDigit + (entering >> 4) * kDigit;
        Lanes<Count> second(node);
        second.add(m_steps.places[entering & 15]);
        second.store(node);
        node = at + kDigit + (leaving >> 4) * kDigit;
        Lanes<Count> third(node);
        third.take(m_steps.places[leaving & 15]);
        third.store(node);
    }

private:
    static constexpr std::ptrdiff_t kColumn = kDigit + kDigit * kDigit;

    Steps<Count> m_steps;
    std::vector<Count> m_counts;
    std::vector<const Count*> m_at;
};

/// The histogram of a window that slides along a row: sums of the columns'. The nodes of the second digit are
/// brought up to date only when they are looked at.
template <class Count, class Total>
class Window
{
public:
    /// A column holds at most `columnValues` values.
    Window(const Columns<Count>& columns, int half, int columnValues)
        : m_columns(columns.table() + half + 1), m_half(half),
          m_together(std::max(1, static_cast<int>(std::numeric_limits<Count>::max()) / columnValues))
    {}

    /// The window of the first voxel of a row.
    TIRN_INLINE void start()
    {
        Lanes<Total> sum;
        for (int column = -m_half; column <= m_half; ++column)
            sum.add(first(column));
        sum.store(m_first);
        std::fill_n(m_validAt, kDigit, kNever);
    }

    /// Moves on to voxel x from the one before.
    TIRN_INLINE void step(int x)
    {
        Lanes<Total> sum(m_first);
        sum.add(first(x + m_half));
        sum.take(first(x - m_half - 1));
        sum.store(m_first);
    }

    /// The eight highest bits of the value of a rank (from 1); the rank becomes that among the values that
    /// share them.
    TIRN_INLINE int find(int x, Total& rank)
    {
        const int node = Lanes<Total>(m_first).countBelow(rank) - 1;
        rank = static_cast<Total>(rank - m_first[node]);
        const Lanes<Total> counts = broughtUp(node, x);
        const int place = counts.countBelow(rank) - 1;
        alignas(64) Total sums[kDigit];
        counts.store(sums);
        rank = static_cast<Total>(rank - sums[place]);
        return node * kDigit + place;
    }

private:
    static constexpr int kSmall = 8;
    static constexpr int kNever = -100000000;

    /// The node's counts for the window of voxel x.
    TIRN_INLINE Lanes<Total> broughtUp(int node, int x)
    {
        // Adding up a small window anew is cheaper than guessing wrong whether that is needed.
        if (m_half <= kSmall)
            return addedUp(node, x);
        const int behind = x - m_validAt[node];
        m_validAt[node] = x;
        Lanes<Total> counts;
        if (behind * 4 <= m_half) {
            counts = Lanes<Total>(m_second[node]);
            for (int at = x - behind + 1; at <= x; ++at) {
                counts.add(second(at + m_half, node));
                counts.take(second(at - m_half - 1, node));
            }
        } else {
            counts = addedUp(node, x);
        }
        counts.store(m_second[node]);
        return counts;
    }

    TIRN_INLINE Lanes<Total> addedUp(int node, int x) const
    {
        Lanes<Total> counts;
        // As many columns at a time as narrow counters can hold.
        for (int column = x - m_half; column <= x + m_half;) {
            const int end = std::min(x + m_half + 1, column + m_together);
            Lanes<Count> narrow(second(column, node));
            for (++column; column < end; ++column)
                narrow.add(second(column, node));
            counts.addLanes(narrow);
        }
        return counts;
    }

    const Count* first(int column) const { return m_columns[column]; }
    const Count* second(int column, int node) const { return first(column) + kDigit + node * kDigit; }

    const Count* const* m_columns;
    int m_half;
    int m_together;
    alignas(64) Total m_first[kDigit];
    alignas(64) Total m_second[kDigit][kDigit];
    /// The voxel for which a node was last looked at.
    int m_validAt[kDigit];
};

/// Plain counters of the values of a window, for the digits behind the eighth bit. Two sets take turns, so
/// that counting equal values does not always wait for the count before.
template <class Total>
class LowerDigits
{
public:
    /// Values of `bits` bits, more than 8.
    explicit LowerDigits(int bits)
        : m_nodeBits(std::min(bits - 8, 4)), m_fineBits(std::max(0, bits - 12)),
          m_middleSize((std::ptrdiff_t{1} << (8 + m_nodeBits)) + kDigit),
          m_fineSize(m_fineBits > 0 ? (std::ptrdiff_t{1} << bits) + kDigit : 0),
          m_counters(static_cast<std::size_t>(2 * (m_middleSize + m_fineSize)))
    {}

    /// Takes one column of an odd number of values out of the window and another one in.
    TIRN_INLINE void exchange(const std::uint16_t* leaving, const std::uint16_t* entering, int count)
    {
        countAll<-1>(leaving, count);
        countAll<1>(entering, count);
    }
    TIRN_INLINE void enter(const std::uint16_t* values, int count) { countAll<1>(values, count); }
    TIRN_INLINE void leave(const std::uint16_t* values, int count) { countAll<-1>(values, count); }

    /// The value of a rank among those that begin with the eight bits `top`.
    TIRN_INLINE int find(int top, Total rank) const
    {
        const int first = top << m_nodeBits;
        const int middle = first + place(m_counters.data() + first, m_middleSize, rank);
        if (m_fineBits == 0)
            return middle;
        const int fine = middle << m_fineBits;
        return fine + place(m_counters.data() + 2 * m_middleSize + fine, m_fineSize, rank);
    }

private:
    template <int By>
    TIRN_INLINE void countAll(const std::uint16_t* values, int count)
    {
        Total* even = m_counters.data();
        Total* odd = even + m_middleSize;
        if (m_fineBits == 0) {
            for (int i = 0; i < count - 1; i += 2) {
                even[values[i]] += static_cast<Total>(By);
                odd[values[i + 1]] += static_cast<Total>(By);
            }
            even[values[count - 1]] += static_cast<Total>(By);
            return;
        }
        const int shift = m_fineBits;
        Total* evenFine = even + 2 * m_middleSize;
        Total* oddFine = evenFine + m_fineSize;
        for (int i = 0; i < count - 1; i += 2) {
            even[values[i] >> shift] += static_cast<Total>(By);
            evenFine[values[i]] += static_cast<Total>(By);
            odd[values[i + 1] >> shift] += static_cast<Total>(By);
            oddFine[values[i + 1]] += static_cast<Total>(By);
        }
        even[values[count - 1] >> shift] += static_cast<Total>(By);
        evenFine[values[count - 1]] += static_cast<Total>(By);
    }

    /// The place among sixteen counters where the rank is reached; the rank becomes that within the place.
    TIRN_INLINE static int place(const Total* counters, std::ptrdiff_t distance, Total& rank)
    {
        Lanes<Total> counts(counters);
        counts.add(counters + distance);
        counts.sumUp();
        const int found = counts.countBelow(rank);
        // In front of the sums stands that of no counters, so that no place is a special one.
        alignas(64) Total sums[2 * kDigit];
        sums[kDigit - 1] = 0;
        counts.store(sums + kDigit);
        rank = static_cast<Total>(rank - sums[kDigit - 1 + found]);
        return found;
    }

    int m_nodeBits;
    int m_fineBits;
    std::ptrdiff_t m_middleSize;
    std::ptrdiff_t m_fineSize;
    /// Two sets of counters of the middle digit, then two of the last one.
    std::vector<Total> m_counters;
};

} // namespace tirn
