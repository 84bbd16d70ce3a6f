#include "threads/loaddescription.h"

#include <algorithm>

namespace tirn {

LoadDescription::LoadDescription(int defaultEncode) : m_defaultEncode(defaultEncode) { useDefaultTarget(); }

void LoadDescription::useDefaultTarget()
{
    if (m_defaultEncode == 0)
        textureTarget = GL_TEXTURE_2D;
    else if (m_defaultEncode == 1)
        textureTarget = GL_TEXTURE_3D;
}

void LoadDescription::setWholeStack(bool isPartial)
{
    partial = isPartial;
    if (partial)
        return;
    first = 0;
    last = 0;
    step = 1;
    subsample = 0;
    reslice = false;
    conserveMemory = false;
    useDefaultTarget();
}

void LoadDescription::setRange(int firstLayer, int lastLayer, int layerStep, int subsampling, GLenum target,
                               bool forceReslice, int resliceSlices, bool conserve)
{
    partial = true;
    first = firstLayer;
    last = lastLayer;
    step = layerStep;
    subsample = subsampling;
    textureTarget = target;
    reslice = forceReslice;
    resliceZ = resliceSlices;
    conserveMemory = conserve;
}

void LoadDescription::setRaw(std::int64_t headerOffset, int x, int y, int z, int channelCount, int bitDepth)
{
    raw = true;
    rawLayout = {headerOffset, x, y, z, bitDepth, rawLayout.swapBytes};
    channels = channelCount;
}

void LoadDescription::setVoxelDimensions(double x, double y, double z)
{
    const bool known = x >= 0 && y >= 0 && z >= 0;
    dimX = known ? x : -1;
    dimY = known ? y : -1;
    dimZ = known ? z : -1;
}

void LoadDescription::setCrop(const CropLimits& limits)
{
    const bool known = limits.xMin >= 0 && limits.xMax >= 0 && limits.yMin >= 0 && limits.yMax >= 0 &&
                       limits.zMin >= 0 && limits.zMax >= 0;
    crop = known ? limits : CropLimits();
}

void LoadDescription::setSession(const SessionStack& stack)
{
    // Anything but the two targets that a volume knows counts as the first.
    setRange(stack.first, stack.last, stack.step, stack.subsample,
             stack.encoding == kSessionMaps3D ? GL_TEXTURE_3D : GL_TEXTURE_2D, stack.reslicedTo.has_value(),
             stack.reslicedTo.value_or(-1), stack.conserveMemory);
    raw = stack.raw.has_value();
    rawLayout = stack.raw.value_or(RawLayout());
    crop = stack.cut;
    sessionSizes = stack.sizes;
    isOldSession = stack.isOld;
    timePoints = static_cast<int>(stack.timePoints.size());
    channels = static_cast<int>(stack.channels.size());
    for (const SessionTimePoint& timePoint : stack.timePoints) {
        if (!timePoint.label.isNull())
            labels.append(timePoint.label);
        filesToLoad.push_back(timePoint.files);
    }
    for (const SessionChannel& channel : stack.channels) {
        paletteIndexes.push_back(channel.palette);
        secondPaletteIndexes.push_back(channel.secondPalette);
        channelStates.push_back(channel.state);
        if (channel.curve)
            zCurves.push_back(*channel.curve);
    }
}

void LoadDescription::arrangeSessionFiles(bool isLayered, int channelsOfFile)
{
    if (channels < 2 || channelsOfFile != 1)
        return;
    if (isOldSession)
        joinChannelsOfOldSession();
    const bool split = std::all_of(filesToLoad.begin(), filesToLoad.end(), [this](const QStringList& files) {
        return !files.isEmpty() && files.size() % channels == 0;
    });
    if (!isLayered || !split)
        return;
    std::vector<QStringList> byChannel;
    for (const QStringList& files : filesToLoad) {
        const int layers = files.size() / channels;
        for (int c = 0; c < channels; ++c)
            byChannel.push_back(files.mid(c * layers, layers));
    }
    filesToLoad = std::move(byChannel);
}

/// Where each channel was an image of its own, an old session took it for a time point of its own.
void LoadDescription::joinChannelsOfOldSession()
{
    const bool isFileAChannel = std::all_of(filesToLoad.begin(), filesToLoad.end(),
                                            [](const QStringList& files) { return files.size() == 1; });
    if (!isFileAChannel || timePoints % channels != 0)
        return;
    timePoints /= channels;
    std::vector<QStringList> joined(static_cast<std::size_t>(timePoints));
    for (std::size_t i = 0; i < filesToLoad.size(); ++i)
        joined[i / static_cast<std::size_t>(channels)].append(filesToLoad[i]);
    filesToLoad = std::move(joined);
    // Labels were counted by time points all the same.
    labels = labels.mid(0, timePoints);
}

} // namespace tirn
