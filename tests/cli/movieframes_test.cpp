// Every kind of movie against single pictures of poses worked out by hand.

#include <QRegularExpression>

#include "cli/movietool.h"

namespace tirn {
namespace {

/// A stack of 6 x 5 x 8 voxels that looks different from every side and in every slice.
class MovieFrames : public MovieTool
{
protected:
    MovieFrames()
    {
        m_stack = save("stack.pic", [](int x, int y, int z) { return 30 + 11 * x + 7 * y + 15 * z; });
    }

    QString save(const QString& name, const std::function<int(int, int, int)>& value) const
    {
        test::PicFile file;
        file.x = 6;
        file.y = 5;
        file.z = 8;
        file.value = value;
        return file.save(path(name));
    }
    void film(const QStringList& options) const
    {
        for (const QString& former : files().filter(QRegularExpression("^f[0-9]{4}\\.png$")))
            QFile::remove(path(former));
        make(options + QStringList{m_stack, path("f.png")} + kSmall);
    }
    /// Expects a frame to be the picture of these options, and that to be no black one.
    void expectFrame(int number, const QStringList& options) const
    {
        const QString name = QString::asprintf("f%04d.png", number);
        const QImage picture = rendered(kSmall + options + QStringList{m_stack});
        EXPECT_EQ(frame(qPrintable(name)), picture) << options.join(' ').toStdString() << " at " << number;
        QImage black(picture.size(), picture.format());
        black.fill(Qt::black);
        EXPECT_NE(picture, black);
    }
    void expectTurned(int number, const QString& angles) const { expectFrame(number, {"--rotate", angles}); }
    /// Expects frames to be cut along an axis from these slices on, up to the last one.
    void expectCuts(int axis, const QList<int>& lows, const QString& angles, bool plane = false) const
    {
        const int last[] = {5, 4, 7};
        for (int f = 0; f < lows.size(); ++f) {
            QStringList cut = {"0", "5", "0", "4", "0", "7"};
            cut[2 * axis] = QString::number(lows[f]);
            cut[2 * axis + 1] = QString::number(plane ? lows[f] : last[axis]);
            expectFrame(f, {"--rotate", angles, "--cut", cut.join(',')});
        }
        EXPECT_FALSE(QFileInfo::exists(path(QString::asprintf("f%04d.png", static_cast<int>(lows.size())))));
    }
    /// Draws these frames of a composed movie of one second, 15 frames, alone.
    void compose(const QString& actions, const QString& range, const QStringList& options = {}) const
    {
        const QString name = xml("t.xml", "<d><timeframe seconds='1'>" + actions + "</timeframe></d>");
        film(QStringList{"--timeframes", name, "--range", range} + options);
    }

