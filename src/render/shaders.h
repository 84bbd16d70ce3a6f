#pragma once

#include <atomic>
#include <string>

#include <QString>

#include "gl/glnames.h"
#include "volume/voxelarray.h"

namespace tirn {

/// What the text of a fragment program depends on.
struct ProgramInput
{
    int bitsPerSample = 8;
    int significantBits = 8;
    GLenum textureTarget = GL_TEXTURE_2D;
    int channelSlots = 1;
    bool zCorrection = false;
    bool autoBitDepth = false;
};

/// The program that turns a sample into a colour: unit 0 holds the slice, unit 1 the palette, unit 2 the
/// depth curve. Empty, with a log, for a depth that is not supported.
std::string fragmentProgramText(const ProgramInput& input);

/// Generates, compiles and binds the fragment program. All calls need the render thread's context current;
/// the flags may be set from any thread.
class Shaders
{
public:
    /// Logs every entry point of fragment programs that the driver lacks.
    Shaders();

    /// Stretch 12 and 16 bit data by the bits that they really have.
    std::atomic<bool> autoBitDepth = false;
    /// Multiply by the depth curve on unit 2.
    std::atomic<bool> zCorrection = false;
    /// Owned by the shader tricks.
    std::atomic<bool> trickFlagA = false;
    std::atomic<bool> trickFlagB = false;

    /// Builds and compiles the text for a volume, for none returns false.
    bool makeProgram(const VoxelArray* array);
    /// Compiles and binds a text. On failure `errorText` says where, and no program is left.
    bool compile(const std::string& text);
    /// Deletes the current program if `id` is one. Returns whether it did.
    bool unload(GLuint id);
    bool bind(GLuint id);
    /// The number of channels, one more with depth correction.
    int channelSlots(const VoxelArray* array) const;

    GLuint currentProgram() const { return m_program.id(); }
    const QString& errorText() const { return m_errorText; }
    const std::string& programText() const { return m_programText; }

private:
    bool hasEntries() const;

    ProgramName m_program;
    QString m_errorText;
    std::string m_programText;
};

} // namespace tirn
