// Encoding through the images' own encoder, which knows no blocks.

#include "glsupport/recordedvolume.h"

namespace tirn {
namespace {

using test::denseStack;
using test::PlainStack;

using EncodeThroughSink = test::RecordedVolume;

TEST_F(EncodeThroughSink, AllImagesInOneGo)
{
    const auto array = prepared({denseStack(4, 3, 2), denseStack(4, 3, 2)});
    log.clear();
    EXPECT_TRUE(array->encodeAll(GL_TEXTURE_2D, -1));
    EXPECT_EQ(gl.count("TexImage2D"), 18);
    EXPECT_EQ(array->textures().size(), 18U);
    EXPECT_EQ(log.lines().first(), "started encode");
    EXPECT_TRUE(array->isComplete());
    EXPECT_EQ(array->cut, (CutBox{0, 3, 0, 2, 0, 1}));
    EXPECT_EQ(array->encodedImages(), 2);
    EXPECT_FALSE(array->channels()[0].stats.histogram.empty());
}

TEST_F(EncodeThroughSink, ASecondTimeWarnsAndSucceeds)
{
    const auto array = prepared({denseStack(4, 3, 2)});
    ASSERT_TRUE(array->encodeAll(GL_TEXTURE_2D, -1));
    EXPECT_TRUE(array->encodeAll(GL_TEXTURE_2D, -1));
    EXPECT_EQ(gl.count("TexImage2D"), 9);
    EXPECT_EQ(log.warnings(), QStringList{"Warning: array already encoded the stack.  Nothing to do."});
}

TEST_F(EncodeThroughSink, ImagesWithoutTexturesFailAndClearTheList)
{
    const auto array = prepared({denseStack(4, 3, 2), denseStack(4, 3, 2)});
    array->images()[1]->freeStack();
    EXPECT_FALSE(array->encodeAll(GL_TEXTURE_2D, -1));
    EXPECT_TRUE(array->textures().empty());
    EXPECT_EQ(log.warnings().last(), "failed to generate texmaps");
    EXPECT_EQ(liveGlNames().textures, 0);
}

TEST_F(EncodeThroughSink, AnotherAttemptKeepsTheQuadsAndTheirDepth)
{
    const auto array = prepared({denseStack(4, 4, 4)});
    array->images()[0]->freeStack();
    EXPECT_FALSE(array->encodeAll(GL_TEXTURE_3D, 7));
    gl.clear();
    EXPECT_FALSE(array->encodeAll(GL_TEXTURE_3D, 7));
    EXPECT_EQ(gl.count("MultiTexCoord3fARB"), 0);
    EXPECT_EQ(array->finalDepth(), 7);
    EXPECT_EQ(array->quads().size(), 4U + 4U + 7U);
}

TEST_F(EncodeThroughSink, TheVolumeTargetMakesOneTextureAChannel)
{
    const auto array = prepared({denseStack(4, 4, 4, 3, 16)});
    EXPECT_TRUE(array->encodeAll(GL_TEXTURE_3D, 7));
    EXPECT_EQ(gl.count("TexImage3DEXT"), 3);
    EXPECT_EQ(array->cut.zMax, 6);
}

TEST_F(EncodeThroughSink, BadSizesAreTold)
{
    VoxelArray array(0, 4, 4, {});
    array.stack().bitDepth = 8;
    EXPECT_FALSE(array.encodeAll(GL_TEXTURE_2D, -1));
    EXPECT_FALSE(array.encodeNext(GL_TEXTURE_2D, -1));
    EXPECT_EQ(log.warnings(), (QStringList{"dimensions not valid or stack not read.",
                                           "Error: dimensions not valid or stack not read."}));
}

TEST_F(EncodeThroughSink, OneImageAtATimeForAStackThatGrows)
{
    VolumeOptions options;
    options.conserveMemory = true;
    const auto array = prepared({denseStack(4, 3, 2)}, options);
    array->cut = {};
    EXPECT_TRUE(array->encodeNext(GL_TEXTURE_2D, -1));
    EXPECT_EQ(array->encodedImages(), 1);
    EXPECT_EQ(array->cut, (CutBox{0, 3, 0, 2, 0, 1}));
    EXPECT_TRUE(log.contains("encoding..........0"));
    EXPECT_TRUE(log.contains("Done generating statistics"));
    EXPECT_TRUE(log.contains("Conserving memory"));
    EXPECT_TRUE(log.contains("*** stack size 9"));
    EXPECT_FALSE(array->images()[0]->isLoaded());

    array->appendImage(test::imageOf(denseStack(4, 3, 2)));
    array->setTimePoints(2);
    gl.clear();
    EXPECT_TRUE(array->encodeNext(GL_TEXTURE_2D, -1));
    EXPECT_TRUE(log.contains("encoding..........1"));
    EXPECT_TRUE(log.contains("*** stack size 18"));
    EXPECT_EQ(gl.count("NewList"), 0);

    EXPECT_TRUE(array->encodeNext(GL_TEXTURE_2D, -1));
    EXPECT_EQ(log.count("*** stack size 18"), 2);
}

TEST_F(EncodeThroughSink, ANextImageWithoutTexturesClearsTheList)
{
    const auto array = prepared({denseStack(4, 3, 2), denseStack(4, 3, 2)});
    array->images()[1]->freeStack();
    EXPECT_TRUE(array->encodeNext(GL_TEXTURE_2D, -1));
    EXPECT_FALSE(array->encodeNext(GL_TEXTURE_2D, -1));
    EXPECT_EQ(log.warnings().last(), "failed to generate texmaps");
    EXPECT_TRUE(array->textures().empty());
}

} // namespace
} // namespace tirn
