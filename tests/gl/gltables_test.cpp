#include "gl/gltables.h"

#include <gtest/gtest.h>

#include "gl/glnames.h"
#include "glsupport/glrecorder.h"
#include "palettes/palette.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using test::GlRecorder;
using test::LogCapture;

class PaletteTables : public ::testing::TestWithParam<RenderThreadKind>
{
protected:
    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LogCapture log;
    LiveGlNames before = liveGlNames();
    std::vector<std::uint8_t> table = std::vector<std::uint8_t>(1024, 7);
};

class TextureTables : public PaletteTables
{
protected:
    GlPaletteTables tables{GetParam(), nullptr};
};

TEST_P(TextureTables, MakeA1DTextureAndThenReplaceIt)
{
    const unsigned handle = tables.upload(0, table);
    EXPECT_EQ(handle, 1U);
    EXPECT_EQ(gl.texts(),
              (std::vector<std::string>{
                  "Enable(3552)", "GenTextures(1, data)", "BindTexture(3552, 1)", "PixelStorei(3317, 1)",
                  "TexParameteri(3552, 10240, 9729)", "TexParameteri(3552, 10241, 9729)",
                  "TexParameteri(3552, 10242, 33071)", "TexImage1D(3552, 0, 32856, 256, 0, 6408, 5121, data)",
                  "BindTexture(3552, 0)", "Disable(3552)", "GetError()", "Flush()"}));
    EXPECT_EQ(gl.callsOf("TexImage1D").front().bytes, table);
    gl.clear();
    EXPECT_EQ(tables.upload(handle, table), handle);
    EXPECT_EQ(gl.texts(),
              (std::vector<std::string>{"Enable(3552)", "BindTexture(3552, 1)", "PixelStorei(3317, 1)",
                                        "TexSubImage1D(3552, 0, 0, 256, 6408, 5121, data)",
                                        "BindTexture(3552, 0)", "Disable(3552)", "GetError()", "Flush()"}));
    tables.release(handle);
    EXPECT_EQ(gl.count("DeleteTextures"), 1);
    EXPECT_EQ(liveGlNames(), before);
}

TEST_P(TextureTables, AreAsWideAsThePalette)
{
    const unsigned handle = tables.upload(0, std::vector<std::uint8_t>(4 * 4096));
    EXPECT_EQ(gl.callsOf("TexImage1D").front().arguments[3], "4096");
    tables.release(handle);
}

TEST_P(TextureTables, WithoutANameDoNothingFurther)
{
    gl.refuseNames(true);
    EXPECT_EQ(tables.upload(0, table), 0U);
    EXPECT_EQ(gl.count("BindTexture") + gl.count("TexImage1D") + gl.count("GetError"), 0);
}

TEST_P(TextureTables, ThrowTheCodeOfAnErrorAndKeepNothing)
{
    gl.queueErrors({0x501});
    EXPECT_THROW(tables.upload(0, table), int);
    EXPECT_EQ(liveGlNames(), before);
    const unsigned handle = tables.upload(0, table);
    gl.queueErrors({0x505});
    try {
        tables.upload(handle, table);
        FAIL() << "no error was thrown";
    } catch (const int error) {
        EXPECT_EQ(error, 0x505);
    }
    // An old table stays with its palette.
    EXPECT_EQ(liveGlNames().textures, before.textures + 1);
    tables.release(handle);
}

INSTANTIATE_TEST_SUITE_P(FragmentPrograms, TextureTables,
                         ::testing::Values(RenderThreadKind::Nvidia, RenderThreadKind::FragmentProgram));

class ListTables : public ::testing::Test
{
protected:
    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LogCapture log;
    LiveGlNames before = liveGlNames();
    std::vector<std::uint8_t> table = std::vector<std::uint8_t>(1024, 7);
    GlPaletteTables tables{RenderThreadKind::Paletted, nullptr};
};

TEST_F(ListTables, AreRecordedAgainUnderTheSameId)
{
    const unsigned handle = tables.upload(0, table);
    EXPECT_EQ(gl.texts(), (std::vector<std::string>{"GenLists(1)", "NewList(1, 4864)",
                                                    "ColorTableEXT(33275, 6408, 256, 6408, 5121, data)",
                                                    "EndList()", "GetError()", "Flush()"}));
    EXPECT_EQ(gl.callsOf("ColorTableEXT").front().bytes, table);
    gl.clear();
    EXPECT_EQ(tables.upload(handle, std::vector<std::uint8_t>(1024, 9)), handle);
    EXPECT_EQ(gl.texts({"NewList", "GenLists", "DeleteLists"}), std::vector<std::string>{"NewList(1, 4864)"});
    tables.release(handle);
    EXPECT_EQ(gl.texts({"DeleteLists"}), std::vector<std::string>{"DeleteLists(1, 1)"});
    EXPECT_EQ(liveGlNames(), before);
}

