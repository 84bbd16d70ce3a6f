#include <algorithm>
#include <cmath>
#include <vector>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "image/imagefile.h"
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

/// Makes the rows of a sub-sampled stack, one after the other, on one thread.
template <class Sample, Reduction How>
class BlockRows
{
public:
    BlockRows(const Sample* stack, const ImageAttributes& attributes, const Factors& factors)
        : m_stack(stack), m_attributes(attributes), m_factors(factors),
          m_newX(blocks(attributes.x, factors.x)),
          m_samples(std::int64_t{attributes.x} * attributes.channels),
          m_row(static_cast<std::size_t>(std::int64_t{m_newX} * factors.x * attributes.channels)),
          m_combined(static_cast<std::size_t>(std::int64_t{m_newX} * attributes.channels))
    {}

    /// The row of blocks (y, z).
    TIRN_INLINE void make(int y, int z, Sample* to)
    {
        for (int dz = 0; dz < m_factors.z; ++dz) {
            for (int dy = 0; dy < m_factors.y; ++dy) {
                // A block that reaches over the end repeats the last voxel.
                const int fromY = std::min(y * m_factors.y + dy, m_attributes.y - 1);
                const int fromZ = std::min(z * m_factors.z + dz, m_attributes.z - 1);
                take(m_stack + (std::int64_t{fromZ} * m_attributes.y + fromY) * m_samples,
                     dz == 0 && dy == 0);
            }
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

    TIRN_INLINE void take(const Sample* from, bool first)
    {
        const std::int64_t samples = m_samples;
        Row* __restrict row = m_row.data();
        if (first) {
            std::copy_n(from, samples, row);
        } else {
            for (std::int64_t i = 0; i < samples; ++i)
                row[i] = combined<How>(row[i], static_cast<Row>(from[i]));
        }
    }

    const Sample* m_stack;
    const ImageAttributes& m_attributes;
    Factors m_factors;
    int m_newX;
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
    const int newY = blocks(attributes.y, factors.y);
    const std::int64_t rowSamples = std::int64_t{blocks(attributes.x, factors.x)} * attributes.channels;
    for (std::int64_t row = range.begin; row < range.end; ++row)
        rows.make(static_cast<int>(row % newY), static_cast<int>(row / newY), to + row * rowSamples);
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

/// The stack in blocks; `attributes` become those of the result.
VoxelBuffer subSampled(const ImageFile& stack, const Factors& factors, Reduction reduction,
                       ImageAttributes& attributes, const char* text)
{
    const int newX = blocks(attributes.x, factors.x);
    const int newY = blocks(attributes.y, factors.y);
    const int newZ = blocks(attributes.z, factors.z);
    const std::int64_t rowBytes = std::int64_t{newX} * attributes.channels * attributes.bytesPerSample();
    VoxelBuffer result = allocateVoxels(checkedProduct({rowBytes, newY, newZ}), text);
    const ImageAttributes old = attributes;
    const auto run = [&](const auto* from, auto* to) {
        parallelFor(0, std::int64_t{newY} * newZ, 16, [&](std::int64_t begin, std::int64_t end) {
            // Blocks of one voxel have no mean to make.
            if (reduction == Reduction::Mean && factors.product() > 1)
                meansOfBlocks(from, old, factors, {begin, end}, to);
            else
                largestOfBlocks(from, old, factors, {begin, end}, to);
        });
    };
    if (old.hasWords())
        run(stack.stackData16(), reinterpret_cast<std::uint16_t*>(result.data()));
    else
        run(stack.stackData(), reinterpret_cast<std::uint8_t*>(result.data()));
    attributes.x = newX;
    attributes.y = newY;
    attributes.z = newZ;
    const std::pair<double*, int> sizes[] = {
        {&attributes.dimX, factors.x}, {&attributes.dimY, factors.y}, {&attributes.dimZ, factors.z}};
    for (const auto& [size, factor] : sizes) {
        if (*size > 0)
            *size *= factor;
    }
    return result;
}

} // namespace

void ImageFile::subSample(int factor)
{
    const Factors factors = {factor, factor, factor};
    if (!factors.valid() || !ensureLoaded())
        return;
    logDebug("downsampling by %d %d %d", factor, factor, factor);
    m_stackData =
        subSampled(*this, factors, Reduction::Mean, m_attributes, "Could not allocate memory for subSample");
}

void ImageFile::subSampleMax(int factorX, int factorY, int factorZ)
{
    const Factors factors = {factorX, factorY, factorZ};
    if (!factors.valid() || !ensureLoaded())
        return;
    logDebug("downsampling max by %d %d %d", factorX, factorY, factorZ);
    m_stackData = subSampled(*this, factors, Reduction::Largest, m_attributes,
                             "Could not allocate memory for subSampleMax");
}

void ImageFile::subSampleMean(int factorX, int factorY, int factorZ)
{
    const Factors factors = {factorX, factorY, factorZ};
    if (!factors.valid() || !ensureLoaded())
        return;
    logDebug("downsampling by %d %d %d", factorX, factorY, factorZ);
    m_stackData = subSampled(*this, factors, Reduction::Mean, m_attributes,
                             "Could not allocate memory for subSampleMean");
}

} // namespace tirn
