#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "mesh/segmentation.h"
#include "movies/keyframe.h"
#include "palettes/palette.h"
#include "scene/light.h"
#include "scene/viewstate.h"
#include "volume/voxelarray.h"

namespace tirn {

/// Who draws volumes, where the card has fragment programs. The numbers are those of the settings.
enum class Drawing {
    Automatic = 0, ///< the processor where the driver is software, the card otherwise
    Card = 1,
    Processor = 2,
};

/// What the settings prescribe for drawing.
struct RenderSettings
{
    Drawing drawing = Drawing::Card;
    /// Milliseconds between changes of flashing channels.
    int flashRate = 300;
    int texLimit2D = 1024;
    int texLimit3D = 512;
    /// Moving the volume with the mouse goes along the screen, not along the axes of the volume.
    bool moveAlongScreen = false;
};

/// What there is to draw. A window's scene changes through its SceneModel alone; render threads read it.
///
/// `arrays`, `palettes` and `segmentations` change their number only while no render thread runs. What
/// decides the picture of an array (scale, cut box, time point, channel displays), the values of palettes and
/// the members below the lists change at any time, with `mutex` held.
struct Scene
{
    std::vector<std::unique_ptr<VoxelArray>> arrays;
    std::vector<std::unique_ptr<Palette>> palettes;
    std::vector<std::unique_ptr<Segmentation>> segmentations;

    mutable std::mutex mutex;
    int currentIndex = -1;
    ViewState view;
    Light light;
    RenderSettings settings;
    std::vector<KeyFrame> keyFrames;
    /// Movie batch rendering is running: no input is taken, no stack is closed, nothing animates.
    bool batchMode = false;
    /// Each drawn frame is to be recorded as a key frame.
    bool recording = false;
    /// Text shown by the file label.
    QString watermark;

    /// The current volume, or null.
    VoxelArray* current() const { return at(currentIndex); }
    VoxelArray* at(int index) const
    {
        const bool valid = index >= 0 && index < static_cast<int>(arrays.size());
        return valid ? arrays[static_cast<std::size_t>(index)].get() : nullptr;
    }
    /// The position of a volume, -1 when it is not there, and the volume, null then.
    int indexOf(StackId id) const;
    VoxelArray* find(StackId id) const { return at(indexOf(id)); }
    StackId currentId() const { return current() != nullptr ? current()->id() : StackId::None; }
    /// The scale that the current volume is drawn with; it must be there.
    AxisScale drawnScale() const { return current()->scale * view.zoom; }
    /// True while the current volume plays its time points.
    bool isPlaying() const { return view.playing != StackId::None && view.playing == currentId(); }
};

/// All that one frame is drawn from, copied at its beginning so that input may go on meanwhile.
struct FrameState
{
    ViewState view;
    /// Null when there is nothing to draw.
    VoxelArray* array = nullptr;
    int arrayIndex = -1;
    /// Of the volume by itself, and with the zoom of the view: as it is drawn.
    AxisScale ownScale;
    AxisScale scale;
    CutBox cut;
    /// Differs from what it was whenever voxels or textures changed.
    std::int64_t voxelRevision = 0;
    int timePoint = 0;
    std::vector<ChannelDisplay> channels;
    /// What each channel's colours are bound by on the card, 0 for a channel without a palette.
    std::vector<unsigned> paletteHandles;
    /// With depth correction: what each channel's curve is bound by, for each block along z.
    std::vector<std::vector<unsigned>> curveHandles;
    /// What the processor draws with: each channel's table, null for a channel without a palette, and with
    /// depth correction its curve.
    Drawing drawing = Drawing::Card;
    std::vector<std::shared_ptr<const std::vector<std::uint8_t>>> paletteBytes;
    std::vector<std::vector<float>> curves;
    bool batchMode = false;
    bool recording = false;
    QString timeLabel;
    QString watermark;
    /// What the ruler measures, once it has both ends.
    QString rulerLabel;
    Matrix4f rotation = rotationMatrix(0, 0, 0);
    /// The surface that is drawn, or null, and the light that it is drawn in.
    const Segmentation* segmentation = nullptr;
    std::optional<Light> light;
};

/// Copies what is shown under the scene's lock.
FrameState takeFrameState(const Scene& scene);

} // namespace tirn
