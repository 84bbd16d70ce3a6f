#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "formats/imageformats.h"
#include "formats/imageio.h"
#include "formats/mergedio.h"
#include "image/allocationerror.h"
#include "image/imagefile.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// Voxels that one thread works on at a time.
constexpr std::int64_t kGrain = std::int64_t{1} << 18;

template <int Step, class Sample>
TIRN_INLINE void pick(const Sample* from, std::int64_t count, Sample* __restrict to)
{
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = from[i * Step];
}

template <class Sample>
TIRN_INLINE void pickAny(const Sample* from, std::int64_t count, int step, Sample* __restrict to)
{
    switch (step) {
    case 1:
        return pick<1>(from, count, to);
    case 2:
        return pick<2>(from, count, to);
    case 3:
        return pick<3>(from, count, to);
    case 4:
        return pick<4>(from, count, to);
    default:
        for (std::int64_t i = 0; i < count; ++i)
            to[i] = from[i * step];
    }
}

TIRN_TARGET_CLONES void pickBytes(const std::uint8_t* from, std::int64_t count, int step, std::uint8_t* to)
{
    pickAny(from, count, step, to);
}

TIRN_TARGET_CLONES void pickWords(const std::uint16_t* from, std::int64_t count, int step, std::uint16_t* to)
{
    pickAny(from, count, step, to);
}

/// The ratio of two samples from -1 to 1, spread over `highest` and rounded.
template <class Sample>
TIRN_INLINE void spreadRatio(const Sample* a, const Sample* b, std::int64_t count, int step, double highest,
                             Sample* __restrict to)
{
    for (std::int64_t i = 0; i < count; ++i) {
        const int first = a[i * step];
        const int second = b[i * step];
        const double sum = first + second;
        const double ratio = first + second == 0 ? -1.0 : (first - second) / sum;
        to[i] = static_cast<Sample>(static_cast<int>((ratio + 1) * highest / 2 + 0.5));
    }
}

TIRN_TARGET_CLONES void ratioOfBytes(const std::uint8_t* a, const std::uint8_t* b, std::int64_t count,
                                     int step, double highest, std::uint8_t* to)
{
    spreadRatio(a, b, count, step, highest, to);
}

TIRN_TARGET_CLONES void ratioOfWords(const std::uint16_t* a, const std::uint16_t* b, std::int64_t count,
                                     int step, double highest, std::uint16_t* to)
{
    spreadRatio(a, b, count, step, highest, to);
}

/// A stack of one channel beside `stack`, of its size, depth and voxel size, around `voxels`.
std::unique_ptr<ImageFile> oneChannel(const ImageFile& stack, VoxelBuffer voxels)
{
    const ImageAttributes& a = stack.attributes();
    auto result = std::make_unique<ImageFile>(std::move(voxels), a.x, a.y, a.z, 1, a.bitDepth);
    result->attributes().dimX = a.dimX;
    result->attributes().dimY = a.dimY;
    result->attributes().dimZ = a.dimZ;
    return result;
}

std::optional<std::int64_t> oneChannelBytes(const ImageAttributes& a)
{
    return checkedProduct({a.x, a.y, a.z, a.bytesPerSample()});
}

/// What keeps stacks from being merged, as a text; empty when nothing does.
QString mergeRefusal(const std::vector<ImageFile*>& stacks)
{
    for (std::size_t i = 0; i < stacks.size(); ++i) {
        if (stacks[i]->attributes().channels != 1)
            return QStringLiteral("Can't merge stacks with multiple channels!");
        if (!stacks[i]->isLoaded())
            return QStringLiteral("Stack %1 is empty!\t").arg(i);
        if (!(stacks[i]->attributes() == stacks.front()->attributes()))
            return QStringLiteral("attribute mismatch! aborting merge");
    }
    return {};
}

} // namespace

std::unique_ptr<ImageFile> ImageFile::extractChannel(int channel) const
{
    if (!isLoaded() || channel < 0 || channel >= m_attributes.channels)
        return nullptr;
    VoxelBuffer voxels =
        allocateVoxels(oneChannelBytes(m_attributes), "Could not allocate memory for extractChannel");
    const int step = m_attributes.channels;
    parallelFor(0, sampleCount() / step, kGrain, [&](std::int64_t begin, std::int64_t end) {
        const std::int64_t start = begin * step + channel;
        if (m_attributes.hasWords())
            pickWords(stackData16() + start, end - begin, step,
                      reinterpret_cast<std::uint16_t*>(voxels.data()) + begin);
        else
            pickBytes(stackData() + start, end - begin, step,
                      reinterpret_cast<std::uint8_t*>(voxels.data()) + begin);
    });
    return oneChannel(*this, std::move(voxels));
}

