#include <cmath>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "cli/command.h"
#include "cli/console.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "formats/imageformats.h"

namespace tirn {

namespace {

/// Null for what is not a number.
QJsonValue numberOrNull(double value) { return std::isfinite(value) ? QJsonValue(value) : QJsonValue(); }

/// Null for an unknown size.
QJsonValue sizeOrNull(double value) { return value > 0 ? numberOrNull(value) : QJsonValue(); }

QJsonArray array(const std::vector<double>& values)
{
    QJsonArray all;
    for (const double value : values)
        all.append(numberOrNull(value));
    return all;
}

QJsonObject attributesObject(const ImageFile& stack, const QStringList& names)
{
    const ImageAttributes& a = stack.attributes();
    QJsonObject object;
    object["files"] = QJsonArray::fromStringList(names);
    object["type"] = static_cast<int>(a.type);
    object["typeName"] = QLatin1String(imageFormat(a.type).name);
    object["x"] = a.fileX;
    object["y"] = a.fileY;
    object["z"] = a.fileZ;
    object["channels"] = a.channels;
    object["bitDepth"] = a.bitDepth;
    object["realBitDepth"] = a.realBitDepth();
    object["maxValue"] = a.maxValue;
    object["dimX"] = sizeOrNull(a.dimX);
    object["dimY"] = sizeOrNull(a.dimY);
    object["dimZ"] = sizeOrNull(a.dimZ);
    object["timestamp"] =
        a.timestamp.isValid() ? QJsonValue(a.timestamp.toString(Qt::ISODate)) : QJsonValue();
    object["lens"] = a.lens;
    object["magFactor"] = numberOrNull(static_cast<double>(a.magFactor));
    object["notes"] = QJsonArray::fromStringList(a.notes);
    return object;
}

QJsonObject statsObject(const ImageFile& stack, const StackStats& stats)
{
    QJsonObject object;
    object["channel"] = stats.channel;
    object["min"] = stats.min;
    object["max"] = stats.max;
    object["mean"] = numberOrNull(stats.mean);
    object["median"] = numberOrNull(stats.median);
    object["mode"] = static_cast<qint64>(stats.mode);
    object["entropy"] = numberOrNull(stack.entropy(stats.channel));
    object["sliceMean"] = array(stats.sliceMean);
    object["sliceStdDev"] = array(stats.sliceStdDev);
    object["sliceSkew"] = array(stats.sliceSkew);
    object["sliceKurtosis"] = array(stats.sliceKurtosis);
    return object;
}

void addOptions(QCommandLineParser& parser)
{
    parser.addOption({"json", "Print a JSON object."});
    parser.addOption({"stats", "Read the voxels and print the statistics of each channel as well."});
}

QString withNewline(const QString& text) { return text.endsWith('\n') ? text : text + '\n'; }

void run(const QCommandLineParser& parser)
{
    const QStringList names = parser.positionalArguments();
    if (names.isEmpty())
        throw UsageError{"info needs a FILE"};
    const auto stack = openStack(names);
    QJsonObject object = attributesObject(*stack, names);
    QString text = withNewline(stack->attributes().fullText());
    if (parser.isSet("stats")) {
        readStack(*stack, names);
        QJsonArray all;
        for (const StackStats& stats : stack->statsList()) {
            all.append(statsObject(*stack, stats));
            text += withNewline(stats.text());
        }
        object["stats"] = all;
    }
    Console::answer(parser.isSet("json") ? QString::fromUtf8(QJsonDocument(object).toJson()) : text);
}

} // namespace

const Command kInfoCommand = {"info", "Say what is known of a stack.", "[--json] [--stats] FILE...",
                              addOptions, run};

} // namespace tirn
