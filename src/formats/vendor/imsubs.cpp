#include "formats/vendor/imsubs.h"

#include <algorithm>
#include <optional>

#include "base/bytereader.h"
#include "base/checkedsize.h"
#include "base/log.h"
#include "base/stopwatch.h"
#include "formats/files/fileprobe.h"
#include "formats/files/layerread.h"
#include "formats/files/segmentread.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

constexpr int kHeaderBytes = 1024;
constexpr int kIdentification = 0xC0A0;
constexpr std::uint32_t kModes = 5;

/// The header's fields that count, see http://www.ccpem.ac.uk/mrc_format/mrc2014.php for the common ones.
struct DvHeader
{
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    std::uint32_t sections = 0;
    std::uint32_t mode = 0;
    float pixelSize[3] = {};
    std::uint32_t extendedBytes = 0;
    std::uint16_t timePoints = 0;
    std::uint16_t wavelengths = 0;
};

struct ModeRow
{
    int bitDepth;
    const char* text;
};

constexpr ModeRow kModeTable[kModes] = {
    {8, nullptr},
    {16, nullptr},
    {32, "4-byte floating-point (IEEE)"},
    {32, "4-byte complexValue as 2 2-byte signed integers"},
    {64, "//8-byte complex value as 2 4-byte floating-point values"},
};

std::optional<DvHeader> readHeader(QFile& file)
{
    const QByteArray bytes = file.read(kHeaderBytes);
    if (bytes.isEmpty())
        return std::nullopt;
    ByteReader reader(bytes.constData(), static_cast<std::size_t>(bytes.size()), ByteOrder::Big);
    DvHeader header;
    for (std::uint32_t* field : {&header.columns, &header.rows, &header.sections, &header.mode})
        *field = reader.u32();
    reader.seek(40);
    for (float& size : header.pixelSize)
        size = reader.f32();
    reader.seek(92);
    header.extendedBytes = reader.u32();
    const int identification = reader.u16();
    if (identification != kIdentification)
        logDebug("ID: %d", identification);
    reader.seek(132);
    logDebug("subs %d", reader.u16());
    logDebug(" zfac %d", reader.u16());
    reader.seek(180);
    header.timePoints = reader.u16();
    reader.seek(196);
    header.wavelengths = reader.u16();
    return header;
}

} // namespace

IMSubs::IMSubs(ImageFile& owner, const QStringList& names) : ImageIO(owner, names)
{
    attributes() = IMSubs::readAttributes();
}

bool IMSubs::isDeltaVision(const QString& name)
{
    QFile file(name);
    if (!openForProbe(file))
        return false;
    const std::optional<DvHeader> header = readHeader(file);
    return header && header->columns != 0 && header->rows != 0 && header->sections != 0 &&
           header->mode < kModes && header->timePoints != 0 && header->wavelengths != 0;
}

ImageAttributes IMSubs::readAttributes()
{
    logDebug("IMSubs readAttributes");
    ImageAttributes record;
    if (fileCount() < 1)
        return record;
    QFile& headerFile = file(0);
    if (!openForProbe(headerFile) || headerFile.size() < kHeaderBytes) {
        headerFile.close();
        return record;
    }
    const std::optional<DvHeader> header = readHeader(headerFile);
    headerFile.close();
    if (!header)
        return record;
    record.fileX = static_cast<int>(header->columns);
    record.fileY = static_cast<int>(header->rows);
    record.channels = header->wavelengths;
    record.timePoints = header->timePoints;
    if (header->mode < kModes) {
        record.bitDepth = kModeTable[header->mode].bitDepth;
        if (kModeTable[header->mode].text != nullptr)
            logDebug("%s", kModeTable[header->mode].text);
    }
    const std::uint32_t imagesPerLayer = std::uint32_t{header->wavelengths} * header->timePoints;
    record.fileZ = static_cast<int>(header->sections / std::max(imagesPerLayer, 1U));
    record.dimX = static_cast<double>(header->pixelSize[0]);
    record.dimY = static_cast<double>(header->pixelSize[1]);
    record.dimZ = static_cast<double>(header->pixelSize[2]);
    m_dataOffset = std::int64_t{header->extendedBytes} + kHeaderBytes;
    record.type = ImageType::DeltaVision;
    const bool empty = record.fileX == 0 || record.fileY == 0 || record.fileZ == 0 || imagesPerLayer == 0;
    if (empty || header->mode > 1) {
        log(LogLevel::Debug, record.fullText());
        record.type = ImageType::Unknown;
    }
    return record;
}

bool IMSubs::readLayers(int first, int last, int step)
{
    logDebug("IMSubs: enter readLayers");
    ImageAttributes& stack = attributes();
    if (fileCount() < 1 || !file(0).open(QIODevice::ReadOnly))
        return false;
    if (step < 1 || last < 0 || first < 0 || last < first) {
        logDebug("First: %d last: %d step: %d", first, last, step);
        file(0).close();
        return fail(QStringLiteral("Illogical arguments to readLayers"));
    }
    if (stack.bitDepth != 8 && stack.bitDepth != 16) {
        file(0).close();
        return failForDepth();
    }
    const int count = layerCount(first, last, step);
    const bool done = readSections(count);
    file(0).close();
    if (!done)
        return false;
    setSteppedRange(first, last, step);
    logDebug("IMSubs: exit readLayers");
    return true;
}

bool IMSubs::readSections(int count)
{
    ImageAttributes& stack = attributes();
    const int sampleBytes = stack.bytesPerSample();
    const auto layerSamples = checkedProduct({stack.fileX, stack.fileY});
    const auto layerBytes = layerSamples ? checkedProduct({*layerSamples, sampleBytes}) : std::nullopt;
    const auto bytes = layerBytes ? checkedProduct({*layerBytes, count, stack.channels}) : std::nullopt;
    const PositionedFile positioned(file(0));
    const std::int64_t held = std::max<std::int64_t>(positioned.size() - m_dataOffset, 0);
    if (!bytes || *bytes < 1 || (held < *bytes && !isJustified(*bytes, held)))
        return failForEarlyEnd(0, count);
    if (held < *bytes)
        failForEarlyEnd(held / (*layerBytes * stack.channels), count);

    releaseStack();
    VoxelBuffer voxels = allocateVoxels(bytes, "Could not allocate memory fo IMsubs Layers");
    const Stopwatch stopwatch;
    std::vector<LayerSource> sources;
    sources.reserve(static_cast<std::size_t>(stack.channels));
    for (int channel = 0; channel < stack.channels; ++channel)
        sources.push_back({&positioned, m_dataOffset + channel * *layerBytes, stack.channels * *layerBytes});
    if (!readInterleavedLayers(sources, count, *layerSamples, sampleBytes, voxels.data()))
        return fail(QStringLiteral("Read error"));
    logMerging(stack.bitDepth);
    logMerged(stopwatch.seconds());
    if (stack.bitDepth > 8)
        swapEndian(voxels.data(), *bytes / sampleBytes, 2);
    setStack(std::move(voxels), stack.fileX, stack.fileY, count);
    return true;
}

} // namespace tirn
