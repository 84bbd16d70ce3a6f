#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

#include <QImage>
#include <QRect>

#include "base/stopwatch.h"
#include "base/workerthread.h"
#include "render/framesurface.h"
#include "render/meshdrawing.h"
#include "render/renderlistcache.h"
#include "render/shaders.h"
#include "render/textpainter.h"
#include "scene/pointing/viewprojection.h"
#include "scene/renderlock.h"
#include "scene/scene.h"

namespace tirn {

/// What a render thread works with. All of it outlives the thread.
struct RenderHost
{
    Scene& scene;
    Shaders& shaders;
    RenderLock& renderLock;
    FrameSurface& surface;
    RenderEvents& events;
    RenderThreadKind kind;
};

/// The part of a picture that a frame draws into the lower left corner of its buffer, in device pixels, y
/// from the bottom. A window shows all of its picture.
struct PicturePart
{
    QSize whole;
    QRect part;
    /// By how much overlays are larger than in a plain window of 512 pixels.
    double overlayScale = 1;
    /// Colours come out multiplied by their opacity, over nothing.
    bool transparent = false;
    /// The longest side of a viewport that the driver takes.
    int largestViewport = 16384;
    /// The handles of the cut box are for the mouse in the window, and stand in no other picture.
    bool hasHandles = false;
};

/// Draws frames, for a card with paletted textures; the other cards' threads derive from it.
///
/// The thread does not run all the time. `requestFrame` starts it; it takes the render lock, draws, swaps,
/// and goes on only while the picture changes by itself: spinning, playing time points, flashing channels.
/// Then it ends. A request that comes while it runs is drawn before it ends. Between frames it gives the lock
/// up to those who wait for it, and while it sleeps it holds no lock. A frame that cannot be drawn is logged.
///
/// Derived classes stop the thread in their own destructors, since it calls their operations.
///
/// Rules: only the owner's thread calls requestFrame, stop and stopAndWait; the flags may be set from any
/// thread; results go out through RenderEvents. Drawing functions may be called without the thread running,
/// with a context current.
class GLThread : public WorkerThread
{
public:
    explicit GLThread(const RenderHost& host);
    ~GLThread() override;

    /// Draws a frame soon; every call is followed by at least one frame that began after it.
    void requestFrame();
    /// Ends the loop after the frame at hand.
    void stop();
    /// Ends the loop and waits for it; a request that was not drawn yet is dropped.
    void stopAndWait();

    /// Builds all display lists anew before the next frame, whether or not they differ from what is shown.
    std::atomic<bool> forceRebuild = true;
    /// Copy the next frame to the grabbed picture.
    std::atomic<bool> grabFrame = false;

    /// Asks for a frame and waits for its picture, without alpha. Null when nothing could be drawn.
    QImage grabNextFrame();
    /// The frame grabbed last.
    QImage grabbed() const;

    /// How many frames were drawn, and the seconds that the last took from its start to the end of the swap.
    int framesDrawn() const { return m_framesDrawn; }
    double lastFrameSeconds() const { return m_lastFrameSeconds; }

    /// Prepares the context of an off-screen buffer the way a run prepares its window.
    void setupBuffer();
    /// Draws the scene as it is into the current frame buffer, with nothing moving on; for pictures outside
    /// the window, in a context that `setupBuffer` prepared. Returns false when there was only a message to
    /// draw.
    bool drawPicture(const PicturePart& part);
    /// The next frame of a run, drawn on this thread and not swapped: what moves by itself moves on.
    bool drawNextFrame(QSize size);
    /// Sets up a fresh context: clear colour, blending, tests, material.
    virtual void initializeGL();
    /// One frame of a state into the current frame buffer of `size` device pixels, without swapping.
    virtual void drawFrame(const FrameState& frame, QSize size);
    /// A new display list of the slices of a walk, all shown channels, far slices first.
    virtual ListNames buildRenderList(const FrameState& frame, Orientation orientation,
                                      const SliceWalk& walk);
    RenderListCache& lists() { return m_lists; }
    /// Deletes all display lists; with a context of their share group current.
    virtual void clearLists();

protected:
    enum class Outcome { Drawn, NothingToDraw };

    void work() override;

    /// Steps of a frame that depend on the card.
    virtual void enableColourPath();
    virtual void disableTexturing();
    virtual void enableTexturing();
    /// False when no program could be made; the error screen is then drawn.
    virtual bool prepareProgram(const FrameState& frame);
    virtual void bindChannelTables(const FrameState& frame, std::size_t channel, int zBlock);
    virtual void unbindChannelTables();
    virtual void bindSlice(GLenum target, GLuint texture);
    virtual void finishFrame();
    /// Whether the driver is to rest between frames that follow each other.
    virtual bool restsBetweenFrames() const;
    virtual void drawNoStack(const FrameState& frame, QSize size);
    virtual void drawFullscreenStereo(const FrameState& frame, QSize size);
    virtual void drawFlatView(const FrameState& frame, Orientation orientation, GLuint list);
    /// Whether the volume of a frame is drawn without display lists; what that needs is made.
    virtual bool prepareWithoutLists(const FrameState& /*frame*/) { return false; }
    virtual void drawVolume(const FrameState& frame, Orientation orientation, GLuint list);
    /// The whole of a frame when there is nothing but a message to show; false where volumes can be drawn.
    virtual bool drawMessageOnly(const FrameState& frame, QSize size);

