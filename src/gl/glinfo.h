#pragma once

#include <memory>

#include <QSet>
#include <QString>

#include "gl/offscreencontext.h"

namespace tirn {

/// Whether a version text of the driver is one from before "GL_VERSION_1_<minor>".
bool isVersionBefore(const QByteArray& version, int minor);

/// What the card can do. The fields stand in the order in which they are read.
struct GlCapabilities
{
    bool hasFragmentProgram = false;
    bool hasMultitexture = false;
    bool hasPalettedTexture = false;
    bool hasSharedPalette = false;
    bool hasTexture3D = false;
    bool hasPBuffer = false;
    bool hasFloatBuffer = false;
    bool hasAtiFragmentShader = false;
    int maxProxyTexture = 0;
    int maxTexture2D = 0;
    int maxTexture3D = 0;
    /// The driver's name for the card.
    QString renderer;
    /// Whether the brightest of what lies behind each other can be shown.
    bool hasMaximumBlending = false;

    /// True when palettes can be edited in real time.
    bool canEditPalettes() const { return hasPalettedTexture || (hasFragmentProgram && hasMultitexture); }
};

/// Answers every question on the driver of a context, which outlives it.
class GlInfo
{
public:
    explicit GlInfo(OffscreenContext& context) : m_context(context) {}

    /// Extension predicates; each makes the hidden context current first.
    bool hasExtension(const QString& name);
    /// The first of some extensions, parted by blanks, that the driver lacks; empty when it has them all.
    /// "GL_VERSION_1_2" to "GL_VERSION_1_4" stand for these versions and all later ones.
    QString firstMissing(const QString& names);
    bool hasFragmentProgram() { return hasExtension("GL_ARB_fragment_program"); }
    bool hasNonPowerOfTwo() { return hasExtension("GL_ARB_texture_non_power_of_two"); }
    bool hasMultitexture() { return hasExtension("GL_ARB_multitexture"); }
    bool hasPalettedTexture() { return hasExtension("GL_EXT_paletted_texture"); }
    bool hasSharedPalette() { return hasExtension("GL_EXT_shared_texture_palette"); }
    bool hasTexture3D() { return hasExtension("GL_EXT_texture3D"); }
    bool hasFloatBuffer() { return hasExtension("GL_NV_float_buffer"); }
    bool hasAtiFragmentShader() { return hasExtension("GL_ATI_fragment_shader"); }
    /// Off-screen buffers stand on frame buffer objects.
    bool hasPBuffer();
    bool hasMaximumBlending();
    /// The driver's name for the card.
    QString rendererName();
    /// The window system's quad-buffer stereo.
    bool hasStereo();

    /// The largest 2D texture that the card really accepts, found with a proxy texture.
    int maxProxyTexture();
    int maxTexture2D();
    int maxTexture3D();

    /// Reads everything in order and logs the limits.
    GlCapabilities readCapabilities();

private:
    OffscreenContext& m_context;
    QSet<QString> m_glExtensions;
};

} // namespace tirn
