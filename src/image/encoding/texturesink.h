#pragma once

namespace tirn {

/// Where encoded planes and blocks go: the graphics card, or a recorder in a test.
///
/// `internalFormat` is the number of the card's texture format. Data are rows from the first on, without
/// padding, one byte or one 16-bit word a texel as the format says. Each call returns the new texture's name,
/// 0 on failure.
class TextureSink
{
public:
    virtual ~TextureSink() = default;

    virtual unsigned makeTexture2D(int internalFormat, int width, int height, const void* texels) = 0;
    virtual unsigned makeTextureRectangle(int internalFormat, int width, int height, const void* texels) = 0;
    virtual unsigned makeTexture3D(int internalFormat, int width, int height, int depth,
                                   const void* texels) = 0;
};

} // namespace tirn
