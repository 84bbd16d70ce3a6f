#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include <QImage>

#include "mesh/segmentation.h"
#include "movies/keyframe.h"
#include "palettes/palette.h"
#include "scene/renderlock.h"
#include "scene/viewstate.h"
#include "volume/voxelarray.h"

namespace tirn {

/// What there is to draw. The application owns it; render threads read it.
///
/// `arrays`, `palettes` and `segmentations` change their number only while no render thread runs. What
/// decides the picture of an array (scale, cut box, time point, channel displays), the view states of the
/// widgets and the members below the lists change at any time, with `mutex` held.
struct Scene
{
    std::vector<std::unique_ptr<VoxelArray>> arrays;
    std::vector<std::unique_ptr<Palette>> palettes;
    std::vector<std::unique_ptr<Segmentation>> segmentations;

    mutable std::mutex mutex;
    int currentIndex = -1;
    std::vector<KeyFrame> keyFrames;
    /// Movie batch rendering is running: no input is taken, no stack is closed, nothing animates.
    bool batchMode = false;
    /// Each drawn frame is to be recorded as a key frame.
    bool recording = false;
    /// Text shown by the file label.
    QString watermark;

    /// The current volume, or null.
    VoxelArray* current() const
    {
        const bool valid = currentIndex >= 0 && currentIndex < static_cast<int>(arrays.size());
        return valid ? arrays[static_cast<std::size_t>(currentIndex)].get() : nullptr;
    }
};

/// What the settings prescribe for drawing.
struct RenderSettings
{
    /// Milliseconds between changes of flashing channels.
    int flashRate = 300;
    int texLimit2D = 1024;
    int texLimit3D = 512;
};

/// All that one frame is drawn from, copied at its beginning so that input may go on meanwhile.
struct FrameState
{
    ViewState view;
    /// Null when there is nothing to draw.
    VoxelArray* array = nullptr;
    AxisScale scale;
    CutBox cut;
    int timePoint = 0;
    std::vector<ChannelDisplay> channels;
    bool batchMode = false;
    QString timeLabel;
    QString watermark;
    Matrix4f rotation = rotationMatrix(0, 0, 0);
};

/// Copies scene and view, both under the scene's lock.
FrameState takeFrameState(const Scene& scene, const ViewState& view);

} // namespace tirn
