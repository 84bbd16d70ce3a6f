#pragma once

#include <optional>

#include "scene/scene.h"

namespace tirn {

// Changes of a scene that touch palettes and the channels that use them, for SceneModel::edit.

/// A channel of a volume, both as positions.
struct ChannelPlace
{
    int array = 0;
    int channel = 0;
};

/// The first channel that shows a palette, or swaps with it.
std::optional<ChannelPlace> userOfPalette(const Scene& scene, int palette);

/// Takes a palette that no channel uses off the list. The indices above it fall by one in every channel; a
/// second palette that was it, and is not in use, becomes the first one of its channel.
void removePalette(Scene& scene, int palette);

/// The bits of the scale on which the picture looks the samples of a volume up.
int shownDepth(const Scene& scene, const VoxelArray& array);

/// Spreads the palette that a channel shows over its voxels, as one step of its own undo. False where the
/// channel has none.
bool spreadOverVoxels(Scene& scene, const VoxelArray& array, std::size_t channel);

} // namespace tirn
