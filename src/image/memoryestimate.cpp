#include "image/memoryestimate.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace tirn {

namespace {

double padded(int size) { return static_cast<double>(std::bit_ceil(static_cast<std::uint64_t>(size))); }

QString decimals(double number) { return QString::number(number, 'f', 2); }

} // namespace

double estimatedBytes(const MemoryQuestion& question)
{
    const int s = std::max(1, question.subsample);
    const int x = std::max(0, question.x / s);
    const int y = std::max(0, question.y / s);
    // The sub-sampling divides the layers, too, although it only acts within them.
    const int z = std::max(0, (question.last - question.first + 1) / std::max(1, question.step) / s);
    const double sample = (question.bitDepth > 8 ? 2.0 : 1.0) * question.channels;
    double bytes = question.conservesMemory ? 0 : 1.0 * x * y * z * sample;
    if (question.uses3DTextures) {
        bytes += padded(x) * padded(y) * padded(z) * sample;
    } else {
        // The layers of the third orientation are counted once, not once for each z.
        bytes += (padded(x) * padded(z) * y + padded(y) * padded(z) * x + padded(x) * padded(y)) * sample;
    }
    return bytes * question.timePoints;
}

QString memoryText(double bytes)
{
    const QString label = QStringLiteral("Memory required: ");
    const double kilobytes = bytes / 1024;
    if (kilobytes < 1024)
        return label + decimals(kilobytes) + QLatin1String("KB");
    if (kilobytes < 1048576)
        return label + decimals(kilobytes / 1024) + QLatin1String("MB");
    return label + decimals(kilobytes / 1048576) + QLatin1String("GB");
}

QString unknownMemoryText() { return QStringLiteral("Memory required: Not enough info"); }

} // namespace tirn
