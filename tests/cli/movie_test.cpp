// Movies made by the tool, where there is no display.

#include <csignal>

#include "cli/movietool.h"
#include "depth/curvefile.h"

namespace tirn {
namespace {

TEST_F(MovieTool, ARotationIsThePicturesOfItsAngles)
{
    const QString in = pic();
    make(QStringList{"--axis", "Y", "--frames", "4", in, path("turn.png")} + kSmall);
    EXPECT_EQ(files(),
              (QStringList{"in.pic", "turn0000.png", "turn0001.png", "turn0002.png", "turn0003.png"}));
    for (int f = 0; f < 4; ++f) {
        const QString angles = QString("0,%1,0").arg(90 * f);
        EXPECT_EQ(frame(qPrintable(QString("turn000%1.png").arg(f))),
                  rendered(kSmall + QStringList{"--rotate", angles, in}))
            << f;
    }
}

TEST_F(MovieTool, AnOrientationThatIsAskedForIsWhereARotationBegins)
{
    const QString in = pic();
    make(QStringList{"--axis", "X", "--frames", "4", "--rotate", "10,20,30", "--range", "1-1", in,
                     path("turn.png")} +
         kSmall);
    EXPECT_EQ(frame("turn0001.png"), rendered(kSmall + QStringList{"--rotate", "100,20,30", in}));
}

TEST_F(MovieTool, FramesAreDrawnByWhoIsAskedTo)
{
    for (const char* who : {"gpu", "cpu"}) {
        const QStringList options = QStringList{"--draw", who, "--rotate", "20,30,0", "--size", "128x128"};
        make(QStringList{"--axis", "Y", "--frames", "4"} + options +
             QStringList{pic(), path(QString(who) + ".png")});
        EXPECT_EQ(frame(qPrintable(QString(who) + "0000.png")), rendered(options + QStringList{pic()}))
            << who;
    }
    EXPECT_NE(frame("gpu0000.png"), frame("cpu0000.png"));
}

TEST_F(MovieTool, AnAviHasItsFramesSizeAndRate)
{
    make(QStringList{"--frames", "6", "--turns", "2", "--rate", "25", pic(), path("turn.avi")} + kSmall);
    EXPECT_EQ(probed("turn.avi"), "width=48 height=32 r_frame_rate=25/1 nb_read_frames=12");
    EXPECT_EQ(files(), (QStringList{"in.pic", "turn.avi"}));
}

TEST_F(MovieTool, AnAvisFramesAreOpaque)
{
    make(QStringList{"--frames", "2", pic(), path("turn.avi")} + kSmall);
    const QByteArray bytes = test::fileContent(path("turn.avi"));
    constexpr int frameBytes = 48 * 32 * 4;
    ASSERT_GT(bytes.size(), 224 + 2 * (frameBytes + 8));
    for (int at = 224 + 8 + 3; at < 224 + 8 + frameBytes; at += 4)
        ASSERT_EQ(static_cast<unsigned char>(bytes.at(at)), 255);
}

TEST_F(MovieTool, AnAvisFramesAreThePictures)
{
    const QString in = pic();
    make(QStringList{"--frames", "3", "--axis", "Y", in, path("turn.avi")} + kSmall);
    EXPECT_EQ(
        program("ffmpeg", {"-v", "error", "-i", path("turn.avi"), "-pix_fmt", "rgb24", path("f%d.png")}).code,
        0);
    EXPECT_EQ(
        frame("f2.png").convertToFormat(QImage::Format_RGB32),
        rendered(kSmall + QStringList{"--rotate", "0,120,0", in}).convertToFormat(QImage::Format_RGB32));
}

TEST_F(MovieTool, AUnitOfARangeHasItsNumbersInTheWholeMovie)
{
    const QString in = pic();
    make(QStringList{"--frames", "10", "--range", "7-20", in, path("part.png")} + kSmall);
    EXPECT_EQ(files(), (QStringList{"in.pic", "part0007.png", "part0008.png", "part0009.png"}));
    make(QStringList{"--frames", "10", "--range", "2-5", in, path("part.avi")} + kSmall);
    EXPECT_TRUE(probed("part.avi").endsWith("nb_read_frames=4"));
    EXPECT_EQ(movie(QStringList{"--frames", "10", "--range", "10-20", in, path("none.avi")} + kSmall).code,
              2);
}

TEST_F(MovieTool, RockingAndPassesHaveTheirFrames)
{
    const QString in = pic();
    make(QStringList{"--type", "rocking", "--frames", "2", "--angle", "20", "--axis", "Y", in,
                     path("rock.png")} +
         kSmall);
    // Four quarters of two frames: to -20, to +20 and back.
    EXPECT_EQ(files().filter("rock").size(), 8);
    EXPECT_EQ(frame("rock0002.png"), rendered(kSmall + QStringList{"--rotate", "0,340,0", in}));
    EXPECT_EQ(frame("rock0006.png"), rendered(kSmall + QStringList{"--rotate", "0,20,0", in}));
    make(QStringList{"--type", "pass", "--axis", "Z", in, path("pass.tif")} + kSmall);
    EXPECT_EQ(files().filter("pass").size(), 8);
}

TEST_F(MovieTool, TimePassesThroughTheTimePoints)
{
    const QString first = pic("a.pic");
    const QString second = pic("b.pic", false);
    make(QStringList{"--type", "time", "--frames-per-time-point", "2", "--time-point", second, first,
                     path("t.png")} +
         kSmall);
    EXPECT_EQ(files().filter("t0").size(), 4);
    EXPECT_EQ(frame("t0000.png"), rendered(kSmall + QStringList{first}));
    EXPECT_EQ(frame("t0003.png"), rendered(kSmall + QStringList{second}));
    // A stack of another size is no time point of this one.
    test::PicFile other;
    const Outcome refused =
        movie({"--type", "time", "--time-point", other.save(path("c.pic")), first, path("u.avi")});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains("differs from the first time point")) << refused.err.toStdString();
}

TEST_F(MovieTool, RecordedFramesAreShownAsTheyWere)
{
    const QString in = pic();
    const QString frames =
        xml("k.xml", "<movie><keyframe yrot='40' xmax='7' ymax='7' zmax='7'/>"
                     "<keyframe yrot='80' xscale='0.5' xmax='7' ymax='7' zmax='7'/></movie>");
    make(QStringList{"--keyframes", frames, in, path("k.png")} + kSmall);
    EXPECT_EQ(files().filter("k0").size(), 2);
    EXPECT_EQ(frame("k0000.png"), rendered(kSmall + QStringList{"--rotate", "0,40,0", in}));
    EXPECT_EQ(frame("k0001.png"),
              rendered(kSmall + QStringList{"--rotate", "0,80,0", "--scale", "0.5,1,1", in}));
}

TEST_F(MovieTool, XmlThatHoldsNoFramesIsRefused)
{
    for (const char* text : {"", "<a>", "<a><b/></a>", "garbage"}) {
        const Outcome refused = movie({"--keyframes", xml("k.xml", text), pic(), path("k.avi")});
        EXPECT_EQ(refused.code, 1) << text;
        EXPECT_TRUE(refused.err.startsWith("tirntool: " + path("k.xml") + ": ")) << refused.err.toStdString();
    }
    EXPECT_EQ(movie({"--timeframes", path("none.xml"), pic(), path("k.avi")}).code, 1);
    EXPECT_FALSE(QFileInfo::exists(path("k.avi")));
}

TEST_F(MovieTool, WrongArgumentsAreNamed)
{
    expectUsageError({"--type", "zoom"}, "--type: 'zoom' is none of rotation, rocking, pass, time");
    expectUsageError({"--axis", "Q"}, "--axis: 'Q' is none of X, Y, Z, X,Y, X,Z, Y,Z, X,Y,Z, X&Y, X&Z, Y&Z");
    expectUsageError({"--type", "pass", "--axis", "X&Y"}, "--axis: a pass goes along X, Y or Z");
    expectUsageError({"--frames", "0"}, "--frames: '0' is not a whole number from 1 to 10000000");
    expectUsageError({"--rate", "0"}, "--rate: '0' is not a whole number from 1 to 240");
    expectUsageError({"--range", "5-3"}, "--range: '5-3' is not FIRST-LAST");
    expectUsageError({"--type", "time", "--keyframes", "a.xml"},
                     "only one of --type, --keyframes and --timeframes");
    expectUsageError({"--background", "none"},
                     "--background none: only a PNG keeps what can be seen through");
    EXPECT_EQ(movie({pic(), path("never.mov")}).code, 2);
    const Outcome huge = movie({"--size", "100000x16", pic(), path("never.avi")});
    EXPECT_EQ(huge.code, 1);
    EXPECT_TRUE(huge.err.contains("Frames of 100000 x 16 pixels cannot be drawn")) << huge.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(path("never.avi")));
}

