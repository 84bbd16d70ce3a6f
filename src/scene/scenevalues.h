#pragma once

#include <optional>
#include <vector>

#include "scene/changes.h"
#include "scene/scene.h"

namespace tirn {

/// The plain values of a volume that can be put back.
struct StackValues
{
    StackId id = StackId::None;
    AxisScale scale;
    AxisScale baseScale;
    /// The voxel size in microns.
    AxisScale voxelSize;
    bool preserveScaleRatio = false;
    CutBox cut;
    std::vector<ChannelDisplay> channels;

    bool operator==(const StackValues&) const = default;
};

/// How a surface takes the light; the revision tells which surface it is.
struct SurfaceValues
{
    std::uint64_t revision = 0;
    Material material;

    bool operator==(const SurfaceValues&) const = default;
};

/// The plain values of a scene that can be put back.
struct SceneValues
{
    ViewState view;
    /// Never made of nothing, since the lights that were made are counted.
    std::optional<Light> light;
    std::vector<SurfaceValues> surfaces;
    std::vector<StackValues> stacks;

    bool operator==(const SceneValues&) const = default;
};

/// Copies them; with the scene's lock held where others write.
SceneValues valuesOf(const Scene& scene);

/// Puts back what `which` names, in the volumes that are still there; the rest stays as it is. Spin, drag,
/// playback and what a cut is made by are no values and stay, too.
void restoreValues(Scene& scene, const SceneValues& values, Changes which);

} // namespace tirn
