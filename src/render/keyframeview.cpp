#include "render/keyframeview.h"

#include <algorithm>
#include <tuple>

#include "base/log.h"
#include "movies/frameload.h"

namespace tirn {

namespace {

ShownStack shownStack(const VoxelArray& array)
{
    ShownStack stack;
    stack.scale = {array.scale.x, array.scale.y, array.scale.z};
    stack.slices = {array.width(), array.height(), array.finalDepth()};
    stack.cutMin = {array.cut.xMin, array.cut.yMin, array.cut.zMin};
    stack.cutMax = {array.cut.xMax, array.cut.yMax, array.cut.zMax};
    stack.timePoint = array.timePoint();
    for (const Channel& channel : array.channels())
        stack.channels.push_back(channel.display);
    return stack;
}

ShownFrame shownFrame(const ViewState& view, const VoxelArray* array)
{
    ShownFrame shown = {
        {view.rotX, view.rotY, view.rotZ}, {view.transX, view.transY, view.transZ}, std::nullopt};
    if (array != nullptr)
        shown.stack = shownStack(*array);
    return shown;
}

void putOnScreen(const ShownFrame& shown, ViewState& view, VoxelArray* array)
{
    std::tie(view.rotX, view.rotY, view.rotZ) = std::tuple_cat(shown.rotation);
    std::tie(view.transX, view.transY, view.transZ) = std::tuple_cat(shown.translation);
    if (array == nullptr)
        return;
    const ShownStack& stack = *shown.stack;
    array->scale = {stack.scale[0], stack.scale[1], stack.scale[2]};
    array->cut = {stack.cutMin[0], stack.cutMax[0], stack.cutMin[1],
                  stack.cutMax[1], stack.cutMin[2], stack.cutMax[2]};
    array->setTimePoint(stack.timePoint);
    for (std::size_t c = 0; c < stack.channels.size(); ++c)
        array->channels()[c].display = stack.channels[c];
}

} // namespace

void showKeyFrame(const KeyFrame& frame, ViewState& view, VoxelArray* array)
{
    ShownFrame shown = shownFrame(view, array);
    loadKeyFrame(frame, shown);
    putOnScreen(shown, view, array);
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

KeyFrame shownKeyFrame(const ViewState& view, const Scene& scene, bool palettes)
{
    KeyFrame frame = keyFrameOf(shownFrame(view, scene.current()));
    frame.array = scene.currentIndex;
    for (std::size_t p = 0; palettes && p < scene.palettes.size(); ++p)
        frame.palettes.push_back(scene.palettes[p]->values());
    return frame;
}

} // namespace tirn
