#include <cmath>

#include <gtest/gtest.h>

#include "formats/vendor/metamorphio.h"
#include "image/imagefile.h"
#include "support/foreigntiff.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/stkfile.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::sample;
using test::samples;
using test::StkFile;

class MetaMorphIoTest : public testing::Test
{
protected:
    QString path(const QString& name = "a.stk") const { return m_directory.filePath(name); }

    QTemporaryDir m_directory;
};

std::vector<int> planeSamples(const std::vector<int>& planes, int channels = 1, int mask = 0xffff)
{
    std::vector<int> values;
    for (const int z : planes) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) {
                for (int c = 0; c < channels; ++c)
                    values.push_back((x + 10 * y + 50 * c + 100 * z) & mask);
            }
        }
    }
    return values;
}

TEST_F(MetaMorphIoTest, TheTagsSayWhatIsInTheFile)
{
    ImageFile file({StkFile().save(path())});
    const ImageAttributes& a = file.attributes();
    EXPECT_EQ(a.type, ImageType::MetaMorph);
    EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth, a.maxValue, a.lens}),
              std::vector({4, 3, 5, 1, 16, -1, -1}));
    EXPECT_EQ(a.magFactor, -1.0F);
    EXPECT_EQ(a.dimX, 0.125);
    EXPECT_EQ(a.dimY, 0.125);
    EXPECT_EQ(a.dimZ, 1.5);
    EXPECT_FALSE(a.hasNotes);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(samples(file), planeSamples({0, 1, 2, 3, 4}));
}

TEST_F(MetaMorphIoTest, StripsOfAnyHeightAndChannelsRead)
{
    for (const int rows : {1, 2, 3}) {
        for (const int channels : {1, 2, 3}) {
            for (const int bits : {8, 16}) {
                StkFile stk;
                stk.rowsPerStrip = rows;
                stk.channels = channels;
                stk.bits = bits;
                ImageFile file({stk.save(path())});
                EXPECT_EQ(file.attributes().channels, channels);
                ASSERT_TRUE(file.read());
                EXPECT_EQ(samples(file), planeSamples({0, 1, 2, 3, 4}, channels, (1 << bits) - 1));
            }
        }
    }
}

TEST_F(MetaMorphIoTest, ARangeWithAStepStopsAfterCountLayersAndScalesZ)
{
    StkFile stk;
    stk.z = 9;
    ImageFile file({stk.save(path())});
    ASSERT_TRUE(file.read(2, 8, 3));
    EXPECT_EQ(samples(file), planeSamples({2, 5}));
    EXPECT_EQ(file.attributes().dimZ, 4.5);
}

TEST_F(MetaMorphIoTest, TheNameMustEndInStkAndTheTagBeThere)
{
    const QByteArray bytes = StkFile().bytes();
    EXPECT_TRUE(MetaMorphIO::isMetaMorph(test::saveBytes(path(), bytes)));
    EXPECT_FALSE(MetaMorphIO::isMetaMorph(test::saveBytes(path("a.STK"), bytes)));
    EXPECT_EQ(ImageFile({test::saveBytes(path("b.tif"), bytes)}).attributes().type, ImageType::TiffSeries);
    const QString plain = test::TiffFile{{test::plainPage(4, 3, 1)}}.save(path("plain.stk"));
    EXPECT_FALSE(MetaMorphIO::isMetaMorph(plain));
    EXPECT_EQ(ImageFile({plain}).attributes().type, ImageType::TiffSeries);
    const LogCapture capture;
    EXPECT_FALSE(MetaMorphIO::isMetaMorph(test::saveBytes(path(), QByteArray(bytes).replace(2, 1, "+"))));
    EXPECT_FALSE(MetaMorphIO::isMetaMorph(test::saveBytes(
        path(), QByteArray(bytes).replace(4, 4, QByteArray(4, '\1').replace(1, 3, QByteArray(3, '\0'))))));
    EXPECT_EQ(capture.debugLines(), (QStringList{"wrong answer", "bad offset"}));
}

