#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "volume/draworder.h"

namespace tirn {

/// A voxel of a stack, counted from 0.
struct VoxelPlace
{
    int x = 0;
    int y = 0;
    int z = 0;

    bool operator==(const VoxelPlace&) const = default;
};

/// The middle of a voxel on x, y and z, in drawing units.
std::array<double, 3> voxelCentre(const StackGeometry& geometry, const VoxelPlace& voxel);

/// The power of two that 16-bit samples are stretched by before they are looked up in a palette: up to 12
/// bits by 16, beyond that not at all, or by what the bits that are really used leave.
int stretchExponent(int bitsPerSample, int significantBits, bool usesSignificantBits);

/// What is drawn of a channel.
struct SeenChannel
{
    const ImageFile* image = nullptr;
    /// The channel of the image.
    int channel = 0;
    /// Red, green, blue and alpha of each entry.
    std::vector<std::uint8_t> table;
    int stretch = 0;
    /// A multiplier for each layer; empty for none.
    std::vector<double> curve = {};
};

/// What a line of sight meets: slices as a frame draws them, those of hidden channels left out.
struct SeenVolume
{
    StackGeometry geometry;
    bool is3D = false;
    Orientation orientation = Orientation::XYForward;
    CutBox cut;
    /// The brightest is seen; otherwise what is in front hides what is behind.
    bool isMaximum = false;
    /// In the order in which they are drawn. Without any the first voxel in the line of sight is taken.
    std::vector<SeenChannel> channels = {};
};

/// The voxel that the picture shows in a line of sight, which goes from a point, the nearest to the viewer,
/// in a direction, both in the space of the volume.
///
/// That is the voxel of the slice at which the opacity, added up from the viewer on, passes one half; where
/// it never does the slice that adds most to the picture; in a maximum the slice with the brightest colour.
/// Of equal ones the nearest is taken. Nothing where the picture shows none of the stack's voxels.
std::optional<VoxelPlace> seenVoxel(const SeenVolume& volume, const std::array<double, 3>& from,
                                    const std::array<double, 3>& direction);

} // namespace tirn
