#pragma once

#include <memory>

#include <QString>

#include "gl/gltables.h"
#include "gl/offscreencontext.h"
#include "render/framesurface.h"
#include "render/renderthreads.h"
#include "scene/scene.h"

namespace tirn {

/// All that drawing without a window needs: a context, the scene, the view and a render thread, which draws
/// on the calling thread and is never started. One stage, one thread.
class OffscreenStage
{
public:
    /// Needs no display server. Null when no driver can draw a volume; `error` says why.
    static std::unique_ptr<OffscreenStage> withoutDisplay(QString& error);
    /// Takes a context that is not current anywhere.
    static std::unique_ptr<OffscreenStage> on(std::unique_ptr<OffscreenContext> context, QString& error);
    ~OffscreenStage();
    OffscreenStage(const OffscreenStage&) = delete;
    OffscreenStage& operator=(const OffscreenStage&) = delete;

    void makeCurrent() { m_context->makeCurrent(); }
    GLThread& thread() { return *m_thread; }
    Shaders& shaders() { return *m_shaders; }
    const GlCapabilities& card() const { return m_card; }
    PaletteTables& paletteTables() { return *m_paletteTables; }
    /// How a volume of this stage is to be made.
    VolumeOptions volumeOptions();
    /// Makes a volume the current one.
    void show(std::unique_ptr<VoxelArray> array);
    /// The driver's name for the card.
    const QString& rendererName() const { return m_card.renderer; }

    Scene scene;

private:
    explicit OffscreenStage(std::unique_ptr<OffscreenContext> context);

    class NoWindow;
    class NoEvents;

    std::unique_ptr<OffscreenContext> m_context;
    GlCapabilities m_card;
    RenderLock m_renderLock;
    std::unique_ptr<Shaders> m_shaders;
    std::unique_ptr<GlPaletteTables> m_paletteTables;
    std::unique_ptr<GlCurveTextures> m_curveTextures;
    std::unique_ptr<FrameSurface> m_surface;
    std::unique_ptr<RenderEvents> m_events;
    std::unique_ptr<GLThread> m_thread;
};

} // namespace tirn
