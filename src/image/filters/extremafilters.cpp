#include "image/filters/extremafilters.h"

#include <algorithm>

#include "base/log.h"
#include "base/parallel.h"
#include "base/stopwatch.h"
#include "image/filters/filterparts.h"
#include "image/filters/runningextremum.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// Samples of a row that are worked on together, so that a window of such rows stays in the cache.
constexpr std::int64_t kTile = 4096;
/// Bytes of a layer that pass through all layers together.
constexpr std::int64_t kBundleBytes = 2048;

/// What the loops below need to know of a stack.
struct Geometry
{
    std::int64_t x;
    int y;
    int z;
    int channels;
    int half;

    std::int64_t rowSamples() const { return x * channels; }
    std::int64_t layerSamples() const { return rowSamples() * y; }
};

/// Fills a tile of the row `from`, or of nothing where that is null, with `half` voxels beside it on either
/// side; what lies outside the row loses against everything.
template <class Choice, class Sample>
TIRN_INLINE void loadTile(const Sample* from, const Geometry& g, std::int64_t x0, std::int64_t voxels,
                          Sample* to)
{
    const std::int64_t first = x0 - g.half;
    const std::int64_t last = x0 + voxels + g.half;
    const std::int64_t insideFirst = std::clamp<std::int64_t>(first, 0, g.x);
    const std::int64_t insideLast =
        from == nullptr ? insideFirst : std::clamp<std::int64_t>(last, insideFirst, g.x);
    Sample* const start = to + (insideFirst - first) * g.channels;
    Sample* const end = start + (insideLast - insideFirst) * g.channels;
    std::fill(to, start, Choice::template start<Sample>());
    if (from != nullptr)
        std::copy(from + insideFirst * g.channels, from + insideLast * g.channels, start);
    std::fill(end, to + (last - first) * g.channels, Choice::template start<Sample>());
}

/// The extremum within a layer, for rows y0 to y1 of it.
template <class Choice, class Sample>
TIRN_INLINE void filterLayer(const Sample* layer, const Geometry& g, int y0, int y1, Sample* to)
{
    const int window = 2 * g.half;
    const std::int64_t tileVoxels = std::max<std::int64_t>(1, kTile / g.channels);
    for (std::int64_t x0 = 0; x0 < g.x; x0 += tileVoxels) {
        const std::int64_t voxels = std::min(tileVoxels, g.x - x0);
        const std::int64_t samples = voxels * g.channels;
        std::vector<Sample> tile(static_cast<std::size_t>((voxels + window) * g.channels + kExtremumSlack));
        RunningExtremum<Choice, Sample> rows(window, samples);
        int y = y0;
        for (int in = y0 - g.half; y < y1; ++in) {
            if (in < 0 || in >= g.y) {
                std::fill_n(rows.slot(), samples, Choice::template start<Sample>());
            } else {
                loadTile<Choice>(layer + in * g.rowSamples(), g, x0, voxels, tile.data());
                extremumAlongRow<Choice>(tile.data(), samples, window, g.channels, rows.slot());
            }
            y += rows.push(to + y * g.rowSamples() + x0 * g.channels) ? 1 : 0;
        }
    }
}

/// The extremum along z of `count` samples of each layer, in place.
template <class Choice, class Sample>
TIRN_INLINE void filterBundle(Sample* stack, const Geometry& g, std::int64_t count)
{
    RunningExtremum<Choice, Sample> layers(2 * g.half, count);
    int z = 0;
    for (int in = -g.half; z < g.z; ++in) {
        if (in < 0 || in >= g.z)
            std::fill_n(layers.slot(), count, Choice::template start<Sample>());
        else
            std::copy_n(stack + in * g.layerSamples(), count, layers.slot());
        z += layers.push(stack + z * g.layerSamples()) ? 1 : 0;
    }
}

