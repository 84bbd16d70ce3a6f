#include <cmath>

#include <gtest/gtest.h>

#include "formats/tiff/tiffdirectory.h"
#include "formats/tiff/tiffifdio.h"
#include "formats/tiff/tifftags.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::TiffFile;
using test::TiffPage;
using Values = std::vector<std::uint32_t>;

/// The base class with its insides open.
class AnyTiff : public TiffIFDIO
{
public:
    explicit AnyTiff(ImageFile& owner, const QStringList& names = {}) : TiffIFDIO(owner, names) {}
    using TiffIFDIO::setOrder;
};

class TiffDirectoryTest : public testing::Test
{
protected:
    /// The first directory of a file with one page that has further fields.
    IFD directory(const std::vector<test::TiffField>& fields, bool bigEndian = false)
    {
        TiffPage page;
        page.fields = fields;
        TiffFile file{{page}};
        file.bigEndian = bigEndian;
        return walk(file.save(m_directory.filePath("a.tif"))).at(0);
    }

    std::vector<IFD> walk(const QString& name)
    {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        WindowedFile window(file);
        const TiffHeader header = readTiffHeader(window);
        std::vector<IFD> pages;
        m_end = walkDirectories(window, header.order.value_or(ByteOrder::Little), header.firstOffset,
                                [&](IFD&& page) {
                                    pages.push_back(std::move(page));
                                    return true;
                                });
        return pages;
    }

    QTemporaryDir m_directory;
    WalkEnd m_end = WalkEnd::Last;
};

TEST_F(TiffDirectoryTest, TwoShortsAreReadInPlaceAndTheWalkGoesOn)
{
    for (const bool bigEndian : {false, true}) {
        const IFD ifd = directory({{297, 3, {7, 9}, {}}, {305, 3, {11}, {}}}, bigEndian);
        EXPECT_EQ(ifd.find(297)->values, (Values{7, 9}));
        EXPECT_EQ(ifd.find(297)->count, 2U);
        EXPECT_EQ(ifd.value(305), 11U);
    }
}

TEST_F(TiffDirectoryTest, FourCharactersAreReadInPlaceAndFiveThroughTheOffset)
{
    const IFD four = directory({{305, 2, {'a', 'b', 'c', 0}, {}}});
    EXPECT_EQ(asciiText(*four.find(305)), "abc");
    EXPECT_TRUE(isInline(*four.find(305)));
    const IFD five = directory({{305, 2, {'a', 'b', 'c', 'd', 'e'}, {}}});
    EXPECT_EQ(asciiText(*five.find(305)), "abcde");
    EXPECT_FALSE(isInline(*five.find(305)));
}

TEST_F(TiffDirectoryTest, ASingleValueIsTheValueOffsetToo)
{
    for (const bool bigEndian : {false, true}) {
        const IFD ifd = directory({{300, 1, {9}, {}}, {301, 3, {258}, {}}, {302, 4, {70000}, {}}}, bigEndian);
        EXPECT_EQ(ifd.find(300)->valueOffset, 9U);
        EXPECT_EQ(ifd.find(301)->valueOffset, 258U);
        EXPECT_EQ(ifd.find(302)->valueOffset, 70000U);
    }
}

TEST_F(TiffDirectoryTest, ARationalGivesTwoValuesEach)
{
    EXPECT_EQ(directory({{282, 5, {3, 4}, {}}}).find(282)->values, (Values{3, 4}));
    EXPECT_EQ(directory({{282, 5, {3, 4, 5, 6}, {}}}, true).find(282)->values, (Values{3, 4, 5, 6}));
}

TEST_F(TiffDirectoryTest, AFloatGivesNoValuesAndTheNextEntryIsInPlace)
{
    test::TiffField field{300, 11, {}, QByteArray(4, '\x3f')};
    field.count = 1;
    const IFD ifd = directory({field, {301, 3, {5}, {}}});
    EXPECT_TRUE(ifd.find(300)->values.empty());
    EXPECT_EQ(ifd.find(300)->valueOffset, 0x3f3f3f3fU) << "the raw field";
    EXPECT_EQ(ifd.value(301), 5U);
}

