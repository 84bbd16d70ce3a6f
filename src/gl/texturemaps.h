#pragma once

#include <cstdint>

#include "gl/gltable.h"

namespace tirn {

/// The creators of texture maps. They differ in target, accepted formats, label and wrap, and in nothing
/// else.
enum class TextureCreator {
    Map2D8,
    Rectangle2D8,
    Map2D16,
    NonPowerOfTwo2D,
    Map3D8,
    Map3D16,
    NonPowerOfTwo3D,
    Bitmask2D,
};

struct TextureSize
{
    int width = 1;
    int height = 1;
    int depth = 1;
};

/// Sends texels to texture `name`: with `isNew` the parameters are set and the image is uploaded, otherwise
/// the whole image is replaced. A format that the creator does not accept is uploaded as format and type 0,
/// which the GL refuses; its error is logged under the creator's label. False when the entry points for 3D
/// are missing.
bool fillTexture(TextureCreator creator, GLuint name, bool isNew, GLenum internalFormat, TextureSize size,
                 const void* texels);

/// Pixel format and type of a stack's internal format, as the GL calls take them; zeros for any other format.
struct PixelFormat
{
    GLenum format = 0;
    GLenum type = 0;
};
PixelFormat pixelFormat(TextureCreator creator, GLenum internalFormat);

} // namespace tirn
