#pragma once

#include <array>
#include <vector>

#include <QSize>

#include "gl/glnames.h"
#include "raster/rasterframe.h"
#include "scene/scene.h"
#include "volume/slicelayout.h"
#include "volume/slicestore.h"

namespace tirn {

/// Draws the slices of volumes on the processor: they are laid over each other in a layer, which is then
/// blended into the frame once. Used with the render thread's context current.
class ProcessorDrawing
{
public:
    /// Whether a frame is drawn this way; planes that it lacks are made. False where the card draws: by
    /// choice, with a typed program, with boxes in the depth of a stereo picture, and while voxels are not at
    /// hand.
    bool prepare(const FrameState& frame, const Scene& scene);
    /// Blends the slices of a prepared frame into a buffer, with the matrices and the viewport of the moment.
    /// Texturing is off, before and after.
    void draw(const FrameState& frame, Orientation orientation, QSize buffer, bool transparent);
    /// Lets all planes and textures go.
    void clear();
    /// Whether the last frame was drawn this way.
    bool isDrawing() const { return m_isDrawing; }

private:
    bool isWanted(const FrameState& frame);
    bool isSoftwareCard();
    void upload();
    void blend(const BufferView& view);

    bool makeSlices(const FrameState& frame);

    SliceStore m_store;
    bool m_isDrawing = false;
    /// Of each axis, each shown channel of the frame at hand.
    std::array<std::vector<SliceStore::Slices>, 3> m_slices;
    std::vector<std::size_t> m_shown;
    enum class Card { Unknown, Software, Hardware };
    Card m_card = Card::Unknown;
    /// The last layer, whose room the next one takes.
    RasterLayer m_layer;
    TextureNames m_texture;
    QSize m_textureSize;
};

/// Whether a driver's name for its card is that of a renderer in software.
bool isSoftwareRenderer(const char* renderer);

} // namespace tirn
