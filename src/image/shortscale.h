#pragma once

#include <cstdint>

#include "image/targetclones.h"

namespace tirn {

/// floor(sum / divisor + 0.5) in whole numbers of 16 bits, of which processors work on the most at once: the
/// upper half of (sum + divisor / 2) * multiplier, shifted.
struct ShortScale
{
    /// False when the sums or the multiplier do not fit.
    bool valid = false;
    std::uint16_t half = 0;
    std::uint16_t multiplier = 0;
    int shift = 0;

    /// The multiplier is 2^(16 + shift) / divisor, rounded up by less than one. What this adds to a product
    /// has to stay below what keeps quotients off the next whole number.
    ShortScale(std::uint32_t largestSum, std::uint32_t divisor)
    {
        if (divisor < 2 || divisor > 65535 || largestSum > 65535 - divisor / 2)
            return;
        while (std::uint32_t{2} << shift < divisor)
            ++shift;
        const std::uint64_t one = std::uint64_t{65536} << shift;
        const std::uint64_t rounded = (one + divisor - 1) / divisor;
        half = static_cast<std::uint16_t>(divisor / 2);
        multiplier = static_cast<std::uint16_t>(rounded);
        valid = rounded < 65536 && (largestSum + half) * (rounded * divisor - one) < one;
    }

    TIRN_INLINE std::uint16_t quotient(std::uint16_t sum) const
    {
        const auto raised = static_cast<std::uint16_t>(sum + half);
        const auto high = static_cast<std::uint16_t>((std::uint32_t{raised} * multiplier) >> 16);
        return static_cast<std::uint16_t>(high >> shift);
    }
};

} // namespace tirn
