#pragma once

#include <algorithm>
#include <cstdint>

#include "image/filters/filterparts.h"
#include "image/targetclones.h"

namespace tirn {

/// One channel of a stack as the median filter sees it: edges repeat, and a value that the search through a
/// histogram would pass over, below `lowest` or above `highest`, counts as the highest.
template <class Sample>
struct MedianSource
{
    const Sample* samples;
    int x;
    int y;
    int z;
    int channels;
    int channel;
    int lowest;
    int highest;

    const Sample* row(int rowY, int layer) const
    {
        const std::int64_t layerAt = std::clamp(layer, 0, z - 1);
        return samples + (layerAt * y + std::clamp(rowY, 0, y - 1)) * x * channels + channel;
    }
    std::int64_t column(int columnX) const { return std::int64_t{std::clamp(columnX, 0, x - 1)} * channels; }

    TIRN_INLINE Sample seen(Sample value) const
    {
        return value < lowest || value > highest ? static_cast<Sample>(highest) : value;
    }

    /// The row with `half` voxels beside it on either side, samples side by side.
    TIRN_INLINE void loadRow(int rowY, int layer, int half, Sample* __restrict to) const
    {
        const Sample* from = row(rowY, layer);
        // Copies: the compiler must not fear that storing bytes changes them.
        const MedianSource source = *this;
        Sample* __restrict middle = to + half;
        if (source.channels == 1) {
            for (int i = 0; i < source.x; ++i)
                middle[i] = source.seen(from[i]);
        } else {
            for (int i = 0; i < source.x; ++i)
                middle[i] = source.seen(from[static_cast<std::int64_t>(i) * source.channels]);
        }
        std::fill_n(to, half, middle[0]);
        std::fill_n(middle + source.x, half, middle[source.x - 1]);
    }
};

/// A part of a channel by its median; `to` is the stack of results, laid out like the source.
/// Windows of 3 x 3 and 5 x 5, and of 3 x 3 x 3, by networks of comparisons over whole rows.
void medianOfPart3(const MedianSource<std::uint8_t>& source, bool is3D, const FilterPart& part,
                   std::uint8_t* to);
void medianOfPart3(const MedianSource<std::uint16_t>& source, bool is3D, const FilterPart& part,
                   std::uint16_t* to);
void medianOfPart5(const MedianSource<std::uint8_t>& source, const FilterPart& part, std::uint8_t* to);
void medianOfPart5(const MedianSource<std::uint16_t>& source, const FilterPart& part, std::uint16_t* to);

/// Any window of 2 * half + 1 voxels an axis, along z by `halfZ`, by histograms of columns. `bits` hold every
/// value that the source shows.
void medianOfPart(const MedianSource<std::uint8_t>& source, int half, int halfZ, int bits,
                  const FilterPart& part, std::uint8_t* to);
void medianOfPart(const MedianSource<std::uint16_t>& source, int half, int halfZ, int bits,
                  const FilterPart& part, std::uint16_t* to);

} // namespace tirn
