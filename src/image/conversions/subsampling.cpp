#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "base/checkedsize.h"
#include "base/log.h"
#include "image/imagefile.h"
#include "image/shortscale.h"
#include "image/steploop.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

enum class Reduction { Mean, Largest };

/// The voxels of a block along each axis.
struct Factors
{
    int x;
    int y;
    int z;

    bool valid() const { return std::min({x, y, z}) >= 1 && std::max({x, y, z}) <= 8; }
    int product() const { return x * y * z; }
};

int blocks(int size, int factor) { return (size + factor - 1) / factor; }

/// How blocks of samples become one. `Row` holds what the rows of a block come to, `Block` all of it.
template <class Sample, Reduction How>
struct BlockOf;

template <>
struct BlockOf<std::uint8_t, Reduction::Mean>
{
    // 8 * 8 rows of 255.
    using Row = std::uint16_t;
    using Block = std::uint32_t;
};

template <>
struct BlockOf<std::uint16_t, Reduction::Mean>
{
    using Row = std::uint32_t;
    using Block = std::uint32_t;
};

template <class Sample>
struct BlockOf<Sample, Reduction::Largest>
{
    using Row = Sample;
    using Block = Sample;
};

template <Reduction How, class Value>
TIRN_INLINE Value combined(Value a, Value b)
{
    if constexpr (How == Reduction::Largest)
        return a > b ? a : b;
    else
        return static_cast<Value>(a + b);
}

/// Combines `Factor` neighbours; `step` is the distance between two samples of a channel.
template <int Factor, Reduction How, class Row, class Block>
TIRN_INLINE void combineColumns(const Row* row, std::int64_t voxels, int step, Block* __restrict out)
{
    for (int c = 0; c < step; ++c) {
        for (std::int64_t i = 0; i < voxels; ++i) {
            const Row* block = row + i * Factor * step + c;
            Block value = block[0];
            for (int k = 1; k < Factor; ++k)
                value = combined<How>(value, static_cast<Block>(block[k * step]));
            out[i * step + c] = value;
        }
    }
}

template <int Factor, Reduction How, class Row, class Block>
TIRN_INLINE void combineBy(const Row* row, std::int64_t voxels, int step, Block* __restrict out)
{
    // A step that the compiler knows lets it load neighbours in whole vectors.
    if (step == 1)
        combineColumns<Factor, How>(row, voxels, 1, out);
    else
        combineColumns<Factor, How>(row, voxels, step, out);
}

template <Reduction How, class Row, class Block>
TIRN_INLINE void combineAlongX(const Row* row, std::int64_t voxels, int factor, int step,
                               Block* __restrict out)
{
    switch (factor) {
    case 1:
        return combineBy<1, How>(row, voxels, step, out);
    case 2:
        return combineBy<2, How>(row, voxels, step, out);
    case 3:
        return combineBy<3, How>(row, voxels, step, out);
    case 4:
        return combineBy<4, How>(row, voxels, step, out);
    case 5:
        return combineBy<5, How>(row, voxels, step, out);
    case 6:
        return combineBy<6, How>(row, voxels, step, out);
    case 7:
        return combineBy<7, How>(row, voxels, step, out);
    default:
        return combineBy<8, How>(row, voxels, step, out);
    }
}

/// floor(value / divisor + 0.5) in the precision of `Real`.
template <class Real, class Block, class Sample>
TIRN_INLINE void divideRow(const Block* row, std::int64_t count, int divisor, Sample* __restrict to)
{
    const Real scale = Real{1} / static_cast<Real>(divisor);
    // The half in front of the division keeps every quotient off the whole numbers, so that multiplying with
    // the rounded reciprocal cannot end on the wrong side of one.
    const Real offset = static_cast<Real>(divisor / 2) + Real{0.5};
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = static_cast<Sample>(static_cast<std::int32_t>(
            (static_cast<Real>(static_cast<std::int32_t>(row[i])) + offset) * scale));
}

/// Rows that are combined in one go, and the bytes at the front of each that are fetched ahead: rows of one
/// block lie layers apart, and processors guess only where one that has begun goes on.
constexpr int kRowsAtOnce = 4;
constexpr int kMostRows = 8 * 8;
constexpr std::int64_t kFetchedAhead = 2048;
constexpr std::int64_t kCacheLine = 64;

