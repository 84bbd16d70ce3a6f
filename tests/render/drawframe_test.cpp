// The calls of one frame, for kinds with and without fragment programs.

#include <cmath>

#include <gtest/gtest.h>

#include "glsupport/recordedrig.h"

namespace tirn {
namespace {

using test::denseStack;
using test::GlCall;
using test::LogCapture;
using test::RecordedRig;

using Calls = std::vector<std::string>;

std::string call(GLuint list) { return "CallList(" + std::to_string(list) + ")"; }

class DrawFrame : public ::testing::TestWithParam<RenderThreadKind>
{
protected:
    LogCapture log;
    RecordedRig rig{GetParam()};

    bool usesPrograms() const { return usesFragmentPrograms(GetParam()); }
    VoxelArray& showVolume()
    {
        VoxelArray& array = rig.show({denseStack(4, 4, 4)});
        rig.makePalettes(1);
        return array;
    }
    GLuint list() { return rig.thread().lists().currentRenderList(); }
    std::vector<std::vector<double>> matrices(const std::string& name) const
    {
        std::vector<std::vector<double>> all;
        for (const GlCall& each : rig.gl.callsOf(name))
            all.push_back(each.values);
        return all;
    }
};

TEST_P(DrawFrame, CostsOneListCallWhenSteady)
{
    showVolume();
    rig.draw();
    for (int frame = 0; frame < 3; ++frame) {
        EXPECT_EQ(rig.draw({"CallList", "NewList", "GenLists", "DeleteLists", "TexImage2D", "TexSubImage2D"}),
                  Calls{call(list())});
    }
}

TEST_P(DrawFrame, APaletteChangeTouchesNeitherListsNorSliceTextures)
{
    showVolume();
    rig.draw();
    const GLuint before = list();
    rig.gl.clear();
    rig.scene.palettes[0]->upload();
    const Calls upload = rig.gl.texts();
    EXPECT_EQ(rig.gl.count("TexImage2D") + rig.gl.count("TexSubImage2D") + rig.gl.count("TexImage1D"), 0);
    EXPECT_EQ(rig.gl.count("TexSubImage1D"), usesPrograms() ? 1 : 0);
    EXPECT_EQ(rig.gl.count("ColorTableEXT"), usesPrograms() ? 0 : 1);
    EXPECT_EQ(rig.draw({"CallList", "NewList", "GenLists", "TexSubImage2D"}), Calls{call(before)});
}

TEST_P(DrawFrame, ForceBuildsTheListAgainOnce)
{
    showVolume();
    rig.draw();
    rig.thread().forceRebuild = true;
    EXPECT_EQ(rig.draw({"NewList"}).size(), 1U);
    EXPECT_EQ(rig.draw({"NewList"}).size(), 0U);
}

TEST_P(DrawFrame, SetsTheColourPathOfItsKind)
{
    showVolume();
    const Calls enabled = rig.draw({"Enable"});
    const auto has = [&](GLenum capability) {
        return std::count(enabled.begin(), enabled.end(), "Enable(" + std::to_string(capability) + ")") > 0;
    };
    EXPECT_EQ(has(GL_SHARED_TEXTURE_PALETTE_EXT), !usesPrograms());
    EXPECT_EQ(has(GL_FRAGMENT_PROGRAM_ARB), usesPrograms());
    EXPECT_TRUE(has(GL_TEXTURE_2D));
    EXPECT_EQ(rig.gl.count("ProgramStringARB"), usesPrograms() ? 1 : 0);
    EXPECT_EQ(rig.gl.count("Finish"), usesPrograms() ? 0 : 1);
}

TEST_P(DrawFrame, AppliesRotationTranslationAndScaleInThisOrder)
{
    VoxelArray& array = showVolume();
    array.scale = {1, 2, 3};
    rig.scene.view.rotY = 180;
    rig.scene.view.transX = 0.5;
    rig.scene.view.transZ = -0.25;
    rig.scene.view.yRotation = 30;
    EXPECT_EQ(
        rig.draw({"MultMatrixf", "Translated", "Scaled", "Rotated"}),
        (Calls{"MultMatrixf(data)", "Translated(0.5, 0, -0.25)", "Scaled(1, 2, 3)", "Rotated(30, 0, 1, 0)"}));
    EXPECT_EQ(matrices("MultMatrixf").front(),
              (std::vector<double>{-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}));
    rig.scene.view.yRotation = 0;
    EXPECT_TRUE(rig.draw({"Rotated"}).empty());
}

TEST_P(DrawFrame, ProjectsTheBoundsWithDepthForTheScaledVolume)
{
    VoxelArray& array = showVolume();
    rig.scene.view.ortho = {-2, 2, -1, 1, -3, 3};
    EXPECT_EQ(rig.draw({"Ortho"}).front(), "Ortho(-2, 2, -1, 1, -3, 3)");
    array.scale = {10, 10, 10};
    const GlCall ortho = (rig.draw(), rig.gl.callsOf("Ortho").front());
    EXPECT_LT(ortho.real(4), -17.3);
    EXPECT_GT(ortho.real(5), 17.3);
}

TEST_P(DrawFrame, ClipsOnlyWhileTheVolumeIsDrawn)
{
    VoxelArray& array = showVolume();
    array.cut.yMin = 1;
    array.cut.zMax = 2;
    const Calls calls = rig.draw({"Enable", "ClipPlane", "CallList", "Disable"});
    const auto clip = std::find(calls.begin(), calls.end(), "Enable(12288)");
    ASSERT_NE(clip, calls.end());
    EXPECT_EQ(Calls(clip, clip + 9), (Calls{"Enable(12288)", "ClipPlane(12288, data)", call(list()),
                                            "Disable(12288)", "Disable(12289)", "Disable(12290)",
                                            "Disable(12291)", "Disable(12292)", "Disable(12293)"}));
    const std::vector<double> plane = rig.gl.callsOf("ClipPlane").front().values;
    EXPECT_EQ(plane[1], -1);
    EXPECT_NEAR(plane[3], 0.996 - 1.992 / 3 + 0.004, 1e-12);
}

TEST_P(DrawFrame, DrawsBoxesAroundTheVolumeOnlyWhenAsked)
{
    const VoxelArray& array = showVolume();
    rig.scene.view.drawCutBox = true;
    rig.draw();
    EXPECT_EQ(rig.draw({"CallList"}), Calls{call(list())});
    rig.scene.view.showBoundingBox = true;
    const auto face = [&](VoxelArray::BoxList which) { return call(array.boxList(which)); };
    EXPECT_EQ(rig.draw({"CallList"}),
              (Calls{face(VoxelArray::WholeBox), call(list()), face(VoxelArray::RightFace),
                     face(VoxelArray::TopFace), face(VoxelArray::FrontFace)}));
    rig.scene.view.rotY = 180;
    rig.draw();
    EXPECT_EQ(rig.draw({"CallList"}),
              (Calls{face(VoxelArray::WholeBox), call(list()), face(VoxelArray::RightFace),
                     face(VoxelArray::TopFace), face(VoxelArray::BackFace)}));
}

/// The lowest and the highest of each coordinate that a frame draws with lines.
std::array<std::pair<double, double>, 3> lineExtent(const std::vector<GlCall>& calls)
{
    std::array<std::pair<double, double>, 3> extent;
    extent.fill({1e9, -1e9});
    for (const GlCall& each : calls) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double value = each.real(axis);
            extent[axis] = {std::min(extent[axis].first, value), std::max(extent[axis].second, value)};
        }
    }
    return extent;
}

