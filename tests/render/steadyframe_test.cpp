// What frames cost on the driver that there is: its calls are recorded and made.

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

using test::denseStack;
using test::GlRecorder;
using test::LogCapture;
using test::rampTable;
using test::RenderRig;

class SteadyFrame : public ::testing::TestWithParam<GLenum>
{
protected:
    LogCapture log;
    RenderRig rig{QSize(64, 64)};

    VoxelArray& showVolume(int timePoints = 1)
    {
        test::VolumeSpec spec;
        spec.target = GetParam();
        VoxelArray& array = rig.show(
            std::vector<test::PlainStack>(static_cast<std::size_t>(timePoints), denseStack(16, 16, 16, 2)),
            spec);
        rig.setTables({rampTable(256, {1, 0, 0}, 0.5), rampTable(256, {0, 1, 0}, 0.5)});
        return array;
    }
    /// The calls that build or change anything but a palette.
    static int changes(const GlRecorder& gl)
    {
        int sum = 0;
        for (const char* name :
             {"NewList", "GenLists", "DeleteLists", "GenTextures", "DeleteTextures", "TexImage1D",
              "TexImage2D", "TexSubImage2D", "TexImage3DEXT", "TexSubImage3DEXT", "ProgramStringARB"})
            sum += gl.count(name);
        return sum;
    }
};

TEST_P(SteadyFrame, CostsOneListCall)
{
    showVolume();
    rig.draw();
    const GlRecorder gl(GlRecorder::Mode::Forward);
    for (int frame = 1; frame <= 3; ++frame) {
        rig.scene.view.rotZ += 5;
        rig.draw();
        EXPECT_EQ(gl.count("CallList"), frame);
    }
    EXPECT_EQ(changes(gl), 0);
}

TEST_P(SteadyFrame, ShowsAPaletteChangeWithoutTouchingStackTexturesOrLists)
{
    showVolume();
    const QImage before = rig.draw();
    Palette& palette = *rig.scene.palettes[0];
    const GlRecorder gl(GlRecorder::Mode::Forward);
    palette.ramp(Qt::blue);
    palette.upload();
    EXPECT_EQ(gl.count("TexSubImage1D"), 1);
    const QImage after = rig.draw();
    EXPECT_EQ(gl.count("CallList"), 1);
    EXPECT_EQ(changes(gl), 0);
    EXPECT_NE(after, before);
    EXPECT_EQ(after.pixelColor(32, 32).red(), 0);
    EXPECT_GT(after.pixelColor(32, 32).blue(), 10);
}

TEST_P(SteadyFrame, ChangesListsWithoutBuildingOnASecondTurnOrTimeStep)
{
    VoxelArray& array = showVolume(2);
    const auto turn = [&] {
        for (int t = 0; t < 2; ++t) {
            array.setTimePoint(t);
            for (const auto& rotation : test::axisRotations()) {
                rig.scene.view.rotX = rotation[0];
                rig.scene.view.rotY = rotation[1];
                rig.draw();
            }
        }
    };
    turn();
    const GlRecorder gl(GlRecorder::Mode::Forward);
    turn();
    EXPECT_EQ(gl.count("CallList"), 12);
    EXPECT_EQ(changes(gl), 0);
}

TEST_P(SteadyFrame, AChangedChannelStateBuildsOneList)
{
    VoxelArray& array = showVolume();
    rig.draw();
    const GlRecorder gl(GlRecorder::Mode::Forward);
    array.channels()[1].display.state = ChannelState::Hidden;
    rig.draw();
    EXPECT_EQ(gl.count("NewList"), 1);
    rig.draw();
    EXPECT_EQ(gl.count("NewList"), 1);
    EXPECT_EQ(gl.count("TexImage2D") + gl.count("TexSubImage2D"), 0);
}

INSTANTIATE_TEST_SUITE_P(Targets, SteadyFrame, ::testing::Values(GL_TEXTURE_2D, GL_TEXTURE_3D));

TEST(LiveNames, AreBackWhenTheSceneIsGone)
{
    const LogCapture log;
    const LiveGlNames before = liveGlNames();
    {
        RenderRig rig(QSize(32, 32));
        for (const GLenum target : {GL_TEXTURE_2D, GL_TEXTURE_3D}) {
            test::VolumeSpec spec;
            spec.target = target;
            rig.show({denseStack(8, 8, 8), denseStack(8, 8, 8)}, spec);
            rig.setTables({rampTable(256, {1, 1, 1}, 1)});
            rig.draw();
        }
        EXPECT_GT(liveGlNames().textures, before.textures);
        EXPECT_GT(liveGlNames().lists, before.lists);
        EXPECT_EQ(liveGlNames().programs, before.programs + 1);
    }
    EXPECT_EQ(liveGlNames(), before);
}

} // namespace
} // namespace tirn
