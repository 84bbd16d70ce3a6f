#pragma once

#include <memory>

#include "gl/glinfo.h"
#include "gl/gltables.h"
#include "render/tirnwidget.h"

namespace tirn::bench {

class NoEvents : public RenderEvents
{
public:
    void rotationDrawn(double /*x*/, double /*y*/, double /*z*/) override {}
    void keyFrameRecorded(int /*count*/) override {}
    void timePointAdvanced() override {}
};

/// Smooth blobs over a low background, different in each channel, with their statistics.
std::shared_ptr<ImageFile> benchBlobs(int x, int y, int z, int channels);

/// A volume widget of 512 x 512 pixels on the screen, with all that it needs.
class BenchWindow
{
public:
    BenchWindow();
    ~BenchWindow();
    BenchWindow(const BenchWindow&) = delete;
    BenchWindow& operator=(const BenchWindow&) = delete;

    /// Encodes a stack of noise blobs and makes it current.
    VoxelArray& show(int x, int y, int z, int channels, GLenum target = GL_TEXTURE_2D);
    void closeAll();
    /// Asks for one frame, waits for it, and returns the seconds from its start to the end of the swap.
    double frame();
    /// The seconds of each frame of a full turn about y in 36 steps, sorted.
    std::vector<double> turn();

    TirnWidget& widget() { return *m_widget; }
    Scene& scene() { return m_model.sharedScene(); }
    SceneModel& model() { return m_model; }
    HiddenContext& hidden() { return m_hidden; }

private:
    HiddenContext m_hidden;
    GlInfo m_info{m_hidden};
    GlCapabilities m_card;
    SceneModel m_model;
    RenderLock m_lock;
    NoEvents m_events;
    std::unique_ptr<Shaders> m_shaders;
    std::unique_ptr<GlPaletteTables> m_tables;
    std::unique_ptr<TirnWidget> m_widget;
};

/// The window of the run, made on first use and closed before the toolkit ends.
BenchWindow& benchWindow();
void closeBenchWindow();

} // namespace tirn::bench
