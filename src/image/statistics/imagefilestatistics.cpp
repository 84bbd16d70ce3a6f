#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <mutex>
#include <numeric>

#include "base/log.h"
#include "base/parallel.h"
#include "base/stopwatch.h"
#include "image/imagefile.h"
#include "image/statistics/histogramcount.h"
#include "image/targetclones.h"

namespace tirn {

namespace {

/// A counter of 32 bits is summed into 64 before it can overflow.
constexpr std::int64_t kLargestPart = std::int64_t{1} << 30;
/// A layer is worth splitting over threads from this many voxels on.
constexpr std::int64_t kSplitLayer = std::int64_t{1} << 20;

/// The parts of a stack that threads count one at a time: layers, or pieces of them.
struct Partition
{
    std::int64_t layers;
    std::int64_t layerVoxels;
    std::int64_t partsPerLayer = 1;

    Partition(std::int64_t layerCount, std::int64_t voxels) : layers(layerCount), layerVoxels(voxels)
    {
        const std::int64_t wanted = 4 * parallelThreads();
        if (layers > 0 && layers < wanted && layerVoxels >= kSplitLayer)
            partsPerLayer = (wanted + layers - 1) / layers;
        partsPerLayer = std::max(partsPerLayer, (layerVoxels + kLargestPart - 1) / kLargestPart);
    }
    std::int64_t count() const { return layers * partsPerLayer; }
    std::int64_t begin(std::int64_t part) const { return part % partsPerLayer * layerVoxels / partsPerLayer; }
    std::int64_t end(std::int64_t part) const
    {
        return (part % partsPerLayer + 1) * layerVoxels / partsPerLayer;
    }
};

struct DeviationSums
{
    double s1 = 0;
    double s2 = 0;
    double s3 = 0;
    double s4 = 0;
};

/// Sums of absolute deviations from the mean and of their powers, each bin as often as it was counted. Eight
/// sums side by side let the compiler use whole vectors.
TIRN_TARGET_CLONES DeviationSums deviationSums(const std::uint64_t* counts, std::int64_t bins, double mean)
{
    constexpr int kLanes = 8;
    double s1[kLanes] = {};
    double s2[kLanes] = {};
    double s3[kLanes] = {};
    double s4[kLanes] = {};
    std::int64_t i = 0;
    for (; i + kLanes <= bins; i += kLanes) {
        for (int lane = 0; lane < kLanes; ++lane) {
            const double deviation = std::abs(static_cast<double>(i + lane) - mean);
            const double first = static_cast<double>(static_cast<std::int64_t>(counts[i + lane])) * deviation;
            const double second = first * deviation;
            const double third = second * deviation;
            s1[lane] += first;
            s2[lane] += second;
            s3[lane] += third;
            s4[lane] += third * deviation;
        }
    }
    DeviationSums sums;
    for (int lane = 0; lane < kLanes; ++lane) {
        sums.s1 += s1[lane];
        sums.s2 += s2[lane];
        sums.s3 += s3[lane];
        sums.s4 += s4[lane];
    }
    for (; i < bins; ++i) {
        const double deviation = std::abs(static_cast<double>(i) - mean);
        const auto count = static_cast<double>(counts[i]);
        sums.s1 += count * deviation;
        sums.s2 += count * deviation * deviation;
        sums.s3 += count * deviation * deviation * deviation;
        sums.s4 += count * deviation * deviation * deviation * deviation;
    }
    return sums;
}

/// Moments from the sums over `n` samples; what a variance of 0 leaves open stays as it was. The variance
/// takes off the square of the absolute deviations' sum, so that samples equally far from their mean have
/// none; rounding must not take it below 0.
void finishMoments(const DeviationSums& sums, double n, double& stdDev, double& skew, double& kurtosis)
{
    const double variance = std::max(0.0, (sums.s2 - sums.s1 * sums.s1 / n) / (n - 1));
    stdDev = std::sqrt(variance);
    if (variance != 0) {
        skew = sums.s3 / (n * variance * stdDev);
        kurtosis = sums.s4 / (n * variance * variance) - 3;
    }
}

TIRN_TARGET_CLONES std::uint64_t weightedSum(const std::uint64_t* counts, std::int64_t bins,
                                             std::uint64_t& counted)
{
    std::uint64_t sum = 0;
    std::uint64_t total = 0;
    for (std::int64_t i = 0; i < bins; ++i) {
        sum += counts[i] * static_cast<std::uint64_t>(i);
        total += counts[i];
    }
    counted = total;
    return sum;
}

/// Where the moments of a layer go.
struct MomentsOf
{
    double& mean;
    double& stdDev;
    double& skew;
    double& kurtosis;
};

/// Moments of `n` samples from their histogram; bins outside the range are known to be empty.
void sliceMomentsOf(const Histogram& histogram, const ValueRange& range, double n, const MomentsOf& moments)
{
    moments.mean = moments.stdDev = moments.skew = moments.kurtosis = 0;
    if (n < 2 || range.size() == 0)
        return;
    const std::uint64_t* counts = histogram.data() + range.low;
    const double low = range.low;
    // The sum of counts times (value - low), and then of counts times low: both are exact.
    std::uint64_t counted = 0;
    const auto above = static_cast<double>(weightedSum(counts, range.size(), counted));
    moments.mean = (above + low * static_cast<double>(counted)) / n;
    const DeviationSums sums = deviationSums(counts, range.size(), moments.mean - low);
    finishMoments(sums, n, moments.stdDev, moments.skew, moments.kurtosis);
}

/// A counter that its thread keeps for the next job: its tables are large and clean again after use.
class CounterLease
{
public:
    CounterLease(int channels, bool words) : m_counter(std::move(kept()))
    {
        if (m_counter == nullptr || m_counter->channels() != channels || m_counter->words() != words)
            m_counter = std::make_unique<HistogramCounter>(channels, words);
    }
    ~CounterLease()
    {
        // A counter that was thrown out of its work is not clean.
        if (std::uncaught_exceptions() == 0)
            kept() = std::move(m_counter);
    }
    CounterLease(const CounterLease&) = delete;
    CounterLease& operator=(const CounterLease&) = delete;
    HistogramCounter& operator*() { return *m_counter; }

private:
    static std::unique_ptr<HistogramCounter>& kept()
    {
        static thread_local std::unique_ptr<HistogramCounter> counter;
        return counter;
    }
    std::unique_ptr<HistogramCounter> m_counter;
};

/// Counts every layer of every channel, and each channel as a whole; then the moments of the layers.
class StatisticsJob
{
public:
    StatisticsJob(const ImageFile& stack, int bins)
        : m_stack(stack), m_attributes(stack.attributes()), m_bins(static_cast<std::size_t>(bins)),
          m_layerVoxels(std::int64_t{m_attributes.x} * m_attributes.y),
          m_partition(m_attributes.z, m_layerVoxels),
          m_records(static_cast<std::size_t>(m_attributes.channels)),
          m_ranges(m_records.size() * static_cast<std::size_t>(std::max(0, m_attributes.z)))
    {
        const auto layers = static_cast<std::size_t>(std::max(0, m_attributes.z));
        for (StackStats& record : m_records) {
            record.histogram = zeroHistogram(m_bins);
            record.sliceHistograms.resize(layers);
            for (std::vector<double>* moments :
                 {&record.sliceMean, &record.sliceStdDev, &record.sliceSkew, &record.sliceKurtosis})
                moments->resize(layers);
        }
    }

