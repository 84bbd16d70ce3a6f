// The window and what changes the view from outside; input stands in tirnwidgetinput.cpp.

#include "render/tirnwidget.h"

#include <cmath>

#include <QEvent>
#include <QResizeEvent>
#include <QWindow>

#include "base/log.h"
#include "gl/gltable.h"
#include "gl/nativebackground.h"
#include "render/renderthreads.h"
#include "scene/keyframeview.h"
#include "scene/sceneedits.h"

namespace tirn {

namespace {

/// The window system tells of each size that a window has had, late and in order: an answer to one that is
/// past would be followed by further sizes for ever. Milliseconds.
constexpr int kRatioDelay = 60;

} // namespace

TirnWidget::TirnWidget(const QString& name, const WidgetServices& services, bool stereo, QWidget* parent)
    : QWidget(parent), m_model(services.model), m_hidden(services.hidden),
      m_surface(*this, services.hidden.context(), stereo), m_threadKind(chooseThreadKind(services.card)),
      m_cutHandles(services.model)
{
    setObjectName(name);
    setAttribute(Qt::WA_PaintOnScreen);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_DontCreateNativeAncestors);
    setAttribute(Qt::WA_NativeWindow);
    setFocusPolicy(Qt::WheelFocus);
    setMouseTracking(true);
    m_surface.prepareWindow();
    if (gl().ActiveTextureARB == nullptr)
        logDebug("glActiveTextureARB screwed");
    if (gl().TexImage3DEXT == nullptr)
        logDebug("glTexImage3DEXT screwed");
    if (gl().BlendEquationEXT == nullptr)
        logDebug("glBlendEquationEXT screwed");
    m_renderThread = makeRenderThread({services.model.sharedScene(), services.shaders, services.renderLock,
                                       m_surface, services.events, m_threadKind});
    connect(&services.model, &SceneModel::frameNeeded, this, &TirnWidget::requestFrame);
    m_ratioTimer.setSingleShot(true);
    m_ratioTimer.setInterval(kRatioDelay);
    connect(&m_ratioTimer, &QTimer::timeout, this, &TirnWidget::keepRatio);
}

TirnWidget::~TirnWidget()
{
    m_renderThread->stopAndWait();
    const CurrentScope current(m_hidden);
    m_renderThread->clearLists();
}

void TirnWidget::requestFrame()
{
    // A window that is not on the screen gets its frame when it is exposed; that it was hidden is known
    // later.
    if (isVisible() && m_surface.isReady())
        m_renderThread->requestFrame();
}

void TirnWidget::stopRendering() { m_renderThread->stop(); }

void TirnWidget::stopAndWait()
{
    m_model.edit({}, [](Scene& scene) { stopSpin(scene.view); });
    m_renderThread->stopAndWait();
}

bool TirnWidget::requestShaderRebuild()
{
    m_model.edit(Change::Look, [](Scene& scene) { scene.view.programText.clear(); });
    return false;
}

void TirnWidget::setBlendMode(GLenum mode)
{
    m_model.edit(Change::Look, [mode](Scene& scene) { scene.view.blendMode = mode; });
    Q_EMIT modeChanged(static_cast<GLint>(mode));
}

void TirnWidget::setProjection(const OrthoBounds& bounds)
{
    m_model.edit(Change::Look, [&bounds](Scene& scene) { scene.view.ortho = bounds; });
}

void TirnWidget::resetView()
{
    m_model.edit(Change::Pose | Change::Scale, [](Scene& scene) { tirn::resetView(scene); });
    emitScale();
    emitRotation();
    Q_EMIT translationChanged(0, 0, 0);
}

void TirnWidget::syncView()
{
    Q_EMIT windowDimensionsChanged(width(), height());
    emitScale();
    emitRotation();
}

void TirnWidget::emitScale()
{
    if (const VoxelArray* array = scene().current())
        Q_EMIT scaleChanged(array->scale.x, array->scale.y, array->scale.z);
}

void TirnWidget::emitRotation()
{
    const ViewState view = m_model.view();
    Q_EMIT rotationChanged(view.rotX, view.rotY, view.rotZ);
}

void TirnWidget::emitTranslation()
{
    const ViewState view = m_model.view();
    Q_EMIT translationChanged(view.transX, view.transY, view.transZ);
}

void TirnWidget::rotate(double delta, int axis)
{
    bool known = false;
    m_model.edit(Change::Pose, [&](Scene& scene) { known = rotateView(scene.view, delta, axis); });
    if (!known)
        logWarning("non-existant axis");
    else
        emitRotation();
}

void TirnWidget::scale(double delta, int axis)
{
    if (axis < 0 || axis > 2) {
        logWarning("Error: non-existant axis");
        return;
    }
    if (scene().current() == nullptr)
        return;
    m_model.edit(Change::Scale, [&](Scene& scene) {
        VoxelArray& array = *scene.current();
        setAxisScale(array, axis, array.scale[axis] + delta);
    });
    emitScale();
}

