#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "base/checkedsize.h"
#include "base/log.h"
#include "image/allocationerror.h"
#include "image/imagefile.h"
#include "image/stackreader.h"
#include "image/steploop.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

constexpr std::int64_t kVectorBytes = 16;

template <class Sample>
struct VectorOf
{
    typedef Sample Type __attribute__((vector_size(kVectorBytes)));
};

/// Puts those of every Step-th sample into `picked` that lie in `part`, the vector `Part` of Step neighbours.
template <int Step, int Part, class Vector, std::size_t... I>
TIRN_INLINE Vector pickFrom(Vector part, Vector picked, std::index_sequence<I...>)
{
    constexpr int kCount = sizeof...(I);
    return __builtin_shufflevector(
        picked, part, (I * Step / kCount == Part ? kCount + static_cast<int>(I * Step % kCount) : I)...);
}

template <int Step, class Sample, std::size_t... Part>
TIRN_INLINE void pickVectors(const Sample* from, std::int64_t count, Sample* __restrict to,
                             std::index_sequence<Part...>)
{
    using Vector = typename VectorOf<Sample>::Type;
    constexpr std::int64_t kSamples = kVectorBytes / sizeof(Sample);
    std::int64_t i = 0;
    // The last samples are picked one by one: behind them a whole vector would reach over the stack's end.
    for (; i + kSamples < count; i += kSamples) {
        Vector parts[Step];
        std::memcpy(parts, from + i * Step, sizeof parts);
        Vector picked = {};
        ((picked = pickFrom<Step, Part>(parts[Part], picked, std::make_index_sequence<kSamples>())), ...);
        std::memcpy(to + i, &picked, sizeof picked);
    }
    for (; i < count; ++i)
        to[i] = from[i * Step];
}

