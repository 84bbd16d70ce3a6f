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

template <class Sample>
TIRN_INLINE void combineRow(const Sample* from, std::int64_t count, bool largest,
                            std::uint32_t* __restrict row)
{
    if (largest) {
        for (std::int64_t i = 0; i < count; ++i)
            row[i] = std::max<std::uint32_t>(row[i], from[i]);
    } else {
        for (std::int64_t i = 0; i < count; ++i)
            row[i] += from[i];
    }
}

TIRN_TARGET_CLONES void combineBytes(const std::uint8_t* from, std::int64_t count, bool largest,
                                     std::uint32_t* row)
{
    combineRow(from, count, largest, row);
}

TIRN_TARGET_CLONES void combineWords(const std::uint16_t* from, std::int64_t count, bool largest,
                                     std::uint32_t* row)
{
    combineRow(from, count, largest, row);
}

/// Combines `Factor` neighbours; `step` is the distance between two samples of a channel.
template <int Factor>
TIRN_INLINE void combineColumns(const std::uint32_t* row, std::int64_t voxels, int step, bool largest,
                                std::uint32_t* __restrict out)
{
    for (int c = 0; c < step; ++c) {
        for (std::int64_t i = 0; i < voxels; ++i) {
            const std::uint32_t* block = row + i * Factor * step + c;
            std::uint32_t value = block[0];
            for (int k = 1; k < Factor; ++k)
                value = largest ? std::max(value, block[k * step]) : value + block[k * step];
            out[i * step + c] = value;
        }
    }
}

TIRN_TARGET_CLONES void combineAlongX(const std::uint32_t* row, std::int64_t voxels, int factor, int step,
                                      bool largest, std::uint32_t* out)
{
    switch (factor) {
    case 1:
        return combineColumns<1>(row, voxels, step, largest, out);
    case 2:
        return combineColumns<2>(row, voxels, step, largest, out);
    case 3:
        return combineColumns<3>(row, voxels, step, largest, out);
    case 4:
        return combineColumns<4>(row, voxels, step, largest, out);
    case 5:
        return combineColumns<5>(row, voxels, step, largest, out);
    case 6:
        return combineColumns<6>(row, voxels, step, largest, out);
    case 7:
        return combineColumns<7>(row, voxels, step, largest, out);
    default:
        return combineColumns<8>(row, voxels, step, largest, out);
    }
}

/// floor(value / divisor + 0.5).
template <class Sample>
TIRN_INLINE void finishRow(const std::uint32_t* row, std::int64_t count, int divisor, Sample* __restrict to)
{
    const double scale = 1.0 / divisor;
    // The half in front of the division keeps every quotient off the whole numbers, so that multiplying with
    // the rounded reciprocal cannot end on the wrong side of one.
    const double offset = divisor / 2 + 0.5;
    if (divisor == 1) {
        for (std::int64_t i = 0; i < count; ++i)
            to[i] = static_cast<Sample>(row[i]);
        return;
    }
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = static_cast<Sample>(
            static_cast<std::int32_t>((static_cast<std::int32_t>(row[i]) + offset) * scale));
}

TIRN_TARGET_CLONES void finishBytes(const std::uint32_t* row, std::int64_t count, int divisor,
                                    std::uint8_t* to)
{
    finishRow(row, count, divisor, to);
}

TIRN_TARGET_CLONES void finishWords(const std::uint32_t* row, std::int64_t count, int divisor,
                                    std::uint16_t* to)
{
    finishRow(row, count, divisor, to);
}

/// Makes the rows of a sub-sampled stack, one after the other, on one thread.
class BlockRows
{
public:
    BlockRows(const ImageFile& stack, const Factors& factors, Reduction reduction)
        : m_stack(stack), m_attributes(stack.attributes()), m_factors(factors),
          m_largest(reduction == Reduction::Largest), m_newX(blocks(m_attributes.x, factors.x)),
          m_samples(std::int64_t{m_attributes.x} * m_attributes.channels),
          m_row(static_cast<std::size_t>(std::int64_t{m_newX} * factors.x * m_attributes.channels)),
          m_combined(static_cast<std::size_t>(std::int64_t{m_newX} * m_attributes.channels))
    {}

    /// The row of blocks (y, z), written to `to` in the stack's sample width.
    void make(int y, int z, std::uint8_t* to)
    {
        std::fill(m_row.begin(), m_row.end(), 0U);
        for (int dz = 0; dz < m_factors.z; ++dz) {
            for (int dy = 0; dy < m_factors.y; ++dy) {
                // A block that reaches over the end repeats the last voxel.
                const int fromY = std::min(y * m_factors.y + dy, m_attributes.y - 1);
                const int fromZ = std::min(z * m_factors.z + dz, m_attributes.z - 1);
                combine(m_stack.index(0, fromY, fromZ, 0));
            }
        }
        for (auto i = static_cast<std::size_t>(m_samples); i < m_row.size(); ++i)
            m_row[i] = m_row[i - static_cast<std::size_t>(m_attributes.channels)];
        combineAlongX(m_row.data(), m_newX, m_factors.x, m_attributes.channels, m_largest, m_combined.data());
        const auto count = static_cast<std::int64_t>(m_combined.size());
        const int divisor = m_largest ? 1 : m_factors.product();
        if (m_attributes.hasWords())
            finishWords(m_combined.data(), count, divisor, reinterpret_cast<std::uint16_t*>(to));
        else
            finishBytes(m_combined.data(), count, divisor, to);
    }

private:
    void combine(std::int64_t start)
    {
        if (m_attributes.hasWords())
            combineWords(m_stack.stackData16() + start, m_samples, m_largest, m_row.data());
        else
            combineBytes(m_stack.stackData() + start, m_samples, m_largest, m_row.data());
    }

    const ImageFile& m_stack;
    const ImageAttributes& m_attributes;
    Factors m_factors;
    bool m_largest;
    int m_newX;
    std::int64_t m_samples;
    std::vector<std::uint32_t> m_row;
    std::vector<std::uint32_t> m_combined;
};

/// The stack in blocks; `attributes` become those of the result.
VoxelBuffer subSampled(const ImageFile& stack, const Factors& factors, Reduction reduction,
                       ImageAttributes& attributes, const char* text)
{
    const int newX = blocks(attributes.x, factors.x);
    const int newY = blocks(attributes.y, factors.y);
    const int newZ = blocks(attributes.z, factors.z);
    const std::int64_t rowBytes = std::int64_t{newX} * attributes.channels * attributes.bytesPerSample();
    VoxelBuffer result = allocateVoxels(checkedProduct({rowBytes, newY, newZ}), text);
    auto* to = reinterpret_cast<std::uint8_t*>(result.data());
    parallelFor(0, std::int64_t{newY} * newZ, 16, [&](std::int64_t begin, std::int64_t end) {
        BlockRows rows(stack, factors, reduction);
        for (std::int64_t row = begin; row < end; ++row)
            rows.make(static_cast<int>(row % newY), static_cast<int>(row / newY), to + row * rowBytes);
    });
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