void TirnWidget::translate(double delta, int axis)
{
    bool known = false;
    m_model.edit(Change::Pose, [&](Scene& scene) { known = translateView(scene.view, delta, axis); });
    if (!known) {
        logWarning("Error: non-existant axis");
        return;
    }
    emitTranslation();
}

void TirnWidget::scaleAxis(int axis, double value)
{
    if (scene().current() == nullptr)
        return;
    m_model.edit(Change::Scale, [&](Scene& scene) { setAxisScale(*scene.current(), axis, value); });
    if (scene().current()->preserveScaleRatio)
        emitScale();
}

void TirnWidget::changeXScale(double x) { scaleAxis(0, x); }
void TirnWidget::changeYScale(double y) { scaleAxis(1, y); }
void TirnWidget::changeZScale(double z) { scaleAxis(2, z); }

void TirnWidget::changeVoxelScale(double x, double y, double z)
{
    m_model.edit(Change::Scale, [&](Scene& scene) {
        if (VoxelArray* array = scene.current())
            setScale(*array, {x, y, z});
    });
}

void TirnWidget::changeVoxelTranslation(double x, double y, double z)
{
    m_model.edit(Change::Pose, [&](Scene& scene) {
        scene.view.transX = x;
        scene.view.transY = y;
        scene.view.transZ = z;
    });
}

void TirnWidget::changeVoxelRotation(double x, double y, double z)
{
    m_model.edit(Change::Pose, [&](Scene& scene) {
        scene.view.rotX = wrapDegrees(x);
        scene.view.rotY = wrapDegrees(y);
        scene.view.rotZ = wrapDegrees(z);
    });
}

void TirnWidget::showBoundingBox(bool on)
{
    m_model.edit(Change::Look, [on](Scene& scene) { scene.view.showBoundingBox = on; });
}

void TirnWidget::showScaleBar(bool on)
{
    m_model.edit(Change::Look, [on](Scene& scene) { scene.view.showScaleBar = on; });
}

void TirnWidget::loadFrame(const KeyFrame& frame)
{
    const Changes shown =
        Change::Pose | Change::Scale | Change::Cut | Change::TimePoint | Change::Channels | Change::Colours;
    m_model.edit(shown, [&](Scene& scene) {
        showKeyFrame(frame, scene);
        showPalettes(frame, scene);
    });
}

QSize sizeWithRatio(QSize wanted, QSize old, double ratioWidth, double ratioHeight)
{
    if (wanted.width() != old.width())
        wanted.setHeight(static_cast<int>(std::floor(wanted.width() * ratioHeight / ratioWidth + 0.5)));
    else if (wanted.height() != old.height())
        wanted.setWidth(static_cast<int>(std::floor(wanted.height() * ratioWidth / ratioHeight + 0.5)));
    return wanted;
}

void TirnWidget::changeWindowDimensions(int width, int height)
{
    QSize size(width, height);
    if (m_preserveWindowRatio && m_windowRatioWidth > 0 && m_windowRatioHeight > 0)
        size = sizeWithRatio(size, this->size(), static_cast<double>(m_windowRatioWidth),
                             static_cast<double>(m_windowRatioHeight));
    logWarning("old %d %d final %d %d\n", this->width(), this->height(), size.width(), size.height());
    setMinimumSize(128, 128);
    // The window around grows or shrinks by as much.
    window()->resize(window()->size() + (size - this->size()));
}

void TirnWidget::toggleWindowAspectRatio(bool on)
{
    m_preserveWindowRatio = on;
    if (on) {
        m_keptSize = size();
        m_windowRatioWidth = static_cast<float>(width());
        m_windowRatioHeight = static_cast<float>(height());
    }
}

bool TirnWidget::event(QEvent* event)
{
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::WinIdChange || event->type() == QEvent::ScreenChangeInternal)
        m_surface.updateSize();
    return handled;
}

void TirnWidget::showEvent(QShowEvent* event)
{
    m_surface.updateSize();
    setNativeBackground(*this, Qt::black);
    QWidget::showEvent(event);
}

void TirnWidget::paintEvent(QPaintEvent* /*event*/) { requestFrame(); }

void TirnWidget::resizeEvent(QResizeEvent* /*event*/)
{
    m_surface.updateSize();
    Q_EMIT windowDimensionsChanged(width(), height());
    requestFrame();
    if (m_preserveWindowRatio)
        m_ratioTimer.start();
}

/// Follows a size that the user gave the window.
void TirnWidget::keepRatio()
{
    if (!m_preserveWindowRatio || window()->isMaximized() || window()->isFullScreen())
        return;
    const QSize wanted = sizeWithRatio(size(), m_keptSize, static_cast<double>(m_windowRatioWidth),
                                       static_cast<double>(m_windowRatioHeight));
    m_keptSize = wanted;
    if (wanted != size())
        changeWindowDimensions(wanted.width(), wanted.height());
}

void TirnWidget::closeEvent(QCloseEvent* event)
{
    stopAndWait();
    QWidget::closeEvent(event);
}

} // namespace tirn
