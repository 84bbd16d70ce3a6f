#include "gl/texturesinks.h"

#include <gtest/gtest.h>

#include "gl/glnames.h"
#include "glsupport/glrecorder.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using Calls = std::vector<std::string>;

class TextureSinks : public ::testing::Test
{
protected:
    test::GlRecorder gl{test::GlRecorder::Mode::StandAlone};
    test::LogCapture log;
    GlTextureSink sink;
    std::vector<unsigned> made;
    const std::uint16_t texels[8] = {};

    ~TextureSinks() override
    {
        for (const unsigned name : made)
            deleteSharedTexture(name);
    }
    /// What a call sent of one kind.
    Calls sent(unsigned name, const std::string& kind)
    {
        EXPECT_NE(name, 0U);
        made.push_back(name);
        return gl.texts({kind});
    }
};

std::string parameter(GLenum target, GLenum which, GLenum value)
{
    return "TexParameteri(" + std::to_string(target) + ", " + std::to_string(which) + ", " +
           std::to_string(value) + ")";
}

TEST_F(TextureSinks, PlanesAreLinearAndClamped)
{
    const Calls parameters = sent(sink.makeTexture2D(GL_LUMINANCE8, 4, 2, texels), "TexParameteri");
    EXPECT_EQ(parameters, (Calls{parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR),
                                 parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR),
                                 parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP),
                                 parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP)}));
    EXPECT_EQ(gl.texts({"TexImage2D"}).front(), "TexImage2D(3553, 0, 32832, 4, 2, 0, 6409, 5121, data)");
}

TEST_F(TextureSinks, EveryFormatHasItsPixels)
{
    const std::pair<GLenum, std::string> rows[] = {{GL_LUMINANCE8, "6409, 5121"},
                                                   {GL_LUMINANCE16, "6409, 5123"},
                                                   {GL_COLOR_INDEX8_EXT, "6400, 5121"},
                                                   {GL_HILO16_NV, "34548, 5123"}};
    for (const auto& [format, pixels] : rows) {
        gl.clear();
        const Calls images = sent(sink.makeTexture2D(static_cast<int>(format), 1, 1, texels), "TexImage2D");
        EXPECT_EQ(images.front(),
                  "TexImage2D(3553, 0, " + std::to_string(format) + ", 1, 1, 0, " + pixels + ", data)");
    }
}

TEST_F(TextureSinks, RectanglesAndVolumesGoToTheirTargets)
{
    EXPECT_TRUE(sent(sink.makeTextureRectangle(GL_LUMINANCE8, 3, 2, texels), "TexImage2D")
                    .front()
                    .starts_with("TexImage2D(34037, 0, 32832, 3, 2, 0"));
    EXPECT_TRUE(sent(sink.makeTexture3D(GL_LUMINANCE16, 2, 2, 2, texels), "TexImage3DEXT")
                    .front()
                    .starts_with("TexImage3DEXT(32879, 0, 32834, 2, 2, 2, 0"));
    EXPECT_EQ(gl.texts({"TexParameteri"}).back(), parameter(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, GL_CLAMP));
}

} // namespace
} // namespace tirn
