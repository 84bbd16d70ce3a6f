#include <gtest/gtest.h>

#include "formats/imageio.h"
#include "formats/tiff/mtiffio.h"
#include "image/imagefile.h"
#include "support/foreigntiff.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::samples;
using test::TiffFile;
using test::TiffPage;

class MTiffIoTest : public testing::Test
{
protected:
    QString path(const QString& name = "a.tif") const { return m_directory.filePath(name); }
    QString save(const TiffFile& file, int length = -1) const { return file.save(path(), length); }

    QTemporaryDir m_directory;
};

/// Page z holds x + 10 y + 50 c + 100 z.
TiffFile countingFile(int pages, int channels, int bits, int rowsPerStrip = 0)
{
    TiffFile file;
    for (int z = 0; z < pages; ++z) {
        TiffPage page;
        page.channels = channels;
        page.bits = bits;
        page.rowsPerStrip = rowsPerStrip;
        page.value = [z](int x, int y, int c) { return x + 10 * y + 50 * c + 100 * z; };
        file.pages.push_back(page);
    }
    return file;
}

std::vector<int> countingSamples(const std::vector<int>& layers, int channels)
{
    std::vector<int> values;
    for (const int z : layers) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) {
                for (int c = 0; c < channels; ++c)
                    values.push_back(x + 10 * y + 50 * c + 100 * z);
            }
        }
    }
    return values;
}

TEST_F(MTiffIoTest, AFileWithTwoPagesIsAStack)
{
    const QString name = save(countingFile(2, 1, 8));
    EXPECT_TRUE(MTiffIO::isMTiff(name));
    ImageFile file({name});
    const ImageAttributes& a = file.attributes();
    EXPECT_EQ(a.type, ImageType::MultiPageTiff);
    EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth, a.maxValue}),
              std::vector({4, 3, 2, 1, 8, -1}));
    EXPECT_EQ(a.lens, -1);
    EXPECT_EQ(a.magFactor, -1.0F);
    EXPECT_FALSE(a.hasNotes);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), countingSamples({0, 1}, 1));
}

TEST_F(MTiffIoTest, AFileWithOnePageIsNot) { EXPECT_FALSE(MTiffIO::isMTiff(save(countingFile(1, 1, 8)))); }

TEST_F(MTiffIoTest, EveryDepthByteOrderAndStripHeightReads)
{
    for (const int bits : {8, 16}) {
        for (const int channels : {1, 2, 3, 4}) {
            for (const int rows : {0, 1, 2}) {
                for (const bool bigEndian : {false, true}) {
                    TiffFile tiff = countingFile(3, channels, bits, rows);
                    tiff.bigEndian = bigEndian;
                    if (bits == 8) {
                        for (TiffPage& page : tiff.pages)
                            page.value = [](int x, int y, int c) { return x + 10 * y + 50 * c; };
                    }
                    ImageFile file({save(tiff)});
                    ASSERT_TRUE(file.read());
                    std::vector<int> expected = countingSamples({0, 1, 2}, channels);
                    if (bits == 8)
                        expected = countingSamples({0, 0, 0}, channels);
                    EXPECT_EQ(samples(file), expected) << bits << channels << rows << bigEndian;
                    EXPECT_EQ(file.attributes().channels, channels);
                }
            }
        }
    }
}

TEST_F(MTiffIoTest, ARangeWithAStepStopsAfterCountLayersAndScalesZ)
{
    ImageFile file({save(countingFile(10, 1, 16))});
    file.attributes().dimZ = 0.5;
    ASSERT_TRUE(file.read(1, 9, 2));
    EXPECT_EQ(samples(file), countingSamples({1, 3, 5, 7}, 1));
    EXPECT_EQ(file.attributes().z, 4);
    EXPECT_EQ(file.attributes().dimZ, 1.0);
    ASSERT_TRUE(file.read(0, 9, 2));
    EXPECT_EQ(file.attributes().dimZ, 2.0) << "the scaling is cumulative";
}

TEST_F(MTiffIoTest, ARangeOutsideTheStackIsRefused)
{
    ImageFile file({save(countingFile(3, 1, 8))});
    MTiffIO reader(file, {path()});
    for (const auto& [first, last, step] :
         {std::tuple{3, 3, 1}, std::tuple{0, 3, 1}, std::tuple{2, 1, 1}, std::tuple{0, 2, 0},
          std::tuple{-1, 1, 1}, std::tuple{0, 1, 5}, std::tuple{0, 2, -1}}) {
        file.errorList().clear();
        EXPECT_FALSE(reader.readLayers(first, last, step));
        EXPECT_EQ(file.errorList(), QStringList{"Trying to read outside of stack"});
    }
}

