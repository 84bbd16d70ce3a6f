#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <QString>

#include "image/statistics/histogrammemory.h"

namespace tirn {

/// Counts of the values of samples: a plain vector, but for memory that costs nothing where it stays zero.
using Histogram = std::vector<std::uint64_t, HistogramAllocator<std::uint64_t>>;

/// `bins` zeros whose memory is not touched before they are counted up.
inline Histogram zeroHistogram(std::size_t bins)
{
    return Histogram(AlreadyZeroIterator(0), AlreadyZeroIterator(static_cast<std::ptrdiff_t>(bins)));
}

/// Histograms and moments of one channel of a stack.
struct StackStats
{
    StackStats() = default;
    /// Computes mean, median, mode, minimum and maximum from the histogram of the whole channel.
    StackStats(int channelNumber, Histogram wholeChannel);

    int channel = 0;
    Histogram histogram;
    std::vector<Histogram> sliceHistograms;
    std::vector<double> sliceMean;
    std::vector<double> sliceStdDev;
    std::vector<double> sliceSkew;
    std::vector<double> sliceKurtosis;
    double mean = 0;
    /// The centre of the range of values that occur, not a median of the data.
    double median = 0;
    std::uint32_t mode = 0;
    std::uint16_t min = 0;
    std::uint16_t max = 0;

    /// "Mean ", "Median ", "Mode ", "Min ", " Max " with their values.
    QString text() const;
};

/// The statistics of a channel over stacks of one size, as if their layers lay one behind the other. There
/// are no histograms of the layers, and `parts` none without histograms.
StackStats summedStats(int channel, std::size_t bins, std::span<const StackStats* const> parts);

} // namespace tirn
