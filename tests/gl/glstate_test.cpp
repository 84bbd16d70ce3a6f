#include "gl/glstate.h"

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using test::GlRecorder;
using test::LogCapture;

TEST(GlErrors, NoneAreNotLogged)
{
    const GlRecorder gl(GlRecorder::Mode::StandAlone);
    const LogCapture log;
    EXPECT_EQ(reportGlErrors("Label"), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST(GlErrors, StandInOneLineUnderTheirLabel)
{
    GlRecorder gl(GlRecorder::Mode::StandAlone);
    const LogCapture log;
    gl.queueErrors({0x500, 0x501, 0x502});
    EXPECT_EQ(reportGlErrors("2D 8bit Texmap Error"), 0x500U);
    EXPECT_EQ(log.debugLines(),
              QStringList{"2D 8bit Texmap Error: 500GL Error number: 0x501GL Error number: 0x502"});
}

TEST(GlErrors, WithoutEndDoNotHangTheProgram)
{
    GlRecorder gl(GlRecorder::Mode::StandAlone);
    const LogCapture log;
    gl.table().GetError = []() -> GLenum { return 0x505; };
    EXPECT_EQ(reportGlErrors("Label"), 0x505U);
    EXPECT_EQ(log.debugLines().size(), 1);
}

TEST(GlScopes, UndoWhatTheyDid)
{
    const GlRecorder gl(GlRecorder::Mode::StandAlone);
    {
        const EnabledScope enabled(GL_TEXTURE_1D);
        const MatrixScope matrix;
        const ListScope list(7);
        const PrimitiveScope primitive(GL_QUADS);
    }
    EXPECT_EQ(gl.texts(),
              (std::vector<std::string>{"Enable(3552)", "PushMatrix()", "NewList(7, 4864)", "Begin(7)",
                                        "End()", "EndList()", "PopMatrix()", "Disable(3552)"}));
}

} // namespace
} // namespace tirn
