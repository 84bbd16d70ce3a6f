#include "render/shaders.h"

#include <gtest/gtest.h>

#include "gl/glcontext.h"
#include "glsupport/glrecorder.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using test::GlRecorder;
using test::LogCapture;

ProgramInput input(int bits, GLenum target = GL_TEXTURE_2D)
{
    ProgramInput all;
    all.bitsPerSample = bits;
    all.significantBits = bits;
    all.textureTarget = target;
    return all;
}

const std::string kCurve = "TEX t2,fragment.texcoord[0].z,texture[2],1D;\n"
                           "MUL t2,t2,4;\n"
                           "MUL_SAT t1,t1,t2;\n";
const std::string kEnd = "TEX result.color,t1,texture[1],1D;\nEND\n";

std::string text8(const std::string& temporaries, const std::string& target, const std::string& extra = "")
{
    return "!!ARBfp1.0\nTEMP " + temporaries + ";\nTEX t1,fragment.texcoord[0],texture[0]," + target + ";\n" +
           extra + kEnd;
}

std::string text16(const std::string& temporaries, const std::string& factor, const std::string& target,
                   const std::string& extra)
{
    return "!!ARBfp1.0\nTEMP " + temporaries + ";\nPARAM c1={" + factor + "," + factor + "," + factor + "," +
           factor + "};\nTEX t1,fragment.texcoord[0],texture[0]," + target + ";\n" + extra + kEnd;
}

const std::string kScale = "MUL_SAT t1,t1,c1;\n";

TEST(ProgramText, OfEightBitsReadsThePaletteAtTheSample)
{
    EXPECT_EQ(fragmentProgramText(input(8)), text8("t1", "2D"));
    EXPECT_EQ(fragmentProgramText(input(8, GL_TEXTURE_3D)), text8("t1", "3D"));
    EXPECT_EQ(fragmentProgramText(input(8, GL_TEXTURE_RECTANGLE_NV)), text8("t1", "RECT"));
}

TEST(ProgramText, OfEightBitsDeclaresATemporaryForEachSlot)
{
    ProgramInput four = input(8);
    four.channelSlots = 4;
    EXPECT_EQ(fragmentProgramText(four), text8("t1,t2,t3,t4", "2D"));
}

TEST(ProgramText, OfEightBitsIgnoresTheBitsThatAreUsed)
{
    ProgramInput dim = input(8);
    dim.significantBits = 3;
    dim.autoBitDepth = true;
    EXPECT_EQ(fragmentProgramText(dim), text8("t1", "2D"));
}

TEST(ProgramText, OfAnUnknownTargetWarns)
{
    const LogCapture log;
    EXPECT_EQ(fragmentProgramText(input(8, GL_TEXTURE_1D)),
              "!!ARBfp1.0\nTEMP t1;\nTEX t1,fragment.texcoord[0],texture[0]," + kEnd);
    EXPECT_EQ(log.warnings(), QStringList{"Unknown texture type!!!!"});
}

TEST(ProgramText, CorrectsDepthOnlyInThe3DTarget)
{
    ProgramInput deep = input(8, GL_TEXTURE_3D);
    deep.zCorrection = true;
    deep.channelSlots = 2;
    EXPECT_EQ(fragmentProgramText(deep), text8("t1,t2", "3D", kCurve));
    ProgramInput flat = input(8);
    flat.zCorrection = true;
    EXPECT_EQ(fragmentProgramText(flat), text8("t1", "2D"));
    ProgramInput deep12 = input(12, GL_TEXTURE_3D);
    deep12.zCorrection = true;
    EXPECT_EQ(fragmentProgramText(deep12), text16("t1,t2", "16.000000", "3D", kCurve + kScale));
    ProgramInput deep16 = input(16, GL_TEXTURE_3D);
    deep16.zCorrection = true;
    EXPECT_EQ(fragmentProgramText(deep16), text16("t1,t2", "1.000000", "3D", kCurve));
    ProgramInput flat16 = input(16);
    flat16.zCorrection = true;
    EXPECT_EQ(fragmentProgramText(flat16), text16("t1", "1.000000", "2D", ""));
}

TEST(ProgramText, OfNineToTwelveBitsAlwaysScalesBySixteen)
{
    for (const int bits : {9, 10, 11, 12}) {
        const LogCapture log;
        EXPECT_EQ(fragmentProgramText(input(bits)), text16("t1", "16.000000", "2D", kScale));
        EXPECT_EQ(log.lines(), QStringList{"Compile shader for 12 bit data"});
    }
}

TEST(ProgramText, OfThirteenToSixteenBitsScalesNothing)
{
    for (const int bits : {13, 14, 15, 16}) {
        const LogCapture log;
        EXPECT_EQ(fragmentProgramText(input(bits, GL_TEXTURE_3D)), text16("t1", "1.000000", "3D", ""));
        EXPECT_EQ(log.lines(), QStringList{"Compile shader for 16 bit data"});
    }
}

