#include <algorithm>

#include <QJsonDocument>
#include <QJsonObject>

#include "cli/activity.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/renderoptions.h"
#include "cli/resultfiles.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "cli/words.h"
#include "pictures/picturelayout.h"
#include "pictures/picturesize.h"
#include "pictures/picturewriter.h"
#include "render/picturemaker.h"
#include "render/snapshots.h"
#include "render/turntimes.h"

namespace tirn {

namespace {

constexpr const char* kUsualDpi = "300";
/// Columns, and rows, of a grid of channels.
constexpr int kMostCells = 100;

/// What one picture is made of.
struct LayoutOptions
{
    Scenario scenario = Scenario::Single;
    /// Empty for the least square that has room.
    QSize grid;
    double eyeAngle = 5;
    bool rightEyeDominant = false;
    CrossSides sides;
};

PictureFormat formatOf(const QString& out)
{
    for (const PictureFormat format : {PictureFormat::Png, PictureFormat::Tiff, PictureFormat::Raw}) {
        if (out.endsWith(pictureExtension(format), Qt::CaseInsensitive))
            return format;
    }
    throw UsageError{"'" + out + "' ends in none of .png, .tif, .raw"};
}

CrossSides crossSides(const QString& text)
{
    CrossSides sides{false, false, false, false};
    for (const QString& side : text.split(',', Qt::SkipEmptyParts)) {
        if (side == "top")
            sides.top = true;
        else if (side == "left")
            sides.left = true;
        else if (side == "right")
            sides.right = true;
        else if (side == "bottom")
            sides.bottom = true;
        else
            throw UsageError{"--sides: '" + side + "' is none of top, left, right, bottom"};
    }
    return sides;
}

QSize gridOption(const QString& text)
{
    const QSize grid = sizeOption("grid", text);
    if (grid.width() > kMostCells || grid.height() > kMostCells)
        throw UsageError{QString("--grid: '%1' has more than %2 columns or rows").arg(text).arg(kMostCells)};
    return grid;
}

LayoutOptions layoutOptions(const QCommandLineParser& parser)
{
    LayoutOptions options;
    options.scenario = wordOption<Scenario>(parser, "layout",
                                            {{"single", Scenario::Single},
                                             {"channels", Scenario::Channels},
                                             {"stereo", Scenario::Stereo},
                                             {"cross", Scenario::Orthographic}});
    if (parser.isSet("grid"))
        options.grid = gridOption(parser.value("grid"));
    if (parser.isSet("eye-angle"))
        options.eyeAngle = wholeNumber("eye-angle", parser.value("eye-angle"), 5, 50);
    options.rightEyeDominant = wordOption<bool>(parser, "dominant", {{"left", false}, {"right", true}});
    if (parser.isSet("sides"))
        options.sides = crossSides(parser.value("sides"));
    return options;
}

void addOptions(QCommandLineParser& parser)
{
    addRenderOptions(parser);
    parser.addOption({"layout",
                      "One picture, a grid with each channel and all of them, a stereo pair, or a view with "
                      "those along the other axes around it (default single).",
                      "single|channels|stereo|cross"});
    parser.addOption({"grid", "Columns and rows of the grid of channels (default: about square).", "CxR"});
    parser.addOption({"eye-angle", "Degrees between the views of a stereo pair, 5 to 50 (default 5).", "A"});
    parser.addOption({"dominant", "Dominant eye of a stereo pair (default left).", "left|right"});
    parser.addOption({"sides", "Views around a cross (default top,left,right,bottom).", "LIST"});
    parser.addOption(
        {"dpi", QString("Resolution that PNG and TIFF note, 1 to 2400 (default %1).").arg(kUsualDpi), "N"});
    parser.addOption({"time",
                      "Draw a full turn about y in so many frames and print how long they took, as JSON.",
                      "FRAMES"});
}

/// Takes pictures of a stage, and layouts of them.
class Photographer
{
public:
    Photographer(OffscreenStage& stage, const RenderOptions& options)
        : m_stage(stage), m_maker(stage.thread())
    {
        m_request = {options.size, overlayScale(options.size), options.transparent};
    }

