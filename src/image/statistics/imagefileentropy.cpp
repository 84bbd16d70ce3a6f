#include <algorithm>
#include <cmath>
#include <vector>

#include "base/log.h"
#include "image/imagefile.h"

namespace tirn {

namespace {

/// Shannon's entropy in bits of counts that stand for `total` samples.
template <class Counts>
double shannon(const Counts& counts, double total)
{
    double entropy = 0;
    for (const auto count : counts) {
        const double p = static_cast<double>(count) / total;
        if (p > 0)
            entropy -= p * std::log(p) / std::log(2.0);
    }
    return entropy;
}

double bitsOfBinsInUse(const Histogram& histogram)
{
    const auto used = std::count_if(histogram.begin(), histogram.end(), [](auto count) { return count > 0; });
    return used > 0 ? std::log(static_cast<double>(used)) / std::log(2.0) : 0;
}

const StackStats* record(const std::vector<StackStats>& records, int channel)
{
    if (channel < 0 || static_cast<std::size_t>(channel) >= records.size())
        return nullptr;
    return &records[static_cast<std::size_t>(channel)];
}

const Histogram* layerHistogram(const std::vector<StackStats>& records, int channel, int z)
{
    const StackStats* stats = record(records, channel);
    if (stats == nullptr || z < 0 || static_cast<std::size_t>(z) >= stats->sliceHistograms.size())
        return nullptr;
    return &stats->sliceHistograms[static_cast<std::size_t>(z)];
}

double layerVoxels(const ImageAttributes& attributes)
{
    return static_cast<double>(attributes.x) * attributes.y;
}

} // namespace

double ImageFile::entropy(int channel) const
{
    const StackStats* stats = record(m_statsList, channel);
    return stats != nullptr ? shannon(stats->histogram, layerVoxels(m_attributes) * m_attributes.z) : 0;
}

double ImageFile::sliceEntropy(int channel, int z) const
{
    const Histogram* histogram = layerHistogram(m_statsList, channel, z);
    return histogram != nullptr ? shannon(*histogram, layerVoxels(m_attributes)) : 0;
}

double ImageFile::maxEntropy(int channel) const
{
    const StackStats* stats = record(m_statsList, channel);
    return stats != nullptr ? bitsOfBinsInUse(stats->histogram) : 0;
}

double ImageFile::maxSliceEntropy(int channel, int z) const
{
    const Histogram* histogram = layerHistogram(m_statsList, channel, z);
    return histogram != nullptr ? bitsOfBinsInUse(*histogram) : 0;
}

double ImageFile::entropyScaled(int channel, const std::vector<double>& scales) const
{
    const StackStats* stats = record(m_statsList, channel);
    if (stats == nullptr) {
        logDebug("Channel %d not possible", channel);
        return 0;
    }
    const std::size_t bins = stats->histogram.size();
    std::vector<double> scaled(bins);
    const std::size_t layers = std::min(scales.size(), stats->sliceHistograms.size());
    for (std::size_t z = 0; z < layers; ++z) {
        const Histogram& histogram = stats->sliceHistograms[z];
        for (std::size_t i = 0; i < histogram.size(); ++i) {
            const auto count = static_cast<double>(histogram[i]);
            if (count == 0)
                continue;
            const double value = static_cast<double>(i) * scales[z];
            const double low = std::floor(value);
            const double fraction = value - low;
            // A share needs the next counter as well, so the last one takes what has no neighbour.
            if (low >= 0 && low + 1 < static_cast<double>(bins)) {
                // The low neighbour gets the fraction, not its complement.
                scaled[static_cast<std::size_t>(low)] += count * fraction;
                scaled[static_cast<std::size_t>(low) + 1] += count * (1 - fraction);
            } else {
                scaled[bins - 1] += count;
            }
        }
    }
    return shannon(scaled, layerVoxels(m_attributes) * m_attributes.z);
}

double ImageFile::sliceEntropyScaled(int channel, int z, double scale) const
{
    const Histogram* histogram = layerHistogram(m_statsList, channel, z);
    if (histogram == nullptr)
        return 0;
    std::vector<double> scaled(histogram->size());
    for (std::size_t i = 0; i < histogram->size(); ++i) {
        const double target = std::floor(static_cast<double>(i) * scale + 0.5);
        // A count moved past the histogram's end has no counter.
        if (target >= 0 && target < static_cast<double>(scaled.size()))
            scaled[static_cast<std::size_t>(target)] += static_cast<double>((*histogram)[i]);
    }
    return shannon(scaled, layerVoxels(m_attributes));
}

} // namespace tirn
