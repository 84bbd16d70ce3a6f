#pragma once

#include <cstdint>

#include <QString>

/// Tags and numbers of TIFF 6.0 and of the microscopes' private tags.
namespace tirn::tiff {

constexpr int kLittleEndianMark = 0x4949;
constexpr int kBigEndianMark = 0x4D4D;
constexpr int kMagic = 42;
constexpr std::uint32_t kHeaderBytes = 8;
constexpr int kEntryBytes = 12;

enum Tag : std::uint16_t {
    NewSubfileType = 254,
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    Compression = 259,
    PhotometricInterpretation = 262,
    ImageDescription = 270,
    StripOffsets = 273,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    StripByteCounts = 279,
    MaxSampleValue = 281,
    XResolution = 282,
    YResolution = 283,
    PlanarConfiguration = 284,
    ResolutionUnit = 296,
    DateTime = 306,
    TileWidth = 322,
    TileOffsets = 324,
    Uic1 = 33628,
    Uic2 = 33629,
    Uic4 = 33631,
    LsmInfo = 34412,
};

enum FieldType : std::uint16_t { Byte = 1, Ascii = 2, Short = 3, Long = 4, Rational = 5 };

} // namespace tirn::tiff
