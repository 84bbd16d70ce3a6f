// Loads away from the interface thread: the hand-over, cancelling, memory, what stays behind.

#include <condition_variable>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QOpenGLFunctions>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <unistd.h>

#include "image/voxelallocation.h"
#include "support/otheruser.h"
#include "uisupport/apptest.h"
#include "uisupport/loadrig.h"

namespace tirn::test {
namespace {

int threadsOfProcess() { return QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(); }

QString savePic(const QString& name, int x, int y, int z, int bits = 8)
{
    PicFile file;
    file.x = x;
    file.y = y;
    file.z = z;
    file.bits = bits;
    return file.save(name);
}

/// A file thread with contexts of its own.
class FileThreadTest : public ::testing::Test
{
protected:
    FileThreadTest()
    {
        LoadReport report = reports.collector();
        report.loaded = [this](LoadedStack stack) { loaded = std::move(stack); };
        thread = std::make_unique<FileThread>(share.context(), std::move(report));
    }
    ~FileThreadTest() override
    {
        thread.reset();
        share.makeCurrent();
        loaded.reset();
    }

    /// Describes time points of one file each.
    void describe(int timePoints, const QString& name)
    {
        description = LoadDescription();
        description.filesToLoad.assign(static_cast<std::size_t>(timePoints), {name});
        description.timePoints = timePoints;
        description.fileType = ImageType::BioRad;
    }
    bool load()
    {
        if (!thread->startLoad(description, {}))
            return false;
        thread->wait();
        return loaded.has_value();
    }
    void discard()
    {
        share.makeCurrent();
        loaded.reset();
        share.context().doneCurrent();
    }
    QString path(const QString& name) const { return m_directory.filePath(name); }

    LogCapture log;
    ReportList reports;
    LoadDescription description;
    std::optional<LoadedStack> loaded;

private:
    int m_argc = 1;
    char m_name[5] = "tirn";
    char* m_argv[2] = {m_name, nullptr};
    QApplication m_application{m_argc, m_argv};
    QTemporaryDir m_directory;

protected:
    HiddenContext share;
    std::unique_ptr<FileThread> thread;
};

TEST_F(FileThreadTest, TexturesMadeThereAreThereForTheOtherContexts)
{
    describe(2, savePic(path("a.pic"), 16, 12, 8));
    ASSERT_TRUE(load());
    share.makeCurrent();
    const TextureNames& textures = loaded->array->textures();
    ASSERT_EQ(textures.size(), 2U * (16 + 12 + 8));
    for (std::size_t i = 0; i < textures.size(); ++i)
        EXPECT_TRUE(share.context().functions()->glIsTexture(textures[i]));
    EXPECT_FALSE(thread->isLoading());
}

TEST_F(FileThreadTest, ALoadIsThatOfItsDescriptionAndSurroundings)
{
    describe(1, savePic(path("a.pic"), 16, 12, 8));
    description.setVoxelDimensions(1, 2, 3);
    LoadSurroundings surroundings;
    surroundings.defaultEncode = 1;
    ASSERT_TRUE(thread->startLoad(description, std::move(surroundings)));
    EXPECT_TRUE(log.contains("defaultEncode 1"));
    thread->wait();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->stack().dimZ, 3);
    EXPECT_EQ(loaded->array->textureTarget(), static_cast<GLenum>(GL_TEXTURE_2D));
}

TEST_F(FileThreadTest, ASecondLoadIsRefusedWhileOneIsUnderWay)
{
    std::mutex mutex;
    std::condition_variable changed;
    bool mayGoOn = false;
    reports.onReport = [&](const QString&) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return mayGoOn; });
    };
    const QString name = savePic(path("a.pic"), 16, 12, 8);
    describe(1, name);
    ASSERT_TRUE(thread->startLoad(description, {}));
    describe(3, name);
    EXPECT_TRUE(thread->isLoading());
    EXPECT_FALSE(thread->startLoad(description, {}));
    {
        const std::scoped_lock lock(mutex);
        mayGoOn = true;
    }
    changed.notify_all();
    thread->wait();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->timePointCount(), 1);
    discard();
    ASSERT_TRUE(load());
    EXPECT_EQ(loaded->array->timePointCount(), 3);
}

