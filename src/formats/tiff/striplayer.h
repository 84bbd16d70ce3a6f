#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <QString>

#include "formats/files/segmentread.h"

namespace tirn {

/// A layer, or one channel of it, whose strips lie in a file of its own.
struct StripLayer
{
    QString fileName;
    SegmentPlan plan;
    /// Why it could not be read.
    QString error = {};
};

/// What the files hold of some layers.
struct StripHoldings
{
    std::int64_t bytes = 0;
    int completeLayers = 0;
};
StripHoldings stripHoldings(std::span<const StripLayer> layers);

/// Opens the file and reads the layer; what it does not hold becomes 0. On false `error` holds a text.
bool readStripLayer(StripLayer& layer, std::byte* destination);

} // namespace tirn
