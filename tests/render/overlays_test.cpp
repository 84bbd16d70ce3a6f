// Labels, boxes and the scale bar: where they stand, and that they leave ink there.

#include <gtest/gtest.h>

#include "glsupport/recordedrig.h"
#include "render/picturemaker.h"
#include "scene/pointing/cuthandles.h"

namespace tirn {
namespace {

using test::denseStack;
using test::GlCall;
using test::LogCapture;
using test::PlainStack;
using test::RecordedRig;
using test::RenderRig;

constexpr int kSide = 300;

class RecordedOverlays : public ::testing::Test
{
protected:
    LogCapture log;
    RecordedRig rig{RenderThreadKind::FragmentProgram, {kSide, kSide}};

    VoxelArray& showVolume(const PlainStack& stack = denseStack(4, 4, 4))
    {
        VoxelArray& array = rig.show({stack});
        rig.makePalettes(1);
        return array;
    }
    /// Where the lines of text of one frame begin, from the left and from the bottom; the descent of the font
    /// is in.
    std::vector<std::array<int, 2>> textPositions()
    {
        rig.draw();
        std::vector<std::array<int, 2>> all;
        for (const GlCall& call : rig.gl.callsOf("WindowPos2i"))
            all.push_back({static_cast<int>(call.number(0)), static_cast<int>(call.number(1))});
        return all;
    }
    int textWidth() { return static_cast<int>(rig.gl.callsOf("DrawPixels").front().number(0)); }
    int textHeight() { return static_cast<int>(rig.gl.callsOf("DrawPixels").front().number(1)); }
    std::vector<std::string> scaleBar() { return rig.draw({"Vertex3f"}); }
};

TEST_F(RecordedOverlays, AreNotThereUnlessAskedFor)
{
    showVolume();
    rig.draw();
    EXPECT_TRUE(textPositions().empty());
    EXPECT_EQ(rig.gl.count("Begin"), 0);
}

TEST_F(RecordedOverlays, TheFrameRateStandsInTheLowerLeft)
{
    showVolume();
    rig.draw();
    rig.scene.view.showFrameRate = true;
    const auto positions = textPositions();
    ASSERT_EQ(positions.size(), 1U);
    EXPECT_EQ(positions[0][0], 10);
    EXPECT_LE(positions[0][1], 10);
    EXPECT_GT(positions[0][1], 0);
    EXPECT_EQ(rig.gl.count("Finish"), 1);
}

TEST_F(RecordedOverlays, TheOrientationStandsAHundredPixelsFromTheRight)
{
    showVolume();
    rig.draw();
    rig.scene.view.drawOrientation = true;
    const auto positions = textPositions();
    ASSERT_EQ(positions.size(), 1U);
    EXPECT_EQ(positions[0][0], kSide - 100);
}

TEST_F(RecordedOverlays, TheTimeLabelIsRightAligned)
{
    VoxelArray& array = showVolume();
    rig.draw();
    rig.scene.view.drawChannelTime = true;
    EXPECT_EQ(textPositions()[0][0], kSide - (8 * 11 + 10));
    array.timeLabels()[0] = QString(40, 'x');
    EXPECT_EQ(textPositions()[0][0], 10);
}

TEST_F(RecordedOverlays, TheFileLabelIsCentredAndNeedsAWatermark)
{
    showVolume();
    rig.draw();
    rig.scene.view.drawFileLabel = true;
    EXPECT_TRUE(textPositions().empty());
    rig.scene.watermark = "seven77";
    EXPECT_EQ(textPositions()[0][0], kSide / 2 - 7 * 7 / 2);
    rig.scene.watermark = QString(100, 'x');
    EXPECT_EQ(textPositions()[0][0], 10);
}

TEST_F(RecordedOverlays, TheFontScaleMakesTextLarger)
{
    showVolume();
    rig.draw();
    rig.scene.view.drawOrientation = true;
    textPositions();
    const int width = textWidth();
    const int height = textHeight();
    rig.scene.view.fontScale = 2;
    textPositions();
    EXPECT_GT(textWidth(), width * 3 / 2);
    EXPECT_GT(textHeight(), height * 3 / 2);
}

TEST_F(RecordedOverlays, TheScaleBarStandsInEachCorner)
{
    showVolume().stack().dimX = 0.1;
    rig.draw();
    rig.scene.view.showScaleBar = true;
    const auto at = [&](ScaleBarLocation location) {
        rig.scene.view.scaleBarLocation = location;
        return scaleBar();
    };
    EXPECT_EQ(at(ScaleBarLocation::TopLeft),
              (std::vector<std::string>{"Vertex3f(-0.8, 0.92, -1.9)", "Vertex3f(-0.8, 0.9, -1.9)",
                                        "Vertex3f(-0.5, 0.9, -1.9)", "Vertex3f(-0.5, 0.92, -1.9)"}));
    EXPECT_EQ(at(ScaleBarLocation::TopRight)[1], "Vertex3f(0.6, 0.9, -1.9)");
    EXPECT_EQ(at(ScaleBarLocation::BottomLeft)[1], "Vertex3f(-0.8, -0.8, -1.9)");
    EXPECT_EQ(at(ScaleBarLocation::BottomRight)[2], "Vertex3f(0.9, -0.8, -1.9)");
    rig.scene.view.ortho.zNear = -5;
    rig.scene.view.scaleBarSize = 0.5;
    EXPECT_EQ(at(ScaleBarLocation::TopRight)[1], "Vertex3f(0.4, 0.9, -4.9)");
    EXPECT_EQ(rig.gl.count("DrawPixels"), 1);
}

TEST_F(RecordedOverlays, TheScaleBarOfFourViewsHasTwiceTheAnchorAndHalfTheFont)
{
    showVolume().stack().dimX = 0.1;
    rig.scene.view.showScaleBar = true;
    rig.draw();
    scaleBar();
    const int height = textHeight();
    rig.scene.view.renderMode = RenderMode::FourViews;
    rig.scene.view.ortho = {-2, 2, -2, 2, -2, 2};
    rig.draw();
    EXPECT_EQ(scaleBar()[1], "Vertex3f(-1.6, -1.6, -1.9)");
    EXPECT_LT(textHeight(), height * 3 / 4);
}

TEST_F(RecordedOverlays, AnUnknownVoxelSizeHasATextAndNoBar)
{
    showVolume();
    rig.draw();
    rig.scene.view.showScaleBar = true;
    EXPECT_TRUE(scaleBar().empty());
    EXPECT_EQ(rig.gl.count("DrawPixels"), 1);
}

// The longest padded side spans the picture, whichever axis it is on: only that makes the bar true.
TEST_F(RecordedOverlays, TheScaleBarMeasuresTheLongestPaddedSide)
{
    const auto labelWidth = [](const PlainStack& stack, double dimX) {
        RecordedRig other(RenderThreadKind::FragmentProgram, {kSide, kSide});
        other.show({stack}).stack().dimX = dimX;
        other.makePalettes(1);
        other.scene.view.showScaleBar = true;
        other.draw();
        return other.gl.callsOf("DrawPixels").front().bytes;
    };
    // 16 * 0.15 * 10 = 24, whichever side is the longest; 4 * 0.15 * 10 = 6 is shorter by a digit.
    EXPECT_EQ(labelWidth(denseStack(16, 3, 2), 10), labelWidth(denseStack(3, 16, 2), 10));
    EXPECT_EQ(labelWidth(denseStack(3, 2, 16), 10), labelWidth(denseStack(3, 16, 2), 10));
    EXPECT_NE(labelWidth(denseStack(3, 2, 2), 10), labelWidth(denseStack(3, 16, 2), 10));
}

TEST_F(RecordedOverlays, AreDrawnWithoutTexturesAndProgram)
{
    showVolume();
    rig.draw();
    rig.scene.view.drawOrientation = true;
    const std::vector<std::string> calls = rig.draw({"Enable", "Disable", "DrawPixels"});
    const auto text = std::find_if(calls.begin(), calls.end(),
                                   [](const std::string& each) { return each.starts_with("DrawPixels"); });
    ASSERT_NE(text, calls.end());
    EXPECT_EQ(std::vector<std::string>(text - 3, text),
              (std::vector<std::string>{"Disable(34820)", "Disable(3553)", "Disable(32879)"}));
    EXPECT_EQ(*(text + 1), "Enable(3553)");
    EXPECT_EQ(*(text + 2), "Enable(34820)");
}

/// Pixels of a part of a picture that are not black, and their strongest colours.
struct Ink
{
    int pixels = 0;
    int red = 0;
    int green = 0;
    int blue = 0;
};

Ink inkIn(const QImage& image, const QRect& part = QRect(0, 0, kSide, kSide))
{
    Ink ink;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            const QColor color = image.pixelColor(x, y);
            ink.pixels += color.red() + color.green() + color.blue() > 0;
            ink.red = std::max(ink.red, color.red());
            ink.green = std::max(ink.green, color.green());
            ink.blue = std::max(ink.blue, color.blue());
        }
    }
    return ink;
}

