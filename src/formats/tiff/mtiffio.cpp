#include "formats/tiff/mtiffio.h"

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "formats/tiff/tiffdirectory.h"
#include "formats/tiff/tifftags.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

struct ComparedTag
{
    tiff::Tag tag;
    const char* text;
};

/// The tags in which all pages agree.
constexpr ComparedTag kComparedTags[] = {
    {tiff::ImageWidth, "Images in file not compatible, ImageWidth"},
    {tiff::ImageLength, "Images in file not compatible, ImageLength"},
    {tiff::BitsPerSample, "Images in file not compatible, BitsPerSample"},
    {tiff::SamplesPerPixel, "Images in file not compatible, SamplesPerPixel"},
};

} // namespace

MTiffIO::MTiffIO(ImageFile& owner, const QStringList& names) : TiffIFDIO(owner, names)
{
    logDebug("Creating TiffSeries object");
    attributes() = MTiffIO::readAttributes();
}

bool MTiffIO::isMTiff(const QString& name)
{
    QFile file(name);
    const std::optional<TiffHeader> header = probeTiff(file);
    if (!header)
        return false;
    WindowedFile window(file);
    DirectoryReader reader(window, *header->order);
    const std::int64_t entries = reader.number(header->firstOffset, 2);
    return reader.number(header->firstOffset + 2 + entries * tiff::kEntryBytes, 4) != 0;
}

bool MTiffIO::isMyType() { return readAttributes().type == ImageType::MultiPageTiff; }

ImageAttributes MTiffIO::readAttributes()
{
    ImageAttributes record;
    if (fileCount() < 1 || !info(0).isReadable())
        fail(QStringLiteral("File not readable"));
    else if (!info(0).isFile())
        fail(QStringLiteral("File not a file"));
    else if (!file(0).open(QIODevice::ReadOnly))
        fail(QStringLiteral("Unable to open file"));
    else if (readPages(record))
        record.type = ImageType::MultiPageTiff;
    if (fileCount() > 0)
        file(0).close();
    return record;
}

bool MTiffIO::readPages(ImageAttributes& record)
{
    WindowedFile window(file(0));
    const TiffHeader header = readTiffHeader(window);
    if (!header.order)
        return fail(QStringLiteral("Unknown endian"));
    setOrder(*header.order);
    logDebug(littleEndian() ? "It's Little endian" : "It's Big endian");
    if (header.magic != tiff::kMagic)
        return fail(QStringLiteral("Magic number 42 not found"));
    if (!header.offsetInRange(window.size()))
        return fail(QStringLiteral("ifdOffset not in range"));

    std::vector<IFD>& pages = m_stkIFD.front();
    pages.clear();
    const auto keep = [&](IFD&& page) {
        if (!fits(page))
            return false;
        pages.push_back(std::move(page));
        return true;
    };
    // A chain that runs in a circle keeps the pages before it closes.
    const WalkEnd end = walkDirectories(window, *header.order, header.firstOffset, keep);
    if (end == WalkEnd::TooMany)
        return failForDirectories();
    if (end == WalkEnd::Stopped)
        return false;
    if (pages.empty())
        return fail(QStringLiteral("Unable to seek to first ifd"));

    const IFD& page = pages.front();
    if (!page.value(tiff::BitsPerSample))
        return fail(QStringLiteral("BitsPerSample is missing"));
    record.fileX = toSize(page.value(tiff::ImageWidth).value_or(0));
    record.fileY = toSize(page.value(tiff::ImageLength).value_or(0));
    record.fileZ = static_cast<int>(pages.size());
    record.bitDepth = toSize(*page.value(tiff::BitsPerSample));
    const std::uint32_t depths = page.find(tiff::BitsPerSample)->count;
    record.channels = toSize(page.value(tiff::SamplesPerPixel).value_or(depths));
    takeMaximumAndTime(page, record);
    record.lens = -1;
    record.magFactor = -1.0F;
    return true;
}

