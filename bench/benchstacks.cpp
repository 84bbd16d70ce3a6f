#include "benchstacks.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include <QTemporaryDir>

#include "base/parallel.h"

namespace tirn::bench {

namespace {

/// A small generator that gives the same sequence everywhere.
class Noise
{
public:
    explicit Noise(std::uint64_t seed) : m_state(seed * 0x9E3779B97F4A7C15U + 1) {}
    std::uint32_t next()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 7;
        m_state ^= m_state << 17;
        return static_cast<std::uint32_t>(m_state >> 32);
    }

private:
    std::uint64_t m_state;
};

template <class Value>
std::unique_ptr<ImageFile> filled(int x, int y, int z, int channels, int bitDepth, Value value)
{
    auto stack = std::make_unique<ImageFile>(x, y, z, channels, bitDepth);
    parallelFor(0, z, 1, [&](std::int64_t begin, std::int64_t end) {
        for (auto layer = static_cast<int>(begin); layer < end; ++layer) {
            Noise noise(static_cast<std::uint64_t>(layer) + 1);
            std::int64_t at = stack->index(0, 0, layer, 0);
            for (int row = 0; row < y; ++row) {
                for (int column = 0; column < x; ++column) {
                    for (int c = 0; c < channels; ++c, ++at) {
                        const int sample = value(column, row, layer, noise);
                        if (bitDepth > 8)
                            stack->stackData16()[at] = static_cast<std::uint16_t>(sample);
                        else
                            stack->stackData()[at] = static_cast<std::uint8_t>(sample);
                    }
                }
            }
        }
    });
    return stack;
}

} // namespace

std::unique_ptr<ImageFile> confocalStack(int x, int y, int z, int channels, int bitDepth, int limit)
{
    return filled(x, y, z, channels, bitDepth, [&](int column, int row, int layer, Noise& noise) {
        const double blob = std::sin(column * 0.05) * std::sin(row * 0.06) * std::cos(layer * 0.1);
        const double dark = static_cast<double>((noise.next() & 0xFF) * (noise.next() & 0xFF)) / 65025.0;
        const double bright = blob > 0.4 ? (blob - 0.4) * 1.2 : 0;
        return static_cast<int>(std::min(0.999, 0.08 * dark + bright) * limit);
    });
}

std::unique_ptr<ImageFile> noiseStack(int x, int y, int z, int channels, int bitDepth, int limit)
{
    return filled(x, y, z, channels, bitDepth, [&](int, int, int, Noise& noise) {
        return static_cast<int>(noise.next() % static_cast<unsigned>(limit));
    });
}

QStringList picFiles(int x, int y, int z, int channels, int bitDepth)
{
    static const QTemporaryDir folder;
    static std::map<std::tuple<int, int, int, int, int>, QStringList> made;
    QStringList& names = made[{x, y, z, channels, bitDepth}];
    if (!names.isEmpty())
        return names;
    for (int c = 0; c < channels; ++c) {
        const auto stack = confocalStack(x, y, z, 1, bitDepth, 1 << std::min(bitDepth, 12));
        const QString name =
            folder.filePath(QStringLiteral("%1_%2_%3.pic").arg(made.size()).arg(bitDepth).arg(c));
        stack->write({name}, ImageType::BioRad);
        names.append(name);
    }
    return names;
}

} // namespace tirn::bench
