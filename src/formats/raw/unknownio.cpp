#include "formats/raw/unknownio.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/checkedsize.h"
#include "base/outputfile.h"
#include "formats/files/layerread.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// Stands for a size that cannot be counted; no file is that long.
constexpr std::int64_t kTooMany = std::numeric_limits<std::int64_t>::max();

} // namespace

UnknownIO::UnknownIO(ImageFile& owner, const QStringList& names, std::int64_t headerOffset, int x, int y,
                     int z, int channels, int bitDepth, bool swapBytes)
    : ImageIO(owner, names), m_headerOffset(headerOffset), m_swapBytes(swapBytes)
{
    ImageAttributes record;
    record.fileX = x;
    record.fileY = y;
    record.fileZ = z;
    record.channels = channels;
    record.bitDepth = bitDepth;
    attributes() = record;
}

ImageAttributes UnknownIO::readAttributes() { return attributes(); }

bool UnknownIO::isMyType() { return fileCount() > 0 && exists(file(0).fileName()); }

bool UnknownIO::readLayers(int first, int last, int step)
{
    ImageAttributes& stack = attributes();
    if (step < 1 || first < 0 || last < first)
        return fail(QStringLiteral("Illogical arguments to readLayers"));
    if (stack.bitDepth < 8 || stack.bitDepth > 16)
        return failForDepth();
    if (fileCount() < 1)
        return fail(QStringLiteral("Unable to open file: "));
    const QString name = file(0).fileName();
    file(0).close();
    if (!file(0).open(QIODevice::ReadOnly))
        return fail(QLatin1String("Unable to open file: ") + name);
    if (m_headerOffset < 0)
        return fail(QLatin1String("Unable to seek in file: ") + name);

    const int count = layerCount(first, last, step);
    const std::int64_t samples =
        checkedProduct({stack.fileX, stack.fileY, count, stack.channels}).value_or(kTooMany);
    // 9 to 15 bits count as one byte here although the stack holds words: the file's bytes fill the first
    // half of it, the rest is zero.
    const std::int64_t bytes = checkedProduct({samples, stack.bitDepth / 8}).value_or(kTooMany);
    const PositionedFile positioned(file(0));
    if (bytes > positioned.size() - std::min(m_headerOffset, positioned.size()))
        return fail(QLatin1String("Unable to read in file: ") + name);

    releaseStack();
    VoxelBuffer voxels = allocateVoxels(checkedProduct({samples, stack.bytesPerSample()}),
                                        "Could not allocate memory for Raw stack");
    const LayerSource source = {&positioned, m_headerOffset, bytes};
    if (!readInterleavedLayers(std::span(&source, 1), 1, bytes, 1, voxels.data()))
        return fail(QLatin1String("Unable to read in file: ") + name);
    std::memset(voxels.data() + bytes, 0, static_cast<std::size_t>(voxels.size() - bytes));
    file(0).close();
    if (m_swapBytes && stack.bitDepth == 16)
        swapEndian(voxels.data(), samples, 2);
    setStack(std::move(voxels), stack.fileX, stack.fileY, count);
    return true;
}

QStringList UnknownIO::write(const QStringList& names, const ImageAttributes& attributes,
                             const std::uint8_t* data, int, int, int, bool overwrite)
{
    const QString name = names.value(0);
    if (!overwrite && exists(name))
        return {QStringLiteral("File exists")};
    OutputFile file(name);
    if (name.isEmpty() || !file.open())
        return {QLatin1String("Unable to open file: ") + name};
    if (!file.seek(0))
        return {QLatin1String("Unable to seek in file: ") + name};
    // The channels are left out of the size: of a stack with two, half the samples are written.
    const auto bits = checkedProduct({attributes.x, attributes.y, attributes.z, attributes.bitDepth});
    const auto held = checkedProduct(
        {attributes.x, attributes.y, attributes.z, attributes.channels, attributes.bytesPerSample()});
    const bool there = bits && held && data != nullptr && *bits / 8 <= *held;
    if (!there || !file.write(data, *bits / 8) || !file.commit())
        return {QLatin1String("Unable to write in file: ") + name};
    return {};
}

} // namespace tirn