    void drawBoundingBox(const FrameState& frame);
    void drawBoxFront(const FrameState& frame);
    void drawCutBox(const FrameState& frame);
    void drawAxes();
    void drawProjectionBox(const FrameState& frame);
    /// Surfaces over the volume; the matrix is that of the viewer, without the view.
    void drawSegmentation(const FrameState& frame);
    void drawFrameRate(QSize size);
    void drawOrientationLabel(const FrameState& frame, QSize size);
    void drawTimeLabel(const FrameState& frame, QSize size);
    void drawFileLabel(const FrameState& frame, QSize size);
    void drawScaleBar(const FrameState& frame, QSize size);
    void drawCutHandles(const FrameState& frame, QSize size);
    /// The line in the space of the volume, its ends and its length on top of the picture.
    void drawRuler(const FrameState& frame);
    void drawRulerLabel(const FrameState& frame, QSize size);
    /// A square around a place in the projection's own coordinates, `half` pixels of a plain window each way.
    void drawMark(const Vector3& at, double half, const QColor& color, QSize size);
    /// Text at a place of the flat projection, or in logical pixels from the top left.
    void drawTextAt(const TextLine& line, const FrameState& frame, double x, double y, QSize size);
    void drawTextInWindow(const TextLine& line, int x, int y, QSize size);
    void applyView(const FrameState& frame);
    void drawEye(const FrameState& frame, const Vector3& eye, const Vector3& focus);
    void setupOverlay(const FrameState& frame);
    /// Sets an orthographic projection on the shown part, and leaves the identity as model view.
    void setOrtho(const OrthoBounds& bounds);

    RenderHost m_host;
    TextPainter m_text;
    /// The target of the frame at hand.
    GLenum m_textureTarget = GL_TEXTURE_2D;
    /// What the projections and the text of the frame at hand are shifted by.
    PicturePart m_part;

private:
    enum class Next { Draw, Leave };

    void drawFrames();
    bool survives(const std::function<void()>& frame);
    /// Shows the finished picture as people with another colour vision see it.
    void showAsSeen(const FrameState& frame, QSize size);
    Outcome renderFrame();
    Outcome drawScene(QSize size);
    /// Background, blend equation and a cleared buffer; false when no volume can be drawn, whose message then
    /// stands there.
    bool beginScene(const FrameState& frame, QSize size);
    void grab(QSize size);
    Next nextStep(Outcome outcome);
    Next sleepUntilChange(int milliseconds);
    int millisecondsToNextChange();
    void stepScene();
    void stepTimePoint();
    void stepFlash();
    void tellOfRotation(const ViewState& view);
    void record(const FrameState& frame);
    void setupProjection(const FrameState& frame, QSize size);
    void drawNormal(const FrameState& frame);
    void drawAnaglyph(const FrameState& frame);
    void drawFourViews(const FrameState& frame);
    void drawOverlays(const FrameState& frame, QSize size);
    qint64 elapsed() const { return static_cast<qint64>(m_timer.seconds() * 1000); }

    RenderListCache m_lists;
    MeshList m_meshList;
    /// The angles that were told of last.
    Vector3 m_toldRotation;
    std::mutex m_stateMutex;
    std::condition_variable m_wake;
    bool m_active = false;
    bool m_pending = false;
    bool m_running = false;
    /// The frame at hand is the one to be grabbed.
    bool m_isGrabbing = false;
    Stopwatch m_timer;
    qint64 m_lastFlash = 0;
    qint64 m_lastTimeStep = 0;
    Stopwatch m_frameClock;
    std::atomic<int> m_framesDrawn = 0;
    std::atomic<double> m_lastFrameSeconds = 0;
    mutable std::mutex m_grabMutex;
    QImage m_grabbed;
};

/// The viewport for a part of a picture. Where the driver takes it, that is the whole square, most of which
/// lies outside of the buffer: then all parts are rounded alike. A larger square is cut down to what the part
/// shows of it, which a matrix, column by column, spreads over the normalised coordinates; nothing passes
/// where the two do not meet.
struct PartViewport
{
    QRect pixels;
    bool whole = true;
    std::array<double, 16> spread = {};
};
PartViewport partViewport(const SquareViewport& square, const PicturePart& part);

/// The frame rate as text; a time of 0 has a text of its own.
QString frameRateText(double seconds);

} // namespace tirn
