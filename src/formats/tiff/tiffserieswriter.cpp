#include <algorithm>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/outputfile.h"
#include "formats/names/fileending.h"
#include "formats/tiff/stripwriter.h"
#include "formats/tiff/tiffseriesio.h"
#include "formats/tiff/tifftags.h"

namespace tirn {

namespace {

constexpr std::int64_t kStripBytes = 65536;
constexpr const char* kEnding = ".tif";

/// How a layer is cut into strips, and where its tables lie.
struct SeriesLayout
{
    std::uint32_t rowSize = 0;
    std::uint32_t rowsPerStrip = 0;
    std::uint32_t strips = 0;
    std::uint32_t leftover = 0;
    std::uint32_t entries = 0;
    std::uint32_t resolutions = 0;
    std::uint32_t depths = 0;
    std::uint32_t byteCounts = 0;
    std::uint32_t offsets = 0;
    std::uint32_t image = 0;
};

SeriesLayout seriesLayout(const ImageAttributes& attributes)
{
    SeriesLayout layout;
    const auto y = static_cast<std::uint32_t>(attributes.y);
    const auto channels = static_cast<std::uint32_t>(attributes.channels);
    layout.rowSize = static_cast<std::uint32_t>(attributes.x) * channels *
                     static_cast<std::uint32_t>(attributes.bitDepth / 8);
    layout.rowsPerStrip = std::min(y, static_cast<std::uint32_t>(kStripBytes) / layout.rowSize);
    layout.strips = (y + layout.rowsPerStrip - 1) / layout.rowsPerStrip;
    layout.leftover = y % layout.rowsPerStrip;
    logDebug("rowSize %u", layout.rowSize);
    logDebug(" rowsperstrip %u", layout.rowsPerStrip);
    logDebug(" strips %u", layout.strips);
    logDebug(" leftover %u", layout.leftover);

    layout.entries = channels == 1 ? 11 : 12;
    layout.resolutions = layout.entries * tiff::kEntryBytes + 14;
    layout.depths = layout.resolutions + 16;
    layout.byteCounts = layout.depths + (channels > 1 ? 2 * channels : 0);
    const std::uint32_t table = layout.strips > 1 ? 4 * layout.strips : 0;
    layout.offsets = layout.byteCounts + table;
    layout.image = layout.offsets + table;
    return layout;
}

void putEntry(ByteWriter& head, tiff::Tag tag, tiff::FieldType type, std::uint32_t count, std::uint32_t value)
{
    // Values of several depths always stand behind the directory, also where two would fit into the field.
    writeEntry(head, {tag, type, count, value, {}});
}

void putEntries(ByteWriter& head, const ImageAttributes& attributes, const SeriesLayout& layout)
{
    const auto channels = static_cast<std::uint32_t>(attributes.channels);
    const bool several = channels > 1;
    const bool oneStrip = layout.strips == 1;
    const bool sized = attributes.dimX > 0 && attributes.dimY > 0;
    putEntry(head, tiff::ImageWidth, tiff::Long, 1, static_cast<std::uint32_t>(attributes.x));
    putEntry(head, tiff::ImageLength, tiff::Long, 1, static_cast<std::uint32_t>(attributes.y));
    putEntry(head, tiff::BitsPerSample, tiff::Short, channels,
             several ? layout.depths : static_cast<std::uint32_t>(attributes.bitDepth));
    putEntry(head, tiff::Compression, tiff::Short, 1, 1);
    putEntry(head, tiff::PhotometricInterpretation, tiff::Short, 1, several ? 2 : 1);
    putEntry(head, tiff::StripOffsets, tiff::Long, layout.strips, oneStrip ? layout.image : layout.offsets);
    if (several)
        putEntry(head, tiff::SamplesPerPixel, tiff::Short, 1, channels);
    putEntry(head, tiff::RowsPerStrip, tiff::Long, 1, layout.rowsPerStrip);
    putEntry(head, tiff::StripByteCounts, tiff::Long, layout.strips,
             oneStrip ? layout.rowsPerStrip * layout.rowSize : layout.byteCounts);
    putEntry(head, tiff::XResolution, tiff::Rational, 1, layout.resolutions);
    putEntry(head, tiff::YResolution, tiff::Rational, 1, layout.resolutions + 8);
    putEntry(head, tiff::ResolutionUnit, tiff::Short, 1, sized ? 3 : 2);
}

void putResolution(ByteWriter& head, double microns)
{
    const std::vector<std::uint32_t> unknown = {300, 1};
    for (const std::uint32_t number : microns > 0 ? pixelsPerCentimetre(microns) : unknown)
        head.u32(number);
}

/// The header, the directory and its tables.
ByteWriter seriesHead(const ImageAttributes& attributes, const SeriesLayout& layout)
{
    ByteWriter head;
    head.u16(tiff::kLittleEndianMark);
    head.u16(tiff::kMagic);
    head.u32(tiff::kHeaderBytes);
    logDebug("currently at %d", static_cast<int>(head.position()));
    head.u16(static_cast<std::uint16_t>(layout.entries));
    putEntries(head, attributes, layout);
    head.u32(0);
    putResolution(head, attributes.dimX);
    putResolution(head, attributes.dimY);
    for (int c = 0; c < attributes.channels && attributes.channels > 1; ++c)
        head.u16(static_cast<std::uint16_t>(attributes.bitDepth));
    if (layout.strips > 1) {
        const std::uint32_t full = layout.rowsPerStrip * layout.rowSize;
        for (std::uint32_t i = 0; i < layout.strips; ++i) {
            const bool shorter = i + 1 == layout.strips && layout.leftover != 0;
            logDebug("writing sbc %u", i);
            head.u32(shorter ? layout.leftover * layout.rowSize : full);
        }
        for (std::uint32_t i = 0; i < layout.strips; ++i)
            head.u32(layout.image + i * full);
    }
    logDebug("currently at %d", static_cast<int>(head.position()));
    return head;
}

/// Why a stack cannot be written; empty when it can.
QString refusal(const ImageAttributes& attributes)
{
    if (std::min({attributes.x, attributes.y, attributes.channels}) < 1 || attributes.bitDepth < 8)
        return QStringLiteral("No image to write");
    // More bits than the words of the stack have are not there to be written.
    if (attributes.bitDepth > 16)
        return QString::asprintf("%d bits per sample not supported", attributes.bitDepth);
    const auto row = checkedProduct({attributes.x, attributes.channels, attributes.bitDepth / 8});
    // No strip could hold a row.
    if (!row || *row > kStripBytes)
        return QStringLiteral("A row of more than 64 KB does not fit a strip of a TIFF file");
    const auto layer = checkedProduct({*row, attributes.y});
    if (!layer || *layer > INT32_MAX)
        return QStringLiteral("Too large for a TIFF file");
    return {};
}

} // namespace

QStringList TiffSeriesIO::writtenFiles(const QString& name, int layers)
{
    if (layers == 1)
        return {withEnding(name, kEnding)};
    return numberedFiles(name, kEnding, 'z', 4, layers);
}

QStringList TiffSeriesIO::write(const QStringList& names, const ImageAttributes& attributes,
                                const std::uint8_t* data, int first, int last, int step, bool overwrite)
{
    logDebug("Here ");
    if (names.isEmpty()) {
        logDebug("No filenames provided");
        return {};
    }
    const int layers = layerCount(first, last, step);
    if (layers < 1) {
        logDebug("No files to write");
        return {};
    }
    if (names.size() > 1 && names.size() < layers) {
        logDebug("We have %d names, we need %d", static_cast<int>(names.size()), layers);
        return {};
    }
    QStringList targets = names.size() > 1 || layers < 2 ? names : writtenFiles(names.first(), layers);
    // Only the first name is looked at, as it was given and as it will be.
    const QString given = targets.first();
    targets.first() = withEnding(given, kEnding);
    if (!overwrite && (exists(given) || exists(targets.first())))
        return {QLatin1String("File ") + given + QLatin1String(" exists")};
    const QString reason = data == nullptr || first < 0 || first + (layers - 1) * step >= attributes.z
                               ? QStringLiteral("No image to write")
                               : refusal(attributes);
    if (!reason.isEmpty())
        return {reason};

    const SeriesLayout layout = seriesLayout(attributes);
    const ByteWriter head = seriesHead(attributes, layout);
    const std::int64_t layerBytes = std::int64_t{layout.rowSize} * attributes.y;
    for (int layer = 0; layer < layers; ++layer) {
        const QString& name = targets.at(layer);
        log(LogLevel::Debug, QLatin1String("about to write ") + name);
        if (!writeHeadAndLayers(name, head, data, layerBytes, {first + layer * step, 1, 1}).isEmpty()) {
            log(LogLevel::Debug, QLatin1String("Couldn't open ") + name + QLatin1String(" for writing"));
            return {};
        }
    }
    return {};
}

} // namespace tirn
