// What the render lists of the three drawing kinds hold, call by call.

#include <gtest/gtest.h>

#include "glsupport/recordedrig.h"

namespace tirn {
namespace {

using test::denseStack;
using test::LogCapture;
using test::RecordedRig;

std::string bind(GLenum target, GLuint name)
{
    return "BindTexture(" + std::to_string(target) + ", " + std::to_string(name) + ")";
}
std::string unit(int number) { return "ActiveTextureARB(" + std::to_string(GL_TEXTURE0_ARB + number) + ")"; }
std::string call(GLuint list) { return "CallList(" + std::to_string(list) + ")"; }

/// The calls between the start and the end of the list.
std::vector<std::string> recorded(const std::vector<std::string>& calls)
{
    const auto first = std::find_if(calls.begin(), calls.end(),
                                    [](const std::string& text) { return text.starts_with("NewList"); });
    const auto last = std::find(calls.begin(), calls.end(), "EndList()");
    return first == calls.end() ? std::vector<std::string>{} : std::vector<std::string>(first + 1, last);
}

using Calls = std::vector<std::string>;

TEST(PalettedRenderList, BindsEachSliceCallsItsPaletteAndDrawsIt)
{
    RecordedRig rig(RenderThreadKind::Paletted);
    const VoxelArray& array = rig.show({denseStack(2, 2, 2, 2)});
    rig.makePalettes(2);
    const GLuint first = rig.scene.palettes[0]->glHandle();
    const GLuint second = rig.scene.palettes[1]->glHandle();
    const auto texture = [&](std::size_t index) { return bind(GL_TEXTURE_2D, array.textures()[index]); };
    const auto quad = [&](std::size_t index) { return call(array.quads()[index]); };
    // Two planes of each group; channel 1 begins at texture 6; from far to near.
    EXPECT_EQ(recorded(rig.build(Orientation::XYForward)),
              (Calls{texture(5), call(first), quad(5), texture(11), call(second), quad(5), texture(4),
                     call(first), quad(4), texture(10), call(second), quad(4), bind(GL_TEXTURE_2D, 0)}));
    EXPECT_EQ(recorded(rig.build(Orientation::XYReverse)),
              (Calls{texture(4), call(first), quad(4), texture(10), call(second), quad(4), texture(5),
                     call(first), quad(5), texture(11), call(second), quad(5), bind(GL_TEXTURE_2D, 0)}));
    EXPECT_EQ(recorded(rig.build(Orientation::YZForward)).front(), texture(3));
    EXPECT_EQ(recorded(rig.build(Orientation::XZForward)).front(), texture(1));
}

TEST(PalettedRenderList, StartsAndEndsAsOneCompiledList)
{
    RecordedRig rig(RenderThreadKind::Paletted);
    rig.show({denseStack(2, 2, 2)});
    rig.makePalettes(1);
    const Calls calls = rig.build(Orientation::XYForward);
    EXPECT_EQ(calls[0], "GenLists(1)");
    EXPECT_TRUE(calls[1].starts_with("NewList(") && calls[1].ends_with(", 4864)"));
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "EndList()"), 1);
}

TEST(RenderList, LeavesHiddenChannelsOut)
{
    RecordedRig rig(RenderThreadKind::Paletted);
    VoxelArray& array = rig.show({denseStack(2, 2, 2, 7)});
    rig.makePalettes(7);
    for (std::size_t c = 0; c < 7; ++c)
        array.channels()[c].display.state = static_cast<ChannelState>(c);
    const Calls calls = recorded(rig.build(Orientation::XYForward));
    EXPECT_EQ(calls.size(), 2U * 4 * 3 + 1);
    for (std::size_t c = 0; c < 7; ++c)
        EXPECT_EQ(std::count(calls.begin(), calls.end(), call(rig.scene.palettes[c]->glHandle())),
                  c % 2 == 0 ? 2 : 0);
}

TEST(RenderList, DrawsTheBlocksOfASliceOneAfterTheOther)
{
    RecordedRig rig(RenderThreadKind::Paletted);
    test::VolumeSpec spec;
    spec.blockLimit = 2;
    const VoxelArray& array = rig.show({denseStack(4, 2, 2)}, spec);
    rig.makePalettes(1);
    const GLuint palette = rig.scene.palettes[0]->glHandle();
    // Blocks 2, 1, 1: 2 * 2 quads across y, 4 across x, 2 * 2 across z.
    Calls expected;
    for (const std::size_t quad : {10U, 11U, 8U, 9U}) {
        for (const std::string& text :
             {bind(GL_TEXTURE_2D, array.textures()[quad]), call(palette), call(array.quads()[quad])})
            expected.push_back(text);
    }
    expected.push_back(bind(GL_TEXTURE_2D, 0));
    EXPECT_EQ(recorded(rig.build(Orientation::XYForward)), expected);
}