/// Makes the rows of a sub-sampled stack, one after the other, on one thread.
template <class Sample, Reduction How>
class BlockRows
{
public:
    /// The first row to make is counted through the layers.
    BlockRows(const Sample* stack, const ImageAttributes& attributes, const Factors& factors,
              std::int64_t firstRow)
        : m_stack(stack), m_attributes(attributes), m_factors(factors),
          m_newX(blocks(attributes.x, factors.x)), m_newY(blocks(attributes.y, factors.y)),
          m_blockY(static_cast<int>(firstRow % m_newY)), m_blockZ(static_cast<int>(firstRow / m_newY)),
          m_samples(std::int64_t{attributes.x} * attributes.channels),
          m_scale(255 * static_cast<std::uint32_t>(factors.product()),
                  static_cast<std::uint32_t>(factors.product())),
          m_inPairs(kMeansOfBytes && attributes.channels == 1 && factors.x % 2 == 0),
          m_row(static_cast<std::size_t>(std::int64_t{m_newX} * factors.x * attributes.channels)),
          m_combined(static_cast<std::size_t>(std::int64_t{m_newX} * attributes.channels)),
          m_brief(m_scale.valid ? m_combined.size() : 0)
    {
        findSources(m_sources);
    }

    /// The next row of blocks.
    TIRN_INLINE void make(Sample* to)
    {
        const int rows = m_factors.y * m_factors.z;
        // The first rows of the blocks behind are fetched as well.
        m_blockY = m_blockY + 1 < m_newY ? m_blockY + 1 : 0;
        m_blockZ += m_blockY == 0 ? 1 : 0;
        findSources(m_sources + rows);
        for (int done = 0; done < rows; done += kRowsAtOnce) {
            const int taken = std::min(kRowsAtOnce, rows - done);
            for (int i = 0; i < taken; ++i)
                fetch(m_sources[done + taken + i]);
            take(m_sources + done, taken, done == 0);
        }
        if constexpr (kMeansOfBytes) {
            finishBytes(to);
        } else {
            repeatLast();
            combineAlongX<How>(m_row.data(), m_newX, m_factors.x, m_attributes.channels, m_combined.data());
            const auto count = static_cast<std::int64_t>(m_combined.size());
            if constexpr (How == Reduction::Largest)
                std::copy_n(m_combined.data(), count, to);
            else
                divideRow<double>(m_combined.data(), count, m_factors.product(), to);
        }
        std::copy_n(m_sources + rows, rows, m_sources);
    }

private:
    using Row = typename BlockOf<Sample, How>::Row;
    using Block = typename BlockOf<Sample, How>::Block;
    static constexpr bool kMeansOfBytes = How == Reduction::Mean && sizeof(Sample) == 1;

    /// The rows that become a row of blocks.
    TIRN_INLINE void findSources(const Sample** sources) const
    {
        const int y = m_blockY * m_factors.y;
        const int z = m_blockZ * m_factors.z;
        for (int dz = 0; dz < m_factors.z; ++dz) {
            // A block that reaches over the end repeats the last voxel.
            const Sample* layer =
                m_stack + std::int64_t{std::min(z + dz, m_attributes.z - 1)} * m_attributes.y * m_samples;
            for (int dy = 0; dy < m_factors.y; ++dy)
                *sources++ = layer + std::min(y + dy, m_attributes.y - 1) * m_samples;
        }
    }

    TIRN_INLINE void fetch(const Sample* row) const
    {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(row);
        const std::int64_t size = std::min(m_samples * std::int64_t{sizeof(Sample)}, kFetchedAhead);
        for (std::int64_t i = 0; i < size; i += kCacheLine)
            __builtin_prefetch(bytes + i);
    }

    /// Fills the last block with the last voxel.
    TIRN_INLINE void repeatLast()
    {
        for (auto i = static_cast<std::size_t>(m_samples); i < m_row.size(); ++i)
            m_row[i] = m_row[i - static_cast<std::size_t>(m_attributes.channels)];
    }

    /// The same where the row holds sums of pairs.
    TIRN_INLINE void repeatLastPair()
    {
        const std::size_t pairs = m_row.size() / 2;
        const auto whole = static_cast<std::size_t>(m_attributes.x / 2);
        if (whole == pairs)
            return;
        int last = 0;
        for (int i = 0; i < m_factors.y * m_factors.z; ++i)
            last += m_sources[i][m_samples - 1];
        std::fill_n(m_row.data() + whole, pairs - whole, static_cast<Row>(2 * last));
    }

