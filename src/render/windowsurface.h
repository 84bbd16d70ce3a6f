#pragma once

#include <atomic>

#include <QOpenGLContext>

#include "render/framesurface.h"

class QWidget;
class QWindow;

namespace tirn {

/// The window of a widget as a render thread draws on it, with a context of its own.
///
/// The widget must be native and never be painted by the toolkit. Sizes are told on the interface thread,
/// since the render thread must not ask the widget.
class WindowSurface : public FrameSurface
{
public:
    WindowSurface(QWidget& widget, QOpenGLContext& share, bool stereo);
    ~WindowSurface() override;
    WindowSurface(const WindowSurface&) = delete;
    WindowSurface& operator=(const WindowSurface&) = delete;

    /// True when there is a window on the screen to draw on.
    bool isReady() const;
    /// False when the card gave no context at all.
    bool isValid() const { return m_context.isValid(); }
    bool isSharing() const;
    /// True when the window has a picture for each eye.
    bool isStereo() const { return m_context.isValid() && m_context.format().stereo(); }
    /// Gives the widget a window that GL can draw on; only before it is first shown, since it would count as
    /// hidden afterwards.
    void prepareWindow();
    void updateSize();

    void handTo(QThread& thread) override;
    void giveBack() override;
    bool makeCurrent() override;
    void swap() override;
    QSize size() const override { return {m_width, m_height}; }
    double pixelRatio() const override { return m_pixelRatio; }

private:
    QWidget& m_widget;
    QOpenGLContext m_context;
    QWindow* m_window = nullptr;
    std::atomic<int> m_width = 1;
    std::atomic<int> m_height = 1;
    std::atomic<double> m_pixelRatio = 1;
};

} // namespace tirn
