#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "image/statistics/stackstats.h"

namespace tirn {

/// The lowest and the highest value counted; empty while `high` is below `low`.
struct ValueRange
{
    int low = 65536;
    int high = -1;

    void add(const ValueRange& other)
    {
        low = other.low < low ? other.low : low;
        high = other.high > high ? other.high : high;
    }
    std::int64_t size() const { return high < low ? 0 : std::int64_t{high} - low + 1; }
};

/// Counts the values of interleaved samples, one histogram a channel. One thread uses it.
///
/// Several counters stand for each value, so that neighbours of the same value do not wait for each other;
/// only the range of values met is cleared and summed.
class HistogramCounter
{
public:
    /// Samples are bytes, or words when `words`.
    HistogramCounter(int channels, bool words);
    int channels() const { return m_channels; }
    bool words() const { return m_words; }

    /// Counts `voxels` voxels of `channels` samples each.
    void count(const std::uint8_t* samples, std::int64_t voxels);

    /// The values of a channel that were met; for bytes all that there are.
    ValueRange range(int channel) const { return m_ranges[static_cast<std::size_t>(channel)]; }

    /// Adds the counts of a channel to both histograms, values past their end to neither, and starts again.
    void drain(int channel, Histogram& layer, Histogram& total);

private:
    void countBytes(const std::uint8_t* samples, std::int64_t voxels);
    void countWords(const std::uint16_t* samples, std::int64_t voxels);
    std::uint32_t* tables(int channel);

    int m_channels;
    bool m_words;
    std::int64_t m_tableStride;
    int m_tableCount;
    std::vector<std::uint32_t, HistogramAllocator<std::uint32_t>> m_tables;
    std::vector<ValueRange> m_ranges;
    /// For each channel, whether more than the first of its tables is in use.
    std::vector<char> m_spread;
    /// One block of each channel, taken apart.
    std::vector<std::uint16_t> m_block;
};

} // namespace tirn
