#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <QStringList>

#include "base/progress.h"
#include "base/voxelbuffer.h"
#include "image/imageattributes.h"
#include "image/rawlayout.h"
#include "image/statistics/stackstats.h"

namespace tirn {

class StackReader;
class TextureSink;

/// What is known of the values of voxels.
struct KnownValues
{
    std::vector<StackStats> stats;
    int largest = -1;
    /// It was counted, not stated by someone who knows.
    bool largestIsCounted = false;
    /// The largest once the voxels are inverted.
    int largestInverted = -1;
};

/// What a change of voxels leaves over; nothing known where they kept their values and places.
struct ReplacedVoxels
{
    VoxelBuffer voxels;
    std::optional<KnownValues> known;
};

/// One time point of a multi-channel stack: its voxels in memory, what is known of its file, and the reader.
///
/// Voxels lie in one flat buffer, channels interleaved, x fastest, then y, then z; a sample is a byte up to 8
/// bits and a 16-bit word in the machine's order above. There is no lock: one thread uses a stack at a time.
class ImageFile
{
public:
    ImageFile();
    /// Finds the format of the first name and makes its reader. Failure leaves a text in `errorList` and no
    /// reader.
    explicit ImageFile(const QStringList& names);
    /// Headerless data, nothing is probed; `swapBytes` turns the bytes of each 16-bit word round.
    ImageFile(const QStringList& names, std::int64_t headerOffset, int x, int y, int z, int channels,
              int bitDepth, bool swapBytes = false);
    /// An uninitialised stack in memory. Throws std::bad_alloc when there is no room.
    ImageFile(int x, int y, int z, int channels, int bitDepth);
    /// Takes over a buffer of x * y * z * channels samples.
    ImageFile(VoxelBuffer data, int x, int y, int z, int channels, int bitDepth);
    ~ImageFile();
    ImageFile(const ImageFile&) = delete;
    ImageFile& operator=(const ImageFile&) = delete;

    ImageAttributes& attributes() { return m_attributes; }
    const ImageAttributes& attributes() const { return m_attributes; }
    QStringList& errorList() { return m_errorList; }
    const QStringList& errorList() const { return m_errorList; }
    bool hasReader() const { return m_io != nullptr; }

    /// The layers read last, inclusive, and the step between them; -1 while none were read.
    int firstLayer() const { return m_firstLayer; }
    int lastLayer() const { return m_lastLayer; }
    int layerStep() const { return m_layerStep; }

    /// Reads layers first to last of the file, every step-th, and makes the statistics. On false the reasons
    /// stand in `errorList`. Throws std::bad_alloc when the voxels find no room.
    bool read(int first, int last, int step);
    bool read();
    /// Reads again what was read before, and reduces it by `subSample` as it was.
    bool reRead();

    /// Writes the stack; `bitDepth` 8 converts it to bytes for good, any other to words. The texts of a
    /// failure are logged and stand in `writeErrors` until the next write.
    bool write(const QStringList& names, ImageType type, int bitDepth, bool overwrite = true);
    bool write(const QStringList& names, ImageType type);
    bool write(const QStringList& names, ImageType type, bool overwrite);
    const QStringList& writeErrors() const { return m_writeErrors; }

    bool isLoaded() const { return !m_stackData.isNull(); }
    /// True when there are voxels, after reading them again if need be.
    bool ensureLoaded();
    std::uint8_t* stackData() { return reinterpret_cast<std::uint8_t*>(m_stackData.data()); }
    const std::uint8_t* stackData() const
    {
        return reinterpret_cast<const std::uint8_t*>(m_stackData.data());
    }
    std::uint16_t* stackData16() { return reinterpret_cast<std::uint16_t*>(m_stackData.data()); }
    const std::uint16_t* stackData16() const
    {
        return reinterpret_cast<const std::uint16_t*>(m_stackData.data());
    }
    /// Replaces the voxels and forgets their statistics; the caller sets the attributes to match.
    void setStackData(VoxelBuffer data);
    /// The same for voxels with other values than before, so that what was stated of the largest one is void.
    void replaceVoxels(VoxelBuffer data);
    /// From now on what is forgotten first, and voxels that filters replace, go here; null for nowhere.
    void keepReplacedIn(ReplacedVoxels* place) { m_replaced = place; }
    /// Lets the voxels go; sizes become -1, the file's attributes and the statistics stay.
    void freeStack();
    /// The same, but gives them to the caller.
    VoxelBuffer takeStack();
    /// x * y * z * channels; 0 for a stack without voxels.
    std::int64_t sampleCount() const;