TEST_F(MetaMorphIoTest, OtherFilesAreRefusedWithATextEach)
{
    const QByteArray good = StkFile().bytes();
    ImageType type = ImageType::MetaMorph;
    const auto textOf = [&](const QByteArray& bytes) {
        ImageFile owner;
        const MetaMorphIO reader(owner, {test::saveBytes(path(), bytes)});
        type = owner.attributes().type;
        return owner.errorList();
    };
    StkFile big;
    big.bigEndian = true;
    EXPECT_EQ(textOf(big.bytes()), QStringList{"Wrong Endian"});
    EXPECT_EQ(textOf(QByteArray(good).replace(2, 1, "+")), QStringList{"Wrong answer"});
    EXPECT_EQ(textOf(QByteArray(good).replace(4, 4, QByteArray("\7\0\0\0", 4))), QStringList{"Bad offset"});
    EXPECT_EQ(textOf(""), QStringList{"Wrong Endian"});
    EXPECT_EQ(type, ImageType::Unknown);
    StkFile mixed;
    mixed.fields = {{258, 3, {16, 8}, {}}};
    EXPECT_EQ(textOf(mixed.bytes()), QStringList{"Bitdepth per color channel must be equal"});
    EXPECT_EQ(type, ImageType::MetaMorph) << "what has a directory keeps its type";
    StkFile noDepth;
    noDepth.fields = {{258, 3, {}, {}, 0}};
    EXPECT_EQ(textOf(noDepth.bytes()), QStringList{"BitsPerSample is missing"});
    StkFile noPlanes;
    noPlanes.fields = {{33629, 5, {}, QByteArray(4, '\xff'), 5}};
    EXPECT_EQ(textOf(noPlanes.bytes()), QStringList{"unable to seek in file: " + path()});
    StkFile cutPlanes;
    const QByteArray bytes = cutPlanes.bytes();
    const auto withOffset = [&](int tag, std::uint32_t offset) {
        // The entry's tag and type, as they stand in the directory, and its value field 8 bytes on.
        const char entry[] = {static_cast<char>(tag & 0xff), static_cast<char>(tag >> 8),
                              static_cast<char>(tag == 33629 ? 5 : 4), 0};
        const auto at = bytes.indexOf(QByteArray(entry, 4));
        EXPECT_GT(at, 0);
        return QByteArray(bytes).replace(at + 8, 4, reinterpret_cast<const char*>(&offset), 4);
    };
    const auto size = static_cast<std::uint32_t>(bytes.size());
    EXPECT_EQ(textOf(withOffset(33629, size - 23)), QStringList{"unable to read in file: " + path()});
    EXPECT_EQ(textOf(withOffset(33629, size + 1)), QStringList{"unable to seek in file: " + path()});
    EXPECT_EQ(textOf(withOffset(33628, size + 1)), QStringList{"unable to seek UIC1Tag in file: " + path()});
    ImageFile missing;
    const MetaMorphIO reader(missing, {path("missing.stk")});
    EXPECT_EQ(missing.errorList(), QStringList{"Unable to open file: " + path("missing.stk")});
}

TEST_F(MetaMorphIoTest, AnUnknownDistanceIsNotANumber)
{
    StkFile stk;
    stk.distance[0] = stk.distance[1] = 0;
    ImageFile file({stk.save(path())});
    EXPECT_TRUE(std::isnan(file.attributes().dimZ));
    ASSERT_TRUE(file.read());
    EXPECT_TRUE(std::isnan(file.attributes().dimZ));
}

TEST_F(MetaMorphIoTest, ACalibrationWithADenominatorOfZeroLeavesTheSize)
{
    StkFile stk;
    QByteArray bytes = stk.bytes();
    // The rationals stand before the unit's length and text.
    bytes.replace(bytes.size() - 22 + 4, 4, QByteArray(4, '\0'));
    const ImageFile file({test::saveBytes(path(), bytes)});
    EXPECT_EQ(file.attributes().dimX, -1.0);
    EXPECT_EQ(file.attributes().dimY, 0.125);
}

TEST_F(MetaMorphIoTest, AMissingCalibrationLeavesTheSizesUnknown)
{
    StkFile stk;
    stk.calibration[1] = 0;
    const ImageFile file({stk.save(path())});
    EXPECT_EQ(file.attributes().type, ImageType::MetaMorph);
    EXPECT_EQ(file.attributes().dimX, -1.0);
}

