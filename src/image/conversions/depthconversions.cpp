#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <vector>

#include "base/checkedsize.h"
#include "base/log.h"
#include "image/imagefile.h"
#include "image/steploop.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

TIRN_TARGET_CLONES void widen(const std::uint8_t* from, std::int64_t count, std::uint16_t* to)
{
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = from[i];
}

/// One channel's way from words to bytes: what is taken off first, then a factor or a shift.
struct ByteScale
{
    int minimum = 0;
    float factor = 1.0F;
    int shift = 0;
};

/// The scales of interleaved channels, repeated side by side so that whole vectors of samples find theirs in
/// step.
struct ScalePattern
{
    static constexpr std::size_t kVoxels = 1024;

    explicit ScalePattern(const std::vector<ByteScale>& scales)
    {
        for (std::size_t i = 0; i < kVoxels * scales.size(); ++i) {
            const ByteScale& scale = scales[i % scales.size()];
            minimum.push_back(scale.minimum);
            factor.push_back(scale.factor);
            shift.push_back(scale.shift);
        }
    }
    std::int64_t size() const { return static_cast<std::int64_t>(minimum.size()); }

    std::vector<int> minimum;
    std::vector<float> factor;
    std::vector<int> shift;
};

/// floor(v * factor + 0.5) of a product v * factor in single precision, without rounding the sum.
TIRN_TARGET_CLONES void scaleToBytes(const std::uint16_t* from, std::int64_t count,
                                     const ScalePattern& pattern, std::uint8_t* __restrict to)
{
    const int* minimum = pattern.minimum.data();
    const float* factor = pattern.factor.data();
    for (std::int64_t i = 0; i < count; ++i) {
        const float product = static_cast<float>(std::max(0, from[i] - minimum[i])) * factor[i];
        const int whole = static_cast<int>(product);
        to[i] = static_cast<std::uint8_t>(whole + (product - static_cast<float>(whole) >= 0.5F ? 1 : 0));
    }
}

TIRN_TARGET_CLONES void shiftToBytes(const std::uint16_t* from, std::int64_t count,
                                     const ScalePattern& pattern, std::uint8_t* __restrict to)
{
    const int* minimum = pattern.minimum.data();
    const int* shift = pattern.shift.data();
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = static_cast<std::uint8_t>(std::max(0, from[i] - minimum[i]) >> shift[i]);
}

TIRN_TARGET_CLONES void saturateToBytes(const std::uint16_t* from, std::int64_t count, const ScalePattern&,
                                        std::uint8_t* __restrict to)
{
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = static_cast<std::uint8_t>(std::min<std::uint16_t>(from[i], 255));
}

TIRN_TARGET_CLONES void rangeToBytes(const std::uint16_t* from, std::int64_t count, int lower, int upper,
                                     std::uint8_t* to)
{
    const double factor = 255.0 / (upper - lower);
    for (std::int64_t i = 0; i < count; ++i) {
        const int inside = std::clamp<int>(from[i], lower, upper);
        // At and below the lower bound the product is 0, at and above the upper one it is 255.
        to[i] = static_cast<std::uint8_t>(static_cast<int>((inside - lower) * factor + 0.5));
    }
}

/// floor(v * (2^bits - 1) / 255 + 0.5). Whole steps of a byte apart from the rest, which single precision
/// holds: no quotient comes nearer than 1 / 510 to where rounding changes.
TIRN_TARGET_CLONES void stretchToWords(const std::uint8_t* from, std::int64_t count, int bits,
                                       std::uint16_t* __restrict to)
{
    const int highest = (1 << bits) - 1;
    const int whole = highest / 255;
    const float rest = static_cast<float>(highest % 255) / 255.0F;
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = static_cast<std::uint16_t>(from[i] * whole +
                                           static_cast<int>(static_cast<float>(from[i]) * rest + 0.5F));
}

using ByteLoop = void (*)(const std::uint16_t* from, std::int64_t count, const ScalePattern& pattern,
                          std::uint8_t* to);

/// The stack's words as bytes, or nothing when cancelled. A scale for each channel, or a single one for all
/// samples alike.
VoxelBuffer toBytes(const ImageFile& stack, ByteLoop loop, const std::vector<ByteScale>& scales,
                    const char* text, const Progress& progress)
{
    VoxelBuffer result = allocateVoxels(stack.sampleCount(), text);
    auto* bytes = reinterpret_cast<std::uint8_t*>(result.data());
    const ScalePattern pattern(scales);
    const std::int64_t samples = pattern.size();
    const std::int64_t patterns = (stack.sampleCount() + samples - 1) / std::max<std::int64_t>(1, samples);
    const auto convert = [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t start = begin * samples; start < end * samples; start += samples)
            loop(stack.stackData16() + start, std::min(samples, stack.sampleCount() - start), pattern,
                 bytes + start);
    };
    if (!runItems(patterns, 3 * samples, progress, convert))
        result.reset();
    return result;
}

} // namespace

