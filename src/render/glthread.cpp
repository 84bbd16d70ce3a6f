// The run of a render thread: when it draws, sleeps and ends.

#include "render/glthread.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/log.h"
#include "gl/glstate.h"
#include "movies/playback.h"
#include "scene/keyframeview.h"

namespace tirn {

GLThread::GLThread(const RenderHost& host) : m_host(host) {}

GLThread::~GLThread() { stopAndWait(); }

void GLThread::requestFrame()
{
    {
        const std::scoped_lock lock(m_stateMutex);
        if (m_active) {
            m_pending = true;
            // A stop that came before is overtaken: the frame asked for now must not be lost.
            m_running = true;
            m_wake.notify_all();
            return;
        }
        m_active = true;
        m_pending = false;
        m_running = true;
    }
    // The last run may still be giving its context back.
    wait();
    m_host.surface.handTo(*this);
    start(QThread::NormalPriority);
}

void GLThread::stop()
{
    const std::scoped_lock lock(m_stateMutex);
    m_running = false;
    m_wake.notify_all();
}

void GLThread::stopAndWait()
{
    stop();
    wait();
}

void GLThread::work()
{
    m_host.renderLock.lock();
    if (m_host.surface.makeCurrent()) {
        drawFrames();
    } else {
        logWarning("The render thread could not make its context current.");
        const std::scoped_lock lock(m_stateMutex);
        m_active = false;
        m_wake.notify_all();
    }
    m_host.surface.giveBack();
    m_host.renderLock.unlock();
}

void GLThread::drawFrames()
{
    m_timer.restart();
    m_lastFlash = 0;
    m_lastTimeStep = 0;
    bool isPrepared = false;
    for (;;) {
        m_host.renderLock.yieldToWaiters();
        Outcome outcome = Outcome::NothingToDraw;
        isPrepared = survives([&] {
            if (!isPrepared) {
                initializeGL();
                enableColourPath();
            }
            outcome = renderFrame();
        });
        if (nextStep(outcome) == Next::Leave)
            break;
    }
}

/// A frame that cannot be drawn, for want of memory above all, is one that shows nothing: the window, the
/// lock and the program stay.
bool GLThread::survives(const std::function<void()>& frame)
{
    try {
        frame();
        return true;
    } catch (const std::exception& error) {
        logWarning("A frame could not be drawn: %s", error.what());
    } catch (...) {
        logWarning("A frame could not be drawn.");
    }
    const std::scoped_lock lock(m_stateMutex);
    grabFrame = false;
    m_wake.notify_all();
    return false;
}

GLThread::Next GLThread::nextStep(Outcome outcome)
{
    const int wait = outcome == Outcome::Drawn ? millisecondsToNextChange() : -1;
    {
        const std::scoped_lock lock(m_stateMutex);
        if (!m_running || (!m_pending && wait < 0)) {
            m_active = false;
            m_pending = false;
            m_wake.notify_all();
            return Next::Leave;
        }
        if (m_pending) {
            m_pending = false;
            return Next::Draw;
        }
    }
    if (wait == 0) {
        if (restsBetweenFrames())
            QThread::msleep(10);
        return Next::Draw;
    }
    return sleepUntilChange(wait);
}

GLThread::Next GLThread::sleepUntilChange(int milliseconds)
{
    m_host.renderLock.unlock();
    Next next = Next::Draw;
    {
        std::unique_lock lock(m_stateMutex);
        m_wake.wait_for(lock, std::chrono::milliseconds(milliseconds),
                        [this] { return m_pending || !m_running; });
        m_pending = false;
        if (!m_running) {
            m_active = false;
            m_wake.notify_all();
            next = Next::Leave;
        }
    }
    m_host.renderLock.lock();
    return next;
}

/// Any driver but NVIDIA's would otherwise be kept too busy to serve others.
bool GLThread::restsBetweenFrames() const { return m_host.kind == RenderThreadKind::FragmentProgram; }

/// 0 while spinning, -1 when nothing will change by itself.
int GLThread::millisecondsToNextChange()
{
    const std::scoped_lock lock(m_host.scene.mutex);
    const ViewState& view = m_host.scene.view;
    if (view.isSpinning() && !view.dragging)
        return 0;
    const VoxelArray* array = m_host.scene.current();
    if (array == nullptr || m_host.scene.batchMode)
        return -1;
    qint64 next = -1;
    const auto consider = [&](qint64 due) {
        const qint64 left = std::max<qint64>(1, due - elapsed());
        next = next < 0 ? left : std::min(next, left);
    };
    if (m_host.scene.isPlaying() && array->timePointCount() > 1)
        consider(m_lastTimeStep + millisecondsPerTimePoint(view.timeRate));
    const auto& channels = array->channels();
    if (std::any_of(channels.begin(), channels.end(),
                    [](const Channel& channel) { return isFlashing(channel.display.state); }))
        consider(m_lastFlash + m_host.scene.settings.flashRate);
    return static_cast<int>(next);
}

GLThread::Outcome GLThread::renderFrame()
{
    const Stopwatch frameTime;
    const QSize size = m_host.surface.size();
    // What is asked for while a frame is drawn is the next one.
    m_isGrabbing = grabFrame;
    const Outcome outcome = drawScene(size);
    if (m_isGrabbing)
        grab(size);
    m_host.surface.swap();
    m_lastFrameSeconds = frameTime.seconds();
    ++m_framesDrawn;
    return outcome;
}

void GLThread::setupBuffer()
{
    initializeGL();
    enableColourPath();
    const VoxelArray* array = m_host.scene.current();
    logDebug("pbuffer %dd texmaps", array != nullptr && array->textureTarget() == GL_TEXTURE_3D ? 3 : 2);
    logDebug("Buffer setup");
}

bool GLThread::drawPicture(const PicturePart& part)
{
    m_part = part;
    if (part.transparent)
        gl().BlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    const FrameState frame = takeFrameState(m_host.scene);
    if (!beginScene(frame, part.whole))
        return false;
    drawFrame(frame, part.whole);
    showAsSeen(frame, part.part.size());
    finishFrame();
    return true;
}

bool GLThread::drawNextFrame(QSize size)
{
    setupBuffer();
    return drawScene(size) == Outcome::Drawn;
}

GLThread::Outcome GLThread::drawScene(QSize size)
{
    stepScene();
    const FrameState frame = takeFrameState(m_host.scene);
    m_part = {size, QRect(QPoint(0, 0), size), frame.view.fontScale * m_host.surface.pixelRatio(), false};
    m_part.hasHandles = frame.view.cutHandles.shown && !m_isGrabbing;
    if (!beginScene(frame, size))
        return Outcome::NothingToDraw;
    tellOfRotation(frame.view);
    record(frame);
    drawFrame(frame, size);
    showAsSeen(frame, size);
    finishFrame();
    return Outcome::Drawn;
}

bool GLThread::beginScene(const FrameState& frame, QSize size)
{
    const QColor background = m_part.transparent ? QColor(0, 0, 0) : frame.view.backgroundColor;
    gl().ClearColor(static_cast<GLfloat>(background.redF()), static_cast<GLfloat>(background.greenF()),
                    static_cast<GLfloat>(background.blueF()), 0);
    if (gl().BlendEquationEXT != nullptr)
        gl().BlendEquationEXT(frame.view.blendMode);
    gl().Viewport(0, 0, m_part.part.width(), m_part.part.height());
    gl().Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    m_text.setScale(m_part.overlayScale);
    if (drawMessageOnly(frame, size))
        return false;
    if (frame.array == nullptr) {
        clearLists();
        drawNoStack(frame, size);
        return false;
    }
    return prepareProgram(frame);
}

/// Read from the back buffer before the swap, where the frame surely is.
void GLThread::grab(QSize size)
{
    QImage image(size, QImage::Format_RGBX8888);
    gl().ReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    {
        const std::scoped_lock lock(m_grabMutex);
        m_grabbed = image.mirrored().convertToFormat(QImage::Format_RGB32);
    }
    const bool lacksHandles = [this] {
        const std::scoped_lock lock(m_host.scene.mutex);
        return m_host.scene.view.cutHandles.shown;
    }();
    const std::scoped_lock lock(m_stateMutex);
    grabFrame = false;
    // The window gets back what stands in no picture.
    m_pending = m_pending || lacksHandles;
    m_wake.notify_all();
}

QImage GLThread::grabNextFrame()
{
    {
        const std::scoped_lock lock(m_grabMutex);
        m_grabbed = {};
    }
    grabFrame = true;
    requestFrame();
    std::unique_lock lock(m_stateMutex);
    m_wake.wait(lock, [this] { return !grabFrame || !m_active; });
    lock.unlock();
    return grabbed();
}

QImage GLThread::grabbed() const
{
    const std::scoped_lock lock(m_grabMutex);
    return m_grabbed;
}

/// What moves by itself between two frames.
void GLThread::stepScene()
{
    const int width = static_cast<int>(m_host.surface.size().width() / m_host.surface.pixelRatio());
    const std::scoped_lock lock(m_host.scene.mutex);
    if (!m_host.scene.view.dragging)
        spin(m_host.scene.view, width);
    if (m_host.scene.batchMode || m_host.scene.current() == nullptr)
        return;
    stepTimePoint();
    stepFlash();
}

void GLThread::stepTimePoint()
{
    if (!m_host.scene.isPlaying() ||
        elapsed() - m_lastTimeStep < millisecondsPerTimePoint(m_host.scene.view.timeRate))
        return;
    VoxelArray& array = *m_host.scene.current();
    array.setTimePoint(array.timePoint() + 1);
    m_lastTimeStep = elapsed();
    m_host.events.timePointAdvanced();
}

void GLThread::stepFlash()
{
    if (elapsed() - m_lastFlash < m_host.scene.settings.flashRate)
        return;
    std::vector<ChannelDisplay> displays;
    std::vector<Channel>& channels = m_host.scene.current()->channels();
    for (const Channel& channel : channels)
        displays.push_back(channel.display);
    stepChannels(displays);
    for (std::size_t c = 0; c < channels.size(); ++c)
        channels[c].display = displays[c];
    m_lastFlash = elapsed();
}

/// Only of a view that is not where the last one was, so that an idle program has nothing to do.
void GLThread::tellOfRotation(const ViewState& view)
{
    const Vector3 rotation = {view.rotX, view.rotY, view.rotZ};
    if (std::exchange(m_toldRotation, rotation) == rotation)
        return;
    m_host.events.rotationDrawn(view.rotX, view.rotY, view.rotZ);
}

void GLThread::record(const FrameState& frame)
{
    if (!frame.recording || frame.array == nullptr)
        return;
    KeyFrame keyFrame = keyFrameOf(frame);
    int count = 0;
    {
        const std::scoped_lock lock(m_host.scene.mutex);
        for (const auto& palette : m_host.scene.palettes)
            keyFrame.palettes.push_back(palette->values());
        m_host.scene.keyFrames.push_back(std::move(keyFrame));
        count = static_cast<int>(m_host.scene.keyFrames.size());
    }
    m_host.events.keyFrameRecorded(count);
}

} // namespace tirn
