#pragma once

#include <atomic>
#include <optional>
#include <string>

#include <QString>

#include "gl/glnames.h"
#include "scene/scene.h"

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

    bool operator==(const ProgramInput&) const = default;
};

/// The program that turns a sample into a colour: unit 0 holds the slice, unit 1 the palette, unit 2 the
/// depth curve. Empty, with a log, for a depth that is not supported.
std::string fragmentProgramText(const ProgramInput& input);

/// What the program of a frame depends on; of one without a volume, nothing.
ProgramInput programInput(const FrameState& frame);

/// Generates, compiles and binds the fragment program. All calls need the render thread's context current.
class Shaders
{
public:
    /// Logs every entry point of fragment programs that the driver lacks.
    Shaders();

    /// Owned by the shader tricks.
    std::atomic<bool> trickFlagA = false;
    std::atomic<bool> trickFlagB = false;

    /// Binds the program of a frame: the typed one, or the one that its volume asks for. A text is compiled
    /// once, however often it is used. False when there is none that compiles.
    bool use(const FrameState& frame);
    /// Builds and compiles the text for a frame's volume, for none returns false.
    bool makeProgram(const FrameState& frame);
    /// Compiles and binds a text. On failure `errorText` says where, and no program is left.
    bool compile(const std::string& text);
    /// Deletes the current program if `id` is one. Returns whether it did.
    bool unload(GLuint id);
    bool bind(GLuint id);

    GLuint currentProgram() const { return m_program.id(); }
    const QString& errorText() const { return m_errorText; }
    /// The text that was compiled last, whether or not it could be.
    const std::string& programText() const { return m_programText; }

private:
    bool hasEntries() const;

    ProgramName m_program;
    QString m_errorText;
    std::string m_programText;
    /// The text that `use` wanted last, and what it was made from if it was not typed.
    std::optional<std::string> m_wantedText;
    std::optional<ProgramInput> m_input;
    bool m_isGenerated = false;
};

/// The number of channels, one more with depth correction.
int channelSlots(const FrameState& frame);

} // namespace tirn
