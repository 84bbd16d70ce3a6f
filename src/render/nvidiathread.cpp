#include "render/nvidiathread.h"

#include <algorithm>

#include "base/log.h"
#include "gl/glstate.h"

namespace tirn {

NvidiaThread::NvidiaThread(const RenderHost& host) : GLThread(host) { rebuildShader = true; }

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
    const bool rebuild = rebuildShader.exchange(false);
    const bool recompile = recompileShader.exchange(false);
    if (!rebuild && !recompile) {
        m_host.shaders.bind(m_shaderId);
        return m_shaderId != 0 || (drawShaderError(frame), false);
    }
    const std::string text = m_host.shaders.programText();
    m_host.shaders.unload(m_shaderId);
    m_shaderId = 0;
    const bool made = rebuild ? m_host.shaders.makeProgram(frame.array) : m_host.shaders.compile(text);
    if (!made) {
        drawShaderError(frame);
        return false;
    }
    m_shaderId = m_host.shaders.currentProgram();
    logDebug("shaderID %d", static_cast<int>(m_shaderId));
    return true;
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
    const auto palette = static_cast<std::size_t>(std::max(0, frame.channels[channel].palette));
    if (palette < m_host.scene.palettes.size()) {
        gl().ActiveTextureARB(GL_TEXTURE1_ARB);
        gl().BindTexture(GL_TEXTURE_1D, m_host.scene.palettes[palette]->glHandle());
    }
    if (m_host.shaders.zCorrection) {
        gl().ActiveTextureARB(GL_TEXTURE2_ARB);
        gl().BindTexture(GL_TEXTURE_1D, frame.array->channels()[channel].zCurve.textureName(zBlock));
    }
}

void NvidiaThread::unbindChannelTables()
{
    gl().ActiveTextureARB(GL_TEXTURE1_ARB);
    gl().BindTexture(GL_TEXTURE_1D, 0);
}

void NvidiaThread::drawNoStack(bool batchMode, QSize size)
{
    if (batchMode) {
        GLThread::drawNoStack(batchMode, size);
        return;
    }
    FrameState flat;
    flat.view = takeFrameState(m_host.scene, m_host.view).view;
    disableTexturing();
    setupOverlay(flat);
    const QColor color = m_host.kind == RenderThreadKind::FragmentProgram ? QColor::fromRgbF(1, 0.25, 0.25)
                                                                          : QColor::fromRgbF(0.25, 0.25, 1);
    drawTextAt({"No stack loaded.", 16, true, color}, flat, -0.3, 0, size);
}

void NvidiaThread::drawShaderError(const FrameState& frame)
{
    const QSize size = m_host.surface.size();
    disableTexturing();
    setupOverlay(frame);
    drawTextAt({"shader busted!", 16, true, Qt::red}, frame, -0.3, 0, size);
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

void LostCauseThread::initializeGL()
{
    GLThread::initializeGL();
    gl().Disable(GL_DEPTH_TEST);
}

bool LostCauseThread::drawMessageOnly(QSize size)
{
    FrameState flat;
    flat.view = takeFrameState(m_host.scene, m_host.view).view;
    setupOverlay(flat);
    drawTextAt({"Sorry, this video card", 24, false, Qt::white}, flat, -0.6, 0.1, size);
    drawTextAt({"is not supported by Tirn", 24, false, Qt::white}, flat, -0.6, -0.1, size);
    return true;
}

} // namespace tirn