TEST_F(TiffDirectoryTest, AnUnknownTypeIsLogged)
{
    test::TiffField field{300, 99, {}, QByteArray(4, '\0')};
    field.count = 1;
    const LogCapture capture;
    EXPECT_TRUE(directory({field}).find(300)->values.empty());
    EXPECT_TRUE(capture.contains("Invaild type"));
}

TEST_F(TiffDirectoryTest, TheSizesOfTypesAreThoseOfTheTable)
{
    const std::vector<int> sizes = {1, 1, 2, 4, 8, 4, 4, 4, 4, 4, 4, 4};
    for (std::size_t i = 0; i < sizes.size(); ++i)
        EXPECT_EQ(fieldTypeSize(static_cast<std::uint16_t>(i + 1)), sizes[i]) << i + 1;
}

TEST_F(TiffDirectoryTest, OfTwoEntriesWithOneTagTheFirstStays)
{
    const IFD ifd({{300, 3, 1, 5, {5}}, {299, 3, 1, 4, {4}}, {300, 3, 1, 6, {6}}});
    EXPECT_EQ(ifd.size(), 2U);
    EXPECT_EQ(ifd.value(300), 5U);
    EXPECT_EQ(ifd.begin()->tag, 299);
    EXPECT_EQ(ifd.find(301), nullptr);
}

TEST_F(TiffDirectoryTest, ACountBeyondTheFileTakesNoMoreThanTheFileHolds)
{
    test::TiffField field{300, 4, {}, QByteArray(64, '\1')};
    field.count = 0x7fffffff;
    const IFD ifd = directory({field});
    EXPECT_EQ(ifd.find(300)->count, 0x7fffffffU);
    EXPECT_LT(ifd.find(300)->values.size(), 100U);
    EXPECT_EQ(ifd.find(300)->values.front(), 0x01010101U);
}

TEST_F(TiffDirectoryTest, EveryPageOfAChainIsWalked)
{
    const auto pages = walk(
        TiffFile{{test::plainPage(3, 2, 1), test::plainPage(5, 2, 1)}}.save(m_directory.filePath("a.tif")));
    ASSERT_EQ(pages.size(), 2U);
    EXPECT_EQ(pages[1].value(256), 5U);
    EXPECT_EQ(m_end, WalkEnd::Last);
}

TEST_F(TiffDirectoryTest, AChainThatRunsInACircleStops)
{
    TiffFile file{{test::plainPage(3, 2, 1), test::plainPage(3, 2, 1), test::plainPage(3, 2, 1)}};
    const std::vector<std::uint32_t> offsets = file.directoryOffsets();
    for (const std::uint32_t target : {offsets[2], offsets[1], offsets[0]}) {
        file.lastOffset = target;
        const LogCapture capture;
        EXPECT_EQ(walk(file.save(m_directory.filePath("a.tif"))).size(), 3U);
        EXPECT_EQ(m_end, WalkEnd::Loop);
        EXPECT_EQ(capture.count("old offset = new offset looping"), 1);
    }
}

TEST_F(TiffDirectoryTest, ANextOffsetPastTheFileEndsTheWalk)
{
    TiffFile file{{test::plainPage(3, 2, 1)}};
    file.lastOffset = 0xfffffff0U;
    EXPECT_EQ(walk(file.save(m_directory.filePath("a.tif"))).size(), 1U);
    EXPECT_EQ(m_end, WalkEnd::Last);
}

TEST_F(TiffDirectoryTest, DirectoriesThatOverlapCannotMultiplyAFile)
{
    // Each directory begins one entry behind the one before and claims all the rest of the file.
    QByteArray bytes("II*\0\x08\0\0\0", 8);
    constexpr int entries = 4000;
    for (int i = 0; i < entries; ++i) {
        const auto next = static_cast<std::uint32_t>(8 + 12 * (i + 1));
        QByteArray entry("\xff\x0f\x03\x00\x01\x00\x00\x00", 8);
        for (int shift = 0; shift < 32; shift += 8)
            entry.append(static_cast<char>(next >> shift & 0xff));
        bytes += entry;
    }
    const auto pages = walk(test::saveBytes(m_directory.filePath("a.tif"), bytes));
    std::size_t total = 0;
    for (const IFD& page : pages)
        total += page.size();
    EXPECT_LE(total, static_cast<std::size_t>(entries));
}