TEST_F(ListTables, Are256WideForTwelveBits)
{
    std::vector<std::uint8_t> wide(4 * 4096, 1);
    wide[1023] = 77;
    tables.release(tables.upload(0, wide));
    EXPECT_EQ(gl.callsOf("ColorTableEXT").front().arguments[2], "256");
    EXPECT_EQ(gl.callsOf("ColorTableEXT").front().bytes,
              std::vector<std::uint8_t>(wide.begin(), wide.begin() + 1024));
}

TEST_F(ListTables, OfAShortPaletteAreFilledUp)
{
    tables.release(tables.upload(0, std::vector<std::uint8_t>(64, 5)));
    const std::vector<std::uint8_t> sent = gl.callsOf("ColorTableEXT").front().bytes;
    EXPECT_EQ(sent[63], 5);
    EXPECT_EQ(std::count(sent.begin() + 64, sent.end(), 0), 960);
}

TEST_F(ListTables, WithoutTheEntryStayEmptyLists)
{
    gl.table().ColorTableEXT = nullptr;
    const unsigned handle = tables.upload(0, table);
    EXPECT_EQ(handle, 1U);
    EXPECT_EQ(log.warnings(), QStringList{"No ColorTableEXT"});
    EXPECT_EQ(gl.count("NewList"), 0);
    tables.release(handle);
    EXPECT_EQ(liveGlNames(), before);
}

TEST_F(ListTables, ThrowTheCodeOfAnErrorAndKeepNothing)
{
    gl.queueErrors({0x502});
    EXPECT_THROW(tables.upload(0, table), int);
    EXPECT_EQ(liveGlNames(), before);
}

TEST(NoTables, TouchNoGl)
{
    const GlRecorder gl(GlRecorder::Mode::StandAlone);
    GlPaletteTables tables(RenderThreadKind::LostCause, nullptr);
    EXPECT_EQ(tables.upload(0, std::vector<std::uint8_t>(1024)), 0U);
    tables.release(0);
    EXPECT_EQ(gl.texts(), std::vector<std::string>{});
}

TEST(PaletteOnTheCard, SendsItsClampedBytes)
{
    GlRecorder gl(GlRecorder::Mode::StandAlone);
    GlPaletteTables tables(RenderThreadKind::FragmentProgram, nullptr);
    Palette palette("p", 8, &tables);
    palette.setEditFlags({true, true, true, true, false, false, false, false});
    palette.setRgb(3, 300, -4, 17.9, 255);
    gl.clear();
    palette.upload();
    const std::vector<std::uint8_t> sent = gl.callsOf("TexSubImage1D").front().bytes;
    EXPECT_EQ(std::vector<std::uint8_t>(sent.begin() + 12, sent.begin() + 16),
              (std::vector<std::uint8_t>{255, 0, 17, 255}));
}

class CurveTables : public ::testing::Test
{
protected:
    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LiveGlNames before = liveGlNames();
    GlCurveTextures curves{nullptr};
    std::vector<float> texels = {0.25F, 0.5F, 0.25F, 1.0F};
};

TEST_F(CurveTables, MakeALuminanceTextureAndThenReplaceIt)
{
    const CurveUpload first = curves.upload(0, texels);
    EXPECT_EQ(first.texture, 1U);
    EXPECT_EQ(first.error, 0U);
    EXPECT_EQ(gl.texts({"TexImage1D"}),
              std::vector<std::string>{"TexImage1D(3552, 0, 6409, 4, 0, 6409, 5126, data)"});
    EXPECT_EQ(gl.texts({"TexParameteri"}), (std::vector<std::string>{"TexParameteri(3552, 10240, 9729)",
                                                                     "TexParameteri(3552, 10241, 9729)",
                                                                     "TexParameteri(3552, 10242, 33071)"}));
    gl.clear();
    EXPECT_EQ(curves.upload(1, texels).texture, 1U);
    EXPECT_EQ(gl.texts({"TexImage1D", "TexSubImage1D"}),
              std::vector<std::string>{"TexSubImage1D(3552, 0, 0, 4, 6409, 5126, data)"});
    EXPECT_EQ(gl.texts().back(), "Flush()");
    curves.release(1);
    EXPECT_EQ(liveGlNames(), before);
}

TEST_F(CurveTables, TellTheCodeOfAnError)
{
    gl.queueErrors({0x500});
    const CurveUpload upload = curves.upload(0, texels);
    EXPECT_EQ(upload.error, 0x500U);
    curves.release(upload.texture);
    EXPECT_EQ(liveGlNames(), before);
}

TEST_F(CurveTables, WithoutANameMakeNothing)
{
    gl.refuseNames(true);
    EXPECT_EQ(curves.upload(0, texels).texture, 0U);
    EXPECT_EQ(gl.count("TexImage1D"), 0);
    curves.release(0);
    EXPECT_EQ(gl.count("DeleteTextures"), 0);
}

} // namespace
} // namespace tirn