void ImageFile::stackToShort(const Progress& progress)
{
    logDebug("enter stackToShort()");
    if (!m_attributes.hasWords() && isLoaded()) {
        VoxelBuffer result =
            allocateVoxels(checkedProduct({sampleCount(), 2}), "Could not allocate memory for stackToShort");
        auto* words = reinterpret_cast<std::uint16_t*>(result.data());
        const auto convert = [&](std::int64_t begin, std::int64_t end) {
            widen(stackData() + begin, end - begin, words + begin);
        };
        if (runItems(sampleCount(), 3, progress, convert)) {
            // The values are the same as before, and so are the statistics.
            m_stackData = std::move(result);
            m_attributes.bitDepth = 16;
            m_invertedMaximum = -1;
        }
    }
    logDebug("exit stackToShort()");
}

void ImageFile::becomeBytes(VoxelBuffer bytes)
{
    if (bytes.isNull())
        return;
    setStackData(std::move(bytes));
    m_attributes.bitDepth = 8;
    m_attributes.maxValue = 255;
}

void ImageFile::clampLower(const Progress& progress)
{
    logDebug("ClampLower called: %d", m_attributes.bitDepth);
    if (!m_attributes.hasWords() || !isLoaded())
        return;
    const ByteScale scale = {0, 1.0F, m_attributes.bitDepth - 8};
    becomeBytes(toBytes(*this, shiftToBytes, {scale}, "Could not allocate memory for clampLower", progress));
}

void ImageFile::clampUpper(const Progress& progress)
{
    if (!m_attributes.hasWords() || !isLoaded())
        return;
    becomeBytes(
        toBytes(*this, saturateToBytes, {ByteScale()}, "Could not allocate memory for clampUpper", progress));
}

void ImageFile::convertToDepth(int bits, const Progress& progress)
{
    logDebug("converting to %d bits", bits);
    if (m_attributes.bitDepth != 8 || !isLoaded() || bits < 8 || bits > 16)
        return;
    VoxelBuffer result =
        allocateVoxels(checkedProduct({sampleCount(), 2}), "Could not allocate memory for convertToDepth");
    const double factor = ((1 << bits) - 1) / 255.0;
    auto* to = reinterpret_cast<std::uint16_t*>(result.data());
    const auto convert = [&](std::int64_t begin, std::int64_t end) {
        stretchToWords(stackData() + begin, end - begin, bits, to + begin);
    };
    if (!runItems(sampleCount(), 3, progress, convert))
        return;
    // An unknown maximum of -1 becomes another negative number.
    const double stretched = std::floor(m_attributes.maxValue * factor + 0.5);
    setStackData(std::move(result));
    // Whatever was asked for, the samples are words now.
    m_attributes.bitDepth = 16;
    m_attributes.maxValue = static_cast<int>(std::clamp<double>(stretched, INT_MIN, INT_MAX));
}

void ImageFile::stackToByteSmartLower(const Progress& progress)
{
    if (!m_attributes.hasWords() || !isLoaded())
        return;
    std::vector<ByteScale> scales;
    for (int c = 0; c < m_attributes.channels; ++c) {
        const StackStats& record = stats(c);
        const int width = static_cast<std::uint16_t>((record.max - record.min) >> 8);
        scales.push_back({record.min, 1.0F, bitCount(width)});
    }
    becomeBytes(toBytes(*this, shiftToBytes, scales, "Could not allocate memory for stackToByteSmartLower",
                        progress));
}

void ImageFile::stackToByteSmartMult(const Progress& progress)
{
    if (!m_attributes.hasWords() || !isLoaded())
        return;
    logDebug("enter ImageFile::stackToByteSmartMult");
    std::vector<ByteScale> scales;
    for (int c = 0; c < m_attributes.channels; ++c) {
        const StackStats& record = stats(c);
        const int range = record.max - record.min;
        // A narrow range is only moved down, never stretched.
        scales.push_back({record.min, range >= 255 ? 255.0F / static_cast<float>(range) : 1.0F, 0});
    }
    VoxelBuffer result =
        toBytes(*this, scaleToBytes, scales, "Could not allocate memory for stackToByteSmartMult", progress);
    for (int c = 0; c < m_attributes.channels && !result.isNull(); ++c)
        logDebug("converted stack");
    becomeBytes(std::move(result));
    logDebug("exit ImageFile::stackToByteSmartMult");
}

void ImageFile::stackToByteRange(int lower, int upper, const Progress& progress)
{
    if (!m_attributes.hasWords() || !isLoaded() || lower >= upper || lower < 0)
        return;
    VoxelBuffer result = allocateVoxels(sampleCount(), "Could not allocate memory for stackToByteRange");
    // One sample a voxel, whatever the channels are: of several channels only the first part of the buffer is
    // converted.
    const std::int64_t converted = m_attributes.channels > 0 ? sampleCount() / m_attributes.channels : 0;
    auto* bytes = reinterpret_cast<std::uint8_t*>(result.data());
    const auto convert = [&](std::int64_t begin, std::int64_t end) {
        const std::int64_t middle = std::clamp(converted, begin, end);
        rangeToBytes(stackData16() + begin, middle - begin, lower, upper, bytes + begin);
        std::fill(bytes + middle, bytes + end, std::uint8_t{0});
    };
    if (runItems(sampleCount(), 3, progress, convert))
        becomeBytes(std::move(result));
}

} // namespace tirn