    /// "none", "Untitled", the one name, or the first and the last joined by " ... ".
    QString fileName() const;
    /// Base names, and full paths, of the files.
    QStringList fileNames() const;
    QStringList filePaths() const;
    /// How its files lie where they are headerless.
    const std::optional<RawLayout>& rawLayout() const { return m_rawLayout; }

    // Statistics are those of the voxels as they are: whatever changes voxels forgets them, and they are made
    // when they are asked for. Voxels that are let go leave theirs behind.

    /// The statistics of a channel, made first when there are none.
    const StackStats& stats(int channel);
    const std::vector<StackStats>& statsList() const { return m_statsList; }
    void generateStatistics();
    /// For those who write to the voxels themselves.
    void forgetStatistics();
    /// The same where values changed, so that the largest is unknown, too.
    void forgetValues();
    /// For those who turn all samples over: with the second time the largest value is known again.
    void valuesInverted();
    /// Gives what is known of the voxels away, and takes it back.
    KnownValues takeKnown();
    void setKnown(KnownValues known);
    /// The number of histogram bins: maxValue + 1, or 2^bitDepth while the maximum is unknown.
    int binCount() const;

    double entropy(int channel) const;
    double entropyScaled(int channel, const std::vector<double>& scales) const;
    double sliceEntropy(int channel, int z) const;
    double sliceEntropyScaled(int channel, int z, double scale) const;
    double maxEntropy(int channel) const;
    double maxSliceEntropy(int channel, int z) const;
    /// Moments straight from the voxels; the caller zeroes the results.
    void sliceMoments(int z, int channel, double& mean, double& stdDev, double& skew, double& kurtosis) const;
    void sliceMomentsFromHistogram(const Histogram& histogram, double& mean, double& stdDev, double& skew,
                                   double& kurtosis) const;

    /// Element index of a voxel's channel in the buffer.
    std::int64_t index(int x, int y, int z, int channel) const;
    std::uint8_t voxel(int x, int y, int z) const;
    /// Byte or word by depth, coordinates clamped to the stack; 0 for a channel that it does not have.
    int voxelValue(int x, int y, int z, int channel) const;
    /// Coordinates are clamped to the stack; the channel is not.
    const std::uint8_t* voxel8(int x, int y, int z, int channel) const;
    const std::uint16_t* voxel16(int x, int y, int z, int channel) const;
    /// A coordinate out of range is logged and replaced by 0.
    const std::uint8_t* checkedVoxel8(int x, int y, int z, int channel) const;
    const std::uint16_t* checkedVoxel16(int x, int y, int z, int channel) const;

    static int nextPow2(int n);
    int powX() const { return nextPow2(m_attributes.x); }
    int powY() const { return nextPow2(m_attributes.y); }
    int powZ() const { return nextPow2(m_attributes.z); }

    /// Whole-plane textures without blocks; made once and remembered.
    std::vector<unsigned> encode(int target, int internalFormat, TextureSink& sink);
    std::vector<unsigned> reEncode(int target, int internalFormat, TextureSink& sink);
    const std::vector<unsigned>& textureList() const { return m_textureList; }

    // Depth conversions. Those to bytes act on words only and set the maximum to 255; all make the new voxels
    // beside the old ones and throw AllocationError, leaving the stack as it was, when there is no room. A
    // cancelled one leaves the stack as it was.

