#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "raster/rasterframe.h"

namespace tirn {

/// Tiles are squares of pixels; pixel p has column p % 8 and row p / 8.
inline constexpr int kTileSide = 8;
inline constexpr int kTilePixels = kTileSide * kTileSide;
/// Positions on a plane are counted in parts of a texel.
inline constexpr int kFractionBits = 15;
inline constexpr int kFractions = 1 << kFractionBits;
/// Colours are counted in parts of a palette's 255: this is full.
inline constexpr int kFullColour = 255 * kPlacesPerEntry;

/// The pixels of a tile while slices are laid behind what is there.
struct TileColours
{
    /// 0 to kFullColour.
    alignas(64) std::array<float, kTilePixels> red;
    alignas(64) std::array<float, kTilePixels> green;
    alignas(64) std::array<float, kTilePixels> blue;
    /// Blending by alpha: what still shines through, from 1 down. A maximum: the opacity, 0 to kFullColour.
    alignas(64) std::array<float, kTilePixels> through;
};

/// How far the pixels of a tile lie from its first one along a direction of the plane, in all tiles and
/// slices of a frame without perspective. The whole texels and the rest are also given apart, the former from
/// the least one on.
struct TileOffsets
{
    alignas(64) std::array<std::int32_t, kTilePixels> parts = {};
    alignas(64) std::array<std::uint16_t, kTilePixels> texels = {};
    alignas(64) std::array<std::uint16_t, kTilePixels> rest = {};
    std::int32_t leastTexel = 0;
    std::int32_t leastPart = 0;
    std::int32_t mostPart = 0;

    /// How many texels side by side a tile reads at most.
    int window() const;
};
/// Of a step of `across` from column to column and `along` from row to row, in texels.
TileOffsets tileOffsets(double across, double along);
/// The nearest number of parts, within what positions may be.
inline std::int32_t partsOf(double texels)
{
    constexpr double most = 1 << 29;
    const double parts = std::clamp(texels * kFractions, -most, most) + 0.5;
    // Above 0, so that the whole number below is the nearest one.
    return static_cast<std::int32_t>(static_cast<std::int64_t>(parts + 2 * most) -
                                     static_cast<std::int64_t>(2 * most));
}

/// What is the same for all tiles of a frame.
struct TileFrame
{
    RasterBlend blend = RasterBlend::Alpha;
    bool isProjective = false;
    float mostW = 1;
    TileOffsets u;
    TileOffsets v;
    /// How many texels side by side a tile reads at most, 0 where that differs from tile to tile.
    int window = 0;
    std::int32_t clampU0 = 0;
    std::int32_t clampU1 = 0;
    std::int32_t clampV0 = 0;
    std::int32_t clampV1 = 0;
};

/// Where a slice is drawn, and what it shows between its two planes.
struct TileSlice
{
    /// u0 <= u < u1, v0 <= v < v1.
    std::int32_t areaU0 = 0;
    std::int32_t areaU1 = 0;
    std::int32_t areaV0 = 0;
    std::int32_t areaV1 = 0;
    std::int32_t shareParts = 0;
    float share = 0;
    float curveBase = 0;
};

/// Where a tile lies on a slice.
struct TilePlace
{
    /// The first pixel.
    std::int32_t u = 0;
    std::int32_t v = 0;
    /// With perspective instead: the matrix for columns and rows from the tile's first pixel.
    std::array<float, 9> toTexel = {};
    /// Some pixels may lie outside of the area or of what the plane has.
    bool isEdge = false;
};

/// A table of 256 entries, component by component: of each entry, and of the one after it.
struct ComponentTables
{
    alignas(64) std::array<std::array<std::uint8_t, 256>, 4> from;
    alignas(64) std::array<std::array<std::uint8_t, 256>, 4> to;
};

/// How samples of a channel become colours.
struct TileChannel
{
    int stride = 0;
    int bytesPerSample = 1;
    /// Bytes that are looked up among 256 entries as they are.
    bool isPlain = true;
    float unit = 1;
    float stretch = 1;
    std::span<const float> curve;
    float curveFactor = 1;
    float curveU = 0;
    float curveV = 0;
    const std::uint32_t* packed = nullptr;
    int entries = 256;
    /// Of plain channels.
    const ComponentTables* tables = nullptr;
};

/// The planes of a channel at a slice: texel (0, 0), null for a plane of zeros.
struct TileSample
{
    const TileChannel* channel = nullptr;
    const std::uint8_t* texels = nullptr;
    const std::uint8_t* nextTexels = nullptr;
};

/// Lays the channels of a slice behind a tile, the first one nearest, or raises the tile to their maximum.
/// Returns how much shines through the clearest pixel, 1 for a maximum.
using TileKernel = float (*)(const TileFrame& frame, const TileSlice& slice, const TilePlace& place,
                             std::span<const TileSample> samples, TileColours& colours);

/// The same arithmetic for different processors: all give the same bits.
enum class KernelKind { Plain, Avx2, Avx512 };

/// Whether this processor runs a kind.
bool hasKernel(KernelKind kind);
/// The fastest kind that this processor runs, or the one that `forceKernel` named last.
TileKernel tileKernel();
/// For tests: the kind that is used from now on, which the processor must have.
void forceKernel(KernelKind kind);
void useFastestKernel();

/// The place among 256 entries of a byte that is given in parts of 128.
constexpr std::int32_t bytePlace(std::int32_t value)
{
    // 256 entries over 255 steps, and half an entry before the first centre.
    const std::int32_t place = ((value + (value >> 8) + 1) >> 1) - kPlacesPerEntry / 2;
    return place < 0 ? 0 : place > kFullColour ? kFullColour : place;
}

/// The place of a number from 0 to 1 among entries.
inline float widePlace(float value, int entries)
{
    const float place = value * static_cast<float>(entries * kPlacesPerEntry) - kPlacesPerEntry / 2;
    const auto last = static_cast<float>((entries - 1) * kPlacesPerEntry);
    return place > 0 ? (place < last ? place : last) : 0.0F;
}

} // namespace tirn
