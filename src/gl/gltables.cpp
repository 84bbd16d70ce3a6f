#include "gl/gltables.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/log.h"
#include "gl/glnames.h"
#include "gl/glstate.h"

namespace tirn {

namespace {

constexpr int kListEntries = 256;
constexpr std::size_t kListBytes = std::size_t{4} * kListEntries;

/// The hidden context for a caller that has one to offer and none current.
class TableScope
{
public:
    explicit TableScope(OffscreenContext* context)
    {
        if (context != nullptr)
            m_current.emplace(*context);
    }
    ~TableScope()
    {
        if (gl().Flush != nullptr)
            gl().Flush();
    }
    TableScope(const TableScope&) = delete;
    TableScope& operator=(const TableScope&) = delete;

private:
    std::optional<CurrentScope> m_current;
};

void set1DParameters()
{
    gl().TexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl().TexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl().TexParameteri(GL_TEXTURE_1D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
}

} // namespace

unsigned GlPaletteTables::upload(unsigned handle, std::span<const std::uint8_t> rgba)
{
    if (m_kind == RenderThreadKind::LostCause)
        return 0;
    const TableScope scope(m_context);
    return usesFragmentPrograms(m_kind) ? uploadTexture(handle, rgba) : recordList(handle, rgba);
}

unsigned GlPaletteTables::uploadTexture(unsigned handle, std::span<const std::uint8_t> rgba)
{
    const auto width = static_cast<GLsizei>(rgba.size() / 4);
    const bool isNew = handle == 0;
    {
        const EnabledScope target(GL_TEXTURE_1D);
        if (isNew)
            handle = makeSharedTexture();
        if (handle == 0)
            return 0;
        gl().BindTexture(GL_TEXTURE_1D, handle);
        gl().PixelStorei(GL_UNPACK_ALIGNMENT, 1);
        if (isNew) {
            set1DParameters();
            gl().TexImage1D(GL_TEXTURE_1D, 0, GL_RGBA8, width, 0, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        } else {
            gl().TexSubImage1D(GL_TEXTURE_1D, 0, 0, width, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        }
        gl().BindTexture(GL_TEXTURE_1D, 0);
    }
    if (const GLenum error = gl().GetError(); error != GL_NO_ERROR) {
        if (isNew)
            deleteSharedTexture(handle);
        throw static_cast<int>(error);
    }
    return handle;
}

unsigned GlPaletteTables::recordList(unsigned handle, std::span<const std::uint8_t> rgba)
{
    // Recorded again under the same id, so that render lists that call it stay right.
    const bool isNew = handle == 0;
    if (isNew)
        handle = makeSharedList();
    if (handle == 0)
        return 0;
    if (gl().ColorTableEXT == nullptr) {
        logWarning("No ColorTableEXT");
        return handle;
    }
    // The paletted path knows only 256 entries, whatever the palette's depth.
    std::array<std::uint8_t, kListBytes> table = {};
    std::copy_n(rgba.begin(), std::min(rgba.size(), table.size()), table.begin());
    {
        const ListScope list(handle);
        gl().ColorTableEXT(GL_SHARED_TEXTURE_PALETTE_EXT, GL_RGBA, kListEntries, GL_RGBA, GL_UNSIGNED_BYTE,
                           table.data());
    }
    if (const GLenum error = gl().GetError(); error != GL_NO_ERROR) {
        if (isNew)
            deleteSharedList(handle);
        throw static_cast<int>(error);
    }
    return handle;
}

void GlPaletteTables::release(unsigned handle)
{
    if (handle == 0)
        return;
    const TableScope scope(m_context);
    if (usesFragmentPrograms(m_kind))
        deleteSharedTexture(handle);
    else
        deleteSharedList(handle);
}

CurveUpload GlCurveTextures::upload(unsigned texture, std::span<const float> texels)
{
    const TableScope scope(m_context);
    const auto width = static_cast<GLsizei>(texels.size());
    const EnabledScope target(GL_TEXTURE_1D);
    const bool isNew = texture == 0;
    if (isNew)
        texture = makeSharedTexture();
    if (texture == 0)
        return {};
    gl().BindTexture(GL_TEXTURE_1D, texture);
    if (isNew) {
        set1DParameters();
        gl().TexImage1D(GL_TEXTURE_1D, 0, GL_LUMINANCE, width, 0, GL_LUMINANCE, GL_FLOAT, texels.data());
    } else {
        gl().TexSubImage1D(GL_TEXTURE_1D, 0, 0, width, GL_LUMINANCE, GL_FLOAT, texels.data());
    }
    gl().BindTexture(GL_TEXTURE_1D, 0);
    return {texture, gl().GetError()};
}

void GlCurveTextures::release(unsigned texture)
{
    if (texture == 0)
        return;
    const TableScope scope(m_context);
    deleteSharedTexture(texture);
}

} // namespace tirn