TEST_F(MTiffIoTest, MaximumAndTimeComeFromTheirTags)
{
    TiffFile tiff = countingFile(2, 1, 16);
    test::TiffField time{306, 2, {}, {}};
    for (const char c : QByteArray("2004:05:06 07:08:09"))
        time.values.push_back(static_cast<unsigned char>(c));
    time.values.push_back(0);
    tiff.pages[0].fields = {{281, 3, {4095}, {}}, time};
    const ImageFile file({save(tiff)});
    EXPECT_EQ(file.attributes().maxValue, 4095);
    EXPECT_EQ(file.attributes().realBitDepth(), 12);
    EXPECT_EQ(file.attributes().timestamp, QDateTime(QDate(2004, 5, 6), QTime(7, 8, 9)));
}

TEST_F(MTiffIoTest, AMaximumThatTheSamplesCannotReachIsTakenAsItStands)
{
    for (const auto& [stated, taken] :
         {std::pair{4095U, 4095}, std::pair{0x7fffffffU, 0x7fffffff}, std::pair{0x80000000U, -1}}) {
        TiffFile tiff = countingFile(2, 1, 8);
        tiff.pages[0].fields = {{281, 4, {stated}, {}}};
        ImageFile file({save(tiff)});
        EXPECT_EQ(file.attributes().maxValue, taken);
        EXPECT_TRUE(file.read());
    }
}

TEST_F(MTiffIoTest, WithoutSamplesPerPixelTheCountOfDepthsIsTheChannels)
{
    TiffFile tiff = countingFile(2, 3, 16);
    for (TiffPage& page : tiff.pages)
        page.without = {277};
    ImageFile file({save(tiff)});
    EXPECT_EQ(file.attributes().channels, 3);
    EXPECT_TRUE(file.read());
}

TEST_F(MTiffIoTest, PagesThatDifferAreRefused)
{
    const std::vector<std::pair<std::function<void(TiffPage&)>, QString>> cases = {
        {[](TiffPage& page) { page.x = 5; }, "Images in file not compatible, ImageWidth"},
        {[](TiffPage& page) { page.y = 5; }, "Images in file not compatible, ImageLength"},
        {[](TiffPage& page) { page.bits = 16; }, "Images in file not compatible, BitsPerSample"},
        {[](TiffPage& page) {
             page.fields = {{277, 3, {2}, {}}};
         },
         "Images in file not compatible, SamplesPerPixel"},
        {[](TiffPage& page) {
             page.fields = {{259, 3, {5}, {}}};
         },
         "LZW compression is not supported"},
        {[](TiffPage& page) {
             page.fields = {{258, 3, {8, 16}, {}}};
         },
         "All channels must have the same BitsPerSample"},
    };
    for (const auto& [change, text] : cases) {
        TiffFile tiff = countingFile(5, 1, 8);
        change(tiff.pages[3]);
        const ImageFile file({save(tiff)});
        EXPECT_EQ(file.attributes().type, ImageType::Unknown);
        EXPECT_EQ(file.errorList(), QStringList{text});
    }
}

TEST_F(MTiffIoTest, AChainWithoutEndIsRefused)
{
    QByteArray bytes("II*\0\x08\0\0\0", 8);
    const auto append = [&bytes](std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes.append(static_cast<char>(value >> 8 * i & 0xff));
    };
    // Directories without entries, each pointing at the next.
    for (std::uint32_t i = 1; i <= 140000; ++i) {
        append(0, 2);
        append(8 + 6 * i, 4);
    }
    append(0, 6);
    const QString name = test::saveBytes(path(), bytes);
    EXPECT_TRUE(MTiffIO::isMTiff(name));
    const ImageFile file({name});
    EXPECT_EQ(file.attributes().type, ImageType::Unknown);
    EXPECT_EQ(file.errorList(), QStringList{"More than 131072 directories"});
}

TEST_F(MTiffIoTest, AMissingDepthIsRefused)
{
    TiffFile tiff = countingFile(2, 1, 8);
    tiff.pages[0].without = {258};
    tiff.pages[1].without = {258};
    const ImageFile file({save(tiff)});
    EXPECT_EQ(file.attributes().type, ImageType::Unknown);
    EXPECT_EQ(file.errorList(), QStringList{"BitsPerSample is missing"});
}