TEST_P(DrawFrame, TheCutBoxFollowsTheBounds)
{
    VoxelArray& array = rig.show({denseStack(16, 8, 4)});
    rig.makePalettes(1);
    array.cut = {3, 12, 2, 5, 1, 2};
    rig.scene.view.showBoundingBox = true;
    rig.scene.view.drawCutBox = true;
    rig.draw();
    rig.draw();
    const auto extent = lineExtent(rig.gl.callsOf("Vertex3f"));
    EXPECT_NEAR(extent[0].first, (2 * 3 - 16) / 16.0, 1e-6);
    EXPECT_NEAR(extent[0].second, (16 - 2 * (16 - 12) + 2) / 16.0, 1e-6);
    EXPECT_NEAR(extent[1].second, (8 - 2 * 2) / 16.0, 1e-6);
    EXPECT_NEAR(extent[1].first, (-2 - 8 + 2 * (8 - 5)) / 16.0, 1e-6);
    EXPECT_NEAR(extent[2].second, (4 - 2 * 1) / 16.0, 1e-6);
    EXPECT_NEAR(extent[2].first, (-2 - 4 + 2 * (4 - 2)) / 16.0, 1e-6);
    EXPECT_EQ(rig.gl.count("Vertex3f"), 24);
}

TEST_P(DrawFrame, TheCutBoxIsOutlinedWithOrWithoutTheBoundingBox)
{
    showVolume();
    rig.scene.view.drawCutBox = true;
    for (const bool showsBox : {false, true}) {
        rig.scene.view.showBoundingBox = showsBox;
        EXPECT_EQ(rig.draw({"Vertex3f"}).size(), 24U);
    }
    rig.scene.view.renderMode = RenderMode::Anaglyph;
    for (const bool showsBox : {false, true}) {
        rig.scene.view.showBoundingBox = showsBox;
        EXPECT_EQ(rig.draw({"Vertex3f"}).size(), 48U);
    }
}

