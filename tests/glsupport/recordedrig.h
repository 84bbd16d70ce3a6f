#pragma once

#include <memory>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"
#include "support/logcapture.h"

namespace tirn::test {

/// A surface that is nothing.
class NoSurface : public FrameSurface
{
public:
    explicit NoSurface(QSize size) : m_size(size) {}

    void handTo(QThread&) override {}
    void giveBack() override {}
    bool makeCurrent() override { return true; }
    void swap() override {}
    QSize size() const override { return m_size; }
    double pixelRatio() const override { return 1; }

private:
    QSize m_size;
};

/// A scene and a render thread of any kind that talk to a recorder alone: no driver is needed.
class RecordedRig
{
public:
    explicit RecordedRig(RenderThreadKind kind, QSize size = {100, 100});
    ~RecordedRig();
    RecordedRig(const RecordedRig&) = delete;
    RecordedRig& operator=(const RecordedRig&) = delete;

    /// Adds a volume and makes it current.
    VoxelArray& show(const std::vector<PlainStack>& timePoints, VolumeSpec spec = {});
    /// That many palettes; channel c gets palette c.
    void makePalettes(int count, int depth = 8);
    FrameState frame() const { return takeFrameState(scene); }
    /// Draws one frame and returns its calls.
    std::vector<std::string> draw(const std::vector<std::string>& names = {});
    /// Calls a frame's list-building step for an orientation and returns the calls.
    std::vector<std::string> build(Orientation orientation);

    GlRecorder gl{GlRecorder::Mode::StandAlone};
    Scene scene;
    RenderLock renderLock;
    CountingEvents events;

    GLThread& thread() { return *m_thread; }
    Shaders& shaders() { return *m_shaders; }

private:
    RenderThreadKind m_kind;
    std::unique_ptr<Shaders> m_shaders;
    GlPaletteTables m_tables;
    GlCurveTextures m_curves{nullptr};
    NoSurface m_surface;
    std::unique_ptr<GLThread> m_thread;
};

} // namespace tirn::test