bool MTiffIO::fits(const IFD& page)
{
    if (const IFDEntry* depths = page.find(tiff::BitsPerSample)) {
        for (const std::uint32_t depth : depths->values) {
            if (depth != depths->values.front())
                return fail(QStringLiteral("All channels must have the same BitsPerSample"));
        }
    }
    if (const auto compression = page.value(tiff::Compression)) {
        if (!compressionSupported(*compression))
            return false;
    }
    if (m_stkIFD.front().empty())
        return true;
    const IFD& first = m_stkIFD.front().front();
    for (const ComparedTag& compared : kComparedTags) {
        const IFDEntry* entry = page.find(compared.tag);
        if (entry != nullptr && page.value(compared.tag) != first.value(compared.tag)) {
            log(LogLevel::Debug, entryText(*entry));
            return fail(QLatin1String(compared.text));
        }
    }
    return true;
}

bool MTiffIO::readLayers(int first, int last, int step)
{
    logDebug("enter readLayers\n");
    ImageAttributes& stack = attributes();
    const int pageCount = static_cast<int>(m_stkIFD.empty() ? 0 : m_stkIFD.front().size());
    const int count = layerCount(first, last, step);
    if (first < 0 || first >= pageCount || last >= pageCount || count < 1)
        return fail(QStringLiteral("Trying to read outside of stack"));
    if (!depthSupported())
        return false;

    const auto samples = checkedProduct({stack.fileX, stack.fileY, stack.channels, count});
    const auto bytes = samples ? checkedProduct({*samples, stack.bytesPerSample()}) : std::nullopt;
    if (!bytes)
        return fail(QStringLiteral("Read error"));
    std::vector<const IFD*> layers;
    SegmentPlan plan(*bytes);
    for (int k = 0; k < count; ++k) {
        const IFD& page = m_stkIFD.front()[static_cast<std::size_t>(first + std::int64_t{k} * step)];
        if (!hasLayerStrips(page))
            return false;
        appendStrips(page, *bytes / count, stack.channels, plan);
        layers.push_back(&page);
    }
    if (!file(0).open(QIODevice::ReadOnly))
        return fail(QStringLiteral("Unable to open file"));
    const bool done = readPlanned(plan, layers);
    file(0).close();
    if (!done)
        return false;
    setSteppedRange(first, last, step);
    logDebug("exit readLayers\n");
    return true;
}

bool MTiffIO::readPlanned(const SegmentPlan& plan, const std::vector<const IFD*>& layers)
{
    ImageAttributes& stack = attributes();
    const std::int64_t bytes = plan.bufferBytes();
    const int count = static_cast<int>(layers.size());
    const std::int64_t layerBytes = bytes / count;
    const PositionedFile positioned(file(0));
    if (plan.startsOutside(positioned.size()))
        return fail(QStringLiteral("File seek error"));
    const std::int64_t held = plan.held(positioned.size());
    if (plan.endsOutside(positioned.size()) || held == 0) {
        logDebug("file read error");
        return fail(QStringLiteral("Read error"));
    }
    if (held < bytes && !earlyEnd(held, bytes, static_cast<int>(held / layerBytes), count))
        return false;
    releaseStack();
    VoxelBuffer voxels = allocateVoxels(bytes, "Could not allocate memory for MTiff stack");
    logDebug("allocated %lld bytes", static_cast<long long>(bytes));
    logDebug("stkIFD.size(): %d", static_cast<int>(m_stkIFD.size()));
    logDebug("stkIFD[0].size(): %d", static_cast<int>(m_stkIFD.front().size()));
    if (!plan.read(positioned, voxels.data())) {
        logDebug("file read error");
        return fail(QStringLiteral("Read error"));
    }
    parallelFor(0, count, 1, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t k = begin; k < end; ++k)
            interleavePlanes(*layers[static_cast<std::size_t>(k)], voxels.data() + k * layerBytes,
                             layerBytes);
    });
    if (!littleEndian() && stack.hasWords())
        swapEndian(voxels.data(), bytes / stack.bytesPerSample(), stack.bytesPerSample());
    setStack(std::move(voxels), stack.fileX, stack.fileY, count);
    return true;
}

} // namespace tirn
