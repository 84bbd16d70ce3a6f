#include "image/filters/kernelfilter.h"

#include <algorithm>
#include <vector>

#include "base/log.h"
#include "base/stopwatch.h"
#include "image/filters/filterkernel.h"
#include "image/filters/filterparts.h"
#include "image/targetclones.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// Samples of a row that are summed together, so that their sums stay in the cache.
constexpr std::int64_t kTile = 1024;

/// Adds weight * row[i] to sums[i]. Products stand apart from the sums, so that no processor rounds the two
/// together and all of them give the same results.
TIRN_INLINE void addWeighted(const double* row, double weight, std::int64_t count,
                             double* __restrict products, double* __restrict sums)
{
    for (std::int64_t i = 0; i < count; ++i)
        products[i] = row[i] * weight;
    for (std::int64_t i = 0; i < count; ++i)
        sums[i] += products[i];
}

/// Lays a kernel over the rows of a part; the scratch rows belong to one thread.
template <class Sample>
class KernelRows
{
public:
    KernelRows(const ImageAttributes& a, const FilterKernel& kernel)
        : m_attributes(a), m_kernel(kernel), m_divisor(kernel.divisor()), m_highest((1 << a.bitDepth) - 1),
          m_samples(std::int64_t{a.x} * a.channels),
          m_padded(m_samples + std::int64_t{kernel.width - 1} * a.channels),
          m_rows(static_cast<std::size_t>(m_padded * kernel.height)), m_sums(kTile), m_products(kTile)
    {}

    TIRN_INLINE void run(const Sample* from, const FilterPart& part, Sample* to)
    {
        const int above = m_kernel.height / 2;
        const int below = m_kernel.height - 1 - above;
        for (int z = part.z0; z < part.z1; ++z) {
            const std::int64_t layer = std::int64_t{z} * m_attributes.y * m_samples;
            for (int y = part.y0 - above; y < part.y0 + below; ++y)
                load(from + layer, y);
            for (int y = part.y0; y < part.y1; ++y) {
                load(from + layer, y + below);
                for (std::int64_t i = 0; i < m_samples; i += kTile)
                    sumTile(y, i, std::min(kTile, m_samples - i), to + layer + y * m_samples);
            }
        }
    }

private:
    double* slot(int y)
    {
        const int turn = (y % m_kernel.height + m_kernel.height) % m_kernel.height;
        return m_rows.data() + turn * m_padded;
    }

    /// Takes a row, its edges repeated, in the place of the oldest one.
    TIRN_INLINE void load(const Sample* layer, int y)
    {
        const Sample* row = layer + std::clamp(y, 0, m_attributes.y - 1) * m_samples;
        const int channels = m_attributes.channels;
        double* to = slot(y);
        for (int i = 0; i < m_kernel.width / 2; ++i)
            to = std::copy_n(row, channels, to);
        to = std::copy_n(row, m_samples, to);
        for (int i = m_kernel.width / 2 + 1; i < m_kernel.width; ++i)
            to = std::copy_n(row + m_samples - channels, channels, to);
    }

    TIRN_INLINE void sumTile(int y, std::int64_t first, std::int64_t count, Sample* to)
    {
        std::fill_n(m_sums.data(), count, 0.0);
        const double* weight = m_kernel.weights.data();
        for (int j = 0; j < m_kernel.height; ++j) {
            const double* row = slot(y + j - m_kernel.height / 2) + first;
            for (int i = 0; i < m_kernel.width; ++i, ++weight) {
                addWeighted(row + std::int64_t{i} * m_attributes.channels, *weight, count, m_products.data(),
                            m_sums.data());
            }
        }
        const double highest = m_highest;
        const double divisor = m_divisor;
        const double* sums = m_sums.data();
        Sample* __restrict results = to + first;
        // A negative result is cut to 0, so that dropping the fraction rounds down.
        for (std::int64_t i = 0; i < count; ++i)
            results[i] = static_cast<Sample>(
                static_cast<std::int32_t>(std::clamp(sums[i] / divisor + 0.5, 0.0, highest)));
    }

    const ImageAttributes& m_attributes;
    const FilterKernel& m_kernel;
    double m_divisor;
    int m_highest;
    std::int64_t m_samples;
    std::int64_t m_padded;
    std::vector<double> m_rows;
    std::vector<double> m_sums;
    std::vector<double> m_products;
};

TIRN_TARGET_CLONES void kernelOverPart(const std::uint8_t* from, const ImageAttributes& a,
                                       const FilterKernel& kernel, const FilterPart& part, std::uint8_t* to)
{
    KernelRows<std::uint8_t>(a, kernel).run(from, part, to);
}

TIRN_TARGET_CLONES void kernelOverPart(const std::uint16_t* from, const ImageAttributes& a,
                                       const FilterKernel& kernel, const FilterPart& part, std::uint16_t* to)
{
    KernelRows<std::uint16_t>(a, kernel).run(from, part, to);
}

} // namespace

bool kernelFilter(ImageFile& stack, const FilterKernel& kernel, int channel, const Progress& progress)
{
    if (!kernel.isValid() || !canFilter(stack, channel))
        return false;
    const ImageAttributes& a = stack.attributes();
    const Stopwatch stopwatch;
    const char* text = "Could not allocate memory for kernelfilter";
    VoxelBuffer result = allocateVoxels(stack.sampleCount() * a.bytesPerSample(), text);
    const bool done = withAllocationText(text, [&] {
        const auto run = [&](const auto* from, auto* to) {
            return forEachPart(a, {}, progress,
                               [&](const FilterPart& part) { kernelOverPart(from, a, kernel, part, to); });
        };
        return a.hasWords() ? run(stack.stackData16(), reinterpret_cast<std::uint16_t*>(result.data()))
                            : run(stack.stackData(), reinterpret_cast<std::uint8_t*>(result.data()));
    });
    if (!done)
        return false;
    keepOtherChannels(stack, channel, result);
    logDebug("kernel %dx%d elapsed %dms", kernel.width, kernel.height, static_cast<int>(stopwatch.seconds()));
    stack.replaceVoxels(std::move(result));
    return true;
}

} // namespace tirn
