#include "formats/vendor/zeissio.h"

#include <algorithm>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/outputfile.h"
#include "base/stopwatch.h"
#include "formats/files/planarread.h"
#include "formats/tiff/tiffdirectory.h"
#include "formats/tiff/tifftags.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

constexpr double kMicronsPerMetre = 1000000.0;

/// What a channel's samples are.
enum DataType { PerChannel = 0, Bytes = 1, TwelveBits = 2, Floats = 5 };

} // namespace

ZeissIO::ZeissIO(ImageFile& owner, const QStringList& names) : TiffIFDIO(owner, names)
{
    attributes() = ZeissIO::readAttributes();
}

bool ZeissIO::isZeiss(const QString& name)
{
    if (!name.endsWith(QLatin1String(".lsm")))
        return false;
    QFile file(name);
    const std::optional<TiffHeader> header = probeTiff(file);
    return header && header->isLittleEndian();
}

ImageAttributes ZeissIO::readAttributes()
{
    logDebug("I wanna read attributes of %d files", fileCount());
    ImageAttributes record;
    bool parsed = fileCount() > 0;
    for (int i = 0; i < fileCount() && parsed; ++i) {
        if (!file(i).open(QIODevice::ReadOnly)) {
            fail(QLatin1String("Could not open ") + file(i).fileName() + QLatin1String(" read only"));
            return record;
        }
        parsed = parseFile(i);
        file(i).close();
    }
    if (!parsed || !describe(record))
        return record;
    logDebug("*** Done reading attributes ***");
    record.type = ImageType::Zeiss;
    return record;
}

bool ZeissIO::parseFile(int index)
{
    WindowedFile window(file(index));
    const TiffHeader header = readTiffHeader(window);
    if (!header.isLittleEndian() || header.magic != tiff::kMagic || !header.offsetInRange(window.size()))
        return false;
    setOrder(ByteOrder::Little);
    std::vector<IFD>& pages = m_stkIFD[static_cast<std::size_t>(index)];
    pages.clear();
    const auto keep = [&](IFD&& page) {
        pages.push_back(std::move(page));
        return true;
    };
    const WalkEnd end =
        walkDirectories(window, ByteOrder::Little, header.firstOffset, keep, tiff::kHeaderBytes);
    if (end == WalkEnd::TooMany)
        return failForDirectories();
    if (end == WalkEnd::Loop)
        return false;
    const IFDEntry* entry = pages.empty() ? nullptr : pages.front().find(tiff::LsmInfo);
    if (entry == nullptr || entry->valueOffset > window.size())
        return false;
    // Of several files the last one's record counts.
    m_lsmInfo = readLsmInfo(window, entry->valueOffset);
    printLsmInfo(m_lsmInfo);
    return true;
}

bool ZeissIO::describe(ImageAttributes& record) const
{
    const IFD& page = m_stkIFD.front().front();
    logDebug("tif x:%u  tif y:%u lsm x:%d", page.value(tiff::ImageWidth).value_or(0),
             page.value(tiff::ImageLength).value_or(0), m_lsmInfo.dimX);
    record.fileX = m_lsmInfo.dimX;
    record.fileY = m_lsmInfo.dimY;
    record.fileZ = m_lsmInfo.dimZ;
    record.dimX = m_lsmInfo.voxelSizeX * kMicronsPerMetre;
    record.dimY = m_lsmInfo.voxelSizeY * kMicronsPerMetre;
    record.dimZ = m_lsmInfo.voxelSizeZ * kMicronsPerMetre;
    record.channels = toSize(page.value(tiff::SamplesPerPixel).value_or(1));
    return takeDataType(record);
}