TIRN_TARGET_CLONES void largestInLayer(const std::uint8_t* from, const Geometry& g, int y0, int y1,
                                       std::uint8_t* to)
{
    filterLayer<Larger>(from, g, y0, y1, to);
}
TIRN_TARGET_CLONES void largestInLayer(const std::uint16_t* from, const Geometry& g, int y0, int y1,
                                       std::uint16_t* to)
{
    filterLayer<Larger>(from, g, y0, y1, to);
}
TIRN_TARGET_CLONES void smallestInLayer(const std::uint8_t* from, const Geometry& g, int y0, int y1,
                                        std::uint8_t* to)
{
    filterLayer<Smaller>(from, g, y0, y1, to);
}
TIRN_TARGET_CLONES void smallestInLayer(const std::uint16_t* from, const Geometry& g, int y0, int y1,
                                        std::uint16_t* to)
{
    filterLayer<Smaller>(from, g, y0, y1, to);
}
TIRN_TARGET_CLONES void largestAlongZ(std::uint8_t* stack, const Geometry& g, std::int64_t count)
{
    filterBundle<Larger>(stack, g, count);
}
TIRN_TARGET_CLONES void largestAlongZ(std::uint16_t* stack, const Geometry& g, std::int64_t count)
{
    filterBundle<Larger>(stack, g, count);
}
TIRN_TARGET_CLONES void smallestAlongZ(std::uint8_t* stack, const Geometry& g, std::int64_t count)
{
    filterBundle<Smaller>(stack, g, count);
}
TIRN_TARGET_CLONES void smallestAlongZ(std::uint16_t* stack, const Geometry& g, std::int64_t count)
{
    filterBundle<Smaller>(stack, g, count);
}

enum class Extremum { Largest, Smallest };

/// The filtered samples in `to`; false when cancelled.
template <class Sample>
bool filterStack(const Sample* from, const ImageAttributes& a, int size, bool is3D, Extremum extremum,
                 const Progress& progress, Sample* to)
{
    const Geometry g = {a.x, a.y, a.z, a.channels, std::max(0, size / 2)};
    const bool largest = extremum == Extremum::Largest;
    // A window of no voxels leaves what the search starts from.
    if (g.half == 0) {
        std::fill_n(to, g.layerSamples() * g.z, largest ? Larger::start<Sample>() : Smaller::start<Sample>());
        return true;
    }
    // No layer has more to tell than the whole stack.
    Geometry inLayer = g;
    inLayer.half = std::min(g.half, std::max(a.x, a.y) + 1);
    const bool done = forEachPart(a, {}, progress, [&](const FilterPart& part) {
        const std::int64_t layer = part.z0 * g.layerSamples();
        if (largest)
            largestInLayer(from + layer, inLayer, part.y0, part.y1, to + layer);
        else
            smallestInLayer(from + layer, inLayer, part.y0, part.y1, to + layer);
    });
    if (!done || !is3D)
        return done;
    Geometry alongZ = g;
    alongZ.half = std::min(g.half, a.z + 1);
    const auto bundle = static_cast<std::int64_t>(kBundleBytes / sizeof(Sample));
    parallelFor(0, (g.layerSamples() + bundle - 1) / bundle, 4, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end && !progress.cancelled(); ++i) {
            const std::int64_t count = std::min(bundle, g.layerSamples() - i * bundle);
            if (largest)
                largestAlongZ(to + i * bundle, alongZ, count);
            else
                smallestAlongZ(to + i * bundle, alongZ, count);
        }
    });
    return !progress.cancelled();
}

/// The filtered stack; null when cancelled.
VoxelBuffer filtered(const ImageFile& stack, int size, int channel, bool is3D, Extremum extremum,
                     const Progress& progress, const char* text)
{
    const ImageAttributes& a = stack.attributes();
    VoxelBuffer result = allocateVoxels(stack.sampleCount() * a.bytesPerSample(), text);
    const bool done = withAllocationText(text, [&] {
        return a.hasWords() ? filterStack(stack.stackData16(), a, size, is3D, extremum, progress,
                                          reinterpret_cast<std::uint16_t*>(result.data()))
                            : filterStack(stack.stackData(), a, size, is3D, extremum, progress,
                                          reinterpret_cast<std::uint8_t*>(result.data()));
    });
    if (!done)
        return {};
    keepOtherChannels(stack, channel, result);
    return result;
}

} // namespace

bool maxFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress)
{
    if (!canFilter(stack, channel))
        return false;
    const Stopwatch stopwatch;
    VoxelBuffer result = filtered(stack, size, channel, is3D, Extremum::Largest, progress,
                                  "Could not allocate memory for maxfilter");
    if (result.isNull())
        return false;
    logDebug("maxfilter %dx%d elapsed %dms", size, size, static_cast<int>(stopwatch.seconds()));
    stack.replaceVoxels(std::move(result));
    return true;
}

bool minFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress)
{
    if (!canFilter(stack, channel))
        return false;
    const Stopwatch stopwatch;
    VoxelBuffer result = filtered(stack, size, channel, is3D, Extremum::Smallest, progress,
                                  "Could not allocate memory for minfilter");
    if (result.isNull())
        return false;
    logDebug("minfilter %dx%d elapsed %dms", size, size, static_cast<int>(stopwatch.seconds()));
    stack.replaceVoxels(std::move(result));
    return true;
}

} // namespace tirn
