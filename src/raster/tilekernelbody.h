// The arithmetic of the tile kernels, once, for each of the files that compile it for a kind of processor.
// Loops run over all pixels of a tile so that compilers turn them into vector instructions; nothing depends
// on how wide those are. Products and sums stay apart, since fused ones would round differently.

#pragma once

#include "raster/tilekernels.h"

#if defined(__GNUC__)
#define TIRN_KERNEL_PART static inline __attribute__((always_inline))
#else
#define TIRN_KERNEL_PART static inline
#endif

namespace tirn::tilekernel {

constexpr float kFraction = 1.0F / kFractions;
/// Positions with perspective are brought near to the largest plane before they become whole numbers.
constexpr float kLeastTexel = -4;
constexpr float kMostTexel = 65000;

struct Places
{
    alignas(64) std::int32_t u[kTilePixels];
    alignas(64) std::int32_t v[kTilePixels];
    /// All bits for what is inside of the area.
    alignas(64) std::int32_t seen[kTilePixels];
};

TIRN_KERNEL_PART std::int32_t clamped(std::int32_t value, std::int32_t least, std::int32_t most)
{
    const std::int32_t raised = value > least ? value : least;
    return raised < most ? raised : most;
}

/// Also of what is no number.
TIRN_KERNEL_PART float clampedTexel(float texel)
{
    const float raised = texel > kLeastTexel ? texel : kLeastTexel;
    return raised < kMostTexel ? raised : kMostTexel;
}

TIRN_KERNEL_PART std::int32_t fractionsOf(float texel)
{
    return static_cast<std::int32_t>((clampedTexel(texel) - kLeastTexel) * kFractions) +
           static_cast<std::int32_t>(kLeastTexel) * kFractions;
}

TIRN_KERNEL_PART void findAffine(const TileFrame& frame, const TilePlace& place, Places& places)
{
    for (int p = 0; p < kTilePixels; ++p) {
        places.u[p] = place.u + frame.u.parts[static_cast<std::size_t>(p)];
        places.v[p] = place.v + frame.v.parts[static_cast<std::size_t>(p)];
        places.seen[p] = -1;
    }
}

TIRN_KERNEL_PART void findProjective(const TileFrame& frame, const TilePlace& place, Places& places)
{
    const std::array<float, 9>& m = place.toTexel;
    for (int p = 0; p < kTilePixels; ++p) {
        const auto x = static_cast<float>(p % kTileSide);
        const auto y = static_cast<float>(p / kTileSide);
        const float u = m[0] * x + m[1] * y + m[2];
        const float v = m[3] * x + m[4] * y + m[5];
        const float w = m[6] * x + m[7] * y + m[8];
        const float r = 1 / w;
        places.u[p] = fractionsOf(u * r);
        places.v[p] = fractionsOf(v * r);
        places.seen[p] = -static_cast<std::int32_t>(w > 0) & -static_cast<std::int32_t>(w <= frame.mostW);
    }
}

TIRN_KERNEL_PART void findPlaces(const TileFrame& frame, const TileSlice& slice, const TilePlace& place,
                                 Places& places)
{
    if (frame.isProjective)
        findProjective(frame, place, places);
    else
        findAffine(frame, place, places);
    if (!place.isEdge)
        return;
    for (int p = 0; p < kTilePixels; ++p) {
        const std::int32_t u = places.u[p];
        const std::int32_t v = places.v[p];
        places.seen[p] &=
            -static_cast<std::int32_t>(u >= slice.areaU0) & -static_cast<std::int32_t>(u < slice.areaU1) &
            -static_cast<std::int32_t>(v >= slice.areaV0) & -static_cast<std::int32_t>(v < slice.areaV1);
        places.u[p] = clamped(u, frame.clampU0, frame.clampU1);
        places.v[p] = clamped(v, frame.clampV0, frame.clampV1);
    }
}

TIRN_KERNEL_PART std::int16_t roundedProduct(std::int16_t a, std::int16_t b)
{
    return static_cast<std::int16_t>(((a * b >> (kFractionBits - 1)) + 1) >> 1);
}

/// Texels of two rows, each with the one after it above its own bits.
struct Corners
{
    alignas(64) std::uint32_t low[kTilePixels];
    alignas(64) std::uint32_t high[kTilePixels];
};

template <typename T>
TIRN_KERNEL_PART void fetchCorners(const std::uint8_t* bytes, int stride, const Places& places,
                                   Corners& corners)
{
    // One load each, as compilers see.
    constexpr int bits = 8 * sizeof(T);
    const auto* texels = reinterpret_cast<const T*>(bytes);
    alignas(64) std::int32_t offsets[kTilePixels];
    for (int p = 0; p < kTilePixels; ++p)
        offsets[p] = (places.v[p] >> kFractionBits) * stride + (places.u[p] >> kFractionBits);
    for (int p = 0; p < kTilePixels; ++p) {
        const T* at = texels + offsets[p];
        corners.low[p] = at[0] | static_cast<std::uint32_t>(at[1]) << bits;
        corners.high[p] = at[stride] | static_cast<std::uint32_t>(at[stride + 1]) << bits;
    }
}

/// Samples of bytes in parts of 128.
TIRN_KERNEL_PART void sampleBytes(const std::uint8_t* texels, int stride, const Places& places,
                                  std::int16_t* values)
{
    Corners corners;
    fetchCorners<std::uint8_t>(texels, stride, places, corners);
    for (int p = 0; p < kTilePixels; ++p) {
        const auto f = static_cast<std::int16_t>(places.u[p] & (kFractions - 1));
        const auto g = static_cast<std::int16_t>(places.v[p] & (kFractions - 1));
        const auto a = static_cast<std::int16_t>((corners.low[p] & 0xff) << 7);
        const auto b = static_cast<std::int16_t>((corners.low[p] >> 8) << 7);
        const auto c = static_cast<std::int16_t>((corners.high[p] & 0xff) << 7);
        const auto d = static_cast<std::int16_t>((corners.high[p] >> 8) << 7);
        const auto lower = static_cast<std::int16_t>(a + roundedProduct(static_cast<std::int16_t>(b - a), f));
        const auto upper = static_cast<std::int16_t>(c + roundedProduct(static_cast<std::int16_t>(d - c), f));
        values[p] =
            static_cast<std::int16_t>(lower + roundedProduct(static_cast<std::int16_t>(upper - lower), g));
    }
}

TIRN_KERNEL_PART void findBytePlaces(const TileSlice& slice, const TileSample& sample, const Places& places,
                                     std::int32_t* table)
{
    alignas(64) std::int16_t values[kTilePixels] = {};
    if (sample.texels != nullptr)
        sampleBytes(sample.texels, sample.channel->stride, places, values);
    if (slice.shareParts != 0) {
        alignas(64) std::int16_t next[kTilePixels] = {};
        if (sample.nextTexels != nullptr)
            sampleBytes(sample.nextTexels, sample.channel->stride, places, next);
        const auto share = static_cast<std::int16_t>(slice.shareParts);
        for (int p = 0; p < kTilePixels; ++p)
            values[p] = static_cast<std::int16_t>(
                values[p] + roundedProduct(static_cast<std::int16_t>(next[p] - values[p]), share));
    }
    for (int p = 0; p < kTilePixels; ++p)
        table[p] = bytePlace(values[p]);
}

template <typename T>
TIRN_KERNEL_PART void sampleWide(const std::uint8_t* texels, int stride, const Places& places, float* values)
{
    Corners corners;
    fetchCorners<T>(texels, stride, places, corners);
    constexpr int bits = 8 * sizeof(T);
    constexpr std::uint32_t mask = (1U << bits) - 1;
    for (int p = 0; p < kTilePixels; ++p) {
        const float f = static_cast<float>(places.u[p] & (kFractions - 1)) * kFraction;
        const float g = static_cast<float>(places.v[p] & (kFractions - 1)) * kFraction;
        const auto a = static_cast<float>(static_cast<std::int32_t>(corners.low[p] & mask));
        const auto b = static_cast<float>(static_cast<std::int32_t>(corners.low[p] >> bits));
        const auto c = static_cast<float>(static_cast<std::int32_t>(corners.high[p] & mask));
        const auto d = static_cast<float>(static_cast<std::int32_t>(corners.high[p] >> bits));
        const float lower = a + (b - a) * f;
        const float upper = c + (d - c) * f;
        values[p] = lower + (upper - lower) * g;
    }
}

TIRN_KERNEL_PART void sampleWide(const TileChannel& channel, const std::uint8_t* texels, const Places& places,
                                 float* values)
{
    if (texels == nullptr)
        return;
    if (channel.bytesPerSample == 1)
        sampleWide<std::uint8_t>(texels, channel.stride, places, values);
    else
        sampleWide<std::uint16_t>(texels, channel.stride, places, values);
}

/// Multiplies by the depth curve, up to 1.
TIRN_KERNEL_PART void applyCurve(const TileSlice& slice, const TileChannel& channel, const Places& places,
                                 float* values)
{
    const auto last = static_cast<float>(channel.curve.size() - 1);
    for (int p = 0; p < kTilePixels; ++p) {
        const float at = slice.curveBase + channel.curveU * (static_cast<float>(places.u[p]) * kFraction) +
                         channel.curveV * (static_cast<float>(places.v[p]) * kFraction);
        const float inside = at > 0 ? (at < last ? at : last) : 0.0F;
        const auto first = static_cast<std::int32_t>(inside);
        const std::int32_t next = first + (static_cast<float>(first) < last ? 1 : 0);
        const float from = channel.curve[static_cast<std::size_t>(first)];
        const float to = channel.curve[static_cast<std::size_t>(next)];
        const float multiplier =
            (from + (to - from) * (inside - static_cast<float>(first))) * channel.curveFactor;
        const float value = values[p] * multiplier;
        values[p] = value < 1 ? value : 1.0F;
    }
}

TIRN_KERNEL_PART void findWidePlaces(const TileSlice& slice, const TileSample& sample, const Places& places,
                                     std::int32_t* table)
{
    const TileChannel& channel = *sample.channel;
    alignas(64) float values[kTilePixels] = {};
    sampleWide(channel, sample.texels, places, values);
    if (slice.share != 0) {
        alignas(64) float next[kTilePixels] = {};
        sampleWide(channel, sample.nextTexels, places, next);
        for (int p = 0; p < kTilePixels; ++p)
            values[p] = values[p] + (next[p] - values[p]) * slice.share;
    }
    for (int p = 0; p < kTilePixels; ++p)
        values[p] = values[p] * channel.unit;
    if (!channel.curve.empty())
        applyCurve(slice, channel, places, values);
    for (int p = 0; p < kTilePixels; ++p) {
        const float value = values[p] * channel.stretch;
        const float place = widePlace(value < 1 ? value : 1.0F, channel.entries);
        table[p] = static_cast<std::int32_t>(place + 0.5F);
    }
}

/// Red, green, blue and opacity, 0 to kFullColour.
struct Fragments
{
    alignas(64) std::int32_t parts[4][kTilePixels];
};

/// False when nothing has any opacity; the other parts are then left open.
TIRN_KERNEL_PART bool lookUp(const std::uint32_t* packed, const std::int32_t* table, const Places& places,
                             Fragments& fragments)
{
    alignas(64) std::uint32_t from[kTilePixels];
    alignas(64) std::uint32_t to[kTilePixels];
    for (int p = 0; p < kTilePixels; ++p) {
        from[p] = packed[table[p] >> kPlaceBits];
        to[p] = packed[(table[p] >> kPlaceBits) + 1];
    }
    std::int32_t anyOpacity = 0;
    for (int k = 3; k >= 0; --k) {
        for (int p = 0; p < kTilePixels; ++p) {
            const std::int32_t f = table[p] & (kPlacesPerEntry - 1);
            const auto first = static_cast<std::int32_t>(from[p] >> (8 * k) & 0xff);
            const auto second = static_cast<std::int32_t>(to[p] >> (8 * k) & 0xff);
            fragments.parts[k][p] = (first * kPlacesPerEntry + (second - first) * f) & places.seen[p];
            anyOpacity |= fragments.parts[k][p];
        }
        if (anyOpacity == 0)
            return false;
    }
    return true;
}

TIRN_KERNEL_PART void layBehind(const Fragments& fragments, TileColours& colours)
{
    for (int p = 0; p < kTilePixels; ++p) {
        const float opacity = static_cast<float>(fragments.parts[3][p]) * (1.0F / kFullColour);
        const float weight = colours.through[static_cast<std::size_t>(p)] * opacity;
        const auto at = static_cast<std::size_t>(p);
        colours.red[at] = colours.red[at] + weight * static_cast<float>(fragments.parts[0][p]);
        colours.green[at] = colours.green[at] + weight * static_cast<float>(fragments.parts[1][p]);
        colours.blue[at] = colours.blue[at] + weight * static_cast<float>(fragments.parts[2][p]);
        colours.through[at] = colours.through[at] - weight;
    }
}

TIRN_KERNEL_PART float greater(float a, std::int32_t b)
{
    const auto other = static_cast<float>(b);
    return a > other ? a : other;
}

/// What has no opacity is not drawn.
TIRN_KERNEL_PART void raise(const Fragments& fragments, TileColours& colours)
{
    for (int p = 0; p < kTilePixels; ++p) {
        const auto at = static_cast<std::size_t>(p);
        const std::int32_t drawn = -static_cast<std::int32_t>(fragments.parts[3][p] > 0);
        colours.red[at] = greater(colours.red[at], fragments.parts[0][p] & drawn);
        colours.green[at] = greater(colours.green[at], fragments.parts[1][p] & drawn);
        colours.blue[at] = greater(colours.blue[at], fragments.parts[2][p] & drawn);
        colours.through[at] = greater(colours.through[at], fragments.parts[3][p]);
    }
}

TIRN_KERNEL_PART float clearest(const TileColours& colours)
{
    // Several at once, since compilers keep to the order of a plain search.
    constexpr int lanes = 16;
    float most[lanes] = {};
    for (int p = 0; p < kTilePixels; p += lanes) {
        for (int lane = 0; lane < lanes; ++lane) {
            const float through = colours.through[static_cast<std::size_t>(p + lane)];
            most[lane] = through > most[lane] ? through : most[lane];
        }
    }
    float clearest = 0;
    for (const float through : most)
        clearest = through > clearest ? through : clearest;
    return clearest;
}

TIRN_KERNEL_PART void drawSample(const TileFrame& frame, const TileSlice& slice, const TileSample& sample,
                                 const Places& places, TileColours& colours)
{
    alignas(64) std::int32_t table[kTilePixels];
    if (sample.channel->isPlain)
        findBytePlaces(slice, sample, places, table);
    else
        findWidePlaces(slice, sample, places, table);
    Fragments fragments;
    if (!lookUp(sample.channel->packed, table, places, fragments))
        return;
    if (frame.blend == RasterBlend::Alpha)
        layBehind(fragments, colours);
    else
        raise(fragments, colours);
}

TIRN_KERNEL_PART float drawSlice(const TileFrame& frame, const TileSlice& slice, const TilePlace& place,
                                 std::span<const TileSample> samples, TileColours& colours)
{
    Places places;
    findPlaces(frame, slice, place, places);
    for (const TileSample& sample : samples)
        drawSample(frame, slice, sample, places, colours);
    return frame.blend == RasterBlend::Alpha ? clearest(colours) : 1.0F;
}

} // namespace tirn::tilekernel
