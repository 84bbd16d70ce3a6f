#pragma once

#include <vector>

#include "palettes/channeldisplay.h"
#include "palettes/palettevalues.h"

namespace tirn {

/// All that the viewer shows at one moment. A plain value: copies share nothing.
struct KeyFrame
{
    /// Index of the stack that was current.
    int array = 0;
    /// Copies of all palettes in list order; empty when the frame was taken without them.
    std::vector<PaletteValues> palettes;
    /// One for each channel of the stack.
    std::vector<ChannelDisplay> channels;
    /// Rotation in degrees.
    double xrot = 0;
    double yrot = 0;
    double zrot = 0;
    double xtrans = 0;
    double ytrans = 0;
    double ztrans = 0;
    /// Voxel scale.
    double xscale = 1;
    double yscale = 1;
    double zscale = 1;
    /// The cut box in voxels, inclusive; a negative value leaves that side as it is.
    double xmin = 0;
    double ymin = 0;
    double zmin = 0;
    double xmax = 0;
    double ymax = 0;
    double zmax = 0;
    int timepoint = 0;

    bool operator==(const KeyFrame&) const = default;
};

/// Shows a recorded frame; what it was recorded without, palettes or channels, stays as it was.
void replayKeyFrame(const KeyFrame& recorded, KeyFrame& shown);

} // namespace tirn
