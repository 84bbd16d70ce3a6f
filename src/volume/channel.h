#pragma once

#include "depth/zcurve.h"
#include "image/statistics/stackstats.h"
#include "palettes/channeldisplay.h"

namespace tirn {

/// One colour channel of a volume.
struct Channel
{
    /// `textures` may be null where there is no card.
    explicit Channel(CurveTextures* textures = nullptr) : zCurve(textures) {}

    StackStats stats;
    ChannelDisplay display;
    /// The images of this channel belong to another channel, too.
    bool sharedImage = false;
    /// Lowest and highest value of the data.
    int minValue = 0;
    int maxValue = 0;
    ZCurve zCurve;
};

} // namespace tirn