bool ZeissIO::takeDataType(ImageAttributes& record) const
{
    const auto takeBytes = [&record] {
        record.bitDepth = 8;
        record.maxValue = 255;
    };
    // Twelve bits in words of 16: the maximum tells them apart.
    const auto takeTwelveBits = [&record] {
        record.bitDepth = 16;
        record.maxValue = 4095;
    };
    switch (m_lsmInfo.dataType) {
    case Bytes:
        takeBytes();
        return true;
    case TwelveBits:
        takeTwelveBits();
        return true;
    case Floats:
        // Unlike floats that the channels state, these keep the type, with a depth of 0.
        logDebug("32-bit float we don't support");
        return true;
    case PerChannel:
        break;
    default:
        record.maxValue = -1;
        logDebug("unknown datatype value");
        return true;
    }
    const std::vector<std::int32_t>& types = m_lsmInfo.channelTypes;
    if (types.empty())
        return true;
    const bool equal =
        std::all_of(types.begin(), types.end(), [&](std::int32_t type) { return type == types[0]; });
    if (!equal || types[0] == Floats) {
        logDebug(equal ? "32-bit float not supported" : "Different bits depths per channel not supported");
        record.bitDepth = -1;
        return false;
    }
    if (types[0] == Bytes)
        takeBytes();
    else if (types[0] == TwelveBits)
        takeTwelveBits();
    return true;
}

bool ZeissIO::fillStrips(WindowedFile& window, std::vector<const IFD*>& images)
{
    logDebug("stkIFD size=%d", static_cast<int>(m_stkIFD.front().size()));
    for (IFD& page : m_stkIFD.front()) {
        for (const tiff::Tag tag : {tiff::StripOffsets, tiff::StripByteCounts}) {
            if (IFDEntry* entry = page.find(tag))
                fillEntry(window, *entry);
        }
        // Thumbnails and all else have another value here.
        if (page.value(tiff::NewSubfileType).value_or(0) == 0)
            images.push_back(&page);
    }
    return !images.empty();
}

bool ZeissIO::planLayers(const std::vector<const IFD*>& images, int first, int step, int count,
                         std::vector<std::vector<SegmentPlan>>& layers)
{
    const ImageAttributes& stack = attributes();
    const std::int64_t channelBytes = std::int64_t{stack.fileX} * stack.fileY * stack.bytesPerSample();
    if (first + std::int64_t{count - 1} * step >= static_cast<std::int64_t>(images.size())) {
        logDebug("AHHHHHH!");
        return false;
    }
    const std::int64_t stackBytes = channelBytes * count * stack.channels;
    if (!isJustified(stackBytes, file(0).size()))
        return earlyEnd(0, stackBytes, 0, count);
    for (int k = 0; k < count; ++k) {
        const IFD& page = *images[static_cast<std::size_t>(first + std::int64_t{k} * step)];
        const auto compression = page.value(tiff::Compression);
        if (!hasStrips(page) || (compression && !compressionSupported(*compression)))
            return false;
        const IFDEntry& offsets = *page.find(tiff::StripOffsets);
        const IFDEntry* counts = page.find(tiff::StripByteCounts);
        layers.emplace_back();
        for (int channel = 0; channel < stack.channels; ++channel) {
            // One strip serves every channel.
            const auto strip = offsets.count == 1 ? std::size_t{0} : static_cast<std::size_t>(channel);
            if (strip >= offsets.values.size()) {
                logDebug("Could not read at %u", offsets.valueOffset);
                return false;
            }
            const bool counted = counts != nullptr && strip < counts->values.size();
            const std::int64_t bytes = counted ? counts->values[strip] : channelBytes;
            if (bytes != channelBytes)
                logDebug("Layer size mismatch %lld %lld", static_cast<long long>(bytes),
                         static_cast<long long>(channelBytes));
            layers.back().emplace_back(channelBytes);
            layers.back().back().append(offsets.values[strip], bytes);
        }
    }
    return true;
}

