#include "volume/voxelarray.h"

#include <algorithm>
#include <atomic>

#include <QFileInfo>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/stopwatch.h"
#include "image/filters/pointfilters.h"
#include "session/sessionstack.h"
#include "volume/volumeedit.h"

namespace tirn {

namespace {

const char* const kNoTime = "00:00:00";

StackId nextStackId()
{
    static std::atomic<std::uint64_t> last = 0;
    return StackId{++last};
}

} // namespace

VoxelArray::VoxelArray(const VolumeOptions& options) : m_id(nextStackId()), m_options(options) {}

VoxelArray::VoxelArray(int x, int y, int z, const VolumeOptions& options) : VoxelArray(options)
{
    m_stack.x = x;
    m_stack.y = y;
    m_stack.z = z;
    setChannelCount(1);
    resetCut();
}

VoxelArray::~VoxelArray()
{
    logDebug("Deleting VoxelArray");
    Stopwatch timer;
    m_textures.clear();
    // Seconds, whatever the label says.
    logDebug("deleted textures in %fms", timer.restart());
    if (!m_quads.empty()) {
        m_quads.clear();
        logDebug("deleted quads in %fms", timer.restart());
    }
    m_boxLists.clear();
    m_bricks.clear();
    const auto images = static_cast<int>(m_images.size());
    m_images.clear();
    logDebug("deleted %d ImageFiles in %fms", images, timer.seconds());
    m_channels.clear();
    m_timeStamps.clear();
    logDebug("deleting ImageFile objects %s", qPrintable(plainNumber(timer.restart())));
    logDebug("Deleted textures and quads");
}

void VoxelArray::setChannelCount(int count)
{
    const auto wanted = static_cast<std::size_t>(std::max(0, count));
    while (m_channels.size() > wanted)
        m_channels.pop_back();
    while (m_channels.size() < wanted)
        m_channels.emplace_back(m_options.curveTextures);
}

void VoxelArray::resetCurves()
{
    for (Channel& channel : m_channels)
        channel.zCurve.setDepth(depth());
}

std::int64_t VoxelArray::texturesPerChannel() const
{
    return m_textureTarget == GL_TEXTURE_3D ? m_geometry.blocks() : m_geometry.slicesOfAllAxes();
}

std::int64_t VoxelArray::channelOffset(int channel) const
{
    return static_cast<std::int64_t>(channel) * m_geometry.slicesOfAllAxes();
}

std::int64_t VoxelArray::timeOffset(int time) const { return channelOffset(channelCount()) * time; }

std::int64_t VoxelArray::memoryUsed() const
{
    const std::int64_t x = width();
    const std::int64_t y = height();
    const std::int64_t z = depth();
    const std::int64_t powX = next2(width());
    const std::int64_t powY = next2(height());
    const std::int64_t powZ = next2(depth());
    const std::int64_t samples =
        static_cast<std::int64_t>(channelCount()) * m_stack.bytesPerSample() * m_timePoints;
    const std::int64_t voxels = m_options.conserveMemory ? 0 : x * y * z * samples;
    const std::int64_t textures = m_textureTarget == GL_TEXTURE_2D
                                      ? (powX * powZ * y + powY * powZ * x + powX * powY * z) * samples
                                      : powX * powY * powZ * samples;
    return voxels + textures + m_timePoints * 152LL + m_timePoints * channelCount() * 88LL;
}

QString VoxelArray::name() const
{
    if (m_images.empty())
        return "none";
    if (m_images.size() == 1)
        return m_images.front()->fileName();
    return m_images.front()->fileName() + " ... " + m_images.back()->fileName();
}

void VoxelArray::setTimePoint(int t)
{
    if (m_timePoints < 1)
        m_timePoint = 0;
    else
        m_timePoint = t < 0 ? m_timePoints - 1 : t % m_timePoints;
}

void VoxelArray::setTimePoints(int count)
{
    m_timePoints = std::max(0, count);
    m_timeLabels.clear();
    for (int i = 0; i < m_timePoints; ++i)
        m_timeLabels.append(kNoTime);
    m_timePoint = std::min(m_timePoint, std::max(0, m_timePoints - 1));
}

bool VoxelArray::isComplete() const
{
    const int slices = width() + height() + (m_textureTarget == GL_TEXTURE_3D ? finalDepth() : depth());
    return !m_quads.empty() && m_quads.size() >= static_cast<std::size_t>(slices);
}

void VoxelArray::resetCut() { cut = {0, width() - 1, 0, height() - 1, 0, finalDepth() - 1}; }

void DataTransforms::applyTo(ImageFile& image, const Progress& progress) const
{
    if (flipX)
        image.flip('X', progress);
    if (flipY)
        image.flip('Y', progress);
    if (flipZ)
        image.flip('Z', progress);
    if (inverted)
        invert(image, progress);
}

const VoxelChange& VoxelArray::shownChange(int i) const
{
    static const VoxelChange none;
    return i >= 0 && static_cast<std::size_t>(i) < m_shownChanges.size()
               ? m_shownChanges[static_cast<std::size_t>(i)]
               : none;
}

void VoxelArray::setShownChange(int i, VoxelChange change)
{
    if (i < 0 || static_cast<std::size_t>(i) >= m_images.size())
        return;
    m_shownChanges.resize(m_images.size());
    m_shownChanges[static_cast<std::size_t>(i)] = std::move(change);
}

bool VoxelArray::flip(char axis, const Progress& progress)
{
    const char upper = axis >= 'a' ? static_cast<char>(axis - 'a' + 'A') : axis;
    if (upper < 'X' || upper > 'Z')
        return false;
    return applyEdit(*this, flipEdit(upper), {progress, {}}).outcome == JobOutcome::Done;
}

bool VoxelArray::invert(const Progress& progress)
{
    return applyEdit(*this, invertEdit(), {progress, {}}).outcome == JobOutcome::Done;
}

bool VoxelArray::hasOneChannelAnImage() const
{
    return channelCount() > 1 && !m_images.empty() && m_images.front()->attributes().channels == 1;
}

ChannelImage VoxelArray::imageOf(int channel, int timePoint) const
{
    const bool alone = hasOneChannelAnImage();
    const std::int64_t number = alone ? std::int64_t{timePoint} * channelCount() + channel : timePoint;
    if (channel < 0 || channel >= channelCount() || timePoint < 0 || number >= std::ssize(m_images))
        return {};
    return {m_images[static_cast<std::size_t>(number)].get(), alone ? 0 : channel, static_cast<int>(number)};
}

std::int64_t VoxelArray::imageRevision(int i) const
{
    const std::scoped_lock lock(m_voxelMutex);
    const auto index = static_cast<std::size_t>(i);
    return index < m_imageRevisions.size() ? m_imageRevisions[index] : 0;
}

bool VoxelArray::readVoxels(int i, const std::function<void(const ImageFile& image)>& read) const
{
    const std::scoped_lock lock(m_voxelMutex);
    if (i < 0 || i >= std::ssize(m_images) || std::count(m_imagesInWork.begin(), m_imagesInWork.end(), i) > 0)
        return false;
    const ImageFile& image = *m_images[static_cast<std::size_t>(i)];
    if (!image.isLoaded())
        return false;
    read(image);
    return true;
}

VoxelWork::VoxelWork(VoxelArray& array, std::vector<int> images) : m_array(array), m_images(std::move(images))
{
    const std::scoped_lock lock(m_array.m_voxelMutex);
    m_array.m_imagesInWork.insert(m_array.m_imagesInWork.end(), m_images.begin(), m_images.end());
}

VoxelWork::~VoxelWork()
{
    const std::scoped_lock lock(m_array.m_voxelMutex);
    for (const int image : m_images)
        m_array.m_imagesInWork.erase(
            std::find(m_array.m_imagesInWork.begin(), m_array.m_imagesInWork.end(), image));
}

void VoxelArray::copyStatistics()
{
    if (m_images.empty() || m_channels.empty())
        return;
    const bool sums = imageOf(channelCount() - 1, 1).image != nullptr;
    if (m_images.size() == 1)
        logDebug("About to copy %d channels %d file scenario", channelCount(), 1);
    else if (!sums)
        logDebug("About to copy 1 channel per file scenario");
    else if (m_images.front()->attributes().channels == 1)
        logDebug("multi channel, multi timepoint, 1 ch per file");
    m_stack.maxValue = -1;
    m_minValue = sums ? 999999999 : m_minValue;
    for (int c = 0; c < channelCount(); ++c) {
        sums ? sumStatistics(c) : takeStatistics(c);
        Channel& channel = m_channels[static_cast<std::size_t>(c)];
        channel.minValue = channel.stats.min;
        channel.maxValue = channel.stats.max;
    }
}

void VoxelArray::takeStatistics(int channel)
{
    const ChannelImage from = imageOf(channel, 0);
    if (from.image == nullptr)
        return;
    StackStats& stats = m_channels[static_cast<std::size_t>(channel)].stats;
    stats = from.image->stats(from.channel);
    // A file may state more than its voxels reach.
    m_stack.maxValue = std::max({m_stack.maxValue, from.image->attributes().maxValue, int{stats.max}});
}

void VoxelArray::sumStatistics(int channel)
{
    std::vector<const StackStats*> parts;
    for (ChannelImage from = imageOf(channel, 0); from.image != nullptr;
         from = imageOf(channel, static_cast<int>(parts.size()))) {
        if (from.image->attributes().channels == 1)
            logDebug("adding file %d of %d", from.number, static_cast<int>(m_images.size()));
        parts.push_back(&from.image->stats(from.channel));
        m_stack.maxValue = std::max<int>(m_stack.maxValue, parts.back()->max);
        m_minValue = std::min<int>(m_minValue, parts.back()->min);
    }
    const std::size_t bins = std::size_t{1} << std::clamp(m_stack.bitDepth, 0, 16);
    m_channels[static_cast<std::size_t>(channel)].stats = summedStats(channel, bins, parts);
}

namespace {

SessionChannel sessionChannel(const Channel& channel)
{
    // What the user chose, whichever of the two palettes is drawn just now.
    return {chosenPalette(channel.display), secondPalette(channel.display),
            static_cast<int>(channel.display.state), channel.zCurve};
}

} // namespace

/// The files of all channels, channel by channel.
QStringList VoxelArray::filesOfTimePoint(int time) const
{
    QStringList files;
    for (int c = 0; c < (hasOneChannelAnImage() ? channelCount() : 1); ++c) {
        if (const ImageFile* image = imageOf(c, time).image)
            files.append(image->filePaths());
    }
    return files;
}

QDomElement VoxelArray::saveSession(QDomDocument& document, const QString& sessionFileName) const
{
    SessionStack session;
    const ImageFile* first = m_images.empty() ? nullptr : m_images.front().get();
    session.first = first != nullptr ? first->firstLayer() : -1;
    session.last = first != nullptr ? first->lastLayer() : -1;
    session.step = first != nullptr ? first->layerStep() : -1;
    session.subsample = subsample;
    session.encoding = static_cast<int>(m_textureTarget);
    session.conserveMemory = m_options.conserveMemory;
    if (first != nullptr)
        session.raw = first->rawLayout();
    if (m_geometry.finalZ != -1)
        session.reslicedTo = m_geometry.finalZ;
    session.cut = {cut.xMin, cut.xMax, cut.yMin, cut.yMax, cut.zMin, cut.zMax};
    session.sizes = {
        {scale.x, scale.y, scale.z}, preserveScaleRatio, {m_stack.dimX, m_stack.dimY, m_stack.dimZ}};
    for (int t = 0; imageOf(0, t).image != nullptr; ++t)
        session.timePoints.push_back({m_timeLabels.value(t, kNoTime), filesOfTimePoint(t)});
    for (const Channel& channel : m_channels)
        session.channels.push_back(sessionChannel(channel));
    return writeSessionStack(document, session, QFileInfo(sessionFileName).absolutePath());
}

} // namespace tirn
