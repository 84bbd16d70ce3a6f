#include "palettes/channeldisplay.h"

#include <algorithm>
#include <utility>

namespace tirn {

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
            std::swap(channel.palette, channel.alternatePalette);
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