    QString m_stack;
};

TEST_F(MovieFrames, ARotationDoesItsAxesOneAfterTheOtherOrTogether)
{
    // A turn of two frames; the second axis goes on counting: 2 * 180, 3 * 180.
    film({"--axis", "X,Y,Z", "--frames", "2"});
    const QStringList angles = {"0,0,0", "180,0,0", "0,0,0", "0,180,0", "0,0,0", "0,0,180"};
    for (int f = 0; f < angles.size(); ++f)
        expectTurned(f, angles[f]);
    film({"--axis", "X&Y", "--frames", "4", "--range", "1-1"});
    expectTurned(1, "90,90,0");
    // Both take the angle of x, when they begin somewhere else, too.
    film({"--axis", "Y&Z", "--frames", "4", "--range", "1-1", "--rotate", "10,20,30"});
    expectTurned(1, "10,100,100");
}

TEST_F(MovieFrames, ARockingSwingsToBothSides)
{
    // Quarters of two frames: x swings in the first eight frames, y in the next.
    film({"--type", "rocking", "--frames", "2", "--angle", "20", "--axis", "X,Y"});
    for (const auto& [f, angles] : std::vector<std::pair<int, QString>>{{0, "0,0,0"},
                                                                        {1, "350,0,0"},
                                                                        {2, "340,0,0"},
                                                                        {4, "0,0,0"},
                                                                        {6, "20,0,0"},
                                                                        {10, "0,340,0"},
                                                                        {15, "0,10,0"}})
        expectTurned(f, angles);
    film({"--type", "rocking", "--frames", "2", "--angle", "20", "--axis", "X&Z", "--range", "2-2"});
    expectTurned(2, "340,0,340");
    // About z the way back is taken for all of the swing: 20 - (i - 6) / 2 * 20.
    film({"--type", "rocking", "--frames", "2", "--angle", "20", "--axis", "Z", "--range", "0-2"});
    expectTurned(0, "0,0,80");
    expectTurned(2, "0,0,60");
}

TEST_F(MovieFrames, APassCutsItsAxisStepByStep)
{
    // Quarters of the way, rounded: of 7 slices to go 0, 1.75, 3.5, 5.25.
    const QStringList pass = {"--type", "pass", "--frames", "4"};
    film(pass + QStringList{"--axis", "Z"});
    expectCuts(2, {0, 2, 4, 5}, "0,0,0");
    film(pass + QStringList{"--axis", "Z", "--pass", "bottom-top"});
    expectCuts(2, {7, 5, 3, 2}, "0,0,0");
    film(pass + QStringList{"--axis", "Z", "--pass", "out-in"});
    expectCuts(2, {0, 2, 4, 5, 7, 5, 4, 2}, "0,0,0");
    film(pass + QStringList{"--axis", "Z", "--pass", "plane"});
    expectCuts(2, {0, 2, 4, 5}, "0,0,0", true);
    // Of 5 to go 0, 1.25, 2.5, 3.75; of 4 to go 0, 1, 2, 3.
    film(pass + QStringList{"--axis", "X"});
    expectCuts(0, {0, 1, 3, 4}, "0,270,0");
    film(pass + QStringList{"--axis", "Y", "--pass", "plane"});
    expectCuts(1, {0, 1, 2, 3}, "270,0,0", true);
}

TEST_F(MovieFrames, APassInThreeDimensionsCutsToo)
{
    film({"--type", "pass", "--axis", "Z", "--frames", "2", "--target", "3d"});
    for (const int f : {0, 1}) {
        const QString cut = QString("0,5,0,4,%1,7").arg(4 * f);
        expectFrame(f, {"--target", "3d", "--cut", cut});
    }
}

TEST_F(MovieFrames, APassStaysWithinTheCutsThatWereThere)
{
    film({"--type", "pass", "--axis", "Z", "--frames", "4", "--cut", "1,4,0,3,2,6"});
    for (const int f : {0, 1, 2, 3})
        expectFrame(f, {"--cut", QString("1,4,0,3,%1,6").arg(2 + f)});
    // From the side the view stays, and so do the cuts of the other axes.
    film({"--type", "pass", "--axis", "Z", "--frames", "2", "--rotate", "0,60,0"});
    expectFrame(1, {"--rotate", "0,60,0", "--cut", "0,5,0,4,4,7"});
}

TEST_F(MovieFrames, RecordedFramesCutAsTheyWereRecorded)
{
    const QString all = "xmax='5' ymax='4'";
    film({"--keyframes", xml("k.xml", "<m><keyframe zmax='7' " + all +
                                          "/>"
                                          "<keyframe zmin='3' zmax='6' " +
                                          all +
                                          "/>"
                                          "<keyframe zmin='5' zmax='2' " +
                                          all +
                                          "/>"
                                          "<keyframe zmin='-1' zmax='-1' xtrans='0.25' " +
                                          all +
                                          "/>"
                                          "<keyframe zmin='2000000000' zmax='2000000000' " +
                                          all + "/></m>")});
    expectFrame(0, {});
    expectFrame(1, {"--cut", "0,5,0,4,3,6"});
    expectFrame(2, {"--cut", "0,5,0,4,2,5"});
    expectFrame(3, {"--cut", "0,5,0,4,2,5", "--translate", "0.25,0,0"});
    expectFrame(4, {"--cut", "0,5,0,4,7,7"});
}

TEST_F(MovieFrames, AComposedMovieMovesScalesAndTurns)
{
    compose("<action type='Rotation' x='0' y='1' z='0'/>", "5-5");
    expectTurned(5, "0,120,0");
    // Where the view was asked for, it begins there.
    compose("<action type='Rotation' x='0' y='1' z='0'/>", "5-5", {"--rotate", "10,20,30"});
    expectTurned(5, "10,140,30");
    compose("<action type='Scale' x='0.5' y='1' z='1'/>", "3-3");
    expectFrame(3, {"--scale", "0.9,1,1"});
    compose("<action type='Translation' x='0.3' y='0' z='0'/>", "5-5");
    expectFrame(5, {"--translate", "0.1,0,0"});
    // A quarter of 15 frames is three: -30 degrees at its end, +30 at that of the nine behind it.
    compose("<action type='Rocking' x='30' y='0' z='0' rotations='1'/>", "3-12");
    expectTurned(3, "330,0,0");
    expectTurned(12, "30,0,0");
}

TEST_F(MovieFrames, AComposedPassCuts)
{
    const QString pass = "<action type='Pass Through' x='0' y='0' z='1' passtype='%1'/>";
    const auto expectLow = [this](int f, int low) {
        expectFrame(f, {"--cut", QString("0,5,0,4,%1,7").arg(low)});
    };
    // 7 / 15 of a slice a frame, rounded.
    compose(pass.arg(0), "3-14");
    expectLow(3, 1);
    expectLow(7, 3);
    expectLow(14, 7);
    compose(pass.arg(1), "3-3");
    expectLow(3, 6);
    // Out in eight frames, and on from the far side in seven.
    compose(pass.arg(2), "4-11");
    expectLow(4, 4);
    expectLow(8, 7);
    expectLow(11, 4);
    // A plane has a frame for each of the eight slices.
    compose(pass.arg(3), "0-100");
    expectFrame(3, {"--cut", "0,5,0,4,3,3"});
    expectFrame(7, {"--cut", "0,5,0,4,6,6"});
    EXPECT_FALSE(QFileInfo::exists(path("f0008.png")));
}

TEST_F(MovieFrames, AComposedMovieShowsItsTimePoints)
{
    const QString second =
        save("second.pic", [](int x, int y, int z) { return 240 - 11 * x - 7 * y - 15 * z; });
    const QStringList time = {"--frames-per-time-point", "5", "--time-point", second};
    const auto expectSecond = [&](const char* name) {
        EXPECT_EQ(frame(name), rendered(kSmall + QStringList{second})) << name;
    };
    compose("", "4-10", time);
    expectFrame(4, {});
    expectSecond("f0005.png");
    expectSecond("f0009.png");
    expectFrame(10, {});
    // What a session keeps of time points.
    compose("<action type='Timepoints' fptp='7' start='1' end='-1'/>", "0-0", time);
    expectSecond("f0000.png");
}

TEST_F(MovieFrames, AFadeDrawsEachEntryAtItsPartOfTheWay)
{
    // A palette of four different tables, and what a third of it rounds to.
    const auto table = [this](const QString& name, int parts) {
        QString text;
        for (int i = 0; i < 256; ++i) {
            for (const int value : {i, 255 - i, 128, 64 + i / 2})
                text += QString::number((value * parts * 2 + 15) / 30) + ' ';
            text.back() = '\n';
        }
        return test::saveBytes(path(name), text.toLatin1());
    };
    const QStringList whole = {"--palette", table("whole.map", 15)};
    const QStringList third = {"--palette", table("third.map", 5)};
    const QString fade = "<action type='Palette' channels='1'><palchannel num='0' action='%1'/></action>";
    compose(fade.arg(4), "0-10", whole);
    expectFrame(0, whole);
    expectFrame(10, third);
    compose(fade.arg(3), "5-5", whole);
    expectFrame(5, third);
    // Behind a recorded frame, which holds no palettes, it fades what was there.
    const QString recorded = "<action type='Custom'><keyframe xmax='5' ymax='4' zmax='7'/></action>";
    const QString name = xml("t.xml", "<d><timeframe>" + recorded + "</timeframe><timeframe>" + fade.arg(4) +
                                          "</timeframe></d>");
    film(QStringList{"--timeframes", name, "--range", "0-11"} + whole);
    expectFrame(0, whole);
    expectFrame(11, third);
}

TEST_F(MovieFrames, AFlashHidesAndShows)
{
    // Four frames at 300 milliseconds and 15 frames a second; the count begins with frame 0.
    compose("<action type='Palette' channels='1'><palchannel num='0' action='6'/></action>", "0-8");
    const QImage first = frame("f0000.png");
    QImage black(first.size(), first.format());
    black.fill(Qt::black);
    EXPECT_EQ(first, black);
    expectFrame(1, {});
}

} // namespace
} // namespace tirn