TEST_P(DrawFrame, AnAnaglyphMasksEachEyeAndResetsTheMask)
{
    showVolume();
    rig.scene.view.renderMode = RenderMode::Anaglyph;
    const std::pair<const char*, const char*> masks[] = {
        {"1, 0, 0, 1", "0, 0, 1, 1"}, {"1, 0, 0, 1", "0, 1, 1, 1"}, {"1, 0, 0, 1", "0, 1, 0, 1"},
        {"0, 0, 1, 1", "1, 0, 0, 1"}, {"0, 1, 1, 1", "1, 0, 0, 1"}, {"0, 1, 0, 1", "1, 0, 0, 1"}};
    for (int pair = 0; pair < 6; ++pair) {
        rig.scene.view.filterColors = pair;
        rig.draw();
        const auto mask = [](const char* channels) { return "ColorMask(" + std::string(channels) + ")"; };
        EXPECT_EQ(rig.draw({"ColorMask", "CallList"}),
                  (Calls{mask(masks[pair].first), call(list()), mask(masks[pair].second), call(list()),
                         "ColorMask(1, 1, 1, 1)"}))
            << pair;
    }
    rig.scene.view.renderMode = RenderMode::Normal;
    EXPECT_TRUE(rig.draw({"ColorMask"}).empty());
}

TEST_P(DrawFrame, TheEyesOfAnAnaglyphStandApart)
{
    showVolume();
    rig.scene.view.renderMode = RenderMode::Anaglyph;
    rig.draw();
    const auto loaded = matrices("LoadMatrixd");
    ASSERT_EQ(loaded.size(), 3U);
    EXPECT_NEAR(loaded[0][0], std::sqrt(3.0), 1e-12);
    const auto expectMatrix = [](const std::vector<double>& seen, const std::array<double, 16>& expected) {
        for (std::size_t i = 0; i < 16; ++i)
            EXPECT_NEAR(seen[i], expected[i], 1e-12) << i;
    };
    expectMatrix(loaded[1], lookAtMatrix({-0.035, 0, 2}, {0, 0, 0}, {0, 1, 0}));
    expectMatrix(loaded[2], lookAtMatrix({0.035, 0, 2}, {0, 0, 0}, {0, 1, 0}));
    EXPECT_NE(loaded[1], loaded[2]);
}

TEST_P(DrawFrame, WithoutEyeSeparationBothEyesSeeTheSame)
{
    showVolume();
    rig.scene.view.renderMode = RenderMode::Anaglyph;
    rig.scene.view.camera.eyesep = 0;
    rig.draw();
    EXPECT_EQ(matrices("LoadMatrixd")[1], matrices("LoadMatrixd")[2]);
}

TEST_P(DrawFrame, EachEyeClearsItsDepth)
{
    showVolume();
    rig.scene.view.renderMode = RenderMode::Anaglyph;
    const Calls cleared = rig.draw({"Clear"});
    EXPECT_EQ(std::count(cleared.begin(), cleared.end(), "Clear(256)"), 2);
}