    TIRN_INLINE void finishBytes(Sample* to)
    {
        m_inPairs ? repeatLastPair() : repeatLast();
        const int factor = m_inPairs ? m_factors.x / 2 : m_factors.x;
        const auto count = static_cast<std::int64_t>(m_combined.size());
        if (!m_scale.valid) {
            combineAlongX<How>(m_row.data(), m_newX, factor, m_attributes.channels, m_combined.data());
            divideRow<float>(m_combined.data(), count, m_factors.product(), to);
            return;
        }
        const Row* sums = m_row.data();
        if (factor > 1) {
            combineAlongX<How>(m_row.data(), m_newX, factor, m_attributes.channels, m_brief.data());
            sums = m_brief.data();
        }
        for (std::int64_t i = 0; i < count; ++i)
            to[i] = static_cast<Sample>(m_scale.quotient(sums[i]));
    }

    template <int Count, bool First>
    TIRN_INLINE void takeRows(const Sample* const* sources)
    {
        const Sample* from[Count];
        std::copy_n(sources, Count, from);
        Row* __restrict row = m_row.data();
        if constexpr (kMeansOfBytes) {
            if (m_inPairs) {
                const std::int64_t pairs = m_samples / 2;
                for (std::int64_t i = 0; i < pairs; ++i) {
                    Row value = First ? Row{0} : row[i];
                    for (int k = 0; k < Count; ++k) {
                        std::uint16_t pair;
                        std::memcpy(&pair, from[k] + 2 * i, sizeof pair);
                        value = static_cast<Row>(value + (pair & 0xFF) + (pair >> 8));
                    }
                    row[i] = value;
                }
                return;
            }
        }
        const std::int64_t samples = m_samples;
        for (std::int64_t i = 0; i < samples; ++i) {
            Row value = First ? Row{0} : row[i];
            for (int k = 0; k < Count; ++k)
                value = combined<How>(value, static_cast<Row>(from[k][i]));
            row[i] = value;
        }
    }

    template <bool First>
    TIRN_INLINE void takeUpTo(const Sample* const* sources, int count)
    {
        switch (count) {
        case 1:
            return takeRows<1, First>(sources);
        case 2:
            return takeRows<2, First>(sources);
        case 3:
            return takeRows<3, First>(sources);
        default:
            return takeRows<kRowsAtOnce, First>(sources);
        }
    }

    TIRN_INLINE void take(const Sample* const* sources, int count, bool first)
    {
        first ? takeUpTo<true>(sources, count) : takeUpTo<false>(sources, count);
    }

    const Sample* m_stack;
    const ImageAttributes& m_attributes;
    Factors m_factors;
    int m_newX;
    int m_newY;
    /// The row of blocks whose sources were found last.
    int m_blockY;
    int m_blockZ;
    std::int64_t m_samples;
    ShortScale m_scale;
    /// Neighbours are added up as the two halves of a word, before rows are.
    bool m_inPairs;
    std::vector<Row> m_row;
    std::vector<Block> m_combined;
    /// What blocks of bytes come to when that fits.
    std::vector<Row> m_brief;
    /// Those of the row that is made next, and of the one behind.
    const Sample* m_sources[kMostRows + kMostRows];
};

/// Rows of a sub-sampled stack, counted through its layers.
struct RowRange
{
    std::int64_t begin;
    std::int64_t end;
};

template <class Sample, Reduction How>
TIRN_INLINE void makeRows(const Sample* stack, const ImageAttributes& attributes, const Factors& factors,
                          const RowRange& range, Sample* to)
{
    const std::int64_t rowSamples = std::int64_t{blocks(attributes.x, factors.x)} * attributes.channels;
    if (factors.product() == 1) {
        std::memcpy(to + range.begin * rowSamples, stack + range.begin * rowSamples,
                    static_cast<std::size_t>((range.end - range.begin) * rowSamples) * sizeof(Sample));
        return;
    }
    BlockRows<Sample, How> rows(stack, attributes, factors, range.begin);
    for (std::int64_t row = range.begin; row < range.end; ++row)
        rows.make(to + row * rowSamples);
}

