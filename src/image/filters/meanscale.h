#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "image/shortscale.h"
#include "image/targetclones.h"

namespace tirn {

/// What the loops of the mean need to know of a stack and its window.
struct MeanJob
{
    std::int64_t x;
    int y;
    int z;
    int channels;
    int half;
    /// The half-width along z, 0 in 2D.
    int halfZ;
    double divisor;

    std::int64_t rowSamples() const { return x * channels; }
    /// Rows and layers outside are those at the edge.
    const auto* row(const auto* stack, int rowY, int layer) const
    {
        return stack +
               (std::int64_t{std::clamp(layer, 0, z - 1)} * y + std::clamp(rowY, 0, y - 1)) * rowSamples();
    }
};

/// How a sum becomes a sample: floor(sum / divisor + 0.5).
struct MeanScale
{
    /// floor((sum + divisor / 2 + 0.5) / divisor) of whole numbers is the same, and its quotients lie half of
    /// 1 / divisor off the whole numbers: as long as rounding is smaller than that, a product will do.
    double offset = 0;
    double factor = 0;
    bool single = false;
    bool exact = true;
    ShortScale brief;

    MeanScale(const MeanJob& job, double largestSum)
        : brief(static_cast<std::uint32_t>(largestSum),
                static_cast<std::uint32_t>(std::min(job.divisor, 65536.0)))
    {
        const double d = job.divisor;
        offset = std::floor(d / 2) + 0.5;
        factor = 1 / d;
        const double largest = (largestSum + offset) / d;
        const double margin = 0.5 / d;
        single = largestSum + offset < 4194304.0 && largest * 2.5e-7 < margin;
        exact = largest * 1e-15 < margin && d < 4294967296.0;
    }
};

/// to[i] = the mean that belongs to sums[i].
template <class Sample>
TIRN_INLINE void scaleRow(const std::uint32_t* sums, std::int64_t count, const MeanScale& scale,
                          double divisor, Sample* __restrict to)
{
    if (scale.single) {
        const auto offset = static_cast<float>(scale.offset);
        const auto factor = static_cast<float>(scale.factor);
        for (std::int64_t i = 0; i < count; ++i)
            to[i] = static_cast<Sample>(static_cast<std::int32_t>(
                (static_cast<float>(static_cast<std::int32_t>(sums[i])) + offset) * factor));
    } else if (scale.exact) {
        for (std::int64_t i = 0; i < count; ++i)
            to[i] = static_cast<Sample>(static_cast<std::int32_t>((sums[i] + scale.offset) * scale.factor));
    } else {
        for (std::int64_t i = 0; i < count; ++i)
            to[i] = static_cast<Sample>(static_cast<std::int64_t>(sums[i] / divisor + 0.5));
    }
}

/// The same of sums for which `scale.brief` is valid.
template <class Sample>
TIRN_INLINE void scaleRow(const std::uint16_t* sums, std::int64_t count, const MeanScale& scale,
                          double /*divisor*/, Sample* __restrict to)
{
    const ShortScale brief = scale.brief;
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = static_cast<Sample>(brief.quotient(sums[i]));
}

} // namespace tirn
