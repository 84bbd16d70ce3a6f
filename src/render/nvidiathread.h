#pragma once

#include "render/glthread.h"
#include "render/processor/processordrawing.h"

namespace tirn {

/// Draws with fragment programs: the palette is a 1D texture on unit 1, the depth curve one on unit 2.
class NvidiaThread : public GLThread
{
public:
    explicit NvidiaThread(const RenderHost& host) : GLThread(host) {}
    ~NvidiaThread() override { stopAndWait(); }

    ListNames buildRenderList(const FrameState& frame, Orientation orientation,
                              const SliceWalk& walk) override;
    void clearLists() override;
    const ProcessorDrawing& processor() const { return m_processor; }

protected:
    void enableColourPath() override;
    void disableTexturing() override;
    void enableTexturing() override;
    bool prepareProgram(const FrameState& frame) override;
    void bindSlice(GLenum target, GLuint texture) override;
    void bindChannelTables(const FrameState& frame, std::size_t channel, int zBlock) override;
    void unbindChannelTables() override;
    void finishFrame() override {}
    /// There is no driver to spare where the processor draws.
    bool restsBetweenFrames() const override
    {
        return !m_processor.isDrawing() && GLThread::restsBetweenFrames();
    }
    void drawNoStack(const FrameState& frame, QSize size) override;
    void drawFullscreenStereo(const FrameState& frame, QSize size) override;
    void drawFlatView(const FrameState& frame, Orientation orientation, GLuint list) override;
    bool prepareWithoutLists(const FrameState& frame) override;
    void drawVolume(const FrameState& frame, Orientation orientation, GLuint list) override;

private:
    void drawShaderError(const FrameState& frame);

    ProcessorDrawing m_processor;
};

/// Shows that the card cannot draw volumes.
class LostCauseThread : public GLThread
{
public:
    explicit LostCauseThread(const RenderHost& host) : GLThread(host) {}
    ~LostCauseThread() override { stopAndWait(); }

    void initializeGL() override;

protected:
    void enableColourPath() override {}
    bool drawMessageOnly(const FrameState& frame, QSize size) override;
};

} // namespace tirn
