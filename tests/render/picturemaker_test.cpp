// Pictures outside of the window: in one piece, in tiles, with nothing behind.

#include <gtest/gtest.h>

#include "gl/pbuffer.h"
#include "glsupport/renderrig.h"
#include "render/picturemaker.h"
#include "support/logcapture.h"
#include "support/picturecompare.h"

namespace tirn::test {
namespace {

class Pictures : public ::testing::Test
{
protected:
    Pictures()
    {
        VoxelArray& array = rig.show({denseStack(20, 24, 16, 2)});
        array.stack().dimX = 0.5;
        rig.setTables({rampTable(256, {1.0, 0.6, 0.2}, 0.3), rampTable(256, {0.2, 0.5, 1.0}, 0.2)});
        rig.scene.view.rotX = 20;
        rig.scene.view.rotY = 30;
    }
    QImage take(const PictureRequest& request, const PictureMaker::Limits& limits = {})
    {
        rig.makeCurrent();
        PictureMaker maker(rig.thread(), limits);
        const QImage picture = maker.draw(request);
        EXPECT_EQ(maker.error(), "");
        return picture;
    }
    void showOverlays()
    {
        rig.scene.view.showBoundingBox = true;
        rig.scene.view.showScaleBar = true;
        rig.scene.view.showFrameRate = false;
        rig.scene.watermark = "A watermark that is long";
        rig.scene.view.drawFileLabel = true;
        rig.scene.view.drawOrientation = true;
        rig.scene.view.drawChannelTime = true;
    }

    LogCapture log;
    RenderRig rig{{200, 150}};
};

TEST_F(Pictures, AreWhatTheFrameFunctionDrawsOfThatSize)
{
    showOverlays();
    const QImage frame = rig.draw();
    EXPECT_EQ(largestDifference(take({{200, 150}}), frame.convertToFormat(QImage::Format_RGB32)), 0);
}

TEST_F(Pictures, LeaveNoNamesBehind)
{
    take({{64, 64}});
    const LiveGlNames before = liveGlNames();
    take({{64, 64}});
    take({{100, 100}}, {48});
    EXPECT_EQ(liveGlNames(), before);
}

struct TiledCase
{
    const char* name;
    QSize size;
    RenderMode mode;
    GLenum blend;
};

class TiledPictures : public Pictures, public ::testing::WithParamInterface<TiledCase>
{};

/// Tiles of 300 pixels against one piece, for wide, tall and square pictures in every mode that is drawn.
TEST_P(TiledPictures, JoinWithoutASeam)
{
    showOverlays();
    rig.scene.view.renderMode = GetParam().mode;
    rig.scene.view.blendMode = GetParam().blend;
    rig.scene.view.drawCutBox = true;
    const PictureRequest request{GetParam().size, 2.5};
    const QImage whole = take(request);
    const QImage tiled = take(request, {300});
    EXPECT_LE(largestDifference(whole, tiled), 1);
    // The comparison sees something: the picture is no plain area.
    EXPECT_GT(largestDifference(whole, whole.mirrored()), 50);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, TiledPictures,
    ::testing::Values(TiledCase{"Square", {701, 701}, RenderMode::Normal, GL_FUNC_ADD},
                      TiledCase{"Wide", {1201, 500}, RenderMode::Normal, GL_FUNC_ADD},
                      TiledCase{"Tall", {310, 1003}, RenderMode::Normal, GL_MAX},
                      TiledCase{"Anaglyph", {640, 600}, RenderMode::Anaglyph, GL_FUNC_ADD},
                      TiledCase{"FourViews", {620, 800}, RenderMode::FourViews, GL_FUNC_ADD}),
    [](const auto& tested) { return std::string(tested.param.name); });

/// Past the largest viewport the parts are rounded each in its own way: lines may step a pixel elsewhere, the
/// volume and the text are the same.
TEST_F(Pictures, JoinPastTheLargestViewport)
{
    showOverlays();
    rig.scene.view.showBoundingBox = false;
    rig.scene.view.showScaleBar = false;
    for (const RenderMode mode : {RenderMode::Normal, RenderMode::Anaglyph, RenderMode::FourViews}) {
        rig.scene.view.renderMode = mode;
        EXPECT_LE(largestDifference(take({{900, 701}, 2}), take({{900, 701}, 2}, {300, 300})), 2);
    }
}

TEST_F(Pictures, TilesReportStepsAndStopWhenAsked)
{
    rig.makeCurrent();
    PictureMaker maker(rig.thread(), {64});
    std::vector<std::pair<int, int>> steps;
    std::atomic<bool> cancel = false;
    const Progress progress{[&](const QString&, int done, int total) {
                                steps.emplace_back(done, total);
                                cancel = done == 3;
                            },
                            &cancel};
    // Tiles of 64 pixels have 32 that are taken: 4 across, and the 50 rows fit.
    EXPECT_TRUE(maker.draw({{100, 50}}, progress).isNull());
    EXPECT_EQ(maker.error(), "");
    EXPECT_EQ(steps, (std::vector<std::pair<int, int>>{{1, 4}, {2, 4}, {3, 4}}));
    steps.clear();
    EXPECT_FALSE(maker
                     .draw({{100, 50}}, Progress{[&](const QString&, int done, int total) {
                               steps.emplace_back(done, total);
                           }})
                     .isNull());
    EXPECT_EQ(steps.size(), 4U);
}

TEST_F(Pictures, NothingMovesOnWhileOneIsTaken)
{
    rig.scene.view.spinX = 8;
    rig.scene.recording = true;
    rig.scene.view.playing = rig.scene.currentId();
    const double before = rig.scene.view.rotY;
    take({{64, 64}});
    EXPECT_EQ(rig.scene.view.rotY, before);
    EXPECT_TRUE(rig.scene.keyFrames.empty());
    EXPECT_EQ(rig.events.rotations, 0);
}

TEST_F(Pictures, ImpossibleSizesAreRefusedWithAText)
{
    rig.makeCurrent();
    PictureMaker maker(rig.thread());
    EXPECT_TRUE(maker.draw({{0, 100}}).isNull());
    EXPECT_EQ(maker.error(), "A picture of 0 x 100 pixels cannot be made");
    EXPECT_TRUE(maker.draw({{100, -3}}).isNull());
    EXPECT_TRUE(maker.draw({{1000000, 1000000}}).isNull());
    EXPECT_EQ(maker.error(), "Could not allocate memory for a picture of 1000000 x 1000000 pixels");
    EXPECT_FALSE(maker.draw({{10, 10}}).isNull());
    EXPECT_EQ(maker.error(), "");
}

TEST_F(Pictures, WithoutABufferThereIsAWarning)
{
    rig.makeCurrent();
    GlTable table = gl();
    table.GenFramebuffers = nullptr;
    const GlTableScope withoutBuffers(table);
    PictureMaker maker(rig.thread());
    EXPECT_TRUE(maker.draw({{10, 10}}).isNull());
    EXPECT_EQ(maker.error(), "Could not allocate pbuffer");
    EXPECT_EQ(log.count("Massively screwed"), 1);
}

TEST_F(Pictures, OfNothingBehindTheVolumeTheBackgroundShows)
{
    // Over black the straight colours times their opacity are the opaque picture.
    rig.scene.view.showBoundingBox = true;
    const QImage opaque = take({{120, 120}});
    const QImage clear = take({{120, 120}, 1, true});
    ASSERT_EQ(clear.format(), QImage::Format_ARGB32);
    QImage over(120, 120, QImage::Format_RGB32);
    over.fill(Qt::black);
    int seenThrough = 0;
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 120; ++x) {
            const QRgb p = clear.pixel(x, y);
            const auto shown = [&](int value) { return (value * qAlpha(p) + 127) / 255; };
            over.setPixel(x, y, qRgb(shown(qRed(p)), shown(qGreen(p)), shown(qBlue(p))));
            seenThrough += qAlpha(p) > 10 && qAlpha(p) < 245;
        }
    }
    EXPECT_LE(largestDifference(opaque, over), 3);
    EXPECT_GT(seenThrough, 1000);
    EXPECT_EQ(qAlpha(clear.pixel(0, 0)), 0);
}