/// Whether all ink lies in one part, and some does.
bool onlyIn(const QImage& image, const QRect& part)
{
    const int inside = inkIn(image, part).pixels;
    return inside > 0 && inside == inkIn(image).pixels;
}

const QRect kLowerLeft(0, kSide / 2, kSide / 2, kSide / 2);
const QRect kLowerRight(kSide / 2, kSide / 2, kSide / 2, kSide / 2);
const QRect kUpperLeft(0, 0, kSide / 2, kSide / 2);
const QRect kUpperRight(kSide / 2, 0, kSide / 2, kSide / 2);

/// On the driver, over a volume that draws nothing.
class DrawnOverlays : public ::testing::Test
{
protected:
    LogCapture log;
    std::unique_ptr<RenderRig> rig;

    void SetUp() override { start(RenderThreadKind::FragmentProgram); }
    void start(RenderThreadKind kind) { rig = std::make_unique<RenderRig>(QSize(kSide, kSide), kind); }
    VoxelArray& showNothing()
    {
        VoxelArray& array = rig->show({PlainStack::blank(4, 4, 4)});
        rig->setTables({test::ColourTable(1024, 0)});
        return array;
    }
};

TEST_F(DrawnOverlays, NoStackIsToldInRedOrBlueByTheKind)
{
    const Ink red = inkIn(rig->draw());
    EXPECT_GT(red.pixels, 100);
    EXPECT_EQ(red.red, 255);
    EXPECT_NEAR(red.green, 64, 1);
    EXPECT_NEAR(red.blue, 64, 1);
    start(RenderThreadKind::Nvidia);
    const Ink blue = inkIn(rig->draw());
    EXPECT_EQ(blue.blue, 255);
    EXPECT_NEAR(blue.red, 64, 1);
    start(RenderThreadKind::Paletted);
    const Ink white = inkIn(rig->draw());
    EXPECT_EQ(white.red + white.green + white.blue, 3 * 255);
}