bool ZeissIO::readLayers(int first, int last, int step)
{
    ImageAttributes& stack = attributes();
    if (step < 1 || first < 0 || last < first)
        return fail(QStringLiteral("Illogical arguments to readLayers"));
    if (!depthSupported())
        return false;
    const int count = layerCount(first, last, step);
    const auto channelBytes = checkedProduct({stack.fileX, stack.fileY, stack.bytesPerSample()});
    const auto bytes = channelBytes ? checkedProduct({*channelBytes, count, stack.channels}) : std::nullopt;
    if (!bytes || *bytes < 1)
        return fail(QStringLiteral("No strips in the image"));
    logDebug("Ready to read %d", count);
    if (fileCount() < 1 || !file(0).open(QIODevice::ReadOnly))
        return false;
    WindowedFile window(file(0));
    std::vector<const IFD*> images;
    std::vector<std::vector<SegmentPlan>> layers;
    const bool done = fillStrips(window, images) && planLayers(images, first, step, count, layers) &&
                      readPlanned(layers, *channelBytes);
    file(0).close();
    if (!done)
        return false;
    setLayerRange(first, last, step);
    logDebug("*** Done reading lsm ***");
    return true;
}

bool ZeissIO::readPlanned(const std::vector<std::vector<SegmentPlan>>& layers, std::int64_t channelBytes)
{
    ImageAttributes& stack = attributes();
    const PositionedFile positioned(file(0));
    const auto count = static_cast<int>(layers.size());
    const std::int64_t layerBytes = channelBytes * stack.channels;
    std::int64_t held = 0;
    int complete = 0;
    for (const std::vector<SegmentPlan>& layer : layers) {
        std::int64_t layerHeld = 0;
        for (const SegmentPlan& plan : layer) {
            if (plan.startsOutside(positioned.size())) {
                logDebug("Could not read at %lld", static_cast<long long>(plan.firstOffset()));
                return false;
            }
            layerHeld += plan.held(positioned.size());
        }
        held += layerHeld;
        complete += layerHeld == layerBytes ? 1 : 0;
    }
    if (held < layerBytes * count && !earlyEnd(held, layerBytes * count, complete, count))
        return false;

    releaseStack();
    VoxelBuffer voxels = allocateVoxels(layerBytes * count, "Could not allocate memory for Zeiss stack");
    const Stopwatch stopwatch;
    logDebug("Found layer reading %lld bytes", static_cast<long long>(channelBytes));
    const auto readChannel = [&](int layer, int channel, std::byte* buffer) {
        return layers[static_cast<std::size_t>(layer)][static_cast<std::size_t>(channel)].read(positioned,
                                                                                               buffer);
    };
    if (!readPlanarLayers(count, stack.channels, channelBytes, stack.bytesPerSample(), voxels.data(),
                          readChannel))
        return fail(QStringLiteral("Read error"));
    logMerging(stack.bitDepth);
    logMerged(stopwatch.seconds());
    setStack(std::move(voxels), stack.fileX, stack.fileY, count);
    return true;
}

QStringList ZeissIO::write(const QStringList&, const ImageAttributes& attributes, const std::uint8_t* data,
                           int, int, int, bool)
{
    const auto channelBytes =
        checkedProduct({attributes.x, attributes.y, attributes.z, attributes.bytesPerSample()});
    VoxelBuffer planes;
    try {
        planes =
            allocateVoxels(channelBytes ? checkedProduct({*channelBytes, attributes.channels}) : std::nullopt,
                           "Could not allocate component channels for Zeiss write");
    } catch (const std::bad_alloc& error) {
        return {QLatin1String(error.what())};
    }
    std::vector<std::byte*> channels;
    channels.reserve(static_cast<std::size_t>(std::max(attributes.channels, 0)));
    for (int c = 0; c < attributes.channels; ++c)
        channels.push_back(planes.data() + c * *channelBytes);
    planes.zero();
    separateChannels(data, channels, attributes);
    for (int c = 0; c < attributes.channels; ++c) {
        OutputFile file(QString::asprintf("test%2d.raw", c));
        if (!file.open() || !file.write(channels[static_cast<std::size_t>(c)], *channelBytes) ||
            !file.commit())
            logDebug("could not write test%2d.raw", c);
    }
    return {};
}

} // namespace tirn
