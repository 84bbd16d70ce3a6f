#pragma once

#include "threads/loaddescription.h"
#include "threads/loadsurroundings.h"

namespace tirn {

/// Voxel size and scale of a volume that was loaded: the description's size first, then what a session says
/// of both, and a scale from the voxel size where the session gives none.
void applyDimensions(VoxelArray& array, const LoadDescription& description);

/// Gives each channel its palette, and returns those that have to be appended to the program's for that.
PaletteList assignPalettes(VoxelArray& array, const LoadDescription& description,
                           const LoadSurroundings& surroundings);

/// Labels, channel states, cut box and depth curves. A limit beyond the volume is ignored, each for itself;
/// a state that there is none counts as shown; lists that do not have one entry a channel are ignored.
void applySessionExtras(VoxelArray& array, const LoadDescription& description);

} // namespace tirn