TEST_F(MovieTool, NothingIsReplacedUnasked)
{
    const QString in = pic();
    test::saveBytes(path("turn0002.png"), "before");
    EXPECT_EQ(movie(QStringList{"--frames", "4", in, path("turn.png")} + kSmall).code, 1);
    EXPECT_EQ(files(), (QStringList{"in.pic", "turn0002.png"}));
    make(QStringList{"--overwrite", "--frames", "4", in, path("turn.png")} + kSmall);
    EXPECT_EQ(frame("turn0002.png").size(), QSize(48, 32));
}

TEST_F(MovieTool, PaddingReplacesNothingUnaskedEither)
{
    // Two time points of three frames and four to pad: after frame 6 come 7 to 10, past the eight frames.
    const QString in = pic();
    const QStringList options = QStringList{"--type", "time",      "--frames", "8", "--frames-per-time-point",
                                            "3",      "--padding", "4",        in,  path("t.png")} +
                                kSmall + QStringList{"--time-point", pic("b.pic", false)};
    test::saveBytes(path("t0009.png"), "before");
    const Outcome refused = movie(options);
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains(path("t0009.png") + ": File exists")) << refused.err.toStdString();
    EXPECT_EQ(files(), (QStringList{"b.pic", "in.pic", "t0009.png"}));
    make(options + QStringList{"--overwrite"});
    EXPECT_EQ(files().filter("t00").size(), 11);
    for (const char* padding : {"t0008.png", "t0009.png", "t0010.png"})
        EXPECT_EQ(frame(padding), frame("t0007.png"));
    EXPECT_EQ(frame("t0009.png"), rendered(kSmall + QStringList{in}));
}