TEST(ProgramText, StretchesToTheBitsThatAreUsed)
{
    ProgramInput ten = input(10);
    ten.autoBitDepth = true;
    EXPECT_EQ(fragmentProgramText(ten), text16("t1", "64.000000", "2D", kScale));
    ProgramInput eightOf16 = input(16);
    eightOf16.significantBits = 8;
    eightOf16.autoBitDepth = true;
    const LogCapture log;
    EXPECT_EQ(fragmentProgramText(eightOf16), text16("t1", "256.000000", "2D", kScale));
    EXPECT_EQ(log.lines(), QStringList{"Compile shader for 8 bit data"});
}

TEST(ProgramText, OfFullSixteenBitsNeedsNoStretch)
{
    ProgramInput full = input(16);
    full.autoBitDepth = true;
    EXPECT_EQ(fragmentProgramText(full), text16("t1", "1.000000", "2D", ""));
    ProgramInput full12 = input(12);
    full12.significantBits = 16;
    full12.autoBitDepth = true;
    EXPECT_EQ(fragmentProgramText(full12), text16("t1", "1.000000", "2D", kScale));
}

TEST(ProgramText, OfWordsTakesAnyTargetBut2DFor3D)
{
    EXPECT_EQ(fragmentProgramText(input(16, GL_TEXTURE_RECTANGLE_NV)), text16("t1", "1.000000", "3D", ""));
}

TEST(ProgramText, OfAnotherDepthIsEmpty)
{
    for (const int bits : {0, 7, 17, 32}) {
        const LogCapture log;
        EXPECT_EQ(fragmentProgramText(input(bits)), "");
        EXPECT_EQ(log.lines(), QStringList{"Unsupported bitdepth"});
    }
}

TEST(ShaderEntries, ThatAreMissingAreLogged)
{
    GlRecorder gl(GlRecorder::Mode::StandAlone);
    gl.table().ProgramStringARB = nullptr;
    gl.table().BindProgramARB = nullptr;
    gl.table().DeleteProgramsARB = nullptr;
    gl.table().GenProgramsARB = nullptr;
    gl.table().GetProgramivARB = nullptr;
    const LogCapture log;
    Shaders shaders;
    EXPECT_EQ(log.lines(), (QStringList{"glProgramStringARB screwed", "glBindProgramARB screwed",
                                        "glDeleteProgramsARB screwed", "glGenProgramsARB screwed",
                                        "glGetProgramiv screwed"}));
    EXPECT_FALSE(shaders.compile("!!ARBfp1.0\nEND\n"));
    EXPECT_EQ(gl.texts(), std::vector<std::string>{});
}

TEST(ShaderEntries, ThatAreThereAreNotLogged)
{
    const GlRecorder gl(GlRecorder::Mode::StandAlone);
    const LogCapture log;
    const Shaders shaders;
    EXPECT_EQ(log.lines(), QStringList{});
    EXPECT_FALSE(ViewState().autoBitDepth);
    EXPECT_FALSE(ViewState().zCorrection);
    EXPECT_FALSE(shaders.trickFlagA);
    EXPECT_FALSE(shaders.trickFlagB);
}

TEST(ShaderCompile, GeneratesSendsAndBinds)
{
    const GlRecorder gl(GlRecorder::Mode::StandAlone);
    Shaders shaders;
    EXPECT_TRUE(shaders.compile("text"));
    EXPECT_EQ(gl.texts(), (std::vector<std::string>{"GenProgramsARB(1, data)", "BindProgramARB(34820, 1)",
                                                    "ProgramStringARB(34820, 34933, 4, data)", "GetError()",
                                                    "BindProgramARB(34820, 1)"}));
    EXPECT_EQ(shaders.programText(), "text");
}

TEST(ShaderCompile, TellsEveryErrorAndLeavesNoProgram)
{
    GlRecorder gl(GlRecorder::Mode::StandAlone);
    gl.table().GetIntegerv = [](GLenum name, GLint* value) {
        *value = name == GL_PROGRAM_ERROR_POSITION_ARB ? 17 : 0;
    };
    gl.queueErrors({0x502, 0x501, 0x500});
    const LiveGlNames before = liveGlNames();
    const LogCapture log;
    Shaders shaders;
    EXPECT_FALSE(shaders.compile("bad text\n"));
    EXPECT_EQ(shaders.errorText(), "Error number: 0x502\nError at position: 17\nbad text\n"
                                   "GL Error number: 0x501GL Error number: 0x500");
    EXPECT_EQ(log.debugLines().last(), shaders.errorText());
    EXPECT_EQ(shaders.currentProgram(), 0U);
    EXPECT_EQ(liveGlNames(), before);
    EXPECT_EQ(gl.count("DeleteProgramsARB"), 1);
}

