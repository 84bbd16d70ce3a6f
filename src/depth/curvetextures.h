#pragma once

#include <span>

namespace tirn {

/// What came of an upload: the texture's name, 0 when nothing was made, and the GL error code, 0 for none.
struct CurveUpload
{
    unsigned texture = 0;
    unsigned error = 0;
};

/// Where the textures of depth curves go: the graphics card, or a recorder in a test.
class CurveTextures
{
public:
    virtual ~CurveTextures() = default;

    /// Puts `texels`, one luminance a texel, into a 1D texture. `texture` is the name that an earlier call
    /// with as many texels returned, 0 for a new texture.
    virtual CurveUpload upload(unsigned texture, std::span<const float> texels) = 0;
    virtual void release(unsigned texture) = 0;
};

} // namespace tirn
