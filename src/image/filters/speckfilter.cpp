#include "image/filters/speckfilter.h"

#include <algorithm>
#include <vector>

#include "base/parallel.h"
#include "image/filters/filterparts.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// Samples of a layer that pass through all layers together.
constexpr std::int64_t kBundle = 2048;

/// Where a layer's 3 x 3 neighbourhoods hold a sample of at least `limit`, edges repeated: rows y0 to y1 of
/// `marks` become 1 there and 0 elsewhere.
template <class Sample>
TIRN_INLINE void markLayer(const Sample* layer, const ImageAttributes& a, int y0, int y1, Sample limit,
                           Sample* marks)
{
    const std::int64_t row = std::int64_t{a.x} * a.channels;
    const int channels = a.channels;
    std::vector<Sample> padded(static_cast<std::size_t>(row + 2 * channels));
    Sample* const middle = padded.data() + channels;
    for (int y = y0; y < y1; ++y) {
        const Sample* above = layer + std::max(0, y - 1) * row;
        const Sample* at = layer + y * row;
        const Sample* below = layer + std::min(a.y - 1, y + 1) * row;
        for (std::int64_t i = 0; i < row; ++i)
            middle[i] = std::max(std::max(above[i], at[i]), below[i]);
        std::copy_n(middle, channels, padded.data());
        std::copy_n(middle + row - channels, channels, middle + row);
        Sample* const to = marks + y * row;
        const Sample* const left = padded.data();
        const Sample* const right = middle + channels;
        for (std::int64_t i = 0; i < row; ++i)
            to[i] = std::max(std::max(left[i], middle[i]), right[i]) >= limit ? Sample{1} : Sample{0};
    }
}

/// Gives `count` marked samples of each layer their values back where another of the layers z - half to
/// z + half, the last one repeated at the ends, is marked; the others become 0.
template <class Sample>
TIRN_INLINE void keepMarked(const Sample* from, std::int64_t layerSamples, int layers, int half,
                            std::int64_t count, Sample* to)
{
    std::vector<Sample> marks(static_cast<std::size_t>(count * layers));
    for (int z = 0; z < layers; ++z)
        std::copy_n(to + z * layerSamples, count, marks.data() + z * count);
    const auto layer = [&](int z) { return marks.data() + std::clamp(z, 0, layers - 1) * count; };
    std::vector<std::uint32_t> marked(static_cast<std::size_t>(count));
    std::uint32_t* __restrict counts = marked.data();
    for (int z = -half; z < half; ++z) {
        const Sample* entering = layer(z);
        for (std::int64_t i = 0; i < count; ++i)
            counts[i] += entering[i];
    }
    for (int z = 0; z < layers; ++z) {
        const Sample* entering = layer(z + half);
        const Sample* own = layer(z);
        const Sample* leaving = layer(z - half);
        const Sample* values = from + z * layerSamples;
        Sample* __restrict kept = to + z * layerSamples;
        for (std::int64_t i = 0; i < count; ++i) {
            const std::uint32_t all = counts[i] + entering[i];
            kept[i] = all > own[i] ? values[i] : Sample{0};
            counts[i] = all - leaving[i];
        }
    }
}

TIRN_TARGET_CLONES void markRows(const std::uint8_t* layer, const ImageAttributes& a, int y0, int y1,
                                 std::uint8_t limit, std::uint8_t* marks)
{
    markLayer(layer, a, y0, y1, limit, marks);
}
TIRN_TARGET_CLONES void markRows(const std::uint16_t* layer, const ImageAttributes& a, int y0, int y1,
                                 std::uint16_t limit, std::uint16_t* marks)
{
    markLayer(layer, a, y0, y1, limit, marks);
}
TIRN_TARGET_CLONES void keepBundle(const std::uint8_t* from, std::int64_t layerSamples, int layers, int half,
                                   std::int64_t count, std::uint8_t* to)
{
    keepMarked(from, layerSamples, layers, half, count, to);
}
TIRN_TARGET_CLONES void keepBundle(const std::uint16_t* from, std::int64_t layerSamples, int layers, int half,
                                   std::int64_t count, std::uint16_t* to)
{
    keepMarked(from, layerSamples, layers, half, count, to);
}

/// All channels without their specks in `to`; false when cancelled.
template <class Sample>
bool filterStack(const Sample* from, const ImageAttributes& a, int half, int threshold,
                 const Progress& progress, Sample* to)
{
    const std::int64_t layerSamples = std::int64_t{a.x} * a.y * a.channels;
    // Nothing is above the largest sample, and nothing lies in no layers.
    if (threshold >= static_cast<Sample>(~0) || half == 0) {
        std::fill_n(to, layerSamples * a.z, Sample{0});
        return !progress.cancelled();
    }
    const auto limit = static_cast<Sample>(threshold < 0 ? 0 : threshold + 1);
    const bool done = forEachPart(a, {}, progress, [&](const FilterPart& part) {
        markRows(from + part.z0 * layerSamples, a, part.y0, part.y1, limit, to + part.z0 * layerSamples);
    });
    if (!done)
        return false;
    // Layers outside are the first and the last one over and over: one of them on either side tells all.
    const int reach = std::min(half, a.z);
    parallelFor(0, (layerSamples + kBundle - 1) / kBundle, 4, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin * kBundle; i < std::min(end * kBundle, layerSamples); i += kBundle) {
            if (progress.cancelled())
                return;
            keepBundle(from + i, layerSamples, a.z, reach, std::min(kBundle, layerSamples - i), to + i);
        }
    });
    return !progress.cancelled();
}

/// Zeroes all channels but one.
template <class Sample>
void clearOtherChannels(const ImageAttributes& a, int channel, std::int64_t samples, Sample* stack)
{
    if (channel == -1 || a.channels == 1)
        return;
    parallelFor(0, samples / a.channels, std::int64_t{1} << 17, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i) {
            for (int c = 0; c < a.channels; ++c) {
                if (c != channel)
                    stack[i * a.channels + c] = 0;
            }
        }
    });
}

} // namespace

bool zFilter(ImageFile& stack, int size, int channel, int threshold, const Progress& progress)
{
    if (!canFilter(stack, channel))
        return false;
    const ImageAttributes& a = stack.attributes();
    const char* text = "Could not allocate memory for zfilter";
    VoxelBuffer result = allocateVoxels(stack.sampleCount() * a.bytesPerSample(), text);
    const bool done = withAllocationText(text, [&] {
        const int half = std::max(0, size / 2);
        const auto run = [&](const auto* from, auto* to) {
            if (!filterStack(from, a, half, threshold, progress, to))
                return false;
            // The other channels of the result are empty, not the stack's.
            clearOtherChannels(a, channel, stack.sampleCount(), to);
            return true;
        };
        return a.hasWords() ? run(stack.stackData16(), reinterpret_cast<std::uint16_t*>(result.data()))
                            : run(stack.stackData(), reinterpret_cast<std::uint8_t*>(result.data()));
    });
    if (done)
        stack.replaceVoxels(std::move(result));
    return done;
}

} // namespace tirn
