#include "formats/stripwriter.h"

#include <algorithm>
#include <climits>

#include "base/checkedsize.h"
#include "base/log.h"
#include "formats/outputfile.h"
#include "formats/tiffifdio.h"

namespace tirn {

namespace {
constexpr int kLargestShort = 65535;
constexpr double kMicronsPerCentimetre = 10000.0;
} // namespace

int layerCount(int first, int last, int step)
{
    return step < 1 || last < first ? 0 : (last - first + 1) / step;
}

StripShape stripShape(const ImageAttributes& attributes, int bytesPerSample)
{
    StripShape shape;
    const auto row = checkedProduct({attributes.x, attributes.channels, bytesPerSample});
    const auto layer = row ? checkedProduct({*row, attributes.y}) : std::nullopt;
    if (!layer || *layer < 1)
        return shape;
    shape.rowBytes = *row;
    shape.layerBytes = *layer;
    shape.valid = attributes.x <= kLargestShort && attributes.y <= kLargestShort && *row <= kLargestShort;
    return shape;
}

bool StripShape::fits(std::int64_t start, int layers) const
{
    const auto image = checkedProduct({layerBytes, layers});
    return valid && image && *image <= std::int64_t{UINT_MAX} - start;
}

std::vector<std::uint32_t> pixelsPerCentimetre(double microns)
{
    const auto [numerator, denominator] = TiffIFDIO::toRational(microns / kMicronsPerCentimetre);
    return {denominator, numerator};
}

QStringList writeHeadAndLayers(const QString& name, const ByteWriter& head, const std::uint8_t* data,
                               std::int64_t layerBytes, const WrittenLayers& layers)
{
    OutputFile file(name);
    if (name.isEmpty() || !file.open())
        return {QStringLiteral("Unable to open file for writing")};
    bool done = file.write(head.bytes().data(), static_cast<std::int64_t>(head.bytes().size()));
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

} // namespace tirn
