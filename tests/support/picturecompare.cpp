#include "support/picturecompare.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace tirn::test {

PictureDifference compare(const Picture& predicted, const Picture& seen)
{
    if (predicted.size != seen.size || predicted.rgb.size() != seen.rgb.size())
        throw std::invalid_argument("pictures of different sizes");
    PictureDifference result;
    std::vector<int> worst;
    double sum = 0;
    for (std::size_t pixel = 0; pixel < predicted.covered.size(); ++pixel) {
        int pixelSum = 0;
        int pixelWorst = 0;
        for (std::size_t i = 3 * pixel; i < 3 * pixel + 3; ++i) {
            const int off = std::abs(int{predicted.rgb[i]} - int{seen.rgb[i]});
            pixelSum += off;
            pixelWorst = std::max(pixelWorst, off);
        }
        if (predicted.covered[pixel]) {
            worst.push_back(pixelWorst);
            sum += pixelSum / 3.0;
        } else {
            result.worstOutside = std::max(result.worstOutside, pixelWorst);
        }
    }
    result.covered = worst.size();
    if (!worst.empty()) {
        result.mean = sum / static_cast<double>(worst.size());
        const auto rank = static_cast<std::size_t>(std::ceil(0.999 * static_cast<double>(worst.size()))) - 1;
        const auto nth = worst.begin() + static_cast<std::ptrdiff_t>(rank);
        std::nth_element(worst.begin(), nth, worst.end());
        result.percentile999 = *nth;
    }
    return result;
}

bool matches(const PictureDifference& difference)
{
    return difference.covered > 0 && difference.mean < 1.5 && difference.percentile999 < 8;
}

int largestDifference(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return 256;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            largest = std::max({largest, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))});
        }
    }
    return largest;
}

} // namespace tirn::test
