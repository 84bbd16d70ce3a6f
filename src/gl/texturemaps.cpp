#include "gl/texturemaps.h"

#include <algorithm>
#include <array>
#include <span>

#include "base/log.h"
#include "gl/glstate.h"

namespace tirn {

namespace {

struct FormatRow
{
    GLenum internalFormat;
    PixelFormat pixels;
};

constexpr FormatRow kColorIndex = {GL_COLOR_INDEX8_EXT, {GL_COLOR_INDEX, GL_UNSIGNED_BYTE}};
constexpr FormatRow kLuminance8 = {GL_LUMINANCE8, {GL_LUMINANCE, GL_UNSIGNED_BYTE}};
constexpr FormatRow kLuminance16 = {GL_LUMINANCE16, {GL_LUMINANCE, GL_UNSIGNED_SHORT}};
constexpr FormatRow kHilo16 = {GL_HILO16_NV, {GL_HILO_NV, GL_UNSIGNED_SHORT}};

constexpr std::array kAllFormats = {kColorIndex, kLuminance8, kLuminance16, kHilo16};
constexpr std::array kByteFormats = {kLuminance8, kColorIndex};
constexpr std::array kLuminanceByte = {kLuminance8};
constexpr std::array kWordFormats = {kLuminance16, kHilo16};

struct CreatorRow
{
    TextureCreator creator;
    GLenum target;
    std::span<const FormatRow> formats;
    const char* label;
};

constexpr std::array kCreators = {
    CreatorRow{TextureCreator::Map2D8, GL_TEXTURE_2D, kAllFormats, "2D 8bit Texmap Error"},
    CreatorRow{TextureCreator::Rectangle2D8, GL_TEXTURE_RECTANGLE_NV, kLuminanceByte,
               "2D 8bit TexmapRect Error"},
    CreatorRow{TextureCreator::Map2D16, GL_TEXTURE_2D, kWordFormats, "2D 16bit Texmap Error"},
    CreatorRow{TextureCreator::NonPowerOfTwo2D, GL_TEXTURE_2D, kWordFormats, "2D NonPowerof2 Texmap Error"},
    CreatorRow{TextureCreator::Map3D8, GL_TEXTURE_3D, kByteFormats, "3D 8bit Texmap Error"},
    CreatorRow{TextureCreator::Map3D16, GL_TEXTURE_3D, kWordFormats, "3D 16bit Texmap Error"},
    CreatorRow{TextureCreator::NonPowerOfTwo3D, GL_TEXTURE_3D, kWordFormats, "3D NonPowerof2 Texmap Error"},
    CreatorRow{TextureCreator::Bitmask2D, GL_TEXTURE_2D, kByteFormats, "2D 8bit bitmask Error"},
};

const CreatorRow& rowOf(TextureCreator creator)
{
    return *std::find_if(kCreators.begin(), kCreators.end(),
                         [creator](const CreatorRow& row) { return row.creator == creator; });
}

void setParameters(GLenum target)
{
    gl().TexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl().TexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl().TexParameteri(target, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl().TexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    if (target == GL_TEXTURE_3D)
        gl().TexParameteri(target, GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE);
}

void upload2D(GLenum target, bool isNew, GLenum internalFormat, TextureSize size, PixelFormat pixels,
              const void* texels)
{
    if (isNew) {
        setParameters(target);
        gl().TexImage2D(target, 0, static_cast<GLint>(internalFormat), size.width, size.height, 0,
                        pixels.format, pixels.type, texels);
    } else {
        gl().TexSubImage2D(target, 0, 0, 0, size.width, size.height, pixels.format, pixels.type, texels);
    }
}

void upload3D(bool isNew, GLenum internalFormat, TextureSize size, PixelFormat pixels, const void* texels)
{
    if (isNew) {
        setParameters(GL_TEXTURE_3D);
        gl().TexImage3DEXT(GL_TEXTURE_3D, 0, internalFormat, size.width, size.height, size.depth, 0,
                           pixels.format, pixels.type, texels);
    } else {
        gl().TexSubImage3DEXT(GL_TEXTURE_3D, 0, 0, 0, 0, size.width, size.height, size.depth, pixels.format,
                              pixels.type, texels);
    }
}

} // namespace

PixelFormat pixelFormat(TextureCreator creator, GLenum internalFormat)
{
    for (const FormatRow& row : rowOf(creator).formats) {
        if (row.internalFormat == internalFormat)
            return row.pixels;
    }
    return {};
}

bool fillTexture(TextureCreator creator, GLuint name, bool isNew, GLenum internalFormat, TextureSize size,
                 const void* texels)
{
    const CreatorRow& row = rowOf(creator);
    const PixelFormat pixels = pixelFormat(creator, internalFormat);
    gl().PixelStorei(GL_UNPACK_ALIGNMENT, 1);
    if (row.target != GL_TEXTURE_3D) {
        gl().BindTexture(row.target, name);
        upload2D(row.target, isNew, internalFormat, size, pixels, texels);
        reportGlErrors(row.label);
        gl().BindTexture(row.target, 0);
        return true;
    }
    if (gl().TexImage3DEXT == nullptr || gl().TexSubImage3DEXT == nullptr) {
        logWarning("glTexImage3DEXT is NULL");
        return false;
    }
    if (creator == TextureCreator::Map3D16) {
        logDebug("internalformat %d x %d y %d z %d format %d datype %d", static_cast<int>(internalFormat),
                 size.width, size.height, size.depth, static_cast<int>(pixels.format),
                 static_cast<int>(pixels.type));
    }
    const EnabledScope target(GL_TEXTURE_3D);
    gl().BindTexture(GL_TEXTURE_3D, name);
    upload3D(isNew, internalFormat, size, pixels, texels);
    reportGlErrors(row.label);
    gl().BindTexture(GL_TEXTURE_3D, 0);
    return true;
}

} // namespace tirn
