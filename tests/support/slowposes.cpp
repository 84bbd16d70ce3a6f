#include "support/slowposes.h"

#include <cmath>

namespace tirn::test {

Pose slowRotation(int item, int f, int F, int R, const Pose& b)
{
    const int K = R * F;
    const double a = f * 360.0 / F;
    const double bx = b[0];
    const double by = b[1];
    const double bz = b[2];
    if (item == 0 || ((item == 3 || item == 4 || item == 6) && f < K))
        return {bx + a, by, bz};
    if (item == 1 || (item == 3 && f >= K) || (item == 5 && f < K) || (item == 6 && K <= f && f < 2 * K))
        return {bx, by + a, bz};
    if (item == 2 || ((item == 4 || item == 5) && f >= K) || (item == 6 && f >= 2 * K))
        return {bx, by, bz + a};
    const double both = bx + a;
    if (item == 7)
        return {both, both, bz};
    if (item == 8)
        return {both, by, both};
    return {bx, both, both};
}

namespace {

double rockX(double b, int i, double M, double A)
{
    double angle = 0;
    if (i < M)
        angle = b - (i / M) * A;
    if (M <= i && i < 3 * M)
        angle = ((i - M) / M) * A + (b - A);
    if (3 * M <= i && i < 4 * M)
        angle = (b + A) - ((i - 3 * M) / M) * A;
    return angle;
}

double rockZ(double b, int i, double M, double A)
{
    double angle = 0;
    if (i < M)
        angle = b - (i / M) * A;
    if (M <= i && i < 3 * M)
        angle = ((i - M) / M) * A + (b - A);
    if (i < 4 * M)
        angle = (b + A) - ((i - 3 * M) / M) * A;
    return angle;
}

} // namespace

std::optional<Pose> slowRocking(int item, int f, int T, int A, int M, int R, const Pose& b)
{
    const int P = item <= 2 || item >= 7 ? T / R : item == 6 ? T / (3 * R) : T / (2 * R);
    const int i = f % P;
    if (item == 0 || ((item == 3 || item == 4 || item == 6) && f < P))
        return Pose{rockX(b[0], i, M, A), b[1], b[2]};
    if (item == 1 || (item == 3 && f >= P) || (item == 5 && f >= P) || (item == 6 && P <= f && f < 2 * P))
        return Pose{b[0], rockX(b[1], i, M, A), b[2]};
    if (item == 2 || (item == 4 && f >= P) || (item == 5 && f >= P) || (item == 6 && f >= 2 * P))
        return Pose{b[0], b[1], rockZ(b[2], i, M, A)};
    if (item == 7)
        return Pose{rockX(b[0], i, M, A), rockX(b[1], i, M, A), b[2]};
    if (item == 8)
        return Pose{rockX(b[0], i, M, A), b[1], rockX(b[2], i, M, A)};
    if (item == 9)
        return Pose{b[0], rockX(b[1], i, M, A), rockX(b[2], i, M, A)};
    return std::nullopt;
}

std::array<int, 2> slowPass(int type, int f, int T, int low, int high)
{
    const int D = high - low;
    const auto p = [D](double x) { return static_cast<int>(std::floor(x * D + 0.5)); };
    const double whole = T;
    const int h1 = T / 2 + (T % 2);
    const int h2 = T - h1;
    switch (type) {
    case 0:
        return {low + p(f / whole), high};
    case 1:
        return {high - p(f / whole), high};
    case 2:
        if (f < h1)
            return {low + p(f / double(h1)), high};
        return {low + p((T - f) / double(h2)), high};
    default:
        return {low + p(f / whole), low + p(f / whole)};
    }
}

std::optional<double> slowSwing(int i, int N, int C, double a, double b)
{
    const int n = N / C;
    const int q = n / 4;
    const int m = n - 2 * q;
    if (i > C * n)
        return std::nullopt;
    const int r = i % n;
    if (r < q)
        return b - (double(r) / q) * a;
    if (r < q + m)
        return (2.0 * (r - q) / m) * a + (b - a);
    return (a + b) - (double(r - (n - q)) / q) * a;
}

} // namespace tirn::test