TEST(ShaderCompile, UnloadsOnlyWhatThereIs)
{
    const GlRecorder gl(GlRecorder::Mode::StandAlone);
    Shaders shaders;
    EXPECT_FALSE(shaders.unload(5));
    shaders.compile("text");
    EXPECT_FALSE(shaders.unload(0));
    EXPECT_EQ(shaders.currentProgram(), 1U);
    EXPECT_TRUE(shaders.unload(shaders.currentProgram()));
    EXPECT_EQ(shaders.currentProgram(), 0U);
    EXPECT_TRUE(shaders.bind(3));
    EXPECT_EQ(gl.texts().back(), "BindProgramARB(34820, 3)");
}

TEST(ShaderCompile, NeedsAVolume)
{
    const GlRecorder gl(GlRecorder::Mode::StandAlone);
    Shaders shaders;
    FrameState frame;
    EXPECT_FALSE(shaders.makeProgram(frame));
    EXPECT_EQ(channelSlots(frame), 0);
    VoxelArray array(4, 4, 4, {});
    frame.array = &array;
    frame.channels.resize(3);
    array.stack().bitDepth = 8;
    EXPECT_TRUE(shaders.makeProgram(frame));
    EXPECT_EQ(shaders.programText(), text8("t1,t2,t3", "2D"));
    frame.view.zCorrection = true;
    EXPECT_EQ(channelSlots(frame), 4);
    array.stack().bitDepth = 20;
    EXPECT_FALSE(shaders.makeProgram(frame));
}

TEST(ShaderCompile, TakesItsBitsFromTheVolume)
{
    const GlRecorder gl(GlRecorder::Mode::StandAlone);
    Shaders shaders;
    VoxelArray array(4, 4, 4, {});
    array.stack().bitDepth = 16;
    array.stack().maxValue = 255;
    FrameState frame;
    frame.array = &array;
    frame.view.autoBitDepth = true;
    EXPECT_TRUE(shaders.makeProgram(frame));
    EXPECT_EQ(shaders.programText(), text16("t1", "256.000000", "2D", kScale));
}

/// On the driver that there is.
class RealShaders : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(context.makeCurrent());
        ASSERT_NE(gl().ProgramStringARB, nullptr) << "the driver has no fragment programs";
    }
    HiddenContext context;
};

TEST_F(RealShaders, EveryTextCompiles)
{
    Shaders shaders;
    for (const int bits : {8, 10, 12, 14, 16}) {
        for (const GLenum target : {GL_TEXTURE_2D, GL_TEXTURE_3D}) {
            for (const int flags : {0, 1, 2, 3}) {
                ProgramInput all = input(bits, target);
                all.zCorrection = (flags & 1) != 0;
                all.autoBitDepth = (flags & 2) != 0;
                all.channelSlots = 2 + (flags & 1);
                all.significantBits = bits - 2;
                EXPECT_TRUE(shaders.compile(fragmentProgramText(all)))
                    << fragmentProgramText(all) << qPrintable(shaders.errorText());
            }
        }
    }
}

TEST_F(RealShaders, SuccessIsTold)
{
    const LogCapture log;
    Shaders shaders;
    EXPECT_TRUE(shaders.compile(fragmentProgramText(input(8))));
    EXPECT_EQ(log.lines(), QStringList{"Yay frag program is happy"});
    EXPECT_EQ(shaders.errorText(), "Success");
    EXPECT_NE(shaders.currentProgram(), 0U);
}

TEST_F(RealShaders, AMistakeIsToldWithItsPlace)
{
    const LiveGlNames before = liveGlNames();
    Shaders shaders;
    shaders.compile(fragmentProgramText(input(8)));
    const std::string bad = "!!ARBfp1.0\nNONSENSE t1;\nEND\n";
    const LogCapture log;
    EXPECT_FALSE(shaders.compile(bad));
    EXPECT_EQ(shaders.currentProgram(), 0U);
    EXPECT_EQ(shaders.programText(), bad);
    const QString text = shaders.errorText();
    EXPECT_TRUE(text.startsWith("Error number: 0x502\nError at position: ")) << qPrintable(text);
    EXPECT_FALSE(text.contains("position: -1"));
    EXPECT_TRUE(text.contains(QString::fromStdString("\n" + bad)));
    EXPECT_EQ(log.lines(), QStringList{text});
    EXPECT_EQ(liveGlNames(), before);
    EXPECT_TRUE(shaders.compile(fragmentProgramText(input(8))));
}

} // namespace
} // namespace tirn