    QImage take(const LayoutOptions& layout)
    {
        const SnapshotSource source{m_stage.scene, m_request.size, [this] { return takeOne(); },
                                    [this](double x, double y, double z) {
                                        m_stage.scene.view.rotX = wrapDegrees(x);
                                        m_stage.scene.view.rotY = wrapDegrees(y);
                                        m_stage.scene.view.rotZ = wrapDegrees(z);
                                    }};
        switch (layout.scenario) {
        case Scenario::Channels:
            return channels(source, layout);
        case Scenario::Orthographic:
            return orthographicCross(source, layout.sides);
        case Scenario::Stereo:
            return stereoPair(source, layout.eyeAngle, layout.rightEyeDominant);
        case Scenario::Single:
            break;
        }
        return takeOne();
    }
    const QString& error() const { return m_maker.error(); }

private:
    QImage takeOne()
    {
        Activity activity(QStringLiteral("Drawing"));
        return m_maker.draw(m_request, activity.progress());
    }

    QImage channels(const SnapshotSource& source, const LayoutOptions& layout)
    {
        const int channels = m_stage.scene.current()->channelCount();
        const int cells = gridCells(channels);
        QSize grid = layout.grid;
        if (grid.isEmpty()) {
            const int side = firstGridSide(cells);
            grid = {side, otherGridSide(cells, side, side)};
        }
        std::vector<int> items;
        for (int k = 0; k < grid.width() * grid.height(); ++k)
            items.push_back(firstGridItem(k, channels));
        return channelGrid(source, grid, items);
    }

    OffscreenStage& m_stage;
    PictureMaker m_maker;
    PictureRequest m_request;
};

void printTimes(OffscreenStage& stage, QSize size, int frames, const QString& name)
{
    Activity activity(QStringLiteral("Turning"));
    const TurnTimes times = timeTurn(stage, size, frames, activity.progress());
    Console::checkInterrupt();
    if (times.frameMilliseconds.empty())
        throw FileError(name, times.error);
    const QJsonObject object{{"frames", frames},
                             {"width", size.width()},
                             {"height", size.height()},
                             {"medianMilliseconds", times.median()},
                             {"maximumMilliseconds", times.maximum()},
                             {"firstFrameMilliseconds", times.frameMilliseconds.front()},
                             {"renderer", stage.rendererName()}};
    Console::answer(QString::fromUtf8(QJsonDocument(object).toJson()));
}

void writePicture(const QImage& picture, const QString& out, PictureFormat format, int dpi, bool overwrite)
{
    ResultFiles results({out}, overwrite);
    QString error;
    {
        const Activity activity(QStringLiteral("Writing"));
        error = savePicture(picture, results.place(out), format, dpi);
    }
    if (!error.isEmpty())
        throw FileError(out, error);
    Console::checkInterrupt();
    results.commit(1);
}

void run(const QCommandLineParser& parser)
{
    QStringList names = parser.positionalArguments();
    const LayoutOptions layout = layoutOptions(parser);
    if (parser.isSet("time")) {
        const int frames = wholeNumber("time", parser.value("time"), 1, 1000000);
        const RenderOptions options = renderOptions(parser, true);
        if (names.isEmpty())
            throw UsageError{"render --time needs a FILE"};
        printTimes(*makeStage({names}, options), options.size, frames, names.first());
        return;
    }
    if (names.size() < 2)
        throw UsageError{"render needs a FILE and an OUT"};
    const QString out = names.takeLast();
    const PictureFormat format = formatOf(out);
    const RenderOptions options = renderOptions(parser, format == PictureFormat::Png);
    const int dpi = wholeNumber("dpi", parser.isSet("dpi") ? parser.value("dpi") : kUsualDpi, 1, 2400);
    const bool overwrite = parser.isSet("overwrite");
    checkReplaceable(out, overwrite);
    const auto stage = makeStage({names}, options);
    Photographer photographer(*stage, options);
    const QImage picture = photographer.take(layout);
    Console::checkInterrupt();
    if (picture.isNull())
        throw FileError(out, photographer.error().isEmpty()
                                 ? QString("Could not allocate memory for the picture")
                                 : photographer.error());
    writePicture(picture, out, format, dpi, overwrite);
}

} // namespace

const Command kRenderCommand = {
    "render", "Draw a stack into a picture.", "[OPTION...] FILE... OUT.png|.tif|.raw", addOptions, run, true};

} // namespace tirn