TIRN_TARGET_CLONES void meansOfBlocks(const std::uint8_t* stack, const ImageAttributes& attributes,
                                      const Factors& factors, const RowRange& range, std::uint8_t* to)
{
    makeRows<std::uint8_t, Reduction::Mean>(stack, attributes, factors, range, to);
}
TIRN_TARGET_CLONES void meansOfBlocks(const std::uint16_t* stack, const ImageAttributes& attributes,
                                      const Factors& factors, const RowRange& range, std::uint16_t* to)
{
    makeRows<std::uint16_t, Reduction::Mean>(stack, attributes, factors, range, to);
}
TIRN_TARGET_CLONES void largestOfBlocks(const std::uint8_t* stack, const ImageAttributes& attributes,
                                        const Factors& factors, const RowRange& range, std::uint8_t* to)
{
    makeRows<std::uint8_t, Reduction::Largest>(stack, attributes, factors, range, to);
}
TIRN_TARGET_CLONES void largestOfBlocks(const std::uint16_t* stack, const ImageAttributes& attributes,
                                        const Factors& factors, const RowRange& range, std::uint16_t* to)
{
    makeRows<std::uint16_t, Reduction::Largest>(stack, attributes, factors, range, to);
}

/// Puts the stack in blocks in the place of the stack; false when cancelled.
bool subSampleStack(ImageFile& stack, const Factors& factors, Reduction reduction, const char* text,
                    const Progress& progress)
{
    ImageAttributes& attributes = stack.attributes();
    const int newX = blocks(attributes.x, factors.x);
    const int newY = blocks(attributes.y, factors.y);
    const int newZ = blocks(attributes.z, factors.z);
    const std::int64_t rowBytes = std::int64_t{newX} * attributes.channels * attributes.bytesPerSample();
    VoxelBuffer result = allocateVoxels(checkedProduct({rowBytes, newY, newZ}), text);
    const StepLoop loop = {newZ, newY, rowBytes * factors.product()};
    const auto run = [&](const auto* from, auto* to) {
        return runSteps(loop, QString(), progress, [&](std::int64_t begin, std::int64_t end) {
            if (reduction == Reduction::Mean)
                meansOfBlocks(from, attributes, factors, {begin, end}, to);
            else
                largestOfBlocks(from, attributes, factors, {begin, end}, to);
        });
    };
    const std::int64_t done = attributes.hasWords()
                                  ? run(stack.stackData16(), reinterpret_cast<std::uint16_t*>(result.data()))
                                  : run(stack.stackData(), reinterpret_cast<std::uint8_t*>(result.data()));
    if (done < loop.steps)
        return false;
    stack.setStackData(std::move(result));
    attributes.x = newX;
    attributes.y = newY;
    attributes.z = newZ;
    const std::pair<double*, int> sizes[] = {
        {&attributes.dimX, factors.x}, {&attributes.dimY, factors.y}, {&attributes.dimZ, factors.z}};
    for (const auto& [size, factor] : sizes) {
        if (*size > 0)
            *size *= factor;
    }
    return true;
}

} // namespace

void ImageFile::subSample(int factor, const Progress& progress)
{
    const Factors factors = {factor, factor, factor};
    if (!factors.valid() || !ensureLoaded())
        return;
    logDebug("downsampling by %d %d %d", factor, factor, factor);
    if (subSampleStack(*this, factors, Reduction::Mean, "Could not allocate memory for subSample", progress))
        m_reductions.push_back(factor);
}

void ImageFile::subSampleMax(int factorX, int factorY, int factorZ, const Progress& progress)
{
    const Factors factors = {factorX, factorY, factorZ};
    if (!factors.valid() || !ensureLoaded())
        return;
    logDebug("downsampling max by %d %d %d", factorX, factorY, factorZ);
    subSampleStack(*this, factors, Reduction::Largest, "Could not allocate memory for subSampleMax",
                   progress);
}

void ImageFile::subSampleMean(int factorX, int factorY, int factorZ, const Progress& progress)
{
    const Factors factors = {factorX, factorY, factorZ};
    if (!factors.valid() || !ensureLoaded())
        return;
    logDebug("downsampling by %d %d %d", factorX, factorY, factorZ);
    subSampleStack(*this, factors, Reduction::Mean, "Could not allocate memory for subSampleMean", progress);
}

} // namespace tirn