template <int Step, class Sample>
TIRN_INLINE void pick(const Sample* from, std::int64_t count, Sample* __restrict to)
{
    // Steps that are powers of two are what compilers turn into whole vectors themselves.
    if constexpr (Step == 3)
        return pickVectors<Step>(from, count, to, std::make_index_sequence<Step>());
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
TIRN_INLINE int spreadRatio(int first, int second, double highest)
{
    // Two zeros have the ratio -1. Written without a choice, the loops around it become whole vectors.
    const int none = first + second == 0 ? 1 : 0;
    const double ratio =
        static_cast<double>(first - second - none) / static_cast<double>(first + second + none);
    return static_cast<int>((ratio + 1) * highest / 2 + 0.5);
}

/// The channels of a ratio in voxels of `step` samples.
struct RatioChannels
{
    int a;
    int b;
    int step;
};

template <int Step>
TIRN_INLINE void ratios(const std::uint16_t* from, std::int64_t count, const RatioChannels& channels,
                        double highest, std::uint16_t* __restrict to)
{
    const int step = Step > 0 ? Step : channels.step;
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = static_cast<std::uint16_t>(
            spreadRatio(from[i * step + channels.a], from[i * step + channels.b], highest));
}

TIRN_TARGET_CLONES void ratiosOfWords(const std::uint16_t* from, std::int64_t count,
                                      const RatioChannels& channels, double highest, std::uint16_t* to)
{
    if (channels.step == 2)
        ratios<2>(from, count, channels, highest, to);
    else
        ratios<0>(from, count, channels, highest, to);
}

/// The results of all pairs of bytes: looking them up takes less than a division.
class ByteRatios
{
public:
    ByteRatios(const RatioChannels& channels, double highest)
        : m_channels(channels), m_results(kValues * kValues)
    {
        std::vector<std::uint8_t> results(kValues * kValues);
        fill(highest, results.data());
        for (int a = 0; a < kValues; ++a) {
            for (int b = 0; b < kValues; ++b)
                m_results[pair(a, b)] = results[static_cast<std::size_t>(a * kValues + b)];
        }
    }

    void apply(const std::uint8_t* from, std::int64_t count, std::uint8_t* __restrict to) const
    {
        const std::uint8_t* results = m_results.data();
        const std::uint8_t* left = from + std::min(m_channels.a, m_channels.b);
        const std::uint8_t* right = from + std::max(m_channels.a, m_channels.b);
        const int step = m_channels.step;
        if (right == left + 1)
            return step == 2 ? lookUp<2>(left, step, count, to) : lookUp<0>(left, step, count, to);
        for (std::int64_t i = 0; i < count; ++i, left += step, right += step)
            to[i] = results[pairOf(*left, *right)];
    }

private:
    static constexpr int kValues = 256;

    TIRN_TARGET_CLONES static void fill(double highest, std::uint8_t* results)
    {
        for (int a = 0; a < kValues; ++a) {
            for (int b = 0; b < kValues; ++b)
                results[a * kValues + b] = static_cast<std::uint8_t>(spreadRatio(a, b, highest));
        }
    }

    /// Of neighbours, several voxels a turn, all looked up before one is stored.
    template <int KnownStep>
    void lookUp(const std::uint8_t* left, int anyStep, std::int64_t count, std::uint8_t* to) const
    {
        constexpr int kVoxels = 8;
        const std::int64_t step = KnownStep > 0 ? KnownStep : anyStep;
        const std::uint8_t* results = m_results.data();
        std::int64_t i = 0;
        for (; i + kVoxels <= count; i += kVoxels, left += kVoxels * step) {
            std::uint8_t found[kVoxels];
            for (int k = 0; k < kVoxels; ++k)
                found[k] = results[pairAt(left + k * step)];
            std::memcpy(to + i, found, sizeof found);
        }
        for (; i < count; ++i, left += step)
            to[i] = results[pairAt(left)];
    }

    /// Pairs are numbered by how they lie in memory, so that neighbours are read as one.
    static std::uint16_t pairAt(const std::uint8_t* left)
    {
        std::uint16_t number;
        std::memcpy(&number, left, sizeof number);
        return number;
    }

    static std::uint16_t pairOf(std::uint8_t left, std::uint8_t right)
    {
        const std::uint8_t bytes[] = {left, right};
        return pairAt(bytes);
    }

    std::uint16_t pair(int a, int b) const
    {
        const auto first = static_cast<std::uint8_t>(a);
        const auto second = static_cast<std::uint8_t>(b);
        return m_channels.a < m_channels.b ? pairOf(first, second) : pairOf(second, first);
    }

    RatioChannels m_channels;
    std::vector<std::uint8_t> m_results;
};

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

std::unique_ptr<ImageFile> ImageFile::extractChannel(int channel, const Progress& progress) const
{
    if (!isLoaded() || channel < 0 || channel >= m_attributes.channels)
        return nullptr;
    VoxelBuffer voxels =
        allocateVoxels(oneChannelBytes(m_attributes), "Could not allocate memory for extractChannel");
    const int step = m_attributes.channels;
    const auto copy = [&](std::int64_t begin, std::int64_t end) {
        const std::int64_t start = begin * step + channel;
        if (m_attributes.hasWords())
            pickWords(stackData16() + start, end - begin, step,
                      reinterpret_cast<std::uint16_t*>(voxels.data()) + begin);
        else
            pickBytes(stackData() + start, end - begin, step,
                      reinterpret_cast<std::uint8_t*>(voxels.data()) + begin);
    };
    if (!runItems(sampleCount() / step, std::int64_t{step + 1} * m_attributes.bytesPerSample(), progress,
                  copy))
        return nullptr;
    return oneChannel(*this, std::move(voxels));
}

std::unique_ptr<ImageFile> ImageFile::ratio(int channelA, int channelB, const Progress& progress)
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
    const RatioChannels channels = {channelA, channelB, step};
    const bool words = m_attributes.hasWords();
    std::optional<ByteRatios> byteRatios;
    if (!words)
        byteRatios.emplace(channels, highest);
    const auto divide = [&](std::int64_t begin, std::int64_t end) {
        if (words)
            ratiosOfWords(stackData16() + begin * step, end - begin, channels, highest,
                          reinterpret_cast<std::uint16_t*>(voxels.data()) + begin);
        else
            byteRatios->apply(stackData() + begin * step, end - begin,
                              reinterpret_cast<std::uint8_t*>(voxels.data()) + begin);
    };
    if (!runItems(sampleCount() / step, std::int64_t{step + 1} * m_attributes.bytesPerSample(), progress,
                  divide))
        return nullptr;
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
        setStackData(std::move(copy));
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
    m_io = openMergedReader(*this, first.attributes().type, files);
    if (m_io == nullptr)
        throw AllocationError("Could not allocate ImageIO object");
    m_fileMaximum = m_attributes.maxValue;
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
    mergeChannels(buffers, m_stackData.data(), m_attributes);
    generateStatistics();
    return true;
}

} // namespace tirn
