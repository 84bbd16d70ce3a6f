#include "gl/glcontext.h"

#include "gl/gltable.h"

namespace tirn {

QSurfaceFormat surfaceFormat()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setProfile(QSurfaceFormat::CompatibilityProfile);
    format.setSwapBehavior(QSurfaceFormat::DoubleBuffer);
    format.setRedBufferSize(8);
    format.setGreenBufferSize(8);
    format.setBlueBufferSize(8);
    format.setDepthBufferSize(24);
    format.setSwapInterval(1);
    return format;
}

HiddenContext::HiddenContext(QOpenGLContext* share)
{
    m_surface.setFormat(surfaceFormat());
    m_surface.create();
    m_context.setFormat(surfaceFormat());
    if (share != nullptr)
        m_context.setShareContext(share);
    m_context.create();
}

HiddenContext::~HiddenContext() { doneCurrent(); }

bool HiddenContext::isValid() const { return m_context.isValid() && m_surface.isValid(); }

bool HiddenContext::makeCurrent()
{
    if (!isValid() || !m_context.makeCurrent(&m_surface))
        return false;
    return loadGl();
}

void HiddenContext::doneCurrent()
{
    if (QOpenGLContext::currentContext() == &m_context)
        m_context.doneCurrent();
}

} // namespace tirn