TEST_F(DrawnOverlays, ACardThatCannotDrawSaysSo)
{
    start(RenderThreadKind::LostCause);
    EXPECT_GT(inkIn(rig->draw()).pixels, 300);
}

TEST_F(DrawnOverlays, BatchModeIsTold)
{
    rig->scene.batchMode = true;
    const QImage picture = rig->draw();
    EXPECT_GT(inkIn(picture, QRect(0, 0, kSide, kSide / 2)).pixels, 50);
    EXPECT_GT(inkIn(picture, QRect(0, kSide / 2, kSide, kSide / 2)).pixels, 50);
}

TEST_F(DrawnOverlays, ABrokenProgramIsToldInRed)
{
    VoxelArray& array = showNothing();
    EXPECT_EQ(inkIn(rig->draw()).pixels, 0);
    array.stack().bitDepth = 20;
    const Ink ink = inkIn(rig->draw());
    EXPECT_GT(ink.pixels, 50);
    EXPECT_EQ(ink.red, 255);
    EXPECT_EQ(ink.green + ink.blue, 0);
    array.stack().bitDepth = 8;
    EXPECT_EQ(inkIn(rig->draw()).pixels, 0);
}

TEST_F(DrawnOverlays, LabelsStandInTheLowerCorners)
{
    showNothing();
    rig->scene.view.showFrameRate = true;
    EXPECT_TRUE(onlyIn(rig->draw(), kLowerLeft));
    rig->scene.view.showFrameRate = false;
    rig->scene.view.drawOrientation = true;
    EXPECT_TRUE(onlyIn(rig->draw(), kLowerRight));
    rig->scene.view.drawOrientation = false;
    rig->scene.view.drawChannelTime = true;
    EXPECT_TRUE(onlyIn(rig->draw(), kLowerRight));
    rig->scene.view.drawChannelTime = false;
    rig->scene.view.drawFileLabel = true;
    rig->scene.watermark = "a file";
    EXPECT_TRUE(onlyIn(rig->draw(), QRect(kSide / 4, kSide / 2, kSide / 2, kSide / 2)));
}

