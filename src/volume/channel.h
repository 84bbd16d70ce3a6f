#pragma once

#include <cstdint>

#include "depth/zcurve.h"
#include "image/stackstats.h"

namespace tirn {

/// How a channel is shown. The numbers stand in session files and key frames; every odd one is hidden.
enum class ChannelState : std::uint8_t {
    Shown = 0,
    Hidden = 1,
    FlashOn = 2,
    FlashOff = 3,
    RotatingFlashOn = 4,
    RotatingFlashWaiting = 5,
    PaletteSwap = 6,
};

constexpr bool isHidden(ChannelState state) { return (static_cast<int>(state) & 1) != 0; }

/// True for the states that change by themselves.
constexpr bool isFlashing(ChannelState state) { return state >= ChannelState::FlashOn; }

/// What a channel shows: its state and the indices of its two palettes.
struct ChannelDisplay
{
    ChannelState state = ChannelState::Shown;
    /// The palette that PaletteSwap swaps with.
    int alternatePalette = 0;
    int palette = 0;

    bool operator==(const ChannelDisplay&) const = default;
};

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
