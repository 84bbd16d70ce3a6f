#include "image/imagefile.h"

#include <algorithm>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/stopwatch.h"
#include "image/layercount.h"
#include "image/stackreader.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// The bytes of a stack; nothing when they cannot be counted.
std::optional<std::int64_t> stackBytes(const ImageAttributes& attributes)
{
    return checkedProduct(
        {attributes.x, attributes.y, attributes.z, attributes.channels, attributes.bytesPerSample()});
}

ImageAttributes memoryAttributes(int x, int y, int z, int channels, int bitDepth)
{
    ImageAttributes attributes;
    attributes.x = attributes.fileX = x;
    attributes.y = attributes.fileY = y;
    attributes.z = attributes.fileZ = z;
    attributes.channels = channels;
    attributes.bitDepth = bitDepth;
    return attributes;
}

} // namespace

ImageFile::ImageFile() = default;

ImageFile::ImageFile(const QStringList& names)
{
    try {
        m_io = openStackReader(*this, names);
        m_fileMaximum = m_attributes.maxValue;
    } catch (const std::bad_alloc&) {
        m_io.reset();
    }
    if (m_io == nullptr)
        m_errorList.append(QStringLiteral("Could not allocate ImageIO object"));
}

ImageFile::ImageFile(const QStringList& names, std::int64_t headerOffset, int x, int y, int z, int channels,
                     int bitDepth, bool swapBytes)
    : m_rawLayout({headerOffset, x, y, z, bitDepth, swapBytes})
{
    try {
        m_io = openRawReader(*this, names, headerOffset, x, y, z, channels, bitDepth, swapBytes);
    } catch (const std::bad_alloc&) {
        m_errorList.append(QStringLiteral("Failed to create UnknownIO"));
    }
}

ImageFile::ImageFile(int x, int y, int z, int channels, int bitDepth)
    : m_attributes(memoryAttributes(x, y, z, channels, bitDepth)),
      m_stackData(allocateVoxels(stackBytes(m_attributes), "Failed to allocate memory for the stack"))
{}

ImageFile::ImageFile(VoxelBuffer data, int x, int y, int z, int channels, int bitDepth)
    : m_attributes(memoryAttributes(x, y, z, channels, bitDepth)), m_stackData(std::move(data))
{}

ImageFile::~ImageFile() = default;

bool ImageFile::read(int first, int last, int step)
{
    logDebug("enter ImageFile::read");
    if (first < 0) {
        logDebug("first layer cannot be < 0");
        return false;
    }
    if (last >= m_attributes.fileZ) {
        logDebug("last layer %d must be less than %d", last, m_attributes.fileZ);
        return false;
    }
    Stopwatch stopwatch;
    KnownValues before = takeKnown();
    m_attributes.maxValue = m_fileMaximum;
    m_largestIsCounted = false;
    if (m_io == nullptr || !m_io->readLayers(first, last, step)) {
        setKnown(std::move(before));
        for (const QString& text : m_errorList)
            log(LogLevel::Debug, text);
        logDebug("exit ImageFile::read failed");
        return false;
    }
    m_attributes.x = m_attributes.fileX;
    m_attributes.y = m_attributes.fileY;
    m_attributes.z = layerCount(first, last, std::max(1, step));
    m_firstLayer = first;
    m_lastLayer = last;
    m_layerStep = step;
    m_reductions.clear();
    m_invertedMaximum = -1;
    logDebug("File I/O took %g ms", stopwatch.restart());
    generateStatistics();
    logDebug("generate statistics %g ms", stopwatch.seconds());
    logDebug("exit ImageFile::read success");
    return true;
}

bool ImageFile::read() { return read(0, m_attributes.lastFileLayer(), 1); }

bool ImageFile::reRead()
{
    const bool isKnown = m_firstLayer != -1 && m_lastLayer != -1 && m_layerStep != -1;
    const std::vector<int> reductions = m_reductions;
    if (!(isKnown ? read(m_firstLayer, m_lastLayer, m_layerStep) : read()))
        return false;
    // The voxels have the size of the reduced stack already.
    const ImageAttributes sizes = m_attributes;
    try {
        for (const int factor : reductions)
            subSample(factor);
    } catch (const std::bad_alloc&) {
        freeStack();
        m_reductions = reductions;
        throw;
    }
    m_attributes.dimX = sizes.dimX;
    m_attributes.dimY = sizes.dimY;
    m_attributes.dimZ = sizes.dimZ;
    return true;
}

bool ImageFile::write(const QStringList& names, ImageType type, int bitDepth, bool overwrite)
{
    logDebug("enter ImageFile::write %d", bitDepth);
    m_writeErrors.clear();
    if (bitDepth == 8) {
        logDebug("Converting to 8 bit");
        stackToByteSmartMult();
    } else {
        stackToShort();
    }
    if (!isLoaded()) {
        logDebug("Must allocate stack first");
        return false;
    }
    // The samples of 9 to 15 bits are words already, and files know no depth between.
    if (m_attributes.hasWords())
        m_attributes.bitDepth = 16;
    log(LogLevel::Debug, m_attributes.fullText());
    logDebug("On to the write functions");
    m_writeErrors = writeStack(type, names, m_attributes, stackData(), overwrite);
    for (const QString& text : m_writeErrors)
        log(LogLevel::Debug, text);
    logDebug("exit ImageFile::write");
    return m_writeErrors.isEmpty();
}

bool ImageFile::write(const QStringList& names, ImageType type)
{
    return write(names, type, m_attributes.bitDepth, true);
}

