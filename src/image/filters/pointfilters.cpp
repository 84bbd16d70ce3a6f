#include "image/filters/pointfilters.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/log.h"
#include "image/filters/filterparts.h"
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

/// What is added to interleaved channels, repeated side by side so that whole vectors of samples find theirs
/// in step: `less` is taken off first, down to 0, then what is above `most` is cut to it and `more` comes on
/// top.
template <class Sample>
struct AddPattern
{
    static constexpr std::size_t kVoxels = 1024;

    AddPattern(int channels, int channel, int value, int highest)
        : less(kVoxels * static_cast<std::size_t>(channels)), most(less.size(), static_cast<Sample>(~0)),
          more(less.size())
    {
        for (std::size_t i = 0; i < less.size(); ++i) {
            if (channel != -1 && i % static_cast<std::size_t>(channels) != static_cast<std::size_t>(channel))
                continue;
            const int added = std::clamp(value, 0, highest);
            less[i] = static_cast<Sample>(-std::clamp<int>(value, -static_cast<int>(Sample(~0)), 0));
            most[i] = static_cast<Sample>(highest - added);
            more[i] = static_cast<Sample>(added);
        }
    }
    std::int64_t size() const { return static_cast<std::int64_t>(less.size()); }

    std::vector<Sample> less;
    std::vector<Sample> most;
    std::vector<Sample> more;
};

template <class Sample>
TIRN_INLINE void addPattern(const AddPattern<Sample>& pattern, std::int64_t count, Sample* __restrict samples)
{
    const Sample* less = pattern.less.data();
    const Sample* most = pattern.most.data();
    const Sample* more = pattern.more.data();
    for (std::int64_t i = 0; i < count; ++i) {
        const auto lowered = static_cast<Sample>(std::max(samples[i], less[i]) - less[i]);
        samples[i] = static_cast<Sample>(std::min(lowered, most[i]) + more[i]);
    }
}

TIRN_TARGET_CLONES void addToBytes(const AddPattern<std::uint8_t>& pattern, std::int64_t count,
                                   std::uint8_t* samples)
{
    addPattern(pattern, count, samples);
}

TIRN_TARGET_CLONES void addToWords(const AddPattern<std::uint16_t>& pattern, std::int64_t count,
                                   std::uint16_t* samples)
{
    addPattern(pattern, count, samples);
}

/// False when cancelled.
template <class Sample>
bool addToStack(const AddPattern<Sample>& pattern, std::int64_t count, Sample* samples,
                void (*loop)(const AddPattern<Sample>&, std::int64_t, Sample*), const Progress& progress)
{
    const std::int64_t piece = pattern.size();
    const auto add = [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i)
            loop(pattern, std::min(piece, count - i * piece), samples + i * piece);
    };
    return runItems((count + piece - 1) / piece, piece * std::int64_t{sizeof(Sample)}, progress, add);
}

} // namespace

void invert(ImageFile& stack, const Progress& progress)
{
    if (!stack.ensureLoaded())
        return;
    const std::int64_t samples = stack.sampleCount();
    const ImageAttributes& a = stack.attributes();
    const int highest = (1 << a.bitDepth) - 1;
    const auto body = [&](std::int64_t begin, std::int64_t end) {
        const std::int64_t first = begin * kItem;
        const std::int64_t count = std::max<std::int64_t>(0, std::min(samples, end * kItem) - first);
        if (a.hasWords())
            invertWords(stack.stackData16() + first, count, static_cast<std::uint16_t>(highest));
        else
            invertBytes(stack.stackData() + first, count, static_cast<std::uint8_t>(highest));
    };
    const StepLoop loop = {(samples + kItem - 1) / kItem, 1, kItem * a.bytesPerSample()};
    const std::int64_t done = runSteps(loop, QString(), progress, body);
    // Inverting once more restores what a cancelled run has done.
    if (done < loop.steps) {
        body(0, done);
        return;
    }
    stack.valuesInverted();
}

bool addConstant(ImageFile& stack, int value, int channel, const Progress& progress)
{
    if (!canFilter(stack, channel))
        return false;
    const ImageAttributes& a = stack.attributes();
    const int highest = (1 << a.bitDepth) - 1;
    stack.forgetValues();
    if (a.hasWords())
        return addToStack<std::uint16_t>({a.channels, channel, value, highest}, stack.sampleCount(),
                                         stack.stackData16(), addToWords, progress);
    return addToStack<std::uint8_t>({a.channels, channel, value, highest}, stack.sampleCount(),
                                    stack.stackData(), addToBytes, progress);
}

std::vector<bool> thresholdMask(ImageFile& stack, int channel, int threshold)
{
    if (channel < 0 || channel >= stack.attributes().channels || threshold < 0 ||
        threshold >= 1 << stack.attributes().bitDepth || !canFilter(stack, channel))
        return {};
    const std::int64_t step = stack.attributes().channels;
    std::vector<bool> mask(static_cast<std::size_t>(stack.sampleCount() / step));
    const auto mark = [&](const auto* samples) {
        for (std::size_t i = 0; i < mask.size(); ++i)
            mask[i] = samples[static_cast<std::int64_t>(i) * step] >= threshold;
    };
    if (stack.attributes().hasWords())
        mark(stack.stackData16() + channel);
    else
        mark(stack.stackData() + channel);
    return mask;
}

std::vector<double> gaussianKernel(double sigma)
{
    constexpr double kPi = 3.14159265358979323846;
    constexpr double kLargestSigma = 10000;
    if (!(sigma > 0) || sigma > kLargestSigma)
        return {};
    int n = static_cast<int>(std::floor(sigma * 3));
    n += n % 2 == 0 ? 1 : 0;
    logDebug("gaussian kernel");
    std::vector<double> kernel;
    kernel.reserve(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const int a = i - n / 2;
            const int b = j - n / 2;
            kernel.push_back(std::exp(-(a * a + b * b) / (2 * sigma * sigma)) * 1 /
                             (std::sqrt(2 * kPi) * sigma));
            logDebug("%g", kernel.back());
        }
    }
    return kernel;
}

} // namespace tirn
