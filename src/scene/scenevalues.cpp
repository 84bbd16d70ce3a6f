#include "scene/scenevalues.h"

#include <algorithm>

namespace tirn {

namespace {

StackValues valuesOf(const VoxelArray& array)
{
    StackValues values;
    values.id = array.id();
    values.scale = array.scale;
    values.baseScale = array.baseScale;
    values.voxelSize = {array.stack().dimX, array.stack().dimY, array.stack().dimZ};
    values.preserveScaleRatio = array.preserveScaleRatio;
    values.cut = array.cut;
    for (const Channel& channel : array.channels())
        values.channels.push_back(channel.display);
    return values;
}

void restore(VoxelArray& array, const StackValues& values, Changes which)
{
    if (which & Change::Scale) {
        array.scale = values.scale;
        array.baseScale = values.baseScale;
        array.preserveScaleRatio = values.preserveScaleRatio;
        array.stack().dimX = values.voxelSize.x;
        array.stack().dimY = values.voxelSize.y;
        array.stack().dimZ = values.voxelSize.z;
    }
    if (which & Change::Cut)
        array.cut = values.cut;
    if (which & Change::Channels) {
        for (std::size_t c = 0; c < std::min(values.channels.size(), array.channels().size()); ++c)
            array.channels()[c].display = values.channels[c];
    }
}

struct Pose
{
    double rotX, rotY, rotZ, transX, transY, transZ, zoom;
};

Pose poseOf(const ViewState& view)
{
    return {view.rotX, view.rotY, view.rotZ, view.transX, view.transY, view.transZ, view.zoom};
}

void setPose(ViewState& view, const Pose& pose)
{
    view.rotX = pose.rotX;
    view.rotY = pose.rotY;
    view.rotZ = pose.rotZ;
    view.transX = pose.transX;
    view.transY = pose.transY;
    view.transZ = pose.transZ;
    view.zoom = pose.zoom;
}

/// All of a view but its pose, the ruler, what moves by itself, and what is there while something is done.
void setLook(ViewState& view, const ViewState& look)
{
    const ViewState before = view;
    view = look;
    setPose(view, poseOf(before));
    view.spinX = before.spinX;
    view.spinY = before.spinY;
    view.spinZ = before.spinZ;
    view.dragging = before.dragging;
    view.drawCutBox = before.drawCutBox;
    view.cutHandles = before.cutHandles;
    view.ruler = before.ruler;
    view.isMeasuring = before.isMeasuring;
    view.playing = before.playing;
    view.timeRate = before.timeRate;
}

void restoreLighting(Scene& scene, const SceneValues& values)
{
    if (values.light)
        scene.light = *values.light;
    for (const auto& surface : scene.segmentations) {
        for (const SurfaceValues& before : values.surfaces) {
            if (before.revision == surface->revision)
                surface->material = before.material;
        }
    }
}

} // namespace

SceneValues valuesOf(const Scene& scene)
{
    SceneValues values;
    values.view = scene.view;
    values.light = scene.light;
    for (const auto& surface : scene.segmentations)
        values.surfaces.push_back({surface->revision, surface->material});
    for (const auto& array : scene.arrays)
        values.stacks.push_back(valuesOf(*array));
    return values;
}

void restoreValues(Scene& scene, const SceneValues& values, Changes which)
{
    if (which & Change::Look) {
        setLook(scene.view, values.view);
        restoreLighting(scene, values);
    }
    if (which & Change::Ruler)
        scene.view.ruler = values.view.ruler;
    if (which & Change::Pose)
        setPose(scene.view, poseOf(values.view));
    for (const StackValues& stack : values.stacks) {
        if (VoxelArray* array = scene.find(stack.id))
            restore(*array, stack, which);
    }
}

} // namespace tirn
