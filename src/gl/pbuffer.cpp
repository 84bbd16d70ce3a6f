#include "gl/pbuffer.h"

#include <algorithm>

#include "base/log.h"
#include "gl/gltable.h"

namespace tirn {

namespace {

/// A renderbuffer of its own for depth and stencil: the same depth as the windows have.
constexpr GLenum kDepthFormat = GL_DEPTH24_STENCIL8;

GLenum targetOf(const PBufferMode& mode)
{
    if (mode.textureTarget == wgl::kTextureRectangle)
        return GL_TEXTURE_RECTANGLE_ARB;
    return mode.textureTarget == wgl::kTextureCubeMap ? GL_TEXTURE_CUBE_MAP : GL_TEXTURE_2D;
}

GLint integerOf(GLenum name)
{
    GLint value = 0;
    gl().GetIntegerv(name, &value);
    return value;
}

bool hasFrameBuffers() { return gl().GenFramebuffers != nullptr && gl().RenderbufferStorage != nullptr; }

} // namespace

PBuffer::PBuffer(const char* mode, bool manageContext) : m_mode(mode), m_manageContext(manageContext)
{
    logDebug("Declare a Pbuffer with \"%s\" parameters\n", m_mode.constData());
    m_parsed = parsePBufferMode(m_mode);
}

PBuffer::~PBuffer()
{
    if (m_manageContext)
        Destroy();
}

int PBuffer::largestSide()
{
    GLint viewport[2] = {0, 0};
    gl().GetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({integerOf(GL_MAX_RENDERBUFFER_SIZE), viewport[0], viewport[1]});
}

bool PBuffer::Initialize(int width, int height, bool sharedContext, bool shareLists)
{
    m_width = width;
    m_height = height;
    m_sharedContext = sharedContext;
    m_shareLists = shareLists;
    std::unique_ptr<SavedContext> before = SavedContext::take();
    if (before == nullptr || !hasFrameBuffers()) {
        logDebug("pbuffer creation error:  GetPixelFormat() failed");
        return false;
    }
    if (m_parsed.samples > integerOf(GL_MAX_SAMPLES)) {
        logDebug("pbuffer creation error:  Couldn't find a suitable pixel format.");
        return false;
    }
    const bool made = (sharedContext || makeOwnContext(shareLists)) && makeBuffers();
    if (!sharedContext && !before->makeCurrent())
        logWarning("PBuffer::Deactivate() failed.");
    if (!made) {
        Destroy();
        return false;
    }
    logDebug("Created a %d x %d pbuffer\n", m_width, m_height);
    return true;
}

/// Makes the context and leaves it current.
bool PBuffer::makeOwnContext(bool shareLists)
{
    m_context = makeContextBesideCurrent(shareLists);
    if (m_context == nullptr && shareLists)
        logDebug("pbuffer: wglShareLists() failed");
    if (m_context != nullptr && m_context->makeCurrent())
        return true;
    logDebug("pbuffer creation error:  wglCreateContext() failed");
    m_context.reset();
    return false;
}

GLenum PBuffer::colourFormat() const { return m_parsed.bitsPerComponent == 32 ? GL_RGBA32F_ARB : GL_RGBA8; }

void PBuffer::attachColour()
{
    if (!m_parsed.isTexture) {
        gl().BindRenderbuffer(GL_RENDERBUFFER, m_colour.generate());
        gl().RenderbufferStorageMultisample(GL_RENDERBUFFER, m_parsed.samples, colourFormat(), m_width,
                                            m_height);
        gl().FramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_colour.id());
        return;
    }
    const GLenum target = targetOf(m_parsed);
    const bool cube = target == GL_TEXTURE_CUBE_MAP;
    gl().BindTexture(target, m_texture.add());
    for (GLenum face = 0; face < (cube ? 6U : 1U); ++face) {
        gl().TexImage2D(cube ? GL_TEXTURE_CUBE_MAP_POSITIVE_X + face : target, 0,
                        static_cast<GLint>(colourFormat()), m_width, m_height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                        nullptr);
    }
    gl().TexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl().FramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                              cube ? GL_TEXTURE_CUBE_MAP_POSITIVE_X : target, m_texture[0], 0);
    gl().BindTexture(target, 0);
}

