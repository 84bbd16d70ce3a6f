#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include <QDateTime>
#include <QDomDocument>
#include <QStringList>

#include "base/progress.h"
#include "gl/glnames.h"
#include "gl/renderthreadkind.h"
#include "gl/texturemaps.h"
#include "image/imagefile.h"
#include "volume/brick.h"
#include "volume/channel.h"
#include "volume/slicefiller.h"
#include "volume/stackgeometry.h"
#include "volume/stackid.h"

namespace tirn {

/// What the card and the settings prescribe for a new volume.
struct VolumeOptions
{
    RenderThreadKind kind = RenderThreadKind::FragmentProgram;
    /// Longest side of a texture block.
    int texLimit2D = 1024;
    int texLimit3D = 512;
    /// Let each image's voxels go after encoding.
    bool conserveMemory = false;
    /// Where depth curves go; null where there is no card.
    CurveTextures* curveTextures = nullptr;
};

/// The part of a volume that is drawn, in slices, inclusive.
struct CutBox
{
    int xMin = 0;
    int xMax = 0;
    int yMin = 0;
    int yMax = 0;
    int zMin = 0;
    int zMax = 0;

    bool operator==(const CutBox&) const = default;
};

/// The scale of a volume along each axis.
struct AxisScale
{
    double x = 1.0;
    double y = 1.0;
    double z = 1.0;

    double& operator[](int axis) { return axis == 0 ? x : axis == 1 ? y : z; }
    double operator[](int axis) const { return axis == 0 ? x : axis == 1 ? y : z; }
    bool operator==(const AxisScale&) const = default;
};
inline AxisScale operator*(const AxisScale& scale, double factor)
{
    return {scale.x * factor, scale.y * factor, scale.z * factor};
}

/// The scales that a user may choose; 0 and less would turn the order of the slices round.
inline constexpr double kLeastScale = 0.01;
inline constexpr double kMostScale = 100.0;

/// The nearest scale that may be chosen; 1 for what is no number.
inline double clampedScale(double scale)
{
    return std::isnan(scale) ? 1.0 : std::clamp(scale, kLeastScale, kMostScale);
}
inline AxisScale clampedScale(const AxisScale& scale)
{
    return {clampedScale(scale.x), clampedScale(scale.y), clampedScale(scale.z)};
}

/// What was done to the data since they were read, and is done again whenever they are read again.
struct DataTransforms
{
    bool flipX = false;
    bool flipY = false;
    bool flipZ = false;
    bool inverted = false;

    bool any() const { return flipX || flipY || flipZ || inverted; }
    /// Those that stand in one of the two only: a transform done twice is undone.
    friend DataTransforms operator^(const DataTransforms& a, const DataTransforms& b)
    {
        return {a.flipX != b.flipX, a.flipY != b.flipY, a.flipZ != b.flipZ, a.inverted != b.inverted};
    }
    /// Mirrors along x, y and z, in this order, and inverts the voxels of an image.
    void applyTo(ImageFile& image, const Progress& progress = {}) const;
    bool operator==(const DataTransforms&) const = default;
};

/// Runs what changes textures while nobody draws with them.
using TextureGate = std::function<void(const std::function<void()>& change)>;

/// Changes the voxels of an image; false, with the image as it was, when cancelled or impossible.
using VoxelChange = std::function<bool(ImageFile& image, const Progress& progress)>;

/// An image of a volume, and which of its channels is meant; no image for what is not there.
struct ChannelImage
{
    ImageFile* image = nullptr;
    int channel = 0;
    /// The image's place among those of the volume.
    int number = -1;
};

/// Seconds spent filling buffers and inside the driver.
struct EncodeTimes
{
    double fill = 0;
    double upload = 0;
};

class VoxelArray;

/// Keeps the voxels of some images from being read for drawing while it lives: its owner changes them.
class VoxelWork
{
public:
    VoxelWork(VoxelArray& array, std::vector<int> images);
    ~VoxelWork();
    VoxelWork(const VoxelWork&) = delete;
    VoxelWork& operator=(const VoxelWork&) = delete;

private:
    VoxelArray& m_array;
    std::vector<int> m_images;
};

/// One loaded volume as the renderer sees it: what the stack is, one Channel for each colour, one ImageFile
/// for each file, and the textures and quads made from them.
///
/// Everything that makes or deletes GL names needs a current context of the share group, the destructor too.
/// Display fields (scale, cut box, time point, channel displays) change under the scene's lock.
class VoxelArray
{
public:
    explicit VoxelArray(const VolumeOptions& options);
    /// With one channel and a cut box of the whole of x * y * z voxels.
    VoxelArray(int x, int y, int z, const VolumeOptions& options);
    ~VoxelArray();
    VoxelArray(const VoxelArray&) = delete;
    VoxelArray& operator=(const VoxelArray&) = delete;

