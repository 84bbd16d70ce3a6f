#pragma once

#include <vector>

#include <QString>

namespace tirn {

/// A table of weights that is laid over a voxel and its neighbours, row by row.
struct FilterKernel
{
    /// The most columns, and rows.
    static constexpr int kWidest = 1023;
    /// The largest weight, so that no sum overflows.
    static constexpr double kHeaviest = 1e100;

    int width = 0;
    int height = 0;
    std::vector<double> weights;

    /// Whether there is a weight, none too large, for each place of a table of such a size.
    bool isValid() const;
    /// What sums are divided by: the sum of the weights, or 1 where that is 0.
    double divisor() const;

    friend bool operator==(const FilterKernel&, const FilterKernel&) = default;
};

/// Reads rows of numbers, one row a line, with blanks, tabs, commas or semicolons between the numbers. Empty
/// lines are passed over. Returns an empty kernel with a text in `error` for anything else.
FilterKernel kernelFromText(const QString& text, QString& error);
/// The same from a file.
FilterKernel kernelFromFile(const QString& name, QString& error);

} // namespace tirn
