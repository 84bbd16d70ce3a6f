#include <gtest/gtest.h>

#include "movies/movieloop.h"
#include "support/foreignavi.h"
#include "support/logcapture.h"
#include "support/picfile.h"

namespace tirn {
namespace {

using Kind = MovieStep::Kind;

/// Steps as text: "12@1" is frame 12 at time point 1, "7-10@0" padding, "load 2" another time point.
QStringList texts(const MovieSteps& steps, const PredefinedMovie& movie)
{
    QStringList all;
    MovieStep step;
    KeyFrame pose = movie.firstPose();
    while (steps(step, pose)) {
        const QString frame = QString::number(step.frame);
        if (step.kind == Kind::LoadTimePoint)
            all << QString("load %1").arg(step.timePoint);
        else if (step.kind == Kind::Padding)
            all << QString("%1-%2@%3").arg(frame).arg(step.frame + step.pictures - 1).arg(pose.timepoint);
        else
            all << QString("%1@%2").arg(frame).arg(pose.timepoint);
    }
    EXPECT_FALSE(steps(step, pose)) << "the end stays the end";
    return all;
}

PredefinedMovie timeMovie(int frames, const TimeSettings& time)
{
    PredefinedMovie movie;
    movie.settings.type = MovieType::TimeOnly;
    movie.settings.timeOnlyFrames = frames;
    movie.time = time;
    movie.start.timepoint = time.currentTimePoint;
    return movie;
}

TEST(RegularSteps, PassTimeBehindEachRunOfFrames)
{
    const PredefinedMovie movie = timeMovie(8, {.timePoints = 3, .framesPerTimePoint = 2});
    EXPECT_EQ(texts(regularSteps(movie), movie),
              (QStringList{"0@0", "1@0", "2@1", "3@1", "4@2", "5@2", "6@0", "7@0"}));
}

TEST(RegularSteps, BeginAtTheCurrentTimePointWhenAsked)
{
    PredefinedMovie movie = timeMovie(4, {.timePoints = 3, .framesPerTimePoint = 2, .currentTimePoint = 2});
    EXPECT_EQ(texts(regularSteps(movie), movie), (QStringList{"0@0", "1@0", "2@1", "3@1"}));
    movie.time.useCurrentTimePoint = true;
    EXPECT_EQ(texts(regularSteps(movie), movie), (QStringList{"0@2", "1@2", "2@0", "3@0"}));
}

TEST(RegularSteps, OneTimePointStays)
{
    const PredefinedMovie movie =
        timeMovie(3, {.timePoints = 1, .framesPerTimePoint = 1, .paddingFrames = 4});
    EXPECT_EQ(texts(regularSteps(movie), movie), (QStringList{"0@0", "1@0", "2@0"}));
}

TEST(RegularSteps, PaddingComesOnceTheFrameLiesBehindTheTimeSpan)
{
    // Two time points of three frames, four to pad: the span is 6, the period 10. 7 is the first frame with
    // 6 < f mod 10 at time point 0; the numbers then jump by 4.
    const PredefinedMovie movie =
        timeMovie(13, {.timePoints = 2, .framesPerTimePoint = 3, .paddingFrames = 4});
    const test::LogCapture log;
    EXPECT_EQ(texts(regularSteps(movie), movie),
              (QStringList{"0@0", "1@0", "2@0", "3@1", "4@1", "5@1", "6@0", "7-10@0", "11@0", "12@1"}));
    EXPECT_EQ(log.lines(), QStringList{"paddings frames 7 to 11"});
}

TEST(RegularSteps, WithoutPaddingThereIsNone)
{
    const PredefinedMovie movie = timeMovie(30, {.timePoints = 2, .framesPerTimePoint = 3});
    EXPECT_EQ(texts(regularSteps(movie), movie).filter("-").size(), 0);
    EXPECT_EQ(texts(regularSteps(movie), movie).size(), 30);
}

TEST(PreviewSteps, PassTimeBehindTheFirstFrameAlready)
{
    const PredefinedMovie movie =
        timeMovie(6, {.timePoints = 3, .framesPerTimePoint = 2, .paddingFrames = 4});
    EXPECT_EQ(texts(previewSteps(movie), movie), (QStringList{"0@0", "1@1", "2@1", "3@2", "4@2", "5@0"}));
}

TEST(BatchSteps, DrawAllFramesOfATimePointBeforeTheNext)
{
    const PredefinedMovie movie = timeMovie(10, {.timePoints = 2, .framesPerTimePoint = 3});
    EXPECT_EQ(texts(batchSteps(movie), movie), (QStringList{"load 0", "0@0", "1@0", "2@0", "6@0", "7@0",
                                                            "8@0", "load 1", "3@0", "4@0", "5@0", "9@0"}));
}

TEST(BatchSteps, PaddingComesLast)
{
    // s = (2 j + t) * 2 + 3 j: 0, 7 and 2, 9; padding at 4 and 11.
    const PredefinedMovie movie =
        timeMovie(12, {.timePoints = 2, .framesPerTimePoint = 2, .paddingFrames = 3});
    EXPECT_EQ(texts(batchSteps(movie), movie),
              (QStringList{"load 0", "0@0", "1@0", "7@0", "8@0", "load 1", "2@0", "3@0", "9@0", "10@0",
                           "4-6@0", "11-13@0"}));
}

TEST(BatchSteps, EveryFrameOfTheMovieIsWrittenOnce)
{
    for (const int points : {1, 2, 5}) {
        for (const int perPoint : {1, 3}) {
            for (const int padding : {0, 1, 4}) {
                const PredefinedMovie movie = timeMovie(
                    41, {.timePoints = points, .framesPerTimePoint = perPoint, .paddingFrames = padding});
                std::vector<int> written(100);
                const MovieSteps steps = batchSteps(movie);
                MovieStep step;
                KeyFrame pose;
                while (steps(step, pose)) {
                    for (std::int64_t p = 0; step.kind != Kind::LoadTimePoint && p < step.pictures; ++p)
                        ++written[static_cast<std::size_t>(step.frame + p)];
                }
                for (std::size_t f = 0; f < 41; ++f)
                    ASSERT_EQ(written[f], 1) << points << ' ' << perPoint << ' ' << padding << ' ' << f;
            }
        }
    }
}

TEST(BatchSteps, StopLoadingWhenNoFrameIsLeft)
{
    const PredefinedMovie movie = timeMovie(4, {.timePoints = 50, .framesPerTimePoint = 2});
    EXPECT_EQ(texts(batchSteps(movie), movie), (QStringList{"load 0", "0@0", "1@0", "load 1", "2@0", "3@0"}));
}

TEST(MovieSteps, AnEmptyMovieHasNone)
{
    PredefinedMovie movie;
    movie.settings.type = MovieType::Custom;
    movie.time.timePoints = 3;
    EXPECT_TRUE(texts(previewSteps(movie), movie).isEmpty());
    EXPECT_TRUE(texts(regularSteps(movie), movie).isEmpty());
    EXPECT_TRUE(texts(batchSteps(movie), movie).isEmpty());
}

/// The frames in which the one flashing channel is shown.
QString flashes(const MovieSteps& steps, const PredefinedMovie& movie)
{
    QString all;
    MovieStep step;
    KeyFrame pose = movie.firstPose();
    while (steps(step, pose)) {
        if (step.kind != Kind::LoadTimePoint)
            all += isHidden(pose.channels[0].state) ? '.' : '#';
    }
    return all;
}

TEST(MovieSteps, TheCounterTurnsFlashes)
{
    PredefinedMovie movie = timeMovie(12, {});
    movie.start.channels = {{ChannelState::FlashOn, 0, 0}};
    movie.flashMilliseconds = 200; // three frames
    // Where only time passes, the counter follows each frame on the screen, and goes before it in a file.
    EXPECT_EQ(flashes(previewSteps(movie), movie), "#...###...##");
    EXPECT_EQ(flashes(regularSteps(movie), movie), "###...###...");
    EXPECT_EQ(flashes(batchSteps(movie), movie), "...###...###");
    // A pose counts, too: on the screen before the frame and once more behind it; in a file once behind the
    // frame before and once more with the pose, but for the first.
    movie.settings.type = MovieType::Rotation;
    movie.settings.rotation.framesPerRotation = 12;
    EXPECT_EQ(flashes(previewSteps(movie), movie), ".##.##.##.##");
    EXPECT_EQ(flashes(regularSteps(movie), movie), "............");
    EXPECT_EQ(flashes(batchSteps(movie), movie), "...###...###");
}

TEST(MovieSteps, PosesFollowTheMovie)
{
    PredefinedMovie movie;
    movie.settings.rotation = {MovieAxis::Y, 1, 4};
    movie.start.palettes = {{{1}, {2}, {3}, {4}}};
    movie.start.xtrans = 5;
    EXPECT_TRUE(movie.firstPose().palettes.empty()) << "a movie leaves palettes alone";
    const MovieSteps steps = regularSteps(movie);
    MovieStep step;
    KeyFrame pose = movie.firstPose();
    for (const double angle : {0.0, 90.0, 180.0, 270.0}) {
        ASSERT_TRUE(steps(step, pose));
        EXPECT_EQ(pose.yrot, angle);
        EXPECT_EQ(pose.xtrans, 5);
    }
    EXPECT_FALSE(steps(step, pose));
}

TEST(MovieSteps, ARecordedFrameBringsItsTimePoint)
{
    PredefinedMovie movie;
    movie.settings.type = MovieType::Custom;
    movie.time = {.timePoints = 4, .framesPerTimePoint = 1};
    movie.recorded.resize(3);
    movie.recorded[0].timepoint = 2;
    movie.recorded[2].timepoint = 3;
    EXPECT_EQ(texts(regularSteps(movie), movie), (QStringList{"0@2", "1@0", "2@3"}));
}

TEST(MovieSteps, ARecordedFrameWithoutPalettesAndChannelsKeepsThoseThatWereThere)
{
    PredefinedMovie movie;
    movie.settings.type = MovieType::Custom;
    movie.start.channels = {{ChannelState::FlashOn, 1, 2}};
    movie.recorded.resize(3);
    movie.recorded[0].xrot = 5;
    movie.recorded[1].palettes = {{{1}, {2}, {3}, {4}}};
    movie.flashMilliseconds = 1000;
    const MovieSteps steps = regularSteps(movie);
    MovieStep step;
    KeyFrame pose = movie.firstPose();
    ASSERT_TRUE(steps(step, pose));
    EXPECT_EQ(pose.xrot, 5);
    EXPECT_EQ(pose.channels, (std::vector<ChannelDisplay>{{ChannelState::FlashOff, 1, 2}}));
    ASSERT_TRUE(steps(step, pose));
    EXPECT_EQ(pose.palettes.size(), 1U);
    ASSERT_TRUE(steps(step, pose));
    EXPECT_EQ(pose.palettes.size(), 1U);
}

/// Draws the frame's angle as its one pixel.
struct TinySource : FrameSource
{
    bool draw(const KeyFrame& pose, FramePicture* picture) override
    {
        drawn << pose.xrot;
        pixel[0] = static_cast<std::uint8_t>(pose.xrot);
        if (picture != nullptr)
            *picture = {pixel, 1, 1};
        return drawn.size() != failAt;
    }
    bool loadTimePoint(int timePoint) override
    {
        loaded << timePoint;
        return timePoint != badTimePoint;
    }
    QString error() const override { return text; }