    StackId id() const { return m_id; }
    /// The stack description: sizes, voxel sizes in microns, channels, depth, largest value.
    ImageAttributes& stack() { return m_stack; }
    const ImageAttributes& stack() const { return m_stack; }
    int minValue() const { return m_minValue; }
    std::vector<Channel>& channels() { return m_channels; }
    const std::vector<Channel>& channels() const { return m_channels; }
    void setChannelCount(int count);
    /// The images in time-major order.
    const std::vector<std::shared_ptr<ImageFile>>& images() const { return m_images; }
    /// The image that holds a channel at a time point, together with the other channels or alone.
    ChannelImage imageOf(int channel, int timePoint) const;
    bool hasOneChannelAnImage() const;
    void appendImage(std::shared_ptr<ImageFile> image) { m_images.push_back(std::move(image)); }

    int width() const { return m_stack.x; }
    int height() const { return m_stack.y; }
    int depth() const { return m_stack.z; }
    /// The number of z slices that are drawn: more than `depth` when a 3D stack is resliced.
    int finalDepth() const { return m_geometry.finalZ > depth() ? m_geometry.finalZ : depth(); }
    int bitsPerSample() const { return m_stack.bitDepth; }
    /// The bits that the data use, rounded: 12 for a maximum of 3000 as of 4095.
    int significantBits() const { return m_stack.significantBits(); }
    int channelCount() const { return static_cast<int>(m_channels.size()); }
    int timePointCount() const { return m_timePoints; }
    GLenum textureTarget() const { return m_textureTarget; }
    const StackGeometry& geometry() const { return m_geometry; }
    /// Strides into `textures` for the 2D target.
    std::int64_t channelOffset(int channel) const;
    std::int64_t timeOffset(int time) const;
    /// Textures of one channel at one time point, in whichever target.
    std::int64_t texturesPerChannel() const;
    /// Bytes of voxels, textures and bookkeeping.
    std::int64_t memoryUsed() const;
    QString name() const;

    int timePoint() const { return m_timePoint; }
    /// A negative t means the last time point; a t past the end begins again.
    void setTimePoint(int t);
    void setTimePoints(int count);
    QStringList& timeLabels() { return m_timeLabels; }
    const QStringList& timeLabels() const { return m_timeLabels; }
    const std::vector<QDateTime>& timeStamps() const { return m_timeStamps; }
    /// True when the quads of the encoded target are all there.
    bool isComplete() const;

    /// Encodes the next image. `finalZ` is the depth that a 3D stack is resliced to, -1 for none. False, with
    /// the reason logged, when the stack cannot be encoded.
    bool encode(GLenum target, int finalZ, const Progress& progress = {});
    /// Encodes all images through ImageFile's own encoder, which knows no blocks.
    bool encodeAll(GLenum target, int finalZ);
    /// The same, for the next image of a stack that grows.
    bool encodeNext(GLenum target, int finalZ);
    /// Reads the voxels of image i again, if it has none, and transforms them. False when there is no such
    /// image or its voxels cannot be read.
    bool loadVoxels(int i, const Progress& progress = {});
    /// Replaces the contents of image i's textures, one batch after the other through the gate. False when
    /// there is no such image or its voxels cannot be read, and, with some textures replaced, when it was
    /// cancelled or ran out of memory.
    bool reencode(int i, const Progress& progress = {}, const TextureGate& gate = {});
    int encodedImages() const { return m_encodedImages; }
    /// Grows whenever voxels, and with them their textures, become others.
    std::int64_t voxelRevision() const { return m_voxelRevision; }
    /// Grows whenever the voxels of image i become others.
    std::int64_t imageRevision(int i) const;
    /// Runs `read` with image i while nobody changes its voxels; any thread. False, and nothing was done,
    /// while it has none in memory or a VoxelWork holds it.
    bool readVoxels(int i, const std::function<void(const ImageFile& image)>& read) const;
    /// Goes on with the first images alone, one a time point, as if they had been all there were to encode.
    void keepImages(int count);
    const EncodeTimes& encodeTimes() const { return m_encodeTimes; }

