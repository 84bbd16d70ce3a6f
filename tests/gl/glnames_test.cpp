#include "gl/glnames.h"

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"

namespace tirn {
namespace {

using test::GlCall;
using test::GlRecorder;

class GlNames : public ::testing::Test
{
protected:
    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LiveGlNames before = liveGlNames();

    void TearDown() override { EXPECT_EQ(liveGlNames(), before); }
};

TEST_F(GlNames, TexturesAreDeletedNewestFirstInOneCall)
{
    {
        TextureNames names;
        EXPECT_EQ(names.add(), 1U);
        names.add();
        names.add();
        EXPECT_EQ(names.size(), 3U);
        EXPECT_EQ(liveGlNames().textures, before.textures + 3);
    }
    const std::vector<GlCall> deletions = gl.callsOf("DeleteTextures");
    ASSERT_EQ(deletions.size(), 1U);
    EXPECT_EQ(deletions[0].values, (std::vector<double>{3, 2, 1}));
}

TEST_F(GlNames, ATextureThatTheDriverRefusedIsAZeroThatDoesNotCount)
{
    TextureNames names;
    gl.refuseNames(true);
    EXPECT_EQ(names.add(), 0U);
    EXPECT_EQ(liveGlNames().textures, before.textures);
    EXPECT_EQ(names.size(), 1U);
}

TEST_F(GlNames, AnAdoptedTextureIsDeletedWithTheOthers)
{
    const GLuint shared = makeSharedTexture();
    TextureNames names;
    names.adopt(shared);
    names.clear();
    names.clear();
    EXPECT_EQ(gl.count("DeleteTextures"), 1);
}

TEST_F(GlNames, MovingHandsTheNamesOver)
{
    TextureNames first;
    first.add();
    TextureNames second(std::move(first));
    TextureNames third;
    third.add();
    third = std::move(second);
    EXPECT_EQ(gl.callsOf("DeleteTextures").front().values, std::vector<double>{2});
    EXPECT_EQ(third.size(), 1U);
    EXPECT_EQ(third[0], 1U);
}

TEST_F(GlNames, ListsAreMadeAndDeletedAsOneRun)
{
    {
        ListNames other(5);
        ListNames names(3);
        EXPECT_EQ(names.first(), 6U);
        EXPECT_EQ(names[2], 8U);
        EXPECT_EQ(liveGlNames().lists, before.lists + 8);
        other = std::move(names);
        EXPECT_EQ(other.first(), 6U);
    }
    EXPECT_EQ(gl.texts(), (std::vector<std::string>{"GenLists(5)", "GenLists(3)", "DeleteLists(1, 5)",
                                                    "DeleteLists(6, 3)"}));
}

TEST_F(GlNames, ListsThatTheDriverRefusedAreNone)
{
    gl.refuseNames(true);
    const ListNames names(3);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(names.first(), 0U);
    EXPECT_TRUE(ListNames(0).empty());
    EXPECT_TRUE(ListNames(-1).empty());
    EXPECT_EQ(gl.count("GenLists"), 1);
}

TEST_F(GlNames, AProgramReplacesTheOneBefore)
{
    {
        ProgramName program;
        program.generate();
        EXPECT_EQ(program.generate(), 2U);
        EXPECT_EQ(liveGlNames().programs, before.programs + 1);
        ProgramName taken(std::move(program));
        EXPECT_EQ(program.id(), 0U);
        EXPECT_EQ(taken.id(), 2U);
    }
    const std::vector<GlCall> deletions = gl.callsOf("DeleteProgramsARB");
    ASSERT_EQ(deletions.size(), 2U);
    EXPECT_EQ(deletions[0].values, std::vector<double>{1});
    EXPECT_EQ(deletions[1].values, std::vector<double>{2});
}

} // namespace
} // namespace tirn
