#include "base/checkedsize.h"
#include "base/log.h"
#include "formats/tiff/stripwriter.h"
#include "formats/tiff/tifftags.h"
#include "formats/vendor/metamorphio.h"
#include "formats/vendor/metamorphlayout.h"

namespace tirn {

namespace {

/// Behind the header, the count of the thirteen entries, the entries and the offset of no next directory.
constexpr int kTables = tiff::kHeaderBytes + 2 + 13 * tiff::kEntryBytes + 4;
/// The pairs, two rationals, the length of the unit and its text.
constexpr std::uint32_t kCalibrationBytes = 49;
constexpr char kUnit[] = "um   ";

/// Where the parts of a file lie that the directory points at.
struct StkPlaces
{
    std::uint32_t planes = 0;
    std::uint32_t calibration = 0;
    std::uint32_t image = 0;
};

DirectoryLayout stkLayout(const ImageAttributes& attributes, const StripShape& shape, std::uint32_t layers,
                          StkPlaces& places)
{
    const auto channels = static_cast<std::uint32_t>(attributes.channels);
    const auto rows = static_cast<std::size_t>(attributes.y);
    const auto depth = static_cast<std::uint32_t>(attributes.bitDepth);
    const bool calibrated = !(attributes.dimX == -1.0 && attributes.dimY == -1.0);
    // The calibrations lie behind all planes, and behind the room of one more that stays empty.
    const std::uint32_t planeBytes = static_cast<std::uint32_t>(metamorph::kPlaneBytes) * (layers + 1);
    const std::uint32_t calibrationBytes = calibrated ? kCalibrationBytes : 0;
    places.image = kTables + (channels == 1 ? 0 : 2 * channels) + 6 * static_cast<std::uint32_t>(rows) + 16 +
                   planeBytes + calibrationBytes;

    DirectoryLayout layout(kTables);
    layout.addNumber(tiff::ImageWidth, static_cast<std::uint32_t>(attributes.x));
    layout.addNumber(tiff::ImageLength, static_cast<std::uint32_t>(attributes.y));
    if (channels == 1)
        layout.addNumber(tiff::BitsPerSample, depth);
    else
        layout.addTable(tiff::BitsPerSample, tiff::Short, std::vector(channels, depth));
    layout.addNumber(tiff::Compression, 1);
    layout.addNumber(tiff::PhotometricInterpretation, channels == 1 ? 1 : 2);
    layout.addTable(tiff::StripOffsets, tiff::Long, shape.rowOffsets(places.image));
    layout.addNumber(tiff::RowsPerStrip, 1);
    layout.addTable(tiff::StripByteCounts, tiff::Short,
                    std::vector(rows, static_cast<std::uint32_t>(shape.rowBytes)));
    layout.addTable(tiff::XResolution, tiff::Rational, {1, 1});
    layout.addTable(tiff::YResolution, tiff::Rational, {1, 1});
    layout.addNumber(tiff::ResolutionUnit, 1);
    places.planes = layout.addRoom(tiff::Uic2, tiff::Rational, layers, planeBytes);
    if (calibrated)
        places.calibration = layout.addRoom(tiff::Uic1, tiff::Long, 3, calibrationBytes);
    else
        layout.add({tiff::Uic1, tiff::Long, 0, 0, {}});
    return layout;
}

void putRational(ByteWriter& head, double value)
{
    const auto [numerator, denominator] = TiffIFDIO::toRational(value);
    head.u32(numerator);
    head.u32(denominator);
}

void putPlanes(ByteWriter& head, const ImageAttributes& attributes, const StkPlaces& places, int layers)
{
    for (int plane = 0; plane < layers; ++plane) {
        head.seek(places.planes + static_cast<std::size_t>(plane * metamorph::kPlaneBytes));
        if (attributes.dimZ > 0)
            putRational(head, attributes.dimZ);
    }
}

void putCalibration(ByteWriter& head, const ImageAttributes& attributes, const StkPlaces& places)
{
    // A size of 0 has room and pairs that point at zeros, but no data.
    if (!(attributes.dimX > 0 && attributes.dimY > 0))
        return;
    const std::uint32_t start = places.calibration;
    head.seek(start);
    const std::uint32_t pairs[] = {metamorph::kXCalibration,     start + 24,
                                   metamorph::kYCalibration,     start + 32,
                                   metamorph::kCalibrationUnits, start + 40};
    for (const std::uint32_t number : pairs)
        head.u32(number);
    putRational(head, attributes.dimX);
    putRational(head, attributes.dimY);
    head.u32(sizeof kUnit - 1);
    for (const char* character = kUnit; *character != '\0'; ++character)
        head.u8(static_cast<std::uint8_t>(*character));
}

} // namespace

QStringList MetaMorphIO::write(const QStringList& names, const ImageAttributes& attributes,
                               const std::uint8_t* data, int first, int last, int step, bool overwrite)
{
    logDebug("enter MetaMorphIO::write()");
    const QString name = names.value(0);
    QStringList failures = writeRefusal({name, first, last, step, overwrite}, attributes, data);
    if (!failures.isEmpty())
        return failures;
    // More bits than the words of the stack have are not there to be written.
    if (attributes.bitDepth > 16)
        return {QString::asprintf("%d bits per sample not supported", attributes.bitDepth)};

    const int layers = layerCount(first, last, step);
    // Packed, whatever is in the buffer: twelve bits make a row of one byte and a half a sample.
    const auto rowBits = checkedProduct({attributes.x, attributes.bitDepth});
    const StripShape shape =
        stripShape(attributes, rowBits ? checkedProduct({*rowBits / 8, attributes.channels}) : rowBits);
    // Tables of at most 65535 rows and 2^27 planes keep all offsets within 32 bits.
    constexpr int mostLayers = 1 << 27;
    if (!shape.valid || layers > mostLayers)
        return {QStringLiteral("Too large for a TIFF file")};
    StkPlaces places;
    const DirectoryLayout layout = stkLayout(attributes, shape, static_cast<std::uint32_t>(layers), places);
    const WrittenLayers written =
        step == 1 ? WrittenLayers{0, 1, attributes.z} : WrittenLayers{first, step, layers};
    if (!shape.fits(places.image, written.count))
        return {QStringLiteral("Too large for a TIFF file")};

    ByteWriter head;
    head.reserveUpTo(places.image);
    head.u16(tiff::kLittleEndianMark);
    head.u16(tiff::kMagic);
    head.u32(tiff::kHeaderBytes);
    layout.write(head);
    head.u32(0);
    putPlanes(head, attributes, places, layers);
    putCalibration(head, attributes, places);
    failures = writeStripFile(name, head, data, shape.layerBytes, written);
    logDebug("exit MetaMorphIO::write()");
    return failures;
}

} // namespace tirn
