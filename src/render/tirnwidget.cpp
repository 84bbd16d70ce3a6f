// The view state and what changes it from outside; input stands in tirnwidgetinput.cpp.

#include "render/tirnwidget.h"

#include <cmath>

#include <QEvent>
#include <QResizeEvent>
#include <QWindow>

#include "base/log.h"
#include "gl/gltable.h"
#include "render/renderthreads.h"
#include "scene/keyframeview.h"

namespace tirn {

TirnWidget::TirnWidget(const QString& name, const WidgetServices& services, bool stereo, QWidget* parent)
    : QWidget(parent), m_scene(services.scene), m_hidden(services.hidden),
      m_surface(*this, services.hidden.context(), stereo), m_threadKind(chooseThreadKind(services.card))
{
    setObjectName(name);
    setAttribute(Qt::WA_PaintOnScreen);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_DontCreateNativeAncestors);
    setAttribute(Qt::WA_NativeWindow);
    setFocusPolicy(Qt::WheelFocus);
    m_surface.prepareWindow();
    if (gl().ActiveTextureARB == nullptr)
        logDebug("glActiveTextureARB screwed");
    if (gl().TexImage3DEXT == nullptr)
        logDebug("glTexImage3DEXT screwed");
    if (gl().BlendEquationEXT == nullptr)
        logDebug("glBlendEquationEXT screwed");
    m_renderThread = makeRenderThread({services.scene, m_view, services.settings, services.shaders,
                                       services.renderLock, m_surface, services.events, m_threadKind});
}

TirnWidget::~TirnWidget()
{
    m_renderThread->stopAndWait();
    const CurrentScope current(m_hidden);
    m_renderThread->clearLists();
}

ViewState TirnWidget::view() const
{
    const std::scoped_lock lock(m_scene.mutex);
    return m_view;
}

void TirnWidget::changeView(const std::function<void(ViewState&)>& change)
{
    {
        const std::scoped_lock lock(m_scene.mutex);
        change(m_view);
    }
    requestFrame();
}

void TirnWidget::setContextMenuActions(const ContextMenuActions& actions)
{
    m_contextMenu.clear();
    const auto add = [this](std::initializer_list<QAction*> group, bool separated = true) {
        for (QAction* action : group) {
            if (action != nullptr)
                m_contextMenu.addAction(action);
        }
        if (separated)
            m_contextMenu.addSeparator();
    };
    QAction* volumes = actions.volumes != nullptr ? actions.volumes->menuAction() : nullptr;
    add({actions.openStack, actions.manageStacks, actions.palettes, volumes, actions.closeAll});
    add({actions.view, actions.cutPlanes, actions.renderOptions});
    add({actions.takeSnapshot, actions.makeMovie});
    add({actions.help, actions.capabilities, actions.about});
    add({actions.exit}, false);
    m_closeAllItem = actions.closeAll;
}

void TirnWidget::requestFrame()
{
    // A window that is not on the screen gets its frame when it is exposed.
    if (m_surface.isReady())
        m_renderThread->requestFrame();
}

void TirnWidget::stopRendering() { m_renderThread->stop(); }

void TirnWidget::stopAndWait()
{
    {
        const std::scoped_lock lock(m_scene.mutex);
        m_view.spinX = m_view.spinY = m_view.spinZ = 0;
    }
    m_renderThread->stopAndWait();
}

void TirnWidget::currentArrayChanged()
{
    requestShaderRebuild();
    m_renderThread->forceRebuild = true;
    requestFrame();
}

bool TirnWidget::requestShaderRebuild()
{
    m_renderThread->rebuildShader = true;
    return false;
}

void TirnWidget::setBlendMode(GLenum mode)
{
    m_renderThread->blendChanged = true;
    changeView([mode](ViewState& view) { view.blendMode = mode; });
    Q_EMIT modeChanged(static_cast<GLint>(mode));
}

void TirnWidget::setProjection(const OrthoBounds& bounds)
{
    changeView([&bounds](ViewState& view) { view.ortho = bounds; });
}

void TirnWidget::resetView()
{
    bool hasArray = false;
    changeView([&](ViewState& view) {
        view.rotX = view.rotY = view.rotZ = 0;
        view.transX = view.transY = view.transZ = 0;
        if (VoxelArray* array = m_scene.current()) {
            array->scale = {};
            hasArray = true;
        }
    });
    if (hasArray)
        Q_EMIT scaleChanged(1, 1, 1);
    Q_EMIT rotationChanged(0, 0, 0);
    Q_EMIT translationChanged(0, 0, 0);
}

void TirnWidget::syncView()
{
    Q_EMIT windowDimensionsChanged(width(), height());
    emitScale();
    const ViewState now = view();
    Q_EMIT rotationChanged(now.rotX, now.rotY, now.rotZ);
}

void TirnWidget::emitScale()
{
    AxisScale scale;
    {
        const std::scoped_lock lock(m_scene.mutex);
        const VoxelArray* array = m_scene.current();
        if (array == nullptr)
            return;
        scale = array->scale;
    }
    Q_EMIT scaleChanged(scale.x, scale.y, scale.z);
}

