#pragma once

#include <memory>

#include <QString>

namespace tirn {

/// A GL context that draws into no window: the toolkit's where there is a display, EGL's where there is none.
class OffscreenContext
{
public:
    virtual ~OffscreenContext() = default;

    virtual bool isValid() const = 0;
    /// Makes it current on this thread and fills the table of GL entries. False when the driver refuses.
    virtual bool makeCurrent() = 0;
    virtual void doneCurrent() = 0;
};

/// Which context was current when it was made, of whichever platform, so that it can be so again.
class SavedContext
{
public:
    virtual ~SavedContext() = default;

    virtual bool makeCurrent() = 0;

    /// Remembers the current context of this thread; null when there is none.
    static std::unique_ptr<SavedContext> take();
};

/// Makes a context current while it lives, unless a context is current on this thread already.
class CurrentScope
{
public:
    explicit CurrentScope(OffscreenContext& context);
    ~CurrentScope();
    CurrentScope(const CurrentScope&) = delete;
    CurrentScope& operator=(const CurrentScope&) = delete;

private:
    OffscreenContext* m_context;
};

/// A context of the same platform as the current one. With `share` both share their names. Null when no
/// context is current or the driver refuses. The toolkit's contexts are made on the interface thread.
std::unique_ptr<OffscreenContext> makeContextBesideCurrent(bool share);

/// A context that needs no display server: that of the first graphics card which gives one, otherwise the
/// software driver's. On failure null, and `error` says why.
std::unique_ptr<OffscreenContext> makeContextWithoutDisplay(QString& error);

} // namespace tirn
