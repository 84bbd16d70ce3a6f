#include "render/offscreenstage.h"

#include "gl/gltable.h"

namespace tirn {

/// Stands where a render thread expects its window; nothing is ever drawn on it.
class OffscreenStage::NoWindow : public FrameSurface
{
public:
    void handTo(QThread& /*thread*/) override {}
    void giveBack() override {}
    bool makeCurrent() override { return false; }
    void swap() override {}
    QSize size() const override { return {1, 1}; }
    double pixelRatio() const override { return 1; }
};

class OffscreenStage::NoEvents : public RenderEvents
{
public:
    void rotationDrawn(double /*x*/, double /*y*/, double /*z*/) override {}
    void keyFrameRecorded(int /*count*/) override {}
    void timePointAdvanced() override {}
};

std::unique_ptr<OffscreenStage> OffscreenStage::withoutDisplay(QString& error)
{
    std::unique_ptr<OffscreenContext> context = makeContextWithoutDisplay(error);
    return context != nullptr ? on(std::move(context), error) : nullptr;
}

std::unique_ptr<OffscreenStage> OffscreenStage::on(std::unique_ptr<OffscreenContext> context, QString& error)
{
    if (!context->isValid() || !context->makeCurrent()) {
        error = QStringLiteral("no OpenGL context could be made current");
        return nullptr;
    }
    std::unique_ptr<OffscreenStage> stage(new OffscreenStage(std::move(context)));
    if (stage->m_thread != nullptr)
        return stage;
    error = stage->rendererName() + " lacks " +
            GlInfo(*stage->m_context)
                .firstMissing("GL_VERSION_1_4 GL_ARB_multitexture GL_ARB_fragment_program "
                              "GL_ARB_framebuffer_object");
    return nullptr;
}

OffscreenStage::OffscreenStage(std::unique_ptr<OffscreenContext> context) : m_context(std::move(context))
{
    m_card = GlInfo(*m_context).readCapabilities();
    const RenderThreadKind kind = chooseThreadKind(m_card);
    if (kind == RenderThreadKind::LostCause || !m_card.hasPBuffer)
        return;
    m_shaders = std::make_unique<Shaders>();
    m_paletteTables = std::make_unique<GlPaletteTables>(kind, m_context.get());
    m_curveTextures = std::make_unique<GlCurveTextures>(m_context.get());
    m_surface = std::make_unique<NoWindow>();
    m_events = std::make_unique<NoEvents>();
    m_thread = makeRenderThread({scene, *m_shaders, m_renderLock, *m_surface, *m_events, kind});
}

OffscreenStage::~OffscreenStage()
{
    m_context->makeCurrent();
    if (m_thread != nullptr)
        m_thread->clearLists();
    m_thread.reset();
    scene.arrays.clear();
    scene.palettes.clear();
    m_shaders.reset();
}

VolumeOptions OffscreenStage::volumeOptions()
{
    return {chooseThreadKind(m_card), scene.settings.texLimit2D, scene.settings.texLimit3D, false,
            m_curveTextures.get()};
}

void OffscreenStage::show(std::unique_ptr<VoxelArray> array)
{
    scene.arrays.push_back(std::move(array));
    scene.currentIndex = static_cast<int>(scene.arrays.size()) - 1;
}

} // namespace tirn
