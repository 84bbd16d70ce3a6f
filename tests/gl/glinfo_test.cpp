#include "gl/glcontext.h"
#include "gl/glinfo.h"

#include <gtest/gtest.h>

#include "gl/gltable.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

class Card : public ::testing::Test
{
protected:
    HiddenContext hidden;
    GlInfo info{hidden};
    test::LogCapture log;
};

TEST_F(Card, HasTheExtensionsThatItsContextLists)
{
    ASSERT_TRUE(hidden.isValid());
    ASSERT_TRUE(hidden.makeCurrent());
    const auto listed = [&](const char* name) { return hidden.context().hasExtension(name); };
    EXPECT_EQ(info.hasFragmentProgram(), listed("GL_ARB_fragment_program"));
    EXPECT_EQ(info.hasMultitexture(), listed("GL_ARB_multitexture"));
    EXPECT_EQ(info.hasPalettedTexture(), listed("GL_EXT_paletted_texture"));
    EXPECT_EQ(info.hasSharedPalette(), listed("GL_EXT_shared_texture_palette"));
    EXPECT_EQ(info.hasTexture3D(), listed("GL_EXT_texture3D"));
    EXPECT_EQ(info.hasFloatBuffer(), listed("GL_NV_float_buffer"));
    EXPECT_EQ(info.hasAtiFragmentShader(), listed("GL_ATI_fragment_shader"));
    EXPECT_EQ(info.hasNonPowerOfTwo(), listed("GL_ARB_texture_non_power_of_two"));
    EXPECT_FALSE(info.hasExtension("GL_ARB_fragment"));
}

TEST_F(Card, LogsItsLimits)
{
    const GlCapabilities card = info.readCapabilities();
    EXPECT_GE(card.maxTexture2D, 1024);
    EXPECT_LE(card.maxProxyTexture, card.maxTexture2D);
    const QStringList lines = log.debugLines();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], QString("Max 2D texture size: %1").arg(card.maxTexture2D));
    EXPECT_EQ(lines[1], QString("Max 3D Texture size: %1").arg(card.maxTexture3D));
    EXPECT_EQ(lines[2], info.hasNonPowerOfTwo() ? "ARB_texture_non_power_of_two supported"
                                                : "ARB_texture_non_power_of_two NOT supported");
}

TEST_F(Card, LeavesNoErrorBehind)
{
    info.readCapabilities();
    EXPECT_EQ(gl().GetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST(CardAbilities, PalettesNeedTablesOrProgramsWithMultitexture)
{
    GlCapabilities card;
    EXPECT_FALSE(card.canEditPalettes());
    card.hasFragmentProgram = true;
    EXPECT_FALSE(card.canEditPalettes());
    card.hasMultitexture = true;
    EXPECT_TRUE(card.canEditPalettes());
    card = {};
    card.hasPalettedTexture = true;
    EXPECT_TRUE(card.canEditPalettes());
}

TEST_F(Card, NamesTheFirstExtensionThatIsMissing)
{
    EXPECT_EQ(info.firstMissing(""), "");
    EXPECT_EQ(info.firstMissing("GL_VERSION_1_2 GL_VERSION_1_4 GL_ARB_multitexture"), "");
    EXPECT_EQ(info.firstMissing("GL_ARB_multitexture GL_NO_such GL_neither"), "GL_NO_such");
}

TEST(GlVersion, LaterVersionsStandForEarlierOnes)
{
    EXPECT_TRUE(isVersionBefore("1.0", 2));
    EXPECT_TRUE(isVersionBefore("1.1.0 driver", 2));
    EXPECT_FALSE(isVersionBefore("1.2 driver", 2));
    EXPECT_TRUE(isVersionBefore("1.2 driver", 3));
    EXPECT_TRUE(isVersionBefore("1.3", 4));
    EXPECT_FALSE(isVersionBefore("1.5", 4));
    EXPECT_FALSE(isVersionBefore("4.5 (Compatibility Profile) Mesa", 4));
    EXPECT_FALSE(isVersionBefore("1.10", 4));
    EXPECT_TRUE(isVersionBefore("", 2));
}

} // namespace
} // namespace tirn