TEST(RenderList, TakesTheTexturesOfTheTimePoint)
{
    RecordedRig rig(RenderThreadKind::Paletted);
    VoxelArray& array = rig.show({denseStack(2, 2, 2, 2), denseStack(2, 2, 2, 2)});
    rig.makePalettes(2);
    array.setTimePoint(1);
    EXPECT_EQ(recorded(rig.build(Orientation::XYForward)).front(),
              bind(GL_TEXTURE_2D, array.textures()[12 + 5]));
}

TEST(RenderList, WalksOnlyTheCutBox)
{
    RecordedRig rig(RenderThreadKind::Paletted);
    VoxelArray& array = rig.show({denseStack(8, 8, 8)});
    rig.makePalettes(1);
    array.cut = {1, 2, 0, 7, 3, 3};
    const Calls acrossZ = recorded(rig.build(Orientation::XYForward));
    EXPECT_EQ(acrossZ,
              (Calls{bind(GL_TEXTURE_2D, array.textures()[16 + 3]), call(rig.scene.palettes[0]->glHandle()),
                     call(array.quads()[16 + 3]), bind(GL_TEXTURE_2D, 0)}));
    // Voxels 1 and 2 of x are slices 6 and 5.
    const Calls acrossX = recorded(rig.build(Orientation::YZForward));
    EXPECT_EQ(acrossX[0], bind(GL_TEXTURE_2D, array.textures()[8 + 6]));
    EXPECT_EQ(acrossX[3], bind(GL_TEXTURE_2D, array.textures()[8 + 5]));
    EXPECT_EQ(acrossX.size(), 7U);
}

class ProgramRenderList : public ::testing::TestWithParam<RenderThreadKind>
{};

TEST_P(ProgramRenderList, BindsSliceAndPaletteOnTheirUnits)
{
    RecordedRig rig(GetParam());
    const VoxelArray& array = rig.show({denseStack(2, 2, 2)});
    rig.makePalettes(1);
    const GLuint palette = rig.scene.palettes[0]->glHandle();
    Calls expected;
    for (const std::size_t quad : {5U, 4U}) {
        for (const std::string& text : {unit(0), bind(GL_TEXTURE_2D, array.textures()[quad]), unit(1),
                                        bind(GL_TEXTURE_1D, palette), call(array.quads()[quad])})
            expected.push_back(text);
    }
    for (const std::string& text : {unit(1), bind(GL_TEXTURE_1D, 0), unit(0), bind(GL_TEXTURE_2D, 0)})
        expected.push_back(text);
    EXPECT_EQ(recorded(rig.build(Orientation::XYForward)), expected);
}

TEST_P(ProgramRenderList, BindsTheDepthCurveOnUnitTwo)
{
    RecordedRig rig(GetParam());
    const VoxelArray& array = rig.show({denseStack(2, 2, 2, 2)});
    rig.makePalettes(2);
    rig.scene.view.zCorrection = true;
    const GLuint curve = array.channels()[1].zCurve.textureName();
    ASSERT_NE(curve, 0U);
    const Calls calls = recorded(rig.build(Orientation::XYForward));
    EXPECT_EQ(Calls(calls.begin() + 7, calls.begin() + 14),
              (Calls{unit(0), bind(GL_TEXTURE_2D, array.textures()[11]), unit(1),
                     bind(GL_TEXTURE_1D, rig.scene.palettes[1]->glHandle()), unit(2),
                     bind(GL_TEXTURE_1D, curve), call(array.quads()[5])}));
}

TEST_P(ProgramRenderList, BindsTheDepthCurveOfTheBlock)
{
    RecordedRig rig(GetParam());
    test::VolumeSpec spec;
    spec.target = GL_TEXTURE_3D;
    spec.blockLimit = 2;
    const VoxelArray& array = rig.show({denseStack(2, 2, 4)}, spec);
    rig.makePalettes(1);
    rig.scene.view.zCorrection = true;
    const ZCurve& curve = array.channels()[0].zCurve;
    Calls curves;
    Calls expected;
    for (const std::string& text : recorded(rig.build(Orientation::YZReverse))) {
        if (text == bind(GL_TEXTURE_1D, curve.textureName(0)) ||
            text == bind(GL_TEXTURE_1D, curve.textureName(1)))
            curves.push_back(text);
    }
    // Two slices across x, each with the block at the beginning of the stack first.
    for (const int block : {0, 1, 0, 1})
        expected.push_back(bind(GL_TEXTURE_1D, curve.textureName(block)));
    EXPECT_EQ(curves, expected);
}