TEST_F(TiffDirectoryTest, AFileCutAnywhereIsWalkedWithoutHarm)
{
    const QByteArray bytes = TiffFile{{test::plainPage(3, 2, 1), test::plainPage(3, 2, 1)}}.bytes();
    for (int length = 0; length < bytes.size(); ++length)
        EXPECT_LE(walk(test::saveBytes(m_directory.filePath("a.tif"), bytes.left(length))).size(), 2U);
}

TEST(IfdEntry, WrittenEntriesReadBackInEitherOrder)
{
    const std::vector<IFDEntry> entries = {
        {256, 3, 1, 4096, {4096}},         {258, 3, 2, 0, {16, 16}},    {270, 2, 3, 0, {'a', 'b', 0}},
        {273, 4, 1, 70000, {70000}},       {279, 3, 3, 200, {1, 2, 3}}, {282, 5, 1, 220, {300, 7}},
        {305, 1, 5, 240, {1, 2, 3, 4, 5}}, {33629, 5, 7, 999, {}},
    };
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        ByteWriter writer(order);
        for (const IFDEntry& entry : entries)
            writeEntry(writer, entry);
        EXPECT_EQ(writer.position(), entries.size() * 12);
        ByteReader reader(writer.bytes(), order);
        for (const IFDEntry& entry : entries) {
            IFDEntry read = readEntryHead(reader);
            EXPECT_EQ(read.tag, entry.tag);
            EXPECT_EQ(read.count, entry.count);
            if (isInline(entry)) {
                EXPECT_EQ(read.values, entry.values) << entry.tag;
            } else {
                EXPECT_EQ(read.valueOffset, entry.valueOffset);
                ByteReader values(writer.bytes(), order);
                values.seek(read.valueOffset);
                if (!entry.values.empty()) {
                    EXPECT_EQ(decodeValues(values, entry.fieldType, entry.count), entry.values) << entry.tag;
                }
            }
        }
    }
}

TEST(IfdEntry, InlineValuesStandAtTheLeftOfTheField)
{
    ByteWriter big(ByteOrder::Big);
    writeEntry(big, {258, 3, 1, 0, {16}});
    const std::vector<std::byte> field(big.bytes().begin() + 8, big.bytes().end());
    EXPECT_EQ(field, (std::vector<std::byte>{std::byte{0}, std::byte{16}, std::byte{0}, std::byte{0}}));
}

TEST(IfdEntry, PrintsItsFields)
{
    EXPECT_EQ(entryText({258, 3, 2, 9, {8, 16}}),
              "entry.tag         258\nentry.fieldType   3\nentry.count       2\nentry.valueOffset 9\n"
              "entry.valueAtOffset[0] 8\nentry.valueAtOffset[1] 16\n");
}

TEST(IfdEntry, TagsArePrintedByTheTable)
{
    const std::pair<std::uint16_t, const char*> values[] = {
        {256, "256 ImageWidth 77"},         {257, "257 ImageLength 77"},
        {277, "277 SamplesPerPixel 77"},    {278, "278 RowsPerStrip 77"},
        {280, "280 MixSampleValue 77"},     {281, "281 MaxSampleValue 77"},
        {282, "282 XResolution 77"},        {283, "283 YResolution 77"},
        {34361, "34361 Andor MMHEADER "},   {34362, "34362 Andor MMSTAMP "},
        {34363, "34363 Andor MMEXTRA "},    {34364, "34364 Andor Future Tag "},
        {34365, "34365 Andor Future Tag "}, {34412, "34412 TIF_CZ_LSMINFO "},
        {4711, "Unknown Tiff tag\t4711"}};
    for (const auto& [tag, text] : values)
        EXPECT_EQ(tagText({tag, 3, 1, 77, {77}}), text);
    const std::pair<std::uint16_t, const char*> places[] = {{258, "258 BitsPerSample 3 at 500"},
                                                            {273, "273 StripOffsets 3 at 500"},
                                                            {279, "279 StripByteCount 3 at 500"},
                                                            {320, "320 ColorMap located at 500"}};
    for (const auto& [tag, text] : places)
        EXPECT_EQ(tagText({tag, 3, 3, 500, {8, 8, 8}}), text);
    const std::pair<std::uint16_t, const char*> texts[] = {{269, "269 Document Name hi"},
                                                           {270, "270 Image Description hi"},
                                                           {305, "305 Software hi"},
                                                           {306, "306 DateTime hi"}};
    for (const auto& [tag, text] : texts)
        EXPECT_EQ(tagText({tag, 2, 3, 5, {'h', 'i', 0}}), text);
}