TEST_F(MTiffIoTest, OtherDepthsAreRefusedAtReadOnly)
{
    for (const int bits : {0, 1, 4, 7, 17, 32, 64}) {
        TiffFile tiff = countingFile(2, 1, 8);
        for (TiffPage& page : tiff.pages)
            page.fields = {{258, 3, {static_cast<std::uint32_t>(bits)}, {}}};
        ImageFile file({save(tiff)});
        EXPECT_EQ(file.attributes().type, ImageType::MultiPageTiff);
        EXPECT_EQ(file.attributes().fileX, 4);
        EXPECT_FALSE(file.read());
        EXPECT_EQ(file.errorList(), QStringList{QString("%1 bits per sample not supported").arg(bits)});
    }
}

TEST_F(MTiffIoTest, PackedTwelveBitsAreRefusedAtRead)
{
    TiffFile tiff;
    for (int z = 0; z < 2; ++z) {
        TiffPage page = test::plainPage(6, 4, 1);
        page.fields = {{256, 3, {4}, {}}, {258, 3, {12}, {}}};
        tiff.pages.push_back(page);
    }
    ImageFile file({save(tiff)});
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"12 bits per sample not supported"});
}

TEST_F(MTiffIoTest, TwelveBitsInWordsRead)
{
    TiffFile tiff = countingFile(2, 1, 16);
    for (TiffPage& page : tiff.pages)
        page.fields = {{258, 3, {12}, {}}};
    ImageFile file({save(tiff)});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), countingSamples({0, 1}, 1));
}

TEST_F(MTiffIoTest, NineToFifteenBitsInBigEndianWordsRead)
{
    for (const int bits : {9, 12, 15}) {
        TiffFile tiff = countingFile(2, 1, 16);
        tiff.bigEndian = true;
        for (TiffPage& page : tiff.pages)
            page.fields = {{258, 3, {static_cast<std::uint32_t>(bits)}, {}}};
        ImageFile file({save(tiff)});
        ASSERT_TRUE(file.read());
        EXPECT_EQ(samples(file), countingSamples({0, 1}, 1)) << bits;
    }
}

TEST_F(MTiffIoTest, PlanesBecomeChannels)
{
    for (const int channels : {1, 2, 3, 4}) {
        for (const int rows : {0, 1, 2}) {
            for (const bool bigEndian : {false, true}) {
                TiffFile tiff = countingFile(3, channels, 16, rows);
                tiff.bigEndian = bigEndian;
                // The second page has its channels side by side, as each page may.
                tiff.pages[0].planar = tiff.pages[2].planar = true;
                ImageFile file({save(tiff)});
                ASSERT_TRUE(file.read());
                EXPECT_EQ(samples(file), countingSamples({0, 1, 2}, channels)) << channels << rows;
            }
        }
    }
}

TEST_F(MTiffIoTest, AStripThatIsLongerThanItsPlaneDoesNotMoveTheNext)
{
    TiffFile tiff = countingFile(2, 2, 16);
    for (TiffPage& page : tiff.pages) {
        page.planar = true;
        page.fields = {{279, 4, {28, 28}, {}}};
    }
    ImageFile file({save(tiff)});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), countingSamples({0, 1}, 2));
}

TEST_F(MTiffIoTest, PlanesThatShareAStripAreRefused)
{
    TiffFile tiff = countingFile(2, 3, 8);
    tiff.pages[1].planar = true;
    tiff.pages[1].fields = {{273, 4, {8, 20}, {}}};
    ImageFile file({save(tiff)});
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"The strips of the image do not fit its channels"});
}

TEST_F(MTiffIoTest, PlanesThatAnotherProgramWroteRead)
{
    ASSERT_TRUE(test::haveForeignTiff()) << "tiffcp and Python's tifffile are not installed";
    for (const bool bigEndian : {false, true}) {
        TiffFile tiff = countingFile(2, 3, 8, 2);
        tiff.bigEndian = bigEndian;
        ASSERT_TRUE(test::copyToPlanes(save(tiff), path("planes.tif")));
        ASSERT_TRUE(test::tiffInfo(path("planes.tif")).contains("separate image planes"));
        ImageFile file({path("planes.tif")});
        ASSERT_TRUE(file.read());
        EXPECT_EQ(samples(file), countingSamples({0, 1}, 3));
    }
}