    /// Mirrors the data along 'X', 'Y' or 'Z' (either case), or inverts them, and encodes them again. On
    /// false, also when cancelled, everything is as it was.
    bool flip(char axis, const Progress& progress = {});
    bool invert(const Progress& progress = {});
    const DataTransforms& transforms() const { return m_transforms; }
    void setTransforms(const DataTransforms& transforms) { m_transforms = transforms; }
    bool flipX() const { return m_transforms.flipX; }
    bool flipY() const { return m_transforms.flipY; }
    bool flipZ() const { return m_transforms.flipZ; }
    bool inverted() const { return m_transforms.inverted; }
    /// Images have voxels only while they are worked on.
    bool conservesMemory() const { return m_options.conserveMemory; }
    /// What image i's textures show beyond its file and the transforms, where memory is conserved; null for
    /// nothing.
    const VoxelChange& shownChange(int i) const;
    void setShownChange(int i, VoxelChange change);

    /// Gives every channel a plain depth correction curve of the stack's depth.
    void resetCurves();

    /// Takes the statistics of the images over to the channels, summed over time points, and the largest
    /// value over to the description.
    void copyStatistics();

    /// The `stack` element of a session; paths are written relative to the session file's directory.
    QDomElement saveSession(QDomDocument& document, const QString& sessionFileName) const;

    const TextureNames& textures() const { return m_textures; }
    const ListNames& quads() const { return m_quads; }
    const std::vector<std::unique_ptr<Brick>>& bricks() const { return m_bricks; }
    /// The box and its faces: display lists, 0 before encoding.
    enum BoxList { WholeBox, FrontFace, BackFace, LeftFace, RightFace, BottomFace, TopFace, BoxListCount };
    GLuint boxList(BoxList which) const { return m_boxLists.empty() ? 0 : m_boxLists[which]; }

    /// Shows the whole stack.
    void resetCut();

    AxisScale scale;
    AxisScale baseScale;
    bool preserveScaleRatio = false;
    CutBox cut;
    /// The slices that were loaded, and the in-plane reduction of the load.
    int sliceFirst = 0;
    int sliceLast = 0;
    int sliceStep = 0;
    int subsample = 1;

private:
    friend class VoxelWork;
    struct EncodeJob;

    bool prepareEncode(GLenum target, const char* badStack);
    bool alreadyEncoded() const;
    GLenum internalFormat() const;
    void beginEncoding(int finalZ);
    void makeQuads(int finalZ);
    void makeBoxLists();
    void takeTimeStamp(const ImageFile& image);
    enum class Encoding { Done, Stopped, UnknownDepth };
    Encoding encodeImage(ImageFile& image, std::size_t* reuseFrom, const Progress& progress,
                         const TextureGate& gate);
    void encode2D(EncodeJob& job);
    void encode3D(EncodeJob& job);
    void putTexture(EncodeJob& job, TextureSize size, const void* texels);
    bool takeOwnEncoding(ImageFile& image);
    void finishEncoding();
    void letVoxelsGo(ImageFile& image);
    QStringList filesOfTimePoint(int time) const;
    void takeStatistics(int channel);
    void sumStatistics(int channel);

    const StackId m_id;
    ImageAttributes m_stack;
    int m_minValue = -1;
    std::vector<Channel> m_channels;
    QStringList m_timeLabels = {"00:00:00"};
    std::vector<QDateTime> m_timeStamps;
    StackGeometry m_geometry;
    DataTransforms m_transforms;
    std::vector<VoxelChange> m_shownChanges;
    ListNames m_boxLists;
    std::vector<std::unique_ptr<Brick>> m_bricks;
    TextureNames m_textures;
    ListNames m_quads;
    std::vector<std::shared_ptr<ImageFile>> m_images;
    VolumeOptions m_options;
    int m_timePoint = 0;
    int m_timePoints = 0;
    int m_encodedImages = 0;
    std::int64_t m_voxelRevision = 0;
    /// Guards the two below, and the voxels while they are read for drawing.
    mutable std::mutex m_voxelMutex;
    std::vector<std::int64_t> m_imageRevisions;
    std::vector<int> m_imagesInWork;
    GLenum m_textureTarget = GL_TEXTURE_2D;
    EncodeTimes m_encodeTimes;
};

} // namespace tirn