TEST_F(DrawnOverlays, TheScaleBarHasItsCornerAndColour)
{
    showNothing().stack().dimX = 0.1;
    rig->scene.view.showScaleBar = true;
    rig->scene.view.scaleBarColor = Qt::green;
    const std::pair<ScaleBarLocation, QRect> corners[] = {{ScaleBarLocation::TopLeft, kUpperLeft},
                                                          {ScaleBarLocation::TopRight, kUpperRight},
                                                          {ScaleBarLocation::BottomLeft, kLowerLeft},
                                                          {ScaleBarLocation::BottomRight, kLowerRight}};
    for (const auto& [location, corner] : corners) {
        rig->scene.view.scaleBarLocation = location;
        const QImage picture = rig->draw();
        EXPECT_TRUE(onlyIn(picture, corner)) << static_cast<int>(location);
        EXPECT_EQ(inkIn(picture).green, 255);
        EXPECT_EQ(inkIn(picture).red, 0);
    }
    // The bar spans 0.3 of 2 units: 45 pixels, from -0.8 on.
    rig->scene.view.scaleBarLocation = ScaleBarLocation::BottomLeft;
    const QImage picture = rig->draw();
    const int row = static_cast<int>(kSide * 0.9);
    EXPECT_GE(inkIn(picture, QRect(28, row - 1, 50, 3)).pixels, 44);
    EXPECT_EQ(inkIn(picture, QRect(0, row - 1, 28, 3)).pixels, 0);
}

TEST_F(DrawnOverlays, LabelsKeepTheirColourWhateverTheBlending)
{
    showNothing();
    rig->scene.view.drawOrientation = true;
    const QImage added = rig->draw();
    rig->scene.view.blendMode = GL_MAX;
    EXPECT_EQ(rig->draw(), added);
}

TEST_F(DrawnOverlays, TheBoundingBoxIsBlue)
{
    showNothing();
    rig->scene.view.showBoundingBox = true;
    rig->scene.view.rotX = 30;
    rig->scene.view.rotY = 40;
    const Ink ink = inkIn(rig->draw());
    EXPECT_GT(ink.pixels, 500);
    EXPECT_EQ(ink.blue, 255);
    EXPECT_EQ(ink.red + ink.green, 0);
}

TEST_F(DrawnOverlays, TheCutBoxHasAHandleOnEachFace)
{
    showNothing();
    rig->scene.view.cutHandles.shown = true;
    rig->scene.view.cutBoxColor = Qt::green;
    rig->scene.view.rotX = 30;
    rig->scene.view.rotY = 40;
    const QImage picture = rig->draw();
    const ViewProjection projection(rig->scene.view, {}, {kSide, kSide});
    const VoxelArray& array = *rig->scene.current();
    int inFront = 0;
    for (const CutHandle& handle : cutHandles(projection, array.geometry(), array.cut)) {
        const QPoint at = handle.seen.at.toPoint();
        EXPECT_EQ(picture.pixelColor(at).green(), handle.isInFront ? 255 : 127);
        EXPECT_EQ(inkIn(picture, QRect(at - QPoint(15, 15), QSize(31, 31))).pixels, 49);
        inFront += handle.isInFront;
    }
    EXPECT_EQ(inFront, 3);
    EXPECT_EQ(inkIn(picture).pixels, 6 * 49);
    rig->scene.view.renderMode = RenderMode::Stereo;
    const QImage stereo = rig->draw();
    rig->scene.view.cutHandles.shown = false;
    EXPECT_EQ(rig->draw(), stereo) << "there is no volume to cut";
}

