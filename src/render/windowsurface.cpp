#include "render/windowsurface.h"

#include <algorithm>

#include <QThread>
#include <QWidget>
#include <QWindow>

#include "gl/glcontext.h"
#include "gl/gltable.h"

namespace tirn {

WindowSurface::WindowSurface(QWidget& widget, QOpenGLContext& share, bool stereo) : m_widget(widget)
{
    QSurfaceFormat format = surfaceFormat();
    format.setStereo(stereo);
    m_context.setFormat(format);
    m_context.setShareContext(&share);
    m_context.create();
}

WindowSurface::~WindowSurface() = default;

bool WindowSurface::isReady() const
{
    const QWindow* window = m_widget.windowHandle();
    return window != nullptr && window->handle() != nullptr && window->isExposed() && m_context.isValid();
}

bool WindowSurface::isSharing() const { return m_context.isValid() && m_context.shareContext() != nullptr; }

void WindowSurface::prepareWindow()
{
    m_widget.winId();
    QWindow* window = m_widget.windowHandle();
    if (window == nullptr || window->surfaceType() == QSurface::OpenGLSurface)
        return;
    // The toolkit makes windows for raster painting; the surface type must be known before the window is
    // made.
    window->destroy();
    window->setSurfaceType(QSurface::OpenGLSurface);
    window->setFormat(m_context.format());
    window->create();
}

void WindowSurface::updateSize()
{
    const double ratio = m_widget.devicePixelRatioF();
    m_pixelRatio = ratio;
    m_width = std::max(1, static_cast<int>(m_widget.width() * ratio));
    m_height = std::max(1, static_cast<int>(m_widget.height() * ratio));
}

void WindowSurface::handTo(QThread& thread)
{
    m_window = m_widget.windowHandle();
    m_context.moveToThread(&thread);
}

void WindowSurface::giveBack()
{
    m_context.doneCurrent();
    m_context.moveToThread(m_widget.thread());
}

bool WindowSurface::makeCurrent()
{
    return m_window != nullptr && m_context.makeCurrent(m_window) && loadGl();
}

void WindowSurface::swap() { m_context.swapBuffers(m_window); }

} // namespace tirn
