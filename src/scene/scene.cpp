#include "scene/scene.h"

#include <algorithm>

#include "scene/pointing/pointing.h"

namespace tirn {

namespace {

unsigned paletteHandle(const Scene& scene, int palette)
{
    const auto index = static_cast<std::size_t>(std::max(0, palette));
    return index < scene.palettes.size() ? scene.palettes[index]->glHandle() : 0;
}

std::shared_ptr<const std::vector<std::uint8_t>> paletteBytes(const Scene& scene, int palette)
{
    const auto index = static_cast<std::size_t>(std::max(0, palette));
    return index < scene.palettes.size() ? scene.palettes[index]->drawnBytes() : nullptr;
}

std::vector<unsigned> curveHandles(const ZCurve& curve, const StackGeometry& geometry)
{
    std::vector<unsigned> handles;
    for (int block = 0; block < std::max(1, geometry.zBlocks); ++block)
        handles.push_back(curve.textureName(block));
    return handles;
}

} // namespace

int Scene::indexOf(StackId id) const
{
    const auto found =
        std::find_if(arrays.begin(), arrays.end(), [id](const auto& array) { return array->id() == id; });
    return found != arrays.end() ? static_cast<int>(found - arrays.begin()) : -1;
}

FrameState takeFrameState(const Scene& scene)
{
    FrameState frame;
    const std::scoped_lock lock(scene.mutex);
    frame.view = scene.view;
    frame.rotation = rotationMatrix(scene.view.rotX, scene.view.rotY, scene.view.rotZ);
    frame.drawing = scene.settings.drawing;
    frame.batchMode = scene.batchMode;
    frame.recording = scene.recording;
    frame.watermark = scene.watermark;
    frame.light = scene.light;
    frame.segmentation = drawnSurface(scene.segmentations);
    frame.array = scene.current();
    if (frame.array == nullptr)
        return frame;
    frame.arrayIndex = scene.currentIndex;
    frame.ownScale = frame.array->scale;
    frame.scale = scene.drawnScale();
    frame.cut = frame.array->cut;
    frame.voxelRevision = frame.array->voxelRevision();
    frame.timePoint = frame.array->timePoint();
    const Ruler& ruler = frame.view.ruler;
    if (ruler.stack == frame.array->id() && ruler.ends.size() == 2)
        frame.rulerLabel = distanceText(*frame.array, ruler.ends[0], ruler.ends[1]);
    frame.timeLabel = frame.array->timeLabels().value(frame.timePoint);
    for (const Channel& channel : frame.array->channels()) {
        frame.channels.push_back(channel.display);
        frame.paletteHandles.push_back(paletteHandle(scene, channel.display.palette));
        if (frame.view.zCorrection)
            frame.curveHandles.push_back(curveHandles(channel.zCurve, frame.array->geometry()));
        if (frame.drawing == Drawing::Card)
            continue;
        frame.paletteBytes.push_back(paletteBytes(scene, channel.display.palette));
        if (frame.view.zCorrection)
            frame.curves.push_back(curveTexels(*channel.zCurve.curve()));
    }
    return frame;
}

} // namespace tirn
