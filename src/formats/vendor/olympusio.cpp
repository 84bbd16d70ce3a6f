#include "formats/vendor/olympusio.h"

#include <algorithm>
#include <cstring>

#include <QFileInfo>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/stopwatch.h"
#include "formats/files/planarread.h"
#include "formats/tiff/tiffseriesio.h"
#include "formats/tiff/tifftags.h"
#include "formats/vendor/oifparser.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "image/voxelallocation.h"

namespace tirn {

/// One channel of one layer, in a file of its own.
struct OlympusIO::Plane
{
    QString fileName;
    std::int64_t bytes = 0;
    std::int64_t held = 0;
    bool bigEndian = false;
    QString error;
};

OlympusIO::OlympusIO(ImageFile& owner, const QStringList& names)
    : TiffIFDIO(owner, names), m_textName(names.value(0))
{
    logDebug("Olympus object created");
    attributes() = OlympusIO::readAttributes();
}

bool OlympusIO::isOlympus(const QString& name)
{
    logDebug("is %s an olympus?", name.toUtf8().constData());
    if (!OifParser(name, OifParser::Purpose::Probe).parse())
        return false;
    logDebug("yes it is an olympus");
    return true;
}

ImageAttributes OlympusIO::readAttributes()
{
    logDebug("I wanna read olympus attributes");
    OifParser parser(m_textName, OifParser::Purpose::Reader);
    if (!parser.parse())
        return {};
    ImageAttributes record = parser.attributes();
    setFiles(parser.tiffs());
    m_stkIFD.assign(static_cast<std::size_t>(fileCount()), {});
    record.type = ImageType::Olympus;
    logDebug("returning happy");
    return record;
}

bool OlympusIO::readPlane(Plane& plane, std::byte* buffer) const
{
    QFile file(plane.fileName);
    std::vector<IFD> pages;
    ByteOrder fileOrder = ByteOrder::Little;
    if (!file.open(QIODevice::ReadOnly) || !readTiffDirectories(file, pages, fileOrder)) {
        plane.error = QLatin1String("Could not open ") + plane.fileName;
        return false;
    }
    if (pages.size() > 1)
        logDebug("This file has more than 1 IFD, watch out");
    plane.bigEndian = fileOrder == ByteOrder::Big;
    plane.error = compressionRefusal(pages.front().value(tiff::Compression).value_or(1));
    if (!plane.error.isEmpty())
        return false;
    SegmentPlan plan(plane.bytes);
    appendStrips(pages.front(), plane.bytes, 1, plan);
    const PositionedFile positioned(file);
    plane.held = plan.held(positioned.size());
    if (!plan.read(positioned, buffer)) {
        plane.error = QLatin1String("Could not read ") + plane.fileName;
        return false;
    }
    return true;
}

bool OlympusIO::listPlanes(int first, int step, int layers, std::int64_t planeBytes,
                           std::vector<Plane>& planes)
{
    const ImageAttributes& stack = attributes();
    for (int k = 0; k < layers; ++k) {
        for (int channel = 0; channel < stack.channels; ++channel) {
            // All layers of a channel come before the next channel.
            const std::int64_t number = std::int64_t{channel} * stack.fileZ + first + std::int64_t{k} * step;
            if (number >= fileCount())
                return fail(QStringLiteral("Illogical arguments to readLayers"));
            planes.push_back({file(static_cast<int>(number)).fileName(), planeBytes, 0, false, {}});
        }
    }
    return true;
}

bool OlympusIO::readLayers(int first, int last, int step)
{
    logDebug("first %d last %d step %d", first, last, step);
    ImageAttributes& stack = attributes();
    if (step < 1 || first < 0 || last < first || stack.channels < 1)
        return fail(QStringLiteral("Illogical arguments to readLayers"));
    if (!depthSupported())
        return false;
    const int count = layerCount(first, last, step);
    const auto planeBytes = checkedProduct({stack.fileX, stack.fileY, stack.bytesPerSample()}).value_or(0);
    const std::int64_t bytes = checkedProduct({planeBytes, stack.channels, count}).value_or(0);
    // The upper bound is not read, although it has a place in the stack.
    const std::int64_t steps = (std::int64_t{last} - first + step - 1) / step;
    const int layers = static_cast<int>(std::min<std::int64_t>(steps, count));

    std::vector<Plane> planes;
    if (!listPlanes(first, step, layers, planeBytes, planes))
        return false;
    std::int64_t fileBytes = planes.empty() && fileCount() > 0 ? info(0).size() : 0;
    for (const Plane& plane : planes)
        fileBytes += QFileInfo(plane.fileName).size();
    if (bytes < 1 || !isJustified(bytes, fileBytes))
        return failForEarlyEnd(0, count);

    if (!readPlanes(planes, layers, count, bytes))
        return false;
    setSteppedRange(first, last, step);
    return true;
}

bool OlympusIO::readPlanes(std::vector<Plane>& planes, int layers, int count, std::int64_t bytes)
{
    ImageAttributes& stack = attributes();
    releaseStack();
    VoxelBuffer voxels = allocateVoxels(bytes, "Could not allocate memory for Olympus stack");
    const std::int64_t filled = bytes / count * layers;
    std::memset(voxels.data() + filled, 0, static_cast<std::size_t>(bytes - filled));
    const Stopwatch stopwatch;
    const auto readChannel = [&](int layer, int channel, std::byte* buffer) {
        const std::int64_t index = std::int64_t{layer} * stack.channels + channel;
        return readPlane(planes[static_cast<std::size_t>(index)], buffer);
    };
    readPlanarLayers(layers, stack.channels, bytes / count / stack.channels, stack.bytesPerSample(),
                     voxels.data(), readChannel);
    int complete = 0;
    for (const Plane& plane : planes) {
        if (!plane.error.isEmpty())
            return fail(plane.error);
        complete += plane.held == plane.bytes ? 1 : 0;
    }
    logMerging(stack.bitDepth);
    logMerged(stopwatch.seconds());
    if (complete < static_cast<int>(planes.size()))
        failForEarlyEnd(complete / stack.channels, count);
    if (stack.bitDepth > 8 && !planes.empty() && planes.front().bigEndian)
        swapEndian(voxels.data(), bytes / 2, 2);
    setStack(std::move(voxels), stack.fileX, stack.fileY, count);
    return true;
}

} // namespace tirn
