#include "depth/curvefile.h"

#include <optional>

#include <QFile>
#include <QRegularExpression>

#include "base/log.h"
#include "base/outputfile.h"
#include "formats/files/textlines.h"

namespace tirn {

namespace {

constexpr auto kUnicode = QRegularExpression::UseUnicodePropertiesOption;

const QRegularExpression& channelPattern()
{
    static const QRegularExpression pattern(R"(^\s*Channel:\s*(\w+))", kUnicode);
    return pattern;
}

const QRegularExpression& planesPattern()
{
    static const QRegularExpression pattern(R"(^\s*Planes:\s*(\d+))", kUnicode);
    return pattern;
}

std::optional<std::vector<double>> readMultipliers(TextLines& lines, int slices)
{
    std::vector<double> values(static_cast<std::size_t>(slices));
    QString line;
    for (double& value : values) {
        if (!lines.next(line))
            return std::nullopt;
        value = line.toDouble();
    }
    return values;
}

/// The index that the capture of a channel line means: 0 for all channels, -1 for one that there cannot be.
int channelIndex(const QString& capture)
{
    if (capture == QLatin1String("All"))
        return 0;
    bool number = false;
    const int channel = capture.toInt(&number);
    return number ? channel : -1;
}

} // namespace

QString curveFileText(std::span<const CurveBlock> blocks)
{
    QString text;
    for (const CurveBlock& block : blocks) {
        text += block.channel < 0 ? QString("Channel: All\n") : QString("Channel: %1\n").arg(block.channel);
        text += QString("Planes: %1\n").arg(block.curve.size());
        for (const double value : block.curve)
            text += plainNumber(value) + '\n';
    }
    return text;
}

bool writeCurveFile(const QString& name, std::span<const CurveBlock> blocks)
{
    const QByteArray bytes = curveFileText(blocks).toUtf8();
    return writeFile(name, bytes.constData(), bytes.size());
}

CurveFileResult readCurveFile(const QString& name, int slices, std::span<std::vector<double>* const> curves)
{
    CurveFileResult result;
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = name + " cannot be opened.";
        return result;
    }
    TextLines lines(file);
    QString line;
    while (lines.next(line)) {
        const QRegularExpressionMatch channel = channelPattern().match(line);
        if (!channel.hasMatch())
            continue;
        logDebug("matched channel");
        result.lastWasAll = channel.captured(1) == QLatin1String("All");
        // The line behind a channel is spent, whatever it holds: a channel there is not seen as one.
        const QRegularExpressionMatch planes =
            lines.next(line) ? planesPattern().match(line) : QRegularExpressionMatch();
        if (!planes.hasMatch())
            continue;
        logDebug("matched plane");
        if (planes.captured(1).toInt() != slices) {
            result.error = QString("%1 is for a stack with %2.  This stack has %3 slices.")
                               .arg(name, planes.captured(1), QString::number(slices));
            return result;
        }
        const std::optional<std::vector<double>> values = readMultipliers(lines, slices);
        if (!values) {
            result.error = name + " ends in the middle of a curve.";
            return result;
        }
        const int index = channelIndex(channel.captured(1));
        if (index < 0 || static_cast<std::size_t>(index) >= curves.size())
            continue;
        *curves[static_cast<std::size_t>(index)] = *values;
        result.channels.push_back(index);
    }
    return result;
}

} // namespace tirn
