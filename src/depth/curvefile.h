#pragma once

#include <span>
#include <vector>

#include <QString>

namespace tirn {

/// One block of a depth curve file.
struct CurveBlock
{
    /// -1 for all channels, a block that is read into channel 0 alone.
    int channel = -1;
    std::vector<double> curve;

    bool operator==(const CurveBlock&) const = default;
};

/// The text of a `.mzp` file: a channel, the number of slices and a multiplier a line, in 6 digits.
QString curveFileText(std::span<const CurveBlock> blocks);

/// Writes a `.mzp` file beside its target and moves it there. False when it cannot be written.
bool writeCurveFile(const QString& name, std::span<const CurveBlock> blocks);

/// What came of reading a `.mzp` file.
struct CurveFileResult
{
    /// Why the reading stopped, empty when it came to the end.
    QString error;
    /// The channels whose curves were read, in file order.
    std::vector<int> channels;
    /// The last block was one for all channels.
    bool lastWasAll = false;
};

/// Reads the blocks of a `.mzp` file into `curves`, one a channel, each `slices` long. A block of another
/// number of slices, and one that the file's end cuts short, stops the reading; curves read before it stay.
/// Blocks of channels that are not there are skipped, and so are lines that belong to no block; a line that
/// is no number gives 0.
CurveFileResult readCurveFile(const QString& name, int slices, std::span<std::vector<double>* const> curves);

} // namespace tirn
