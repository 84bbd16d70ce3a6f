// Drawing without a display server: the same pictures as with one.

#include <gtest/gtest.h>

#include "glsupport/stagewith.h"
#include "render/picturemaker.h"
#include "render/turntimes.h"
#include "support/logcapture.h"

namespace tirn::test {
namespace {

TEST(OffscreenStage, DrawsWhatAWindowsContextDraws)
{
    LogCapture log;
    const PlainStack stack = denseStack(20, 24, 16, 2);
    const std::vector<ColourTable> tables = {rampTable(256, {1, 0.5, 0}, 0.3),
                                             rampTable(256, {0, 0.5, 1}, 0.3)};
    QImage expected;
    {
        RenderRig rig({160, 120});
        rig.show({stack});
        rig.setTables(tables);
        rig.scene.view.rotX = 25;
        rig.scene.view.rotY = 40;
        expected = rig.draw();
    }
    const auto stage = stageWith(stack, tables);
    stage->scene.view.rotX = 25;
    stage->scene.view.rotY = 40;
    const QImage seen = PictureMaker(stage->thread()).draw({{160, 120}});
    EXPECT_EQ(seen, expected.convertToFormat(QImage::Format_RGB32));
    EXPECT_FALSE(stage->rendererName().isEmpty());
}

TEST(OffscreenStage, LeavesNoNamesBehind)
{
    LogCapture log;
    const LiveGlNames before = liveGlNames();
    {
        const auto stage = stageWith(denseStack(4, 4, 4), {rampTable(256, {1, 1, 1}, 0.5)});
        EXPECT_FALSE(PictureMaker(stage->thread()).draw({{16, 16}}).isNull());
    }
    EXPECT_EQ(liveGlNames(), before);
}

TEST(OffscreenStage, TimesEachFrameOfATurn)
{
    LogCapture log;
    const auto stage = stageWith(denseStack(8, 8, 8), {rampTable(256, {1, 1, 1}, 0.5)});
    stage->scene.view.rotY = 10;
    const TurnTimes times = timeTurn(*stage, {32, 32}, 5);
    EXPECT_EQ(times.frameMilliseconds.size(), 5U);
    EXPECT_EQ(times.error, "");
    EXPECT_EQ(stage->scene.view.rotY, 10);
    EXPECT_EQ((TurnTimes{{5, 1, 9, 2, 3}, {}}.median()), 3);
    EXPECT_EQ((TurnTimes{{5, 1, 9, 2, 3}, {}}.maximum()), 9);
    EXPECT_EQ(TurnTimes{}.median(), 0);
    EXPECT_FALSE(timeTurn(*stage, {1000000, 1}, 1).error.isEmpty());
}

} // namespace
} // namespace tirn::test
