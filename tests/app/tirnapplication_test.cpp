// The application object: start, loading, closing, events, end.

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QProgressDialog>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "support/tifffile.h"
#include "uisupport/apptest.h"

namespace tirn::test {
namespace {

class Application : public AppTest
{
protected:
    void post(QEvent* event)
    {
        QCoreApplication::postEvent(&app(), event);
        QCoreApplication::sendPostedEvents();
    }
    QString label(const char* name) { return app().mainForm().findChild<QLabel*>(name)->text(); }
};

TEST_F(Application, StartsWithAWindowOf512PixelsThatMayShrink)
{
    EXPECT_EQ(app().mainForm().windowTitle(), QString("Tirn"));
    EXPECT_EQ(app().mainForm().objectName(), QString("Main"));
    EXPECT_EQ(widget().objectName(), QString("regular"));
    EXPECT_EQ(widget().size(), QSize(512, 512));
    EXPECT_EQ(widget().minimumSize(), QSize(128, 128));
    EXPECT_TRUE(log.contains("Stereo not supported"));
    EXPECT_TRUE(log.contains("yay sharing working"));
    EXPECT_EQ(label("tex"), QString("none"));
}

TEST_F(Application, InputFieldsLookAlike)
{
    for (const char* field : {"QSpinBox", "QComboBox", "tirn::FileChooser"}) {
        EXPECT_EQ(QApplication::palette(field).color(QPalette::Base),
                  QApplication::palette("QLineEdit").color(QPalette::Base))
            << field << " would look disabled beside a line edit";
    }
}

TEST_F(Application, TheSoftwareDriverIsTheSecondFragmentProgramKind)
{
    EXPECT_EQ(widget().threadKind(), RenderThreadKind::FragmentProgram);
    EXPECT_TRUE(log.contains("Using AtiThread"));
}

TEST_F(Application, TwoNamedFilesAreTwoColouredChannels)
{
    load({picFile("c00.pic"), picFile("c01.pic"), mapFile("red.map"), mapFile("green.map")});
    ASSERT_EQ(app().arrayCount(), 1);
    const VoxelArray& array = *app().scene().current();
    ASSERT_EQ(array.channelCount(), 2);
    EXPECT_EQ(array.channels()[0].display.palette, 0);
    EXPECT_EQ(array.channels()[1].display.palette, 1);
    EXPECT_EQ(app().palette(0)->name(), QString("red.map"));
    EXPECT_EQ(app().palette(1)->name(), QString("green.map"));
    EXPECT_EQ(label("tex"), QString("2D tex"));
    EXPECT_EQ(array.channels()[1].zCurve.size(), 8);
}

TEST_F(Application, ANumberChoosesThePaletteOfAChannelAndOneBeyondTheListDoesNot)
{
    load({picFile("c00.pic"), picFile("c01.pic"), mapFile("red.map"), mapFile("green.map"), "1", "7"});
    ASSERT_EQ(app().arrayCount(), 1);
    const auto& channels = app().scene().current()->channels();
    EXPECT_EQ(channels[0].display.palette, 1);
    // Channel 1 of the palettes that came with it.
    EXPECT_EQ(channels[1].display.palette, 1);
    EXPECT_EQ(app().palette(1)->name(), QString("green.map"));
}

TEST_F(Application, ANumberIsNoFileOfThatName)
{
    picFile("1");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(path(".")));
    load({picFile("a.pic"), mapFile("red.map"), mapFile("green.map"), "1"});
    QDir::setCurrent(before);
    ASSERT_EQ(app().arrayCount(), 1);
    EXPECT_EQ(app().scene().current()->channelCount(), 1);
    EXPECT_EQ(app().scene().current()->channels()[0].display.palette, 1);
}

TEST_F(Application, AStackAndAPaletteAreToldOfStepByStep)
{
    load({picFile("a.pic"), mapFile("red.map")});
    const QStringList lines = log.lines();
    int last = -1;
    for (const QString& text :
         {"loading " + path("a.pic") + " using palette " + path("red.map"), QString("Created ImageFile"),
          QString("Read ImagFile"), QString("Encoded ImageFile")}) {
        const auto found = std::find_if(lines.begin(), lines.end(),
                                        [&text](const QString& line) { return line.contains(text); });
        ASSERT_NE(found, lines.end()) << text.toStdString();
        EXPECT_GT(found - lines.begin(), last);
        last = static_cast<int>(found - lines.begin());
    }
    EXPECT_FALSE(log.contains("Usage: tirn <stack file> <palette file>\n"));
}

TEST_F(Application, OfAStackAndAPaletteEachMissingOneIsTold)
{
    load({path("gone.pic"), mapFile("red.map")});
    EXPECT_EQ(takeBox(), "File does not exist: Cannot find " + path("gone.pic"));
    EXPECT_FALSE(log.contains("Usage: tirn <stack file> <palette file>\n"));
    load({picFile("a.pic"), path("gone.map")});
    EXPECT_EQ(takeBox(), "File does not exist: Cannot find " + path("gone.map"));
    EXPECT_EQ(app().arrayCount(), 1);
}

TEST_F(Application, APaletteBesideWhatIsNoStackPrintsTheUsage)
{
    load({mapFile("red.map"), "3"});
    EXPECT_TRUE(log.contains("Usage: tirn <stack file> <palette file>\n"));
}

TEST_F(Application, MissingPalettesAreMadeGrey)
{
    load({picFile("c00.pic"), picFile("c01.pic")});
    ASSERT_EQ(app().scene().palettes.size(), 2U);
    EXPECT_EQ(app().palette(1)->red()[200], 200);
    EXPECT_EQ(app().palette(2), nullptr);
}

TEST_F(Application, AllFilesThatAreGoneStandInOneBox)
{
    load({path("a.pic"), path("b.pic")});
    EXPECT_EQ(takeBox(),
              "File does not exist: Cannot find " + path("a.pic") + "\nCannot find " + path("b.pic"));
    EXPECT_EQ(takeBox(), "");
}

TEST_F(Application, AStackWithGapsIsShownAndToldOf)
{
    TiffFile tiff{std::vector<TiffPage>(3, TiffPage{.x = 16, .y = 12})};
    // Two bytes are all that a strip holds.
    tiff.pages[1].fields = {{279, 4, {2}, {}}};
    load({tiff.save(path("a.tif"))});
    EXPECT_EQ(app().arrayCount(), 1);
    EXPECT_EQ(takeBox(), "File load error: Some of the stack is missing, and shown as black.\n"
                         "a.tif: file ends early: 2 of 3 layers");
}

TEST_F(Application, TheScaleFollowsTheVoxelSizes)
{
    load({QString(TIRN_TEST_DATA) + "/golgi_16bit.pic"});
    const AxisScale scale = app().scene().current()->scale;
    EXPECT_NEAR(scale.x, 0.351435 / 0.3876, 1e-6);
    EXPECT_NEAR(scale.z, 1, 1e-9);
}

TEST_F(Application, OnlyAPaletteLoadsThePaletteAndStops)
{
    load({mapFile("red.map")});
    EXPECT_EQ(app().scene().palettes.size(), 1U);
    EXPECT_EQ(app().arrayCount(), 0);
    EXPECT_EQ(takeBox(), QString());
}

TEST_F(Application, AMissingFileShowsABoxAndTheRestLoads)
{
    load({path("gone.pic"), picFile("there.pic")});
    EXPECT_EQ(takeBox(), "File does not exist: Cannot find " + path("gone.pic"));
    EXPECT_EQ(app().arrayCount(), 1);
}

TEST_F(Application, ADirectoryAndAnEmptyFileAreUnknown)
{
    QFile empty(path("empty.pic"));
    ASSERT_TRUE(empty.open(QIODevice::WriteOnly));
    empty.close();
    load({QDir::tempPath(), empty.fileName()});
    EXPECT_TRUE(log.contains("I have no idea what this is! " + QDir::tempPath()));
    EXPECT_TRUE(log.contains("I have no idea what this is! " + empty.fileName()));
    EXPECT_EQ(app().arrayCount(), 0);
}

TEST_F(Application, AFileCutShortIsUnknown)
{
    QFile file(picFile("short.pic"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.resize(file.size() - 1);
    load({file.fileName()});
    EXPECT_TRUE(log.contains("I have no idea what this is! " + file.fileName()));
}

TEST_F(Application, APaletteOf255LinesIsRefusedAndTheStackStillLoads)
{
    load({picFile("stack.pic"), mapFile("short.map", 255)});
    EXPECT_TRUE(log.contains("Did not read palette file correctly! Only 255 matches"));
    EXPECT_EQ(takeBox(),
              "File load error: The file " + path("short.map") + " does not use a known palett file format.");
    EXPECT_EQ(app().arrayCount(), 1);
}

TEST_F(Application, ChannelsOfDifferentSizeAreRefusedWithABox)
{
    load({picFile("c00.pic"), picFile("c01.pic", 17)});
    EXPECT_TRUE(takeBox().startsWith("File load error: c01.pic differs from c00.pic"));
    EXPECT_EQ(app().arrayCount(), 0);
    load({picFile("good.pic")});
    EXPECT_EQ(app().arrayCount(), 1);
}

TEST_F(Application, CurrentArrayRules)
{
    QSignalSpy spy(&app(), &TirnApplication::currentArrayChanged);
    EXPECT_TRUE(app().setCurrentArray(-1));
    EXPECT_EQ(spy.count(), 1);
    EXPECT_FALSE(app().setCurrentArray(0));
    EXPECT_EQ(spy.count(), 2);
    load({picFile("a.pic")});
    spy.clear();
    EXPECT_FALSE(app().setCurrentArray(-1));
    EXPECT_FALSE(app().setCurrentArray(1));
    EXPECT_EQ(spy.count(), 0);
    EXPECT_TRUE(app().setCurrentArray(0));
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(Application, ClosingTheOnlyStackLeavesNothingCurrent)
{
    load({picFile("a.pic")});
    QSignalSpy spy(&app(), &TirnApplication::stackClosed);
    app().closeStack(0);
    EXPECT_EQ(app().currentIndex(), -1);
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(label("tex"), QString("none"));
    app().closeStack(0);
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(Application, ClosingChoosesTheNextCurrentStack)
{
    const auto name = [this] { return app().scene().current()->name(); };
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    load({picFile("c.pic")});
    app().setCurrentArray(1);
    app().closeStack();
    EXPECT_EQ(name(), QString("c.pic"));
    app().closeStack(0);
    EXPECT_EQ(name(), QString("c.pic"));
    EXPECT_EQ(app().currentIndex(), 0);
    load({picFile("d.pic")});
    app().closeStack(1);
    EXPECT_EQ(name(), QString("c.pic"));
}

TEST_F(Application, CloseAllEmptiesEverythingAndResetsTheView)
{
    load({picFile("a.pic"), mapFile("red.map")});
    load({picFile("b.pic")});
    widget().rotate(30, 0);
    changeView([](ViewState& view) { view.zCorrection = true; });
    app().closeAll();
    EXPECT_EQ(app().arrayCount(), 0);
    EXPECT_TRUE(app().scene().palettes.empty());
    EXPECT_FALSE(view().zCorrection);
    EXPECT_EQ(view().rotX, 0);
    EXPECT_TRUE(log.contains("Everything closed"));
    load({picFile("again.pic")});
    EXPECT_EQ(app().arrayCount(), 1);
}

/// Lets the program look into files, so that a load of them starts at once.
void lookInto(TirnApplication& app, const QStringList& names)
{
    ProbeQuestion question(app.probes());
    bool answered = false;
    std::vector<QStringList> stacks;
    for (const QString& name : names)
        stacks.push_back({name});
    question.ask(std::move(stacks), [&answered] { answered = true; });
    ASSERT_TRUE(QTest::qWaitFor([&answered] { return answered; }));
}

TEST_F(Application, PalettesClosedDuringALoadLeaveTheFirst)
{
    const QStringList stacks = {picFile("c00.pic"), picFile("c01.pic")};
    lookInto(app(), stacks);
    app().loadFromCommandLine(QStringList{"tirn"} + stacks + QStringList{mapFile("a.map"), mapFile("b.map")});
    app().loads().fileThread().wait();
    app().closeAll();
    settle();
    ASSERT_EQ(app().arrayCount(), 1);
    EXPECT_EQ(app().scene().palettes.size(), 1U);
    EXPECT_EQ(app().scene().current()->channels()[1].display.palette, 0);
}

TEST_F(Application, TheProgressOfANamedStackEndsWithIt)
{
    for (const QStringList& names :
         {QStringList{picFile("a.pic")}, QStringList{picFile("b.pic"), picFile("c.pic")}}) {
        load(names);
        const auto* progress = app().mainForm().findChild<QProgressDialog*>("progress");
        ASSERT_NE(progress, nullptr);
        EXPECT_EQ(progress->value(), -1) << "reset, " << names.size() << " files";
    }
}

TEST_F(Application, BatchModeClosesNothing)
{
    load({picFile("a.pic")});
    app().model().edit({}, [](Scene& scene) { scene.batchMode = true; });
    app().closeAll();
    app().closeStack();
    EXPECT_EQ(app().arrayCount(), 1);
    app().model().edit({}, [](Scene& scene) { scene.batchMode = false; });
}

TEST_F(Application, ASecondProgressEventAddsTheStoredBase)
{
    post(new ProgressEvent("Loading a", 100, 200, false));
    post(new ProgressEvent("", 30, -1, false));
    const auto* dialog = app().mainForm().findChild<QProgressDialog*>("progress");
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->value(), 130);
    EXPECT_EQ(dialog->maximum(), 200);
    EXPECT_EQ(dialog->labelText(), QString("Loading a"));
    EXPECT_EQ(dialog->windowTitle(), QString("Tirn"));
    post(new ImageProgressEvent("Flipping", 7, 50));
    EXPECT_EQ(dialog->value(), 7);
    post(new ProgressEvent("it broke", 0, 0, true));
    EXPECT_EQ(takeBox(), QString("File load error: it broke"));
}

TEST_F(Application, AnUnknownEventIsShown)
{
    post(new QEvent(static_cast<QEvent::Type>(1005)));
    EXPECT_EQ(takeBox(), QString("Unknown Event: id 1005"));
}

TEST_F(Application, ARecordedFrameIsSignalled)
{
    QSignalSpy spy(&app(), &TirnApplication::frameRecorded);
    post(new KeyFrameEvent(12));
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy[0][0].toInt(), 12);
}

TEST_F(Application, AReencodedStackIsDrawnAnew)
{
    load({picFile("a.pic")});
    const int before = widget().renderThread().framesDrawn();
    post(new ReencodeDoneEvent);
    settle();
    EXPECT_GT(widget().renderThread().framesDrawn(), before);
}

TEST_F(Application, StretchToUsedBitsRebuildsTheProgram)
{
    QSettings(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2")
        .setValue("Paths/StretchOnOpen", false);
    restart();
    load({QString(TIRN_TEST_DATA) + "/golgi_16bit.pic"});
    EXPECT_TRUE(log.contains("Compile shader for 16 bit data"));
    app().mainForm().action("stretchToUsedBitsAction")->trigger();
    settle();
    // The largest value is 14421, which rounds to 14 bits.
    EXPECT_TRUE(log.contains("Compile shader for 14 bit data"));
    EXPECT_TRUE(view().autoBitDepth);
}

TEST_F(Application, CopyPutsThePictureOnTheClipboard)
{
    load({picFile("a.pic")});
    app().mainForm().action("editCopyAction")->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(512, 512));
    EXPECT_TRUE(log.contains("putting on clipboard"));
}

TEST_F(Application, FormsAreMadeHiddenAndShownOnDemand)
{
    QWidget* about = app().forms().form(FormId::About);
    ASSERT_NE(about, nullptr);
    EXPECT_EQ(about->objectName(), QString("About"));
    EXPECT_FALSE(about->isVisible());
    app().mainForm().action("helpAboutAction")->trigger();
    EXPECT_TRUE(about->isVisible());
    app().forms().hideAll();
    EXPECT_FALSE(about->isVisible());
}

TEST_F(Application, FavouritePalettesComeFirstFromLastToFirst)
{
    QDir(path("")).mkdir("favourites");
    mapFile("favourites/a.map");
    mapFile("favourites/b.map");
    mapFile("favourites/broken.map", 3);
    {
        QSettings store(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2");
        store.setValue("Paths/FavoritePalettesPath", path("favourites"));
    }
    restart();
    ASSERT_EQ(app().scene().palettes.size(), 2U);
    EXPECT_EQ(app().palette(0)->name(), QString("b.map"));
    load({picFile("s.pic"), mapFile("own.map")});
    EXPECT_EQ(app().scene().current()->channels()[0].display.palette, 2);
}

TEST_F(Application, StoredBlendingIsTheFirst)
{
    {
        QSettings store(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2");
        store.setValue("Paths/DefaultBlending", "Max Intensity");
        store.setValue("Paths/2DTexDimLimit", 64);
    }
    restart();
    EXPECT_EQ(view().blendMode, static_cast<GLenum>(GL_MAX));
    EXPECT_EQ(label("alpha"), QString("max"));
    EXPECT_EQ(app().scene().settings.texLimit2D, 64);
}

TEST_F(Application, ABlendingThatIsNotKnownIsThatOfAlpha)
{
    for (const char* text : {"Alpha", "max intensity", "Overlay", ""}) {
        QSettings(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2")
            .setValue("Paths/DefaultBlending", text);
        restart();
        EXPECT_EQ(view().blendMode, static_cast<GLenum>(GL_FUNC_ADD)) << text;
        EXPECT_EQ(label("alpha"), QString("alpha")) << text;
    }
}

TEST_F(Application, AnIdleProgramDoesNotWakeUp)
{
    load({picFile("a.pic")});
    const auto wakeUps = [] {
        qint64 count = 0;
        for (const QString& task : QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile status("/proc/self/task/" + task + "/status");
            if (!status.open(QIODevice::ReadOnly))
                continue;
            for (const QByteArray& line : status.readAll().split('\n')) {
                if (line.startsWith("voluntary_ctxt_switches:"))
                    count += line.mid(24).trimmed().toLongLong();
            }
        }
        return count;
    };
    settle();
    // Idle means that nothing happens for two seconds, so for once a test must let them pass.
    const auto idle = [](int milliseconds) {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    };
    idle(500);
    const int frames = widget().renderThread().framesDrawn();
    // The timer that ends the wait, and what its loop does before and after. What other programs do to the
    // screen may wake this one, so one quiet stretch of three is enough: a habit of its own would show in
    // each.
    constexpr qint64 allowed = 8;
    qint64 least = allowed + 1;
    for (int attempt = 0; attempt < 3 && least > allowed; ++attempt) {
        const qint64 before = wakeUps();
        idle(2000);
        least = std::min(least, wakeUps() - before);
    }
    EXPECT_LE(least, allowed);
    EXPECT_EQ(widget().renderThread().framesDrawn(), frames);
}

TEST_F(Application, TwoHundredCyclesOfLoadingSpinningAndClosingLeaveNothingBehind)
{
    const QStringList files = {picFile("c00.pic"), picFile("c01.pic")};
    load(files);
    app().closeAll();
    settle();
    const LiveGlNames before = liveGlNames();
    const int threads = QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
    const int cycles = qEnvironmentVariableIntValue("TIRN_TEST_CYCLES") > 0
                           ? qEnvironmentVariableIntValue("TIRN_TEST_CYCLES")
                           : 200;
    for (int cycle = 0; cycle < cycles; ++cycle) {
        app().loadFromCommandLine(QStringList{"tirn"} + files);
        app().loads().fileThread().wait();
        QCoreApplication::sendPostedEvents();
        ASSERT_EQ(app().arrayCount(), 1);
        if (cycle % 2 == 0) {
            press({100, 100}, Qt::LeftButton);
            moveTo({120, 110}, Qt::LeftButton);
            release({120, 110}, Qt::LeftButton);
        } else {
            app().model().edit(Change::Channels | Change::Playback, [](Scene& scene) {
                scene.current()->channels()[0].display.state = ChannelState::FlashOn;
                scene.view.playing = scene.currentId();
            });
        }
        widget().requestFrame();
        if (cycle % 3 == 0)
            app().closeStack();
        else
            app().closeAll();
        ASSERT_EQ(app().arrayCount(), 0);
    }
    app().closeAll();
    settle();
    EXPECT_EQ(liveGlNames().lists, 0);
    EXPECT_EQ(liveGlNames().textures, 0);
    EXPECT_LE(liveGlNames().programs, before.programs);
    EXPECT_LE(QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), threads + 1);
}

TEST_F(Application, TwentyStartsAndQuits)
{
    quit();
    for (int i = 0; i < 20; ++i) {
        restart();
        if (i % 4 == 0)
            load({picFile("a.pic")});
        quit();
        EXPECT_EQ(liveGlNames(), LiveGlNames());
        EXPECT_TRUE(log.contains("cleaned up after app"));
        log.clear();
    }
    restart();
}

TEST_F(Application, ALoadThatIsUnderWayAtTheEndIsCancelled)
{
    const QString name = QString(TIRN_TEST_DATA) + "/golgi_16bit.pic";
    lookInto(app(), {name});
    app().loadFromCommandLine({"tirn", name});
    quit();
    EXPECT_EQ(liveGlNames(), LiveGlNames());
    restart();
}

} // namespace
} // namespace tirn::test