std::unique_ptr<ImageFile> ImageFile::ratio(int channelA, int channelB)
{
    ensureLoaded();
    if (channelA < 0 || channelA >= m_attributes.channels)
        throw QStringLiteral("channel A not possible");
    if (channelB < 0 || channelB >= m_attributes.channels)
        throw QStringLiteral("channel B not possible");
    if (channelA == channelB)
        throw QStringLiteral("Error: trying to ratio channel against itself");
    if (!isLoaded())
        return nullptr;
    VoxelBuffer voxels = allocateVoxels(oneChannelBytes(m_attributes), "Could not allocate memory for ratio");
    const int step = m_attributes.channels;
    const double highest = (1 << m_attributes.bitDepth) - 1;
    parallelFor(0, sampleCount() / step, kGrain, [&](std::int64_t begin, std::int64_t end) {
        const std::int64_t a = begin * step + channelA;
        const std::int64_t b = begin * step + channelB;
        if (m_attributes.hasWords())
            ratioOfWords(stackData16() + a, stackData16() + b, end - begin, step, highest,
                         reinterpret_cast<std::uint16_t*>(voxels.data()) + begin);
        else
            ratioOfBytes(stackData() + a, stackData() + b, end - begin, step, highest,
                         reinterpret_cast<std::uint8_t*>(voxels.data()) + begin);
    });
    return oneChannel(*this, std::move(voxels));
}

bool ImageFile::merge(const std::vector<ImageFile*>& stacks)
{
    if (stacks.empty()) {
        logDebug("No stacks to merge");
        return false;
    }
    const ImageFile& first = *stacks.front();
    if (stacks.size() == 1) {
        VoxelBuffer copy;
        if (first.isLoaded()) {
            copy = allocateVoxels(first.m_stackData.size(), "Could not allocate memory for merge");
            std::memcpy(copy.data(), first.m_stackData.data(), static_cast<std::size_t>(copy.size()));
        }
        m_attributes = first.m_attributes;
        m_stackData = std::move(copy);
        return true;
    }
    const QString refusal = mergeRefusal(stacks);
    if (!refusal.isEmpty()) {
        log(LogLevel::Debug, refusal);
        return false;
    }
    std::vector<QStringList> files;
    std::vector<const std::byte*> buffers;
    for (const ImageFile* stack : stacks) {
        files.push_back(stack->hasReader() ? stack->filePaths() : QStringList());
        buffers.push_back(stack->m_stackData.data());
    }
    m_io.reset();
    const ImageFormat* format = findImageFormat(first.attributes().type);
    if (format == nullptr || !format->mergeable)
        throw AllocationError("Could not allocate ImageIO object");
    m_io = std::make_unique<MergedIO>(*this, first.attributes().type, files);
    m_attributes.fileZ = first.m_attributes.fileZ;
    m_attributes.x = first.m_attributes.x;
    m_attributes.y = first.m_attributes.y;
    m_attributes.z = first.m_attributes.z;
    m_attributes.bitDepth = first.m_attributes.bitDepth;
    // A step has stretched the voxels of the stacks, not those that the files state.
    m_attributes.dimX = first.m_attributes.dimX;
    m_attributes.dimY = first.m_attributes.dimY;
    m_attributes.dimZ = first.m_attributes.dimZ;
    m_firstLayer = first.m_firstLayer;
    m_lastLayer = first.m_lastLayer;
    m_layerStep = first.m_layerStep;
    m_stackData.reset();
    m_stackData = allocateVoxels(checkedProduct({m_attributes.x, m_attributes.y, m_attributes.z,
                                                 m_attributes.channels, m_attributes.bytesPerSample()}),
                                 "Could not allocate memory for merge");
    ImageIO::mergeChannels(buffers, m_stackData.data(), m_attributes);
    generateStatistics();
    return true;
}

} // namespace tirn
