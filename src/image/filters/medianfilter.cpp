#include "image/filters/medianfilter.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "base/stopwatch.h"
#include "image/filters/filterparts.h"
#include "image/filters/median/mediansource.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

bool tooWide(int size, bool is3D) { return size > (is3D ? kWidestMedianCube : kWidestWindow); }

/// A window of the median filter.
struct MedianWindow
{
    int half;
    int halfZ;
};

/// The median at the first voxel of a layer, where values below the minimum of the statistics count as they
/// are.
template <class Sample>
Sample firstMedian(MedianSource<Sample> source, const MedianWindow& window, int z)
{
    source.lowest = 0;
    std::vector<std::int64_t> counters(static_cast<std::size_t>(source.highest) + 1);
    std::int64_t voxels = 0;
    for (int k = z - window.halfZ; k <= z + window.halfZ; ++k) {
        for (int j = -window.half; j <= window.half; ++j) {
            const Sample* row = source.row(j, k);
            // Columns up to the edge are all the first one.
            counters[source.seen(row[0])] += window.half;
            for (int i = 0; i <= window.half; ++i)
                ++counters[source.seen(row[source.column(i)])];
            voxels += 2 * window.half + 1;
        }
    }
    const std::int64_t rank = (voxels + 1) / 2;
    std::int64_t counted = 0;
    std::size_t value = 0;
    while (value < counters.size() && counted < rank)
        counted += counters[value++];
    return static_cast<Sample>(value - 1);
}

/// The largest value that `count` voxels of the channel show, from one voxel on.
template <class Sample>
TIRN_INLINE Sample largestOf(const MedianSource<Sample>& source, std::int64_t first, std::int64_t count)
{
    const MedianSource<Sample> copy = source;
    const Sample* samples = copy.samples + first * copy.channels + copy.channel;
    Sample largest = 0;
    if (copy.channels == 1) {
        for (std::int64_t i = 0; i < count; ++i)
            largest = std::max(largest, copy.seen(samples[i]));
    } else {
        for (std::int64_t i = 0; i < count; ++i)
            largest = std::max(largest, copy.seen(samples[i * copy.channels]));
    }
    return largest;
}

TIRN_TARGET_CLONES int largestSeen(const MedianSource<std::uint8_t>& source, std::int64_t first,
                                   std::int64_t count)
{
    return largestOf(source, first, count);
}

TIRN_TARGET_CLONES int largestSeen(const MedianSource<std::uint16_t>& source, std::int64_t first,
                                   std::int64_t count)
{
    return largestOf(source, first, count);
}

/// How many bits hold every value that the channel shows: at least 8.
template <class Sample>
int bitsSeen(const MedianSource<Sample>& source)
{
    constexpr std::int64_t kGrain = std::int64_t{1} << 20;
    if constexpr (sizeof(Sample) == 1)
        return 8;
    std::atomic<int> largest = 255;
    parallelFor(0, std::int64_t{source.x} * source.y * source.z, kGrain,
                [&](std::int64_t begin, std::int64_t end) {
                    const int found = largestSeen(source, begin, end - begin);
                    int before = largest;
                    while (before < found && !largest.compare_exchange_weak(before, found)) {
                    }
                });
    return bitCount(largest);
}

/// Whether there is a network of comparisons for the window.
bool hasNetwork(const MedianWindow& window)
{
    return window.half == 1 || (window.half == 2 && window.halfZ == 0);
}

template <class Sample>
void filterPart(const MedianSource<Sample>& source, const MedianWindow& window, int bits,
                const FilterPart& part, Sample* to)
{
    if (!hasNetwork(window))
        medianOfPart(source, window.half, window.halfZ, bits, part, to);
    else if (window.half == 1)
        medianOfPart3(source, window.halfZ > 0, part, to);
    else
        medianOfPart5(source, part, to);
}

