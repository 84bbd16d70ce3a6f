#include "formats/raw/rawsizes.h"

namespace tirn {

namespace {

std::int64_t layerBytes(const RawImport& import, int bits)
{
    return std::int64_t{import.x} * import.y * import.channels * bits / 8;
}

} // namespace

std::int64_t specifiedRawSize(const RawImport& import)
{
    return std::int64_t{import.x} * import.y * import.channels * import.z * import.bitDepth() / 8 +
           import.offset;
}

QString rawImportProblem(const RawImport& import, const QString& fileName,
                         std::optional<std::int64_t> fileSize)
{
    if (!fileSize)
        return QLatin1String("Could not find ") + fileName;
    if (import.offset > *fileSize)
        return QStringLiteral("The offset is greater than the size of the file.");
    // The position in the list stands for the bits here: 8 bits count nothing, and 16 bits count 8.
    const std::int64_t countedBytes = layerBytes(import, import.depthItem);
    if (countedBytes * import.z + import.offset > *fileSize)
        return QStringLiteral("Given dimensions are greater than the size of the file.");
    if (import.first * countedBytes + import.offset > *fileSize)
        return QStringLiteral("First layer position beyond the end of the file.");
    if (import.last * layerBytes(import, import.bitDepth()) + import.offset > *fileSize)
        return QStringLiteral("Last layer position beyond the end of the file.");
    if (import.step < 1)
        return QStringLiteral("Step size must be at least 1.");
    return {};
}

} // namespace tirn
