#include "formats/vendor/bioradio.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QRegularExpression>

#include "base/bytereader.h"
#include "base/checkedsize.h"
#include "base/log.h"
#include "base/stopwatch.h"
#include "formats/files/fileprobe.h"
#include "formats/files/layerread.h"
#include "formats/vendor/bioradlayout.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

using HeaderBytes = std::array<std::byte, biorad::kHeaderBytes>;

struct Header
{
    int x = 0;
    int y = 0;
    int z = 0;
    bool hasNotes = false;
    bool bytes = false;
    bool signature = false;
    int lens = 0;
    std::uint32_t magnification = 0;
};

bool readBytes(QFile& file, HeaderBytes& bytes)
{
    const auto wanted = static_cast<qint64>(bytes.size());
    return file.read(reinterpret_cast<char*>(bytes.data()), wanted) == wanted;
}

Header parseHeader(const HeaderBytes& bytes)
{
    ByteReader reader(bytes);
    Header header;
    header.x = reader.u16();
    header.y = reader.u16();
    header.z = reader.u16();
    reader.seek(biorad::kNotesOffset);
    header.hasNotes = reader.u32() != 0;
    header.bytes = reader.u8() == 1;
    reader.seek(biorad::kSignatureOffset);
    header.signature = reader.u16() == biorad::kSignature;
    reader.seek(biorad::kLensOffset);
    header.lens = reader.u8();
    reader.seek(biorad::kMagnificationOffset);
    header.magnification = reader.u32();
    return header;
}

/// The first field in which a file differs from the first one, as a text; empty when they fit.
QString mismatch(const ImageAttributes& first, const Header& header, int channel)
{
    if (header.x != first.fileX)
        return QString::asprintf("Channel 0 x: %d channel %d x %d.", first.fileX, channel, header.x);
    if (header.y != first.fileY)
        return QString::asprintf("Channel 0 y: %d channel %d y %d.", first.fileY, channel, header.y);
    if (header.z != first.fileZ)
        return QString::asprintf("Channel 0 z: %d channel %d z %d.", first.fileZ, channel, header.z);
    const int bitDepth = header.bytes ? 8 : 16;
    if (bitDepth != first.bitDepth)
        return QString::asprintf("Channel 0 bitdepth: %d channel %d bitdepth: %d.", first.bitDepth, channel,
                                 bitDepth);
    return {};
}

/// The three numbers of an axis note. Each number takes all that it can and gives nothing back: what one
/// number leaves is again a number, so that no match is lost, and a note of nothing but digits ends at once.
/// The lazy front part leaves the numbers whole.
const QRegularExpression& axisExpression()
{
    static const QRegularExpression expression = [] {
        const QString number = QStringLiteral("([+-]?+[0-9]*+\\.?+[0-9]*+[eE]?+[+-]?+[0-9]*+)");
        return QRegularExpression(QStringLiteral("^AXIS_\\d.*?") + number + QStringLiteral("\\s*+") + number +
                                      QStringLiteral("\\s*+") + number + QStringLiteral("\\s*+microns\\s*+$"),
                                  QRegularExpression::CaseInsensitiveOption |
                                      QRegularExpression::DotMatchesEverythingOption |
                                      QRegularExpression::UseUnicodePropertiesOption);
    }();
    return expression;
}

/// The scale in the first note that names the axis; `unknown` when there is no such note, -1 when its number
/// does not parse.
double axisScale(const QStringList& notes, const QString& axis, double unknown)
{
    const QStringList lines = notes.filter(axis, Qt::CaseInsensitive);
    if (lines.isEmpty())
        return unknown;
    bool parsed = false;
    const double scale = axisExpression().match(lines.first()).captured(3).toDouble(&parsed);
    return parsed ? std::abs(scale) : -1.0;
}

} // namespace

BioradIO::BioradIO(ImageFile& owner, const QStringList& names) : ImageIO(owner, names)
{
    attributes() = BioradIO::readAttributes();
}

