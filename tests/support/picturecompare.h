#pragma once

#include <cstddef>

#include <QImage>

#include "support/compositor.h"

namespace tirn::test {

/// How far a picture is from what was predicted, in steps of 255. Each pixel counts with the worst of its
/// three colours for the percentile, and with their mean for the mean.
struct PictureDifference
{
    std::size_t covered = 0;
    double mean = 0;
    /// 99.9 in 100 of the covered pixels are at most this far off.
    int percentile999 = 0;
    /// The worst pixel among those that nothing should have been drawn to.
    int worstOutside = 0;
};

/// Compares over the pixels that the prediction covers. Both must have the same size.
PictureDifference compare(const Picture& predicted, const Picture& seen);

/// Whether a picture is as good as the prediction: something was drawn, the mean is below 1.5 and the
/// percentile below 8.
bool matches(const PictureDifference& difference);

/// The largest difference of two pictures of one size in any colour or opacity; 256 for different sizes.
int largestDifference(const QImage& a, const QImage& b);

} // namespace tirn::test
