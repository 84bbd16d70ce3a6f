#pragma once

#include <functional>

#include <qopengl.h>

#ifndef APIENTRY
#define APIENTRY
#endif

namespace tirn {

/// Every GL entry that the program calls: result, name without "gl", parameters, arguments.
// clang-format off
#define TIRN_GL_ENTRIES(X)                                                                                             \
    X(void, ActiveTextureARB, (GLenum unit), (unit))                                                                   \
    X(void, AlphaFunc, (GLenum function, GLfloat reference), (function, reference))                                    \
    X(void, Begin, (GLenum mode), (mode))                                                                              \
    X(void, BindFramebuffer, (GLenum target, GLuint buffer), (target, buffer))                                         \
    X(void, BindProgramARB, (GLenum target, GLuint program), (target, program))                                        \
    X(void, BindRenderbuffer, (GLenum target, GLuint buffer), (target, buffer))                                        \
    X(void, BindTexture, (GLenum target, GLuint texture), (target, texture))                                           \
    X(void, BlendEquationEXT, (GLenum mode), (mode))                                                                   \
    X(void, BlendFunc, (GLenum source, GLenum destination), (source, destination))                                     \
    X(void, BlendFuncSeparate, (GLenum source, GLenum destination, GLenum sourceAlpha, GLenum destinationAlpha),       \
      (source, destination, sourceAlpha, destinationAlpha))                                                            \
    X(void, BlitFramebuffer, (GLint fromX0, GLint fromY0, GLint fromX1, GLint fromY1, GLint toX0, GLint toY0,          \
                              GLint toX1, GLint toY1, GLbitfield mask, GLenum filter),                                 \
      (fromX0, fromY0, fromX1, fromY1, toX0, toY0, toX1, toY1, mask, filter))                                          \
    X(void, CallList, (GLuint list), (list))                                                                           \
    X(GLenum, CheckFramebufferStatus, (GLenum target), (target))                                                       \
    X(void, Clear, (GLbitfield mask), (mask))                                                                          \
    X(void, ClearColor, (GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha), (red, green, blue, alpha))          \
    X(void, ClipPlane, (GLenum plane, const GLdouble* equation), (plane, equation))                                    \
    X(void, Color4f, (GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha), (red, green, blue, alpha))             \
    X(void, ColorMask, (GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha), (red, green, blue, alpha))   \
    X(void, ColorTableEXT, (GLenum target, GLenum internalFormat, GLsizei width, GLenum format, GLenum type,           \
                            const void* table), (target, internalFormat, width, format, type, table))                  \
    X(void, DeleteFramebuffers, (GLsizei count, const GLuint* buffers), (count, buffers))                              \
    X(void, DeleteLists, (GLuint first, GLsizei count), (first, count))                                                \
    X(void, DeleteProgramsARB, (GLsizei count, const GLuint* programs), (count, programs))                             \
    X(void, DeleteRenderbuffers, (GLsizei count, const GLuint* buffers), (count, buffers))                             \
    X(void, DeleteTextures, (GLsizei count, const GLuint* textures), (count, textures))                                \
    X(void, DepthFunc, (GLenum function), (function))                                                                  \
    X(void, DepthMask, (GLboolean write), (write))                                                                     \
    X(void, Disable, (GLenum capability), (capability))                                                                \
    X(void, DrawBuffer, (GLenum buffer), (buffer))                                                                     \
    X(void, DrawPixels, (GLsizei width, GLsizei height, GLenum format, GLenum type, const void* pixels),               \
      (width, height, format, type, pixels))                                                                           \
    X(void, Enable, (GLenum capability), (capability))                                                                 \
    X(void, End, (), ())                                                                                               \
    X(void, EndList, (), ())                                                                                           \
    X(void, Finish, (), ())                                                                                            \
    X(void, Flush, (), ())                                                                                             \
    X(void, FramebufferRenderbuffer, (GLenum target, GLenum attachment, GLenum bufferTarget, GLuint buffer),           \
      (target, attachment, bufferTarget, buffer))                                                                      \
    X(void, FramebufferTexture2D, (GLenum target, GLenum attachment, GLenum textureTarget, GLuint texture,             \
                                   GLint level), (target, attachment, textureTarget, texture, level))                  \
    X(void, GenFramebuffers, (GLsizei count, GLuint* buffers), (count, buffers))                                       \
    X(GLuint, GenLists, (GLsizei range), (range))                                                                      \
    X(void, GenProgramsARB, (GLsizei count, GLuint* programs), (count, programs))                                      \
    X(void, GenRenderbuffers, (GLsizei count, GLuint* buffers), (count, buffers))                                      \
    X(void, GenTextures, (GLsizei count, GLuint* textures), (count, textures))                                         \
    X(void, GetBooleanv, (GLenum name, GLboolean* values), (name, values))                                             \
    X(void, GetDoublev, (GLenum name, GLdouble* values), (name, values))                                               \
    X(GLenum, GetError, (), ())                                                                                        \
    X(void, GetIntegerv, (GLenum name, GLint* values), (name, values))                                                 \
    X(void, GetProgramivARB, (GLenum target, GLenum name, GLint* values), (target, name, values))                      \
    X(const GLubyte*, GetString, (GLenum name), (name))                                                                \
    X(void, GetTexLevelParameteriv, (GLenum target, GLint level, GLenum name, GLint* values),                          \
      (target, level, name, values))                                                                                   \
    X(GLboolean, IsList, (GLuint list), (list))                                                                        \
    X(void, Lightf, (GLenum light, GLenum name, GLfloat value), (light, name, value))                                  \
    X(void, Lightfv, (GLenum light, GLenum name, const GLfloat* values), (light, name, values))                        \
    X(void, LineWidth, (GLfloat width), (width))                                                                       \
    X(void, LoadIdentity, (), ())                                                                                      \
    X(void, LoadMatrixd, (const GLdouble* matrix), (matrix))                                                           \
    X(void, Materialf, (GLenum face, GLenum name, GLfloat value), (face, name, value))                                 \
    X(void, Materialfv, (GLenum face, GLenum name, const GLfloat* values), (face, name, values))                       \
    X(void, MatrixMode, (GLenum mode), (mode))                                                                         \
    X(void, MultMatrixd, (const GLdouble* matrix), (matrix))                                                           \
    X(void, MultMatrixf, (const GLfloat* matrix), (matrix))                                                            \
    X(void, MultiTexCoord2fARB, (GLenum unit, GLfloat s, GLfloat t), (unit, s, t))                                     \
    X(void, MultiTexCoord3fARB, (GLenum unit, GLfloat s, GLfloat t, GLfloat r), (unit, s, t, r))                       \
    X(void, NewList, (GLuint list, GLenum mode), (list, mode))                                                         \
    X(void, Normal3f, (GLfloat x, GLfloat y, GLfloat z), (x, y, z))                                                    \
    X(void, Ortho, (GLdouble left, GLdouble right, GLdouble bottom, GLdouble top, GLdouble zNear, GLdouble zFar),      \
      (left, right, bottom, top, zNear, zFar))                                                                         \
    X(void, PixelStorei, (GLenum name, GLint value), (name, value))                                                    \
    X(void, PopMatrix, (), ())                                                                                         \
    X(void, ProgramStringARB, (GLenum target, GLenum format, GLsizei length, const void* text),                        \
      (target, format, length, text))                                                                                  \
    X(void, PushMatrix, (), ())                                                                                        \
    X(void, ReadBuffer, (GLenum buffer), (buffer))                                                                     \
    X(void, ReadPixels, (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels),   \
      (x, y, width, height, format, type, pixels))                                                                     \
    X(void, RenderbufferStorage, (GLenum target, GLenum format, GLsizei width, GLsizei height),                        \
      (target, format, width, height))                                                                                 \
    X(void, RenderbufferStorageMultisample, (GLenum target, GLsizei samples, GLenum format, GLsizei width,             \
                                             GLsizei height), (target, samples, format, width, height))                \
    X(void, Rotated, (GLdouble angle, GLdouble x, GLdouble y, GLdouble z), (angle, x, y, z))                           \
    X(void, Scaled, (GLdouble x, GLdouble y, GLdouble z), (x, y, z))                                                   \
    X(void, ShadeModel, (GLenum mode), (mode))                                                                         \
    X(void, TexCoord2f, (GLfloat s, GLfloat t), (s, t))                                                                \
    X(void, TexCoord3f, (GLfloat s, GLfloat t, GLfloat r), (s, t, r))                                                  \
    X(void, TexImage1D, (GLenum target, GLint level, GLint internalFormat, GLsizei width, GLint border,                \
                         GLenum format, GLenum type, const void* texels),                                              \
      (target, level, internalFormat, width, border, format, type, texels))                                            \
    X(void, TexImage2D, (GLenum target, GLint level, GLint internalFormat, GLsizei width, GLsizei height,              \
                         GLint border, GLenum format, GLenum type, const void* texels),                                \
      (target, level, internalFormat, width, height, border, format, type, texels))                                    \
    X(void, TexImage3DEXT, (GLenum target, GLint level, GLenum internalFormat, GLsizei width, GLsizei height,          \
                            GLsizei depth, GLint border, GLenum format, GLenum type, const void* texels),              \
      (target, level, internalFormat, width, height, depth, border, format, type, texels))                             \
    X(void, TexParameteri, (GLenum target, GLenum name, GLint value), (target, name, value))                           \
    X(void, TexSubImage1D, (GLenum target, GLint level, GLint x, GLsizei width, GLenum format, GLenum type,            \
                            const void* texels), (target, level, x, width, format, type, texels))                      \
    X(void, TexSubImage2D, (GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height,               \
                            GLenum format, GLenum type, const void* texels),                                           \
      (target, level, x, y, width, height, format, type, texels))                                                      \
    X(void, TexSubImage3DEXT, (GLenum target, GLint level, GLint x, GLint y, GLint z, GLsizei width, GLsizei height,   \
                               GLsizei depth, GLenum format, GLenum type, const void* texels),                         \
      (target, level, x, y, z, width, height, depth, format, type, texels))                                            \
    X(void, Translated, (GLdouble x, GLdouble y, GLdouble z), (x, y, z))                                               \
    X(void, Vertex3f, (GLfloat x, GLfloat y, GLfloat z), (x, y, z))                                                    \
    X(void, Viewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))                        \
    X(void, WindowPos2i, (GLint x, GLint y), (x, y))
// clang-format on

/// The entry points of the current driver. An entry that the driver lacks is null.
struct GlTable
{
#define TIRN_GL_MEMBER(result, name, parameters, arguments) result(APIENTRY* name) parameters = nullptr;
    TIRN_GL_ENTRIES(TIRN_GL_MEMBER)
#undef TIRN_GL_MEMBER

    using Function = void (*)();
    /// Fills the table; `resolve` finds an entry by its full name, or returns null.
    static GlTable load(const std::function<Function(const char*)>& resolve);
};

/// The table in use. Before `loadGl` all its entries are null.
const GlTable& gl();

/// Fills the table from the toolkit's current context, once in a process. False when no context is current.
bool loadGl();
/// The same through another way to find entries.
void loadGl(const std::function<GlTable::Function(const char*)>& resolve);

/// Puts another table in use while it lives; for tests that record calls.
class GlTableScope
{
public:
    explicit GlTableScope(const GlTable& table);
    ~GlTableScope();
    GlTableScope(const GlTableScope&) = delete;
    GlTableScope& operator=(const GlTableScope&) = delete;

private:
    const GlTable* m_previous;
};

} // namespace tirn
