#include <algorithm>

#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include "cli/activity.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/renderoptions.h"
#include "cli/resultfiles.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "cli/words.h"
#include "movies/keyframesession.h"
#include "movies/movieloop.h"
#include "movies/moviename.h"
#include "movies/timeframemovie.h"
#include "movies/timeframesession.h"
#include "pictures/picturenames.h"
#include "render/offscreenframes.h"
#include "scene/keyframeview.h"

namespace tirn {

namespace {

constexpr int kUsualRate = 15;
constexpr int kMostRate = 240;
constexpr int kMostFrames = 10000000;

/// What the options say of a movie.
struct MovieOptions
{
    MovieSettings settings;
    TimeSettings time;
    /// Frames of a rotation, a move, a pass or a time movie; 0 for what is usual.
    int frames = 0;
    std::vector<KeyFrame> keyFrames;
    std::vector<TimeFrame> timeFrames;
    /// Whether the view that was asked for is where a movie begins.
    bool oriented = false;
    int rate = kUsualRate;
    std::optional<FrameRange> range;
};

const Words<MovieType>& types()
{
    static const Words<MovieType> words = {{"rotation", MovieType::Rotation},
                                           {"rocking", MovieType::Rocking},
                                           {"pass", MovieType::PassThrough},
                                           {"time", MovieType::TimeOnly}};
    return words;
}

const Words<MovieAxis>& axes()
{
    static const Words<MovieAxis> words = {{"X", MovieAxis::X},
                                           {"Y", MovieAxis::Y},
                                           {"Z", MovieAxis::Z},
                                           {"X,Y", MovieAxis::XThenY},
                                           {"X,Z", MovieAxis::XThenZ},
                                           {"Y,Z", MovieAxis::YThenZ},
                                           {"X,Y,Z", MovieAxis::XThenYThenZ},
                                           {"X&Y", MovieAxis::XAndY},
                                           {"X&Z", MovieAxis::XAndZ},
                                           {"Y&Z", MovieAxis::YAndZ}};
    return words;
}

const Words<PassType>& passes()
{
    static const Words<PassType> words = {{"top-bottom", PassType::TopToBottom},
                                          {"bottom-top", PassType::BottomToTop},
                                          {"out-in", PassType::OutAndIn},
                                          {"plane", PassType::SinglePlane}};
    return words;
}

/// The element that holds children of a name: the root, or the first one below it.
QDomElement parentOf(const QString& name, const QString& child)
{
    QFile file(name);
    QDomDocument document;
    QString error;
    if (!file.open(QIODevice::ReadOnly))
        throw FileError(name, QStringLiteral("No such file"));
    if (!document.setContent(&file, &error))
        throw FileError(name, "is no XML: " + error);
    const QDomElement first = document.elementsByTagName(child).item(0).toElement();
    if (first.isNull())
        throw FileError(name, "holds no " + child);
    return first.parentNode().toElement();
}

FrameRange rangeOption(const QString& text)
{
    static const QRegularExpression pattern("^([0-9]{1,9})-([0-9]{1,9})$");
    const QRegularExpressionMatch match = pattern.match(text);
    const FrameRange range{match.captured(1).toLongLong(), match.captured(2).toLongLong()};
    if (!match.hasMatch() || range.first > range.last)
        throw UsageError{"--range: '" + text + "' is not FIRST-LAST"};
    return range;
}

int numberOption(const QCommandLineParser& parser, const char* option, int otherwise, int least, int most)
{
    return parser.isSet(option) ? wholeNumber(option, parser.value(option), least, most) : otherwise;
}

MovieOptions movieOptions(const QCommandLineParser& parser)
{
    MovieOptions options;
    MovieSettings& settings = options.settings;
    settings.type = wordOption(parser, "type", types());
    const MovieAxis axis = wordOption(parser, "axis", axes());
    const bool oriented = options.oriented = parser.isSet("rotate");
    const int turns = numberOption(parser, "turns", 1, 1, 10000);
    options.frames = numberOption(parser, "frames", 0, 1, kMostFrames);
    const RotationSettings rotation;
    const RockingSettings rocking;
    settings.rotation = {axis, turns, options.frames > 0 ? options.frames : rotation.framesPerRotation,
                         oriented};
    settings.rocking = {axis, turns, options.frames > 0 ? options.frames : rocking.framesPerMove,
                        numberOption(parser, "angle", rocking.angle, 1, 360), oriented};
    settings.pass = {std::min(static_cast<int>(axis), 2), wordOption(parser, "pass", passes()),
                     options.frames, oriented};
    if (settings.type == MovieType::PassThrough && axis > MovieAxis::Z)
        throw UsageError{"--axis: a pass goes along X, Y or Z"};
    options.time.framesPerTimePoint = numberOption(parser, "frames-per-time-point", 1, 1, kMostFrames);
    options.time.paddingFrames = numberOption(parser, "padding", 0, 0, kMostFrames);
    options.rate = numberOption(parser, "rate", kUsualRate, 1, kMostRate);
    if (parser.isSet("range"))
        options.range = rangeOption(parser.value("range"));
    const int sources =
        int(parser.isSet("type")) + int(parser.isSet("keyframes")) + int(parser.isSet("timeframes"));
    if (sources > 1)
        throw UsageError{"only one of --type, --keyframes and --timeframes"};
    if (parser.isSet("keyframes")) {
        settings.type = MovieType::Custom;
        options.keyFrames = readKeyFrames(parentOf(parser.value("keyframes"), "keyframe"));
    }
    if (parser.isSet("timeframes"))
        options.timeFrames = readTimeFrames(parentOf(parser.value("timeframes"), "timeframe"));
    return options;
}

void addOptions(QCommandLineParser& parser)
{
    parser.addOption({"type", "What moves (default rotation).", "rotation|rocking|pass|time"});
    parser.addOption({"axis", "Axis, or several one after the other (,) or together (&) (default X).",
                      "X|Y|Z|X,Y|X,Z|Y,Z|X,Y,Z|X&Y|X&Z|Y&Z"});
    parser.addOption({"turns", "Rotations, or swings of a rocking (default 1).", "N"});
    parser.addOption(
        {"frames",
         "Frames of a rotation (default 60), of a quarter of a swing (default 30), of a pass (default: the "
         "slices of its axis), or of a movie in which only time passes (default: until the last "
         "time point).",
         "N"});
    parser.addOption({"angle", "Degrees to each side of a rocking, 1 to 360 (default 30).", "A"});
    parser.addOption(
        {"pass", "How a pass cuts the volume (default top-bottom).", "top-bottom|bottom-top|out-in|plane"});
    parser.addOption({"frames-per-time-point", "Frames until the next time point (default 1).", "N"});
    parser.addOption(
        {"padding", "Frames that stand still when the time points begin again (default 0).", "N"});
    parser.addOption(
        {"rate", QString("Frames a second of an AVI, 1 to %1 (default %2).").arg(kMostRate).arg(kUsualRate),
         "FPS"});
    parser.addOption(
        {"range", "Make only these frames, with their numbers in the whole movie (default: all).", "A-B"});
    parser.addOption(
        {"time-point", "Another time point: the files of its stack. May be repeated.", "FILE[,FILE...]"});
    parser.addOption({"keyframes", "Recorded frames instead of a --type.", "FILE.xml"});
    parser.addOption({"timeframes", "A composed movie instead of a --type.", "FILE.xml"});
    addRenderOptions(parser);
}

MovieFormat formatOf(const QString& out)
{
    for (const MovieFormat format : {MovieFormat::Avi, MovieFormat::Png, MovieFormat::Tiff}) {
        if (out.endsWith(movieExtension(format), Qt::CaseInsensitive))
            return format;
    }
    throw UsageError{"'" + out + "' ends in none of .avi, .png, .tif"};
}

/// The movie of a stage, with what was left open by the options.
MovieJob movieJob(OffscreenStage& stage, MovieOptions& options)
{
    const VoxelArray& array = *stage.scene.current();
    const int sizes[] = {array.width(), array.height(), array.finalDepth()};
    MovieJob job;
    job.range = options.range;
    const KeyFrame start = shownKeyFrame(stage.scene, true);
    if (!options.timeFrames.empty()) {
        if (array.timePointCount() > 1)
            letTimePass(options.timeFrames, options.time.framesPerTimePoint);
        const TimeFrameMovie movie{
            options.timeFrames, {sizes[0], sizes[1], sizes[2]}, start, options.oriented};
        job.total = movie.frames();
        job.start = movie.firstPose();
        job.steps = timeFrameSteps(movie);
        return job;
    }
    PredefinedMovie movie;
    movie.settings = options.settings;
    movie.time = options.time;
    movie.time.timePoints = array.timePointCount();
    if (movie.settings.pass.frames == 0)
        movie.settings.pass.frames = sizes[movie.settings.pass.axis];
    movie.settings.timeOnlyFrames =
        options.frames > 0 ? options.frames : movie.time.timePoints * movie.time.framesPerTimePoint;
    movie.start = start;
    movie.recorded = options.keyFrames;
    job.total = movie.frames();
    job.start = movie.firstPose();
    job.steps = regularSteps(movie);
    return job;
}

void checkTargets(const QString& out, MovieFormat format, const MovieJob& job, QSize size, bool overwrite)
{
    std::int64_t pictures = 0;
    job.forEachPicture([&](std::int64_t frame) {
        ++pictures;
        Console::checkInterrupt();
        if (format != MovieFormat::Avi)
            checkReplaceable(numberedPictureName(out, frame), overwrite);
    });
    if (pictures == 0)
        throw UsageError{QString("the movie has %1 frames, none of which is asked for").arg(job.total)};
    if (format != MovieFormat::Avi)
        return;
    checkReplaceable(out, overwrite);
    if (aviFileBytes(size.width(), size.height(), pictures) > kAviLimit)
        Console::report(out,
                        {"warning: more than 2 GiB; many programs read only the beginning of such an AVI "
                         "file; .png makes a file for each frame"});
}

std::unique_ptr<FrameSink> makeSink(const QString& out, MovieFormat format, const MovieOptions& options,
                                    const RenderOptions& render)
{
    if (format == MovieFormat::Avi)
        return std::make_unique<AviSink>(out, render.size.width(), render.size.height(),
                                         static_cast<float>(options.rate),
                                         options.range ? options.range->first : 0);
    return std::make_unique<NumberedSink>(out, pictureWriterOf(format));
}

void run(const QCommandLineParser& parser)
{
    QStringList names = parser.positionalArguments();
    if (names.size() < 2)
        throw UsageError{"movie needs a FILE and an OUT"};
    const QString out = names.takeLast();
    const MovieFormat format = formatOf(out);
    MovieOptions options = movieOptions(parser);
    const RenderOptions render = renderOptions(parser, format == MovieFormat::Png);
    std::vector<QStringList> timePoints = {names};
    for (const QString& files : parser.values("time-point"))
        timePoints.push_back(files.split(','));
    const auto stage = makeStage(timePoints, render);
    const MovieJob job = movieJob(*stage, options);
    checkTargets(out, format, job, render.size, parser.isSet("overwrite"));
    OffscreenFrames frames(*stage, render.size, render.transparent);
    const std::unique_ptr<FrameSink> sink = makeSink(out, format, options, render);
    Activity activity(QStringLiteral("Filming"));
    const MovieResult result = runMovie(job, frames, sink.get(), activity.progress());
    if (result.cancelled)
        throw Interrupted{};
    if (!result.error.isEmpty())
        throw FileError(out, result.error);
}

} // namespace

const Command kMovieCommand = {"movie",
                               "Draw a stack into a movie.",
                               "[--type rotation|rocking|pass|time] [OPTION...] FILE... OUT.avi|.png|.tif",
                               addOptions,
                               run,
                               true};

} // namespace tirn