void PBuffer::attachDepth()
{
    gl().BindRenderbuffer(GL_RENDERBUFFER, m_depth.generate());
    gl().RenderbufferStorageMultisample(GL_RENDERBUFFER, m_parsed.isTexture ? 0 : m_parsed.samples,
                                        kDepthFormat, m_width, m_height);
    gl().FramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, m_depth.id());
    gl().BindRenderbuffer(GL_RENDERBUFFER, 0);
}

bool PBuffer::makeBuffers()
{
    const int limit = largestSide();
    if (m_width < 1 || m_height < 1 || m_width > limit || m_height > limit) {
        logCreationError(GL_FRAMEBUFFER_COMPLETE, GL_INVALID_VALUE);
        return false;
    }
    while (gl().GetError() != GL_NO_ERROR) {
    }
    const GLint before = integerOf(GL_FRAMEBUFFER_BINDING);
    gl().BindFramebuffer(GL_FRAMEBUFFER, m_frame.generate());
    attachColour();
    attachDepth();
    const GLenum status = gl().CheckFramebufferStatus(GL_FRAMEBUFFER);
    const GLenum error = gl().GetError();
    gl().BindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(before));
    if (status == GL_FRAMEBUFFER_COMPLETE && error == GL_NO_ERROR)
        return true;
    logCreationError(status, error);
    return false;
}

void PBuffer::logCreationError(GLenum status, GLenum error) const
{
    logDebug("pbuffer creation error:  wglCreatePbufferARB() failed");
    if (error == GL_OUT_OF_MEMORY)
        logDebug("error:  ERROR_NO_SYSTEM_RESOURCES");
    else if (error == GL_INVALID_VALUE)
        logDebug("error:  ERROR_INVALID_DATA");
    else if (status != GL_FRAMEBUFFER_COMPLETE)
        logDebug("error:  ERROR_INVALID_PIXEL_FORMAT");
    else
        logDebug("Error number is: %d", static_cast<int>(error));
}

void PBuffer::Destroy()
{
    Deactivate();
    std::unique_ptr<SavedContext> before;
    if (m_context != nullptr && m_frame.id() != 0) {
        before = SavedContext::take();
        m_context->makeCurrent();
    }
    m_texture.clear();
    m_depth.clear();
    m_colour.clear();
    m_frame.clear();
    m_bound = false;
    if (m_context != nullptr)
        m_context->doneCurrent();
    if (before != nullptr)
        before->makeCurrent();
    m_context.reset();
}

void PBuffer::HandleModeSwitch()
{
    if (!isValid())
        return;
    const bool wasActive = m_active;
    if (!wasActive)
        Activate();
    const bool lost = gl().CheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE;
    if (!wasActive || lost)
        Deactivate();
    if (!lost)
        return;
    Destroy();
    Initialize(m_width, m_height, m_sharedContext, m_shareLists);
}

unsigned PBuffer::Bind(int /*buffer*/)
{
    if (!m_parsed.isTexture) {
        logWarning("PBuffer::Bind() failed - pbuffer format does not support render to texture!");
        return 0;
    }
    if (m_bound) {
        logWarning("PBuffer::Bind() failed - pbuffer is already bound.");
        return 0;
    }
    if (m_texture.empty()) {
        logWarning("PBuffer::Bind() failed.");
        return 0;
    }
    gl().BindTexture(targetOf(m_parsed), m_texture[0]);
    m_bound = true;
    return 1;
}

unsigned PBuffer::Release(int /*buffer*/)
{
    if (!m_parsed.isTexture) {
        logWarning("PBuffer::Release() failed - pbuffer format does not support render to texture!");
        return 0;
    }
    if (m_texture.empty()) {
        logWarning("PBuffer::Release() failed.");
        return 0;
    }
    gl().BindTexture(targetOf(m_parsed), 0);
    m_bound = false;
    return 1;
}

