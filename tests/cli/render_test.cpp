// Pictures drawn by the tool, where there is no display.

#include <QColor>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include "cli/drawingtool.h"
#include "palettes/palettefile.h"
#include "pictures/picturewriter.h"
#include "support/picfile.h"

namespace tirn {
namespace {

class RenderTool : public DrawingTool
{
protected:
    Outcome render(const QStringList& arguments) const
    {
        return program(TIRN_TOOL, QStringList{"render"} + arguments);
    }
    QImage picture(const QStringList& options, const QString& name = "out.png")
    {
        const Outcome done = render(QStringList{"--overwrite"} + options + QStringList{path(name)});
        EXPECT_EQ(done.code, 0) << done.err.toStdString();
        EXPECT_EQ(done.err, "");
        EXPECT_TRUE(done.out.isEmpty());
        return QImage(path(name));
    }
    void expectUsageError(const QStringList& options, const QString& text) const
    {
        const Outcome refused = render(options + QStringList{pic(), path("never.png")});
        EXPECT_EQ(refused.code, 2) << options.join(' ').toStdString();
        EXPECT_EQ(refused.err, "tirntool: " + text + "; see tirntool --help\n");
        EXPECT_FALSE(QFileInfo::exists(path("never.png")));
    }
};

QColor at(const QImage& picture, double x, double y)
{
    return picture.pixelColor(static_cast<int>(x * picture.width()), static_cast<int>(y * picture.height()));
}

TEST_F(RenderTool, DrawsAStackWithoutADisplayAndWritesNothingElse)
{
    const QImage seen = picture({pic()});
    EXPECT_EQ(seen.size(), QSize(512, 512));
    // Slice 0 of x lies at the positive end, but the data of the first columns stand left.
    EXPECT_NE(at(seen, 0.25, 0.5), at(seen, 0.75, 0.5));
    EXPECT_EQ(files(), (QStringList{"in.pic", "out.png"}));
    EXPECT_TRUE(
        QDir(m_home.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
}

// Slanted, so that the two round differently in some pixel, and differ visibly in none.
TEST_F(RenderTool, TheProcessorAndTheCardDrawAlike)
{
    const QStringList view = {"--rotate", "20,30,0", "--size", "128x128", pic()};
    const QImage card = picture(QStringList{"--draw", "gpu"} + view, "gpu.png");
    const QImage processor = picture(QStringList{"--draw", "cpu"} + view, "cpu.png");
    double sum = 0;
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x)
            sum += std::abs(qRed(card.pixel(x, y)) - qRed(processor.pixel(x, y)));
    }
    EXPECT_LT(sum / (128 * 128), 0.5);
    EXPECT_GT(at(processor, 0.4, 0.5).red(), 100);
    EXPECT_NE(card, processor);
    // There is no card here.
    EXPECT_EQ(picture(view, "auto.png"), processor);
    expectUsageError({"--draw", "pencil"}, "--draw: 'pencil' is none of auto, gpu, cpu");
}

TEST_F(RenderTool, ThePaletteAndItsColourAreThoseOfTheChannel)
{
    const QStringList both = {pic("a.pic"), pic("b.pic", false)};
    const auto bright = [&](const QImage& seen) {
        return std::pair(at(seen, 0.25, 0.5), at(seen, 0.75, 0.5));
    };
    // Two channels are red and green by themselves.
    const auto [first, second] = bright(picture(both));
    EXPECT_TRUE((first.red() > 100 && first.green() == 0) || (second.red() > 100 && second.green() == 0));
    EXPECT_TRUE((first.green() > 100 && first.red() == 0) || (second.green() > 100 && second.red() == 0));
    const QColor red = first.red() > 100 ? first : second;
    const auto blue = bright(picture(QStringList{"--color", "0000ff", "--hide", "1"} + both));
    const QColor shown = first.red() > 100 ? blue.first : blue.second;
    EXPECT_EQ(shown.blue(), red.red());
    EXPECT_EQ(shown.red(), 0);
    EXPECT_EQ((first.red() > 100 ? blue.second : blue.first), QColor(Qt::black));
    // The n-th of --palette and --color, whichever, is for channel n.
    ASSERT_TRUE(PaletteFile(path("green.map")).write(Palette(QColor(0, 255, 0), 8)));
    const QStringList mixed = {"--palette", path("green.map"), "--color", "0000ff"};
    const auto [one, two] = bright(picture(mixed + both));
    EXPECT_GT((first.red() > 100 ? one : two).green(), 100);
    EXPECT_GT((first.red() > 100 ? two : one).blue(), 100);
}

TEST_F(RenderTool, TheViewIsAsAsked)
{
    const QStringList in = {pic()};
    const QImage plain = picture(in);
    const QImage turned = picture(QStringList{"--rotate", "0,180,0"} + in);
    EXPECT_EQ(at(plain, 0.25, 0.5).red() > 50, at(turned, 0.75, 0.5).red() > 50);
    EXPECT_NE(plain, turned);
    EXPECT_EQ(picture(QStringList{"--rotate", "0,360,0"} + in), plain);
    // One unit is half of the picture.
    const QImage moved = picture(QStringList{"--translate", "0.5,0,0"} + in);
    EXPECT_EQ(moved.copy(128, 0, 384, 512), plain.copy(0, 0, 384, 512));
    const QImage scaled = picture(QStringList{"--scale", "1,0.5,1"} + in);
    EXPECT_EQ(at(scaled, 0.25, 0.1), QColor(Qt::black));
    EXPECT_EQ(at(scaled, 0.75, 0.1), QColor(Qt::black));
    const QImage other = picture(QStringList{"--size", "300x200", "--blend", "max", "--target", "3d"} + in);
    EXPECT_EQ(other.size(), QSize(300, 200));
    EXPECT_EQ(at(other, 0.02, 0.5), QColor(Qt::black));
}

TEST_F(RenderTool, ACutBoxIsInSlices)
{
    const QStringList in = {pic()};
    const QImage plain = picture(in);
    const bool brightLeft = at(plain, 0.25, 0.5).red() > 50;
    // The bright slices 0 to 3 go.
    const QImage cut = picture(QStringList{"--cut", "4,7,0,7,0,7"} + in);
    EXPECT_EQ(at(cut, brightLeft ? 0.25 : 0.75, 0.5), QColor(Qt::black));
    EXPECT_EQ(picture(QStringList{"--cut", "0,7,0,7,0,7"} + in), plain);
}

TEST_F(RenderTool, ABackgroundHasAColourOrIsNotThere)
{
    const QStringList in = {"--hide", "0", pic()};
    EXPECT_EQ(at(picture(QStringList{"--background", "336699"} + in), 0.5, 0.5), QColor(0x33, 0x66, 0x99));
    const QImage clear = picture(QStringList{"--background", "none"} + in);
    ASSERT_TRUE(clear.hasAlphaChannel());
    EXPECT_EQ(qAlpha(clear.pixel(256, 256)), 0);
    const QImage volume = picture({"--background", "none", pic()});
    EXPECT_GT(std::max(qAlpha(volume.pixel(128, 256)), qAlpha(volume.pixel(384, 256))), 100);
}

TEST_F(RenderTool, OverlaysStandOverTheVolume)
{
    const QStringList in = {"--hide", "0", pic()};
    const QImage box = picture(QStringList{"--box", "--scale", "0.5,0.5,0.5"} + in);
    EXPECT_GT(box.pixelColor(256, 128).blue() + box.pixelColor(256, 129).blue() +
                  box.pixelColor(256, 127).blue(),
              200);
    const auto lit = [](const QImage& seen) {
        int count = 0;
        for (int y = 0; y < seen.height(); ++y) {
            for (int x = 0; x < seen.width(); ++x)
                count += (seen.pixel(x, y) & 0xffffff) != 0;
        }
        return count;
    };
    EXPECT_EQ(lit(picture(in)), 0);
    EXPECT_GT(lit(picture(QStringList{"--scale-bar"} + in)), 50);
    EXPECT_GT(lit(picture(QStringList{"--watermark", "Figure 3"} + in)), 100);
}

TEST_F(RenderTool, AnaglyphsHaveTheColoursOfTheirPair)
{
    const QStringList in = {"--mode", "anaglyph", "--rotate", "0,20,0", pic()};
    const auto colours = [](const QImage& seen) {
        int red = 0;
        int green = 0;
        int blue = 0;
        for (int y = 0; y < seen.height(); y += 4) {
            for (int x = 0; x < seen.width(); x += 4) {
                red += qRed(seen.pixel(x, y)) > 20;
                green += qGreen(seen.pixel(x, y)) > 20;
                blue += qBlue(seen.pixel(x, y)) > 20;
            }
        }
        return std::array<bool, 3>{red > 0, green > 0, blue > 0};
    };
    EXPECT_EQ(colours(picture(in)), (std::array<bool, 3>{true, true, false}));
    EXPECT_EQ(colours(picture(QStringList{"--filter-colors", "red-blue"} + in)),
              (std::array<bool, 3>{true, false, true}));
    EXPECT_EQ(colours(picture(QStringList{"--filter-colors", "Cyan-Red"} + in)),
              (std::array<bool, 3>{true, true, true}));
    EXPECT_NE(picture(QStringList{"--eye-separation", "0.3"} + in), picture(in));
    EXPECT_NE(picture(QStringList{"--focal", "front"} + in), picture(in));
    EXPECT_NE(picture(QStringList{"--mode", "four", pic()}), picture({pic()}));
}

/// A bright cube fills each quarter but its rim: flat from the front in the lower left one, and turned in the
/// lower right one, where it is smaller.
TEST_F(RenderTool, FourViewsHaveAQuarterOfThePictureEach)
{
    test::PicFile file;
    file.x = file.y = file.z = 8;
    file.value = [](int, int, int) { return 255; };
    const QString in = file.save(path("cube.pic"));
    const QImage four = picture({"--mode", "four", "--color", "00ff00", "--scale", "0.9,0.9,0.9", in});
    for (const QPointF middle :
         {QPointF(0.25, 0.25), QPointF(0.25, 0.75), QPointF(0.75, 0.25), QPointF(0.75, 0.75)})
        EXPECT_GT(at(four, middle.x(), middle.y()).green(), 200) << middle.x() << " " << middle.y();
    EXPECT_EQ(at(four, 0.5, 0.5), QColor(Qt::black));
    EXPECT_GT(at(four, 0.05, 0.95).green(), 100);
    EXPECT_EQ(at(four, 0.55, 0.95), QColor(Qt::black));
    const QImage bar = picture({"--mode", "four", "--hide", "0", "--scale-bar", in});
    EXPECT_NE(bar, picture({"--mode", "four", "--hide", "0", in}));
}

TEST_F(RenderTool, LayoutsPutSeveralPicturesTogether)
{
    const QStringList both = {"--size", "60x40", pic("a.pic"), pic("b.pic", false)};
    // Three cells in a grid of two by two.
    const QImage grid = picture(QStringList{"--layout", "channels"} + both);
    EXPECT_EQ(grid.size(), QSize(120, 80));
    EXPECT_EQ(grid.copy(0, 40, 60, 40), picture(both));
    EXPECT_EQ(grid.copy(0, 0, 60, 40), picture(QStringList{"--hide", "1"} + both));
    EXPECT_EQ(grid.pixelColor(90, 60), QColor(Qt::black));
    EXPECT_EQ(picture(QStringList{"--layout", "channels", "--grid", "3x1"} + both).size(), QSize(180, 40));
    EXPECT_EQ(picture(QStringList{"--layout", "stereo", "--eye-angle", "10"} + both).size(), QSize(120, 40));
    EXPECT_NE(picture(QStringList{"--layout", "stereo", "--dominant", "right"} + both),
              picture(QStringList{"--layout", "stereo"} + both));
    // A cube: 60 deep becomes zthick 60, ythick 40.
    EXPECT_EQ(picture(QStringList{"--layout", "cross"} + both).size(), QSize(60 + 2 * 65, 40 + 2 * 55));
    EXPECT_EQ(picture(QStringList{"--layout", "cross", "--sides", "right"} + both).size(), QSize(125, 40));
}

TEST_F(RenderTool, FilesNoteTheirResolution)
{
    EXPECT_EQ(picture({"--dpi", "254", pic()}).dotsPerMeterX(), 10000);
    EXPECT_EQ(picture({pic()}).dotsPerMeterX(), 11811);
    EXPECT_EQ(render({"--dpi", "254", "--size", "20x10", pic(), path("out.tif")}).code, 0);
    EXPECT_TRUE(program("tiffinfo", {"out.tif"}).out.contains("Resolution: 100, 100 pixels/cm"));
    EXPECT_EQ(render({"--size", "20x10", pic(), path("out.raw")}).code, 0);
    EXPECT_EQ(QFileInfo(path("out.raw")).size(), 20 * 10 * 3);
}

TEST_F(RenderTool, TimesATurn)
{
    const Outcome done = render({"--time", "3", "--size", "64x64", pic()});
    ASSERT_EQ(done.code, 0) << done.err.toStdString();
    const QJsonObject times = QJsonDocument::fromJson(done.out).object();
    EXPECT_EQ(times["frames"].toInt(), 3);
    EXPECT_GT(times["medianMilliseconds"].toDouble(), 0);
    EXPECT_GE(times["maximumMilliseconds"].toDouble(), times["medianMilliseconds"].toDouble());
    EXPECT_GT(times["firstFrameMilliseconds"].toDouble(), 0);
    EXPECT_FALSE(times["renderer"].toString().isEmpty());
    EXPECT_EQ(files(), QStringList{"in.pic"});
}

TEST_F(RenderTool, WrongArgumentsAreNamed)
{
    expectUsageError({"--size", "0x5"}, "--size: '0x5' is not WIDTHxHEIGHT with sides from 1 to 1000000");
    expectUsageError({"--size", "12"}, "--size: '12' is not WIDTHxHEIGHT with sides from 1 to 1000000");
    expectUsageError({"--target", "4d"}, "--target: '4d' is none of 2d, 3d");
    expectUsageError({"--blend", "add"}, "--blend: 'add' is none of alpha, max");
    expectUsageError({"--mode", "stereo"}, "--mode: 'stereo' is none of normal, anaglyph, four");
    expectUsageError({"--rotate", "1,2"}, "--rotate: 3 numbers with commas between, not '1,2'");
    expectUsageError({"--color", "red"}, "--color: 'red' is not RRGGBB in hexadecimal digits");
    expectUsageError({"--hide", "1"}, "--hide: there is no channel 1");
    expectUsageError({"--cut", "0,8,0,7,0,7"}, "--cut: 0 to 8 is no range of the 8 slices along x");
    expectUsageError({"--cut", "0,7,5,4,0,7"}, "--cut: 5 to 4 is no range of the 8 slices along y");
    expectUsageError({"--color", "ff0000", "--color", "00ff00"}, "2 palettes and colors for 1 channels");
    expectUsageError({"--background", "none", "--blend", "max"},
                     "--background none: only with alpha blending");
    expectUsageError({"--layout", "heap"}, "--layout: 'heap' is none of single, channels, stereo, cross");
    expectUsageError({"--eye-angle", "4"}, "--eye-angle: '4' is not a whole number from 5 to 50");
    expectUsageError({"--dominant", "both"}, "--dominant: 'both' is none of left, right");
    expectUsageError({"--sides", "front"}, "--sides: 'front' is none of top, left, right, bottom");
    expectUsageError({"--grid", "101x1"}, "--grid: '101x1' has more than 100 columns or rows");
    expectUsageError({"--dpi", "2401"}, "--dpi: '2401' is not a whole number from 1 to 2400");
    EXPECT_EQ(render({pic(), path("never.jpg")}).code, 2);
    EXPECT_EQ(
        render({"--background", "none", pic(), path("never.tif")}).err,
        "tirntool: --background none: only a PNG keeps what can be seen through; see tirntool --help\n");
    EXPECT_EQ(render({pic()}).code, 2);
}

TEST_F(RenderTool, WhatCannotBeDoneLeavesNothing)
{
    const QString in = pic();
    EXPECT_EQ(render({path("missing.pic"), path("out.png")}).code, 1);
    EXPECT_EQ(render({in, path("nowhere/out.png")}).code, 1);
    const Outcome huge = render({"--size", "1000000x1000000", in, path("out.png")});
    EXPECT_EQ(huge.code, 1);
    EXPECT_TRUE(huge.err.contains("Could not allocate memory")) << huge.err.toStdString();
    const Outcome palette = render({"--palette", path("no.map"), in, path("out.png")});
    EXPECT_EQ(palette.code, 1);
    EXPECT_EQ(palette.err, "tirntool: " + path("no.map") + ": No such file\n");
    EXPECT_EQ(files(), QStringList{"in.pic"});
    test::saveBytes(path("out.png"), "before");
    EXPECT_EQ(render({in, path("out.png")}).code, 1);
    EXPECT_EQ(test::fileContent(path("out.png")), "before");
}

/// A write fails in the middle of the file, as on a full disk: the shell lets no file grow past a few
/// kilobytes, and has the signal for it ignored.
TEST_F(RenderTool, AFullDiskLeavesNothing)
{
    const QString in = pic();
    const QString script =
        "trap '' XFSZ; ulimit -f 16; exec " + QString(TIRN_TOOL) + " render --size 400x300 " + in + " ";
    for (const QString& name : {QString("out.raw"), QString("out.tif")}) {
        const Outcome done = program("/bin/sh", {"-c", script + path(name)});
        EXPECT_EQ(done.code, 1);
        EXPECT_TRUE(done.err.startsWith("tirntool: " + path(name) + ": Could not be written"))
            << done.err.toStdString();
        EXPECT_EQ(files(), QStringList{"in.pic"});
    }
}

/// The driver library is told of no driver at all.
TEST_F(RenderTool, WithoutADriverItSaysSo)
{
    QProcess process;
    QProcessEnvironment none = environment();
    none.insert("__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent.json");
    process.setProcessEnvironment(none);
    process.start(TIRN_TOOL, {"render", pic(), path("out.png")});
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(process.readAllStandardError().contains("cannot be drawn: no driver offers OpenGL"));
    EXPECT_EQ(files(), QStringList{"in.pic"});
}

/// The line that the documentation shows, with fewer and smaller pictures.
TEST_F(RenderTool, ATurnIsDrawnByJobsSideBySide)
{
    ASSERT_FALSE(QStandardPaths::findExecutable("parallel").isEmpty());
    QFile page(QStringLiteral(TIRN_SOURCE_DIR) + "/docs/cluster.md");
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    QString line;
    for (const QString& each : QString::fromUtf8(page.readAll()).split('\n')) {
        if (each.startsWith("    seq 0 359 | parallel"))
            line = each.trimmed();
    }
    ASSERT_FALSE(line.isEmpty());
    pic("stack.pic");
    line.replace("seq 0 359", "seq 0 3").replace("--size 1024x1024", "--size 32x32");
    QProcessEnvironment all = environment();
    all.insert("PATH", QFileInfo(TIRN_TOOL).absolutePath() + ":" + all.value("PATH"));
    QProcess process;
    process.setProcessEnvironment(all);
    process.setWorkingDirectory(m_directory.path());
    process.start("/bin/sh", {"-c", line});
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    for (const char* name : {"turn000.png", "turn001.png", "turn002.png", "turn003.png"})
        EXPECT_EQ(QImage(path(name)).size(), QSize(32, 32)) << name;
    EXPECT_EQ(QImage(path("turn003.png")),
              picture({"--size", "32x32", "--rotate", "0,3,0", path("stack.pic")}));
}

} // namespace
} // namespace tirn