    /// Keeps the 8 highest bits of the depth.
    void clampLower(const Progress& progress = {});
    /// Values above 255 become 255.
    void clampUpper(const Progress& progress = {});
    /// Stretches bytes to `bits` (8 to 16) in words; the depth becomes 16.
    void convertToDepth(int bits, const Progress& progress = {});
    /// Widens bytes to words without scaling.
    void stackToShort(const Progress& progress = {});
    /// Takes off each channel's minimum and shifts what is left into a byte.
    void stackToByteSmartLower(const Progress& progress = {});
    /// Takes off each channel's minimum and scales its range down to a byte; a narrow range is not stretched.
    void stackToByteSmartMult(const Progress& progress = {});
    /// Maps lower to upper onto a byte, for the first x * y * z samples only; the samples behind become 0.
    void stackToByteRange(int lower, int upper, const Progress& progress = {});

    // Geometry. What fails for its arguments, or is cancelled, returns false and changes nothing.

    /// Mirrors along 'X', 'Y' or 'Z' (either case) in place; any other letter does nothing.
    void flip(char axis, const Progress& progress = {});
    /// Bounds are inclusive.
    bool crop(int minX, int maxX, int minY, int maxY, int minZ, int maxZ, const Progress& progress = {});
    /// Centres the stack in zeros.
    bool pad(int newX, int newY, int newZ, const Progress& progress = {});
    /// Adds layers of zeros at the end.
    bool padBack(int newZ, const Progress& progress = {});
    /// The largest value along z; the statistics are made anew.
    bool maxIntensityProject(const Progress& progress = {});
    /// The mean of blocks of factor^3 voxels, factor 1 to 8; at the end of an axis the last voxel repeats.
    void subSample(int factor, const Progress& progress = {});
    /// The largest value, and the mean, of blocks; each factor 1 to 8.
    void subSampleMax(int factorX, int factorY, int factorZ, const Progress& progress = {});
    void subSampleMean(int factorX, int factorY, int factorZ, const Progress& progress = {});

    // Channels. Those that take a Progress return null when cancelled.

    /// One channel as a stack of its own; null for a channel that is not there.
    std::unique_ptr<ImageFile> extractChannel(int channel, const Progress& progress = {}) const;
    /// (A - B) / (A + B) from -1 to 1 spread over the depth, as a stack of its own. Throws a QString.
    std::unique_ptr<ImageFile> ratio(int channelA, int channelB, const Progress& progress = {});
    /// Makes this the stack of the given ones' channels, one each, with a reader that merges them again.
    bool merge(const std::vector<ImageFile*>& stacks);
    /// Takes the larger value of each sample of two stacks of the same size and depth.
    bool maxMerge(const ImageFile& other);

private:
    friend class ImageIO;

    std::int64_t checkedIndex(int x, int y, int z, int channel) const;
    /// Takes the samples over as bytes of the full range; a null buffer changes nothing.
    void becomeBytes(VoxelBuffer bytes);

    int m_firstLayer = -1;
    int m_lastLayer = -1;
    int m_layerStep = -1;
    /// What `subSample` has reduced the layers by since they were read.
    std::vector<int> m_reductions;
    ImageAttributes m_attributes;
    /// What the file states; the statistics put the largest value of the voxels in the attributes' place.
    int m_fileMaximum = -1;
    /// The attributes' largest value was counted, and has to be again when voxels change.
    bool m_largestIsCounted = false;
    /// The largest value once the voxels are inverted, -1 while unknown.
    int m_invertedMaximum = -1;
    std::vector<StackStats> m_statsList;
    std::optional<RawLayout> m_rawLayout;
    std::unique_ptr<StackReader> m_io;
    std::vector<unsigned> m_textureList;
    VoxelBuffer m_stackData;
    ReplacedVoxels* m_replaced = nullptr;
    QStringList m_errorList;
    QStringList m_writeErrors;
};

} // namespace tirn
