#pragma once

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

/// Where the pixels of a tile lie on a slice.
struct TilePlace
{
    /// Of all slices of a frame without perspective: how far each pixel lies from the tile's first one.
    const std::int32_t* offsetsU = nullptr;
    const std::int32_t* offsetsV = nullptr;
    std::int32_t u = 0;
    std::int32_t v = 0;
    /// With perspective instead: the matrix for columns and rows from the tile's first pixel.
    bool isProjective = false;
    std::array<float, 9> toTexel = {};
    float mostW = 1;
    /// Some pixels may lie outside of the area u0 <= u < u1, v0 <= v < v1.
    bool isEdge = false;
    std::int32_t areaU0 = 0;
    std::int32_t areaU1 = 0;
    std::int32_t areaV0 = 0;
    std::int32_t areaV1 = 0;
    std::int32_t clampU0 = 0;
    std::int32_t clampU1 = 0;
    std::int32_t clampV0 = 0;
    std::int32_t clampV1 = 0;
};

/// What one channel shows there.
struct TileSample
{
    /// Texel (0, 0) of the two planes; null for one of zeros.
    const std::uint8_t* texels = nullptr;
    const std::uint8_t* nextTexels = nullptr;
    int stride = 0;
    int bytesPerSample = 1;
    /// In parts of kFractions, and as a number.
    std::int32_t shareParts = 0;
    float share = 0;
    /// Bytes that are looked up among 256 entries as they are.
    bool isPlain = true;
    float unit = 1;
    float stretch = 1;
    std::span<const float> curve;
    float curveFactor = 1;
    float curveBase = 0;
    float curveU = 0;
    float curveV = 0;
    const std::uint32_t* packed = nullptr;
    int entries = 256;
};

/// Lays the channels of a slice behind a tile, the first one nearest, or raises the tile to their maximum.
/// Returns how much shines through the clearest pixel, 1 for a maximum.
using TileKernel = float (*)(const TilePlace& place, std::span<const TileSample> channels, RasterBlend blend,
                             TileColours& colours);

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
