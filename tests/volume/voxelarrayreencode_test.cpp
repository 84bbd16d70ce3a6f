#include "glsupport/recordedvolume.h"

#include <QTemporaryDir>

#include "support/picfile.h"

namespace tirn {
namespace {

using test::denseStack;
using test::mirrored;
using test::PlainStack;

PlainStack inverted(PlainStack stack)
{
    for (std::uint16_t& voxel : stack.voxels)
        voxel = static_cast<std::uint16_t>((1 << stack.bits) - 1 - voxel);
    return stack;
}

class Reencode : public test::RecordedVolume
{
protected:
    std::unique_ptr<VoxelArray> encoded(const std::vector<PlainStack>& stacks)
    {
        auto array = prepared(stacks, limited(4));
        for (std::size_t i = 0; i < stacks.size(); ++i)
            array->encode(GL_TEXTURE_2D, -1);
        gl.clear();
        return array;
    }
};

TEST_F(Reencode, ReplacesTheContentsUnderTheSameNames)
{
    const PlainStack stack = denseStack(5, 3, 2, 2);
    const auto array = encoded({stack});
    const std::vector<GLuint> before = names(array->textures());
    EXPECT_TRUE(array->reencode(0));
    EXPECT_EQ(names(array->textures()), before);
    EXPECT_EQ(sent("TexSubImage2D"), slicesOf(stack, 4));
    EXPECT_EQ(gl.count("TexImage2D") + gl.count("GenTextures") + gl.count("NewList"), 0);
    EXPECT_EQ(array->encodedImages(), 1);
}

TEST_F(Reencode, OfALaterTimePointReplacesItsOwnTextures)
{
    const PlainStack second = denseStack(4, 4, 4);
    const auto array = encoded({denseStack(4, 4, 4), second});
    EXPECT_TRUE(array->reencode(1));
    EXPECT_EQ(sent("TexSubImage2D"), slicesOf(second, 4));
    EXPECT_EQ(gl.texts({"BindTexture"})[0],
              "BindTexture(3553, " + std::to_string(array->textures()[12]) + ")");
}

TEST_F(Reencode, ReplacesBlocksOfTheVolume)
{
    const PlainStack stack = denseStack(8, 4, 4, 1, 16);
    auto array = prepared({stack}, limited(4));
    array->encode(GL_TEXTURE_3D, -1);
    gl.clear();
    EXPECT_TRUE(array->reencode(0));
    EXPECT_EQ(sent("TexSubImage3DEXT"), bytesOf(referenceBlocks(stack, 0, 4), 16));
}

TEST_F(Reencode, OfAnImageThatIsNotThereFails)
{
    const auto array = encoded({denseStack(4, 4, 4)});
    EXPECT_FALSE(array->reencode(-1));
    EXPECT_FALSE(array->reencode(1));
    EXPECT_EQ(gl.texts(), std::vector<std::string>{});
}

TEST_F(Reencode, OfVoxelsThatCannotBeReadAgainFails)
{
    const auto array = encoded({denseStack(4, 4, 4)});
    array->images()[0]->freeStack();
    EXPECT_FALSE(array->reencode(0));
    EXPECT_EQ(gl.count("TexSubImage2D"), 0);
}

TEST_F(Reencode, FlipMirrorsAllImagesAndTogglesItsFlag)
{
    const PlainStack first = denseStack(4, 3, 2);
    const auto array = encoded({first, inverted(first)});
    EXPECT_TRUE(array->flip('X'));
    EXPECT_TRUE(array->flipX());
    auto expected = slicesOf(mirrored(first, 0), 4);
    for (const auto& bytes : slicesOf(inverted(mirrored(first, 0)), 4))
        expected.push_back(bytes);
    EXPECT_EQ(sent("TexSubImage2D"), expected);
    gl.clear();
    EXPECT_TRUE(array->flip('x'));
    EXPECT_FALSE(array->flipX());
    EXPECT_EQ(sent("TexSubImage2D").front(), slicesOf(first, 4).front());
}

TEST_F(Reencode, FlipKnowsThreeAxes)
{
    const PlainStack stack = denseStack(4, 3, 2);
    const auto array = encoded({stack});
    EXPECT_TRUE(array->flip('y'));
    EXPECT_EQ(sent("TexSubImage2D"), slicesOf(mirrored(stack, 1), 4));
    gl.clear();
    EXPECT_TRUE(array->flip('Z'));
    EXPECT_EQ(sent("TexSubImage2D"), slicesOf(mirrored(mirrored(stack, 1), 2), 4));
    EXPECT_TRUE(array->flipY() && array->flipZ() && !array->flipX());
    gl.clear();
    for (const char none : {'W', 'w', '[', '{', '1'})
        EXPECT_FALSE(array->flip(none));
    EXPECT_EQ(gl.texts(), std::vector<std::string>{});
}

TEST_F(Reencode, InvertTurnsTheValuesOver)
{
    const PlainStack stack = denseStack(4, 3, 2, 1, 12);
    const auto array = encoded({stack});
    EXPECT_TRUE(array->invert());
    EXPECT_TRUE(array->inverted());
    EXPECT_EQ(sent("TexSubImage2D"), slicesOf(inverted(stack), 4));
    gl.clear();
    EXPECT_TRUE(array->invert());
    EXPECT_FALSE(array->inverted());
    EXPECT_EQ(sent("TexSubImage2D"), slicesOf(stack, 4));
}

/// An array that let its voxels go and has to read its file again.
class ReencodeFromFile : public Reencode
{
protected:
    QTemporaryDir directory;
    PlainStack stack = PlainStack::blank(4, 3, 2);
    std::unique_ptr<VoxelArray> array;

