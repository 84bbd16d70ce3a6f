#include <algorithm>

#include "image/imagefile.h"
#include "image/steploop.h"
#include "image/targetclones.h"

namespace tirn {

namespace {

/// Samples of one item of the loops below.
constexpr std::int64_t kItem = 4096;

TIRN_TARGET_CLONES void invertBytes(std::uint8_t* samples, std::int64_t count, std::uint8_t highest)
{
    for (std::int64_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::uint8_t>(highest - samples[i]);
}

TIRN_TARGET_CLONES void invertWords(std::uint16_t* samples, std::int64_t count, std::uint16_t highest)
{
    for (std::int64_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::uint16_t>(highest - samples[i]);
}

} // namespace

void ImageFile::invert(const Progress& progress)
{
    if (!ensureLoaded())
        return;
    const std::int64_t samples = sampleCount();
    const int highest = (1 << m_attributes.bitDepth) - 1;
    const auto body = [&](std::int64_t begin, std::int64_t end) {
        const std::int64_t first = begin * kItem;
        const std::int64_t count = std::max<std::int64_t>(0, std::min(samples, end * kItem) - first);
        if (m_attributes.hasWords())
            invertWords(stackData16() + first, count, static_cast<std::uint16_t>(highest));
        else
            invertBytes(stackData() + first, count, static_cast<std::uint8_t>(highest));
    };
    const StepLoop loop = {(samples + kItem - 1) / kItem, 1, kItem * m_attributes.bytesPerSample()};
    const std::int64_t done = runSteps(loop, QString(), progress, body);
    // Inverting once more restores what a cancelled run has done.
    if (done < loop.steps)
        body(0, done);
    else
        m_attributes.maxValue = -1;
}

} // namespace tirn
