#include "gl/texturemaps.h"

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using test::GlRecorder;
using test::LogCapture;

constexpr GLenum kFormats[] = {GL_COLOR_INDEX8_EXT, GL_LUMINANCE8, GL_LUMINANCE16, GL_HILO16_NV};

struct CreatorCase
{
    TextureCreator creator;
    int target;
    /// Which of the four formats it takes.
    const char* accepted;
    const char* label;
};

class TextureMaps : public ::testing::TestWithParam<CreatorCase>
{
protected:
    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LogCapture log;
    std::vector<std::uint8_t> texels = std::vector<std::uint8_t>(512);

    bool is3D() const { return GetParam().target == GL_TEXTURE_3D; }
    bool fill(bool isNew, GLenum format = GL_LUMINANCE8)
    {
        return fillTexture(GetParam().creator, 9, isNew, format, {8, 4, is3D() ? 2 : 1}, texels.data());
    }
    std::string target() const { return std::to_string(GetParam().target); }
};

TEST_P(TextureMaps, TakeTheFormatsOfTheirTable)
{
    const std::vector<std::pair<int, int>> pixels = {{GL_COLOR_INDEX, GL_UNSIGNED_BYTE},
                                                     {GL_LUMINANCE, GL_UNSIGNED_BYTE},
                                                     {GL_LUMINANCE, GL_UNSIGNED_SHORT},
                                                     {GL_HILO_NV, GL_UNSIGNED_SHORT}};
    for (std::size_t i = 0; i < 4; ++i) {
        const bool accepted = GetParam().accepted[i] == '1';
        const PixelFormat format = pixelFormat(GetParam().creator, kFormats[i]);
        EXPECT_EQ(format.format, accepted ? static_cast<GLenum>(pixels[i].first) : 0U) << i;
        EXPECT_EQ(format.type, accepted ? static_cast<GLenum>(pixels[i].second) : 0U) << i;
    }
    EXPECT_EQ(pixelFormat(GetParam().creator, GL_RGBA8).format, 0U);
}

TEST_P(TextureMaps, SetUpANewTexture)
{
    EXPECT_TRUE(fill(true));
    const std::string parameter = "TexParameteri(" + target() + ", ";
    std::vector<std::string> expected = {parameter + "10241, 9729)", parameter + "10240, 9729)",
                                         parameter + "10242, 33071)", parameter + "10243, 33071)"};
    if (is3D())
        expected.push_back(parameter + "32882, 33071)");
    EXPECT_EQ(gl.texts({"TexParameteri"}), expected);
    EXPECT_EQ(gl.texts({"BindTexture"}), (std::vector<std::string>{"BindTexture(" + target() + ", 9)",
                                                                   "BindTexture(" + target() + ", 0)"}));
    const PixelFormat pixels = pixelFormat(GetParam().creator, GL_LUMINANCE8);
    const std::string end =
        ", 0, " + std::to_string(pixels.format) + ", " + std::to_string(pixels.type) + ", data)";
    if (is3D())
        EXPECT_EQ(gl.texts({"TexImage3DEXT"}),
                  std::vector<std::string>{"TexImage3DEXT(32879, 0, 32832, 8, 4, 2" + end});
    else
        EXPECT_EQ(gl.texts({"TexImage2D"}),
                  std::vector<std::string>{"TexImage2D(" + target() + ", 0, 32832, 8, 4" + end});
}

TEST_P(TextureMaps, ReplaceTheWholeOfAnOldTexture)
{
    EXPECT_TRUE(fill(false));
    EXPECT_EQ(gl.count("TexParameteri") + gl.count("TexImage2D") + gl.count("TexImage3DEXT"), 0);
    const PixelFormat pixels = pixelFormat(GetParam().creator, GL_LUMINANCE8);
    const std::string end =
        ", " + std::to_string(pixels.format) + ", " + std::to_string(pixels.type) + ", data)";
    if (is3D())
        EXPECT_EQ(gl.texts({"TexSubImage3DEXT"}),
                  std::vector<std::string>{"TexSubImage3DEXT(32879, 0, 0, 0, 0, 8, 4, 2" + end});
    else
        EXPECT_EQ(gl.texts({"TexSubImage2D"}),
                  std::vector<std::string>{"TexSubImage2D(" + target() + ", 0, 0, 0, 8, 4" + end});
}

TEST_P(TextureMaps, LogErrorsUnderTheirLabel)
{
    gl.queueErrors({0x501});
    EXPECT_TRUE(fill(true));
    EXPECT_EQ(log.debugLines().last(), QString(GetParam().label) + ": 501");
}

TEST_P(TextureMaps, EnableOnlyThe3DTargetAroundTheirWork)
{
    fill(true);
    EXPECT_EQ(gl.texts({"Enable", "Disable"}),
              is3D() ? (std::vector<std::string>{"Enable(32879)", "Disable(32879)"})
                     : std::vector<std::string>{});
}

TEST_P(TextureMaps, ReadRowsWithoutPadding)
{
    fill(true);
    EXPECT_EQ(gl.texts({"PixelStorei"}), std::vector<std::string>{"PixelStorei(3317, 1)"});
}

TEST_P(TextureMaps, MissAnEntryOnlyIn3D)
{
    gl.table().TexImage3DEXT = nullptr;
    EXPECT_EQ(fill(true), !is3D());
    EXPECT_EQ(log.warnings(), is3D() ? QStringList{"glTexImage3DEXT is NULL"} : QStringList{});
    EXPECT_EQ(gl.count("TexParameteri") == 0, is3D());
}

TEST_P(TextureMaps, OnlyTheOneFor3DWordsTellsItsSizes)
{
    fill(true, GL_LUMINANCE16);
    const QString line = "internalformat 32834 x 8 y 4 z 2 format 6409 datype 5123";
    EXPECT_EQ(log.debugLines(),
              GetParam().creator == TextureCreator::Map3D16 ? QStringList{line} : QStringList{});
}

INSTANTIATE_TEST_SUITE_P(
    Creators, TextureMaps,
    ::testing::Values(
        CreatorCase{TextureCreator::Map2D8, GL_TEXTURE_2D, "1111", "2D 8bit Texmap Error"},
        CreatorCase{TextureCreator::Rectangle2D8, 0x84F5, "0100", "2D 8bit TexmapRect Error"},
        CreatorCase{TextureCreator::Map2D16, GL_TEXTURE_2D, "0011", "2D 16bit Texmap Error"},
        CreatorCase{TextureCreator::NonPowerOfTwo2D, GL_TEXTURE_2D, "0011", "2D NonPowerof2 Texmap Error"},
        CreatorCase{TextureCreator::Map3D8, GL_TEXTURE_3D, "1100", "3D 8bit Texmap Error"},
        CreatorCase{TextureCreator::Map3D16, GL_TEXTURE_3D, "0011", "3D 16bit Texmap Error"},
        CreatorCase{TextureCreator::NonPowerOfTwo3D, GL_TEXTURE_3D, "0011", "3D NonPowerof2 Texmap Error"},
        CreatorCase{TextureCreator::Bitmask2D, GL_TEXTURE_2D, "1100", "2D 8bit bitmask Error"}));

} // namespace
} // namespace tirn
