#include "scene/keyframeview.h"

#include <algorithm>
#include <tuple>

#include "base/log.h"
#include "movies/frameload.h"

namespace tirn {

namespace {

ShownFrame shownFrame(const ViewState& view)
{
    return {{view.rotX, view.rotY, view.rotZ}, {view.transX, view.transY, view.transZ}, std::nullopt};
}

ShownStack shownStack(const VoxelArray& array, const AxisScale& scale, const CutBox& cut, int timePoint,
                      std::vector<ChannelDisplay> channels)
{
    return {{scale.x, scale.y, scale.z},
            {array.width(), array.height(), array.finalDepth()},
            {cut.xMin, cut.yMin, cut.zMin},
            {cut.xMax, cut.yMax, cut.zMax},
            timePoint,
            std::move(channels)};
}

void putOnScreen(const ShownFrame& shown, ViewState& view, VoxelArray* array)
{
    std::tie(view.rotX, view.rotY, view.rotZ) = std::tuple_cat(shown.rotation);
    std::tie(view.transX, view.transY, view.transZ) = std::tuple_cat(shown.translation);
    if (array == nullptr)
        return;
    const ShownStack& stack = *shown.stack;
    array->scale = clampedScale({stack.scale[0], stack.scale[1], stack.scale[2]});
    array->cut = {stack.cutMin[0], stack.cutMax[0], stack.cutMin[1],
                  stack.cutMax[1], stack.cutMin[2], stack.cutMax[2]};
    array->setTimePoint(stack.timePoint);
    for (std::size_t c = 0; c < stack.channels.size(); ++c)
        array->channels()[c].display = stack.channels[c];
}

} // namespace

void showKeyFrame(const KeyFrame& frame, Scene& scene)
{
    VoxelArray* array = scene.current();
    ShownFrame shown = shownFrame(scene.view);
    if (array != nullptr) {
        std::vector<ChannelDisplay> channels;
        for (const Channel& channel : array->channels())
            channels.push_back(channel.display);
        shown.stack = shownStack(*array, array->scale, array->cut, array->timePoint(), std::move(channels));
    }
    loadKeyFrame(frame, shown);
    putOnScreen(shown, scene.view, array);
}

void showPalettes(const KeyFrame& frame, Scene& scene)
{
    const std::size_t palettes = std::min(frame.palettes.size(), scene.palettes.size());
    for (std::size_t p = 0; p < palettes; ++p) {
        try {
            scene.palettes[p]->setValues(frame.palettes[p]);
        } catch (int error) {
            logWarning("GL error: %d", error);
        }
    }
}

KeyFrame keyFrameOf(const FrameState& frame)
{
    ShownFrame shown = shownFrame(frame.view);
    if (frame.array != nullptr)
        shown.stack = shownStack(*frame.array, frame.ownScale, frame.cut, frame.timePoint, frame.channels);
    KeyFrame keyFrame = keyFrameOf(shown);
    keyFrame.array = frame.arrayIndex;
    return keyFrame;
}

KeyFrame shownKeyFrame(const Scene& scene, bool palettes)
{
    KeyFrame frame = keyFrameOf(takeFrameState(scene));
    const std::scoped_lock lock(scene.mutex);
    for (std::size_t p = 0; palettes && p < scene.palettes.size(); ++p)
        frame.palettes.push_back(scene.palettes[p]->values());
    return frame;
}

} // namespace tirn
