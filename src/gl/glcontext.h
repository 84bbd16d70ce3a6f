#pragma once

#include <memory>

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QSurfaceFormat>

#include "gl/offscreencontext.h"

namespace tirn {

/// A GL context without a window, for probing, uploads and deletions outside the render thread.
///
/// Made on the interface thread, which owns its surface; it may be current on one other thread after
/// `moveTo`.
class HiddenContext : public OffscreenContext
{
public:
    /// Shares names with `share`, when that is not null.
    explicit HiddenContext(QOpenGLContext* share = nullptr);
    ~HiddenContext() override;
    HiddenContext(const HiddenContext&) = delete;
    HiddenContext& operator=(const HiddenContext&) = delete;

    bool isValid() const override;
    bool makeCurrent() override;
    void doneCurrent() override;
    QOpenGLContext& context() { return m_context; }

private:
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
};

/// The surface format of every context of the program: a compatibility profile, double buffered, with depth.
QSurfaceFormat surfaceFormat();

} // namespace tirn
