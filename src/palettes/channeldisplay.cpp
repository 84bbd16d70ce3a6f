#include "palettes/channeldisplay.h"

#include <algorithm>
#include <utility>

namespace tirn {

namespace {

void exchangePalettes(ChannelDisplay& channel)
{
    std::swap(channel.palette, channel.alternatePalette);
    channel.swapped = !channel.swapped;
}

/// Puts the user's first choice back in its place.
void unswap(ChannelDisplay& channel)
{
    if (channel.swapped)
        exchangePalettes(channel);
}

} // namespace

int chosenPalette(const ChannelDisplay& channel)
{
    return channel.swapped ? channel.alternatePalette : channel.palette;
}

int secondPalette(const ChannelDisplay& channel)
{
    return channel.swapped ? channel.palette : channel.alternatePalette;
}

void choosePalette(ChannelDisplay& channel, int palette)
{
    unswap(channel);
    channel.palette = palette;
}

void chooseSecondPalette(ChannelDisplay& channel, int palette)
{
    unswap(channel);
    channel.alternatePalette = palette;
}

void chooseState(ChannelDisplay& channel, ChannelState state)
{
    if (state != ChannelState::PaletteSwap)
        unswap(channel);
    channel.state = state;
}

void turnFlashes(std::span<ChannelDisplay> channels)
{
    for (ChannelDisplay& channel : channels) {
        if (channel.state == ChannelState::FlashOn)
            channel.state = ChannelState::FlashOff;
        else if (channel.state == ChannelState::FlashOff)
            channel.state = ChannelState::FlashOn;
    }
}

void rotateFlash(std::span<ChannelDisplay> channels)
{
    const auto shown = std::find_if(channels.begin(), channels.end(), [](const ChannelDisplay& channel) {
        return channel.state == ChannelState::RotatingFlashOn;
    });
    if (shown == channels.end())
        return;
    shown->state = ChannelState::RotatingFlashWaiting;
    const auto start = static_cast<std::size_t>(shown - channels.begin());
    for (std::size_t k = 1; k <= channels.size(); ++k) {
        ChannelDisplay& next = channels[(start + k) % channels.size()];
        if (next.state == ChannelState::RotatingFlashWaiting) {
            next.state = ChannelState::RotatingFlashOn;
            break;
        }
    }
}

void swapPalettes(std::span<ChannelDisplay> channels)
{
    for (ChannelDisplay& channel : channels) {
        if (channel.state == ChannelState::PaletteSwap)
            exchangePalettes(channel);
    }
}

bool stepChannels(std::vector<ChannelDisplay>& channels)
{
    const std::vector<ChannelDisplay> before = channels;
    turnFlashes(channels);
    swapPalettes(channels);
    rotateFlash(channels);
    return channels != before;
}

} // namespace tirn
