#pragma once

#include <array>
#include <functional>
#include <optional>
#include <vector>

#include <QDomDocument>
#include <QStringList>

#include "depth/zcurve.h"
#include "image/rawlayout.h"

namespace tirn {

/// Asks for another file in place of one that is missing; changes the text and returns true, or returns false
/// when there is none. Called on the thread that reads.
using MissingFileQuestion = std::function<bool(QDomText&)>;

/// Six inclusive limits in voxels; -1 for none.
struct CropLimits
{
    int xMin = -1;
    int xMax = -1;
    int yMin = -1;
    int yMax = -1;
    int zMin = -1;
    int zMax = -1;

    bool operator==(const CropLimits&) const = default;
};

/// The number of an encoding as 2D texture maps and as 3D ones; they are those of the texture targets.
inline constexpr int kSessionMaps2D = 3553;
inline constexpr int kSessionMaps3D = 32879;

struct SessionTimePoint
{
    /// Null for none.
    QString label;
    /// The paths of all channels' files, channel by channel.
    QStringList files;
};

/// Scale and voxel size along x, y and z; -1 for what is not known.
struct SessionSizes
{
    std::array<double, 3> scale = {-1, -1, -1};
    bool preserveScaleRatio = false;
    /// In microns.
    std::array<double, 3> voxelSize = {-1, -1, -1};
};

struct SessionChannel
{
    int palette = 0;
    /// The one that it swaps with.
    int secondPalette = 0;
    /// The number of a ChannelState.
    int state = 0;
    /// None for a plain one.
    std::optional<ZCurve> curve;
};

/// A stack as a session remembers it: where its files are, how they were loaded, and how it is shown.
struct SessionStack
{
    int first = 0;
    int last = 0;
    int step = 0;
    int subsample = 0;
    int encoding = kSessionMaps2D;
    bool conserveMemory = false;
    /// The depth that the stack was resliced to.
    std::optional<int> reslicedTo;
    CropLimits cut;
    SessionSizes sizes;
    /// The files are headerless.
    std::optional<RawLayout> raw;
    std::vector<SessionTimePoint> timePoints;
    std::vector<SessionChannel> channels;
    /// Written with a time point for each image, even where an image is one channel, and with the voxel size
    /// of x for all axes.
    bool isOld = false;
};

/// The `stack` element of a session in a directory, which file names are relative to.
QDomElement writeSessionStack(QDomDocument& document, const SessionStack& stack, const QString& directory);

/// Reads one; file names are relative to the current directory. Nothing when channels or time points are
/// missing, which is logged, or when a missing file found no other one.
std::optional<SessionStack> readSessionStack(const QDomElement& element,
                                             const MissingFileQuestion& fixMissingFile);

} // namespace tirn