bool ImageFile::write(const QStringList& names, ImageType type, bool overwrite)
{
    return write(names, type, m_attributes.bitDepth, overwrite);
}

void ImageFile::freeStack()
{
    logDebug("original copy of stack deleted");
    m_stackData.reset();
    m_attributes.x = m_attributes.y = m_attributes.z = -1;
}

VoxelBuffer ImageFile::takeStack()
{
    VoxelBuffer voxels = std::move(m_stackData);
    freeStack();
    return voxels;
}

bool ImageFile::ensureLoaded() { return isLoaded() || reRead(); }

void ImageFile::setStackData(VoxelBuffer data)
{
    m_stackData = std::move(data);
    forgetStatistics();
    m_invertedMaximum = -1;
    if (std::exchange(m_largestIsCounted, false))
        m_attributes.maxValue = -1;
}

void ImageFile::replaceVoxels(VoxelBuffer data)
{
    if (m_replaced != nullptr)
        m_replaced->voxels = std::move(m_stackData);
    m_stackData = std::move(data);
    forgetValues();
}

void ImageFile::forgetStatistics()
{
    KnownValues known = takeKnown();
    if (m_replaced != nullptr && !m_replaced->known)
        m_replaced->known = std::move(known);
}

void ImageFile::valuesInverted()
{
    forgetStatistics();
    std::swap(m_attributes.maxValue, m_invertedMaximum);
}

KnownValues ImageFile::takeKnown()
{
    return {std::exchange(m_statsList, {}), m_attributes.maxValue, m_largestIsCounted, m_invertedMaximum};
}

void ImageFile::setKnown(KnownValues known)
{
    m_statsList = std::move(known.stats);
    m_attributes.maxValue = known.largest;
    m_largestIsCounted = known.largestIsCounted;
    m_invertedMaximum = known.largestInverted;
}

void ImageFile::forgetValues()
{
    forgetStatistics();
    m_attributes.maxValue = m_invertedMaximum = -1;
    m_largestIsCounted = false;
}

std::int64_t ImageFile::sampleCount() const
{
    if (!isLoaded())
        return 0;
    return checkedProduct({m_attributes.x, m_attributes.y, m_attributes.z, m_attributes.channels})
        .value_or(0);
}

QString ImageFile::fileName() const
{
    if (m_io == nullptr)
        return QStringLiteral("none");
    const QStringList names = m_io->fileNames();
    if (names.isEmpty())
        return QStringLiteral("Untitled");
    if (names.size() == 1)
        return names.first();
    return names.first() + QLatin1String(" ... ") + names.last();
}

QStringList ImageFile::fileNames() const
{
    return m_io != nullptr ? m_io->fileNames() : QStringList{QStringLiteral("none")};
}

QStringList ImageFile::filePaths() const
{
    return m_io != nullptr ? m_io->filePaths() : QStringList{QStringLiteral("none")};
}

std::int64_t ImageFile::index(int x, int y, int z, int channel) const
{
    const ImageAttributes& a = m_attributes;
    return ((static_cast<std::int64_t>(z) * a.x * a.y) + static_cast<std::int64_t>(y) * a.x + x) *
               a.channels +
           channel;
}

std::uint8_t ImageFile::voxel(int x, int y, int z) const { return stackData()[index(x, y, z, 0)]; }

int ImageFile::voxelValue(int x, int y, int z, int channel) const
{
    if (sampleCount() == 0 || channel < 0 || channel >= m_attributes.channels)
        return 0;
    return m_attributes.hasWords() ? *voxel16(x, y, z, channel) : *voxel8(x, y, z, channel);
}

namespace {

/// The nearest coordinate inside; 0 for an axis without extent.
int clamped(int value, int size) { return std::max(0, std::min(value, size - 1)); }

/// 0 for a coordinate outside, which is logged under the axis' name.
int checked(int value, int size, char axis)
{
    if (value >= 0 && value < size)
        return value;
    logDebug("%c out of bounds %c %d %cmax %d", axis, axis, value, axis, size - 1);
    return 0;
}

} // namespace

const std::uint8_t* ImageFile::voxel8(int x, int y, int z, int channel) const
{
    const ImageAttributes& a = m_attributes;
    return stackData() + index(clamped(x, a.x), clamped(y, a.y), clamped(z, a.z), channel);
}

const std::uint16_t* ImageFile::voxel16(int x, int y, int z, int channel) const
{
    const ImageAttributes& a = m_attributes;
    return stackData16() + index(clamped(x, a.x), clamped(y, a.y), clamped(z, a.z), channel);
}

std::int64_t ImageFile::checkedIndex(int x, int y, int z, int channel) const
{
    const ImageAttributes& a = m_attributes;
    const int insideX = checked(x, a.x, 'X');
    const int insideY = checked(y, a.y, 'Y');
    const int insideZ = checked(z, a.z, 'Z');
    // Only reported: the channel is used as it is.
    if (channel < 0 || channel >= a.channels)
        logDebug("Channel out of bounds");
    return index(insideX, insideY, insideZ, channel);
}

const std::uint8_t* ImageFile::checkedVoxel8(int x, int y, int z, int channel) const
{
    return stackData() + checkedIndex(x, y, z, channel);
}

const std::uint16_t* ImageFile::checkedVoxel16(int x, int y, int z, int channel) const
{
    return stackData16() + checkedIndex(x, y, z, channel);
}

int ImageFile::nextPow2(int n) { return next2(n); }

} // namespace tirn