    void count()
    {
        const std::int64_t grain = std::max<std::int64_t>(1, m_partition.count() / (4 * parallelThreads()));
        parallelFor(0, m_partition.count(), grain, [this](std::int64_t begin, std::int64_t end) {
            CounterLease counter(m_attributes.channels, m_attributes.hasWords());
            std::vector<Histogram> totals(m_records.size());
            ValueRange touched;
            for (std::int64_t part = begin; part < end; ++part)
                countPart(part, *counter, totals, touched);
            const std::scoped_lock lock(m_mutex);
            for (std::size_t c = 0; c < m_records.size(); ++c)
                addTo(m_records[c].histogram, totals[c], touched);
        });
        // Layers counted in pieces are whole only now.
        if (m_partition.partsPerLayer > 1) {
            for (std::int64_t z = 0; z < m_partition.layers; ++z)
                makeMoments(static_cast<std::size_t>(z));
        }
    }

    /// The records, complete with what follows from the whole histograms.
    std::vector<StackStats> finished()
    {
        std::vector<StackStats> list;
        for (std::size_t c = 0; c < m_records.size(); ++c) {
            StackStats record(static_cast<int>(c), std::move(m_records[c].histogram));
            record.sliceHistograms = std::move(m_records[c].sliceHistograms);
            record.sliceMean = std::move(m_records[c].sliceMean);
            record.sliceStdDev = std::move(m_records[c].sliceStdDev);
            record.sliceSkew = std::move(m_records[c].sliceSkew);
            record.sliceKurtosis = std::move(m_records[c].sliceKurtosis);
            list.push_back(std::move(record));
        }
        return list;
    }

private:
    ValueRange& range(std::size_t layer, std::size_t channel)
    {
        return m_ranges[layer * m_records.size() + channel];
    }