TEST(IfdEntry, NumbersThatStandForSomethingAreNamed)
{
    struct Row
    {
        std::uint16_t tag;
        const char* heading;
        std::vector<std::pair<std::uint32_t, const char*>> names;
        const char* other;
    };
    const Row rows[] = {
        {254,
         "254 NewSubfileType ",
         {{0, "Zeiss image layer"},
          {1, "reduced-resolution version of image in file "},
          {2, "single page of multipage image"},
          {4, "transparency mask for another image in file"}},
         "Unknown type "},
        {259,
         "259 Compression ",
         {{1, "No compression"}, {2, "CCITT Group 3"}, {5, "Zeiss LWZ compression"}, {32773, "PackBits"}},
         "unknown "},
        {262,
         "262 PhotometricInterpretation ",
         {{0, "WhiteIsZero"},
          {1, "BlackIsZero"},
          {2, "Zeiss TIF_RGB24 multichannel"},
          {3, "Zeiss TIF_PALETTE one channel w/ colormap"}},
         "I'm confused "},
        {274,
         "274 Orientation ",
         {{1, "0th row top, 0th column left-side"},
          {2, "0th row top, 0th column right-side"},
          {3, "0th row bottom, 0th column right-side"},
          {4, "0th row bottom, 0th column left-side"},
          {5, "0th row left-side, 0th column top"},
          {6, "0th row right-side, 0th column top"},
          {7, "0th row right-side, 0th column bottom"},
          {8, "0th row left, 0th column bottom"}},
         "unknown orientation"},
        {284,
         "284 PlanarConfiguration ",
         {{1, "Chunky format"}, {2, "Planar format (for zeiss, channels are saved separately"}},
         "I'm confused "},
        {296,
         "296 ResolutionUnit ",
         {{1, "No absolute unit of measure"}, {2, "inch"}, {3, "Centimeter"}},
         "Unknown resolution unit "},
        {317,
         "317 DifferencingPredictor ",
         {{1, "No prediction scheme used before encoding"}, {2, "Horizontal differencing"}},
         "Unknown predictor"},
        {339,
         "339 SampleFormat ",
         {{1, "Unsigned integer data"},
          {2, "Two's completement singed integer data"},
          {3, "IEEE floating point data (IEEE)"},
          {4, "Undefined data format"}},
         "Unknown data format"}};
    for (const Row& row : rows) {
        for (const auto& [value, name] : row.names)
            EXPECT_EQ(tagText({row.tag, 3, 1, value, {value}}), QString(row.heading) + name);
        EXPECT_EQ(tagText({row.tag, 3, 1, 99, {99}}), QString(row.heading) + row.other);
    }
}

TEST(TiffIfdIo, OnlyUncompressedDataAreSupported)
{
    const std::vector<std::pair<std::uint32_t, QString>> texts = {
        {2, "CCIT_SUPPORT 2 compression is not supported"},
        {3, "CCIT_SUPPORT 3 compression is not supported"},
        {4, "CCIT_SUPPORT 32771 compression is not supported"},
        {5, "LZW compression is not supported"},
        {6, "Obsolete jpeg compression is not supported"},
        {7, "Jpeg compression is not supported"},
        {32766, "NEXT compression is not supported"},
        {32773, "PACKBITS compression is not supported"},
        {32809, "THUNDER compression is not supported"},
        {32909, "Pixar's compression is not supported"},
        {32946, "Zip compression is not sopported"},
        {34677, "SGI's compression is not supported"},
        {8, "Unknown compress 8 is not supported"},
        {4294967295U, "Unknown compress 4294967295 is not supported"},
    };
    ImageFile owner;
    AnyTiff reader(owner);
    const LogCapture capture;
    EXPECT_TRUE(reader.compressionSupported(1));
    EXPECT_TRUE(owner.errorList().isEmpty());
    EXPECT_TRUE(capture.contains("NO_COMPRESSION compression is supported"));
    for (const auto& [value, text] : texts) {
        EXPECT_FALSE(reader.compressionSupported(value));
        EXPECT_EQ(owner.errorList().last(), text);
    }
}

