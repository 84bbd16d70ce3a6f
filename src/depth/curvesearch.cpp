#include "depth/curvesearch.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/log.h"
#include "image/imagefile.h"

namespace tirn {

namespace {

constexpr int kMostIterations = 100;
constexpr double kMachineEpsilon = 3.0e-8;

bool sameSign(float a, float b) { return (a > 0 && b > 0) || (a < 0 && b < 0); }

/// The state of Brent's method: b is the best guess, a the one before, and the root lies between b and c.
struct Brent
{
    float a;
    float b;
    float c;
    float d = 0;
    float e = 0;
    float fa;
    float fb;
    float fc;

    void keepTheRootBetween()
    {
        if (sameSign(fb, fc)) {
            c = a;
            fc = fa;
            e = d = b - a;
        }
        if (std::fabs(fc) < std::fabs(fb)) {
            a = b;
            b = c;
            c = a;
            fa = fb;
            fb = fc;
            fc = fa;
        }
    }

    /// Sets the next step d: by interpolation where that converges, by halving otherwise. Each number is
    /// kept in 32 bits, each sum of products is made in 64.
    void chooseStep(float xm, float tol1)
    {
        const bool shrinking = std::fabs(e) >= tol1 && std::fabs(fa) > std::fabs(fb);
        if (!shrinking || !interpolate(xm, tol1))
            e = d = xm;
    }

    bool interpolate(float xm, float tol1)
    {
        const float s = fb / fa;
        float p;
        float q;
        if (a == c) {
            p = static_cast<float>(2.0 * xm * s);
            q = static_cast<float>(1.0 - s);
        } else {
            q = fa / fc;
            const float r = fb / fc;
            p = static_cast<float>(s * (2.0 * xm * q * (q - r) - (b - a) * (r - 1.0)));
            q = static_cast<float>((q - 1.0) * (r - 1.0) * (s - 1.0));
        }
        if (p > 0)
            q = -q;
        p = std::fabs(p);
        const auto min1 = static_cast<float>(3.0 * xm * q - std::fabs(tol1 * q));
        const float min2 = std::fabs(e * q);
        if (!(2.0 * p < (min1 < min2 ? min1 : min2)))
            return false;
        e = d;
        d = p / q;
        return true;
    }
};

} // namespace

void normalizeMean(std::span<double> curve, std::span<const double> sliceMeans)
{
    double largest = 0;
    for (const double mean : sliceMeans)
        largest = std::max(largest, mean);
    const std::size_t slices = std::min(curve.size(), sliceMeans.size());
    for (std::size_t z = 0; z < slices; ++z)
        curve[z] = largest / sliceMeans[z];
}

double entropyDeficit(const ImageFile& stack, int channel, const CurveParameters& parameters,
                      std::span<double> curve)
{
    powerCurve(curve, parameters);
    return stack.attributes().significantBits() -
           stack.entropyScaled(channel, std::vector<double>(curve.begin(), curve.end()));
}

double linearEntropySearch(const SearchFunction& f, double min, double max, double step)
{
    double best = min;
    double least = f(min);
    for (double x = min; x <= max; x += step) {
        const double value = f(x);
        logDebug("x %f 8-entropy %f", x, value);
        if (value < least) {
            least = value;
            best = x;
        }
        if (!(x + step > x))
            break;
    }
    return best;
}

double zbrent(const SearchFunction& f, double x1, double x2, double tolerance)
{
    Brent s{};
    s.a = static_cast<float>(x1);
    s.b = static_cast<float>(x2);
    s.c = s.b;
    s.fa = static_cast<float>(f(s.a));
    s.fb = static_cast<float>(f(s.b));
    // No error: the entropy of a real stack never reaches its bits, and the search goes on to a bound.
    if (sameSign(s.fa, s.fb))
        logDebug("Root must be bracketed in zbrent");
    s.fc = s.fb;
    for (int iteration = 1; iteration <= kMostIterations; ++iteration) {
        s.keepTheRootBetween();
        const auto tol1 = static_cast<float>(2 * kMachineEpsilon * std::fabs(s.b) + 0.5 * tolerance);
        const auto xm = static_cast<float>(0.5 * (s.c - s.b));
        if (std::fabs(xm) <= tol1 || s.fb == 0)
            return s.b;
        s.chooseStep(xm, tol1);
        s.a = s.b;
        s.fa = s.fb;
        if (std::fabs(s.d) > tol1)
            s.b += s.d;
        else
            s.b += xm >= 0 ? tol1 : -tol1;
        s.fb = static_cast<float>(f(s.b));
        logDebug("b %f 8-entropy %f", s.b, s.fb);
    }
    logDebug("Maximum number of iterations exceeded in zbrent");
    return 0;
}

std::optional<double> fitPower(CurveSearch search, const ImageFile& stack, int channel,
                               CurveParameters parameters, const PowerRange& range, const Progress& progress)
{
    struct Cancelled
    {};
    logDebug("stack entropy %f maxentropy %f", stack.entropy(channel), stack.maxEntropy(channel));
    std::vector<double> curve(static_cast<std::size_t>(std::max(stack.attributes().z, 0)));
    const SearchFunction deficit = [&](double power) {
        if (progress.cancelled())
            throw Cancelled{};
        parameters.power = power;
        return entropyDeficit(stack, channel, parameters, curve);
    };
    try {
        const double power = search == CurveSearch::Brent
                                 ? zbrent(deficit, range.min, range.max, range.step)
                                 : linearEntropySearch(deficit, range.min, range.max, range.step);
        logDebug("pow %f", power);
        return std::clamp(power, kLeastPower, kMostPower);
    } catch (const Cancelled&) {
        return std::nullopt;
    }
}

} // namespace tirn
