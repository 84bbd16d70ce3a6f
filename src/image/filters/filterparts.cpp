#include "image/filters/filterparts.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "base/parallel.h"
#include "image/targetclones.h"

namespace tirn {

namespace {

/// Parts worked on between two reports.
constexpr std::int64_t kPartsPerThread = 4;

template <class Sample>
TIRN_INLINE void blend(const Sample* other, const Sample* mask, std::int64_t count, Sample* __restrict to)
{
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = static_cast<Sample>((to[i] & mask[i]) | (other[i] & static_cast<Sample>(~mask[i])));
}

TIRN_TARGET_CLONES void blendBytes(const std::uint8_t* other, const std::uint8_t* mask, std::int64_t count,
                                   std::uint8_t* to)
{
    blend(other, mask, count, to);
}

TIRN_TARGET_CLONES void blendWords(const std::uint16_t* other, const std::uint16_t* mask, std::int64_t count,
                                   std::uint16_t* to)
{
    blend(other, mask, count, to);
}

/// Runs `loop` over both buffers with a mask that is all ones for the samples of one channel.
template <class Sample, class Loop>
void blendStack(const Sample* other, std::int64_t samples, int channels, int channel, Sample* to, Loop loop)
{
    const std::int64_t piece = 4096 * std::int64_t{channels};
    std::vector<Sample> mask(static_cast<std::size_t>(piece), Sample{0});
    for (auto i = static_cast<std::size_t>(channel); i < mask.size(); i += static_cast<std::size_t>(channels))
        mask[i] = static_cast<Sample>(~Sample{0});
    parallelFor(0, (samples + piece - 1) / piece, 16, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i)
            loop(other + i * piece, mask.data(), std::min(piece, samples - i * piece), to + i * piece);
    });
}

} // namespace

bool canFilter(ImageFile& stack, int channel)
{
    return stack.ensureLoaded() && stack.sampleCount() > 0 && channel >= -1 &&
           channel < stack.attributes().channels;
}

bool forEachPart(const ImageAttributes& attributes, const PartLimits& limits, const Progress& progress,
                 const std::function<void(const FilterPart&)>& body)
{
    if (attributes.y < 1 || attributes.z < 1)
        return true;
    const int threads = parallelThreads();
    const int layers = limits.layers;
    const int layerParts = (attributes.z + layers - 1) / layers;
    int rowParts = (attributes.y + limits.mostRows - 1) / limits.mostRows;
    if (std::int64_t{layerParts} * rowParts < 2 * threads)
        rowParts = std::clamp((2 * threads + layerParts - 1) / layerParts, rowParts,
                              std::max(rowParts, attributes.y / limits.leastRows));
    const std::int64_t parts = std::int64_t{layerParts} * rowParts;
    const std::int64_t group = kPartsPerThread * threads;
    for (std::int64_t first = 0; first < parts; first += group) {
        if (progress.cancelled())
            return false;
        progress(QString(), static_cast<int>(first * 100 / parts), first == 0 ? 100 : -1);
        parallelFor(first, std::min(parts, first + group), 1, [&](std::int64_t begin, std::int64_t end) {
            for (std::int64_t part = begin; part < end; ++part) {
                const auto layerPart = static_cast<int>(part / rowParts);
                const auto rowPart = part % rowParts;
                body({layerPart * layers, std::min(attributes.z, (layerPart + 1) * layers),
                      static_cast<int>(rowPart * attributes.y / rowParts),
                      static_cast<int>((rowPart + 1) * attributes.y / rowParts)});
            }
        });
    }
    progress(QString(), 100, -1);
    return !progress.cancelled();
}

void keepOtherChannels(const ImageFile& stack, int channel, VoxelBuffer& result)
{
    const ImageAttributes& a = stack.attributes();
    if (channel < 0 || a.channels < 2)
        return;
    if (a.hasWords())
        blendStack(stack.stackData16(), stack.sampleCount(), a.channels, channel,
                   reinterpret_cast<std::uint16_t*>(result.data()), blendWords);
    else
        blendStack(stack.stackData(), stack.sampleCount(), a.channels, channel,
                   reinterpret_cast<std::uint8_t*>(result.data()), blendBytes);
}

} // namespace tirn
