#include "gl/offscreencontext.h"

#include <QOpenGLContext>

#include "gl/eglcontext.h"
#include "gl/glcontext.h"

namespace tirn {

namespace {

class SavedToolkitContext : public SavedContext
{
public:
    explicit SavedToolkitContext(QOpenGLContext* context) : m_context(context), m_surface(context->surface())
    {}
    bool makeCurrent() override { return m_context->makeCurrent(m_surface); }

private:
    QOpenGLContext* m_context;
    QSurface* m_surface;
};

bool isAnyContextCurrent()
{
    return QOpenGLContext::currentContext() != nullptr || EglContext::isAnyCurrent();
}

} // namespace

std::unique_ptr<SavedContext> SavedContext::take()
{
    // The toolkit may stand on EGL itself: its own view of what is current comes first.
    if (QOpenGLContext* context = QOpenGLContext::currentContext())
        return std::make_unique<SavedToolkitContext>(context);
    return takeCurrentEglContext();
}

std::unique_ptr<OffscreenContext> makeContextBesideCurrent(bool share)
{
    if (QOpenGLContext* current = QOpenGLContext::currentContext()) {
        auto made = std::make_unique<HiddenContext>(share ? current : nullptr);
        if (!made->isValid())
            return nullptr;
        return made;
    }
    return EglContext::besideCurrent(share);
}

std::unique_ptr<OffscreenContext> makeContextWithoutDisplay(QString& error)
{
    return EglContext::withoutDisplay(error);
}

CurrentScope::CurrentScope(OffscreenContext& context) : m_context(isAnyContextCurrent() ? nullptr : &context)
{
    if (m_context != nullptr)
        m_context->makeCurrent();
}

CurrentScope::~CurrentScope()
{
    if (m_context != nullptr)
        m_context->doneCurrent();
}

} // namespace tirn
