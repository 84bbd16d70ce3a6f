#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <QDomElement>
#include <QStringList>

#include "depth/zcurve.h"
#include "gl/gltable.h"
#include "image/imageattributes.h"
#include "image/rawlayout.h"
#include "session/sessionstack.h"

namespace tirn {

/// What the command line says of a load besides its files.
struct NamedLoad
{
    /// Channel c gets palette (first + c) modulo the number of palettes, unless the line has an index for it.
    int firstPalette = 0;
    std::vector<int> paletteIds;
    /// Besides the stack the line names one palette, and no more; its name, for the log.
    QString palette;

    bool operator==(const NamedLoad&) const = default;
};

/// What one load is to make: whoever asks for a load fills one and gives it away.
class LoadDescription
{
public:
    /// `defaultEncode` is the preference: 0 for 2D texture maps, 1 for 3D ones; any other leaves the target.
    explicit LoadDescription(int defaultEncode = 0);

    /// With false the whole stack is read and all that `setRange` sets has its default again.
    void setWholeStack(bool isPartial);
    /// Layers first to last, inclusive, every step-th; a sub-sampling above 1 reduces the stack by that
    /// factor; `resliceSlices` counts with `forceReslice`.
    void setRange(int firstLayer, int lastLayer, int layerStep, int subsampling, GLenum target,
                  bool forceReslice, int resliceSlices, bool conserve);
    /// The files are headerless.
    void setRaw(std::int64_t headerOffset, int x, int y, int z, int channelCount, int bitDepth);
    /// In microns; unless each is 0 or above all are forgotten.
    void setVoxelDimensions(double x, double y, double z);
    /// Unless each is 0 or above all are forgotten.
    void setCrop(const CropLimits& limits);
    /// All that a session says of a stack, but for the shape that `arrangeSessionFiles` gives its files.
    void setSession(const SessionStack& stack);
    /// Puts the files of a session where a load looks for them, once it is known what they are: `isLayered`
    /// where a file is a layer, and how many channels a file, or the stack of such layers, has by itself.
    void arrangeSessionFiles(bool isLayered, int channelsOfFile);

    /// The `stack` element of a session, or null.
    QDomElement session;
    /// Labels of the time points, from a session.
    QStringList labels;
    bool conserveMemory = false;
    /// A range of layers was given.
    bool partial = false;
    /// Encode with a forced count of z slices.
    bool reslice = false;
    bool raw = false;
    int channels = 1;
    int timePoints = 1;
    int first = 0;
    int last = 0;
    int step = 1;
    int subsample = 0;
    int resliceZ = -1;
    CropLimits crop;
    /// Voxel size in microns, -1 where the file's own counts.
    double dimX = -1;
    double dimY = -1;
    double dimZ = -1;
    RawLayout rawLayout;
    GLenum textureTarget = GL_TEXTURE_2D;
    /// `Unknown`: the first file tells.
    ImageType fileType = ImageType::Unknown;
    /// An element for each stack to open: one name, or the names of its layers or channels. For a TIFF series
    /// with several channels an element for each channel of each time point, at channel + channels * time.
    std::vector<QStringList> filesToLoad;
    /// The names of the only element were typed when the program was started: each is a channel when the
    /// first has one; otherwise the first is the stack.
    std::optional<NamedLoad> named;
    /// From a session.
    std::optional<SessionSizes> sessionSizes;
    bool isOldSession = false;
    /// One for each channel, from a session.
    std::vector<int> paletteIndexes;
    std::vector<int> secondPaletteIndexes;
    std::vector<int> channelStates;
    std::vector<ZCurve> zCurves;

private:
    void useDefaultTarget();
    void joinChannelsOfOldSession();

    int m_defaultEncode = 0;
};

} // namespace tirn
