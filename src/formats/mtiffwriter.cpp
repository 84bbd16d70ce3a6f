#include "formats/mtiffio.h"

#include "base/log.h"
#include "formats/outputfile.h"
#include "formats/stripwriter.h"
#include "formats/tifftags.h"

namespace tirn {

namespace {

constexpr int kEntries = 12;

/// What tag 258 states of a byte stack with one channel, or of any with two: no depth at all. Readers that
/// want one take it from elsewhere or refuse.
constexpr std::uint32_t kNoDepth = 0;

/// Lays out the directory of one page, its tables right behind it, and gives it the offsets of its rows.
class PageLayout
{
public:
    PageLayout(const ImageAttributes& attributes, std::uint32_t rowBytes)
        : m_attributes(attributes), m_rowBytes(rowBytes)
    {}

    /// The bytes that a directory with its tables takes.
    std::int64_t bytes() const
    {
        const std::int64_t depths = m_attributes.channels > 2 ? 2 * std::int64_t{m_attributes.channels} : 0;
        return kEntries * tiff::kEntryBytes + 6 + depths + 6 * std::int64_t{m_attributes.y} + 16;
    }

    std::vector<IFDEntry> entries(std::uint32_t directoryOffset, std::int64_t firstRow) const
    {
        std::uint32_t running = directoryOffset + kEntries * tiff::kEntryBytes + 6;
        const auto table = [&](tiff::Tag tag, tiff::FieldType type, std::vector<std::uint32_t> values) {
            const auto count = static_cast<std::uint32_t>(values.size() / (type == tiff::Rational ? 2 : 1));
            IFDEntry entry = {tag, type, count, running, std::move(values)};
            running += count * static_cast<std::uint32_t>(fieldTypeSize(type));
            return entry;
        };
        const auto channels = static_cast<std::uint32_t>(m_attributes.channels);
        const auto rows = static_cast<std::size_t>(m_attributes.y);
        std::vector<IFDEntry> all;
        all.push_back(number(tiff::ImageWidth, static_cast<std::uint32_t>(m_attributes.x)));
        all.push_back(number(tiff::ImageLength, static_cast<std::uint32_t>(m_attributes.y)));
        const std::uint32_t depth = m_attributes.bitDepth > 8 ? 16 : kNoDepth;
        if (channels == 1)
            all.push_back(number(tiff::BitsPerSample, depth));
        else if (channels == 2)
            all.push_back({tiff::BitsPerSample, tiff::Short, channels, kNoDepth, {}});
        else
            all.push_back(table(tiff::BitsPerSample, tiff::Short, std::vector(channels, depth)));
        all.push_back(number(tiff::Compression, 1));
        all.push_back(number(tiff::PhotometricInterpretation, channels == 1 ? 1 : 2));
        std::vector<std::uint32_t> offsets;
        for (std::size_t row = 0; row < rows; ++row)
            offsets.push_back(
                static_cast<std::uint32_t>(firstRow + static_cast<std::int64_t>(row) * m_rowBytes));
        all.push_back(table(tiff::StripOffsets, tiff::Long, std::move(offsets)));
        all.push_back(number(tiff::SamplesPerPixel, channels));
        all.push_back(number(tiff::RowsPerStrip, 1));
        all.push_back(table(tiff::StripByteCounts, tiff::Short, std::vector(rows, m_rowBytes)));
        all.push_back(table(tiff::XResolution, tiff::Rational, resolution(m_attributes.dimX)));
        all.push_back(table(tiff::YResolution, tiff::Rational, resolution(m_attributes.dimY)));
        all.push_back(number(tiff::ResolutionUnit, 3));
        return all;
    }

private:
    static IFDEntry number(tiff::Tag tag, std::uint32_t value)
    {
        return {tag, tiff::Short, 1, value, {value}};
    }
    static std::vector<std::uint32_t> resolution(double microns)
    {
        if (!(microns > 0))
            return {1, 1};
        return pixelsPerCentimetre(microns);
    }

    const ImageAttributes& m_attributes;
    std::uint32_t m_rowBytes;
};

} // namespace

QStringList MTiffIO::write(const QStringList& names, const ImageAttributes& attributes,
                           const std::uint8_t* data, int first, int last, int step, bool overwrite)
{
    logDebug("enter MTiffIO::write()");
    const int layers = layerCount(first, last, step);
    if (first < 0 || first >= attributes.z || last >= attributes.z || layers < 1 || data == nullptr)
        return {QStringLiteral("Trying to write outside of stack")};
    const QString name = names.value(0);
    if (!overwrite && exists(name))
        return {QLatin1String("File ") + name + QLatin1String(" exists")};
    log(LogLevel::Debug, QLatin1String("filename: ") + name);

    const StripShape shape = stripShape(attributes, attributes.bytesPerSample());
    const PageLayout layout(attributes, static_cast<std::uint32_t>(shape.rowBytes));
    const std::int64_t imageStart = tiff::kHeaderBytes + layers * layout.bytes();
    if (!shape.fits(imageStart, layers))
        return {QStringLiteral("Too large for a TIFF file")};

    ByteWriter head;
    head.reserveUpTo(static_cast<std::size_t>(imageStart));
    head.u16(tiff::kLittleEndianMark);
    head.u16(tiff::kMagic);
    for (int layer = 0; layer < layers; ++layer) {
        const auto directory = static_cast<std::uint32_t>(tiff::kHeaderBytes + layer * layout.bytes());
        head.u32(directory);
        head.seek(directory);
        head.u16(kEntries);
        for (const IFDEntry& entry : layout.entries(directory, imageStart + layer * shape.layerBytes))
            writeEntry(head, entry);
    }
    head.u32(0);
    const long long imageBytes = layers * shape.layerBytes;
    logDebug("ImageSize: %lld", imageBytes);
    logDebug("Image about to be written at: %lld", static_cast<long long>(imageStart));
    return writeHeadAndLayers(name, head, data, shape.layerBytes, {first, step, layers});
}

} // namespace tirn
