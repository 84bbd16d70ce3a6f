#include <algorithm>
#include <cmath>
#include <vector>

#include "base/checkedsize.h"
#include "base/log.h"
#include "image/imagefile.h"
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
    BlockRows(const Sample* stack, const ImageAttributes& attributes, const Factors& factors)
        : m_stack(stack), m_attributes(attributes), m_factors(factors),
          m_newX(blocks(attributes.x, factors.x)), m_newY(blocks(attributes.y, factors.y)),
          m_samples(std::int64_t{attributes.x} * attributes.channels),
          m_row(static_cast<std::size_t>(std::int64_t{m_newX} * factors.x * attributes.channels)),
          m_combined(static_cast<std::size_t>(std::int64_t{m_newX} * attributes.channels))
    {}

    /// A row of blocks, counted through the layers.
    TIRN_INLINE void make(std::int64_t blockRow, Sample* to)
    {
        const int rows = m_factors.y * m_factors.z;
        // The first rows of the blocks behind are fetched as well.
        const Sample* sources[kMostRows + kMostRows];
        findSources(blockRow, sources);
        findSources(blockRow + 1, sources + rows);
        for (int done = 0; done < rows; done += kRowsAtOnce) {
            const int taken = std::min(kRowsAtOnce, rows - done);
            for (int i = 0; i < taken; ++i)
                fetch(sources[done + taken + i]);
            take(sources + done, taken, done == 0);
        }
        for (auto i = static_cast<std::size_t>(m_samples); i < m_row.size(); ++i)
            m_row[i] = m_row[i - static_cast<std::size_t>(m_attributes.channels)];
        combineAlongX<How>(m_row.data(), m_newX, m_factors.x, m_attributes.channels, m_combined.data());
        const auto count = static_cast<std::int64_t>(m_combined.size());
        if constexpr (How == Reduction::Largest)
            std::copy_n(m_combined.data(), count, to);
        else if constexpr (sizeof(Sample) == 1)
            divideRow<float>(m_combined.data(), count, m_factors.product(), to);
        else
            divideRow<double>(m_combined.data(), count, m_factors.product(), to);
    }

private:
    using Row = typename BlockOf<Sample, How>::Row;
    using Block = typename BlockOf<Sample, How>::Block;

    /// The rows that become a row of blocks.
    void findSources(std::int64_t blockRow, const Sample** sources) const
    {
        const std::int64_t y = blockRow % m_newY * m_factors.y;
        const std::int64_t z = blockRow / m_newY * m_factors.z;
        for (int dz = 0; dz < m_factors.z; ++dz) {
            // A block that reaches over the end repeats the last voxel.
            const Sample* layer =
                m_stack + std::min<std::int64_t>(z + dz, m_attributes.z - 1) * m_attributes.y * m_samples;
            for (int dy = 0; dy < m_factors.y; ++dy)
                *sources++ = layer + std::min<std::int64_t>(y + dy, m_attributes.y - 1) * m_samples;
        }
    }

    TIRN_INLINE void fetch(const Sample* row) const
    {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(row);
        const std::int64_t size = std::min(m_samples * std::int64_t{sizeof(Sample)}, kFetchedAhead);
        for (std::int64_t i = 0; i < size; i += kCacheLine)
            __builtin_prefetch(bytes + i);
    }

    template <int Count, bool First>
    TIRN_INLINE void takeRows(const Sample* const* sources)
    {
        const Sample* from[Count];
        std::copy_n(sources, Count, from);
        const std::int64_t samples = m_samples;
        Row* __restrict row = m_row.data();
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
    std::int64_t m_samples;
    std::vector<Row> m_row;
    std::vector<Block> m_combined;
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
    BlockRows<Sample, How> rows(stack, attributes, factors);
    const std::int64_t rowSamples = std::int64_t{blocks(attributes.x, factors.x)} * attributes.channels;
    for (std::int64_t row = range.begin; row < range.end; ++row)
        rows.make(row, to + row * rowSamples);
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

/// Puts the stack in blocks in the place of the stack, unless cancelled.
void subSampleStack(ImageFile& stack, const Factors& factors, Reduction reduction, const char* text,
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
            // Blocks of one voxel have no mean to make.
            if (reduction == Reduction::Mean && factors.product() > 1)
                meansOfBlocks(from, attributes, factors, {begin, end}, to);
            else
                largestOfBlocks(from, attributes, factors, {begin, end}, to);
        });
    };
    const std::int64_t done = attributes.hasWords()
                                  ? run(stack.stackData16(), reinterpret_cast<std::uint16_t*>(result.data()))
                                  : run(stack.stackData(), reinterpret_cast<std::uint8_t*>(result.data()));
    if (done < loop.steps)
        return;
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
}

} // namespace

void ImageFile::subSample(int factor, const Progress& progress)
{
    const Factors factors = {factor, factor, factor};
    if (!factors.valid() || !ensureLoaded())
        return;
    logDebug("downsampling by %d %d %d", factor, factor, factor);
    subSampleStack(*this, factors, Reduction::Mean, "Could not allocate memory for subSample", progress);
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
