#pragma once

#include "gl/texturemaps.h"
#include "image/encoding/texturesink.h"

namespace tirn {

/// Puts the planes and volumes of an image's own encoder on the card, in the current context.
class GlTextureSink : public TextureSink
{
public:
    unsigned makeTexture2D(int internalFormat, int width, int height, const void* texels) override;
    unsigned makeTextureRectangle(int internalFormat, int width, int height, const void* texels) override;
    unsigned makeTexture3D(int internalFormat, int width, int height, int depth, const void* texels) override;
};

} // namespace tirn