TEST_F(MetaMorphIoTest, ASecondDirectoryIsReadRightBehindTheFirst)
{
    QByteArray bytes = StkFile().bytes();
    test::TiffFile tiff{{test::plainPage(1, 1, 1)}};
    // The next offset stands before the rationals and the unit (22 bytes), and points nowhere useful.
    bytes = bytes.left(bytes.size() - 26) + QByteArray("\1\0\0\0", 4);
    QByteArray second("\1\0\x19\1\3\0\1\0\0\0\xff\x0f\0\0", 14);
    second += QByteArray(4, '\0');
    ImageFile owner;
    const MetaMorphIO reader(owner, {test::saveBytes(path(), bytes + second)});
    const IFD& ifd = reader.directories().front().front();
    EXPECT_EQ(ifd.value(281), 4095U);
    EXPECT_EQ(ifd.value(256), 4U);
}

TEST_F(MetaMorphIoTest, RefusedRangesPrintAndChangeNothing)
{
    ImageFile owner;
    MetaMorphIO reader(owner, {StkFile().save(path())});
    const LogCapture capture;
    EXPECT_FALSE(reader.readLayers(-1, 2, 1));
    EXPECT_FALSE(reader.readLayers(5, 5, 1));
    EXPECT_EQ(capture.lines().filter("first is invalid ").size(), 2);
    EXPECT_FALSE(reader.readLayers(0, 5, 1));
    EXPECT_FALSE(reader.readLayers(0, -1, 1));
    EXPECT_EQ(capture.lines().filter("last is invalid ").size(), 2);
    EXPECT_TRUE(reader.readLayers(3, 2, 1));
    EXPECT_TRUE(capture.contains("Ok idiot, why do you want to load 0 layers?"));
    EXPECT_FALSE(owner.isLoaded());
    EXPECT_FALSE(reader.readLayers(0, 4, 0));
    owner.attributes().channels = 0;
    EXPECT_FALSE(reader.readLayers(0, 4, 1));
    EXPECT_TRUE(capture.contains("Impossible number of channels 0"));
    owner.attributes().channels = 1;
    owner.attributes().bitDepth = 7;
    EXPECT_FALSE(reader.readLayers(0, 4, 1));
    EXPECT_TRUE(capture.contains("Impossible bit depth 7"));
    owner.attributes().bitDepth = 32;
    EXPECT_FALSE(reader.readLayers(0, 4, 1));
    EXPECT_EQ(owner.errorList().last(), "32 bits per sample not supported");
}

TEST_F(MetaMorphIoTest, AFileThatEndsEarlyReadsOnWithZeros)
{
    // Tables first, planes last, so that the end can be cut off.
    const auto stack =
        test::makeStack({4, 3, 5, 1, 16}, [](int x, int y, int z, int) { return x + 10 * y + 100 * z; });
    ASSERT_TRUE(stack->write({path()}, ImageType::MetaMorph));
    const QByteArray bytes = test::fileContent(path());
    test::saveBytes(path(), bytes.left(bytes.size() - 30));
    ImageFile file({path()});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.errorList(), (QStringList{"File seek error", "Read error"}));
    std::vector<int> expected = planeSamples({0, 1, 2, 3, 4});
    std::fill(expected.end() - 15, expected.end(), 0);
    EXPECT_EQ(samples(file), expected);
}

TEST_F(MetaMorphIoTest, StripsThatRunBackwardsLeaveZerosInFrontOfTheFile)
{
    // The last strip lies 192 bytes before the first: each plane is looked for 184 bytes before the one in
    // front.
    StkFile stk;
    stk.z = 3;
    stk.rowsPerStrip = 1;
    stk.fields = {{273, 4, {200, 150, 8}, {}}, {279, 4, {8, 8, 8}, {}}};
    ImageFile file({stk.save(path())});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"File seek error"});
    const std::vector<int> all = samples(file);
    EXPECT_EQ(std::vector<int>(all.begin() + 12 + 4, all.end()), std::vector<int>(8 + 12))
        << "only the first row of the second plane is in the file";
}

TEST_F(MetaMorphIoTest, APlaneBeyondAllNumbersIsNotFound)
{
    StkFile stk;
    stk.fields = {{33629, 5, {}, QByteArray(24, '\1'), 0x7fffffff},
                  {273, 4, {8, 0xffffffff, 0xffffffff}, {}},
                  {279, 4, {24, 24, 0xffffffff}, {}}};
    stk.rowsPerStrip = 1;
    ImageFile file({stk.save(path())});
    EXPECT_TRUE(file.read(0x7ffffffe, 0x7ffffffe, 1));
    EXPECT_TRUE(file.errorList().contains("File seek error"));
    EXPECT_EQ(samples(file), std::vector<int>(12));
}