void PBuffer::Activate(PBuffer* other)
{
    if (other == this || m_active)
        return;
    if (!isValid()) {
        logWarning("PBuffer::Activate() failed.\n");
        return;
    }
    if (other != nullptr && other->m_active) {
        m_saved = std::move(other->m_saved);
        m_savedFrame = other->m_savedFrame;
        other->m_active = false;
    } else {
        m_saved = SavedContext::take();
        m_savedFrame = m_saved != nullptr ? integerOf(GL_FRAMEBUFFER_BINDING) : 0;
    }
    if (m_context != nullptr && !m_context->makeCurrent()) {
        logWarning("PBuffer::Activate() failed.\n");
        return;
    }
    gl().BindFramebuffer(GL_FRAMEBUFFER, m_frame.id());
    m_active = true;
    logDebug("PBuffer::Activate() succeeded.\n");
}

void PBuffer::Deactivate()
{
    if (!m_active)
        return;
    m_active = false;
    if (m_saved == nullptr || !m_saved->makeCurrent())
        logWarning("PBuffer::Deactivate() failed.");
    else if (m_context == nullptr)
        gl().BindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(m_savedFrame));
    m_saved.reset();
}

/// While it lives, pixels are read from the buffer with one sample a pixel.
class PBuffer::ResolvedFrame
{
public:
    explicit ResolvedFrame(const PBuffer& buffer) : m_buffer(buffer)
    {
        if (buffer.m_parsed.samples < 1 || buffer.m_parsed.isTexture)
            return;
        gl().BindRenderbuffer(GL_RENDERBUFFER, m_colour.generate());
        gl().RenderbufferStorage(GL_RENDERBUFFER, buffer.colourFormat(), buffer.m_width, buffer.m_height);
        gl().BindFramebuffer(GL_DRAW_FRAMEBUFFER, m_frame.generate());
        gl().FramebufferRenderbuffer(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER,
                                     m_colour.id());
        gl().BlitFramebuffer(0, 0, buffer.m_width, buffer.m_height, 0, 0, buffer.m_width, buffer.m_height,
                             GL_COLOR_BUFFER_BIT, GL_NEAREST);
        gl().BindFramebuffer(GL_READ_FRAMEBUFFER, m_frame.id());
    }
    ~ResolvedFrame() { gl().BindFramebuffer(GL_FRAMEBUFFER, m_buffer.m_frame.id()); }
    ResolvedFrame(const ResolvedFrame&) = delete;
    ResolvedFrame& operator=(const ResolvedFrame&) = delete;

private:
    const PBuffer& m_buffer;
    RenderBufferName m_colour;
    FrameBufferName m_frame;
};

unsigned PBuffer::CopyToBuffer(void* ptr, int width, int height)
{
    constexpr GLenum formats[] = {GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};
    const int bits = m_parsed.bitsPerComponent;
    if ((bits != 8 && bits != 32) || m_parsed.components < 1 || m_parsed.components > 4) {
        logWarning("unknown m_iBitsPerComponent\n");
        return 0;
    }
    Activate();
    if (!m_active)
        return 0;
    const int columns = width < 0 ? m_width : std::min(width, m_width);
    const int rows = height < 0 ? m_height : std::min(height, m_height);
    {
        const ResolvedFrame resolved(*this);
        gl().PixelStorei(GL_PACK_ALIGNMENT, 1);
        gl().ReadPixels(0, 0, columns, rows, formats[m_parsed.components - 1],
                        bits == 8 ? GL_UNSIGNED_BYTE : GL_FLOAT, ptr);
        gl().PixelStorei(GL_PACK_ALIGNMENT, 4);
    }
    Deactivate();
    return static_cast<unsigned>((m_parsed.components / 8) * columns * rows);
}

} // namespace tirn
