#include "formats/tiff/mtiffio.h"

#include "base/checkedsize.h"
#include "base/log.h"
#include "formats/tiff/stripwriter.h"
#include "formats/tiff/tifftags.h"

namespace tirn {

namespace {

/// The count of its twelve entries, the entries and the offset of the next directory.
constexpr int kDirectoryBytes = 12 * tiff::kEntryBytes + 6;

/// The bytes that the directory of a page takes, with its tables right behind it.
std::int64_t pageBytes(const ImageAttributes& attributes)
{
    const std::int64_t depths = attributes.channels > 2 ? 2 * std::int64_t{attributes.channels} : 0;
    return kDirectoryBytes + depths + 6 * std::int64_t{attributes.y} + 16;
}

std::vector<std::uint32_t> resolution(double microns)
{
    if (!(microns > 0))
        return {1, 1};
    return pixelsPerCentimetre(microns);
}

/// The directory of a page at `offset`, whose rows begin at `firstRow`.
DirectoryLayout pageLayout(const ImageAttributes& attributes, const StripShape& shape, std::int64_t offset,
                           std::int64_t firstRow)
{
    DirectoryLayout page(offset + kDirectoryBytes);
    const auto channels = static_cast<std::uint32_t>(attributes.channels);
    const auto rows = static_cast<std::size_t>(attributes.y);
    const std::uint32_t depth = attributes.bitDepth > 8 ? 16 : 8;
    page.addNumber(tiff::ImageWidth, static_cast<std::uint32_t>(attributes.x));
    page.addNumber(tiff::ImageLength, static_cast<std::uint32_t>(attributes.y));
    // Up to two depths stand in the entry itself.
    if (channels <= 2)
        page.add({tiff::BitsPerSample, tiff::Short, channels, 0, std::vector(channels, depth)});
    else
        page.addTable(tiff::BitsPerSample, tiff::Short, std::vector(channels, depth));
    page.addNumber(tiff::Compression, 1);
    page.addNumber(tiff::PhotometricInterpretation, channels == 1 ? 1 : 2);
    page.addTable(tiff::StripOffsets, tiff::Long, shape.rowOffsets(firstRow));
    page.addNumber(tiff::SamplesPerPixel, channels);
    page.addNumber(tiff::RowsPerStrip, 1);
    page.addTable(tiff::StripByteCounts, tiff::Short,
                  std::vector(rows, static_cast<std::uint32_t>(shape.rowBytes)));
    page.addTable(tiff::XResolution, tiff::Rational, resolution(attributes.dimX));
    page.addTable(tiff::YResolution, tiff::Rational, resolution(attributes.dimY));
    page.addNumber(tiff::ResolutionUnit, 3);
    return page;
}

} // namespace

QStringList MTiffIO::write(const QStringList& names, const ImageAttributes& attributes,
                           const std::uint8_t* data, int first, int last, int step, bool overwrite)
{
    logDebug("enter MTiffIO::write()");
    const QString name = names.value(0);
    QStringList refusal = writeRefusal({name, first, last, step, overwrite}, attributes, data);
    if (!refusal.isEmpty())
        return refusal;
    const int layers = layerCount(first, last, step);
    const StripShape shape = stripShape(
        attributes, checkedProduct({attributes.x, attributes.channels, attributes.bytesPerSample()}));
    const std::int64_t imageStart = tiff::kHeaderBytes + layers * pageBytes(attributes);
    if (!shape.fits(imageStart, layers))
        return {QStringLiteral("Too large for a TIFF file")};

    ByteWriter head;
    head.reserveUpTo(static_cast<std::size_t>(imageStart));
    head.u16(tiff::kLittleEndianMark);
    head.u16(tiff::kMagic);
    for (int layer = 0; layer < layers; ++layer) {
        const std::int64_t directory = tiff::kHeaderBytes + layer * pageBytes(attributes);
        head.u32(static_cast<std::uint32_t>(directory));
        head.seek(static_cast<std::size_t>(directory));
        pageLayout(attributes, shape, directory, imageStart + layer * shape.layerBytes).write(head);
    }
    head.u32(0);
    return writeStripFile(name, head, data, shape.layerBytes, {first, step, layers});
}

} // namespace tirn
