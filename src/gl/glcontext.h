#pragma once

#include <memory>

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QSurfaceFormat>

namespace tirn {

/// A GL context without a window, for probing, uploads and deletions outside the render thread.
///
/// Made on the interface thread, which owns its surface; it may be current on one other thread after
/// `moveTo`.
class HiddenContext
{
public:
    /// Shares names with `share`, when that is not null.
    explicit HiddenContext(QOpenGLContext* share = nullptr);
    ~HiddenContext();
    HiddenContext(const HiddenContext&) = delete;
    HiddenContext& operator=(const HiddenContext&) = delete;

    bool isValid() const;
    /// False when the driver refuses.
    bool makeCurrent();
    void doneCurrent();
    QOpenGLContext& context() { return m_context; }

private:
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
};

/// Makes a hidden context current while it lives, unless a context is current on this thread already.
class CurrentScope
{
public:
    explicit CurrentScope(HiddenContext& context);
    ~CurrentScope();
    CurrentScope(const CurrentScope&) = delete;
    CurrentScope& operator=(const CurrentScope&) = delete;

private:
    HiddenContext* m_context;
};

/// The surface format of every context of the program: a compatibility profile, double buffered, with depth.
QSurfaceFormat surfaceFormat();

} // namespace tirn
