#include "formats/tiff/tiffifdio.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "base/log.h"
#include "formats/tiff/tiffdirectory.h"
#include "formats/tiff/tifftags.h"
#include "image/imagefile.h"
#include "image/interleave.h"

namespace tirn {

namespace {

struct CompressionText
{
    std::uint32_t value;
    const char* text;
};

constexpr CompressionText kCompressionTexts[] = {
    {2, "CCIT_SUPPORT 2 compression is not supported"},
    {3, "CCIT_SUPPORT 3 compression is not supported"},
    {4, "CCIT_SUPPORT 32771 compression is not supported"},
    {5, "LZW compression is not supported"},
    {6, "Obsolete jpeg compression is not supported"},
    {7, "Jpeg compression is not supported"},
    {32766, "NEXT compression is not supported"},
    {32773, "PACKBITS compression is not supported"},
    {32809, "THUNDER compression is not supported"},
    {32909, "Pixar's compression is not supported"},
    {32946, "Zip compression is not sopported"},
    {34677, "SGI's compression is not supported"},
};

/// Dates as TIFF writes them, or as ISO does.
QDateTime dateTime(const QString& text)
{
    const QDateTime parsed = QDateTime::fromString(text.trimmed(), QStringLiteral("yyyy:MM:dd hh:mm:ss"));
    return parsed.isValid() ? parsed : QDateTime::fromString(text.trimmed(), Qt::ISODate);
}

} // namespace

TiffIFDIO::TiffIFDIO(ImageFile& owner, const QStringList& names)
    : ImageIO(owner, names), m_stkIFD(static_cast<std::size_t>(names.size()))
{}

QString TiffIFDIO::compressionRefusal(std::uint32_t value)
{
    if (value == 1)
        return {};
    for (const CompressionText& row : kCompressionTexts) {
        if (row.value == value)
            return QLatin1String(row.text);
    }
    return QString::asprintf("Unknown compress %u is not supported", value);
}

bool TiffIFDIO::compressionSupported(std::uint32_t value)
{
    const QString refusal = compressionRefusal(value);
    if (!refusal.isEmpty())
        return fail(refusal);
    logDebug("NO_COMPRESSION compression is supported");
    return true;
}

bool TiffIFDIO::fillEntry(WindowedFile& file, IFDEntry& entry) const
{
    if (entry.count == 1)
        return false;
    if (entry.fieldType < tiff::Byte || entry.fieldType > tiff::Rational) {
        logDebug("Weird field type %u", entry.fieldType);
        return false;
    }
    // Values that fit are in the field already: there is no offset to follow.
    if (isInline(entry))
        return true;
    if (entry.valueOffset > file.size()) {
        logDebug("about fillEntry unable to reposition\n");
        return false;
    }
    const std::int64_t bytes = std::int64_t{entry.count} * fieldTypeSize(entry.fieldType);
    ByteReader reader(file.at(entry.valueOffset, bytes), order());
    if (static_cast<std::int64_t>(reader.size()) < bytes) {
        logDebug("abort fillEntry unable to read\n");
        return false;
    }
    entry.values = decodeValues(reader, entry.fieldType, entry.count);
    return true;
}

std::uint16_t TiffIFDIO::getShort(const std::byte* bytes) const
{
    return ByteReader(bytes, 2, order()).u16();
}

std::uint32_t TiffIFDIO::getLong(const std::byte* bytes) const { return ByteReader(bytes, 4, order()).u32(); }

double TiffIFDIO::getRational(const std::byte* bytes) const
{
    const std::uint32_t denominator = getLong(bytes + 4);
    return denominator == 0 ? 0 : getLong(bytes) / denominator;
}

void TiffIFDIO::printIFD(int level) const
{
    for (std::size_t i = 0; i < m_stkIFD.size(); ++i) {
        logDebug("%s ifd size %d", fileNames().value(static_cast<int>(i)).toUtf8().constData(),
                 static_cast<int>(m_stkIFD[i].size()));
        if (level <= 0)
            continue;
        logDebug("Printing contents of IFD");
        for (const IFD& page : m_stkIFD[i]) {
            for (const IFDEntry& entry : page)
                log(LogLevel::Debug, tagText(entry));
        }
    }
}

std::pair<std::uint32_t, std::uint32_t> TiffIFDIO::toRational(double value)
{
    constexpr double closeEnough = 1e-06;
    constexpr double largest = 65535;
    logDebug("ratio for %g", value);
    double numerator = 1;
    double numeratorBefore = 0;
    double denominator = 0;
    double denominatorBefore = 1;
    for (;;) {
        const double whole = std::trunc(value);
        const double nextNumerator = whole * numerator + numeratorBefore;
        const double nextDenominator = whole * denominator + denominatorBefore;
        // Written so that what is not a number stops, too.
        if (!(nextNumerator >= 0 && nextNumerator <= largest && nextDenominator <= largest))
            break;
        numeratorBefore = numerator;
        denominatorBefore = denominator;
        numerator = nextNumerator;
        denominator = nextDenominator;
        if (std::abs(value - whole) <= closeEnough)
            break;
        value = 1 / (value - whole);
    }
    logDebug(" is %g/%g", numerator, denominator);
    return {static_cast<std::uint32_t>(numerator), static_cast<std::uint32_t>(denominator)};
}

bool TiffIFDIO::failForDirectories()
{
    return fail(QStringLiteral("More than %1 directories").arg(kMostDirectories));
}

bool TiffIFDIO::depthSupported()
{
    const int bits = attributes().bitDepth;
    return (bits >= 8 && bits <= 16) || failForDepth();
}

bool TiffIFDIO::hasStrips(const IFD& page)
{
    if (page.find(tiff::TileWidth) != nullptr || page.find(tiff::TileOffsets) != nullptr)
        return fail(QStringLiteral("Tiled images are not supported"));
    if (!page.value(tiff::StripOffsets))
        return fail(QStringLiteral("No strips in the image"));
    return true;
}

bool TiffIFDIO::isPlanar(const IFD& page, int channels)
{
    constexpr std::uint32_t planar = 2;
    return channels > 1 && page.value(tiff::PlanarConfiguration) == planar;
}

bool TiffIFDIO::hasLayerStrips(const IFD& page)
{
    if (!hasStrips(page))
        return false;
    const int channels = attributes().channels;
    if (isPlanar(page, channels) &&
        page.find(tiff::StripOffsets)->values.size() % static_cast<std::size_t>(channels) != 0)
        return fail(QStringLiteral("The strips of the image do not fit its channels"));
    return true;
}

void TiffIFDIO::appendStrips(const IFD& page, std::int64_t layerBytes, int channels, SegmentPlan& plan)
{
    const IFDEntry* offsets = page.find(tiff::StripOffsets);
    const IFDEntry* counts = page.find(tiff::StripByteCounts);
    if (offsets == nullptr)
        return;
    const int planes = isPlanar(page, channels) ? channels : 1;
    const std::size_t stripsPerPlane = offsets->values.size() / static_cast<std::size_t>(planes);
    const std::int64_t planeBytes = layerBytes / planes;
    const std::int64_t start = plan.place();
    std::int64_t bytes = planeBytes;
    for (std::size_t i = 0; i < offsets->values.size(); ++i) {
        if (counts != nullptr && i < counts->values.size())
            bytes = counts->values[i];
        if (planes == 1) {
            plan.append(offsets->values[i], bytes);
            continue;
        }
        const std::int64_t plane = static_cast<std::int64_t>(i / stripsPerPlane);
        if (i % stripsPerPlane == 0)
            plan.moveTo(start + plane * planeBytes);
        // A strip that is longer than its plane must not reach into the next one.
        plan.append(offsets->values[i], std::min(bytes, start + (plane + 1) * planeBytes - plan.place()));
    }
}

void TiffIFDIO::interleavePlanes(const IFD& page, std::byte* layer, std::int64_t layerBytes) const
{
    const ImageAttributes& stack = owner().attributes();
    if (!isPlanar(page, stack.channels))
        return;
    VoxelBuffer planes(layerBytes);
    std::memcpy(planes.data(), layer, static_cast<std::size_t>(layerBytes));
    const std::int64_t planeBytes = layerBytes / stack.channels;
    std::vector<const std::byte*> parts;
    for (int c = 0; c < stack.channels; ++c)
        parts.push_back(planes.data() + c * planeBytes);
    interleave(parts, planeBytes / stack.bytesPerSample(), stack.bytesPerSample(), layer);
}

bool TiffIFDIO::earlyEnd(std::int64_t held, std::int64_t wanted, int completeLayers, int layers)
{
    const int bits = attributes().bitDepth;
    if (bits > 8 && bits < 16)
        return failForDepth();
    failForEarlyEnd(completeLayers, layers);
    return isJustified(wanted, held);
}

int TiffIFDIO::toSize(std::uint32_t value) { return value <= INT_MAX ? static_cast<int>(value) : -1; }

void TiffIFDIO::takeMaximumAndTime(const IFD& page, ImageAttributes& record)
{
    // Taken as it stands, also where the samples cannot reach it.
    if (const auto maximum = page.value(tiff::MaxSampleValue))
        record.maxValue = toSize(*maximum);
    if (const IFDEntry* time = page.find(tiff::DateTime)) {
        record.timestamp = dateTime(asciiText(*time));
        logDebug("date %s", asciiText(*time).toUtf8().constData());
    }
}

} // namespace tirn
