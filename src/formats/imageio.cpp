#include "formats/imageio.h"

#include <algorithm>

#include "base/log.h"
#include "base/parallel.h"
#include "base/stopwatch.h"
#include "formats/imageformats.h"
#include "image/allocationerror.h"
#include "image/imagefile.h"
#include "image/interleave.h"

namespace tirn {

namespace {

std::int64_t samplesPerChannel(const ImageAttributes& attributes)
{
    return static_cast<std::int64_t>(attributes.x) * attributes.y * attributes.z;
}

} // namespace

ImageIO::ImageIO(ImageFile& owner, const QStringList& names) : m_owner(owner) { setFiles(names); }

void ImageIO::setFiles(const QStringList& names)
{
    m_files.clear();
    m_infos.clear();
    try {
        for (const QString& name : names) {
            m_files.push_back(std::make_unique<QFile>(name));
            m_infos.emplace_back(name);
        }
    } catch (const std::bad_alloc&) {
        throw AllocationError("Could not allocate memory for the file list");
    }
}

ImageAttributes ImageIO::readAttributes() { return {}; }

bool ImageIO::isMyType() { return false; }

QStringList ImageIO::filterNames(const QStringList& names) { return names; }

bool ImageIO::readLayers(int, int, int) { return false; }

bool ImageIO::readAll() { return readLayers(0, attributes().lastFileLayer(), 1); }

QStringList ImageIO::fileNames() const
{
    QStringList names;
    for (const QFileInfo& info : m_infos)
        names.append(info.fileName());
    return names;
}

QStringList ImageIO::filePaths() const
{
    QStringList paths;
    for (const QFileInfo& info : m_infos)
        paths.append(info.absoluteFilePath());
    return paths;
}

bool ImageIO::exists(const QString& name) { return !name.isEmpty() && QFileInfo::exists(name); }

ImageType ImageIO::probeType(const QString& name)
{
    for (const ImageFormat& format : imageFormats()) {
        if (format.probe != nullptr && format.probe(name))
            return format.type;
    }
    return ImageType::Unknown;
}

void ImageIO::mergeChannels(std::span<const std::byte* const> channelBuffers, void* destination,
                            const ImageAttributes& attributes)
{
    const Stopwatch stopwatch;
    if (attributes.bitDepth > 16)
        return;
    const bool words = attributes.bitDepth != 8;
    logMerging(attributes.bitDepth);
    interleave(channelBuffers, samplesPerChannel(attributes), words ? 2 : 1, destination);
    logMerged(stopwatch.seconds());
}

void ImageIO::separateChannels(const void* source, std::span<std::byte* const> channelBuffers,
                               const ImageAttributes& attributes)
{
    // Only the two depths that are stored: a stack of 12 bits in words is left alone.
    if (attributes.bitDepth == 8) {
        logDebug("Separate channels 8 bit");
        deinterleave8(source, samplesPerChannel(attributes), channelBuffers);
        logDebug("Done Separating 8 bit");
    } else if (attributes.bitDepth == 16) {
        logDebug("Separate channels 16 bit");
        deinterleave16(source, samplesPerChannel(attributes), channelBuffers);
    }
}

void ImageIO::swapEndian(void* buffer, std::int64_t count, int size)
{
    logDebug("enter swapEndian (len = %lld)", static_cast<long long>(count));
    swapBytes(buffer, count, size);
    logDebug("exit swapEndian (len = %lld)", static_cast<long long>(count));
}

void ImageIO::logMerging(int bitDepth)
{
    logDebug(bitDepth != 8 ? "Merging channels 16 bit ch" : "Merging channels 8 bit");
}

void ImageIO::logMerged(double seconds)
{
    logDebug("Done Merging");
    logDebug("merging channels elapsed %d", static_cast<int>(seconds));
}

ImageAttributes& ImageIO::attributes() { return m_owner.attributes(); }

bool ImageIO::fail(const QString& text)
{
    m_owner.errorList().append(text);
    return false;
}

bool ImageIO::failForDepth()
{
    return fail(QString::asprintf("%d bits per sample not supported", attributes().bitDepth));
}

bool ImageIO::failForEarlyEnd(std::int64_t completeLayers, int layers)
{
    return fail(QString::asprintf("file ends early: %lld of %d layers",
                                  static_cast<long long>(completeLayers), layers));
}

void ImageIO::releaseStack()
{
    m_owner.setStackData({});
    attributes().x = attributes().y = attributes().z = -1;
}

void ImageIO::setStack(VoxelBuffer voxels, int x, int y, int z)
{
    m_owner.setStackData(std::move(voxels));
    attributes().x = x;
    attributes().y = y;
    attributes().z = z;
}

void ImageIO::setLayerRange(int first, int last, int step)
{
    m_owner.m_firstLayer = first;
    m_owner.m_lastLayer = last;
    m_owner.m_layerStep = step;
}

void ImageIO::setSteppedRange(int first, int last, int step)
{
    attributes().dimZ *= step;
    setLayerRange(first, last, step);
}

} // namespace tirn