bool BioradIO::isBiorad(const QString& name)
{
    QFile file(name);
    HeaderBytes bytes;
    if (!openForProbe(file) || !readBytes(file, bytes))
        return false;
    const Header header = parseHeader(bytes);
    if (!header.signature)
        return false;
    const auto body = checkedProduct({header.x, header.y, header.z, header.bytes ? 1 : 2});
    return body && *body + biorad::kHeaderBytes <= file.size();
}

bool BioradIO::isMyType() { return readAttributes().type == ImageType::BioRad; }

ImageAttributes BioradIO::readAttributes()
{
    ImageAttributes record;
    record.channels = fileCount();
    logDebug("I wanna read %d biorad files' attributes", fileCount());
    if (fileCount() < 1) {
        fail(QStringLiteral("Less than 1 channel to read"));
        return record;
    }
    if (!readHeaders(record)) {
        record.type = ImageType::Unknown;
        return record;
    }
    if (record.hasNotes)
        readNoteRecords(record);
    logDebug("I read the attributes");
    return record;
}

bool BioradIO::readHeaders(ImageAttributes& record)
{
    for (int channel = 0; channel < fileCount(); ++channel) {
        QFile& channelFile = file(channel);
        if (!channelFile.open(QIODevice::ReadOnly))
            return fail(QStringLiteral("error opening file"));
        HeaderBytes bytes;
        const bool sought = channelFile.seek(0);
        const bool complete = sought && readBytes(channelFile, bytes);
        channelFile.close();
        if (!sought)
            return fail(QStringLiteral("file seek failed"));
        if (!complete)
            return fail(QStringLiteral("error reading header from file"));
        const Header header = parseHeader(bytes);
        if (!header.signature)
            return fail(QStringLiteral("not a biorad"));
        if (channel == 0) {
            record.type = ImageType::BioRad;
            record.fileX = header.x;
            record.fileY = header.y;
            record.fileZ = header.z;
            record.bitDepth = header.bytes ? 8 : 16;
            record.hasNotes = header.hasNotes;
            record.lens = header.lens;
            record.magFactor = static_cast<float>(header.magnification);
            continue;
        }
        const QString difference = mismatch(record, header, channel);
        if (!difference.isEmpty()) {
            log(LogLevel::Debug, difference);
            fail(difference);
            return fail(QStringLiteral("Files not compatible."));
        }
    }
    return true;
}

void BioradIO::readNoteRecords(ImageAttributes& record)
{
    logDebug("Reading notes");
    const auto body = checkedProduct({record.fileX, record.fileY, record.fileZ, record.bytesPerSample()});
    QFile& notesFile = file(0);
    if (!body || !notesFile.open(QIODevice::ReadOnly))
        return;
    notesFile.seek(biorad::kHeaderBytes + *body);
    bool another = true;
    do {
        std::array<char, biorad::kNoteBytes> bytes{};
        if (notesFile.read(bytes.data(), bytes.size()) <= 0) {
            notesFile.close();
            return;
        }
        ByteReader reader(bytes.data(), bytes.size());
        reader.skip(2);
        another = reader.u32() != 0;
        reader.skip(4);
        const int type = reader.u16();
        const char* text = bytes.data() + biorad::kNoteTextOffset;
        record.notes.append(
            QString::fromLatin1(text, static_cast<int>(qstrnlen(text, biorad::kNoteTextBytes))));
        if (type > biorad::kLastPlainNoteType)
            log(LogLevel::Debug, QLatin1String("message: ") + record.notes.last());
    } while (another && !notesFile.atEnd());
    notesFile.close();
    readNotes(record);
}

void BioradIO::readNotes(ImageAttributes& attributes)
{
    attributes.dimX = axisScale(attributes.notes, QStringLiteral("AXIS_2"), attributes.dimX);
    attributes.dimY = axisScale(attributes.notes, QStringLiteral("AXIS_3"), attributes.dimY);
    attributes.dimZ = axisScale(attributes.notes, QStringLiteral("AXIS_4"), attributes.dimZ);
}