/// The medians of a stack's chosen channels in `to`; false when cancelled.
template <class Sample>
bool filterStack(ImageFile& stack, const Sample* from, const MedianWindow& window, int channel,
                 const Progress& progress, Sample* to)
{
    const ImageAttributes& a = stack.attributes();
    for (int c = 0; c < a.channels; ++c) {
        if (channel != -1 && channel != c)
            continue;
        const int highest = (1 << a.bitDepth) - 1;
        const MedianSource<Sample> source = {from, a.x, a.y, a.z, a.channels, c, stack.stats(c).min, highest};
        const int bits = hasNetwork(window) ? 0 : bitsSeen(source);
        const bool done = forEachPart(a, {}, progress, [&](const FilterPart& part) {
            filterPart(source, window, bits, part, to);
            for (int z = part.z0; z < part.z1 && part.y0 == 0 && source.lowest > 0; ++z)
                to[stack.index(0, 0, z, c)] = firstMedian(source, window, z);
        });
        if (!done)
            return false;
    }
    return true;
}

/// The stack with the medians of the chosen channels; null when cancelled.
VoxelBuffer medians(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress,
                    const char* stackText)
{
    const ImageAttributes& a = stack.attributes();
    VoxelBuffer result = allocateVoxels(stack.sampleCount() * a.bytesPerSample(), stackText);
    const int half = std::max(0, size / 2);
    const MedianWindow window = {half, is3D ? half : 0};
    if (channel >= 0 && a.channels > 1)
        std::copy_n(stack.stackData(), result.size(), reinterpret_cast<std::uint8_t*>(result.data()));
    const bool done = withAllocationText("Could not allocate memory for medianfilter", [&] {
        return a.hasWords() ? filterStack(stack, stack.stackData16(), window, channel, progress,
                                          reinterpret_cast<std::uint16_t*>(result.data()))
                            : filterStack(stack, stack.stackData(), window, channel, progress,
                                          reinterpret_cast<std::uint8_t*>(result.data()));
    });
    if (!done)
        return {};
    return result;
}

/// background[i] becomes what is left of sample[i] when a part of the background is taken off.
template <class Sample>
void takeOff(const Sample* samples, double part, std::int64_t count, Sample* background)
{
    constexpr std::int64_t kPiece = 1024;
    double scaled[kPiece];
    for (std::int64_t start = 0; start < count; start += kPiece) {
        const std::int64_t end = std::min(count, start + kPiece);
        // Apart from the differences, so that no product is rounded together with one.
        for (std::int64_t i = start; i < end; ++i)
            scaled[i - start] = background[i] * part;
        for (std::int64_t i = start; i < end; ++i) {
            const double difference = samples[i] - scaled[i - start] + 0.5;
            background[i] = static_cast<Sample>(static_cast<std::int64_t>(difference < 0 ? 0 : difference));
        }
    }
}

} // namespace

bool medianFilter(ImageFile& stack, int size, int channel, bool is3D, const Progress& progress)
{
    if (!canFilter(stack, channel) || tooWide(size, is3D))
        return false;
    const Stopwatch stopwatch;
    VoxelBuffer result =
        medians(stack, size, channel, is3D, progress, "Could not allocate memory for medianfilter");
    if (result.isNull())
        return false;
    logDebug("median %dx%d elapsed %dms", size, size, static_cast<int>(stopwatch.seconds()));
    stack.replaceVoxels(std::move(result));
    return true;
}

bool backgroundSubtract(ImageFile& stack, int size, int channel, int percent, const Progress& progress)
{
    if (!canFilter(stack, channel) || tooWide(size, false))
        return false;
    const Stopwatch stopwatch;
    VoxelBuffer result =
        medians(stack, size, channel, false, progress, "Could not allocate memory for backgroundSubtract");
    if (result.isNull())
        return false;
    logDebug("median %dx%d elapsed %dms", size, size, static_cast<int>(stopwatch.seconds()));
    const double part = percent / 100.0;
    parallelFor(0, stack.sampleCount(), std::int64_t{1} << 18, [&](std::int64_t begin, std::int64_t end) {
        if (stack.attributes().hasWords())
            takeOff(stack.stackData16() + begin, part, end - begin,
                    reinterpret_cast<std::uint16_t*>(result.data()) + begin);
        else
            takeOff(stack.stackData() + begin, part, end - begin,
                    reinterpret_cast<std::uint8_t*>(result.data()) + begin);
    });
    keepOtherChannels(stack, channel, result);
    logDebug("background subtract %dx%d elapsed %dms", size, size, static_cast<int>(stopwatch.seconds()));
    stack.replaceVoxels(std::move(result));
    return true;
}

} // namespace tirn