    void makeMoments(std::size_t layer)
    {
        for (std::size_t c = 0; c < m_records.size(); ++c) {
            StackStats& record = m_records[c];
            sliceMomentsOf(record.sliceHistograms[layer], range(layer, c), static_cast<double>(m_layerVoxels),
                           {record.sliceMean[layer], record.sliceStdDev[layer], record.sliceSkew[layer],
                            record.sliceKurtosis[layer]});
        }
    }

    void countPart(std::int64_t part, HistogramCounter& counter, std::vector<Histogram>& totals,
                   ValueRange& touched)
    {
        const auto layer = static_cast<std::size_t>(part / m_partition.partsPerLayer);
        const std::int64_t start = m_partition.begin(part);
        const std::int64_t voxelBytes = std::int64_t{m_attributes.channels} * m_attributes.bytesPerSample();
        counter.count(m_stack.stackData() +
                          (static_cast<std::int64_t>(layer) * m_layerVoxels + start) * voxelBytes,
                      m_partition.end(part) - start);
        std::unique_lock lock(m_mutex, std::defer_lock);
        if (m_partition.partsPerLayer > 1)
            lock.lock();
        for (std::size_t c = 0; c < m_records.size(); ++c) {
            ValueRange met = counter.range(static_cast<int>(c));
            met.high = std::min(met.high, static_cast<int>(m_bins) - 1);
            touched.add(met);
            range(layer, c).add(met);
            const DenseHistograms memory(met.size() > static_cast<std::int64_t>(m_bins) / 2);
            Histogram& histogram = m_records[c].sliceHistograms[layer];
            if (histogram.empty())
                histogram = zeroHistogram(m_bins);
            if (totals[c].empty())
                totals[c] = zeroHistogram(m_bins);
            counter.drain(static_cast<int>(c), histogram, totals[c]);
        }
        // While the layer's histograms are still in the cache.
        if (m_partition.partsPerLayer == 1)
            makeMoments(layer);
    }

    static void addTo(Histogram& sum, const Histogram& part, const ValueRange& touched)
    {
        for (int i = touched.low; i <= touched.high; ++i)
            sum[static_cast<std::size_t>(i)] += part[static_cast<std::size_t>(i)];
    }