TEST_F(FileThreadTest, ALoadMayFollowAtOnceWhenTheLastOneIsThere)
{
    const QString name = savePic(path("a.pic"), 16, 12, 8);
    for (int i = 0; i < 20; ++i) {
        describe(1, name);
        ASSERT_TRUE(thread->startLoad(description, {}));
        while (thread->isLoading())
            QThread::yieldCurrentThread();
    }
    thread->wait();
    EXPECT_TRUE(loaded);
}

TEST_F(FileThreadTest, AStopWithoutALoadDoesNotStopTheNextOne)
{
    thread->stopLoading();
    describe(1, savePic(path("a.pic"), 16, 12, 8));
    EXPECT_TRUE(load());
}

TEST_F(FileThreadTest, TheNextStackIsReadWhileOneIsEncoded)
{
    describe(2, savePic(path("a.pic"), 32, 32, 16));
    bool wasRead = false;
    reports.onReport = [&](const QString& text) {
        // In the midst of the first encoding.
        if (wasRead || !text.endsWith("/-1"))
            return;
        QElapsedTimer timer;
        timer.start();
        while (!wasRead && timer.elapsed() < 20000)
            wasRead = log.count("exit ImageFile::read success") == 2;
    };
    ASSERT_TRUE(load());
    EXPECT_TRUE(wasRead);
}

std::atomic<std::int64_t> peakBytes = 0;

VoxelBuffer watchedBuffer(std::int64_t bytes)
{
    VoxelBuffer buffer(bytes);
    const std::int64_t live = VoxelBuffer::liveBytes();
    std::int64_t peak = peakBytes;
    while (live > peak && !peakBytes.compare_exchange_weak(peak, live)) {
    }
    return buffer;
}

TEST_F(FileThreadTest, ConservedMemoryHoldsTwoTimePointsAtMost)
{
    // Files of 6 MB, so that the buffers of the slices, up to 16 MB, cannot hide more than two time points.
    constexpr std::int64_t timePoint = std::int64_t{256} * 256 * 96;
    constexpr std::int64_t slices = std::int64_t{16} << 20;
    const QString name = savePic(path("a.pic"), 256, 256, 96);
    for (const GLenum target : {GL_TEXTURE_2D, GL_TEXTURE_3D}) {
        describe(10, name);
        description.setRange(0, 95, 1, 0, target, false, 0, true);
        const std::int64_t before = VoxelBuffer::liveBytes();
        peakBytes = 0;
        setVoxelAllocator(watchedBuffer);
        const bool good = load();
        setVoxelAllocator(nullptr);
        ASSERT_TRUE(good);
        EXPECT_GE(peakBytes - before, timePoint);
        EXPECT_LE(peakBytes - before, 2 * timePoint + slices);
        EXPECT_EQ(VoxelBuffer::liveBytes(), before);
        discard();
    }
}

TEST_F(FileThreadTest, ConservedMemoryOfMergedChannelsHoldsTwoTimePointsAtMost)
{
    constexpr std::int64_t timePoint = std::int64_t{2} * 256 * 256 * 96;
    const QString stack = path("a.pic");
    const QString name = savePic(stack, 256, 256, 96);
    describe(3, name);
    // Told to be of a format that reads one file, two names are merged.
    for (QStringList& names : description.filesToLoad)
        names = QStringList{name, name};
    description.fileType = ImageType::Zeiss;
    description.channels = 2;
    description.setRange(0, 95, 1, 0, GL_TEXTURE_2D, false, 0, true);
    peakBytes = 0;
    setVoxelAllocator(watchedBuffer);
    const bool good = load();
    setVoxelAllocator(nullptr);
    ASSERT_TRUE(good);
    EXPECT_LE(peakBytes, 2 * timePoint + (std::int64_t{16} << 20));
}

