#include "scene/sceneedits.h"

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

TEST(RenderModes, BringTheirOwnProjectionWhicheverWasLeft)
{
    const OrthoBounds plain = {-1, 1, -1, 1, -2, 2};
    const OrthoBounds wide = {-2, 2, -2, 2, -2, 2};
    const RenderMode modes[] = {RenderMode::Normal, RenderMode::Anaglyph, RenderMode::FullscreenStereo,
                                RenderMode::Stereo, RenderMode::FourViews};
    for (const RenderMode from : modes) {
        for (const RenderMode to : modes) {
            ViewState view;
            setRenderMode(view, from);
            setRenderMode(view, to);
            EXPECT_EQ(view.renderMode, to);
            EXPECT_EQ(view.ortho, to == RenderMode::FourViews ? wide : plain);
        }
    }
}

TEST(RenderModes, TellWhichOfThemAreForTwoEyes)
{
    EXPECT_FALSE(isStereo(RenderMode::Normal) || isStereo(RenderMode::FourViews));
    EXPECT_TRUE(isStereo(RenderMode::Anaglyph) && isStereo(RenderMode::FullscreenStereo));
    EXPECT_FALSE(needsStereoWindow(RenderMode::Anaglyph));
    EXPECT_TRUE(needsStereoWindow(RenderMode::FullscreenStereo) && needsStereoWindow(RenderMode::Stereo));
}

TEST(ResetView, BringsBackTheScaleThatLoadingGave)
{
    test::GlRecorder gl{test::GlRecorder::Mode::StandAlone};
    const test::LogCapture log;
    Scene scene;
    scene.arrays.push_back(std::make_unique<VoxelArray>(8, 6, 4, VolumeOptions()));
    scene.currentIndex = 0;
    scene.current()->baseScale = {0.25, 0.25, 1};
    scene.current()->scale = {7, 8, 9};
    scene.view.rotX = 5;
    scene.view.transZ = 3;
    resetView(scene);
    EXPECT_EQ(scene.current()->scale, (AxisScale{0.25, 0.25, 1}));
    EXPECT_EQ(scene.view.rotX, 0);
    EXPECT_EQ(scene.view.transZ, 0);
}

} // namespace
} // namespace tirn
