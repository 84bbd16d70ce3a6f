#include "image/statistics/histogramcount.h"

#include <algorithm>
#include <cstring>

#include "image/interleave.h"
#include "image/targetclones.h"

namespace tirn {

namespace {

constexpr int kByteTables = 8;
constexpr int kWordTables = 4;
/// The gap keeps the same value's counters off the same place in their pages.
constexpr int kTableGap = 80;
/// Voxels whose channels are taken apart, and whose range is looked at, in one go.
constexpr std::int64_t kBlock = 8192;
/// Words that spread wider than this rarely meet their neighbours' counters and want few tables in the cache.
constexpr int kNarrowRange = 16384;

void countByteBlock(const std::uint8_t* samples, std::int64_t count, std::uint32_t* tables,
                    std::int64_t stride)
{
    std::int64_t i = 0;
    for (; i + 16 <= count; i += 16) {
        std::uint64_t first;
        std::uint64_t second;
        std::memcpy(&first, samples + i, 8);
        std::memcpy(&second, samples + i + 8, 8);
        for (int k = 0; k < 8; ++k)
            ++tables[k * stride + static_cast<std::int64_t>(first >> (8 * k) & 0xFF)];
        for (int k = 0; k < 8; ++k)
            ++tables[k * stride + static_cast<std::int64_t>(second >> (8 * k) & 0xFF)];
    }
    for (; i < count; ++i)
        ++tables[samples[i]];
}

template <int Tables>
void countWordBlock(const std::uint16_t* samples, std::int64_t count, std::uint32_t* tables,
                    std::int64_t stride)
{
    std::int64_t i = 0;
    for (; i + 8 <= count; i += 8) {
        for (int k = 0; k < 8; ++k)
            ++tables[k % Tables * stride + samples[i + k]];
    }
    for (; i < count; ++i)
        ++tables[samples[i]];
}

TIRN_TARGET_CLONES void findRange(const std::uint16_t* samples, std::int64_t count, int& low, int& high)
{
    std::uint16_t least = 65535;
    std::uint16_t most = 0;
    for (std::int64_t i = 0; i < count; ++i) {
        least = std::min(least, samples[i]);
        most = std::max(most, samples[i]);
    }
    low = least;
    high = most;
}

template <int Tables>
TIRN_INLINE void sumOf(std::uint32_t* tables, std::int64_t stride, std::int64_t count,
                       std::uint64_t* __restrict layer, std::uint64_t* __restrict total)
{
    for (std::int64_t i = 0; i < count; ++i) {
        std::uint64_t sum = 0;
        for (int table = 0; table < Tables; ++table)
            sum += tables[table * stride + i];
        layer[i] += sum;
        total[i] += sum;
    }
}

/// Adds the counters of the same value in all tables into both histograms.
TIRN_TARGET_CLONES void sumTables(std::uint32_t* tables, std::int64_t stride, int tableCount,
                                  std::int64_t count, std::uint64_t* layer, std::uint64_t* total)
{
    if (tableCount == 1)
        sumOf<1>(tables, stride, count, layer, total);
    else if (tableCount == kWordTables)
        sumOf<kWordTables>(tables, stride, count, layer, total);
    else
        sumOf<kByteTables>(tables, stride, count, layer, total);
}

} // namespace

HistogramCounter::HistogramCounter(int channels, bool words)
    : m_channels(channels), m_words(words), m_tableStride((words ? 65536 : 256) + kTableGap),
      m_tableCount(words ? kWordTables : kByteTables),
      m_tables(AlreadyZeroIterator(0), AlreadyZeroIterator(m_tableStride * m_tableCount * channels)),
      m_ranges(static_cast<std::size_t>(channels)), m_spread(static_cast<std::size_t>(channels)),
      m_block(channels > 1 ? static_cast<std::size_t>(kBlock * channels) : 0)
{}

std::uint32_t* HistogramCounter::tables(int channel)
{
    return m_tables.data() + m_tableStride * m_tableCount * channel;
}

void HistogramCounter::count(const std::uint8_t* samples, std::int64_t voxels)
{
    if (m_words)
        countWords(reinterpret_cast<const std::uint16_t*>(samples), voxels);
    else
        countBytes(samples, voxels);
}

void HistogramCounter::countBytes(const std::uint8_t* samples, std::int64_t voxels)
{
    for (ValueRange& range : m_ranges)
        range = {0, 255};
    if (m_channels == 1) {
        countByteBlock(samples, voxels, tables(0), m_tableStride);
        return;
    }
    auto* block = reinterpret_cast<std::byte*>(m_block.data());
    std::vector<std::byte*> parts;
    for (int c = 0; c < m_channels; ++c)
        parts.push_back(block + c * kBlock);
    for (std::int64_t done = 0; done < voxels; done += kBlock) {
        const std::int64_t count = std::min(kBlock, voxels - done);
        deinterleave8(samples + done * m_channels, count, parts);
        for (int c = 0; c < m_channels; ++c)
            countByteBlock(reinterpret_cast<const std::uint8_t*>(parts[static_cast<std::size_t>(c)]), count,
                           tables(c), m_tableStride);
    }
}

void HistogramCounter::countWords(const std::uint16_t* samples, std::int64_t voxels)
{
    std::vector<std::byte*> parts;
    for (int c = 0; c < m_channels && m_channels > 1; ++c)
        parts.push_back(reinterpret_cast<std::byte*>(m_block.data() + c * kBlock));
    for (std::int64_t done = 0; done < voxels; done += kBlock) {
        const std::int64_t count = std::min(kBlock, voxels - done);
        if (m_channels > 1)
            deinterleave16(samples + done * m_channels, count, parts);
        for (int c = 0; c < m_channels; ++c) {
            const std::uint16_t* words = m_channels > 1 ? m_block.data() + c * kBlock : samples + done;
            int low = 0;
            int high = 0;
            findRange(words, count, low, high);
            m_ranges[static_cast<std::size_t>(c)].add({low, high});
            if (high - low < kNarrowRange) {
                m_spread[static_cast<std::size_t>(c)] = 1;
                countWordBlock<kWordTables>(words, count, tables(c), m_tableStride);
            } else {
                countWordBlock<1>(words, count, tables(c), m_tableStride);
            }
        }
    }
}

void HistogramCounter::drain(int channel, Histogram& layer, Histogram& total)
{
    ValueRange& range = m_ranges[static_cast<std::size_t>(channel)];
    char& spread = m_spread[static_cast<std::size_t>(channel)];
    const auto bins = static_cast<std::int64_t>(std::min(layer.size(), total.size()));
    if (range.size() > 0) {
        const int tableCount = !m_words ? kByteTables : spread != 0 ? kWordTables : 1;
        std::uint32_t* first = tables(channel) + range.low;
        const std::int64_t inside = std::min(range.high + std::int64_t{1}, bins) - range.low;
        if (inside > 0)
            sumTables(first, m_tableStride, tableCount, inside, layer.data() + range.low,
                      total.data() + range.low);
        for (int table = 0; table < tableCount; ++table)
            std::fill_n(first + table * m_tableStride, range.size(), 0U);
    }
    range = {};
    spread = 0;
}

} // namespace tirn
