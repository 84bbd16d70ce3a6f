#include "support/slowdepth.h"

#include <cmath>
#include <cstdlib>

namespace tirn::test {

std::vector<double> slowPowerCurve(int slices, double scale, double power, double offset, int maximum)
{
    std::vector<double> curve;
    for (int i = 0; i < slices; ++i) {
        double t = 0;
        if (i - offset >= 0)
            t = (maximum * scale) * std::pow((i - offset) / (slices - 1), power);
        double value = t + 1;
        if (value > maximum)
            value = maximum;
        curve.push_back(value);
    }
    return curve;
}

std::vector<double> slowLinearCurve(int slices, double offset, int maximum)
{
    std::vector<double> curve;
    for (int i = 0; i < slices; ++i) {
        double value = (i - offset) / ((slices - 1.0) / maximum) + 1;
        if (value > maximum)
            value = maximum;
        curve.push_back(value);
    }
    return curve;
}

double slowScaledEntropy(const SlowStack& stack, int channel, int bins, const std::vector<double>& curve)
{
    std::vector<double> counts(static_cast<std::size_t>(bins));
    const StackShape& shape = stack.shape;
    for (int z = 0; z < shape.z; ++z) {
        for (int y = 0; y < shape.y; ++y) {
            for (int x = 0; x < shape.x; ++x) {
                const double product = stack.at(x, y, z, channel) * curve[static_cast<std::size_t>(z)];
                const int below = static_cast<int>(product);
                const double fraction = product - below;
                if (below >= bins - 1) {
                    counts.back() += 1;
                    continue;
                }
                counts[static_cast<std::size_t>(below)] += fraction;
                counts[static_cast<std::size_t>(below + 1)] += 1 - fraction;
            }
        }
    }
    double bits = 0;
    for (const double count : counts) {
        const double p = count / (double(shape.x) * shape.y * shape.z);
        if (p != 0)
            bits += p * std::log2(1 / p);
    }
    return bits;
}

std::vector<double> slowSliceMeans(const SlowStack& stack, int channel)
{
    std::vector<double> means;
    for (int z = 0; z < stack.shape.z; ++z) {
        double sum = 0;
        for (int y = 0; y < stack.shape.y; ++y) {
            for (int x = 0; x < stack.shape.x; ++x)
                sum += stack.at(x, y, z, channel);
        }
        means.push_back(sum / stack.shape.x / stack.shape.y);
    }
    return means;
}

// NOLINTBEGIN: one letter a variable, as printed.
SlowRoot slowBrent(const std::function<double(double)>& f, double x1, double x2, double tol)
{
    SlowRoot root;
    const auto func = [&](float x) {
        ++root.calls;
        return static_cast<float>(f(static_cast<double>(x)));
    };
    const int ITMAX = 100;
    const double EPS = 3.0e-8;
    float a = float(x1), b = float(x2), c = float(x2), d = 0, e = 0, min1, min2;
    float fa = func(a), fb = func(b), fc, p, q, r, s, tol1, xm;
    if ((fa > 0.0 && fb > 0.0) || (fa < 0.0 && fb < 0.0))
        root.bracketed = false;
    fc = fb;
    for (int iter = 1; iter <= ITMAX; iter++) {
        if ((fb > 0.0 && fc > 0.0) || (fb < 0.0 && fc < 0.0)) {
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
        tol1 = float(2.0 * EPS * std::fabs(double(b)) + 0.5 * tol);
        xm = float(0.5 * (c - b));
        if (std::fabs(xm) <= tol1 || fb == 0.0) {
            root.x = b;
            return root;
        }
        if (std::fabs(e) >= tol1 && std::fabs(fa) > std::fabs(fb)) {
            s = fb / fa;
            if (a == c) {
                p = float(2.0 * xm * s);
                q = float(1.0 - s);
            } else {
                q = fa / fc;
                r = fb / fc;
                p = float(s * (2.0 * xm * q * (q - r) - (b - a) * (r - 1.0)));
                q = float((q - 1.0) * (r - 1.0) * (s - 1.0));
            }
            if (p > 0.0)
                q = -q;
            p = std::fabs(p);
            min1 = float(3.0 * xm * q - std::fabs(double(tol1 * q)));
            min2 = std::fabs(e * q);
            if (2.0 * p < (min1 < min2 ? min1 : min2)) {
                e = d;
                d = p / q;
            } else {
                d = xm;
                e = d;
            }
        } else {
            d = xm;
            e = d;
        }
        a = b;
        fa = fb;
        if (std::fabs(d) > tol1)
            b += d;
        else
            b += (xm >= 0.0 ? std::fabs(tol1) : -std::fabs(tol1));
        fb = func(b);
    }
    root.converged = false;
    return root;
}
// NOLINTEND

} // namespace tirn::test
