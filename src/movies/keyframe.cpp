#include "movies/keyframe.h"

#include <utility>

namespace tirn {

void replayKeyFrame(const KeyFrame& recorded, KeyFrame& shown)
{
    std::vector<PaletteValues> palettes = std::move(shown.palettes);
    std::vector<ChannelDisplay> channels = std::move(shown.channels);
    shown = recorded;
    if (recorded.palettes.empty())
        shown.palettes = std::move(palettes);
    if (recorded.channels.empty())
        shown.channels = std::move(channels);
}

} // namespace tirn