/// A ruler from the left to the right, a quarter of the way up from the middle.
class DrawnRuler : public DrawnOverlays
{
protected:
    void SetUp() override
    {
        DrawnOverlays::SetUp();
        VoxelArray& array = showNothing();
        rig->scene.view.scaleBarColor = Qt::green;
        rig->scene.view.ruler = {array.id(), {{0, 1, 0}, {3, 1, 0}}};
    }
    // Voxels are 75 pixels wide: from 37.5 to 262.5, at 112.5 from above.
    const QRect kLine{39, 110, 223, 5};

    static int greenColumns(const QImage& picture, const QRect& part)
    {
        int columns = 0;
        for (int x = part.left(); x <= part.right(); ++x)
            columns += inkIn(picture, QRect(x, part.top(), 1, part.height())).green == 255;
        return columns;
    }
};

TEST_F(DrawnRuler, IsALineBetweenTheMiddlesOfTheVoxelsWithItsLength)
{
    const QImage picture = rig->draw();
    EXPECT_EQ(greenColumns(picture, kLine), kLine.width());
    EXPECT_EQ(inkIn(picture).red + inkIn(picture).blue, 0);
    // Nothing lies beyond its ends and their marks, and the label over it.
    EXPECT_EQ(inkIn(picture, QRect(0, 0, 34, kSide)).pixels, 0);
    EXPECT_EQ(inkIn(picture, QRect(267, 0, 33, kSide)).pixels, 0);
    EXPECT_EQ(inkIn(picture, QRect(0, 117, kSide, 183)).pixels, 0);
    EXPECT_GT(inkIn(picture, QRect(155, 85, 110, 23)).pixels, 50);
    EXPECT_EQ(inkIn(picture, QRect(0, 85, 150, 23)).pixels, 0);
}

TEST_F(DrawnRuler, MovesWithTheVolume)
{
    rig->scene.view.rotZ = 180;
    rig->scene.view.transX = 0.2;
    // Turned the line lies as far below the middle, and 30 pixels to the left.
    const QImage picture = rig->draw();
    EXPECT_EQ(greenColumns(picture, QRect(9, 185, 223, 5)), 223);
    EXPECT_EQ(greenColumns(picture, kLine), 0);
}

TEST_F(DrawnRuler, StandsInPicturesToo)
{
    rig->makeCurrent();
    const QImage picture = PictureMaker(rig->thread()).draw({{kSide, kSide}});
    EXPECT_EQ(picture, rig->draw().convertToFormat(picture.format()));
    const QImage large = PictureMaker(rig->thread(), {400}).draw({{3 * kSide, 3 * kSide}, 3});
    EXPECT_EQ(greenColumns(large, QRect(117, 330, 669, 15)), 669);
}

TEST_F(DrawnRuler, IsSeenInEveryModeThatShowsTheVolume)
{
    rig->scene.view.scaleBarColor = Qt::white;
    rig->scene.view.renderMode = RenderMode::Anaglyph;
    const Ink both = inkIn(rig->draw());
    EXPECT_EQ(both.red, 255);
    EXPECT_EQ(both.green, 255);
    EXPECT_GT(both.pixels, 200);
    rig->scene.view.renderMode = RenderMode::FourViews;
    rig->scene.view.ortho = projectionOf(RenderMode::FourViews);
    EXPECT_TRUE(onlyIn(rig->draw(), kLowerRight));
    rig->scene.view.ruler = {};
    EXPECT_EQ(inkIn(rig->draw()).pixels, 0);
}

TEST_F(DrawnRuler, WithOneEndIsAMark)
{
    rig->scene.view.ruler.ends.pop_back();
    const Ink ink = inkIn(rig->draw());
    EXPECT_EQ(ink.pixels, 25);
    EXPECT_EQ(inkIn(rig->draw(), QRect(35, 110, 6, 6)).pixels, 25);
}

