// What stands on the picture in words: each text letter by letter, its colour and its place.

#include <QFont>
#include <QFontMetrics>
#include <QPainter>

#include "glsupport/recordedrig.h"

namespace tirn::test {
namespace {

constexpr int kSide = 300;

struct ScreenText
{
    QString text;
    int points = 16;
    bool bold = true;
    QColor color = Qt::white;
    /// Of the left end of the base line, in pixels from the lower left corner; shares of a picture may be
    /// rounded down.
    int x = 0;
    int y = 0;
};

QFont fontOf(const ScreenText& text)
{
    QFont font("Times");
    font.setStyleHint(QFont::Serif);
    font.setPixelSize(static_cast<int>(std::lround(text.points * 96.0 / 72.0)));
    font.setBold(text.bold);
    return font;
}

/// The text as the frame buffer takes it: straight alpha, rows from the bottom up.
std::vector<std::uint8_t> pixelsOf(const ScreenText& text)
{
    const QFontMetrics metrics(fontOf(text));
    QImage image(metrics.horizontalAdvance(text.text) + 4, metrics.height(),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setFont(fontOf(text));
    painter.setPen(text.color);
    painter.drawText(0, metrics.ascent(), text.text);
    painter.end();
    const QImage rows = image.convertToFormat(QImage::Format_RGBA8888).mirrored();
    return {rows.constBits(), rows.constBits() + rows.sizeInBytes()};
}

class ScreenTexts : public ::testing::TestWithParam<RenderThreadKind>
{
protected:
    LogCapture log;
    RecordedRig rig{GetParam(), {kSide, kSide}};

    bool usesPrograms() const { return GetParam() != RenderThreadKind::Paletted; }
    void showVolume()
    {
        rig.show({denseStack(4, 4, 4)});
        rig.makePalettes(1);
    }
    /// These texts and no others, in this order.
    void expectTexts(const std::vector<ScreenText>& texts)
    {
        rig.draw();
        const std::vector<GlCall> pictures = rig.gl.callsOf("DrawPixels");
        const std::vector<GlCall> places = rig.gl.callsOf("WindowPos2i");
        ASSERT_EQ(pictures.size(), texts.size());
        ASSERT_EQ(places.size(), texts.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_TRUE(pictures[i].bytes == pixelsOf(texts[i])) << texts[i].text.toStdString();
            EXPECT_NEAR(places[i].number(0), texts[i].x, 1) << texts[i].text.toStdString();
            EXPECT_NEAR(places[i].number(1) + QFontMetrics(fontOf(texts[i])).descent(), texts[i].y, 1)
                << texts[i].text.toStdString();
        }
    }
};

TEST_P(ScreenTexts, WithoutAStackItSaysSoInTheColourOfItsKind)
{
    const QColor blue = QColor::fromRgbF(0.25, 0.25, 1);
    const QColor red = QColor::fromRgbF(1, 0.25, 0.25);
    // -0.3 of -1 to 1 is 105 of 300 pixels.
    if (!usesPrograms())
        expectTexts({{"No stack loaded", 16, true, Qt::white, 105, 150}});
    else
        expectTexts(
            {{"No stack loaded.", 16, true, GetParam() == RenderThreadKind::Nvidia ? blue : red, 105, 150}});
}

TEST_P(ScreenTexts, ABatchAsksForPatience)
{
    rig.scene.batchMode = true;
    expectTexts({{"Making batch mode movie.", 16, true, Qt::white, 90, 150},
                 {"Please be patient.", 16, true, Qt::white, 105, 135}});
}

TEST_P(ScreenTexts, WhatIsNotReadySaysSo)
{
    showVolume();
    rig.scene.view.renderMode = RenderMode::Stereo;
    expectTexts({{"Stereo in a window not ready yet!", 16, true, Qt::white, 75, 150}});
    rig.scene.view.renderMode = RenderMode::FullscreenStereo;
    if (!usesPrograms())
        expectTexts({{"Full screen stereo not ready yet!", 16, true, Qt::white, 75, 150}});
}

TEST_P(ScreenTexts, AProgramThatFailsSaysSoInRed)
{
    if (!usesPrograms())
        return;
    showVolume();
    rig.gl.queueErrors({0x502});
    expectTexts({{"shader busted!", 16, true, Qt::red, 105, 150}});
}

TEST_P(ScreenTexts, LabelsSayWhereWhenAndWhat)
{
    showVolume();
    rig.scene.current()->timeLabels()[0] = "00:01:02";
    rig.scene.watermark = "seven77";
    rig.scene.view.drawOrientation = true;
    rig.scene.view.drawChannelTime = true;
    rig.scene.view.drawFileLabel = true;
    expectTexts({{"XY FORWARD", 10, false, Qt::white, kSide - 100, 10},
                 {"00:01:02", 16, true, Qt::white, kSide - (8 * 11 + 10), 10},
                 {"seven77", 12, true, Qt::white, kSide / 2 - 7 * 7 / 2, 5}});
}

TEST_P(ScreenTexts, TheScaleBarSaysItsLengthOrThatItIsUnknown)
{
    showVolume();
    rig.scene.view.showScaleBar = true;
    rig.scene.view.scaleBarColor = Qt::yellow;
    rig.scene.view.scaleBarLocation = ScaleBarLocation::BottomLeft;
    // From -1 to 1: -0.8 is 30 of 300 pixels.
    expectTexts({{"unknown", 12, true, Qt::yellow, 30, 30}});
    rig.scene.current()->stack().dimX = 10;
    rig.scene.view.scaleBarSize = 0.5;
    // Four voxels of 10 microns span the picture of 2: 0.5 of it are 10; the text begins 0.03 and 0.01 in.
    expectTexts({{QString("10 ") + QChar(0xb5) + "m", 12, true, Qt::yellow, 34, 31}});
}

INSTANTIATE_TEST_SUITE_P(Kinds, ScreenTexts,
                         ::testing::Values(RenderThreadKind::Paletted, RenderThreadKind::Nvidia,
                                           RenderThreadKind::FragmentProgram));

class LostCauseTexts : public ScreenTexts
{};

TEST_P(LostCauseTexts, NameTheCardAsTheReason)
{
    expectTexts({{"Sorry, this video card", 24, false, Qt::white, 60, 165},
                 {"is not supported by Tirn", 24, false, Qt::white, 60, 135}});
}

INSTANTIATE_TEST_SUITE_P(Kinds, LostCauseTexts, ::testing::Values(RenderThreadKind::LostCause));

TEST(FrameRateText, IsThatOfOneFrameASecond)
{
    EXPECT_EQ(frameRateText(0.5), "2.0   fps");
    EXPECT_EQ(frameRateText(0.01), "100.0 fps");
    EXPECT_EQ(frameRateText(30), "0.0   fps");
    EXPECT_EQ(frameRateText(0), "Ludicrous speed GO!");
}

} // namespace
} // namespace tirn::test