TEST_P(ProgramRenderList, BindsBlocksOfTheVolume)
{
    RecordedRig rig(GetParam());
    test::VolumeSpec spec;
    spec.target = GL_TEXTURE_3D;
    spec.blockLimit = 2;
    VoxelArray& array = rig.show({denseStack(4, 2, 4, 2), denseStack(4, 2, 4, 2)}, spec);
    rig.makePalettes(2);
    array.setTimePoint(1);
    array.cut = {0, 3, 0, 1, 1, 2};
    // Blocks 2, 1, 2. Slice 2 lies in blocks 2 and 3; time point 1 begins at 8, its channel 1 at 12.
    std::vector<std::string> binds;
    for (const std::string& text : recorded(rig.build(Orientation::XYForward))) {
        if (text.starts_with("BindTexture(32879"))
            binds.push_back(text);
    }
    Calls expected;
    for (const std::size_t texture : {10U, 11U, 14U, 15U, 8U, 9U, 12U, 13U})
        expected.push_back(bind(GL_TEXTURE_3D, array.textures()[texture]));
    expected.push_back(bind(GL_TEXTURE_3D, 0));
    EXPECT_EQ(binds, expected);
}

// Six slices in four blocks of two: slices 4 and 5 would be in blocks 4 and 5, of which there are none.
TEST_P(ProgramRenderList, DrawsNothingOutsideTheChannelsOwnBricks)
{
    RecordedRig rig(GetParam());
    test::VolumeSpec spec;
    spec.target = GL_TEXTURE_3D;
    spec.blockLimit = 2;
    const VoxelArray& array = rig.show({denseStack(2, 2, 6, 2)}, spec);
    rig.makePalettes(2);
    const LogCapture log;
    const Calls calls = recorded(rig.build(Orientation::XYReverse));
    ASSERT_EQ(array.geometry().zBlocks, 4);
    EXPECT_EQ(calls.size(), 4U * 2 * 5 + 4);
    EXPECT_EQ(calls[1], bind(GL_TEXTURE_3D, array.textures()[0]));
    EXPECT_EQ(calls[36], bind(GL_TEXTURE_3D, array.textures()[7]));
    EXPECT_EQ(log.warnings(), QStringList{});
}

TEST_P(ProgramRenderList, ThatTheDriverDoesNotKnowIsToldAndGivenBack)
{
    RecordedRig rig(GetParam());
    rig.show({denseStack(2, 2, 2)});
    rig.makePalettes(1);
    const LogCapture log;
    rig.gl.refuseLists(true);
    const FrameState frame = rig.frame();
    const SliceWalk walk = renderListParameters(Orientation::XYForward, frame.array->geometry(), frame.cut);
    EXPECT_TRUE(rig.thread().buildRenderList(frame, Orientation::XYForward, walk).empty());
    EXPECT_EQ(log.warnings(), QStringList{"Made a bad render_list!"});
    EXPECT_EQ(rig.gl.count("DeleteLists"), 1);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ProgramRenderList,
                         ::testing::Values(RenderThreadKind::Nvidia, RenderThreadKind::FragmentProgram));

TEST(RenderList, TellsOfTexturesAndQuadsThatAreNotThere)
{
    RecordedRig rig(RenderThreadKind::FragmentProgram);
    rig.show({denseStack(2, 2, 2)});
    rig.makePalettes(1);
    const LogCapture log;
    const FrameState frame = rig.frame();
    rig.gl.clear();
    const ListNames list = rig.thread().buildRenderList(frame, Orientation::XYReverse, {1, 4, 1, 2, 1});
    EXPECT_TRUE(log.contains("Impossible offset 6 size 6"));
    EXPECT_EQ(rig.gl.count("CallList"), 1);
}

TEST(RenderList, OfAnImpossibleOrientationIsEmpty)
{
    RecordedRig rig(RenderThreadKind::Paletted);
    rig.show({denseStack(2, 2, 2)});
    rig.makePalettes(1);
    const LogCapture log;
    EXPECT_EQ(recorded(rig.build(Orientation::Current)), Calls{bind(GL_TEXTURE_2D, 0)});
    EXPECT_EQ(log.warnings(), QStringList{"Hit impossible orientation in rebuild_render_list()"});
}

} // namespace
} // namespace tirn