TEST_F(MTiffIoTest, TiledPagesAreRefusedAtRead)
{
    TiffFile tiff = countingFile(2, 1, 8);
    tiff.pages[1].fields = {{322, 3, {16}, {}}, {323, 3, {16}, {}}, {324, 4, {8}, {}}};
    ImageFile file({save(tiff)});
    EXPECT_EQ(file.attributes().type, ImageType::MultiPageTiff);
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"Tiled images are not supported"});
}

TEST_F(MTiffIoTest, WithoutByteCountsAStripIsALayer)
{
    TiffFile tiff = countingFile(2, 1, 16);
    for (TiffPage& page : tiff.pages)
        page.without = {279};
    ImageFile file({save(tiff)});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), countingSamples({0, 1}, 1));
}

TEST_F(MTiffIoTest, AChainThatLoopsKeepsThePagesBeforeIt)
{
    TiffFile tiff = countingFile(3, 1, 8);
    tiff.lastOffset = tiff.directoryOffsets()[1];
    for (TiffPage& page : tiff.pages)
        page.value = [](int x, int y, int) { return x + 10 * y; };
    ImageFile file({save(tiff)});
    EXPECT_EQ(file.attributes().fileZ, 3);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), countingSamples({0, 0, 0}, 1));
}

TEST_F(MTiffIoTest, StripsOutsideTheFileFail)
{
    TiffFile tiff = countingFile(2, 1, 8);
    tiff.pages[1].fields = {{273, 4, {0xfffffff0U}, {}}};
    ImageFile outside({save(tiff)});
    EXPECT_FALSE(outside.read());
    EXPECT_EQ(outside.errorList(), QStringList{"File seek error"});
    tiff.pages[1].fields = {{279, 4, {0x7fffffffU}, {}}};
    ImageFile inBuffer({save(tiff)});
    EXPECT_TRUE(inBuffer.read()) << "what does not fit into the stack is not read";
    tiff.pages[1].fields = {{273, 4, {static_cast<std::uint32_t>(tiff.bytes().size() - 3)}, {}}};
    ImageFile cut({save(tiff)});
    const LogCapture capture;
    EXPECT_FALSE(cut.read());
    EXPECT_EQ(cut.errorList(), QStringList{"Read error"});
    EXPECT_TRUE(capture.contains("file read error"));
}

TEST_F(MTiffIoTest, StripsThatHoldTooLittleLeaveZerosAndAText)
{
    TiffFile tiff = countingFile(2, 1, 16);
    tiff.pages[1].fields = {{279, 4, {2}, {}}};
    ImageFile file({save(tiff)});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"file ends early: 1 of 2 layers"});
    std::vector<int> expected = countingSamples({0, 1}, 1);
    std::fill(expected.begin() + 13, expected.end(), 0);
    EXPECT_EQ(samples(file), expected);
}

TEST_F(MTiffIoTest, SizesThatNoFileHoldsAreRefused)
{
    for (const std::uint32_t size : {0U, 60000U, 0x7fffffffU, 0xffffffffU}) {
        TiffFile tiff = countingFile(2, 1, 16);
        for (TiffPage& page : tiff.pages)
            page.fields = {{256, 4, {size}, {}}, {257, 4, {size}, {}}};
        ImageFile file({save(tiff)});
        EXPECT_FALSE(file.read()) << size;
        EXPECT_FALSE(file.errorList().isEmpty());
    }
}

TEST_F(MTiffIoTest, BadHeadersAreNamed)
{
    const QByteArray good = countingFile(2, 1, 8).bytes();
    const auto textOf = [&](int at, const QByteArray& bytes) {
        ImageFile owner;
        const MTiffIO reader(owner,
                             {test::saveBytes(path(), QByteArray(good).replace(at, bytes.size(), bytes))});
        EXPECT_EQ(owner.attributes().type, ImageType::Unknown);
        return owner.errorList().value(0);
    };
    EXPECT_EQ(textOf(0, "IM"), "Unknown endian");
    EXPECT_EQ(textOf(2, "+"), "Magic number 42 not found");
    EXPECT_EQ(textOf(4, QByteArray("\7\0\0\0", 4)), "ifdOffset not in range");
    EXPECT_EQ(textOf(4, QByteArray("\xff\xff\xff\x7f", 4)), "ifdOffset not in range");
    ImageFile missing;
    const MTiffIO reader(missing, {path("missing.tif")});
    EXPECT_EQ(missing.errorList(), QStringList{"File not readable"});
    ImageFile folder;
    const MTiffIO folderReader(folder, {m_directory.path()});
    EXPECT_EQ(folder.errorList(), QStringList{"File not a file"});
}