    const ImageFile& m_stack;
    const ImageAttributes& m_attributes;
    std::size_t m_bins;
    std::int64_t m_layerVoxels;
    Partition m_partition;
    std::vector<StackStats> m_records;
    /// The values that occur in each layer of each channel.
    std::vector<ValueRange> m_ranges;
    std::mutex m_mutex;
};

/// Adds up the histograms of one layer; the values that may occur in it are those of the whole channels.
template <class HistogramOf>
Histogram summedHistogram(std::size_t bins, std::span<const StackStats* const> parts, const ValueRange& range,
                          HistogramOf histogramOf)
{
    Histogram sum = zeroHistogram(bins);
    for (const StackStats* part : parts) {
        const Histogram& histogram = histogramOf(*part);
        const std::int64_t end = std::min<std::int64_t>(range.high + 1, std::ssize(histogram));
        for (std::int64_t i = range.low; i < end; ++i)
            sum[static_cast<std::size_t>(i)] += histogram[static_cast<std::size_t>(i)];
    }
    return sum;
}

int bins(const ImageAttributes& attributes)
{
    // No sample is above 65535, so a file that states a larger maximum gets no larger histogram.
    if (attributes.maxValue < 1)
        return 1 << std::clamp(attributes.bitDepth, 0, 16);
    return std::min(attributes.maxValue, 65535) + 1;
}

} // namespace

StackStats summedStats(int channel, std::size_t bins, std::span<const StackStats* const> parts)
{
    ValueRange range;
    std::size_t layers = parts.empty() ? 0 : parts.front()->sliceHistograms.size();
    for (const StackStats* part : parts) {
        range.add({part->min, std::min<int>(part->max, static_cast<int>(bins) - 1)});
        layers = std::min(layers, part->sliceHistograms.size());
    }
    StackStats stats(
        channel, summedHistogram(bins, parts, range,
                                 [](const StackStats& part) -> const Histogram& { return part.histogram; }));
    for (std::vector<double>* moments :
         {&stats.sliceMean, &stats.sliceStdDev, &stats.sliceSkew, &stats.sliceKurtosis})
        moments->resize(layers);
    parallelFor(0, static_cast<std::int64_t>(layers), 1, [&](std::int64_t begin, std::int64_t end) {
        for (auto z = static_cast<std::size_t>(begin); z < static_cast<std::size_t>(end); ++z) {
            const Histogram sum =
                summedHistogram(bins, parts, range, [z](const StackStats& part) -> const Histogram& {
                    return part.sliceHistograms[z];
                });
            const auto voxels = std::accumulate(sum.begin(), sum.end(), std::uint64_t{0});
            sliceMomentsOf(
                sum, range, static_cast<double>(voxels),
                {stats.sliceMean[z], stats.sliceStdDev[z], stats.sliceSkew[z], stats.sliceKurtosis[z]});
        }
    });
    return stats;
}

void ImageFile::generateStatistics()
{
    logDebug("enter generateStatistics");
    m_statsList.clear();
    if (!isLoaded()) {
        logDebug("Must load a stack first");
        logDebug("exit generateStatistics\n");
        return;
    }
    log(LogLevel::Debug, m_attributes.fullText());
    Stopwatch stopwatch;
    StatisticsJob job(*this, bins(m_attributes));
    logDebug("time spent allocating %g ms", stopwatch.restart());
    job.count();
    logDebug("time spent on histo %g ms", stopwatch.restart());
    m_statsList = job.finished();
    logDebug("time spent on moments %g ms", stopwatch.restart());
    int largest = 0;
    for (const StackStats& record : m_statsList)
        largest = std::max<int>(largest, record.max);
    if (m_attributes.maxValue == -1) {
        m_attributes.maxValue = largest;
        m_largestIsCounted = true;
    }
    for (const StackStats& record : m_statsList)
        log(LogLevel::Debug, record.text());
    logDebug("exit generateStatistics\n");
}

const StackStats& ImageFile::stats(int channel)
{
    if (m_statsList.empty()) {
        if (!isLoaded())
            read();
        if (m_statsList.empty())
            generateStatistics();
    }
    if (channel < 0 || static_cast<std::size_t>(channel) >= m_statsList.size()) {
        logDebug("I don't have any stats!!!");
        static const StackStats nothing;
        return nothing;
    }
    return m_statsList[static_cast<std::size_t>(channel)];
}

int ImageFile::binCount() const
{
    if (!isLoaded()) {
        logDebug("Must load a stack first");
        logDebug("exit generateStatistics\n");
        return 0;
    }
    return bins(m_attributes);
}

void ImageFile::sliceMomentsFromHistogram(const Histogram& histogram, double& mean, double& stdDev,
                                          double& skew, double& kurtosis) const
{
    const ValueRange all = {0, static_cast<int>(histogram.size()) - 1};
    sliceMomentsOf(histogram, all, static_cast<double>(m_attributes.x) * m_attributes.y,
                   {mean, stdDev, skew, kurtosis});
}

void ImageFile::sliceMoments(int z, int channel, double& mean, double& stdDev, double& skew,
                             double& kurtosis) const
{
    const std::int64_t voxels = static_cast<std::int64_t>(m_attributes.x) * m_attributes.y;
    if (!isLoaded() || voxels < 2 || z < 0 || z >= m_attributes.z || channel < 0 ||
        channel >= m_attributes.channels)
        return;
    const std::int64_t start = index(0, 0, z, channel);
    const auto value = [&](std::int64_t i) {
        const std::int64_t at = start + i * m_attributes.channels;
        return static_cast<double>(m_attributes.hasWords() ? stackData16()[at] : stackData()[at]);
    };
    double sum = 0;
    for (std::int64_t i = 0; i < voxels; ++i)
        sum += value(i);
    mean = sum / static_cast<double>(voxels);
    DeviationSums sums;
    for (std::int64_t i = 0; i < voxels; ++i) {
        const double deviation = std::abs(value(i) - mean);
        sums.s1 += deviation;
        sums.s2 += deviation * deviation;
        sums.s3 += deviation * deviation * deviation;
        sums.s4 += deviation * deviation * deviation * deviation;
    }
    finishMoments(sums, static_cast<double>(voxels), stdDev, skew, kurtosis);
}

} // namespace tirn
