#pragma once

#include <cstdint>
#include <vector>

#include <QStringList>

#include "formats/bytewriter.h"
#include "image/imageattributes.h"

namespace tirn {

/// The number of layers in first to last by step; 0 for a step that leads nowhere.
int layerCount(int first, int last, int step);

/// The sizes of a stack that is written in strips of one row.
struct StripShape
{
    std::int64_t rowBytes = 0;
    std::int64_t layerBytes = 0;
    /// False where a size is below 1, a row or a side does not fit into 16 bits, or a product overflows.
    bool valid = false;

    /// True when `layers` layers behind `start` end within what 32-bit offsets reach.
    bool fits(std::int64_t start, int layers) const;
};
StripShape stripShape(const ImageAttributes& attributes, int bytesPerSample);

/// Pixels per centimetre of a voxel size in microns, as denominator and numerator of the size in centimetres.
std::vector<std::uint32_t> pixelsPerCentimetre(double microns);

/// Which layers of a buffer are written.
struct WrittenLayers
{
    int first = 0;
    int step = 1;
    int count = 0;
};

/// Writes `head`, and right behind it the layers, `layerBytes` each, to a new file in place of `name`. Layers
/// without gaps go in one block. Returns the texts of failures.
QStringList writeHeadAndLayers(const QString& name, const ByteWriter& head, const std::uint8_t* data,
                               std::int64_t layerBytes, const WrittenLayers& layers);

} // namespace tirn
