#pragma once

#include <memory>

#include <QString>

#include "gl/offscreencontext.h"

namespace tirn {

/// An EGL context without any surface; it draws into frame buffer objects.
class EglContext : public OffscreenContext
{
public:
    ~EglContext() override;
    EglContext(const EglContext&) = delete;
    EglContext& operator=(const EglContext&) = delete;

    bool isValid() const override { return m_context != nullptr; }
    bool makeCurrent() override;
    void doneCurrent() override;

    /// Without a display server; null with a reason when no driver gives a context.
    static std::unique_ptr<EglContext> withoutDisplay(QString& error);
    /// On the display of the current EGL context; null when none is current or the driver refuses.
    static std::unique_ptr<EglContext> besideCurrent(bool share);
    /// True when an EGL context that was made here is current on this thread.
    static bool isAnyCurrent();

private:
    EglContext(void* display, void* context) : m_display(display), m_context(context) {}

    /// EGLDisplay and EGLContext, whose header would bring in the window system's macros.
    void* m_display;
    void* m_context;
};

/// The current EGL context, to be made current again.
std::unique_ptr<SavedContext> takeCurrentEglContext();

} // namespace tirn
