#include "support/fuzztargets.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QTemporaryDir>

#include "depth/curvefile.h"
#include "depth/curvesession.h"
#include "formats/raw/unknownio.h"
#include "formats/tiff/mtiffio.h"
#include "formats/tiff/tiffseriesio.h"
#include "formats/vendor/bioradio.h"
#include "formats/vendor/imsubs.h"
#include "formats/vendor/leicaio.h"
#include "formats/vendor/metamorphio.h"
#include "formats/vendor/olympusio.h"
#include "formats/vendor/vffio.h"
#include "formats/vendor/zeissio.h"
#include "image/imagefile.h"
#include "mesh/segmentation.h"
#include "movies/frameload.h"
#include "movies/keyframesession.h"
#include "movies/timeframemovie.h"
#include "movies/timeframesession.h"
#include "palettes/palettefile.h"
#include "palettes/palettesession.h"
#include "support/picfile.h"
#include "support/tifffile.h"

namespace tirn::test {

namespace {

void readSome(ImageFile& owner, ImageIO& reader)
{
    const int last = owner.attributes().lastFileLayer();
    if (owner.attributes().type == ImageType::Unknown || last < 0)
        return;
    reader.readLayers(0, last, 1);
    reader.readLayers(last / 2, last, 3);
}

template <class Reader>
void fuzzReader(const QString& name)
{
    ImageFile owner;
    Reader reader(owner, {name});
    readSome(owner, reader);
}

/// The two names that a probe asks about, and whatever it then reads.
void fuzzProbes(const QString& name)
{
    ImageFile file({name});
    if (file.hasReader())
        file.read();
}

void fuzzRaw(const QString& name)
{
    ImageFile owner;
    UnknownIO reader(owner, {name}, 16, 8, 8, 4, 2, 16);
    reader.readLayers(0, 3, 1);
}

void fuzzOlympus(const QString& name)
{
    // The directory that a text with the right data name finds.
    const QDir folder = QFileInfo(name).absoluteDir();
    if (!folder.exists("set.oif.files")) {
        folder.mkdir("set.oif.files");
        for (int plane = 0; plane < 4; ++plane)
            TiffFile{{plainPage(4, 3, plane, 16)}}.save(
                folder.filePath(QString("set.oif.files/set_%1.tif").arg(plane)));
    }
    fuzzReader<OlympusIO>(name);
    OlympusIO::isOlympus(name);
}

void fuzzPalette(const QString& name)
{
    PaletteFile file(name);
    if (file.read())
        file.makePalette();
}

void fuzzSession(const QString& name)
{
    QDomDocument document;
    if (document.setContent(fileContent(name)))
        readSessionPalette(document.documentElement());
}

void fuzzStl(const QString& name)
{
    Segmentation mesh;
    mesh.load(name);
}

void fuzzCurveFile(const QString& name)
{
    std::vector<double> first;
    std::vector<double> second;
    std::vector<double>* const curves[] = {&first, &second};
    for (const int slices : {3, 200, 0})
        readCurveFile(name, slices, curves);
}

void fuzzSessionCurve(const QString& name)
{
    QDomDocument document;
    if (!document.setContent(fileContent(name)))
        return;
    for (const int slices : {-1, 0, 5}) {
        ZCurve curve = readSessionCurve(document.documentElement(), slices);
        curve.generateTexture();
    }
}

void fuzzKeyFrames(const QString& name)
{
    QDomDocument document;
    if (!document.setContent(fileContent(name)))
        return;
    ShownFrame shown;
    shown.stack = ShownStack{};
    loadKeyFrame(readKeyFrame(document.documentElement()), shown);
    for (const KeyFrame& frame : readKeyFrames(document.documentElement()))
        loadKeyFrame(frame, shown);
}

/// The frames that the elements ask for, up to a number.
void fuzzTimeFrames(const QString& name)
{
    QDomDocument document;
    if (!document.setContent(fileContent(name)))
        return;
    TimeFrameMovie movie;
    movie.timeFrames = readTimeFrames(document.documentElement());
    movie.size = {64, 32, 8};
    movie.start.channels.resize(2);
    movie.start.palettes.resize(2, {{0, 255}, {0, 255}, {0, 255}, {0, 255}});
    const MovieSteps steps = timeFrameSteps(movie);
    MovieStep step;
    KeyFrame pose;
    for (int frame = 0; frame < 300 && steps(step, pose); ++frame) {
    }
    QDomDocument again;
    for (const TimeFrame& timeFrame : movie.timeFrames)
        again.appendChild(saveTimeFrame(timeFrame, again));
}

constexpr FuzzTarget kTargets[] = {
    {"biorad", fuzzReader<BioradIO>, "pic"},
    {"deltavision", fuzzReader<IMSubs>, "r3d"},
    {"leica", fuzzReader<LeicaIO>, "txt"},
    {"metamorph", fuzzReader<MetaMorphIO>, "stk"},
    {"mtiff", fuzzReader<MTiffIO>, "tif"},
    {"olympus", fuzzOlympus, "oif"},
    {"raw", fuzzRaw, "raw"},
    {"tiffseries", fuzzReader<TiffSeriesIO>, "tif"},
    {"vff", fuzzReader<VffIO>, "vff"},
    {"zeiss", fuzzReader<ZeissIO>, "lsm"},
    {"probes", fuzzProbes, "any"},
    {"palette_map", fuzzPalette, "map"},
    {"palette_col", fuzzPalette, "col"},
    {"palette_lut", fuzzPalette, "lut"},
    {"session_palette", fuzzSession, "xml"},
    {"stl", fuzzStl, "stl"},
    {"curve_mzp", fuzzCurveFile, "mzp"},
    {"session_curve", fuzzSessionCurve, "xml"},
    {"session_keyframes", fuzzKeyFrames, "xml"},
    {"session_timeframes", fuzzTimeFrames, "xml"},
};

/// Memory, where the system has a file system of it.
QString folderTemplate()
{
    return (QFileInfo("/dev/shm").isWritable() ? QString("/dev/shm") : QDir::tempPath()) +
           "/tirn-fuzz-XXXXXX";
}

} // namespace

std::span<const FuzzTarget> fuzzTargets() { return kTargets; }

void runFuzzTarget(const FuzzTarget& target, const std::uint8_t* bytes, std::size_t size)
{
    static const QTemporaryDir folder(folderTemplate());
    const QString name = folder.filePath(QString("input.") + target.ending);
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(reinterpret_cast<const char*>(bytes), static_cast<qint64>(size));
    file.close();
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    target.run(name);
    qInstallMessageHandler(previous);
}

} // namespace tirn::test