TEST_P(DrawFrame, FullScreenStereoIsReadyOnlyWithPrograms)
{
    showVolume();
    rig.scene.view.renderMode = RenderMode::FullscreenStereo;
    rig.draw();
    const Calls calls = rig.draw({"DrawBuffer", "CallList"});
    if (usesPrograms()) {
        EXPECT_EQ(calls, (Calls{"DrawBuffer(1026)", call(list()), "DrawBuffer(1027)", call(list()),
                                "DrawBuffer(1029)"}));
        EXPECT_EQ(rig.gl.count("DrawPixels") + rig.gl.count("ColorMask"), 0);
    } else {
        EXPECT_EQ(calls, Calls{});
        EXPECT_EQ(rig.gl.count("DrawPixels"), 1);
    }
}

TEST_P(DrawFrame, StereoInAWindowIsOnlyAText)
{
    showVolume();
    rig.scene.view.renderMode = RenderMode::Stereo;
    rig.draw();
    EXPECT_EQ(rig.draw({"CallList", "DrawPixels"}).size(), 1U);
    EXPECT_EQ(rig.gl.count("DrawPixels"), 1);
}

TEST_P(DrawFrame, FourViewsShowThreeFlatOnesAndTheTurnedOne)
{
    VoxelArray& array = showVolume();
    array.scale = {1, 1, 2};
    rig.scene.view.renderMode = RenderMode::FourViews;
    rig.scene.view.rotY = 270;
    rig.draw();
    const RenderListCache& lists = rig.thread().lists();
    const Calls calls = rig.draw({"Translated", "Rotated", "Scaled", "CallList"});
    Calls expected = {"Translated(-1, -1, 0)", "Scaled(1, 1, 2)",      call(lists.xyList()),
                      "Translated(-1, 1, 0)",  "Rotated(90, 1, 0, 0)", "Scaled(1, 1, 2)",
                      call(lists.xzList()),    "Translated(1, 1, 0)",  "Rotated(270, 0, 1, 0)",
                      "Scaled(1, 1, 2)",       call(lists.yzList())};
    // Without programs the flat views stay unscaled.
    if (!usesPrograms())
        std::erase(expected, "Scaled(1, 1, 2)");
    for (const std::string& text :
         {std::string("Translated(1, -1, 0)"), std::string("Scaled(0.707, 0.707, 0.707)"),
          std::string("Translated(0, 0, 0)"), std::string("Scaled(1, 1, 2)"), call(list())})
        expected.push_back(text);
    EXPECT_EQ(calls, expected);
}

TEST_P(DrawFrame, AnIncompleteVolumeIsNotDrawn)
{
    showVolume();
    rig.draw();
    auto growing = std::make_unique<VoxelArray>(4, 4, 4, VolumeOptions{});
    growing->stack().bitDepth = 8;
    rig.scene.arrays.push_back(std::move(growing));
    rig.scene.currentIndex = 1;
    EXPECT_EQ(rig.draw({"CallList"}), Calls{});
}

TEST_P(DrawFrame, WithoutAStackThereIsOneLineOfText)
{
    const Calls calls = rig.draw({"CallList", "DrawPixels", "Clear"});
    EXPECT_EQ(rig.gl.count("DrawPixels"), 1);
    EXPECT_EQ(rig.gl.count("CallList"), 0);
    rig.scene.batchMode = true;
    rig.draw();
    EXPECT_EQ(rig.gl.count("DrawPixels"), 2);
}

TEST_P(DrawFrame, ClearsWithTheBackground)
{
    rig.scene.view.backgroundColor = QColor(255, 0, 51);
    EXPECT_EQ(rig.draw({"ClearColor"}), Calls{"ClearColor(1, 0, 0.2, 0)"});
}

TEST_P(DrawFrame, BlendsAsTheViewSaysAndOverlaysPlainly)
{
    showVolume();
    rig.scene.view.blendMode = GL_MAX;
    EXPECT_EQ(rig.draw({"BlendEquationEXT"}),
              (Calls{"BlendEquationEXT(32776)", "BlendEquationEXT(32774)", "BlendEquationEXT(32776)"}));
    EXPECT_EQ(rig.draw({"BlendFunc", "AlphaFunc"}), (Calls{"BlendFunc(770, 771)", "AlphaFunc(516, 0)"}));
}

