#include "scene/paletteedits.h"

#include "palettes/palettehistogram.h"

namespace tirn {

std::optional<ChannelPlace> userOfPalette(const Scene& scene, int palette)
{
    for (std::size_t a = 0; a < scene.arrays.size(); ++a) {
        const std::vector<Channel>& channels = scene.arrays[a]->channels();
        for (std::size_t c = 0; c < channels.size(); ++c) {
            const ChannelDisplay& display = channels[c].display;
            const bool swaps = display.state == ChannelState::PaletteSwap;
            if (display.palette == palette || (swaps && display.alternatePalette == palette))
                return ChannelPlace{static_cast<int>(a), static_cast<int>(c)};
        }
    }
    return std::nullopt;
}

void removePalette(Scene& scene, int palette)
{
    if (palette < 0 || palette >= static_cast<int>(scene.palettes.size()))
        return;
    scene.palettes.erase(scene.palettes.begin() + palette);
    for (const auto& array : scene.arrays) {
        for (Channel& channel : array->channels()) {
            ChannelDisplay& display = channel.display;
            if (display.palette > palette)
                --display.palette;
            if (display.alternatePalette == palette)
                display.alternatePalette = display.palette;
            else if (display.alternatePalette > palette)
                --display.alternatePalette;
        }
    }
}

int shownDepth(const Scene& scene, const VoxelArray& array)
{
    return shownDepth(array.bitsPerSample(), array.significantBits(), scene.view.autoBitDepth);
}

bool spreadOverVoxels(Scene& scene, const VoxelArray& array, std::size_t channel)
{
    const Channel& shown = array.channels().at(channel);
    const auto index = static_cast<std::size_t>(shown.display.palette);
    if (index >= scene.palettes.size())
        return false;
    Palette& palette = *scene.palettes[index];
    palette.pushUndo();
    palette.setLevels(autoLevels(shown.stats.histogram, palette.depth(), shownDepth(scene, array)));
    palette.setModified(true);
    palette.upload();
    return true;
}

} // namespace tirn