    QList<double> drawn;
    QList<int> loaded;
    std::uint8_t pixel[4] = {};
    int failAt = -1;
    int badTimePoint = -1;
    QString text = "lost";
};

/// Remembers the numbers and the first byte of the pictures.
struct TinySink : FrameSink
{
    bool begin(std::int64_t reserve) override
    {
        reserved = reserve;
        return beginning || fail("cannot begin");
    }
    bool write(const FramePicture& picture, std::int64_t frame) override
    {
        if (frames.size() == room)
            return fail("full");
        frames << frame;
        pixels << picture.pixels[0];
        return true;
    }
    bool finish() override
    {
        ++finished;
        return true;
    }

    bool beginning = true;
    int room = -1;
    std::int64_t reserved = -1;
    QList<std::int64_t> frames;
    QList<int> pixels;
    int finished = 0;
};

PredefinedMovie rotation(int frames)
{
    PredefinedMovie movie;
    movie.settings.rotation = {MovieAxis::X, 1, frames};
    return movie;
}

MovieJob jobOf(const PredefinedMovie& movie)
{
    return {regularSteps(movie), movie.firstPose(), movie.frames(), false, std::nullopt};
}

TEST(MovieLoop, DrawsAndWritesEachFrame)
{
    TinySource source;
    TinySink sink;
    QStringList reports;
    const Progress progress = {
        [&](const QString&, int done, int total) { reports << QString("%1/%2").arg(done).arg(total); }};
    const MovieResult result = runMovie(jobOf(rotation(4)), source, &sink, progress);
    EXPECT_EQ(result.error, QString());
    EXPECT_FALSE(result.cancelled);
    EXPECT_EQ(result.pictures, 4);
    EXPECT_EQ(sink.frames, (QList<std::int64_t>{0, 1, 2, 3}));
    EXPECT_EQ(sink.pixels, (QList<int>{0, 90, 180, 14})) << "270 in a byte";
    EXPECT_EQ(sink.reserved, 0);
    EXPECT_EQ(sink.finished, 1);
    EXPECT_EQ(reports, (QStringList{"0/4", "1/4", "2/4", "3/4", "4/4"}));
}

TEST(MovieLoop, WithoutASinkItOnlyShows)
{
    TinySource source;
    const PredefinedMovie movie = rotation(3);
    const MovieResult result =
        runMovie({previewSteps(movie), movie.firstPose(), 3, false, std::nullopt}, source, nullptr);
    EXPECT_EQ(source.drawn, (QList<double>{0, 120, 240}));
    EXPECT_EQ(result.pictures, 3);
}

TEST(MovieLoop, ARangeKeepsTheNumbersAndThePosesOfTheWholeMovie)
{
    TinySource source;
    TinySink sink;
    MovieJob job = jobOf(rotation(6));
    job.range = FrameRange{2, 3};
    job.outOfOrder = true;
    EXPECT_EQ(runMovie(job, source, &sink).pictures, 2);
    EXPECT_EQ(source.drawn, (QList<double>{120, 180}));
    EXPECT_EQ(sink.frames, (QList<std::int64_t>{2, 3}));
    EXPECT_EQ(sink.reserved, 2);
}

TEST(MovieLoop, PaddingDrawsOnceAndWritesOften)
{
    TinySource source;
    TinySink sink;
    const PredefinedMovie movie =
        timeMovie(12, {.timePoints = 2, .framesPerTimePoint = 2, .paddingFrames = 3});
    const MovieResult result =
        runMovie({batchSteps(movie), movie.firstPose(), 12, true, std::nullopt}, source, &sink);
    EXPECT_EQ(result.pictures, 14) << "padding goes on past the end";
    EXPECT_EQ(sink.reserved, 12);
    EXPECT_EQ(sink.frames, (QList<std::int64_t>{0, 1, 7, 8, 2, 3, 9, 10, 4, 5, 6, 11, 12, 13}));
    EXPECT_EQ(source.drawn.size(), 10);
    EXPECT_EQ(source.loaded, (QList<int>{0, 1}));
}

TEST(MovieLoop, CancelEndsItAfterTheFrameAtHand)
{
    TinySource source;
    TinySink sink;
    std::atomic<bool> cancel = false;
    const Progress progress = {[&](const QString&, int done, int) { cancel = done == 2; }, &cancel};
    const MovieResult result = runMovie(jobOf(rotation(5)), source, &sink, progress);
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(sink.frames, (QList<std::int64_t>{0, 1}));
    EXPECT_EQ(sink.finished, 1);
}

TEST(MovieLoop, ACancelBeforeTheFirstFrameLeavesWhatWasThere)
{
    TinySource source;
    TinySink sink;
    const std::atomic<bool> cancel = true;
    const MovieResult result = runMovie(jobOf(rotation(5)), source, &sink, {{}, &cancel});
    EXPECT_TRUE(result.cancelled);
    EXPECT_TRUE(source.drawn.isEmpty());
    EXPECT_EQ(sink.finished, 0);

    const QTemporaryDir folder;
    const QString name = test::saveBytes(folder.filePath("old.avi"), "old");
    AviSink avi(name, 1, 1, 15);
    EXPECT_TRUE(runMovie(jobOf(rotation(5)), source, &avi, {{}, &cancel}).cancelled);
    EXPECT_EQ(test::fileContent(name), "old");
}

TEST(MovieLoop, AMovieWithoutFramesIsAFileWithNone)
{
    PredefinedMovie movie;
    movie.settings.type = MovieType::Custom;
    const QTemporaryDir folder;
    TinySource source;
    AviSink avi(folder.filePath("none.avi"), 6, 4, 15);
    const MovieResult result = runMovie(jobOf(movie), source, &avi);
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(result.pictures, 0);
    EXPECT_EQ(test::fileContent(folder.filePath("none.avi")).size(), 232);
    ASSERT_TRUE(test::haveForeignAvi()) << "ffmpeg is not installed";
    EXPECT_EQ(test::probedFrames(folder.filePath("none.avi")), 0);
}

TEST(MovieLoop, ACancelledBatchKeepsTheFramesBehindGaps)
{
    const PredefinedMovie movie = timeMovie(8, {.timePoints = 2, .framesPerTimePoint = 2});
    const QTemporaryDir folder;
    TinySource source;
    AviSink avi(folder.filePath("batch.avi"), 1, 1, 15);
    std::atomic<bool> cancel = false;
    // Frames 0, 1, 4 and 5 are those of the first time point.
    const Progress progress = {[&](const QString&, int done, int) { cancel = done == 4; }, &cancel};
    runMovie({batchSteps(movie), movie.firstPose(), 8, true, std::nullopt}, source, &avi, progress);
    EXPECT_EQ(avi.frames(), 6);
    EXPECT_EQ(test::fileContent(folder.filePath("batch.avi")).size(), aviFileBytes(1, 1, 6));
}

TEST(MovieLoop, NamesThePicturesBeforeTheyAreMade)
{
    const PredefinedMovie movie =
        timeMovie(8, {.timePoints = 2, .framesPerTimePoint = 3, .paddingFrames = 4});
    MovieJob job{regularSteps(movie), movie.firstPose(), movie.frames(), false, std::nullopt};
    const auto named = [&job] {
        QList<std::int64_t> all;
        job.forEachPicture([&all](std::int64_t frame) { all << frame; });
        return all;
    };
    // Padding goes on past the end.
    EXPECT_EQ(named(), (QList<std::int64_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(named().size(), 11) << "the steps of the job are not used up";
    job.range = FrameRange{5, 8};
    EXPECT_EQ(named(), (QList<std::int64_t>{5, 6, 7, 8}));
    TinySource source;
    TinySink sink;
    runMovie(job, source, &sink);
    EXPECT_EQ(sink.frames, (QList<std::int64_t>{5, 6, 7, 8}));
}

TEST(MovieLoop, AFailureEndsItAndWhatWasWrittenIsFinished)
{
    TinySource source;
    TinySink full;
    full.room = 2;
    MovieResult result = runMovie(jobOf(rotation(5)), source, &full);
    EXPECT_EQ(result.error, "full");
    EXPECT_EQ(result.pictures, 2);
    EXPECT_EQ(full.finished, 1);

    TinySink sink;
    source = {};
    source.failAt = 3;
    result = runMovie(jobOf(rotation(5)), source, &sink);
    EXPECT_EQ(result.error, "lost");
    EXPECT_EQ(sink.frames.size(), 2);
    EXPECT_EQ(sink.finished, 1);
    source.drawn.clear();
    source.text.clear();
    EXPECT_EQ(runMovie(jobOf(rotation(5)), source, &sink).error, "The frame could not be drawn.");

    TinySink closed;
    closed.beginning = false;
    source = {};
    EXPECT_EQ(runMovie(jobOf(rotation(5)), source, &closed).error, "cannot begin");
    EXPECT_EQ(closed.finished, 0);
    EXPECT_TRUE(source.drawn.isEmpty());
}

TEST(MovieLoop, ATimePointThatCannotBeLoadedEndsIt)
{
    TinySource source;
    source.badTimePoint = 1;
    TinySink sink;
    const PredefinedMovie movie =
        timeMovie(12, {.timePoints = 3, .framesPerTimePoint = 2, .paddingFrames = 3});
    const MovieResult result =
        runMovie({batchSteps(movie), movie.firstPose(), 12, true, std::nullopt}, source, &sink);
    EXPECT_EQ(result.error, "lost");
    EXPECT_EQ(source.loaded, (QList<int>{0, 1}));
    EXPECT_EQ(sink.frames, (QList<std::int64_t>{0, 1, 9, 10})) << "no padding either";
    EXPECT_EQ(sink.finished, 1);
}

} // namespace
} // namespace tirn
