#include "render/offscreenframes.h"

#include "glsupport/stagewith.h"
#include "render/picturemaker.h"
#include "scene/keyframeview.h"
#include "support/logcapture.h"

namespace tirn::test {
namespace {

const QSize kSize(40, 30);

/// Frames of a stage with one red channel, and single pictures of the same stage.
class MoviePictures : public ::testing::Test
{
protected:
    MoviePictures()
        : stage(stageWith(denseStack(6, 5, 8), {rampTable(256, {1, 0, 0}, 0.3)})),
          frames(std::make_unique<OffscreenFrames>(*stage, kSize))
    {}

    KeyFrame shown(bool palettes) const { return shownKeyFrame(stage->scene, palettes); }
    QImage frame(const KeyFrame& pose)
    {
        FramePicture picture;
        EXPECT_TRUE(frames->draw(pose, &picture));
        return imageOf(picture);
    }
    /// The picture of what is shown, made anew.
    QImage single()
    {
        frames.reset();
        const QImage picture = PictureMaker(stage->thread()).draw({kSize});
        frames = std::make_unique<OffscreenFrames>(*stage, kSize);
        return picture;
    }

    LogCapture log;
    std::unique_ptr<OffscreenStage> stage;
    std::unique_ptr<OffscreenFrames> frames;
};

TEST_F(MoviePictures, AFrameWithoutPalettesLeavesTheLiveOnes)
{
    KeyFrame green = shown(true);
    std::swap(green.palettes[0].red, green.palettes[0].green);
    const QImage red = frame(shown(false));
    EXPECT_EQ(red, single());
    EXPECT_GT(qRed(red.pixel(20, 15)), 0);
    const QImage drawnGreen = frame(green);
    EXPECT_EQ(drawnGreen, single());
    EXPECT_EQ(qRed(drawnGreen.pixel(20, 15)), 0);
    EXPECT_GT(qGreen(drawnGreen.pixel(20, 15)), 0);
    EXPECT_EQ(frame(shown(false)), drawnGreen);
}

TEST_F(MoviePictures, EachFrameHasItsOwnCut)
{
    KeyFrame pose = shown(false);
    QImage before = frame(pose);
    for (const double low : {2.0, 5.0, 7.0}) {
        pose.zmin = low;
        const QImage cut = frame(pose);
        EXPECT_NE(cut, before);
        // A list made anew is what the single picture is drawn from.
        stage->thread().clearLists();
        EXPECT_EQ(cut, single());
        before = cut;
    }
}

TEST_F(MoviePictures, AnAbsurdCutIsDrawnWithinTheStack)
{
    KeyFrame pose = shown(false);
    const QImage whole = frame(pose);
    pose.xmin = 1e9;
    pose.xmax = 0;
    pose.zmax = 2e9;
    EXPECT_EQ(frame(pose), whole);
}

TEST_F(MoviePictures, AFrameThatCannotBeDrawnFails)
{
    stage->scene.currentIndex = -1;
    FramePicture picture;
    EXPECT_FALSE(frames->draw({}, &picture));
    EXPECT_EQ(picture.pixels, nullptr);
    stage->scene.currentIndex = 0;
    EXPECT_TRUE(frames->draw(shown(false), &picture));
}

} // namespace
} // namespace tirn::test
