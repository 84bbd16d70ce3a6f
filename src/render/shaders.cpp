#include "render/shaders.h"

#include <utility>

#include "base/log.h"
#include "gl/gltable.h"
#include "volume/seenvoxel.h"

namespace tirn {

namespace {

const char* const kCurveLines = "TEX t2,fragment.texcoord[0].z,texture[2],1D;\n"
                                "MUL t2,t2,4;\n"
                                "MUL_SAT t1,t1,t2;\n";
const char* const kPaletteLines = "TEX result.color,t1,texture[1],1D;\n"
                                  "END\n";

std::string text8(const ProgramInput& input)
{
    std::string text = "!!ARBfp1.0\nTEMP t1";
    // More temporaries than this text uses, for those who edit it.
    for (int k = 1; k < input.channelSlots; ++k)
        text += ",t" + std::to_string(k + 1);
    text += ";\nTEX t1,fragment.texcoord[0],texture[0],";
    if (input.textureTarget == GL_TEXTURE_2D)
        text += "2D;\n";
    else if (input.textureTarget == GL_TEXTURE_3D)
        text += "3D;\n";
    else if (input.textureTarget == GL_TEXTURE_RECTANGLE_NV)
        text += "RECT;\n";
    else
        logWarning("Unknown texture type!!!!");
    if (input.zCorrection && input.textureTarget == GL_TEXTURE_3D)
        text += kCurveLines;
    return text + kPaletteLines;
}

std::string text16(const ProgramInput& input, bool alwaysScales)
{
    const int exponent = stretchExponent(input.bitsPerSample, input.significantBits, input.autoBitDepth);
    const bool curve = input.zCorrection && input.textureTarget == GL_TEXTURE_3D;
    logDebug("Compile shader for %d bit data", 16 - exponent);
    const double factor = 1 << exponent;
    std::string text = "!!ARBfp1.0\n";
    text += curve ? "TEMP t1,t2;\n" : "TEMP t1;\n";
    text += QString::asprintf("PARAM c1={%f,%f,%f,%f};\n", factor, factor, factor, factor).toStdString();
    text += "TEX t1,fragment.texcoord[0],texture[0],";
    text += input.textureTarget == GL_TEXTURE_2D ? "2D;\n" : "3D;\n";
    if (curve)
        text += kCurveLines;
    if (alwaysScales || exponent != 0)
        text += "MUL_SAT t1,t1,c1;\n";
    return text + kPaletteLines;
}

} // namespace

std::string fragmentProgramText(const ProgramInput& input)
{
    const int bits = input.bitsPerSample;
    if (bits == 8)
        return text8(input);
    if (bits >= 9 && bits <= 12)
        return text16(input, true);
    if (bits >= 13 && bits <= 16)
        return text16(input, false);
    logDebug("Unsupported bitdepth");
    return {};
}

Shaders::Shaders()
{
    const auto check = [](bool there, const char* text) {
        if (!there)
            logDebug("%s", text);
    };
    check(gl().ProgramStringARB != nullptr, "glProgramStringARB screwed");
    check(gl().BindProgramARB != nullptr, "glBindProgramARB screwed");
    check(gl().DeleteProgramsARB != nullptr, "glDeleteProgramsARB screwed");
    check(gl().GenProgramsARB != nullptr, "glGenProgramsARB screwed");
    check(gl().GetProgramivARB != nullptr, "glGetProgramiv screwed");
}

bool Shaders::hasEntries() const
{
    const GlTable& table = gl();
    return table.ProgramStringARB != nullptr && table.BindProgramARB != nullptr &&
           table.DeleteProgramsARB != nullptr && table.GenProgramsARB != nullptr &&
           table.GetProgramivARB != nullptr;
}

int channelSlots(const FrameState& frame)
{
    return static_cast<int>(frame.channels.size()) + (frame.view.zCorrection ? 1 : 0);
}

ProgramInput programInput(const FrameState& frame)
{
    if (frame.array == nullptr)
        return {};
    return {frame.array->bitsPerSample(), frame.array->significantBits(), frame.array->textureTarget(),
            channelSlots(frame),          frame.view.zCorrection,         frame.view.autoBitDepth};
}

bool Shaders::use(const FrameState& frame)
{
    const ProgramInput input = programInput(frame);
    const bool isTyped = !frame.view.programText.empty();
    if (!isTyped && m_input == input && m_isGenerated)
        return m_program.id() != 0 && bind(m_program.id());
    const std::string text = isTyped ? frame.view.programText : fragmentProgramText(input);
    m_input = input;
    m_isGenerated = !isTyped;
    if (std::exchange(m_wantedText, text) == text)
        return m_program.id() != 0 && bind(m_program.id());
    unload(m_program.id());
    if (text.empty() || !compile(text))
        return false;
    logDebug("shaderID %d", static_cast<int>(m_program.id()));
    return true;
}

bool Shaders::makeProgram(const FrameState& frame)
{
    if (frame.array == nullptr)
        return false;
    const std::string text = fragmentProgramText(programInput(frame));
    return !text.empty() && compile(text);
}

bool Shaders::compile(const std::string& text)
{
    m_programText = text;
    if (!hasEntries()) {
        m_errorText = "fragment programs are not supported";
        return false;
    }
    gl().BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, m_program.generate());
    gl().ProgramStringARB(GL_FRAGMENT_PROGRAM_ARB, GL_PROGRAM_FORMAT_ASCII_ARB,
                          static_cast<GLsizei>(text.size()), text.data());
    const GLenum error = gl().GetError();
    if (error == GL_NO_ERROR) {
        m_errorText = "Success";
        logDebug("Yay frag program is happy");
        bind(m_program.id());
        return true;
    }
    GLint position = -1;
    gl().GetIntegerv(GL_PROGRAM_ERROR_POSITION_ARB, &position);
    m_errorText = QString::asprintf("Error number: 0x%x\nError at position: %d\n", error, position) +
                  QString::fromStdString(text);
    for (int i = 0; i < 16; ++i) {
        const GLenum next = gl().GetError();
        if (next == GL_NO_ERROR)
            break;
        m_errorText += QString::asprintf("GL Error number: 0x%x", next);
    }
    log(LogLevel::Debug, m_errorText);
    m_program.clear();
    return false;
}

bool Shaders::unload(GLuint id)
{
    if (id == 0 || m_program.id() == 0)
        return false;
    m_program.clear();
    return true;
}

bool Shaders::bind(GLuint id)
{
    gl().BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, id);
    return true;
}

} // namespace tirn