/// A facet with its normal.
Triangle facet(float size)
{
    return {{Vector3f{0, 0, 0}, Vector3f{size, 0, 0}, Vector3f{0, size, 0}}, {0, 0, 1}};
}

TEST_P(DrawFrame, DrawsTheNewestSurfaceInItsLightAfterTheVolume)
{
    showVolume();
    rig.draw();
    rig.scene.segmentations.push_back(std::make_unique<Segmentation>());
    EXPECT_EQ(rig.draw({"CallList"}), Calls{call(list())});
    rig.scene.segmentations.front()->facets = {facet(1)};
    rig.draw();
    EXPECT_EQ(rig.gl.count("Vertex3f"), 3);
    rig.scene.segmentations.push_back(std::make_unique<Segmentation>());
    rig.scene.segmentations.back()->facets = {facet(1), facet(2)};
    rig.draw();
    EXPECT_EQ(rig.gl.count("NewList"), 1);
    EXPECT_EQ(rig.gl.count("Normal3f"), 2);
    EXPECT_EQ(rig.gl.count("Vertex3f"), 6);
    const Calls calls = rig.draw({"CallList", "NewList", "Enable", "DepthFunc", "Clear", "ShadeModel",
                                  "Lightfv", "Lightf", "Scaled", "Materialfv", "Materialf"});
    const auto from = std::find(calls.begin(), calls.end(), "Enable(2896)");
    ASSERT_NE(from, calls.end());
    const auto to =
        std::find_if(from, calls.end(), [](const std::string& text) { return text.starts_with("CallList"); });
    const std::string light = std::to_string(GL_LIGHT1 + (Light::count() - 1) % 7);
    // Lighting, a depth test of its own, the light before the view and the material behind it. The four
    // vectors of the light all go out as its position.
    const Calls expected = {"Enable(2896)",
                            "Enable(2929)",
                            "DepthFunc(515)",
                            "Clear(256)",
                            "ShadeModel(7425)",
                            "Enable(" + light + ")",
                            "Lightfv(" + light + ", 4611, data)",
                            "Lightfv(" + light + ", 4611, data)",
                            "Lightfv(" + light + ", 4611, data)",
                            "Lightfv(" + light + ", 4611, data)",
                            "Lightf(" + light + ", 4616, 0.4)",
                            "Scaled(1, 1, 1)",
                            "Materialfv(1032, 5634, data)",
                            "Materialfv(1032, 5632, data)",
                            "Materialfv(1032, 4610, data)",
                            "Materialf(1032, 5633, 0.5)"};
    EXPECT_EQ(Calls(from, to), expected);
    EXPECT_EQ(rig.gl.count("NewList"), 0);
}

TEST_P(DrawFrame, ASurfaceIsDrawnOnceInEachEye)
{
    showVolume();
    rig.scene.view.renderMode = RenderMode::Anaglyph;
    rig.scene.segmentations.push_back(std::make_unique<Segmentation>());
    rig.scene.segmentations.front()->facets = {facet(1)};
    rig.draw();
    const Calls calls = rig.draw({"ColorMask", "LoadMatrixd", "ShadeModel", "CallList"});
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "ShadeModel(7425)"), 2);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), call(list())), 2);
    // Within the second eye's volume the depth test is on again.
    const Calls states = rig.draw({"ColorMask", "Enable", "Disable", "CallList"});
    const auto second = std::find(states.begin() + 1, states.end(), "ColorMask(0, 1, 0, 1)");
    EXPECT_EQ(*(second + 1), "Enable(2929)");
}

TEST_P(DrawFrame, ASurfaceLeavesTheMaterialOfTheVolumeBehind)
{
    showVolume();
    rig.scene.segmentations.push_back(std::make_unique<Segmentation>());
    rig.scene.segmentations.front()->facets = {facet(1)};
    rig.draw();
    rig.draw();
    const std::vector<GlCall> materials = rig.gl.callsOf("Materialfv");
    EXPECT_EQ(materials.back().values, (std::vector<double>{1, 1, 1, 1}));
}