TEST_F(Pictures, AWindowsFrameIsOpaqueAgainAfterATransparentPicture)
{
    const QImage before = rig.draw();
    take({{120, 120}, 1, true});
    EXPECT_EQ(largestDifference(rig.draw(), before), 0);
}

TEST_F(Pictures, TextKeepsItsShareOfTheHeight)
{
    // The rows that the label of 12 points covers, as a share of the picture.
    const auto labelRows = [&](QSize size, double scale) {
        rig.scene.current()->channels()[0].display.state = ChannelState::Hidden;
        rig.scene.current()->channels()[1].display.state = ChannelState::Hidden;
        rig.scene.watermark = "HHHH";
        rig.scene.view.drawFileLabel = true;
        const QImage picture = take({size, scale});
        int first = -1;
        int last = -1;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (qGreen(picture.pixel(x, y)) > 128) {
                    first = first < 0 ? y : first;
                    last = y;
                }
            }
        }
        return static_cast<double>(last - first + 1) / size.height();
    };
    const double plain = labelRows({512, 512}, 1);
    EXPECT_GT(plain, 0.015);
    EXPECT_NEAR(labelRows({2048, 2048}, 4), plain, 0.0025);
}

TEST(PartViewport, AWholePictureNeedsNoSpreading)
{
    const PartViewport part = partViewport({100, 0, 200}, {{400, 200}, {0, 0, 400, 200}});
    EXPECT_TRUE(part.whole);
    EXPECT_EQ(part.pixels, QRect(100, 0, 200, 200));
}

TEST(PartViewport, ASquareThatTheDriverTakesIsShifted)
{
    const PartViewport part = partViewport({100, 0, 200}, {{500, 200}, {200, 100, 300, 100}, 1, false, 200});
    EXPECT_TRUE(part.whole);
    EXPECT_EQ(part.pixels, QRect(-100, -100, 200, 200));
}

TEST(PartViewport, AQuarterIsSpreadToTheWhole)
{
    // The upper right quarter of the square: 0..1 becomes -1..1 on both axes.
    const PartViewport part = partViewport({100, 0, 200}, {{500, 200}, {200, 100, 300, 100}, 1, false, 150});
    EXPECT_FALSE(part.whole);
    EXPECT_EQ(part.pixels, QRect(0, 0, 100, 100));
    EXPECT_EQ(part.spread, (std::array<double, 16>{2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1}));
}

TEST(PartViewport, NothingPassesBesideTheSquare)
{
    const PartViewport part = partViewport({100, 0, 200}, {{500, 200}, {0, 0, 100, 200}, 1, false, 150});
    EXPECT_FALSE(part.whole);
    // Whatever the point, x becomes 2 and is clipped.
    EXPECT_EQ(part.spread[0], 0);
    EXPECT_EQ(part.spread[12], 2);
    EXPECT_EQ(part.spread[15], 1);
}

} // namespace
} // namespace tirn::test
