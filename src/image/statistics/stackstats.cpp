#include "image/statistics/stackstats.h"

#include "base/log.h"

namespace tirn {

StackStats::StackStats(int channelNumber, Histogram wholeChannel)
    : channel(channelNumber), histogram(std::move(wholeChannel))
{
    const std::size_t bins = histogram.size();
    std::size_t lowest = 0;
    while (lowest < bins && histogram[lowest] == 0)
        ++lowest;
    std::size_t highest = bins == 0 ? 0 : bins - 1;
    while (highest > 0 && histogram[highest] == 0)
        --highest;
    // In a histogram without counts the search for the minimum ends at the size, the other one at 0.
    min = static_cast<std::uint16_t>(lowest);
    max = static_cast<std::uint16_t>(highest);

    double sum = 0;
    double total = 0;
    std::size_t fullest = 0;
    for (std::size_t i = lowest; i <= highest && i < bins; ++i) {
        sum += static_cast<double>(histogram[i]) * static_cast<double>(i);
        total += static_cast<double>(histogram[i]);
        if (histogram[i] > histogram[fullest])
            fullest = i;
    }
    mode = static_cast<std::uint32_t>(fullest);
    mean = sum / total;
    median = (static_cast<double>(lowest) + static_cast<double>(highest)) / 2.0;
}

QString StackStats::text() const
{
    return QLatin1String("Mean ") + plainNumber(mean) + QLatin1String(" Median ") + plainNumber(median) +
           QLatin1String(" Mode ") + QString::number(mode) + QLatin1String("\nMin ") + QString::number(min) +
           QLatin1String(" Max ") + QString::number(max);
}

} // namespace tirn