void TirnWidget::rotate(double delta, int axis)
{
    if (axis < 0 || axis > 2) {
        logWarning("non-existant axis");
        return;
    }
    ViewState now;
    {
        const std::scoped_lock lock(m_scene.mutex);
        double* const angles[] = {&m_view.rotX, &m_view.rotY, &m_view.rotZ};
        *angles[axis] = wrapDegrees(*angles[axis] + delta);
        now = m_view;
    }
    Q_EMIT rotationChanged(now.rotX, now.rotY, now.rotZ);
}

bool TirnWidget::setAxisScale(int axis, double value)
{
    const std::scoped_lock lock(m_scene.mutex);
    VoxelArray* array = m_scene.current();
    if (array == nullptr)
        return false;
    array->scale[axis] = value;
    if (!array->preserveScaleRatio)
        return false;
    for (int k = 0; k < 3; ++k)
        array->scale[k] = value * array->baseScale[k] / array->baseScale[axis];
    return true;
}

void TirnWidget::scale(double delta, int axis)
{
    if (axis < 0 || axis > 2) {
        logWarning("Error: non-existant axis");
        return;
    }
    double value = 0;
    {
        const std::scoped_lock lock(m_scene.mutex);
        const VoxelArray* array = m_scene.current();
        if (array == nullptr)
            return;
        value = array->scale[axis] + delta;
    }
    setAxisScale(axis, value);
    emitScale();
}

void TirnWidget::translate(double delta, int axis)
{
    if (axis < 0 || axis > 2) {
        logWarning("Error: non-existant axis");
        return;
    }
    ViewState now;
    {
        const std::scoped_lock lock(m_scene.mutex);
        double* const offsets[] = {&m_view.transX, &m_view.transY, &m_view.transZ};
        *offsets[axis] += delta;
        now = m_view;
    }
    Q_EMIT translationChanged(now.transX, now.transY, now.transZ);
}

void TirnWidget::scaleAxis(int axis, double value)
{
    if (setAxisScale(axis, value))
        emitScale();
    requestFrame();
}

void TirnWidget::changeXScale(double x) { scaleAxis(0, x); }
void TirnWidget::changeYScale(double y) { scaleAxis(1, y); }
void TirnWidget::changeZScale(double z) { scaleAxis(2, z); }

void TirnWidget::changeVoxelScale(double x, double y, double z)
{
    changeView([&](ViewState&) {
        if (VoxelArray* array = m_scene.current())
            array->scale = {x, y, z};
    });
}

void TirnWidget::changeVoxelTranslation(double x, double y, double z)
{
    changeView([&](ViewState& view) {
        view.transX = x;
        view.transY = y;
        view.transZ = z;
    });
}

void TirnWidget::changeVoxelRotation(double x, double y, double z)
{
    changeView([&](ViewState& view) {
        view.rotX = wrapDegrees(x);
        view.rotY = wrapDegrees(y);
        view.rotZ = wrapDegrees(z);
    });
}

void TirnWidget::showBoundingBox(bool on)
{
    changeView([on](ViewState& view) { view.showBoundingBox = on; });
}

void TirnWidget::showScaleBar(bool on)
{
    changeView([on](ViewState& view) { view.showScaleBar = on; });
}

void TirnWidget::loadFrame(const KeyFrame& frame)
{
    changeView([&](ViewState& view) { showKeyFrame(frame, view, m_scene.current()); });
    showPalettes(frame, m_scene);
    m_renderThread->forceRebuild = true;
    requestFrame();
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
    QWidget::showEvent(event);
}

void TirnWidget::paintEvent(QPaintEvent* /*event*/) { requestFrame(); }

void TirnWidget::resizeEvent(QResizeEvent* event)
{
    m_surface.updateSize();
    Q_EMIT windowDimensionsChanged(width(), height());
    requestFrame();
    const bool isFree = !window()->isMaximized() && !window()->isFullScreen();
    if (m_preserveWindowRatio && isFree && event->oldSize().isValid())
        keepRatio(event->size(), event->oldSize());
}

/// Follows a size that the user gave the window, once it has been laid out.
void TirnWidget::keepRatio(QSize size, QSize old)
{
    const QSize wanted = sizeWithRatio(size, old, static_cast<double>(m_windowRatioWidth),
                                       static_cast<double>(m_windowRatioHeight));
    const bool isPending = m_sizeToKeep.isValid();
    m_sizeToKeep = wanted != size ? wanted : QSize();
    if (isPending || !m_sizeToKeep.isValid())
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            const QSize last = std::exchange(m_sizeToKeep, QSize());
            if (last.isValid())
                changeWindowDimensions(last.width(), last.height());
        },
        Qt::QueuedConnection);
}

void TirnWidget::closeEvent(QCloseEvent* event)
{
    stopAndWait();
    QWidget::closeEvent(event);
}

} // namespace tirn