    ReencodeFromFile()
    {
        test::PicFile file;
        for (int z = 0; z < 2; ++z)
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < 4; ++x)
                    stack.at(x, y, z) = static_cast<std::uint16_t>(x + 10 * y + 100 * z);
        VolumeOptions options = limited(4);
        options.conserveMemory = true;
        array = std::make_unique<VoxelArray>(options);
        auto image = std::make_shared<ImageFile>(QStringList{file.save(directory.filePath("s.pic"))});
        EXPECT_TRUE(image->read());
        array->appendImage(std::move(image));
        array->stack() = array->images().front()->attributes();
        array->setChannelCount(1);
        array->setTimePoints(1);
        array->encode(GL_TEXTURE_2D, -1);
        gl.clear();
    }
    std::vector<std::vector<std::uint8_t>> shown()
    {
        auto bytes = sent("TexSubImage2D");
        gl.clear();
        return bytes;
    }
};

TEST_F(ReencodeFromFile, ReadsTheVoxelsAndLetsThemGoAgain)
{
    EXPECT_TRUE(array->reencode(0));
    EXPECT_EQ(shown(), slicesOf(stack, 4));
    EXPECT_FALSE(array->images()[0]->isLoaded());
}

TEST_F(ReencodeFromFile, FlipsAddUp)
{
    EXPECT_TRUE(array->flip('X'));
    EXPECT_EQ(shown(), slicesOf(mirrored(stack, 0), 4));
    EXPECT_TRUE(array->flip('Z'));
    EXPECT_EQ(shown(), slicesOf(mirrored(mirrored(stack, 0), 2), 4));
    EXPECT_TRUE(array->flip('X'));
    EXPECT_EQ(shown(), slicesOf(mirrored(stack, 2), 4));
    EXPECT_FALSE(array->images()[0]->isLoaded());
}

TEST_F(ReencodeFromFile, InvertAndFlipAddUpInEitherOrder)
{
    EXPECT_TRUE(array->flip('Y'));
    EXPECT_TRUE(array->invert());
    gl.clear();
    EXPECT_TRUE(array->flip('X'));
    EXPECT_EQ(shown(), slicesOf(inverted(mirrored(mirrored(stack, 0), 1)), 4));
    EXPECT_TRUE(array->invert());
    EXPECT_EQ(shown(), slicesOf(mirrored(mirrored(stack, 0), 1), 4));
    EXPECT_TRUE(array->invert());
    EXPECT_EQ(shown(), slicesOf(inverted(mirrored(mirrored(stack, 0), 1)), 4));
}

TEST_F(ReencodeFromFile, AFileThatWentAwayFailsAndTheFlagsStay)
{
    directory.remove();
    EXPECT_FALSE(array->flip('X'));
    EXPECT_FALSE(array->invert());
    EXPECT_EQ(array->transforms(), DataTransforms());
    EXPECT_EQ(gl.count("TexSubImage2D"), 0);
}

} // namespace
} // namespace tirn
