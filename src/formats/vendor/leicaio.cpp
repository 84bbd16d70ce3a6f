#include "formats/vendor/leicaio.h"

#include <array>

#include <QRegularExpression>

#include "base/log.h"
#include "formats/files/fileprobe.h"
#include "formats/files/textlines.h"
#include "image/imagefile.h"

namespace tirn {

namespace {

constexpr unsigned char kBinaryMark[12] = {0x49, 0x49, 0x49, 0x49, 0xF0, 0x33,
                                           0x60, 0x01, 0x00, 0x00, 0x00, 0x20};

constexpr const char* kHeadings[] = {"EXPERIMENT INFORMATION", "DIMENSION DESCRIPTION", "HARDWARE PARAMETER",
                                     "SCANNER INFORMATION",    "TIME INFORMATION",      "LUT DESCRIPTION",
                                     "SERIES INFORMATION",     "IMAGES INFORMATION"};
constexpr int kTimeHeading = 4;
constexpr int kImagesHeading = 7;

/// An expression and where its capture goes.
template <class Number>
struct Field
{
    QRegularExpression expression;
    int capture;
    Number ImageAttributes::*target;
};

template <class Number>
Field<Number> field(const char* expression, int capture, Number ImageAttributes::*target)
{
    // The unit may be a micron sign.
    return {QRegularExpression(QLatin1String(expression), QRegularExpression::UseUnicodePropertiesOption),
            capture, target};
}

const std::array<Field<int>, 1>& channelFields()
{
    static const std::array<Field<int>, 1> fields = {
        field("\\s*Channels\\s+(\\d+)", 1, &ImageAttributes::channels)};
    return fields;
}

const std::array<Field<double>, 3>& voxelFields()
{
    static const std::array<Field<double>, 3> fields = {
        field("\\s*Voxel-Width\\s+(\\[\\w+\\])\\s+(\\d+.*\\d*)", 2, &ImageAttributes::dimX),
        field("\\s*Voxel-Height\\s+(\\[\\w+\\])\\s+(\\d+.*\\d*)", 2, &ImageAttributes::dimY),
        field("\\s*Voxel-Depth\\s+(\\[\\w+\\])\\s+(\\d+.*\\d*)", 2, &ImageAttributes::dimZ)};
    return fields;
}

const std::array<Field<int>, 4>& imageFields()
{
    // The second accepts a misspelling that files carry.
    static const std::array<Field<int>, 4> fields = {
        field("\\s*Image\\s+Width:\\s+(\\d+)", 1, &ImageAttributes::fileX),
        field("\\s*I[am][am]ge\\s+Length:\\s+(\\d+)", 1, &ImageAttributes::fileY),
        field("\\s*Number\\s+of\\s+Images:\\s+(\\d+)", 1, &ImageAttributes::fileZ),
        field("\\s*Bits\\s+per\\s+Sample:\\s+(\\d+)", 1, &ImageAttributes::bitDepth)};
    return fields;
}

/// The number that a text begins with, whatever follows.
double leadingNumber(const QString& text)
{
    static const QRegularExpression number(QStringLiteral("^[0-9]+\\.?[0-9]*(?:[eE][+-]?[0-9]+)?"));
    return number.match(text).captured().toDouble();
}

void takeFields(const std::array<Field<double>, 3>& fields, const QString& line, ImageAttributes& record)
{
    for (const auto& row : fields) {
        const QRegularExpressionMatch match = row.expression.match(line);
        if (match.hasMatch())
            record.*row.target = leadingNumber(match.captured(row.capture));
    }
}

template <std::size_t Count>
void takeFields(const std::array<Field<int>, Count>& fields, const QString& line, ImageAttributes& record)
{
    for (const auto& row : fields) {
        const QRegularExpressionMatch match = row.expression.match(line);
        if (match.hasMatch())
            record.*row.target = match.captured(row.capture).toInt();
    }
}

bool namesLeica(const QString& line)
{
    return line.contains(QLatin1String("Leica Microsystems"), Qt::CaseInsensitive);
}

bool isHeading(const QString& line, int heading)
{
    return line.contains(QLatin1String(kHeadings[heading]), Qt::CaseInsensitive);
}

bool hasBinaryMark(QFile& file)
{
    const QByteArray mark(reinterpret_cast<const char*>(kBinaryMark), sizeof kBinaryMark);
    return file.seek(0) && file.read(mark.size()) == mark;
}

} // namespace

LeicaIO::LeicaIO(ImageFile& owner, const QStringList& names) : ImageIO(owner, names)
{
    attributes() = LeicaIO::readAttributes();
}

bool LeicaIO::isLeica(const QString& name)
{
    QFile file(name);
    if (!openForProbe(file))
        return false;
    QString line;
    // The headings behind the first line do not change the answer.
    const bool text = TextLines(file).next(line) && namesLeica(line);
    return text || hasBinaryMark(file);
}

ImageAttributes LeicaIO::readAttributes()
{
    ImageAttributes record;
    if (fileCount() < 1 || !openForProbe(file(0)))
        return record;
    TextLines lines(file(0));
    QString line;
    if (lines.next(line) && namesLeica(line)) {
        int heading = 0;
        while (lines.next(line)) {
            if (heading <= kImagesHeading && isHeading(line, heading)) {
                if (heading == kTimeHeading)
                    logDebug("voxel size %g %g %g", record.dimX, record.dimY, record.dimZ);
                ++heading;
            } else if (heading == kTimeHeading) {
                takeFields(channelFields(), line, record);
                takeFields(voxelFields(), line, record);
            } else if (heading > kImagesHeading) {
                takeFields(imageFields(), line, record);
            }
        }
        record.type = ImageType::Leica;
    } else if (hasBinaryMark(file(0))) {
        record.type = ImageType::Leica;
    }
    file(0).close();
    log(LogLevel::Debug, record.fullText());
    return record;
}

bool LeicaIO::readLayers(int, int, int) { return true; }

} // namespace tirn
