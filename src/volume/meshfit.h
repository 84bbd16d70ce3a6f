#pragma once

#include <array>
#include <optional>

#include "image/imageattributes.h"
#include "mesh/segmentation.h"
#include "volume/stackgeometry.h"

namespace tirn {

/// How the vertices of a surface become places in the volume.
enum class MeshFit {
    /// They are drawing units already: the longest padded side of the volume spans -1 to 1.
    None,
    /// The box around the surface fills the volume's as far as its proportions allow, in its middle.
    Volume,
    /// They count voxels: 0 is the middle of the first one, y and z run as rows and layers do.
    Voxels,
    /// They are microns from the outer corner of the first voxel.
    Microns,
};

/// Moves the vertices of a surface into the volume. `voxelSize` is in microns, x, y, z; only Microns asks for
/// it, and it must be known then.
void fitMesh(Segmentation& mesh, MeshFit fit, const StackGeometry& geometry,
             const std::array<double, 3>& voxelSize = {1, 1, 1});

/// The size in microns of the voxels that are drawn, every `layerStep`-th layer of a stack; nothing when a
/// side is unknown.
std::optional<std::array<double, 3>> drawnVoxelSize(const ImageAttributes& stack, int layerStep);

} // namespace tirn