TEST_F(MovieTool, SeeThroughFramesKeepTheirOpacity)
{
    const QString in = pic();
    make(QStringList{"--background", "none", "--frames", "2", "--axis", "Y", in, path("clear.png")} + kSmall);
    EXPECT_EQ(frame("clear0001.png"),
              rendered(kSmall + QStringList{"--background", "none", "--rotate", "0,180,0", in}));
    EXPECT_TRUE(frame("clear0000.png").hasAlphaChannel());
}

/// An interrupt ends the movie behind the frame at hand; what was made so far is a whole file.
TEST_F(MovieTool, AnInterruptClosesTheFileProperly)
{
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(TIRN_TOOL, QStringList{"movie", "--frames", "100000", pic(), path("long.avi")} + kSmall);
    // The file is there beside its place as soon as frames are written.
    const auto grown = [&] {
        for (const QFileInfo& file : QDir(m_directory.path()).entryInfoList(QDir::Files | QDir::Hidden)) {
            if (file.fileName() != "in.pic" && file.size() > 100000)
                return true;
        }
        return false;
    };
    while (!grown() && process.state() != QProcess::NotRunning)
        process.waitForFinished(10);
    ASSERT_EQ(process.state(), QProcess::Running);
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitCode(), 130);
    EXPECT_EQ(files(), (QStringList{"in.pic", "long.avi"}));
    const QString seen = probed("long.avi");
    EXPECT_TRUE(seen.startsWith("width=48 height=32")) << seen.toStdString();
    EXPECT_GT(seen.section("nb_read_frames=", 1).toInt(), 10);
}

