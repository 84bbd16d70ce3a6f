#include "render/nvidiathread.h"

#include <algorithm>

#include "base/log.h"
#include "gl/glstate.h"

namespace tirn {

void NvidiaThread::enableColourPath() { gl().Enable(GL_FRAGMENT_PROGRAM_ARB); }

void NvidiaThread::disableTexturing()
{
    gl().Disable(GL_FRAGMENT_PROGRAM_ARB);
    GLThread::disableTexturing();
}

void NvidiaThread::enableTexturing()
{
    GLThread::enableTexturing();
    gl().Enable(GL_FRAGMENT_PROGRAM_ARB);
}

bool NvidiaThread::prepareProgram(const FrameState& frame)
{
    if (m_host.shaders.use(frame))
        return true;
    drawShaderError(frame);
    return false;
}

ListNames NvidiaThread::buildRenderList(const FrameState& frame, Orientation orientation,
                                        const SliceWalk& walk)
{
    ListNames list = GLThread::buildRenderList(frame, orientation, walk);
    if (!list.empty() && gl().IsList(list.first()) == GL_FALSE) {
        logWarning("Made a bad render_list!");
        list.clear();
    }
    return list;
}

void NvidiaThread::bindSlice(GLenum target, GLuint texture)
{
    gl().ActiveTextureARB(GL_TEXTURE0_ARB);
    gl().BindTexture(target, texture);
}

void NvidiaThread::bindChannelTables(const FrameState& frame, std::size_t channel, int zBlock)
{
    if (const GLuint palette = frame.paletteHandles[channel]) {
        gl().ActiveTextureARB(GL_TEXTURE1_ARB);
        gl().BindTexture(GL_TEXTURE_1D, palette);
    }
    if (frame.view.zCorrection) {
        const std::vector<unsigned>& curves = frame.curveHandles[channel];
        gl().ActiveTextureARB(GL_TEXTURE2_ARB);
        gl().BindTexture(GL_TEXTURE_1D,
                         curves[std::min(static_cast<std::size_t>(zBlock), curves.size() - 1)]);
    }
}

void NvidiaThread::unbindChannelTables()
{
    gl().ActiveTextureARB(GL_TEXTURE1_ARB);
    gl().BindTexture(GL_TEXTURE_1D, 0);
}

void NvidiaThread::drawNoStack(const FrameState& frame, QSize size)
{
    if (frame.batchMode) {
        GLThread::drawNoStack(frame, size);
        return;
    }
    disableTexturing();
    setupOverlay(frame);
    const QColor color = m_host.kind == RenderThreadKind::FragmentProgram ? QColor::fromRgbF(1, 0.25, 0.25)
                                                                          : QColor::fromRgbF(0.25, 0.25, 1);
    drawTextAt({"No stack loaded.", 16, true, color}, frame, -0.3, 0, size);
}

void NvidiaThread::drawShaderError(const FrameState& frame)
{
    disableTexturing();
    setupOverlay(frame);
    drawTextAt({"shader busted!", 16, true, Qt::red}, frame, -0.3, 0, m_part.whole);
    enableTexturing();
}

void NvidiaThread::drawFullscreenStereo(const FrameState& frame, QSize /*size*/)
{
    const EyeSetup eyes = eyeSetup(frame.view.camera);
    gl().DrawBuffer(GL_BACK_LEFT);
    gl().Clear(GL_COLOR_BUFFER_BIT);
    drawEye(frame, frame.view.camera.vpos - eyes.right, eyes.focus);
    gl().DrawBuffer(GL_BACK_RIGHT);
    gl().Clear(GL_COLOR_BUFFER_BIT);
    drawEye(frame, frame.view.camera.vpos + eyes.right, eyes.focus);
    gl().DrawBuffer(GL_BACK);
}

void NvidiaThread::drawFlatView(const FrameState& frame, Orientation orientation, GLuint list)
{
    gl().Scaled(frame.scale.x, frame.scale.y, frame.scale.z);
    drawVolume(frame, orientation, list);
}

bool NvidiaThread::prepareWithoutLists(const FrameState& frame)
{
    return m_processor.prepare(frame, m_host.scene);
}

void NvidiaThread::drawVolume(const FrameState& frame, Orientation orientation, GLuint list)
{
    if (!m_processor.isDrawing()) {
        GLThread::drawVolume(frame, orientation, list);
        return;
    }
    disableTexturing();
    m_processor.draw(frame, orientation, m_part.part.size(), m_part.transparent);
    enableTexturing();
}

void NvidiaThread::clearLists()
{
    m_processor.clear();
    GLThread::clearLists();
}

void LostCauseThread::initializeGL()
{
    GLThread::initializeGL();
    gl().Disable(GL_DEPTH_TEST);
}

bool LostCauseThread::drawMessageOnly(const FrameState& frame, QSize size)
{
    setupOverlay(frame);
    drawTextAt({"Sorry, this video card", 24, false, Qt::white}, frame, -0.6, 0.1, size);
    drawTextAt({"is not supported by Tirn", 24, false, Qt::white}, frame, -0.6, -0.1, size);
    return true;
}

} // namespace tirn
