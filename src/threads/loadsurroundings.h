#pragma once

#include "palettes/palettelist.h"
#include "session/sessionstack.h"
#include "volume/voxelarray.h"

namespace tirn {

/// What a load has to know of the program around it, as it is when the load starts.
struct LoadSurroundings
{
    /// The description of the load decides about `conserveMemory`.
    VolumeOptions options;
    /// The preference that the description of the next load begins with.
    int defaultEncode = 0;
    /// How many palettes there are, and what is generated where they do not suffice.
    int paletteCount = 0;
    PaletteGeneration paletteGeneration = PaletteGeneration::RedGreenBlue;
    /// Where generated palettes go; null where there is no card.
    PaletteTables* paletteTables = nullptr;
    /// Without it a session's missing file ends the load.
    MissingFileQuestion fixMissingFile;
};

} // namespace tirn
