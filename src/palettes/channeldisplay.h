#pragma once

#include <cstdint>
#include <span>
#include <vector>

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
    /// The palette that is drawn.
    int palette = 0;
    /// Whether the two have changed places, so that the user's first choice is the alternate one just now.
    bool swapped = false;

    bool operator==(const ChannelDisplay&) const = default;
};

/// The palette that the user chose for a channel, and the one that it swaps with, whichever is drawn now.
int chosenPalette(const ChannelDisplay& channel);
int secondPalette(const ChannelDisplay& channel);
/// Chooses them. While palettes swap, the chosen one is drawn at once, too.
void choosePalette(ChannelDisplay& channel, int palette);
void chooseSecondPalette(ChannelDisplay& channel, int palette);
/// Another state. What does not swap palettes draws the one that was chosen.
void chooseState(ChannelDisplay& channel, ChannelState state);

/// Turns flashing channels on and off.
void turnFlashes(std::span<ChannelDisplay> channels);
/// Hands the light of the rotating channels on to the next that waits, upward and then from the start.
void rotateFlash(std::span<ChannelDisplay> channels);
/// Swaps the palettes of the channels that swap them.
void swapPalettes(std::span<ChannelDisplay> channels);

/// One pass over flashing channels: all three of these. Returns whether any changed.
bool stepChannels(std::vector<ChannelDisplay>& channels);

} // namespace tirn
