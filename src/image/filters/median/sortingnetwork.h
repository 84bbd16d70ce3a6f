#pragma once

#include "image/targetclones.h"

namespace tirn {

// Networks of comparisons over plain values. They have no branches, so that a loop over them becomes one over
// whole vectors; what a caller does not use of the results costs nothing.

template <class T>
TIRN_INLINE T lesser(T a, T b)
{
    return a < b ? a : b;
}

template <class T>
TIRN_INLINE T greater(T a, T b)
{
    return a < b ? b : a;
}

template <class T>
TIRN_INLINE void order(T& a, T& b)
{
    const T low = lesser(a, b);
    b = greater(a, b);
    a = low;
}

template <class T>
TIRN_INLINE void sort3(T& a, T& b, T& c)
{
    order(a, b);
    order(b, c);
    order(a, b);
}

template <class T>
TIRN_INLINE T median3(T a, T b, T c)
{
    return greater(lesser(a, b), lesser(greater(a, b), c));
}

/// Nine comparisons, the fewest there are.
template <class T>
TIRN_INLINE void sort5(T& a, T& b, T& c, T& d, T& e)
{
    order(a, d);
    order(b, e);
    order(a, c);
    order(b, d);
    order(a, b);
    order(c, e);
    order(b, c);
    order(d, e);
    order(c, d);
}

/// Nine values of which v0..v2, v3..v5 and v6..v8 are in order each.
template <class T>
TIRN_INLINE void mergeTriples(T (&v)[9])
{
    sort3(v[0], v[3], v[6]);
    sort3(v[1], v[4], v[7]);
    sort3(v[2], v[5], v[8]);
    // Rows and columns are in order now: v0 is the least, v8 the greatest.
    order(v[2], v[6]);
    order(v[1], v[3]);
    order(v[5], v[7]);
    order(v[2], v[3]);
    order(v[3], v[4]);
    order(v[4], v[6]);
    order(v[5], v[6]);
}

/// a0 <= a1 <= a2 and b0 <= b1 <= b2 become six values in order.
template <class T>
TIRN_INLINE void merge3And3(const T (&a)[3], const T (&b)[3], T (&out)[6])
{
    // Odd-even merge: the even places, the odd ones, and the neighbours between them.
    T e0 = a[0];
    T e1 = a[2];
    T f0 = b[0];
    T f1 = b[2];
    order(e0, f0);
    order(e1, f1);
    order(f0, e1);
    T o0 = a[1];
    T o1 = b[1];
    order(o0, o1);
    out[0] = e0;
    out[1] = lesser(f0, o0);
    out[2] = greater(f0, o0);
    out[3] = lesser(e1, o1);
    out[4] = greater(e1, o1);
    out[5] = f1;
}

/// Two orders of four become one of eight.
template <class T>
TIRN_INLINE void merge4And4(const T (&a)[4], const T (&b)[4], T (&out)[8])
{
    T e0 = a[0];
    T e1 = a[2];
    T f0 = b[0];
    T f1 = b[2];
    order(e0, f0);
    order(e1, f1);
    order(f0, e1);
    T o0 = a[1];
    T o1 = a[3];
    T p0 = b[1];
    T p1 = b[3];
    order(o0, p0);
    order(o1, p1);
    order(p0, o1);
    out[0] = e0;
    out[1] = lesser(o0, f0);
    out[2] = greater(o0, f0);
    out[3] = lesser(p0, e1);
    out[4] = greater(p0, e1);
    out[5] = lesser(o1, f1);
    out[6] = greater(o1, f1);
    out[7] = p1;
}

/// The rank-th least (from 1) of two orders: the least of what the larger ends of all their splits are.
template <int Rank, int CountA, int CountB, class T>
TIRN_INLINE T rankOfTwo(const T (&a)[CountA], const T (&b)[CountB])
{
    bool first = true;
    T result{};
    for (int fromA = 0; fromA <= CountA; ++fromA) {
        const int fromB = Rank - fromA;
        if (fromB < 0 || fromB > CountB)
            continue;
        const T end = fromA == 0   ? b[fromB - 1]
                      : fromB == 0 ? a[fromA - 1]
                                   : greater(a[fromA - 1], b[fromB - 1]);
        result = first ? end : lesser(result, end);
        first = false;
    }
    return result;
}

/// The median of 25 values in five columns, each in order, whose i-th rows are `column[i]`.
///
/// Sorting the rows as well leaves a square in order both ways, where a value with more than twelve others on
/// one side of it is out; thirteen remain, four chains of three and the centre.
template <class T>
TIRN_INLINE T medianOfSquare(T (&v)[5][5])
{
    for (int i = 0; i < 5; ++i)
        sort5(v[i][0], v[i][1], v[i][2], v[i][3], v[i][4]);
    const T a[3] = {v[3][0], v[4][0], v[4][1]};
    const T b[3] = {v[2][1], v[3][1], v[3][2]};
    const T c[3] = {v[1][2], v[1][3], v[2][3]};
    const T d[3] = {v[0][3], v[0][4], v[1][4]};
    T ab[6];
    T cd[6];
    merge3And3(a, b, ab);
    merge3And3(c, d, cd);
    const T below = rankOfTwo<6>(ab, cd);
    const T above = rankOfTwo<7>(ab, cd);
    return lesser(greater(v[2][2], below), above);
}

/// The median of 27 values: three orders of nine, whose i-th values are p[i], q[i] and r[i].
///
/// As above, sorting across them leaves thirteen values that can be the median, in orders of four, five and
/// four.
template <class T>
TIRN_INLINE T medianOfNines(T (&p)[9], T (&q)[9], T (&r)[9])
{
    for (int i = 0; i < 9; ++i)
        sort3(p[i], q[i], r[i]);
    const T low[4] = {p[5], p[6], p[7], p[8]};
    const T middle[5] = {q[2], q[3], q[4], q[5], q[6]};
    const T high[4] = {r[0], r[1], r[2], r[3]};
    T both[8];
    merge4And4(low, high, both);
    return rankOfTwo<7>(both, middle);
}

} // namespace tirn
