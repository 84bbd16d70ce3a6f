#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>

namespace tirn {

/// The product of non-negative factors, or nothing when one is negative or the product needs more than 63
/// bits.
inline std::optional<std::int64_t> checkedProduct(std::initializer_list<std::int64_t> factors)
{
    std::int64_t product = 1;
    for (const std::int64_t factor : factors) {
        if (factor < 0 || __builtin_mul_overflow(product, factor, &product))
            return std::nullopt;
    }
    return product;
}

/// The sum of non-negative terms, or nothing when one is negative or the sum overflows.
inline std::optional<std::int64_t> checkedSum(std::initializer_list<std::int64_t> terms)
{
    std::int64_t sum = 0;
    for (const std::int64_t term : terms) {
        if (term < 0 || __builtin_add_overflow(sum, term, &sum))
            return std::nullopt;
    }
    return sum;
}

/// The least power of two that is at least n; 1 for n below 2.
constexpr int next2(int n)
{
    std::int64_t power = 1;
    while (power < n)
        power <<= 1;
    return static_cast<int>(power > INT32_MAX ? INT32_MAX : power);
}

/// The number of bits that hold `value`: 0 for 0, 12 for 4095.
constexpr int bitCount(std::int64_t value)
{
    int bits = 0;
    for (; value > 0; value >>= 1)
        ++bits;
    return bits;
}

} // namespace tirn
