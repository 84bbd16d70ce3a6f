#include "formats/tiff/stripwriter.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <numeric>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/outputfile.h"
#include "formats/tiff/tiffifdio.h"

namespace tirn {

namespace {
constexpr int kLargestShort = 65535;
constexpr double kMicronsPerCentimetre = 10000.0;

/// A positive number as a fraction of two numbers of 32 bits, to three decimals where there is room for them.
std::vector<std::uint32_t> wideFraction(double value)
{
    constexpr double most = UINT_MAX;
    if (value < 1)
        return {1, static_cast<std::uint32_t>(std::min(std::round(1 / value), most))};
    const double scale = std::clamp(std::floor(most / value), 1.0, 1000.0);
    const auto numerator = static_cast<std::uint32_t>(std::min(std::round(value * scale), most));
    const auto denominator = static_cast<std::uint32_t>(scale);
    const std::uint32_t common = std::gcd(numerator, denominator);
    return {numerator / common, denominator / common};
}

} // namespace

QStringList writeRefusal(const WriteRequest& request, const ImageAttributes& attributes,
                         const std::uint8_t* data)
{
    const bool inside = request.first >= 0 && request.first < attributes.z && request.last < attributes.z;
    if (!inside || layerCount(request.first, request.last, request.step) < 1 || data == nullptr)
        return {QStringLiteral("Trying to write outside of stack")};
    if (!request.overwrite && ImageIO::exists(request.name))
        return {QLatin1String("File ") + request.name + QLatin1String(" exists")};
    log(LogLevel::Debug, QLatin1String("filename: ") + request.name);
    return {};
}

StripShape stripShape(const ImageAttributes& attributes, std::optional<std::int64_t> rowBytes)
{
    StripShape shape;
    const auto layer = rowBytes ? checkedProduct({*rowBytes, attributes.y}) : std::nullopt;
    if (!layer || *layer < 1)
        return shape;
    shape.rowBytes = *rowBytes;
    shape.layerBytes = *layer;
    shape.valid =
        attributes.x <= kLargestShort && attributes.y <= kLargestShort && *rowBytes <= kLargestShort;
    return shape;
}

bool StripShape::fits(std::int64_t start, int layers) const
{
    const auto image = checkedProduct({layerBytes, layers});
    return valid && image && *image <= std::int64_t{UINT_MAX} - start;
}

std::vector<std::uint32_t> StripShape::rowOffsets(std::int64_t start) const
{
    std::vector<std::uint32_t> offsets;
    for (std::int64_t place = 0; place < layerBytes; place += rowBytes)
        offsets.push_back(static_cast<std::uint32_t>(start + place));
    return offsets;
}

void DirectoryLayout::addNumber(tiff::Tag tag, std::uint32_t value)
{
    m_entries.push_back({tag, tiff::Short, 1, value, {value}});
}

void DirectoryLayout::addTable(tiff::Tag tag, tiff::FieldType type, std::vector<std::uint32_t> values)
{
    const auto count = static_cast<std::uint32_t>(values.size() / (type == tiff::Rational ? 2 : 1));
    m_entries.push_back({tag, type, count, m_end, std::move(values)});
    m_end += count * static_cast<std::uint32_t>(fieldTypeSize(type));
}

std::uint32_t DirectoryLayout::addRoom(tiff::Tag tag, tiff::FieldType type, std::uint32_t count,
                                       std::uint32_t bytes)
{
    const std::uint32_t offset = m_end;
    m_entries.push_back({tag, type, count, offset, {}});
    m_end += bytes;
    return offset;
}

void DirectoryLayout::write(ByteWriter& head) const
{
    head.u16(static_cast<std::uint16_t>(m_entries.size()));
    for (const IFDEntry& entry : m_entries)
        writeEntry(head, entry);
}

std::vector<std::uint32_t> pixelsPerCentimetre(double microns)
{
    const auto [numerator, denominator] = TiffIFDIO::toRational(microns / kMicronsPerCentimetre);
    // Voxels below 0.153 microns are more pixels per centimetre than 16 bits count, and huge ones are none.
    if (numerator == 0 || denominator == 0)
        return wideFraction(kMicronsPerCentimetre / microns);
    return {denominator, numerator};
}

QStringList writeHeadAndLayers(const QString& name, const ByteWriter& head, const std::uint8_t* data,
                               std::int64_t layerBytes, const WrittenLayers& layers)
{
    OutputFile file(name);
    if (name.isEmpty() || !file.open())
        return {QStringLiteral("Unable to open file for writing")};
    bool done = file.write(head.bytes().data(), static_cast<std::int64_t>(head.bytes().size()));
    if (!file.seek(static_cast<std::int64_t>(head.bytes().size())))
        return {QStringLiteral("failed at")};
    const std::uint8_t* source = data + layers.first * layerBytes;
    if (layers.step == 1) {
        done = done && file.write(source, layerBytes * layers.count);
    } else {
        for (int k = 0; k < layers.count && done; ++k)
            done = file.write(source + k * layers.step * layerBytes, layerBytes);
    }
    if (!done || !file.commit())
        return {QStringLiteral("failed write")};
    logDebug("stack written");
    return {};
}

QStringList writeStripFile(const QString& name, const ByteWriter& head, const std::uint8_t* data,
                           std::int64_t layerBytes, const WrittenLayers& layers)
{
    logDebug("ImageSize: %lld", static_cast<long long>(layerBytes * layers.count));
    logDebug("Image about to be written at: %lld", static_cast<long long>(head.bytes().size()));
    return writeHeadAndLayers(name, head, data, layerBytes, layers);
}

} // namespace tirn