namespace {

/// What the files hold of the layers asked for.
struct Holdings
{
    std::int64_t completeLayers = 0;
    bool anyMissing = false;
    /// A read that would get no byte at all, or no file that would justify the memory.
    bool unreadable = false;
};

Holdings holdings(std::span<const LayerSource> sources, int count, std::int64_t layerBytes, bool atOnce)
{
    Holdings result;
    result.completeLayers = count;
    bool anyFull = false;
    for (const LayerSource& source : sources) {
        std::int64_t complete = 0;
        std::int64_t empty = 0;
        for (int layer = 0; layer < count; ++layer) {
            const std::int64_t there = source.available(layer, layerBytes);
            complete += there == layerBytes ? 1 : 0;
            // No later layer has any byte then.
            if (there == 0) {
                empty = count - layer;
                break;
            }
        }
        result.unreadable = result.unreadable || (atOnce ? empty == count : empty > 0);
        result.anyMissing = result.anyMissing || complete < count;
        result.completeLayers = std::min(result.completeLayers, complete);
        anyFull = anyFull || complete == count;
    }
    result.unreadable = result.unreadable || !anyFull;
    return result;
}

} // namespace

bool BioradIO::readLayers(int first, int last, int step)
{
    logDebug("enter BioradIO::readLayers\n");
    if (step < 1 || last < 0 || first < 0 || last < first) {
        logDebug("First: %d last: %d step: %d", first, last, step);
        return fail(QStringLiteral("Illogical arguments to readLayers"));
    }
    ImageAttributes& stack = attributes();
    const int count = layerCount(first, last, step);
    const auto layerSamples = checkedProduct({stack.fileX, stack.fileY});
    const auto layerBytes =
        layerSamples ? checkedProduct({*layerSamples, stack.bytesPerSample()}) : std::nullopt;
    const auto total = layerBytes ? checkedProduct({*layerBytes, count, fileCount()}) : std::nullopt;
    if (!total || !checkedProduct({*layerBytes, std::int64_t{last} + 1}))
        return fail(QStringLiteral("File read error"));

    std::vector<std::unique_ptr<PositionedFile>> files;
    std::vector<LayerSource> sources;
    for (int channel = 0; channel < fileCount(); ++channel) {
        file(channel).close();
        if (!file(channel).open(QIODevice::ReadOnly))
            return fail(QStringLiteral("error opening file"));
        files.push_back(std::make_unique<PositionedFile>(file(channel)));
        // A step beyond the last layer leads to none, however far it goes.
        sources.push_back({files.back().get(), biorad::kHeaderBytes + first * *layerBytes,
                           std::min(step, last) * *layerBytes});
    }
    const Holdings there = holdings(sources, count, *layerBytes, step == 1);
    if (there.unreadable)
        return fail(QStringLiteral("File read error"));

    releaseStack();
    VoxelBuffer voxels = allocateVoxels(total, "Could not allocate memory for Biorad stack");
    const Stopwatch stopwatch;
    if (!readInterleavedLayers(sources, count, *layerSamples, stack.bytesPerSample(), voxels.data()))
        return fail(QStringLiteral("File read error"));
    for (int channel = 0; channel < fileCount(); ++channel)
        file(channel).close();
    logDebug("made it past gory stuff");
    logMerging(stack.bitDepth);
    logMerged(stopwatch.seconds());
    if (there.anyMissing)
        failForEarlyEnd(there.completeLayers, count);
    setStack(std::move(voxels), stack.fileX, stack.fileY, count);
    // The owner's own record is scaled, so a second read scales it again.
    setSteppedRange(first, last, step);
    logDebug("exit BioradIO::readLayers\n");
    return true;
}

} // namespace tirn
