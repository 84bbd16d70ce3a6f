#include "scene/scene.h"

namespace tirn {

FrameState takeFrameState(const Scene& scene, const ViewState& view)
{
    FrameState frame;
    const std::scoped_lock lock(scene.mutex);
    frame.view = view;
    frame.rotation = rotationMatrix(view.rotX, view.rotY, view.rotZ);
    frame.batchMode = scene.batchMode;
    frame.watermark = scene.watermark;
    frame.array = scene.current();
    if (frame.array == nullptr)
        return frame;
    frame.scale = frame.array->scale;
    frame.cut = frame.array->cut;
    frame.timePoint = frame.array->timePoint();
    frame.timeLabel = frame.array->timeLabels().value(frame.timePoint);
    for (const Channel& channel : frame.array->channels())
        frame.channels.push_back(channel.display);
    return frame;
}

} // namespace tirn