TEST_F(DrawnRuler, OfAnotherStackIsNotDrawn)
{
    rig->scene.view.ruler.stack = StackId::None;
    EXPECT_EQ(inkIn(rig->draw()).pixels, 0);
}

TEST_F(DrawnRuler, LeavesTheVolumeAsItIs)
{
    rig->show({denseStack(8, 8, 8)});
    rig->setTables({test::rampTable(256, {1, 1, 1}, 1)});
    const QImage without = rig->draw();
    rig->scene.view.ruler = {rig->scene.currentId(), {{0, 1, 0}, {3, 1, 0}}};
    rig->draw();
    rig->scene.view.ruler = {};
    EXPECT_EQ(rig->draw(), without);
}

TEST_F(DrawnOverlays, NoPictureHasHandles)
{
    showNothing();
    rig->scene.view.cutHandles.shown = true;
    rig->makeCurrent();
    EXPECT_EQ(inkIn(PictureMaker(rig->thread()).draw({{kSide, kSide}})).pixels, 0);
    EXPECT_GT(inkIn(rig->draw()).pixels, 0);
}

TEST_F(DrawnOverlays, AFrameThatIsGrabbedHasNoHandlesAndTheWindowHasThemAgain)
{
    showNothing();
    rig->scene.view.cutHandles.shown = true;
    EXPECT_EQ(inkIn(rig->thread().grabNextFrame()).pixels, 0);
    rig->surface().waitForFrames(2);
    rig->thread().stopAndWait();
    rig->surface().makeCurrent();
    EXPECT_EQ(rig->surface().frames(), 2);
    EXPECT_GT(inkIn(rig->surface().image()).pixels, 0);
}

TEST_F(DrawnOverlays, AnAnaglyphFrameLeavesAllColoursToTheNext)
{
    rig->show({denseStack(8, 8, 8)});
    rig->setTables({test::rampTable(256, {1, 1, 1}, 1)});
    const QImage before = rig->draw();
    rig->scene.view.renderMode = RenderMode::Anaglyph;
    rig->scene.view.filterColors = 0;
    const Ink anaglyph = inkIn(rig->draw());
    EXPECT_GT(anaglyph.red, 100);
    EXPECT_GT(anaglyph.blue, 100);
    EXPECT_EQ(anaglyph.green, 0);
    rig->scene.view.renderMode = RenderMode::Normal;
    EXPECT_EQ(rig->draw(), before);
}

TEST_F(DrawnOverlays, AnAnaglyphShowsAllChannelsOfASlice)
{
    PlainStack stack = PlainStack::blank(8, 8, 8, 2);
    std::fill(stack.voxels.begin(), stack.voxels.end(), 255);
    rig->show({stack});
    rig->setTables({test::rampTable(256, {1, 0, 0}, 0.5), test::rampTable(256, {0, 0, 1}, 0.5)});
    rig->scene.view.renderMode = RenderMode::Anaglyph;
    rig->scene.view.filterColors = 0;
    const Ink ink = inkIn(rig->draw());
    EXPECT_GT(ink.red, 50);
    EXPECT_GT(ink.blue, 50);
}

TEST_F(DrawnOverlays, FourViewsFillAllFourQuarters)
{
    rig->show({denseStack(8, 8, 8)});
    rig->setTables({test::rampTable(256, {1, 1, 1}, 1)});
    rig->scene.view.renderMode = RenderMode::FourViews;
    rig->scene.view.ortho = {-2, 2, -2, 2, -2, 2};
    const QImage picture = rig->draw();
    for (const QRect& quarter : {kUpperLeft, kUpperRight, kLowerLeft})
        EXPECT_GT(inkIn(picture, quarter).pixels, kSide * kSide / 4 * 9 / 10);
    // The turned view is scaled by 0.707.
    EXPECT_NEAR(inkIn(picture, kLowerRight).pixels, kSide * kSide / 8, 700);
}

} // namespace
} // namespace tirn