TEST_F(MetaMorphIoTest, PlanesThatNoFileHoldsAreRefused)
{
    StkFile stk;
    stk.fields = {{33629, 5, {}, QByteArray(24, '\1'), 0x7fffffff}};
    ImageFile file({stk.save(path())});
    EXPECT_EQ(file.attributes().fileZ, 0x7fffffff);
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"Read error"});
}

TEST_F(MetaMorphIoTest, PlanesOfChannelsBecomeChannels)
{
    StkFile stk;
    stk.channels = 2;
    stk.fields = {{284, 3, {2}, {}}, {273, 4, {8, 32}, {}}, {279, 4, {24, 24}, {}}};
    // What stands at a place of the file belongs to the channel whose plane holds the place.
    stk.value = [](int x, int y, int z, int c) {
        const int place = 2 * (4 * y + x) + c;
        return place % 12 + 50 * (place / 12) + 100 * z;
    };
    ImageFile file({stk.save(path())});
    ASSERT_TRUE(file.read());
    for (const auto& [x, y, z, c] : {std::array{0, 0, 0, 0}, std::array{3, 2, 1, 0}, std::array{1, 1, 4, 1}})
        EXPECT_EQ(*file.voxel16(x, y, z, c), 4 * y + x + 50 * c + 100 * z);
}

TEST_F(MetaMorphIoTest, VoxelsThatLookLikeDirectoriesEndSoon)
{
    // Empty directories with a next one each, as far as the file goes.
    StkFile stk;
    stk.calibration[1] = 0;
    // Without the offset of no next directory and the 22 bytes of calibration behind it.
    QByteArray bytes = stk.bytes().chopped(26) + QByteArray("\1\0\0\0", 4);
    for (int i = 0; i < 1000000; ++i)
        bytes.append(QByteArray("\0\0\1\0\0\0", 6));
    const LogCapture capture;
    ImageFile owner;
    const MetaMorphIO reader(owner, {test::saveBytes(path(), bytes)});
    EXPECT_EQ(owner.attributes().type, ImageType::MetaMorph);
    EXPECT_EQ(capture.lines().filter("numIFD: ").size(), 1024);
}

TEST_F(MetaMorphIoTest, AFileCutAnywhereDoesNoHarm)
{
    const QByteArray bytes = StkFile().bytes();
    for (int cut = 0; cut < bytes.size(); ++cut) {
        ImageFile owner;
        MetaMorphIO reader(owner, {test::saveBytes(path(), bytes.left(cut))});
        if (owner.attributes().type == ImageType::MetaMorph)
            reader.readAll();
    }
}

TEST_F(MetaMorphIoTest, AWrittenStackReadsBack)
{
    for (const int channels : {1, 2, 3, 4}) {
        for (const int bits : {8, 16}) {
            for (const int rows : {1, 2, 7}) {
                auto stack = test::randomStack({13, rows, 5, channels, bits}, 5);
                stack->attributes().dimX = stack->attributes().dimY = 0.1;
                stack->attributes().dimZ = 1.25;
                ASSERT_TRUE(stack->write({path()}, ImageType::MetaMorph));
                EXPECT_TRUE(MetaMorphIO::isMetaMorph(path()));
                ImageFile file({path()});
                const ImageAttributes& a = file.attributes();
                EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth}),
                          std::vector({13, rows, 5, channels, bits}));
                EXPECT_EQ(a.dimX, 0.1);
                EXPECT_EQ(a.dimY, 0.1);
                EXPECT_EQ(a.dimZ, 1.25);
                ASSERT_TRUE(file.read());
                EXPECT_EQ(samples(file), samples(*stack));
            }
        }
    }
}

TEST_F(MetaMorphIoTest, OtherProgramsReadWhatIsWritten)
{
    ASSERT_TRUE(test::haveForeignTiff()) << "tiffcp and Python's tifffile are not installed";
    for (const int bits : {8, 16}) {
        auto stack = test::randomStack({13, 7, 3, 1, bits}, 5);
        stack->attributes().dimX = stack->attributes().dimY = 0.1;
        ASSERT_TRUE(stack->write({path()}, ImageType::MetaMorph));
        const test::ForeignTiff planes = test::readWithTifffile(path());
        EXPECT_EQ((std::vector{planes.pages, planes.x, planes.y, planes.channels, planes.bits}),
                  (std::vector{3, 13, 7, 1, bits}));
        EXPECT_EQ(planes.samples, samples(*stack));
        // The page that plain TIFF knows is the first plane.
        std::vector<int> first = samples(*stack);
        first.resize(13 * 7);
        QString output;
        ASSERT_TRUE(test::copyWithLibtiff(path(), path("copy.tif"), &output)) << output.toStdString();
        EXPECT_EQ(test::readWithTifffile(path("copy.tif")).samples, first);
    }
}

