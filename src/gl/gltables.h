#pragma once

#include "depth/curvetextures.h"
#include "gl/offscreencontext.h"
#include "gl/renderthreadkind.h"
#include "palettes/palettetables.h"

namespace tirn {

/// Puts palettes on the card: 1D textures for fragment programs, display lists with a colour table for the
/// paletted path, nothing for a card without either.
///
/// Works in the calling thread's current context, or in the hidden one when there is none, and flushes, so
/// that the next frame of another context of the share group shows the change.
class GlPaletteTables : public PaletteTables
{
public:
    /// `context` may be null where the caller's own context is always current; otherwise it must outlive
    /// this.
    GlPaletteTables(RenderThreadKind kind, OffscreenContext* context) : m_kind(kind), m_context(context) {}

    unsigned upload(unsigned handle, std::span<const std::uint8_t> rgba) override;
    void release(unsigned handle) override;

private:
    unsigned uploadTexture(unsigned handle, std::span<const std::uint8_t> rgba);
    unsigned recordList(unsigned handle, std::span<const std::uint8_t> rgba);

    RenderThreadKind m_kind;
    OffscreenContext* m_context;
};

/// Puts depth curves on the card, as 1D luminance textures. Contexts as for palettes.
class GlCurveTextures : public CurveTextures
{
public:
    explicit GlCurveTextures(OffscreenContext* context) : m_context(context) {}

    CurveUpload upload(unsigned texture, std::span<const float> texels) override;
    void release(unsigned texture) override;

private:
    OffscreenContext* m_context;
};

} // namespace tirn