TEST_F(FileThreadTest, TenLoadsCancelsAndFailuresInARowLeaveNothingBehind)
{
    const QString name = savePic(path("a.pic"), 64, 48, 32);
    const auto round = [&](int i) {
        reports.clear();
        reports.onReport = [this, i](const QString& text) {
            if (i % 3 == 1 && text.startsWith("Encoding") && reports.steps().size() > 3)
                thread->stopLoading();
        };
        describe(4, name);
        if (i % 3 == 2)
            description.filesToLoad[2] = QStringList(path("gone.pic"));
        EXPECT_EQ(load(), i % 3 == 0) << i;
        discard();
    };
    round(0);
    const LiveGlNames names = liveGlNames();
    const int threads = threadsOfProcess();
    const std::int64_t bytes = VoxelBuffer::liveBytes();
    for (int i = 0; i < 30; ++i)
        round(i);
    EXPECT_EQ(liveGlNames(), names);
    EXPECT_EQ(liveGlNames().textures, 0);
    // The system lists a thread for a moment after it was joined.
    EXPECT_TRUE(QTest::qWaitFor([threads] { return threadsOfProcess() <= threads; }));
    EXPECT_EQ(VoxelBuffer::liveBytes(), bytes);
}

TEST_F(FileThreadTest, FilesInADirectoryWithoutPermissionAreNamed)
{
    QDir(path("")).mkdir("closed");
    const QString name = savePic(path("closed/a.pic"), 16, 12, 8);
    const QString open = savePic(path("b.pic"), 16, 12, 8);
    QFile::setPermissions(path("closed"), {});
    {
        const OtherUser other;
        describe(1, name);
        EXPECT_FALSE(load());
    }
    QFile::setPermissions(path("closed"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_EQ(reports.steps().last(), "Could not allocate ImageIO object\nUnable to open file: " + name +
                                          "\nnone is not a supported file type.  Aborting! 0/0 done");
    describe(1, open);
    EXPECT_TRUE(load());
}

/// Loads in the whole program.
class LoadInProgram : public AppTest
{
protected:
    LoadDescription description;
    void describe(const std::vector<QStringList>& files, int channels = 1)
    {
        description = LoadDescription(app().preferences().defaultEncode);
        description.filesToLoad = files;
        description.timePoints = static_cast<int>(files.size());
        description.channels = channels;
        description.fileType = ImageType::BioRad;
    }
    void load()
    {
        ASSERT_TRUE(app().loads().startLoad(description));
        app().loads().fileThread().wait();
        settle();
    }
    std::vector<int> palettesOfCurrent()
    {
        std::vector<int> all;
        for (const Channel& channel : app().currentArray()->channels())
            all.push_back(channel.display.palette);
        return all;
    }
    QProgressDialog* dialog() { return app().mainForm().findChild<QProgressDialog*>("progress"); }
};

TEST_F(LoadInProgram, AStackIsShownWithThePalettesThatCameWithIt)
{
    describe({{picFile("c0.pic"), picFile("c1.pic"), picFile("c2.pic")}}, 3);
    load();
    ASSERT_EQ(app().arrayCount(), 1);
    ASSERT_EQ(app().scene().palettes.size(), 3U);
    EXPECT_EQ(palettesOfCurrent(), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(app().palette(0)->fileValues(255)[0], 254);
    EXPECT_EQ(app().palette(1)->fileValues(255)[1], 254);
    EXPECT_EQ(app().palette(2)->fileValues(255)[2], 254);
    EXPECT_NE(app().palette(2)->glHandle(), 0U);
    EXPECT_EQ(app().currentArray()->channels()[2].zCurve.size(), 8);
    describe({{picFile("d0.pic"), picFile("d1.pic")}}, 2);
    load();
    EXPECT_EQ(app().arrayCount(), 2);
    EXPECT_EQ(app().scene().palettes.size(), 3U);
    EXPECT_EQ(takeBox(), QString());
}

TEST_F(LoadInProgram, PalettesThatWentMeanwhileLeaveTheFirst)
{
    load();
    describe({{picFile("c0.pic")}});
    load();
    describe({{picFile("d0.pic"), picFile("d1.pic")}}, 2);
    ASSERT_TRUE(app().loads().startLoad(description));
    app().loads().fileThread().wait();
    app().closeAll();
    settle();
    ASSERT_EQ(app().arrayCount(), 1);
    EXPECT_EQ(app().scene().palettes.size(), 1U);
    EXPECT_EQ(palettesOfCurrent(), (std::vector<int>{0, 0}));
}

TEST_F(LoadInProgram, ThePreferenceDecidesAboutTheTextures)
{
    {
        QSettings store(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2");
        store.setValue("Paths/DefaultEncode", "3D Texture Maps");
        store.setValue("Paths/DefaultPaletteGeneration", "Grayscale");
    }
    restart();
    describe({{picFile("c0.pic"), picFile("c1.pic")}}, 2);
    load();
    ASSERT_EQ(app().arrayCount(), 1);
    EXPECT_EQ(app().currentArray()->textureTarget(), static_cast<GLenum>(GL_TEXTURE_3D));
    EXPECT_EQ(app().palette(0)->fileValues(255), app().palette(1)->fileValues(255));
}

TEST_F(LoadInProgram, AFailureIsShownInABoxAndTheNextLoadWorks)
{
    describe({{picFile("a.pic")}, {path("gone.pic")}});
    load();
    EXPECT_EQ(takeBox(), "File load error: Could not allocate ImageIO object\nUnable to open file: " +
                             path("gone.pic") + "\nnone is not a supported file type.  Aborting!");
    EXPECT_EQ(app().arrayCount(), 0);
    EXPECT_EQ(liveGlNames().textures, 0);
    describe({{picFile("a.pic")}});
    load();
    EXPECT_EQ(app().arrayCount(), 1);
}

TEST_F(LoadInProgram, TheCancelButtonEndsASeriesWithoutABox)
{
    const QString name = picFile("a.pic", 64, 64, 32);
    describe(std::vector<QStringList>(200, {name}));
    ASSERT_TRUE(app().loads().startLoad(description));
    while (dialog() == nullptr || dialog()->value() < 1)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(dialog()->maximum(), 200 * 200);
    EXPECT_EQ(dialog()->labelText().contains(name), true);
    dialog()->findChild<QPushButton*>()->click();
    app().loads().fileThread().wait();
    settle();
    EXPECT_EQ(app().arrayCount(), 0);
    EXPECT_FALSE(dialog()->isVisible());
    EXPECT_EQ(takeBox(), QString());
    EXPECT_LT(log.count("better encode"), 200);
    EXPECT_EQ(liveGlNames().textures, 0);
    describe({{name}});
    load();
    EXPECT_EQ(app().arrayCount(), 1);
}

TEST_F(LoadInProgram, InterfaceEventsAreServedAllTheWay)
{
    describe(std::vector<QStringList>(8, {picFile("a.pic", 256, 256, 32)}));
    // Whoever is served counts the stages of the load in which that happened.
    std::map<QString, int> served;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &app(), [&] {
        if (app().loads().fileThread().isLoading() && dialog() != nullptr)
            ++served[dialog()->labelText().section(' ', 0, 0)];
    });
    timer.start(0);
    ASSERT_TRUE(app().loads().startLoad(description));
    while (app().arrayCount() == 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_GT(served["Encoding"], 0);
    settle();
    EXPECT_FALSE(dialog()->isVisible());
}

TEST_F(LoadInProgram, ALoadThatIsUnderWayAtTheEndIsGivenUp)
{
    describe(std::vector<QStringList>(50, {picFile("a.pic", 64, 64, 32)}));
    ASSERT_TRUE(app().loads().startLoad(description));
    quit();
    EXPECT_EQ(liveGlNames(), LiveGlNames());
    restart();
}

TEST_F(LoadInProgram, AStackThatArrivesAtTheEndIsGivenUpWithItsPalettes)
{
    describe({{picFile("a.pic"), picFile("b.pic")}}, 2);
    ASSERT_TRUE(app().loads().startLoad(description));
    app().loads().fileThread().wait();
    quit();
    EXPECT_EQ(liveGlNames(), LiveGlNames());
    restart();
}

} // namespace
} // namespace tirn::test