std::uint32_t numberAt(const QByteArray& bytes, std::uint32_t at, int size)
{
    std::uint32_t value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes[static_cast<int>(at) + i]);
    return value;
}

TEST_F(MetaMorphIoTest, TheLayoutOfAWrittenFileIsFixed)
{
    auto stack = test::makeStack({3, 2, 2, 3, 16}, [](int x, int y, int z, int c) { return x + y + z + c; });
    stack->attributes().dimX = 0.5;
    stack->attributes().dimY = 0.25;
    stack->attributes().dimZ = 2;
    ASSERT_TRUE(stack->write({path()}, ImageType::MetaMorph));
    const QByteArray bytes = test::fileContent(path());
    // 170: 3 depths, 2 offsets, 2 byte counts, two resolutions, the planes and the room of one, the
    // calibration.
    const std::uint32_t planes = 170 + 6 + 8 + 4 + 16;
    const std::uint32_t calibration = planes + 24 * 3;
    const std::uint32_t image = calibration + 49;
    ASSERT_EQ(bytes.size(), static_cast<int>(image + 3 * 2 * 2 * 3 * 2));
    EXPECT_EQ(bytes.left(8), QByteArray("II*\0\x08\0\0\0", 8));
    EXPECT_EQ(numberAt(bytes, 8, 2), 13U);
    const std::vector<std::vector<std::uint32_t>> expected = {{256, 3, 1, 3},
                                                              {257, 3, 1, 2},
                                                              {258, 3, 3, 170},
                                                              {259, 3, 1, 1},
                                                              {262, 3, 1, 2},
                                                              {273, 4, 2, 176},
                                                              {278, 3, 1, 1},
                                                              {279, 3, 2, 0x00120012},
                                                              {282, 5, 1, 188},
                                                              {283, 5, 1, 196},
                                                              {296, 3, 1, 1},
                                                              {33629, 5, 2, planes},
                                                              {33628, 4, 3, calibration}};
    for (std::uint32_t i = 0; i < expected.size(); ++i) {
        const std::uint32_t at = 10 + 12 * i;
        EXPECT_EQ((std::vector{numberAt(bytes, at, 2), numberAt(bytes, at + 2, 2), numberAt(bytes, at + 4, 4),
                               numberAt(bytes, at + 8, 4)}),
                  expected[i]);
    }
    EXPECT_EQ(numberAt(bytes, 166, 4), 0U);
    EXPECT_EQ(numberAt(bytes, 176, 4), image);
    EXPECT_EQ(numberAt(bytes, 180, 4), image + 18);
    const auto longs = [&](std::uint32_t at, int count) {
        std::vector<std::uint32_t> values;
        for (int i = 0; i < count; ++i)
            values.push_back(numberAt(bytes, at + 4 * static_cast<std::uint32_t>(i), 4));
        return values;
    };
    EXPECT_EQ(longs(188, 4), (std::vector<std::uint32_t>{1, 1, 1, 1}));
    EXPECT_EQ(longs(planes, 18),
              (std::vector<std::uint32_t>{2, 1, 0, 0, 0, 0, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(longs(calibration, 11), (std::vector<std::uint32_t>{4, calibration + 24, 5, calibration + 32, 6,
                                                                  calibration + 40, 1, 2, 1, 4, 5}));
    EXPECT_EQ(bytes.mid(static_cast<int>(calibration) + 44, 5), "um   ");
}

TEST_F(MetaMorphIoTest, WithoutPixelSizesThereIsNoCalibration)
{
    auto stack = test::constantStack({3, 2, 2, 1, 8}, 5);
    ASSERT_TRUE(stack->write({path()}, ImageType::MetaMorph));
    EXPECT_EQ(numberAt(test::fileContent(path()), 10 + 12 * 12 + 4, 4), 0U);
    EXPECT_EQ(numberAt(test::fileContent(path()), 10 + 12 * 12 + 8, 4), 0U);
    ImageFile file({path()});
    EXPECT_EQ(file.attributes().dimX, -1.0);
    EXPECT_TRUE(std::isnan(file.attributes().dimZ));
}

TEST_F(MetaMorphIoTest, APixelSizeOfZeroHasRoomButNoData)
{
    auto stack = test::constantStack({3, 2, 2, 1, 8}, 5);
    stack->attributes().dimX = stack->attributes().dimY = 0;
    ASSERT_TRUE(stack->write({path()}, ImageType::MetaMorph));
    const QByteArray bytes = test::fileContent(path());
    const std::uint32_t calibration = numberAt(bytes, 10 + 12 * 12 + 8, 4);
    EXPECT_EQ(numberAt(bytes, 10 + 12 * 12 + 4, 4), 3U);
    EXPECT_EQ(bytes.mid(static_cast<int>(calibration), 49), QByteArray(49, '\0'));
}

TEST_F(MetaMorphIoTest, AStepOfOneWritesTheWholeStack)
{
    const auto stack = test::makeStack({3, 2, 4, 1, 8}, [](int, int, int z, int) { return z; });
    ASSERT_TRUE(
        MetaMorphIO::write({path()}, stack->attributes(), stack->stackData(), 1, 2, 1, true).isEmpty());
    ImageFile whole({path()});
    EXPECT_EQ(whole.attributes().fileZ, 2);
    ASSERT_TRUE(whole.read());
    EXPECT_EQ(sample(whole, 0, 0, 0), 0) << "from the first layer, whatever was asked for";
    EXPECT_EQ(test::fileContent(path()).right(24),
              QByteArray(6, '\0') + QByteArray(6, '\1') + QByteArray(6, '\2') + QByteArray(6, '\3'));
    ASSERT_TRUE(
        MetaMorphIO::write({path()}, stack->attributes(), stack->stackData(), 1, 3, 2, true).isEmpty());
    ImageFile stepped({path()});
    ASSERT_TRUE(stepped.read());
    EXPECT_EQ(stepped.attributes().z, 1);
    EXPECT_EQ(sample(stepped, 0, 0, 0), 1);
}

TEST_F(MetaMorphIoTest, ARowOfTwelveBitsIsCountedAsPacked)
{
    auto stack = test::constantStack({5, 2, 1, 3, 16}, 5);
    stack->attributes().bitDepth = 12;
    ASSERT_TRUE(
        MetaMorphIO::write({path()}, stack->attributes(), stack->stackData(), 0, 0, 1, true).isEmpty());
    // 5 x 12 / 8 is 7 bytes, three times; and two rows of them behind the tables.
    const QByteArray bytes = test::fileContent(path());
    EXPECT_EQ(numberAt(bytes, 10 + 7 * 12 + 8, 4), 0x00150015U);
    EXPECT_EQ(bytes.size(), 170 + 6 + 8 + 4 + 16 + 2 * 24 + 2 * 21);
}

TEST_F(MetaMorphIoTest, TheWriterRefusesWhatItCannotWrite)
{
    const auto stack = test::constantStack({3, 2, 2, 1, 8}, 5);
    const auto write = [&](const ImageAttributes& attributes, int first, int last, int step, bool overwrite) {
        return MetaMorphIO::write({path()}, attributes, stack->stackData(), first, last, step, overwrite);
    };
    const QStringList outside = {"Trying to write outside of stack"};
    EXPECT_EQ(write(stack->attributes(), 0, 2, 1, true), outside);
    EXPECT_EQ(write(stack->attributes(), 1, 0, 1, true), outside);
    EXPECT_EQ(write(stack->attributes(), 0, 1, 0, true), outside);
    ImageAttributes wide = stack->attributes();
    wide.y = 65536;
    EXPECT_EQ(write(wide, 0, 1, 1, true), QStringList{"Too large for a TIFF file"});
    wide = stack->attributes();
    wide.x = 40000;
    wide.channels = 2;
    EXPECT_EQ(write(wide, 0, 1, 1, true), QStringList{"Too large for a TIFF file"}) << "row bytes";
    wide = stack->attributes();
    wide.bitDepth = 32;
    EXPECT_EQ(write(wide, 0, 1, 1, true), QStringList{"32 bits per sample not supported"});
    EXPECT_FALSE(QFile::exists(path()));
    ASSERT_TRUE(write(stack->attributes(), 0, 1, 1, false).isEmpty());
    EXPECT_EQ(write(stack->attributes(), 0, 1, 1, false), QStringList{"File " + path() + " exists"});
}

} // namespace
} // namespace tirn
