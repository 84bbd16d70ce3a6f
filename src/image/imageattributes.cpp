#include "image/imageattributes.h"

#include <cmath>

#include "base/checkedsize.h"
#include "base/log.h"

namespace tirn {

namespace {

struct TypeNames
{
    ImageType type;
    const char* row;
    const char* shortHeading;
    const char* fullHeading;
};

// The headings of the two prints differ for some types; a type without a name of its own is an unknown one.
constexpr TypeNames kTypeNames[] = {
    {ImageType::BioRad, "Biorad ", "Biorad:\n", "Biorad:\n"},
    {ImageType::Dicom, "DICOM ", "Unknown:\n", "Unknown:\n"},
    {ImageType::DeltaVision, "Deltavision ", "Deltavision: \n", "Unknown:\n"},
    {ImageType::Leica, "Leica ", "Unknown:\n", "Leica:\n"},
    {ImageType::MetaMorph, "Metamorph ", "Metamorph:\n", "Metamorph:\n"},
    {ImageType::MultiPageTiff, "MTiff ", "MTIFF:\n", "MTIFF:\n"},
    {ImageType::Olympus, "Olympus OMF ", "Unknown:\n", "Unknown:\n"},
    {ImageType::PerkinElmer, "Perkin Elmer ", "Perkinelmer:\n", "Perkinelmer:\n"},
    {ImageType::TiffSeries, "Tiff ", "TIFF:\n", "TIFF:\n"},
    {ImageType::Zeiss, "Zeiss ", "Zeiss:\n", "Zeiss:\n"},
    {ImageType::Unknown, "Unknown raw ", "Unknown:\n", "Unknown:\n"},
};

constexpr TypeNames kUnnamed = {ImageType::Unknown, "not a clue ", "Unknown:\n", "Unknown:\n"};

const TypeNames& typeNames(ImageType type)
{
    for (const TypeNames& names : kTypeNames) {
        if (names.type == type)
            return names;
    }
    return kUnnamed;
}

} // namespace

ImageAttributes::ImageAttributes(const ImageAttributes& other) { *this = other; }

ImageAttributes& ImageAttributes::operator=(const ImageAttributes& other)
{
    if (this == &other)
        return *this;
    x = other.x;
    y = other.y;
    z = other.z;
    fileX = other.fileX;
    fileY = other.fileY;
    fileZ = other.fileZ;
    dimX = other.dimX;
    dimY = other.dimY;
    dimZ = other.dimZ;
    channels = other.channels;
    // The two words and the three lists belong to the reader that filled them and never travel with a copy.
    reserved = 1;
    timePoints = 1;
    channelNames.clear();
    excitationWavelengths.clear();
    emissionWavelengths.clear();
    bitDepth = other.bitDepth;
    maxValue = other.maxValue;
    displayMaximum = other.displayMaximum;
    type = other.type;
    lens = other.lens;
    magFactor = other.magFactor;
    hasNotes = other.hasNotes;
    hasExtraNotes = other.hasExtraNotes;
    notes = other.notes;
    timestamp = other.timestamp;
    return *this;
}

int ImageAttributes::realBitDepth() const { return maxValue < 0 ? bitDepth : bitCount(maxValue); }

int ImageAttributes::significantBits() const
{
    if (maxValue == -1)
        return bitDepth;
    if (maxValue < 1)
        return 0;
    return static_cast<int>(std::floor(std::log(maxValue) / std::log(2.0) + 0.5));
}

QString ImageAttributes::depthText() const
{
    if (realBitDepth() == bitDepth)
        return QString::asprintf("%dbit", bitDepth);
    return QString::asprintf("%dbit really %dbit", bitDepth, realBitDepth());
}

QString ImageAttributes::fullText() const
{
    QString text = QLatin1String(typeNames(type).fullHeading);
    text += QString::asprintf("x: %d y: %d z: %d\n", x, y, z);
    text += QString::asprintf("fileX: %d fileY: %d fileZ: %d\n", fileX, fileY, fileZ);
    text += QLatin1String("dimX: ") + plainNumber(dimX) + QLatin1String("um dimY: ") + plainNumber(dimY) +
            QLatin1String("um dimZ: ") + plainNumber(dimZ) + QLatin1String("um\n");
    text += QString::asprintf("channels: %d bitDepth: %d maxValue: %d realBitDepth: %d\n", channels, bitDepth,
                              maxValue, realBitDepth());
    if (timestamp.isValid())
        text += QLatin1String("timestamp: ") + timestamp.toString(QStringLiteral("MM-dd-yyyy hh:mm:ss.zzz")) +
                QLatin1Char('\n');
    for (const QString& note : notes)
        text += note + QLatin1Char('\n');
    return text;
}

QString ImageAttributes::shortText() const
{
    return QLatin1String(typeNames(type).shortHeading) + QString::asprintf("x: %d\ny: %d\nz: %d\n", x, y, z);
}

bool operator==(const ImageAttributes& left, const ImageAttributes& right)
{
    return left.x == right.x && left.y == right.y && left.z == right.z && left.channels == right.channels &&
           left.bitDepth == right.bitDepth && left.type == right.type;
}

QString imageTypeRowName(ImageType type) { return QLatin1String(typeNames(type).row); }

} // namespace tirn
