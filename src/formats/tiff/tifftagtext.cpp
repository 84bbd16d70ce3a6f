// The table of tags as they are printed in the log.

#include <span>

#include "formats/tiff/ifdentry.h"

namespace tirn {

namespace {

enum class Detail { None, Value, CountAt, Offset, Text, Named };

struct NamedValue
{
    std::uint32_t value;
    const char* name;
};

struct TagRow
{
    std::uint16_t tag;
    const char* text;
    Detail detail = Detail::None;
    std::span<const NamedValue> names = {};
    const char* otherName = "";
};

constexpr NamedValue kSubfileTypes[] = {{0, "Zeiss image layer"},
                                        {1, "reduced-resolution version of image in file "},
                                        {2, "single page of multipage image"},
                                        {4, "transparency mask for another image in file"}};
constexpr NamedValue kCompressions[] = {
    {1, "No compression"}, {2, "CCITT Group 3"}, {5, "Zeiss LWZ compression"}, {32773, "PackBits"}};
constexpr NamedValue kPhotometrics[] = {{0, "WhiteIsZero"},
                                        {1, "BlackIsZero"},
                                        {2, "Zeiss TIF_RGB24 multichannel"},
                                        {3, "Zeiss TIF_PALETTE one channel w/ colormap"}};
constexpr NamedValue kOrientations[] = {
    {1, "0th row top, 0th column left-side"},     {2, "0th row top, 0th column right-side"},
    {3, "0th row bottom, 0th column right-side"}, {4, "0th row bottom, 0th column left-side"},
    {5, "0th row left-side, 0th column top"},     {6, "0th row right-side, 0th column top"},
    {7, "0th row right-side, 0th column bottom"}, {8, "0th row left, 0th column bottom"}};
constexpr NamedValue kPlanars[] = {{1, "Chunky format"},
                                   {2, "Planar format (for zeiss, channels are saved separately"}};
constexpr NamedValue kUnits[] = {{1, "No absolute unit of measure"}, {2, "inch"}, {3, "Centimeter"}};
constexpr NamedValue kPredictors[] = {{1, "No prediction scheme used before encoding"},
                                      {2, "Horizontal differencing"}};
constexpr NamedValue kSampleFormats[] = {{1, "Unsigned integer data"},
                                         {2, "Two's completement singed integer data"},
                                         {3, "IEEE floating point data (IEEE)"},
                                         {4, "Undefined data format"}};

constexpr TagRow kTags[] = {
    {254, "254 NewSubfileType ", Detail::Named, kSubfileTypes, "Unknown type "},
    {256, "256 ImageWidth ", Detail::Value},
    {257, "257 ImageLength ", Detail::Value},
    {258, "258 BitsPerSample ", Detail::CountAt},
    {259, "259 Compression ", Detail::Named, kCompressions, "unknown "},
    {262, "262 PhotometricInterpretation ", Detail::Named, kPhotometrics, "I'm confused "},
    {269, "269 Document Name ", Detail::Text},
    {270, "270 Image Description ", Detail::Text},
    {273, "273 StripOffsets ", Detail::CountAt},
    {274, "274 Orientation ", Detail::Named, kOrientations, "unknown orientation"},
    {277, "277 SamplesPerPixel ", Detail::Value},
    {278, "278 RowsPerStrip ", Detail::Value},
    {279, "279 StripByteCount ", Detail::CountAt},
    {280, "280 MixSampleValue ", Detail::Value},
    {281, "281 MaxSampleValue ", Detail::Value},
    {282, "282 XResolution ", Detail::Value},
    {283, "283 YResolution ", Detail::Value},
    {284, "284 PlanarConfiguration ", Detail::Named, kPlanars, "I'm confused "},
    {296, "296 ResolutionUnit ", Detail::Named, kUnits, "Unknown resolution unit "},
    {305, "305 Software ", Detail::Text},
    {306, "306 DateTime ", Detail::Text},
    {317, "317 DifferencingPredictor ", Detail::Named, kPredictors, "Unknown predictor"},
    {320, "320 ColorMap located at ", Detail::Offset},
    {339, "339 SampleFormat ", Detail::Named, kSampleFormats, "Unknown data format"},
    {34361, "34361 Andor MMHEADER "},
    {34362, "34362 Andor MMSTAMP "},
    {34363, "34363 Andor MMEXTRA "},
    {34364, "34364 Andor Future Tag "},
    {34365, "34365 Andor Future Tag "},
    {34412, "34412 TIF_CZ_LSMINFO "},
};

QString nameOf(const TagRow& row, std::uint32_t value)
{
    for (const NamedValue& named : row.names) {
        if (named.value == value)
            return QLatin1String(named.name);
    }
    return QLatin1String(row.otherName);
}

QString detailText(const TagRow& row, const IFDEntry& entry)
{
    const std::uint32_t value = entry.values.empty() ? entry.valueOffset : entry.values.front();
    switch (row.detail) {
    case Detail::None:
        return {};
    case Detail::Value:
        return QString::number(value);
    case Detail::CountAt:
        return QString::asprintf("%u at %u", entry.count, entry.valueOffset);
    case Detail::Offset:
        return QString::number(entry.valueOffset);
    case Detail::Text:
        return asciiText(entry);
    case Detail::Named:
        return nameOf(row, value);
    }
    return {};
}

} // namespace

QString tagText(const IFDEntry& entry)
{
    for (const TagRow& row : kTags) {
        if (row.tag == entry.tag)
            return QLatin1String(row.text) + detailText(row, entry);
    }
    return QString::asprintf("Unknown Tiff tag\t%u", entry.tag);
}

} // namespace tirn
