#pragma once

#include <functional>

#include <QByteArray>
#include <QString>

#include "support/tifffile.h"

namespace tirn::test {

/// A MetaMorph file: a TIFF page whose further planes follow its strips, and the private tags.
struct StkFile
{
    int x = 4;
    int y = 3;
    int z = 5;
    int channels = 1;
    int bits = 16;
    int rowsPerStrip = 3;
    /// The value at a sample; by default x + 10 y + 50 c + 100 z.
    std::function<int(int x, int y, int z, int c)> value = nullptr;
    /// Numerator and denominator of the planes' distance.
    std::uint32_t distance[2] = {3, 2};
    /// Those of the pixel size; nothing is written for a denominator of 0.
    std::uint32_t calibration[2] = {1, 8};
    std::vector<TiffField> fields = {};
    bool bigEndian = false;

    QByteArray bytes() const;
    QString save(const QString& name, int length = -1) const;
};

} // namespace tirn::test
