#include "depth/curvebaking.h"

#include <algorithm>
#include <cmath>

#include "base/log.h"
#include "image/imagefile.h"
#include "image/steploop.h"
#include "image/targetclones.h"

namespace tirn {

namespace {

template <class Sample>
TIRN_INLINE void multiply(Sample* first, std::int64_t samples, int stride, double scale, double ceiling)
{
    for (std::int64_t i = 0; i < samples; i += stride) {
        const double product = std::floor(first[i] * scale + 0.5);
        const double cut = product < 0 ? 0 : product > ceiling ? ceiling : product;
        first[i] = std::isnan(cut) ? first[i] : static_cast<Sample>(static_cast<int>(cut));
    }
}

// The common stride is known to the compiler, which then takes several samples at a time.

TIRN_TARGET_CLONES void multiplyBytes(std::uint8_t* first, std::int64_t samples, int stride, double scale,
                                      double ceiling)
{
    if (stride == 1)
        multiply(first, samples, 1, scale, ceiling);
    else
        multiply(first, samples, stride, scale, ceiling);
}

TIRN_TARGET_CLONES void multiplyWords(std::uint16_t* first, std::int64_t samples, int stride, double scale,
                                      double ceiling)
{
    if (stride == 1)
        multiply(first, samples, 1, scale, ceiling);
    else
        multiply(first, samples, stride, scale, ceiling);
}

/// The curve of channel c over all slices. The channel's number is not added to the first sample: each curve
/// multiplies the first channel.
bool multiplyChannel(ImageFile& stack, const std::vector<double>& curve, const Progress& progress)
{
    const ImageAttributes& a = stack.attributes();
    const std::int64_t samples = std::int64_t{a.x} * a.y * a.channels;
    const double ceiling = (1 << a.bitDepth) - 1;
    const auto slices = std::min<std::int64_t>(a.z, static_cast<std::int64_t>(curve.size()));
    for (std::int64_t z = 0; z < slices; ++z)
        logDebug("z %d scale %g", static_cast<int>(z), curve[static_cast<std::size_t>(z)]);
    const auto body = [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t z = begin; z < end; ++z) {
            const double scale = curve[static_cast<std::size_t>(z)];
            if (a.hasWords())
                multiplyWords(stack.stackData16() + z * samples, samples, a.channels, scale, ceiling);
            else
                multiplyBytes(stack.stackData() + z * samples, samples, a.channels, scale, ceiling);
        }
    };
    return runSteps({slices, 1, samples * a.bytesPerSample()}, QString(), progress, body) == slices;
}

} // namespace

bool bakeCurves(ImageFile& stack, std::span<const std::vector<double>> curves, const Progress& progress)
{
    if (!stack.isLoaded())
        return true;
    logDebug("made it to zcorrection mangling");
    const std::size_t channels =
        std::min(curves.size(), static_cast<std::size_t>(std::max(stack.attributes().channels, 0)));
    for (std::size_t c = 0; c < channels; ++c) {
        if (!multiplyChannel(stack, curves[c], progress))
            return false;
    }
    stack.forgetValues();
    logDebug("made it through mangling");
    return true;
}

} // namespace tirn
