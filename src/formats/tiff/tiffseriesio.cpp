#include "formats/tiff/tiffseriesio.h"

#include <algorithm>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "formats/tiff/striplayer.h"
#include "formats/tiff/tiffdirectory.h"
#include "formats/tiff/tifftags.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// The tags in which all files agree with the first.
constexpr tiff::Tag kComparedTags[] = {tiff::ImageWidth, tiff::ImageLength, tiff::SamplesPerPixel};

} // namespace

bool readTiffDirectories(QFile& file, std::vector<IFD>& pages, ByteOrder& order)
{
    WindowedFile window(file);
    const TiffHeader header = readTiffHeader(window);
    if (!header.order)
        return false;
    order = *header.order;
    if (header.magic != tiff::kMagic) {
        logDebug("You do not know the answer to the great question.  Goodbye");
        return false;
    }
    pages.clear();
    walkDirectories(window, order, header.firstOffset, [&](IFD&& page) {
        pages.push_back(std::move(page));
        return pages.size() < 2;
    });
    return !pages.empty();
}

TiffSeriesIO::TiffSeriesIO(ImageFile& owner, const QStringList& names) : TiffIFDIO(owner, names)
{
    logDebug("Tiff object created");
    attributes() = TiffSeriesIO::readAttributes();
}

bool TiffSeriesIO::isTiffSeries(const QString& name)
{
    QFile file(name);
    return probeTiff(file).has_value();
}

ImageAttributes TiffSeriesIO::readAttributes()
{
    logDebug("I wanna read attributes of %d files", fileCount());
    ImageAttributes record;
    if (fileCount() > 0 && readHeaders(record) && describe(record)) {
        record.type = ImageType::TiffSeries;
        log(LogLevel::Debug, record.fullText());
    }
    logDebug("exit readAttributes");
    return record;
}

bool TiffSeriesIO::readHeaders(ImageAttributes& record)
{
    for (int i = 0; i < fileCount(); ++i) {
        if (!file(i).open(QIODevice::ReadOnly))
            return fail(QLatin1String("Could not open ") + file(i).fileName() + QLatin1String(" read only"));
        ByteOrder fileOrder = order();
        const bool parsed = readTiffDirectories(file(i), m_stkIFD[static_cast<std::size_t>(i)], fileOrder);
        if (parsed && i == 0) {
            setOrder(fileOrder);
            const IFD& page = m_stkIFD.front().front();
            record.bitDepth = firstDepth(page);
        }
        file(i).close();
        if (!parsed)
            return fail(QStringLiteral("Failed to parse header"));
    }
    logDebug(littleEndian() ? "It's little endian" : "it's big endian");
    return true;
}

int TiffSeriesIO::firstDepth(const IFD& page)
{
    const IFDEntry* entry = page.find(tiff::BitsPerSample);
    if (entry == nullptr || entry->values.empty())
        return -1;
    const auto inField = static_cast<int>(std::min(entry->values.front(), 65535U));
    if (entry->count == 1 || !isInline(*entry))
        return inField;
    // Two depths fit into the field, where other programs put them; ours puts an offset there.
    constexpr std::uint32_t deepest = 64;
    const bool plausible = entry->values.front() == entry->values.back() && entry->values.front() >= 1 &&
                           entry->values.front() <= deepest;
    WindowedFile window(file(0));
    const auto bytes = window.at(entry->valueOffset, 2);
    if (plausible || bytes.size() < 2)
        return inField;
    return getShort(bytes.data());
}

bool TiffSeriesIO::describe(ImageAttributes& record)
{
    const IFD& page = m_stkIFD.front().front();
    record.fileX = toSize(page.value(tiff::ImageWidth).value_or(0));
    record.fileY = toSize(page.value(tiff::ImageLength).value_or(0));
    record.fileZ = fileCount();
    if (record.bitDepth < 0)
        return fail(QStringLiteral("BitsPerSample is missing"));
    record.channels = toSize(page.value(tiff::SamplesPerPixel).value_or(1));
    takeMaximumAndTime(page, record);
    if (const auto compression = page.value(tiff::Compression)) {
        if (!compressionSupported(*compression))
            return false;
    }
    if (const IFDEntry* description = page.find(tiff::ImageDescription))
        log(LogLevel::Debug, tagText(*description));
    // A file that does not fit ends the reading without a text.
    return std::all_of(m_stkIFD.begin(), m_stkIFD.end(), [&page](const std::vector<IFD>& pages) {
        return std::all_of(std::begin(kComparedTags), std::end(kComparedTags),
                           [&](tiff::Tag tag) { return pages.front().value(tag) == page.value(tag); });
    });
}

bool TiffSeriesIO::readAll() { return readLayers(0, fileCount() - 1, 1); }

bool TiffSeriesIO::readLayers(int first, int last, int step)
{
    ImageAttributes& stack = attributes();
    const int files = static_cast<int>(m_stkIFD.size());
    if (step < 1 || first < 0 || last < first || last >= files)
        return fail(QStringLiteral("Illogical arguments to readLayers"));
    if (!depthSupported())
        return false;
    const int count = layerCount(first, last, step);
    const auto layerBytes =
        checkedProduct({stack.fileX, stack.fileY, stack.channels, stack.bytesPerSample()});
    const auto bytes = layerBytes ? checkedProduct({*layerBytes, count}) : std::nullopt;
    if (!bytes || *bytes < 1)
        return fail(QStringLiteral("No strips in the image"));

    std::vector<StripLayer> layers;
    for (int k = 0; k < count; ++k) {
        const std::vector<IFD>& pages = m_stkIFD[static_cast<std::size_t>(first + std::int64_t{k} * step)];
        if (pages.empty() || !hasLayerStrips(pages.front()))
            return false;
        if (pages.size() > 1)
            logDebug("This file has more than 1 IFD, watch out");
        layers.push_back({file(first + k * step).fileName(), SegmentPlan(*layerBytes)});
        appendStrips(pages.front(), *layerBytes, stack.channels, layers.back().plan);
    }
    const StripHoldings there = stripHoldings(layers);
    if (there.bytes < *bytes && !earlyEnd(there.bytes, *bytes, there.completeLayers, count))
        return false;

    releaseStack();
    logDebug("Allocating %lld", static_cast<long long>(*bytes));
    VoxelBuffer voxels = allocateVoxels(bytes, "Could not allocate memory for sequence of tiffs");
    parallelFor(0, count, 1, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t k = begin; k < end; ++k) {
            std::byte* layer = voxels.data() + k * *layerBytes;
            if (readStripLayer(layers[static_cast<std::size_t>(k)], layer))
                interleavePlanes(m_stkIFD[static_cast<std::size_t>(first + k * step)].front(), layer,
                                 *layerBytes);
        }
    });
    for (const StripLayer& layer : layers) {
        if (!layer.error.isEmpty())
            return fail(layer.error);
    }
    // The statistics find it from the data.
    stack.maxValue = -1;
    if (!littleEndian() && stack.hasWords())
        swapEndian(voxels.data(), *bytes / stack.bytesPerSample(), stack.bytesPerSample());
    setStack(std::move(voxels), stack.fileX, stack.fileY, count);
    setSteppedRange(first, last, step);
    return true;
}

} // namespace tirn
