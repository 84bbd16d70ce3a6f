#include "render/turntimes.h"

#include <algorithm>

#include "base/stopwatch.h"
#include "gl/gltable.h"
#include "gl/pbuffer.h"

namespace tirn {

double TurnTimes::median() const
{
    std::vector<double> sorted = frameMilliseconds;
    if (sorted.empty())
        return 0;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
}

double TurnTimes::maximum() const
{
    return frameMilliseconds.empty() ? 0
                                     : *std::max_element(frameMilliseconds.begin(), frameMilliseconds.end());
}

TurnTimes timeTurn(OffscreenStage& stage, QSize size, int frames, const Progress& progress)
{
    TurnTimes times;
    PBuffer buffer("rgba", true);
    if (!buffer.Initialize(size.width(), size.height(), false, true)) {
        times.error = "Could not allocate pbuffer";
        return times;
    }
    buffer.Activate();
    stage.thread().setupBuffer();
    const double before = stage.scene.view.rotY;
    for (int i = 0; i < frames && !progress.cancelled(); ++i) {
        stage.scene.view.rotY = wrapDegrees(before + 360.0 * i / frames);
        const Stopwatch watch;
        stage.thread().drawPicture({size, QRect(QPoint(0, 0), size)});
        gl().Finish();
        times.frameMilliseconds.push_back(watch.seconds() * 1000);
        progress("Turning", i + 1, frames);
    }
    stage.scene.view.rotY = before;
    buffer.Deactivate();
    return times;
}

} // namespace tirn