TEST_P(DrawFrame, AChangedSurfaceIsRecordedAnew)
{
    showVolume();
    rig.scene.segmentations.push_back(std::make_unique<Segmentation>());
    Segmentation& mesh = *rig.scene.segmentations.front();
    mesh.facets = {facet(1)};
    rig.draw();
    mesh.facets = {facet(1), facet(2), facet(3)};
    mesh.facetsChanged();
    EXPECT_EQ(rig.draw({"NewList"}).size(), 1U);
    EXPECT_EQ(rig.gl.count("Normal3f"), 3);
    rig.scene.segmentations.clear();
    EXPECT_EQ(rig.draw({"CallList"}), Calls{call(list())});
}

TEST_P(DrawFrame, AHiddenSurfaceIsNotDrawnAndComesBack)
{
    showVolume();
    rig.scene.segmentations.push_back(std::make_unique<Segmentation>());
    Segmentation& mesh = *rig.scene.segmentations.front();
    mesh.facets = {facet(1)};
    rig.draw();
    mesh.visible = false;
    EXPECT_EQ(rig.draw({"CallList"}), Calls{call(list())});
    mesh.visible = true;
    EXPECT_EQ(rig.draw({"CallList"}).size(), 2U);
    EXPECT_EQ(rig.gl.count("NewList"), 0) << "its list was kept";
}

TEST_P(DrawFrame, AClosedSurfaceLeavesNoListBehind)
{
    showVolume();
    rig.draw();
    const int before = liveGlNames().lists;
    // One that begins its life where the closed one was is another one all the same.
    for (int i = 0; i < 2; ++i) {
        rig.scene.segmentations.push_back(std::make_unique<Segmentation>());
        rig.scene.segmentations.front()->facets = {facet(1)};
        EXPECT_EQ(rig.draw({"NewList"}).size(), 1U);
        EXPECT_EQ(liveGlNames().lists, before + 1);
        rig.scene.segmentations.clear();
        if (i == 1)
            rig.draw();
    }
    EXPECT_EQ(liveGlNames().lists, before);
}

TEST_P(DrawFrame, AFacetWithoutANormalIsLogged)
{
    showVolume();
    rig.scene.segmentations.push_back(std::make_unique<Segmentation>());
    Triangle broken = facet(1);
    broken.normal[1] = std::nanf("");
    rig.scene.segmentations.front()->facets = {facet(1), broken};
    rig.draw();
    EXPECT_TRUE(log.contains("Error making triangle"));
    EXPECT_EQ(rig.gl.count("Normal3f"), 1);
    EXPECT_EQ(rig.gl.count("Vertex3f"), 6);
}

TEST_P(DrawFrame, RecordsKeyFramesWhileAsked)
{
    VoxelArray& array = showVolume();
    rig.scene.recording = true;
    rig.scene.view.rotX = 12;
    rig.scene.view.transY = 0.5;
    array.scale = {1, 2, 3};
    array.cut = {0, 1, 1, 2, 2, 3};
    array.channels()[0].display.alternatePalette = 5;
    rig.draw();
    rig.draw();
    EXPECT_EQ(rig.events.keyFrames, 2);
    ASSERT_EQ(rig.scene.keyFrames.size(), 2U);
    KeyFrame expected;
    expected.palettes = {rig.scene.palettes[0]->values()};
    expected.channels = {{ChannelState::Shown, 5, 0}};
    expected.xrot = 12;
    expected.ytrans = 0.5;
    expected.yscale = 2;
    expected.zscale = 3;
    expected.xmax = 1;
    expected.ymin = 1;
    expected.ymax = 2;
    expected.zmin = 2;
    expected.zmax = 3;
    EXPECT_EQ(rig.scene.keyFrames[1], expected);
}

INSTANTIATE_TEST_SUITE_P(Kinds, DrawFrame,
                         ::testing::Values(RenderThreadKind::Paletted, RenderThreadKind::Nvidia,
                                           RenderThreadKind::FragmentProgram));

