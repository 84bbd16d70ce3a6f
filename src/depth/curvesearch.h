#pragma once

#include <functional>
#include <optional>
#include <span>

#include "base/progress.h"
#include "depth/curveformulas.h"

namespace tirn {

class ImageFile;
struct StackStats;

/// A function of one number whose root or least value is looked for.
using SearchFunction = std::function<double(double x)>;

/// Fills a curve so that each slice's mean becomes the largest one. There is no guard against a mean of zero
/// and no cut. Slices without a mean keep their multiplier.
void normalizeMean(std::span<double> curve, std::span<const double> sliceMeans);

/// How far the entropy of a channel, its slices multiplied by the power curve of `parameters`, stays below
/// the bits of the stack. Leaves that curve in `curve`. Works on the stack's histograms, never on voxels.
double entropyDeficit(const ImageFile& stack, int channel, const CurveParameters& parameters,
                      std::span<double> curve);

/// The first of min, min + step, ... up to max where f is least. A step that is not above 0 ends the scan
/// after the first value.
double linearEntropySearch(const SearchFunction& f, double min, double max, double step);

/// Root finding after van Wijngaarden, Dekker and Brent in 32-bit arithmetic. An interval without a change of
/// sign is searched all the same, and ends at a bound or within the tolerance; 0 after 100 iterations.
double zbrent(const SearchFunction& f, double x1, double x2, double tolerance);

/// How a curve is found.
enum class CurveSearch { NormalizeMean = 0, Brent = 1, Linear = 2 };

/// The range of powers that a search goes through; the defaults are those that people start from.
struct PowerRange
{
    double min = 0;
    double max = 4;
    double step = 0.01;

    bool operator==(const PowerRange&) const = default;
};

/// The smallest and the largest power that a curve takes.
constexpr double kLeastPower = 0.1;
constexpr double kMostPower = 10;

/// Fits the power of `parameters` to a channel by Brent's method or the linear scan, and cuts it to what a
/// curve takes. Nothing when cancelled.
std::optional<double> fitPower(CurveSearch search, const ImageFile& stack, int channel,
                               CurveParameters parameters, const PowerRange& range,
                               const Progress& progress = {});

} // namespace tirn
