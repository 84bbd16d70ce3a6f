#pragma once

#include <cstdint>

#include <QDateTime>
#include <QList>
#include <QStringList>

namespace tirn {

/// The file types; the numbers stand in session files and must stay.
enum class ImageType : std::int32_t {
    BioRad = 0,
    Dicom = 1,
    DeltaVision = 2,
    Leica = 3,
    MetaMorph = 4,
    MultiPageTiff = 5,
    Olympus = 6,
    PerkinElmer = 7,
    TiffSeries = 8,
    Vff = 9,
    Zeiss = 10,
    Unknown = 11,
};

/// What is known of a stack: its size in memory and on disk, its voxels, and what its file says of itself.
///
/// Copies leave out `timePoints`, `reserved` and the three per-channel lists, which belong to the reader that
/// filled them: a copy holds their defaults.
struct ImageAttributes
{
    ImageAttributes() = default;
    ImageAttributes(const ImageAttributes& other);
    ImageAttributes& operator=(const ImageAttributes& other);
    ~ImageAttributes() = default;

    /// Size in memory, in voxels.
    int x = 0;
    int y = 0;
    int z = 0;
    /// Size of the file; fileZ counts its layers. -1 while unknown.
    int fileX = -1;
    int fileY = -1;
    int fileZ = -1;
    /// Voxel size in microns; a value not above 0 means unknown.
    double dimX = -1.0;
    double dimY = -1.0;
    double dimZ = -1.0;
    int channels = 0;
    int reserved = 1;
    int timePoints = 1;
    QStringList channelNames;
    QList<double> excitationWavelengths;
    QList<double> emissionWavelengths;
    /// Bits a sample: up to 8 are stored in bytes, 9 to 16 in 16-bit words.
    int bitDepth = 0;
    /// Largest value in the file, -1 while unknown.
    int maxValue = -1;
    int displayMaximum = -1;
    ImageType type = ImageType::Unknown;
    /// Objective code and magnification of a Bio-Rad header.
    int lens = -1;
    float magFactor = 0;
    bool hasNotes = false;
    bool hasExtraNotes = false;
    QStringList notes;
    /// Time of acquisition, invalid while unknown.
    QDateTime timestamp;

    /// The bits that `maxValue` needs, or `bitDepth` while that is unknown.
    int realBitDepth() const;
    /// The bits that the data use, rounded: 12 for a maximum of 3000 as of 4095.
    int significantBits() const;
    /// True when a sample takes a 16-bit word.
    bool hasWords() const { return bitDepth > 8; }
    int bytesPerSample() const { return hasWords() ? 2 : 1; }
    /// The number of the file's last layer, -1 where it has none.
    int lastFileLayer() const { return fileZ > 0 ? fileZ - 1 : -1; }

    /// "%dbit", or "%dbit really %dbit" where the data use another number of bits.
    QString depthText() const;
    /// The heading and every field, one group a line.
    QString fullText() const;
    /// The heading and the size.
    QString shortText() const;
};

/// Compares size, channels, bit depth and type only: stacks of different voxel size are equal.
bool operator==(const ImageAttributes& left, const ImageAttributes& right);

/// The name of a type in the stack manager's rows; it ends in a blank.
QString imageTypeRowName(ImageType type);

} // namespace tirn
