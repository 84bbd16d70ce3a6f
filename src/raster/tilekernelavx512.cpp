// Byte samples, 64 pixels at once: the texels that a tile reads fit into registers, and so do palettes, so
// that both are looked up without a memory access. The arithmetic is that of tilekernelbody.h, bit for bit.

#include "raster/tilekernelbody.h"
#include "raster/tilekernelwide.h"

#ifdef TIRN_WIDE_KERNELS
#include <algorithm>
#include <cstring>

#include <immintrin.h>

#ifndef __clang__
// The compiler's own header leaves registers open whose values nothing reads.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define TIRN_AVX512 __attribute__((target("avx2,avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi")))
#define TIRN_AVX512_PART static inline __attribute__((always_inline)) TIRN_AVX512

namespace tirn {

namespace {

/// A number of 16 bits for each pixel: those of rows 0 to 3, and of rows 4 to 7.
struct Words
{
    __m512i low;
    __m512i high;
};

/// Where the samples of a tile lie within its window, and between texels.
struct WindowPlaces
{
    std::int32_t firstU = 0;
    std::int32_t firstV = 0;
    Words texelU;
    Words texelV;
    Words restU;
    Words restV;
    /// Pixels inside of the slice's area.
    __mmask32 seenLow = 0xffffffff;
    __mmask32 seenHigh = 0xffffffff;
};

TIRN_AVX512_PART __m512i loadWords(const std::uint16_t* words) { return _mm512_load_si512(words); }

TIRN_AVX512_PART void split(__m512i rest, __m512i texels, __m512i first, __m512i& texel, __m512i& part)
{
    const __m512i sum = _mm512_add_epi16(rest, first);
    texel = _mm512_add_epi16(texels, _mm512_srli_epi16(sum, kFractionBits));
    part = _mm512_and_si512(sum, _mm512_set1_epi16(kFractions - 1));
}

TIRN_AVX512_PART void split(const TileOffsets& offsets, std::int32_t first, Words& texel, Words& part)
{
    const __m512i rest = _mm512_set1_epi16(static_cast<short>(first & (kFractions - 1)));
    split(loadWords(offsets.rest.data()), loadWords(offsets.texels.data()), rest, texel.low, part.low);
    split(loadWords(offsets.rest.data() + 32), loadWords(offsets.texels.data() + 32), rest, texel.high,
          part.high);
}

/// Tiles all of whose pixels lie inside.
TIRN_AVX512_PART void findInside(const TileFrame& frame, const TilePlace& place, WindowPlaces& places)
{
    places.firstU = (place.u >> kFractionBits) + frame.u.leastTexel;
    places.firstV = (place.v >> kFractionBits) + frame.v.leastTexel;
    split(frame.u, place.u, places.texelU, places.restU);
    split(frame.v, place.v, places.texelV, places.restV);
}

/// One direction of 16 pixels: whether they lie inside of the area, and brought to where the plane has
/// values.
struct Cut
{
    __mmask16 seen;
    __m256i texel;
    __m256i rest;
};

struct CutLimits
{
    std::int32_t areaLow;
    std::int32_t areaHigh;
    std::int32_t clampLow;
    std::int32_t clampHigh;
    std::int32_t firstTexel;
};

TIRN_AVX512_PART Cut cut16(const TileOffsets& offsets, std::int32_t first, int k, const CutLimits& limits)
{
    const __m512i at = _mm512_add_epi32(_mm512_set1_epi32(first),
                                        _mm512_load_si512(offsets.parts.data() + std::ptrdiff_t{16} * k));
    Cut cut;
    cut.seen = _mm512_cmpge_epi32_mask(at, _mm512_set1_epi32(limits.areaLow)) &
               _mm512_cmplt_epi32_mask(at, _mm512_set1_epi32(limits.areaHigh));
    const __m512i inside = _mm512_min_epi32(_mm512_max_epi32(at, _mm512_set1_epi32(limits.clampLow)),
                                            _mm512_set1_epi32(limits.clampHigh));
    cut.texel = _mm512_cvtepi32_epi16(
        _mm512_sub_epi32(_mm512_srai_epi32(inside, kFractionBits), _mm512_set1_epi32(limits.firstTexel)));
    cut.rest = _mm512_cvtepi32_epi16(_mm512_and_si512(inside, _mm512_set1_epi32(kFractions - 1)));
    return cut;
}

TIRN_AVX512_PART __m512i together(__m256i low, __m256i high)
{
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

/// One direction of all pixels.
TIRN_AVX512_PART void cutAll(const TileOffsets& offsets, std::int32_t first, const CutLimits& limits,
                             Words& texel, Words& rest, WindowPlaces& places)
{
    const Cut cuts[] = {cut16(offsets, first, 0, limits), cut16(offsets, first, 1, limits),
                        cut16(offsets, first, 2, limits), cut16(offsets, first, 3, limits)};
    texel = {together(cuts[0].texel, cuts[1].texel), together(cuts[2].texel, cuts[3].texel)};
    rest = {together(cuts[0].rest, cuts[1].rest), together(cuts[2].rest, cuts[3].rest)};
    places.seenLow &= static_cast<__mmask32>(cuts[0].seen) | static_cast<__mmask32>(cuts[1].seen) << 16;
    places.seenHigh &= static_cast<__mmask32>(cuts[2].seen) | static_cast<__mmask32>(cuts[3].seen) << 16;
}

/// Tiles on the edge of a slice.
TIRN_AVX512_PART void findCut(const TileFrame& frame, const TileSlice& slice, const TilePlace& place,
                              WindowPlaces& places)
{
    places.firstU = std::clamp(place.u + frame.u.leastPart, frame.clampU0, frame.clampU1) >> kFractionBits;
    places.firstV = std::clamp(place.v + frame.v.leastPart, frame.clampV0, frame.clampV1) >> kFractionBits;
    cutAll(frame.u, place.u, {slice.areaU0, slice.areaU1, frame.clampU0, frame.clampU1, places.firstU},
           places.texelU, places.restU, places);
    cutAll(frame.v, place.v, {slice.areaV0, slice.areaV1, frame.clampV0, frame.clampV1, places.firstV},
           places.texelV, places.restV, places);
}

TIRN_AVX512_PART __m512i load8Rows(const std::uint8_t* texels, int stride)
{
    long long rows[8];
    for (int k = 0; k < 8; ++k)
        std::memcpy(&rows[k], texels + static_cast<std::ptrdiff_t>(k) * stride, 8);
    return _mm512_set_epi64(rows[7], rows[6], rows[5], rows[4], rows[3], rows[2], rows[1], rows[0]);
}

/// Four rows of 16 texels.
TIRN_AVX512_PART __m512i load4Rows(const std::uint8_t* texels, int stride)
{
    __m128i row[4];
    for (int k = 0; k < 4; ++k)
        row[k] = _mm_loadu_si128(
            reinterpret_cast<const __m128i*>(texels + static_cast<std::ptrdiff_t>(k) * stride));
    const __m512i rows = _mm512_inserti32x4(_mm512_castsi128_si512(row[0]), row[1], 1);
    return _mm512_inserti32x4(_mm512_inserti32x4(rows, row[2], 2), row[3], 3);
}

/// Pairs of bytes: the texel of each index, and the one after it.
TIRN_AVX512_PART __m512i pairIndices(__m512i index)
{
    return _mm512_add_epi16(_mm512_or_si512(index, _mm512_slli_epi16(index, 8)), _mm512_set1_epi16(0x0100));
}

TIRN_AVX512_PART __m512i blendPairs(__m512i pairs, __m512i part)
{
    const __m512i mask = _mm512_set1_epi16(0x7f80);
    const __m512i a = _mm512_and_si512(_mm512_slli_epi16(pairs, 7), mask);
    const __m512i b = _mm512_and_si512(_mm512_srli_epi16(pairs, 1), mask);
    return _mm512_add_epi16(a, _mm512_mulhrs_epi16(_mm512_sub_epi16(b, a), part));
}

TIRN_AVX512_PART __m512i blendRows(__m512i lower, __m512i upper, __m512i partU, __m512i partV)
{
    const __m512i a = blendPairs(lower, partU);
    const __m512i b = blendPairs(upper, partU);
    return _mm512_add_epi16(a, _mm512_mulhrs_epi16(_mm512_sub_epi16(b, a), partV));
}

TIRN_AVX512_PART __m512i sample8(__m512i window, __m512i u, __m512i v, __m512i partU, __m512i partV)
{
    const __m512i index = pairIndices(_mm512_add_epi16(u, _mm512_slli_epi16(v, 3)));
    const __m512i lower = _mm512_permutexvar_epi8(index, window);
    const __m512i upper = _mm512_permutexvar_epi8(_mm512_add_epi8(index, _mm512_set1_epi8(8)), window);
    return blendRows(lower, upper, partU, partV);
}

struct Window16
{
    __m512i rows[4];
};

TIRN_AVX512_PART __m512i lookUp256(const Window16& table, __m512i index)
{
    const __m512i low = _mm512_permutex2var_epi8(table.rows[0], index, table.rows[1]);
    const __m512i high = _mm512_permutex2var_epi8(table.rows[2], index, table.rows[3]);
    return _mm512_mask_mov_epi8(low, _mm512_movepi8_mask(index), high);
}

TIRN_AVX512_PART __m512i sample16(const Window16& window, __m512i u, __m512i v, __m512i partU, __m512i partV)
{
    const __m512i index = pairIndices(_mm512_add_epi16(u, _mm512_slli_epi16(v, 4)));
    const __m512i lower = lookUp256(window, index);
    const __m512i upper = lookUp256(window, _mm512_add_epi8(index, _mm512_set1_epi8(16)));
    return blendRows(lower, upper, partU, partV);
}

TIRN_AVX512_PART Words sampleWindow(const WindowPlaces& places, const std::uint8_t* texels, int stride,
                                    bool isSmall)
{
    const std::uint8_t* corner = texels + static_cast<std::ptrdiff_t>(places.firstV) * stride + places.firstU;
    if (isSmall) {
        const __m512i window = load8Rows(corner, stride);
        return {
            sample8(window, places.texelU.low, places.texelV.low, places.restU.low, places.restV.low),
            sample8(window, places.texelU.high, places.texelV.high, places.restU.high, places.restV.high)};
    }
    Window16 window;
    for (int k = 0; k < 4; ++k)
        window.rows[k] = load4Rows(corner + static_cast<std::ptrdiff_t>(4 * k) * stride, stride);
    return {sample16(window, places.texelU.low, places.texelV.low, places.restU.low, places.restV.low),
            sample16(window, places.texelU.high, places.texelV.high, places.restU.high, places.restV.high)};
}

/// The places of samples among 256 entries.
TIRN_AVX512_PART __m512i placesOf(__m512i values)
{
    const __m512i sum =
        _mm512_add_epi16(_mm512_add_epi16(values, _mm512_srli_epi16(values, 8)), _mm512_set1_epi16(1));
    const __m512i place =
        _mm512_subs_epu16(_mm512_srli_epi16(sum, 1), _mm512_set1_epi16(kPlacesPerEntry / 2));
    return _mm512_min_epu16(place, _mm512_set1_epi16(kFullColour));
}

TIRN_AVX512_PART __m512i lookUpBytes(const std::array<std::uint8_t, 256>& table, __m512i index)
{
    Window16 rows;
    for (int k = 0; k < 4; ++k)
        rows.rows[k] = _mm512_load_si512(table.data() + std::ptrdiff_t{64} * k);
    return lookUp256(rows, index);
}

/// Entries, and how much of the next one.
struct Entries
{
    __m512i index;
    Words weights;
};

/// Bytes: the share of an entry, and that of the next one.
TIRN_AVX512_PART __m512i weightsOf(__m512i place)
{
    const __m512i part = _mm512_and_si512(place, _mm512_set1_epi16(kPlacesPerEntry - 1));
    const __m512i rest = _mm512_sub_epi16(_mm512_set1_epi16(kPlacesPerEntry), part);
    return _mm512_or_si512(rest, _mm512_slli_epi16(part, 8));
}

TIRN_AVX512_PART Entries entriesOf(const Words& values)
{
    const Words places = {placesOf(values.low), placesOf(values.high)};
    return {_mm512_packus_epi16(_mm512_srli_epi16(places.low, kPlaceBits),
                                _mm512_srli_epi16(places.high, kPlaceBits)),
            {weightsOf(places.low), weightsOf(places.high)}};
}

/// One component of the colours, 0 to kFullColour.
TIRN_AVX512_PART Words component(const ComponentTables& tables, std::size_t k, const Entries& entries)
{
    const __m512i from = lookUpBytes(tables.from[k], entries.index);
    const __m512i to = lookUpBytes(tables.to[k], entries.index);
    return {_mm512_maddubs_epi16(_mm512_unpacklo_epi8(from, to), entries.weights.low),
            _mm512_maddubs_epi16(_mm512_unpackhi_epi8(from, to), entries.weights.high)};
}

/// Pixels 16 k to 16 k + 15 as numbers.
TIRN_AVX512_PART __m512 numbers(const Words& words, int k)
{
    const __m512i half = k < 2 ? words.low : words.high;
    const __m256i quarter = k % 2 == 0 ? _mm512_castsi512_si256(half) : _mm512_extracti64x4_epi64(half, 1);
    return _mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(quarter));
}

TIRN_AVX512_PART void addTo(float* sum, __m512 weight, __m512 colour)
{
    _mm512_store_ps(sum, _mm512_add_ps(_mm512_load_ps(sum), _mm512_mul_ps(weight, colour)));
}

TIRN_AVX512_PART void layBehind(const Words (&parts)[4], TileColours& colours)
{
    for (int k = 0; k < 4; ++k) {
        float* through = colours.through.data() + std::ptrdiff_t{16} * k;
        const __m512 opacity = _mm512_mul_ps(numbers(parts[3], k), _mm512_set1_ps(1.0F / kFullColour));
        const __m512 before = _mm512_load_ps(through);
        const __m512 weight = _mm512_mul_ps(before, opacity);
        addTo(colours.red.data() + std::ptrdiff_t{16} * k, weight, numbers(parts[0], k));
        addTo(colours.green.data() + std::ptrdiff_t{16} * k, weight, numbers(parts[1], k));
        addTo(colours.blue.data() + std::ptrdiff_t{16} * k, weight, numbers(parts[2], k));
        _mm512_store_ps(through, _mm512_sub_ps(before, weight));
    }
}

TIRN_AVX512_PART void raise(const Words (&parts)[4], TileColours& colours)
{
    float* const sums[] = {colours.red.data(), colours.green.data(), colours.blue.data(),
                           colours.through.data()};
    const __mmask32 drawnLow = _mm512_test_epi16_mask(parts[3].low, parts[3].low);
    const __mmask32 drawnHigh = _mm512_test_epi16_mask(parts[3].high, parts[3].high);
    for (int c = 0; c < 4; ++c) {
        const Words drawn = {_mm512_maskz_mov_epi16(drawnLow, parts[c].low),
                             _mm512_maskz_mov_epi16(drawnHigh, parts[c].high)};
        for (int k = 0; k < 4; ++k) {
            float* sum = sums[c] + std::ptrdiff_t{16} * k;
            _mm512_store_ps(sum, _mm512_max_ps(_mm512_load_ps(sum), numbers(drawn, k)));
        }
    }
}

TIRN_AVX512_PART void drawPlainSample(const TileFrame& frame, const WindowPlaces& places,
                                      const TileSample& sample, bool isSmall, TileColours& colours)
{
    const Words values = sampleWindow(places, sample.texels, sample.channel->stride, isSmall);
    const Entries entries = entriesOf(values);
    const ComponentTables& tables = *sample.channel->tables;
    Words parts[4];
    parts[3] = component(tables, 3, entries);
    parts[3].low = _mm512_maskz_mov_epi16(places.seenLow, parts[3].low);
    parts[3].high = _mm512_maskz_mov_epi16(places.seenHigh, parts[3].high);
    const __m512i anyOpacity = _mm512_or_si512(parts[3].low, parts[3].high);
    if (_mm512_test_epi16_mask(anyOpacity, anyOpacity) == 0)
        return;
    for (std::size_t k = 0; k < 3; ++k)
        parts[k] = component(tables, k, entries);
    if (frame.blend == RasterBlend::Alpha)
        layBehind(parts, colours);
    else
        raise(parts, colours);
}

TIRN_AVX512_PART float clearestOf(const TileColours& colours)
{
    const float* through = colours.through.data();
    return _mm512_reduce_max_ps(
        _mm512_max_ps(_mm512_max_ps(_mm512_load_ps(through), _mm512_load_ps(through + 16)),
                      _mm512_max_ps(_mm512_load_ps(through + 32), _mm512_load_ps(through + 48))));
}

constexpr int kSmallWindow = 8;
constexpr int kLargeWindow = 16;

} // namespace

TIRN_AVX512 float drawTileAvx512(const TileFrame& frame, const TileSlice& slice, const TilePlace& place,
                                 std::span<const TileSample> samples, TileColours& colours)
{
    const bool fits = frame.window > 0 && frame.window <= kLargeWindow && slice.shareParts == 0 &&
                      std::all_of(samples.begin(), samples.end(), [](const TileSample& sample) {
                          return sample.channel->isPlain && sample.texels != nullptr;
                      });
    if (!fits)
        return tilekernel::drawSlice(frame, slice, place, samples, colours);
    WindowPlaces places;
    if (place.isEdge)
        findCut(frame, slice, place, places);
    else
        findInside(frame, place, places);
    for (const TileSample& sample : samples)
        drawPlainSample(frame, places, sample, frame.window <= kSmallWindow, colours);
    return frame.blend == RasterBlend::Alpha ? clearestOf(colours) : 1.0F;
}

} // namespace tirn
#endif
