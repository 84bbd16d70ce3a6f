#include <QDir>

#include <gtest/gtest.h>

#include "formats/imageio.h"
#include "formats/vendor/zeissio.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/lsmfile.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::LsmFile;
using test::samples;

class ZeissIoTest : public testing::Test
{
protected:
    QString path(const QString& name = "a.lsm") const { return m_directory.filePath(name); }

    QTemporaryDir m_directory;
};

std::vector<int> layerSamples(const std::vector<int>& layers, int channels = 1, int mask = 0xff)
{
    std::vector<int> values;
    for (const int z : layers) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) {
                for (int c = 0; c < channels; ++c)
                    values.push_back((x + 10 * y + 40 * c + 100 * z) & mask);
            }
        }
    }
    return values;
}

TEST_F(ZeissIoTest, TenLayersLieBetweenTenThumbnails)
{
    ImageFile file({LsmFile().save(path())});
    const ImageAttributes& a = file.attributes();
    EXPECT_EQ(a.type, ImageType::Zeiss);
    EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth, a.maxValue}),
              std::vector({4, 3, 10, 1, 8, 255}));
    EXPECT_DOUBLE_EQ(a.dimX, 0.1);
    EXPECT_DOUBLE_EQ(a.dimY, 0.2);
    EXPECT_DOUBLE_EQ(a.dimZ, 0.5);
    ASSERT_TRUE(file.read(0, 9, 1));
    EXPECT_EQ(samples(file), layerSamples({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(ZeissIoTest, AStepSkipsLayersAndLeavesTheirDistance)
{
    ImageFile file({LsmFile().save(path())});
    ASSERT_TRUE(file.read(1, 9, 2));
    EXPECT_EQ(samples(file), layerSamples({1, 3, 5, 7}));
    EXPECT_EQ(file.attributes().z, 4);
    EXPECT_DOUBLE_EQ(file.attributes().dimZ, 0.5) << "not scaled";
}

TEST_F(ZeissIoTest, ChannelsLieApart)
{
    for (const int channels : {1, 2, 3, 4, 5}) {
        for (const int bits : {8, 16}) {
            for (const bool thumbnails : {true, false}) {
                LsmFile lsm;
                lsm.channels = channels;
                lsm.bits = bits;
                lsm.dataType = bits == 8 ? 1 : 2;
                lsm.thumbnails = thumbnails;
                lsm.z = 3;
                ImageFile file({lsm.save(path())});
                ASSERT_TRUE(file.read());
                EXPECT_EQ(file.attributes().channels, channels);
                EXPECT_EQ(samples(file), layerSamples({0, 1, 2}, channels, (1 << bits) - 1));
            }
        }
    }
}

TEST_F(ZeissIoTest, TwelveBitsAreWordsWithAMaximum)
{
    LsmFile lsm;
    lsm.bits = 16;
    lsm.dataType = 2;
    const ImageFile file({lsm.save(path())});
    EXPECT_EQ(file.attributes().bitDepth, 16);
    EXPECT_EQ(file.attributes().maxValue, 4095);
    EXPECT_EQ(file.attributes().realBitDepth(), 12);
}

/// Type, depth and maximum that a file with these channel types has.
std::vector<int> outcome(const QString& name, int dataType, const std::vector<int>& channelTypes,
                         QString* logged = nullptr)
{
    LsmFile lsm;
    lsm.channels = 2;
    lsm.dataType = dataType;
    lsm.channelTypes = channelTypes;
    const LogCapture capture;
    const ImageFile file({lsm.save(name)});
    if (logged != nullptr)
        *logged = capture.lines().join('\n');
    return {static_cast<int>(file.attributes().type), file.attributes().bitDepth, file.attributes().maxValue};
}

TEST_F(ZeissIoTest, ChannelsMayHaveTypesOfTheirOwn)
{
    QString logged;
    EXPECT_EQ(outcome(path(), 0, {1, 1}), (std::vector{10, 8, 255}));
    EXPECT_EQ(outcome(path(), 0, {2, 2}), (std::vector{10, 16, 4095}));
    EXPECT_EQ(outcome(path(), 0, {1, 2}, &logged).front(), 11);
    EXPECT_TRUE(logged.contains("Different bits depths per channel not supported"));
    EXPECT_EQ(outcome(path(), 0, {5, 5}, &logged).front(), 11);
    EXPECT_TRUE(logged.contains("32-bit float not supported"));
    EXPECT_EQ(outcome(path(), 0, {7, 7}), (std::vector{10, 0, -1}));
}

TEST_F(ZeissIoTest, FloatsThatTheRecordStatesKeepTheType)
{
    QString logged;
    EXPECT_EQ(outcome(path(), 5, {}, &logged), (std::vector{10, 0, -1}));
    EXPECT_TRUE(logged.contains("32-bit float we don't support"));
    EXPECT_EQ(outcome(path(), 3, {}, &logged), (std::vector{10, 0, -1}));
    EXPECT_TRUE(logged.contains("unknown datatype value"));
    LsmFile lsm;
    lsm.dataType = 5;
    ImageFile file({lsm.save(path())});
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"0 bits per sample not supported"});
}

TEST_F(ZeissIoTest, TheRecordIsPrintedBetweenRulers)
{
    const LogCapture capture;
    const ImageFile file({LsmFile().save(path())});
    EXPECT_EQ(capture.count(QString(50, '*')), 2);
    EXPECT_TRUE(capture.contains("normal x-y-z-scan"));
    EXPECT_TRUE(capture.contains("Scan data"));
    EXPECT_TRUE(capture.contains("DataType 8-bit unsigned integer"));
}

TEST_F(ZeissIoTest, TheNameAndTheByteOrderDecide)
{
    const QByteArray bytes = LsmFile().bytes();
    EXPECT_TRUE(ZeissIO::isZeiss(test::saveBytes(path(), bytes)));
    EXPECT_EQ(ImageFile({test::saveBytes(path("a.LSM"), bytes)}).errorList(),
              QStringList{"Images in file not compatible, ImageWidth"})
        << "read as a multi-page TIFF, which thumbnails do not fit";
    LsmFile plain;
    plain.thumbnails = false;
    EXPECT_EQ(ImageFile({plain.save(path("b.LSM"))}).attributes().type, ImageType::MultiPageTiff);
    test::TiffFile big{{test::plainPage(4, 3, 1), test::plainPage(4, 3, 2)}};
    big.bigEndian = true;
    EXPECT_EQ(ImageFile({big.save(path("big.lsm"))}).attributes().type, ImageType::MultiPageTiff);
    big.pages.pop_back();
    EXPECT_EQ(ImageFile({big.save(path("big.lsm"))}).attributes().type, ImageType::TiffSeries);
}

TEST_F(ZeissIoTest, FewerDirectoriesThanLayersFail)
{
    for (const int claimed : {11, 0x7fffffff}) {
        LsmFile lsm;
        lsm.claimedLayers = claimed;
        ImageFile file({lsm.save(path())});
        EXPECT_EQ(file.attributes().fileZ, claimed);
        const LogCapture capture;
        EXPECT_FALSE(file.read());
        if (claimed == 11) {
            EXPECT_TRUE(capture.contains("AHHHHHH!"));
        }
        EXPECT_TRUE(file.read(0, 9, 1));
    }
}

TEST_F(ZeissIoTest, StripsThatDoNotFitAreLogged)
{
    // The value of the first entry with the tag, a single LONG.
    const auto withValue = [](char tag, const QByteArray& value) {
        QByteArray bytes = LsmFile().bytes();
        const auto entry = bytes.indexOf(QByteArray(1, tag) + QByteArray("\1\4\0\1\0\0\0", 7));
        return bytes.replace(entry + 8, 4, value);
    };
    const LogCapture capture;
    ImageFile shorter({test::saveBytes(path(), withValue('\x17', QByteArray("\x0b\0\0\0", 4)))});
    EXPECT_TRUE(shorter.read());
    EXPECT_TRUE(capture.contains("Layer size mismatch 11 12"));
    ImageFile outside({test::saveBytes(path(), withValue('\x11', QByteArray("\0\0\0\1", 4)))});
    EXPECT_FALSE(outside.read());
    EXPECT_TRUE(capture.contains("Could not read at 16777216"));
}

TEST_F(ZeissIoTest, ALoopOfDirectoriesIsRefused)
{
    LsmFile lsm;
    test::TiffFile unused;
    lsm.lastOffset = 8; // Not a directory, but read as one; and once more behind it.
    const QByteArray bytes = lsm.bytes();
    ImageFile owner;
    const ZeissIO reader(owner, {test::saveBytes(path(), bytes)});
    EXPECT_LE(reader.directories().front().size(), 40U);
    // The last directory points back to the first.
    QByteArray looping = LsmFile().bytes();
    looping.replace(looping.size() - 4, 4, looping.mid(4, 4));
    const LogCapture capture;
    ImageFile file({test::saveBytes(path(), looping)});
    EXPECT_EQ(file.attributes().type, ImageType::Unknown);
    EXPECT_TRUE(capture.contains("old offset = new offset looping"));
}

TEST_F(ZeissIoTest, AMissingRecordIsRefused)
{
    EXPECT_EQ(ImageFile({test::TiffFile{{test::plainPage(4, 3, 1)}}.save(path())}).attributes().type,
              ImageType::Unknown);
    ImageFile missing;
    const ZeissIO reader(missing, {path("missing.lsm")});
    EXPECT_EQ(missing.errorList(), QStringList{"Could not open " + path("missing.lsm") + " read only"});
}

TEST_F(ZeissIoTest, AFileThatEndsEarlyLeavesZerosAndAText)
{
    LsmFile lsm;
    lsm.z = 2;
    lsm.channels = 2;
    QByteArray bytes = lsm.bytes();
    ImageFile file({test::saveBytes(path(), bytes)});
    // The second channel of the second layer moves to the very end of the file and loses half of itself.
    const IFD page = ZeissIO(file, {path()}).directories().front()[2];
    const std::uint32_t old = page.find(273)->values[1];
    const auto table = static_cast<int>(page.find(273)->valueOffset) + 4;
    const QByteArray tail = bytes.mid(static_cast<int>(old), 6);
    QByteArray offset;
    for (int shift = 0; shift < 32; shift += 8)
        offset.append(static_cast<char>(bytes.size() >> shift & 0xff));
    bytes.replace(table, 4, offset);
    ImageFile cut({test::saveBytes(path(), bytes + tail)});
    ASSERT_TRUE(cut.read());
    EXPECT_EQ(cut.errorList(), QStringList{"file ends early: 1 of 2 layers"});
    std::vector<int> expected = layerSamples({0, 1}, 2);
    for (std::size_t i = 24 + 13; i < 48; i += 2)
        expected[i] = 0;
    EXPECT_EQ(samples(cut), expected);
}

TEST_F(ZeissIoTest, AFileCutAnywhereDoesNoHarm)
{
    LsmFile lsm;
    lsm.z = 2;
    lsm.channels = 2;
    lsm.dataType = 0;
    lsm.channelTypes = {1, 1};
    const QByteArray bytes = lsm.bytes();
    for (int cut = 0; cut < bytes.size(); ++cut) {
        ImageFile owner;
        ZeissIO reader(owner, {test::saveBytes(path(), bytes.left(cut))});
        if (owner.attributes().type == ImageType::Zeiss)
            reader.readAll();
    }
}

TEST_F(ZeissIoTest, SizesThatNoFileHoldsAreRefused)
{
    for (const int size : {0, -1, 60000, 0x7fffffff}) {
        LsmFile lsm;
        lsm.z = 2;
        QByteArray bytes = lsm.bytes();
        const auto record = bytes.indexOf(QByteArray("\x4c\x49\x00\x04\xe0\x00\x00\x00", 8));
        ASSERT_GT(record, 0);
        for (int field = 0; field < 2; ++field) {
            for (int i = 0; i < 4; ++i)
                bytes[static_cast<int>(record) + 8 + 4 * field + i] =
                    static_cast<char>(static_cast<std::uint32_t>(size) >> (8 * i) & 0xff);
        }
        ImageFile file({test::saveBytes(path(), bytes)});
        EXPECT_EQ(file.attributes().fileX, size);
        EXPECT_FALSE(file.read());
    }
}

TEST_F(ZeissIoTest, TheTestWriteMakesAFileAChannel)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_directory.path()));
    const auto stack = test::makeStack(
        {3, 2, 2, 2, 16}, [](int x, int y, int z, int c) { return x + 10 * y + 100 * z + 1000 * c; });
    EXPECT_TRUE(stack->write({"ignored"}, ImageType::Zeiss));
    QDir::setCurrent(before);
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files), (QStringList{"test 0.raw", "test 1.raw"}));
    const QByteArray second = test::fileContent(path("test 1.raw"));
    ASSERT_EQ(second.size(), 3 * 2 * 2 * 2);
    EXPECT_EQ(static_cast<unsigned char>(second[22]) + 256 * second[23], 2 + 10 + 100 + 1000);
}

} // namespace
} // namespace tirn