TEST(TiffIfdIo, RationalsAreContinuedFractions)
{
    using Pair = std::pair<std::uint32_t, std::uint32_t>;
    EXPECT_EQ(TiffIFDIO::toRational(0.5), Pair(1, 2));
    EXPECT_EQ(TiffIFDIO::toRational(0.1), Pair(1, 10));
    EXPECT_EQ(TiffIFDIO::toRational(3), Pair(3, 1));
    EXPECT_EQ(TiffIFDIO::toRational(1.0 / 3), Pair(1, 3));
    // 3, 22/7, 333/106, 355/113, then 103993 which is above the bound.
    EXPECT_EQ(TiffIFDIO::toRational(M_PI), Pair(355, 113));
    EXPECT_EQ(TiffIFDIO::toRational(2e-5), Pair(1, 50000));
    EXPECT_EQ(TiffIFDIO::toRational(1e-5), Pair(0, 1)) << "1/100000 is out of bounds, the pair before is 0/1";
}

TEST(TiffIfdIo, RationalsOfOddValuesEnd)
{
    for (const double value : {-1.0, 1e300, HUGE_VAL, std::nan(""), 0.0, 65536.0, 5e-324})
        TiffIFDIO::toRational(value);
}

TEST(TiffIfdIo, NumbersFollowTheOrderOfTheFile)
{
    ImageFile owner;
    AnyTiff reader(owner);
    const std::vector<std::byte> bytes = {std::byte{0}, std::byte{0}, std::byte{0}, std::byte{9},
                                          std::byte{0}, std::byte{0}, std::byte{0}, std::byte{2}};
    reader.setOrder(ByteOrder::Big);
    EXPECT_EQ(reader.getShort(bytes.data() + 2), 9);
    EXPECT_EQ(reader.getLong(bytes.data()), 9U);
    EXPECT_EQ(reader.getRational(bytes.data()), 4) << "integer division";
    reader.setOrder(ByteOrder::Little);
    EXPECT_EQ(reader.getShort(bytes.data() + 2), 9 << 8);
    EXPECT_EQ(reader.getRational(std::vector<std::byte>(8).data()), 0);
}

TEST_F(TiffDirectoryTest, FillEntryFetchesListsOnly)
{
    QFile file(test::saveBytes(m_directory.filePath("a"), QByteArray("\1\2\3\4\5\6\7\0", 8)));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    WindowedFile window(file);
    ImageFile owner;
    const AnyTiff reader(owner);
    const LogCapture capture;
    IFDEntry single{273, 4, 1, 0, {}};
    EXPECT_FALSE(reader.fillEntry(window, single));
    IFDEntry words{273, 3, 3, 1, {}};
    EXPECT_TRUE(reader.fillEntry(window, words));
    EXPECT_EQ(words.values, (Values{0x0302, 0x0504, 0x0706}));
    IFDEntry floats{273, 11, 3, 1, {}};
    EXPECT_FALSE(reader.fillEntry(window, floats));
    IFDEntry outside{273, 4, 3, 9, {}};
    EXPECT_FALSE(reader.fillEntry(window, outside));
    IFDEntry cut{273, 4, 3, 0, {}};
    EXPECT_FALSE(reader.fillEntry(window, cut));
    EXPECT_EQ(capture.debugLines(),
              (QStringList{"Weird field type 11", "about fillEntry unable to reposition\n",
                           "abort fillEntry unable to read\n"}));
}

} // namespace
} // namespace tirn
