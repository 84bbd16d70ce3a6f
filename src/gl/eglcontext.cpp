#include "gl/eglcontext.h"

#include <array>
#include <string>
#include <vector>

#ifndef EGL_NO_X11
#define EGL_NO_X11
#endif
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include "base/log.h"
#include "gl/gltable.h"

namespace tirn {

namespace {

bool hasExtension(EGLDisplay display, const std::string& name)
{
    const char* all = eglQueryString(display, EGL_EXTENSIONS);
    return all != nullptr && (' ' + std::string(all) + ' ').find(' ' + name + ' ') != std::string::npos;
}

template <class Entry>
Entry entry(const char* name)
{
    return reinterpret_cast<Entry>(eglGetProcAddress(name));
}

/// Graphics cards first, as the driver library lists them; then the software driver.
std::vector<EGLDisplay> displaysWithoutServer()
{
    std::vector<EGLDisplay> displays;
    const auto platformDisplay = entry<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    const auto queryDevices = entry<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    if (platformDisplay != nullptr && queryDevices != nullptr &&
        hasExtension(EGL_NO_DISPLAY, "EGL_EXT_platform_device")) {
        std::array<EGLDeviceEXT, 16> devices = {};
        EGLint count = 0;
        if (queryDevices(static_cast<EGLint>(devices.size()), devices.data(), &count) == EGL_TRUE) {
            for (EGLint i = 0; i < count; ++i)
                displays.push_back(
                    platformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[static_cast<std::size_t>(i)], nullptr));
        }
    }
    if (platformDisplay != nullptr && hasExtension(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless"))
        displays.push_back(platformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
    return displays;
}

/// A context of the compatibility profile, which is what a driver gives when nothing is asked for.
EGLContext makeContext(EGLDisplay display, EGLContext share)
{
    if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE)
        return EGL_NO_CONTEXT;
    const EGLint wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglChooseConfig(display, wanted, &config, 1, &count) != EGL_TRUE || count < 1)
        return EGL_NO_CONTEXT;
    const EGLint none[] = {EGL_NONE};
    return eglCreateContext(display, config, share, none);
}

class SavedEglContext : public SavedContext
{
public:
    SavedEglContext()
        : m_display(eglGetCurrentDisplay()), m_draw(eglGetCurrentSurface(EGL_DRAW)),
          m_read(eglGetCurrentSurface(EGL_READ)), m_context(eglGetCurrentContext())
    {}
    bool makeCurrent() override { return eglMakeCurrent(m_display, m_draw, m_read, m_context) == EGL_TRUE; }

private:
    EGLDisplay m_display;
    EGLSurface m_draw;
    EGLSurface m_read;
    EGLContext m_context;
};

} // namespace

EglContext::~EglContext()
{
    doneCurrent();
    eglDestroyContext(m_display, m_context);
}

bool EglContext::makeCurrent()
{
    if (eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_context) != EGL_TRUE)
        return false;
    loadGl([](const char* name) { return eglGetProcAddress(name); });
    return true;
}

void EglContext::doneCurrent()
{
    if (eglGetCurrentContext() == m_context)
        eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

bool EglContext::isAnyCurrent() { return eglGetCurrentContext() != EGL_NO_CONTEXT; }

std::unique_ptr<EglContext> EglContext::withoutDisplay(QString& error)
{
    for (const EGLDisplay display : displaysWithoutServer()) {
        if (display == EGL_NO_DISPLAY || eglInitialize(display, nullptr, nullptr) != EGL_TRUE)
            continue;
        const EGLContext context = hasExtension(display, "EGL_KHR_surfaceless_context")
                                       ? makeContext(display, EGL_NO_CONTEXT)
                                       : EGL_NO_CONTEXT;
        if (context == EGL_NO_CONTEXT)
            continue;
        std::unique_ptr<EglContext> made(new EglContext(display, context));
        if (made->makeCurrent()) {
            made->doneCurrent();
            return made;
        }
    }
    error = QStringLiteral("no driver offers OpenGL without a display (EGL error 0x%1)")
                .arg(eglGetError(), 0, 16);
    return nullptr;
}

std::unique_ptr<EglContext> EglContext::besideCurrent(bool share)
{
    const EGLDisplay display = eglGetCurrentDisplay();
    if (display == EGL_NO_DISPLAY)
        return nullptr;
    const EGLContext context = makeContext(display, share ? eglGetCurrentContext() : EGL_NO_CONTEXT);
    return context == EGL_NO_CONTEXT ? nullptr
                                     : std::unique_ptr<EglContext>(new EglContext(display, context));
}

std::unique_ptr<SavedContext> takeCurrentEglContext()
{
    return EglContext::isAnyCurrent() ? std::make_unique<SavedEglContext>() : nullptr;
}

} // namespace tirn
