#pragma once

#include <cstdint>
#include <memory>

#include <QByteArray>
#include <QSize>

#include "gl/glnames.h"
#include "gl/offscreencontext.h"
#include "gl/pbuffermode.h"

namespace tirn {

/// An off-screen render target: a frame buffer object, by itself in a context of its own.
///
/// All calls need a current context on the calling thread, `Activate` to `Deactivate` in pairs. A buffer that
/// could not be initialised stays usable: it is not valid, and its operations fail with a log.
class PBuffer
{
public:
    /// A mode such as "rgba", see parsePBufferMode. With `manageContext` the destructor destroys the buffer.
    explicit PBuffer(const char* mode, bool manageContext = false);
    ~PBuffer();
    PBuffer(const PBuffer&) = delete;
    PBuffer& operator=(const PBuffer&) = delete;

    /// With `sharedContext` the buffer lives in the current context; otherwise in one of its own, which with
    /// `shareLists` shares its names with the current one.
    bool Initialize(int width, int height, bool sharedContext, bool shareLists);
    void Destroy();
    /// Makes the buffer anew when the driver has lost it.
    void HandleModeSwitch();

    /// Binds the buffer's picture as a texture; 0 on failure. `buffer` is for buffers with several.
    unsigned Bind(int buffer);
    unsigned Release(int buffer);

    /// Makes the buffer the target of drawing, in place of `other` if that is active.
    void Activate(PBuffer* other = nullptr);
    /// Makes current again what was before `Activate`.
    void Deactivate();

    /// Reads the lower left corner, rows from the bottom up. Sizes that are negative or too large become the
    /// buffer's. The result is components / 8 * width * height, in whole numbers: 0 for every buffer.
    unsigned CopyToBuffer(void* ptr, int width, int height);

    bool isValid() const { return m_frame.id() != 0; }
    bool isActive() const { return m_active; }
    QSize size() const { return {m_width, m_height}; }
    const PBufferMode& mode() const { return m_parsed; }

    /// The longest side that a buffer may have in the current context.
    static int largestSide();

private:
    class ResolvedFrame;

    bool makeOwnContext(bool shareLists);
    bool makeBuffers();
    void attachColour();
    void attachDepth();
    void logCreationError(GLenum status, GLenum error) const;
    GLenum colourFormat() const;

    QByteArray m_mode;
    PBufferMode m_parsed;
    int m_width = 0;
    int m_height = 0;
    bool m_sharedContext = false;
    bool m_shareLists = false;
    bool m_bound = false;
    bool m_active = false;
    bool m_manageContext;
    std::unique_ptr<OffscreenContext> m_context;
    std::unique_ptr<SavedContext> m_saved;
    GLint m_savedFrame = 0;
    FrameBufferName m_frame;
    RenderBufferName m_colour;
    RenderBufferName m_depth;
    TextureNames m_texture;
};

} // namespace tirn
