#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <QOpenGLFramebufferObject>

#include "gl/glcontext.h"
#include "gl/gltables.h"
#include "render/renderthreads.h"
#include "support/compositor.h"
#include "support/plainstack.h"

namespace tirn::test {

/// A frame buffer object with a context of its own, to draw on in place of a window. After `countFrames`
/// frames it tells whoever waits.
class OffscreenSurface : public FrameSurface
{
public:
    OffscreenSurface(QSize size, HiddenContext& share) : m_context(&share.context()), m_size(size) {}
    ~OffscreenSurface() override;

    void handTo(QThread& thread) override { m_context.context().moveToThread(&thread); }
    void giveBack() override;
    bool makeCurrent() override;
    void swap() override;
    QSize size() const override { return m_size; }
    double pixelRatio() const override { return 1; }

    /// Frames swapped so far; `waitForFrames` returns when there are at least that many.
    int frames() const;
    void waitForFrames(int count);
    QImage image();

private:
    HiddenContext m_context;
    std::unique_ptr<QOpenGLFramebufferObject> m_buffer;
    QSize m_size;
    mutable std::mutex m_mutex;
    std::condition_variable m_swapped;
    int m_frames = 0;
};

/// Counts what a render thread reports.
class CountingEvents : public RenderEvents
{
public:
    void rotationDrawn(double x, double y, double z) override;
    void keyFrameRecorded(int count) override;
    void timePointAdvanced() override { ++timePoints; }

    std::atomic<int> rotations = 0;
    std::atomic<double> lastY = 0;
    std::atomic<double> lastZ = 0;
    std::atomic<int> keyFrames = 0;
    std::atomic<int> timePoints = 0;
};

/// A stack as the program keeps it, with its statistics.
std::shared_ptr<ImageFile> imageOf(const PlainStack& stack);

/// A palette with the entries of a table.
std::unique_ptr<Palette> paletteOf(const ColourTable& table, PaletteTables& tables);

/// A volume of a plain stack, one image a time point, encoded in the current context.
struct VolumeSpec
{
    GLenum target = GL_TEXTURE_2D;
    int blockLimit = 1024;
    int finalZ = -1;
    RenderThreadKind kind = RenderThreadKind::FragmentProgram;
    CurveTextures* curves = nullptr;
};
std::unique_ptr<VoxelArray> makeVolume(const std::vector<PlainStack>& timePoints, const VolumeSpec& spec);

/// Who draws the volumes of the rigs that are made from now on.
Drawing& testedDrawing();
/// What they must show of a view: blocks, of which a card's textures have seams, are none to the processor.
CompositorView asDrawn(CompositorView view);

/// A scene with a render thread on an off-screen surface.
class RenderRig
{
public:
    explicit RenderRig(QSize size = {128, 128}, RenderThreadKind kind = RenderThreadKind::FragmentProgram);
    ~RenderRig();
    RenderRig(const RenderRig&) = delete;
    RenderRig& operator=(const RenderRig&) = delete;

    /// Adds a volume and makes it current.
    VoxelArray& show(const std::vector<PlainStack>& timePoints, const VolumeSpec& spec = {});
    /// Gives channel c the palette of table c.
    void setTables(const std::vector<ColourTable>& tables);
    /// Draws one frame on this thread and returns its picture.
    QImage draw();
    void makeCurrent() { m_hidden->makeCurrent(); }
    HiddenContext& hidden() { return *m_hidden; }

    Scene scene;
    RenderLock renderLock;
    CountingEvents events;

    Shaders& shaders() { return *m_shaders; }
    GLThread& thread() { return *m_thread; }
    OffscreenSurface& surface() { return *m_surface; }
    GlPaletteTables& paletteTables() { return *m_paletteTables; }

private:
    std::unique_ptr<HiddenContext> m_hidden;
    std::unique_ptr<Shaders> m_shaders;
    std::unique_ptr<GlPaletteTables> m_paletteTables;
    std::unique_ptr<OffscreenSurface> m_surface;
    std::unique_ptr<GLThread> m_thread;
    RenderThreadKind m_kind;
};

/// A drawn image as the compositor's picture; every pixel counts as covered.
Picture pictureOf(const QImage& image);

} // namespace tirn::test