TEST_F(MTiffIoTest, AFileCutAnywhereDoesNoHarm)
{
    const TiffFile tiff = countingFile(3, 2, 16, 2);
    const int length = static_cast<int>(tiff.bytes().size());
    for (int cut = 0; cut < length; ++cut) {
        ImageFile owner;
        MTiffIO reader(owner, {save(tiff, cut)});
        // What is left of the chain may be read; nothing that was cut off is made up.
        EXPECT_LE(owner.attributes().fileZ, 3);
        if (owner.attributes().type == ImageType::MultiPageTiff)
            reader.readAll();
    }
}

std::vector<test::StackShape> writableShapes()
{
    std::vector<test::StackShape> shapes;
    for (const int channels : {1, 2, 3, 4}) {
        for (const int bits : {8, 16})
            shapes.push_back({13, 7, 3, channels, bits});
    }
    return shapes;
}

TEST_F(MTiffIoTest, OtherProgramsReadWhatIsWritten)
{
    ASSERT_TRUE(test::haveForeignTiff()) << "tiffcp and Python's tifffile are not installed";
    for (const test::StackShape& shape : writableShapes()) {
        const auto stack = test::randomStack(shape, 7);
        ASSERT_TRUE(stack->write({path()}, ImageType::MultiPageTiff));
        const test::ForeignTiff foreign = test::readWithTifffile(path());
        EXPECT_EQ(std::vector({foreign.x, foreign.y, foreign.pages, foreign.channels, foreign.bits}),
                  std::vector({13, 7, 3, shape.channels, shape.bitDepth}));
        EXPECT_EQ(foreign.samples, samples(*stack));
        QString output;
        ASSERT_TRUE(test::copyWithLibtiff(path(), path("copy.tif"), &output)) << output.toStdString();
        EXPECT_EQ(test::readWithTifffile(path("copy.tif")).samples, samples(*stack));
    }
}

TEST_F(MTiffIoTest, WhatIsWrittenReadsBack)
{
    for (const test::StackShape& shape : writableShapes()) {
        const auto stack = test::randomStack(shape, 3);
        ASSERT_TRUE(stack->write({path()}, ImageType::MultiPageTiff));
        ImageFile file({path()});
        EXPECT_EQ(file.attributes().channels, shape.channels);
        EXPECT_EQ(file.attributes().bitDepth, shape.bitDepth);
        EXPECT_EQ(file.attributes().dimX, -1.0);
        ASSERT_TRUE(file.read());
        EXPECT_EQ(samples(file), samples(*stack));
    }
}

std::uint32_t numberAt(const QByteArray& bytes, qsizetype at, int size)
{
    std::uint32_t value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes[static_cast<int>(at) + i]);
    return value;
}

TEST_F(MTiffIoTest, TheLayoutOfAWrittenFileIsFixed)
{
    auto stack = test::makeStack({3, 2, 2, 3, 16}, [](int x, int y, int z, int c) { return x + y + z + c; });
    stack->attributes().dimX = 0.5;
    ASSERT_TRUE(stack->write({path()}, ImageType::MultiPageTiff));
    const QByteArray bytes = test::fileContent(path());
    // A directory of 150 bytes, its tables: 6 depths, 8 + 4 of the strips, 2 x 8 of the resolutions.
    const std::uint32_t page = 150 + 6 + 8 + 4 + 16;
    const std::uint32_t image = 8 + 2 * page;
    ASSERT_EQ(bytes.size(), static_cast<int>(image + 3 * 2 * 2 * 3 * 2));
    EXPECT_EQ(bytes.left(8), QByteArray("II*\0\x08\0\0\0", 8));
    EXPECT_EQ(numberAt(bytes, 8, 2), 12U);
    EXPECT_EQ(numberAt(bytes, 8 + 146, 4), 8 + page) << "the next directory";
    EXPECT_EQ(numberAt(bytes, 8 + page + 146, 4), 0U);
    const std::vector<std::vector<std::uint32_t>> expected = {
        {256, 3, 1, 3},          {257, 3, 1, 2},   {258, 3, 3, 158}, {259, 3, 1, 1},
        {262, 3, 1, 2},          {273, 4, 2, 164}, {277, 3, 1, 3},   {278, 3, 1, 1},
        {279, 3, 2, 0x00120012}, {282, 5, 1, 176}, {283, 5, 1, 184}, {296, 3, 1, 3}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto at = static_cast<qsizetype>(10 + 12 * i);
        EXPECT_EQ((std::vector{numberAt(bytes, at, 2), numberAt(bytes, at + 2, 2), numberAt(bytes, at + 4, 4),
                               numberAt(bytes, at + 8, 4)}),
                  expected[i]);
    }
    EXPECT_EQ(numberAt(bytes, 164, 4), image);
    EXPECT_EQ(numberAt(bytes, 168, 4), image + 18);
    // 0.5 microns are 1/20000 of a centimetre, upside down; y is unknown.
    EXPECT_EQ((std::vector{numberAt(bytes, 176, 4), numberAt(bytes, 180, 4)}),
              (std::vector<std::uint32_t>{20000, 1}));
    EXPECT_EQ((std::vector{numberAt(bytes, 184, 4), numberAt(bytes, 188, 4)}),
              (std::vector<std::uint32_t>{1, 1}));
}

