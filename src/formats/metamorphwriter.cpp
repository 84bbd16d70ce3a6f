#include "base/log.h"
#include "formats/metamorphio.h"
#include "formats/metamorphlayout.h"
#include "formats/outputfile.h"
#include "formats/stripwriter.h"
#include "formats/tifftags.h"

namespace tirn {

namespace {

constexpr int kEntries = 13;
/// The pairs, two rationals, the length of the unit and its text.
constexpr std::uint32_t kCalibrationBytes = 49;
constexpr char kUnit[] = "um   ";

/// Lays out the directory and its tables: the entries in order, then what does not fit into them.
class StkLayout
{
public:
    StkLayout(const ImageAttributes& attributes, std::uint32_t rowBytes, std::uint32_t layers)
        : m_running(170)
    {
        const auto channels = static_cast<std::uint32_t>(attributes.channels);
        const auto rows = static_cast<std::size_t>(attributes.y);
        const auto depth = static_cast<std::uint32_t>(attributes.bitDepth);
        add(tiff::ImageWidth, tiff::Short, {static_cast<std::uint32_t>(attributes.x)});
        add(tiff::ImageLength, tiff::Short, {static_cast<std::uint32_t>(attributes.y)});
        add(tiff::BitsPerSample, tiff::Short, std::vector(channels, depth), channels == 1 ? 0 : 2 * channels);
        add(tiff::Compression, tiff::Short, {1});
        add(tiff::PhotometricInterpretation, tiff::Short, {channels == 1 ? 1U : 2U});
        add(tiff::StripOffsets, tiff::Long, std::vector<std::uint32_t>(rows, 0), 4 * attributes.y);
        add(tiff::RowsPerStrip, tiff::Short, {1});
        add(tiff::StripByteCounts, tiff::Short, std::vector(rows, rowBytes), 2 * attributes.y);
        add(tiff::XResolution, tiff::Rational, {1, 1}, 8);
        add(tiff::YResolution, tiff::Rational, {1, 1}, 8);
        add(tiff::ResolutionUnit, tiff::Short, {1});
        planes = m_running;
        entries.push_back({tiff::Uic2, tiff::Rational, layers, planes, {}});
        // The calibrations lie behind all planes, and behind the room of one more that stays empty.
        m_running += static_cast<std::uint32_t>(metamorph::kPlaneBytes) * (layers + 1);
        const bool calibrated = !(attributes.dimX == -1.0 && attributes.dimY == -1.0);
        calibration = calibrated ? m_running : 0;
        entries.push_back({tiff::Uic1, tiff::Long, calibrated ? 3U : 0U, calibration, {}});
        m_running += calibrated ? kCalibrationBytes : 0;
        image = m_running;
        for (IFDEntry& entry : entries) {
            if (entry.tag != tiff::StripOffsets)
                continue;
            for (std::size_t row = 0; row < rows; ++row)
                entry.values[row] = image + static_cast<std::uint32_t>(row) * rowBytes;
        }
    }

    std::vector<IFDEntry> entries;
    std::uint32_t planes = 0;
    std::uint32_t calibration = 0;
    std::uint32_t image = 0;

private:
    void add(tiff::Tag tag, tiff::FieldType type, std::vector<std::uint32_t> values,
             std::uint32_t tableBytes = 0)
    {
        const auto count = static_cast<std::uint32_t>(values.size() / (type == tiff::Rational ? 2 : 1));
        entries.push_back({tag, type, count, tableBytes > 0 ? m_running : 0, std::move(values)});
        m_running += tableBytes;
    }

    std::uint32_t m_running;
};

void putRational(ByteWriter& head, double value)
{
    const auto [numerator, denominator] = TiffIFDIO::toRational(value);
    head.u32(numerator);
    head.u32(denominator);
}

void putPlanes(ByteWriter& head, const ImageAttributes& attributes, const StkLayout& layout, int layers)
{
    for (int plane = 0; plane < layers; ++plane) {
        head.seek(layout.planes + static_cast<std::size_t>(plane * metamorph::kPlaneBytes));
        if (attributes.dimZ > 0)
            putRational(head, attributes.dimZ);
    }
}

void putCalibration(ByteWriter& head, const ImageAttributes& attributes, const StkLayout& layout)
{
    // A size of 0 has room and pairs that point at zeros, but no data.
    if (!(attributes.dimX > 0 && attributes.dimY > 0))
        return;
    const std::uint32_t start = layout.calibration;
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
    const int layers = layerCount(first, last, step);
    if (first < 0 || first >= attributes.z || last >= attributes.z || layers < 1 || data == nullptr)
        return {QStringLiteral("Trying to write outside of stack")};
    const QString name = names.value(0);
    if (!overwrite && exists(name))
        return {QLatin1String("File ") + name + QLatin1String(" exists")};
    log(LogLevel::Debug, QLatin1String("filename: ") + name);

    const StripShape shape = stripShape(attributes, attributes.bitDepth / 8);
    // Tables of at most 65535 rows and 2^27 planes keep all offsets within 32 bits.
    constexpr int mostLayers = 1 << 27;
    if (!shape.valid || layers > mostLayers)
        return {QStringLiteral("Too large for a TIFF file")};
    const StkLayout layout(attributes, static_cast<std::uint32_t>(shape.rowBytes),
                           static_cast<std::uint32_t>(layers));
    const WrittenLayers written =
        step == 1 ? WrittenLayers{0, 1, attributes.z} : WrittenLayers{first, step, layers};
    if (!shape.fits(layout.image, written.count))
        return {QStringLiteral("Too large for a TIFF file")};

    ByteWriter head;
    head.reserveUpTo(layout.image);
    head.u16(tiff::kLittleEndianMark);
    head.u16(tiff::kMagic);
    head.u32(tiff::kHeaderBytes);
    head.u16(kEntries);
    for (const IFDEntry& entry : layout.entries)
        writeEntry(head, entry);
    head.u32(0);
    putPlanes(head, attributes, layout, layers);
    putCalibration(head, attributes, layout);
    const long long imageBytes = shape.layerBytes * written.count;
    logDebug("ImageSize: %lld", imageBytes);
    logDebug("Image about to be written at: %u", layout.image);
    QStringList failures = writeHeadAndLayers(name, head, data, shape.layerBytes, written);
    logDebug("exit MetaMorphIO::write()");
    return failures;
}

} // namespace tirn
