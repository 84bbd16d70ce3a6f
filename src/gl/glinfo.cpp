#include "gl/glinfo.h"

#include <QRegularExpression>
#include <QStringList>

#include "base/log.h"
#include "gl/glstate.h"

namespace tirn {

bool GlInfo::hasExtension(const QString& name)
{
    if (!m_context.makeCurrent())
        return false;
    if (m_glExtensions.isEmpty()) {
        const auto* text = reinterpret_cast<const char*>(gl().GetString(GL_EXTENSIONS));
        for (const QString& extension : QString::fromLatin1(text).split(' '))
            m_glExtensions.insert(extension);
    }
    return m_glExtensions.contains(name);
}

bool isVersionBefore(const QByteArray& version, int minor)
{
    for (int older = 0; older < minor; ++older) {
        const QByteArray start = "1." + QByteArray::number(older);
        if (version == start || version.startsWith(start + '.') || version.startsWith(start + ' '))
            return true;
    }
    return version.isEmpty();
}

QString GlInfo::firstMissing(const QString& names)
{
    static const QRegularExpression version("^GL_VERSION_1_([2-4])$");
    for (const QString& name : names.split(' ', Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch match = version.match(name);
        const bool has = match.hasMatch() && m_context.makeCurrent()
                             ? !isVersionBefore(reinterpret_cast<const char*>(gl().GetString(GL_VERSION)),
                                                match.captured(1).toInt())
                             : hasExtension(name);
        if (!has)
            return name;
    }
    return {};
}

bool GlInfo::hasPBuffer() { return hasExtension("GL_ARB_framebuffer_object"); }

bool GlInfo::hasStereo()
{
    if (!m_context.makeCurrent())
        return false;
    GLboolean stereo = GL_FALSE;
    gl().GetBooleanv(GL_STEREO, &stereo);
    return stereo == GL_TRUE;
}

int GlInfo::maxProxyTexture()
{
    GLint size = maxTexture2D();
    const EnabledScope target(GL_TEXTURE_2D);
    gl().TexImage2D(GL_PROXY_TEXTURE_2D, 0, GL_RGBA8, size, size, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, nullptr);
    gl().GetTexLevelParameteriv(GL_PROXY_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &size);
    return size;
}

int GlInfo::maxTexture2D()
{
    GLint size = 0;
    if (m_context.makeCurrent())
        gl().GetIntegerv(GL_MAX_TEXTURE_SIZE, &size);
    return size;
}

int GlInfo::maxTexture3D()
{
    GLint size = 0;
    if (m_context.makeCurrent())
        gl().GetIntegerv(GL_MAX_3D_TEXTURE_SIZE, &size);
    return size;
}

QString GlInfo::rendererName()
{
    m_context.makeCurrent();
    const auto* name = reinterpret_cast<const char*>(gl().GetString(GL_RENDERER));
    return QString::fromLatin1(name != nullptr ? name : "unknown");
}

/// Part of every driver since OpenGL 1.4, which need not name it any more.
bool GlInfo::hasMaximumBlending()
{
    return hasExtension("GL_EXT_blend_minmax") || firstMissing("GL_VERSION_1_4").isEmpty();
}

GlCapabilities GlInfo::readCapabilities()
{
    GlCapabilities card;
    card.hasFragmentProgram = hasFragmentProgram();
    card.hasMultitexture = hasMultitexture();
    card.hasPalettedTexture = hasPalettedTexture();
    card.hasSharedPalette = hasSharedPalette();
    card.hasTexture3D = hasTexture3D();
    card.hasPBuffer = hasPBuffer();
    card.hasFloatBuffer = hasFloatBuffer();
    card.hasAtiFragmentShader = hasAtiFragmentShader();
    card.maxProxyTexture = maxProxyTexture();
    card.maxTexture2D = maxTexture2D();
    logDebug("Max 2D texture size: %d", card.maxTexture2D);
    card.maxTexture3D = maxTexture3D();
    logDebug("Max 3D Texture size: %d", card.maxTexture3D);
    card.renderer = rendererName();
    card.hasMaximumBlending = hasMaximumBlending();
    logDebug(hasNonPowerOfTwo() ? "ARB_texture_non_power_of_two supported"
                                : "ARB_texture_non_power_of_two NOT supported");
    return card;
}

} // namespace tirn