TEST_F(MTiffIoTest, UpToTwoDepthsStandInTheirEntry)
{
    auto one = test::constantStack({3, 2, 2, 1, 8}, 5);
    ASSERT_TRUE(one->write({path()}, ImageType::MultiPageTiff));
    EXPECT_EQ(numberAt(test::fileContent(path()), 10 + 24 + 8, 4), 8U);
    auto two = test::constantStack({3, 2, 2, 2, 16}, 5);
    ASSERT_TRUE(two->write({path()}, ImageType::MultiPageTiff));
    EXPECT_EQ(numberAt(test::fileContent(path()), 10 + 24 + 4, 4), 2U);
    EXPECT_EQ(numberAt(test::fileContent(path()), 10 + 24 + 8, 4), 0x00100010U);
}

TEST_F(MTiffIoTest, AWrittenRangeHoldsItsLayers)
{
    const auto stack =
        test::makeStack({3, 2, 9, 1, 16}, [](int x, int y, int z, int) { return x + 10 * y + 100 * z; });
    const QStringList errors =
        MTiffIO::write({path()}, stack->attributes(), stack->stackData(), 1, 8, 3, true);
    EXPECT_TRUE(errors.isEmpty());
    ImageFile file({path()});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.attributes().z, 2) << "(8 - 1 + 1) / 3";
    EXPECT_EQ(test::sample(file, 2, 1, 0), 112);
    EXPECT_EQ(test::sample(file, 2, 1, 1), 412);
}

TEST_F(MTiffIoTest, TheWriterRefusesWhatItCannotWrite)
{
    const auto stack = test::constantStack({3, 2, 2, 1, 8}, 5);
    const auto write = [&](const ImageAttributes& attributes, int first, int last, int step, bool overwrite) {
        return MTiffIO::write({path()}, attributes, stack->stackData(), first, last, step, overwrite);
    };
    const QStringList outside = {"Trying to write outside of stack"};
    EXPECT_EQ(write(stack->attributes(), 0, 2, 1, true), outside);
    EXPECT_EQ(write(stack->attributes(), 1, 0, 1, true), outside);
    EXPECT_EQ(write(stack->attributes(), 0, 1, 0, true), outside);
    EXPECT_EQ(write(stack->attributes(), 2, 2, 1, true), outside);
    ImageAttributes wide = stack->attributes();
    wide.x = 65536;
    EXPECT_EQ(write(wide, 0, 1, 1, true), QStringList{"Too large for a TIFF file"});
    EXPECT_FALSE(QFile::exists(path()));
    ASSERT_TRUE(write(stack->attributes(), 0, 1, 1, false).isEmpty());
    EXPECT_EQ(write(stack->attributes(), 0, 1, 1, false), QStringList{"File " + path() + " exists"});
    EXPECT_EQ(MTiffIO::write({path("no/folder.tif")}, stack->attributes(), stack->stackData(), 0, 1, 1, true),
              QStringList{"Unable to open file for writing"});
}

TEST_F(MTiffIoTest, AFullDiskIsAFailedWrite)
{
    ASSERT_TRUE(QFile::exists("/dev/full"));
    const auto stack = test::constantStack({3, 2, 2, 1, 8}, 5);
    for (const ImageType type : {ImageType::MultiPageTiff, ImageType::MetaMorph}) {
        EXPECT_FALSE(stack->write({"/dev/full"}, type));
        EXPECT_EQ(stack->writeErrors(), QStringList{"failed write"});
    }
}

} // namespace
} // namespace tirn