TEST(DrawFrameLostCause, ShowsTwoLinesWhateverIsLoaded)
{
    const LogCapture log;
    RecordedRig rig(RenderThreadKind::LostCause);
    const Calls calls = rig.draw({"Disable", "Enable"});
    EXPECT_EQ(rig.gl.count("DrawPixels"), 2);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "Enable(34820)"), 0);
    rig.show({denseStack(2, 2, 2)});
    EXPECT_EQ(rig.draw({"CallList"}), Calls{});
    EXPECT_EQ(rig.gl.count("DrawPixels"), 2);
}

class ProgramFrame : public ::testing::Test
{
protected:
    LogCapture log;
    RecordedRig rig{RenderThreadKind::FragmentProgram};

    ProgramFrame()
    {
        rig.show({denseStack(2, 2, 2)});
        rig.makePalettes(1);
    }
};

TEST_F(ProgramFrame, MakesItsProgramOnceAndBindsItAfterwards)
{
    rig.draw();
    const GLuint program = rig.shaders().currentProgram();
    EXPECT_TRUE(log.contains(QString("shaderID %1").arg(program)));
    EXPECT_EQ(rig.draw({"GenProgramsARB", "BindProgramARB"}),
              Calls{"BindProgramARB(34820, " + std::to_string(program) + ")"});
}

TEST_F(ProgramFrame, MakesAnotherProgramWhenItsTextDiffersAndOnlyThen)
{
    rig.draw();
    rig.scene.view.autoBitDepth = true;
    EXPECT_EQ(rig.draw({"DeleteProgramsARB", "GenProgramsARB"}), Calls{});
    rig.scene.current()->stack().bitDepth = 12;
    EXPECT_EQ(rig.draw({"DeleteProgramsARB", "GenProgramsARB"}).size(), 2U);
    // What the data use decides about the factor.
    rig.scene.current()->stack().maxValue = 4000;
    EXPECT_EQ(rig.draw({"DeleteProgramsARB", "GenProgramsARB"}).size(), 2U);
    EXPECT_EQ(rig.draw({"DeleteProgramsARB", "GenProgramsARB"}), Calls{});
}

TEST_F(ProgramFrame, DrawsWithATypedTextUntilThereIsNone)
{
    const auto sent = [this] {
        const auto calls = rig.gl.callsOf("ProgramStringARB");
        return calls.size() == 1 ? std::string(calls[0].bytes.begin(), calls[0].bytes.end()) : std::string();
    };
    rig.draw();
    const std::string generated = sent();
    rig.scene.view.programText = "of the editor";
    rig.draw();
    EXPECT_EQ(sent(), "of the editor");
    EXPECT_EQ(rig.draw({"ProgramStringARB"}), Calls{});
    rig.scene.view.programText.clear();
    rig.draw();
    EXPECT_EQ(sent(), generated);
}

TEST_F(ProgramFrame, AProgramThatDoesNotCompileShowsTheErrorUntilAnotherDoes)
{
    rig.gl.queueErrors({0x502});
    EXPECT_EQ(rig.draw({"CallList"}), Calls{});
    EXPECT_EQ(rig.gl.count("DrawPixels"), 1);
    EXPECT_EQ(rig.draw({"CallList", "ProgramStringARB"}), Calls{});
    EXPECT_EQ(rig.gl.count("DrawPixels"), 1);
    rig.scene.view.programText = "another";
    rig.draw();
    EXPECT_EQ(rig.gl.count("DrawPixels"), 0);
    EXPECT_EQ(rig.draw({"CallList"}).size(), 1U);
}

TEST_F(ProgramFrame, BoxesAreDrawnWithoutTheProgram)
{
    rig.scene.view.showBoundingBox = true;
    rig.draw();
    const Calls calls = rig.draw({"Enable", "Disable", "CallList"});
    const std::string box = call(rig.scene.current()->boxList(VoxelArray::WholeBox));
    const auto at = std::find(calls.begin(), calls.end(), box);
    ASSERT_NE(at, calls.end());
    const Calls before(calls.begin(), at);
    const auto lastOf = [&](const std::string& text) {
        return std::find(before.rbegin(), before.rend(), text) - before.rbegin();
    };
    EXPECT_LT(lastOf("Disable(34820)"), lastOf("Enable(34820)"));
    EXPECT_EQ(std::count(at, calls.end(), "Enable(34820)"), 3);
}

} // namespace
} // namespace tirn
