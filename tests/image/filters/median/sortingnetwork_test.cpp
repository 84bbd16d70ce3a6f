#include "image/filters/median/sortingnetwork.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace tirn {
namespace {

// What sorts all rows of zeros and ones sorts everything, so these are complete.

/// The order of `count` zeros and ones with `ones` ones.
std::vector<int> ordered(int count, int ones)
{
    std::vector<int> values(static_cast<std::size_t>(count - ones), 0);
    values.resize(static_cast<std::size_t>(count), 1);
    return values;
}

int rankOf(std::vector<int> values, int rank)
{
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(rank - 1)];
}

TEST(SortingNetwork, SortsFive)
{
    for (int bits = 0; bits < 32; ++bits) {
        int v[5] = {bits & 1, bits >> 1 & 1, bits >> 2 & 1, bits >> 3 & 1, bits >> 4 & 1};
        sort5(v[0], v[1], v[2], v[3], v[4]);
        EXPECT_TRUE(std::is_sorted(v, v + 5)) << bits;
    }
}

TEST(SortingNetwork, SortsThreeAndTakesTheirMedian)
{
    for (int bits = 0; bits < 8; ++bits) {
        int a = bits & 1;
        int b = bits >> 1 & 1;
        int c = bits >> 2 & 1;
        EXPECT_EQ(median3(a, b, c), rankOf({a, b, c}, 2));
        sort3(a, b, c);
        EXPECT_TRUE(a <= b && b <= c);
    }
}

TEST(SortingNetwork, MergesThreeTriples)
{
    for (int i = 0; i < 64; ++i) {
        int v[9];
        for (int k = 0; k < 3; ++k) {
            const std::vector<int> triple = ordered(3, i >> (2 * k) & 3);
            std::copy(triple.begin(), triple.end(), v + 3 * k);
        }
        mergeTriples(v);
        EXPECT_TRUE(std::is_sorted(v, v + 9)) << i;
    }
}

TEST(SortingNetwork, MergesTwoOrders)
{
    for (int i = 0; i <= 4; ++i) {
        for (int k = 0; k <= 4; ++k) {
            int a[4];
            int b[4];
            int out[8];
            std::ranges::copy(ordered(4, i), a);
            std::ranges::copy(ordered(4, k), b);
            merge4And4(a, b, out);
            EXPECT_TRUE(std::is_sorted(out, out + 8)) << i << k;
            EXPECT_EQ(std::count(out, out + 8, 1), i + k);
        }
    }
    for (int i = 0; i <= 3; ++i) {
        for (int k = 0; k <= 3; ++k) {
            int a[3];
            int b[3];
            int out[6];
            std::ranges::copy(ordered(3, i), a);
            std::ranges::copy(ordered(3, k), b);
            merge3And3(a, b, out);
            EXPECT_TRUE(std::is_sorted(out, out + 6)) << i << k;
            EXPECT_EQ(std::count(out, out + 6, 1), i + k);
        }
    }
}

TEST(SortingNetwork, FindsARankInTwoOrders)
{
    for (int i = 0; i <= 8; ++i) {
        for (int k = 0; k <= 5; ++k) {
            int a[8];
            int b[5];
            std::ranges::copy(ordered(8, i), a);
            std::ranges::copy(ordered(5, k), b);
            std::vector<int> all = ordered(8, i);
            for (const int value : b)
                all.push_back(value);
            EXPECT_EQ((rankOfTwo<7>(a, b)), rankOf(all, 7));
            EXPECT_EQ((rankOfTwo<1>(a, b)), rankOf(all, 1));
            EXPECT_EQ((rankOfTwo<13>(a, b)), rankOf(all, 13));
        }
    }
}

TEST(SortingNetwork, TakesTheMedianOfASquareOfSortedColumns)
{
    for (int i = 0; i < 6 * 6 * 6 * 6 * 6; ++i) {
        int v[5][5];
        std::vector<int> all;
        for (int column = 0, rest = i; column < 5; ++column, rest /= 6) {
            const std::vector<int> values = ordered(5, rest % 6);
            for (std::size_t row = 0; row < 5; ++row) {
                v[row][column] = values[row];
                all.push_back(values[row]);
            }
        }
        ASSERT_EQ(medianOfSquare(v), rankOf(all, 13)) << i;
    }
}

TEST(SortingNetwork, TakesTheMedianOfThreeOrdersOfNine)
{
    for (int i = 0; i < 1000; ++i) {
        int v[3][9];
        std::vector<int> all;
        for (int k = 0, rest = i; k < 3; ++k, rest /= 10) {
            const std::vector<int> values = ordered(9, rest % 10);
            std::copy(values.begin(), values.end(), v[k]);
            all.insert(all.end(), values.begin(), values.end());
        }
        ASSERT_EQ(medianOfNines(v[0], v[1], v[2]), rankOf(all, 14)) << i;
    }
}

} // namespace
} // namespace tirn
