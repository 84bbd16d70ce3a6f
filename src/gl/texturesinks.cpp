#include "gl/texturesinks.h"

#include "base/log.h"
#include "gl/glnames.h"
#include "gl/glstate.h"

namespace tirn {

namespace {

void upload(GLenum target, int internalFormat, TextureSize size, const void* texels)
{
    // The one creator that knows every format.
    const PixelFormat pixels = pixelFormat(TextureCreator::Map2D8, static_cast<GLenum>(internalFormat));
    if (target != GL_TEXTURE_3D)
        gl().TexImage2D(target, 0, internalFormat, size.width, size.height, 0, pixels.format, pixels.type,
                        texels);
    else if (gl().TexImage3DEXT != nullptr)
        gl().TexImage3DEXT(target, 0, static_cast<GLenum>(internalFormat), size.width, size.height,
                           size.depth, 0, pixels.format, pixels.type, texels);
}

/// The name stays, even where the upload fails.
unsigned makeTexture(GLenum target, int internalFormat, TextureSize size, const void* texels)
{
    const unsigned name = makeSharedTexture();
    if (name == 0)
        return 0;
    gl().PixelStorei(GL_UNPACK_ALIGNMENT, 1);
    const EnabledScope enabled(target);
    gl().BindTexture(target, name);
    for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
        gl().TexParameteri(target, filter, GL_LINEAR);
    for (const GLenum wrap : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
        gl().TexParameteri(target, wrap, GL_CLAMP);
    if (target == GL_TEXTURE_3D)
        gl().TexParameteri(target, GL_TEXTURE_WRAP_R, GL_CLAMP);
    upload(target, internalFormat, size, texels);
    if (const GLenum error = gl().GetError(); error != GL_NO_ERROR)
        logDebug("Texmap error = %d", static_cast<int>(error));
    gl().BindTexture(target, 0);
    return name;
}

} // namespace

unsigned GlTextureSink::makeTexture2D(int internalFormat, int width, int height, const void* texels)
{
    return makeTexture(GL_TEXTURE_2D, internalFormat, {width, height, 1}, texels);
}

unsigned GlTextureSink::makeTextureRectangle(int internalFormat, int width, int height, const void* texels)
{
    return makeTexture(GL_TEXTURE_RECTANGLE_NV, internalFormat, {width, height, 1}, texels);
}

unsigned GlTextureSink::makeTexture3D(int internalFormat, int width, int height, int depth,
                                      const void* texels)
{
    return makeTexture(GL_TEXTURE_3D, internalFormat, {width, height, depth}, texels);
}

} // namespace tirn