TEST_F(MovieTool, AWarningComesBeforeAnAviOfOverTwoGigabytes)
{
    // 4096 x 4096 x 4 bytes are 64 MiB a frame; the disk is never asked for them.
    const QString script = "ulimit -f 100000; " + QString(TIRN_TOOL) +
                           " movie --size 4096x4096 --frames 33 " + pic() + " /nonexistent/movie.avi";
    const Outcome done = program("/bin/sh", {"-c", script});
    EXPECT_EQ(done.code, 1);
    EXPECT_TRUE(done.err.contains("/nonexistent/movie.avi: warning: more than 2 GiB"))
        << done.err.toStdString();
    EXPECT_FALSE(
        movie(QStringList{"--size", "64x64", "--frames", "3", pic(), path("m.avi")}).err.contains("warning"));
}

TEST_F(MovieTool, ADepthCurveIsDrawnInTheThirdDimensionOnly)
{
    const QString in = pic();
    const std::vector<CurveBlock> flat = {{0, std::vector<double>(8, 1.0)}};
    const std::vector<CurveBlock> dim = {{0, std::vector<double>(8, 0.25)}};
    ASSERT_TRUE(writeCurveFile(path("flat.mzp"), flat));
    ASSERT_TRUE(writeCurveFile(path("dim.mzp"), dim));
    const QStringList volume = QStringList{"--target", "3d"} + kSmall;
    const auto brightest = [](const QImage& picture) {
        int most = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                most = std::max(most, qRed(picture.pixel(x, y)));
        }
        return most;
    };
    const int plain = brightest(rendered(volume + QStringList{in}));
    EXPECT_NEAR(brightest(rendered(volume + QStringList{"--zcurve", path("flat.mzp"), in})), plain, 4);
    EXPECT_LT(brightest(rendered(volume + QStringList{"--zcurve", path("dim.mzp"), in})), plain / 2);
    const Outcome flatTarget =
        program(TIRN_TOOL, {"render", "--zcurve", path("flat.mzp"), in, path("x.png")});
    EXPECT_EQ(flatTarget.code, 2);
    EXPECT_EQ(flatTarget.err,
              "tirntool: --zcurve: depth correction is drawn in the 3d target only; say --target 3d; see "
              "tirntool --help\n");
    ASSERT_TRUE(writeCurveFile(path("short.mzp"), std::vector<CurveBlock>{{0, {1, 1, 1}}}));
    const Outcome wrong =
        program(TIRN_TOOL, {"render", "--target", "3d", "--zcurve", path("short.mzp"), in, path("x.png")});
    EXPECT_EQ(wrong.code, 1);
    EXPECT_TRUE(wrong.err.startsWith("tirntool: " + path("short.mzp") + ": ")) << wrong.err.toStdString();
}

TEST_F(MovieTool, ASurfaceStandsInTheVolume)
{
    const QString in = pic();
    const QString mesh =
        test::saveBytes(path("m.stl"), "solid m\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n"
                                       "vertex 8 0 0\nvertex 0 8 0\nendloop\nendfacet\nendsolid\n");
    const QStringList dark = kSmall + QStringList{"--hide", "0", "--mesh", mesh, "--mesh-color", "00ff00"};
    const QImage voxels = rendered(dark + QStringList{"--mesh-fit", "voxels", in});
    // y runs down: the right angle is at the upper left corner of the square in the middle.
    EXPECT_GT(voxels.pixelColor(12, 4).green(), 200);
    EXPECT_EQ(voxels.pixelColor(36, 28), QColor(Qt::black));
    EXPECT_NE(rendered(dark + QStringList{"--mesh-fit", "volume", in}), voxels);
    const Outcome microns = program(TIRN_TOOL, QStringList{"render"} + dark +
                                                   QStringList{"--mesh-fit", "microns", in, path("x.png")});
    EXPECT_EQ(microns.code, 1);
    EXPECT_EQ(microns.err,
              "tirntool: " + mesh + ": cannot be placed by microns: the voxel size is not known\n");
    test::saveBytes(mesh, "solid m\nnonsense\n");
    EXPECT_EQ(program(TIRN_TOOL, QStringList{"render"} + dark + QStringList{in, path("x.png")}).code, 1);
    make(kSmall + QStringList{"--frames", "2", in, path("with.avi")});
}

} // namespace
} // namespace tirn
