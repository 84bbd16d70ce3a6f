#include <QDir>

#include <gtest/gtest.h>

#include "formats/imageio.h"
#include "formats/vendor/oifparser.h"
#include "formats/vendor/olympusio.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::samples;

/// An Olympus data set: the text and the TIFF files beside it.
struct OifSet
{
    int z = 10;
    int channels = 2;
    int bits = 12;
    int times = 0;
    bool bigEndian = false;
    int missing = 0;
    /// Replaced in the text, in turn.
    QList<QPair<QString, QString>> changes = {};
    bool utf16 = true;

    QString text() const
    {
        const auto axis = [](int number, const char* name, int size, const char* unit,
                             const char* more = "") {
            return QString(
                       "[Axis %1 Parameters Common]\r\nAxisName=\"%2\"\r\n%5MaxSize=%3\r\nPixUnit=\"%4\"\r\n")
                .arg(number)
                .arg(name)
                .arg(size)
                .arg(unit)
                .arg(more);
        };
        QString all = "[Acquisition Parameters Common]\r\nImageCaputreDate='2004-05-06 07:08:09'\r\n";
        all += axis(0, "X", 4, "um") + axis(1, "Y", 3, "um") + axis(2, "Ch", channels, "Ch");
        all += axis(3, "Z", z, "nm", "Interval=500\r\n") + axis(4, "T", times, "ms");
        all += "[Channel 1 Parameters]\r\nExcitationWavelength=488\r\n";
        all += "[File Info]\r\nDataName=\"set one.oif\"\r\n";
        all += QString("[Reference Image Parameter]\r\nHeightConvertValue=0.2\r\nHeightUnit=\"um\"\r\n"
                       "ImageHeight=3\r\nImageWidth=4\r\nValidBitCounts=%1\r\nWidthConvertValue=0.3\r\n"
                       "WidthUnit=\"um\"\r\n[Version Info]\r\nFileVersion=1\r\n")
                   .arg(bits);
        for (const auto& [before, after] : changes)
            all.replace(before, after);
        return all;
    }

    QString save(const QTemporaryDir& directory) const
    {
        const QDir folder(directory.path());
        folder.mkdir("set one.oif.files");
        int left = channels * z * std::max(times, 1) - missing;
        for (int c = 0; c < channels; ++c) {
            for (int layer = 0; layer < z && left > 0; ++layer, --left) {
                test::TiffPage page;
                page.bits = bits;
                page.value = [c, layer](int x, int y, int) { return x + 10 * y + 50 * c + 100 * layer; };
                page.fields = {{258, 3, {bits > 8 ? 16U : 8U}, {}}};
                page.rowsPerStrip = 2;
                test::TiffFile file{{page}};
                file.bigEndian = bigEndian;
                const QString name = QString("set one.oif.files/set one_C%1Z%2.tif")
                                         .arg(c + 1, 3, 10, QChar('0'))
                                         .arg(layer + 1, 3, 10, QChar('0'));
                file.save(folder.filePath(name));
            }
        }
        QByteArray bytes = text().toUtf8();
        if (utf16) {
            bytes = QByteArray("\xff\xfe");
            for (const QChar character : text())
                bytes.append(static_cast<char>(character.unicode() & 0xff)).append('\0');
        }
        return test::saveBytes(folder.filePath("set one.oif"), bytes);
    }
};

/// Layers in order; -1 is a layer of zeros.
std::vector<int> layerSamples(const std::vector<int>& layers, int channels = 2, int mask = 0xffff)
{
    std::vector<int> values;
    for (const int z : layers) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) {
                for (int c = 0; c < channels; ++c)
                    values.push_back(z < 0 ? 0 : (x + 10 * y + 50 * c + 100 * z) & mask);
            }
        }
    }
    return values;
}

class OlympusIoTest : public testing::Test
{
protected:
    bool accepted(const OifSet& set) { return OlympusIO::isOlympus(set.save(m_directory)); }
    bool acceptedWith(const QString& before, const QString& after)
    {
        OifSet set;
        set.changes = {{before, after}};
        return accepted(set);
    }

    QTemporaryDir m_directory;
};

TEST_F(OlympusIoTest, TheTextSaysWhatTheStackIs)
{
    ImageFile file({OifSet().save(m_directory)});
    const ImageAttributes& a = file.attributes();
    EXPECT_EQ(a.type, ImageType::Olympus);
    EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth}),
              std::vector({4, 3, 10, 2, 12}));
    EXPECT_EQ(a.dimX, 0.2) << "the height";
    EXPECT_EQ(a.dimY, 0.3) << "the width";
    EXPECT_EQ(a.dimZ, 0.5);
    EXPECT_EQ(a.timestamp, QDateTime(QDate(2004, 5, 6), QTime(7, 8, 9)));
    EXPECT_EQ(file.fileNames().size(), 20);
    EXPECT_EQ(file.fileNames().at(10), "set one_C002Z001.tif") << "layer 0 of channel 1";
}

TEST_F(OlympusIoTest, ReadingAllLeavesTheLastLayerEmpty)
{
    ImageFile file({OifSet().save(m_directory)});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.attributes().z, 10);
    EXPECT_EQ(samples(file), layerSamples({0, 1, 2, 3, 4, 5, 6, 7, 8, -1}));
}

TEST_F(OlympusIoTest, EveryDepthByteOrderAndNumberOfChannelsReads)
{
    for (const int bits : {8, 12, 16}) {
        for (const int channels : {1, 2, 3}) {
            for (const bool bigEndian : {false, true}) {
                const QTemporaryDir directory;
                OifSet set;
                set.z = 3;
                set.bits = bits;
                set.channels = channels;
                set.bigEndian = bigEndian;
                ImageFile file({set.save(directory)});
                ASSERT_TRUE(file.read());
                EXPECT_EQ(samples(file), layerSamples({0, 1, -1}, channels, bits == 8 ? 0xff : 0xffff));
            }
        }
    }
}

TEST_F(OlympusIoTest, ARangeIsPlacedFromTheStartOfTheStack)
{
    ImageFile file({OifSet().save(m_directory)});
    ASSERT_TRUE(file.read(2, 8, 2));
    EXPECT_EQ(samples(file), layerSamples({2, 4, 6}));
    EXPECT_EQ(file.attributes().dimZ, 1.0);
    ASSERT_TRUE(file.read(0, 9, 4));
    EXPECT_EQ(samples(file), layerSamples({0, 4})) << "no more layers than the stack has";
    ASSERT_TRUE(file.read(3, 3, 1));
    EXPECT_EQ(samples(file), layerSamples({-1}));
}

TEST_F(OlympusIoTest, ThePlainTextIsReadAsWell)
{
    OifSet set;
    set.utf16 = false;
    EXPECT_TRUE(accepted(set));
}

TEST_F(OlympusIoTest, UnitsOfTheDepthAreNanometresOrMicrons)
{
    OifSet set;
    set.changes = {{"PixUnit=\"nm\"", "PixUnit=\"um\""}};
    EXPECT_EQ(ImageFile({set.save(m_directory)}).attributes().dimZ, 500);
    EXPECT_FALSE(acceptedWith("PixUnit=\"nm\"", "PixUnit=\"mm\""));
    EXPECT_TRUE(acceptedWith("PixUnit=\"nm\"", "PixUnit=\"NM\""));
}

TEST_F(OlympusIoTest, NoTimePointsAreOne)
{
    OifSet set;
    OifParser none(set.save(m_directory), OifParser::Purpose::Reader);
    ASSERT_TRUE(none.parse());
    EXPECT_EQ(none.timePoints(), 1);
    set.times = 2;
    set.z = 5;
    set.channels = 1;
    const QTemporaryDir directory;
    EXPECT_FALSE(OifParser(set.save(directory), OifParser::Purpose::Reader).parse()) << "too few files";
}

TEST_F(OlympusIoTest, OnlyTheProbeSeesTheChannels)
{
    OifSet set;
    OifParser probe(set.save(m_directory), OifParser::Purpose::Probe);
    ASSERT_TRUE(probe.parse());
    EXPECT_EQ(probe.attributes().excitationWavelengths, (QList<double>{488, 0}));
    OifParser reader(set.save(m_directory), OifParser::Purpose::Reader);
    ASSERT_TRUE(reader.parse());
    EXPECT_EQ(reader.attributes().excitationWavelengths, (QList<double>{0, 0}));
}

TEST_F(OlympusIoTest, ADepthWithoutAnIntervalIsOfUnknownSize)
{
    OifSet set;
    set.changes = {{"Interval=500\r\n", ""}};
    const QString name = set.save(m_directory);
    EXPECT_TRUE(OlympusIO::isOlympus(name));
    ImageFile file({name});
    EXPECT_EQ(file.attributes().type, ImageType::Olympus);
    EXPECT_EQ(file.attributes().fileZ, 10);
    EXPECT_EQ(file.attributes().dimZ, -1.0);
    EXPECT_TRUE(file.read());
}

TEST_F(OlympusIoTest, ADateThatIsNoneIsLoggedAndDoesNotMatter)
{
    const LogCapture capture;
    EXPECT_TRUE(acceptedWith("2004-05-06", "once upon a time"));
    EXPECT_TRUE(capture.contains("problem with common paramters"));
}

TEST_F(OlympusIoTest, BadValuesFailWithALogEach)
{
    const std::vector<std::array<QString, 3>> cases = {
        {"Interval=500", "Interval=0", "problem with axis"},
        {"MaxSize=10", "MaxSize=0", "problem with axis"},
        {"MaxSize=2", "MaxSize=0", "problem with axis"},
        {"ExcitationWavelength=488", "ExcitationWavelength=0", "problem with channel"},
        {"ImageWidth=4", "ImageWidth=0", "problem with ImageWidth"},
        {"ImageHeight=3", "ImageHeight=x", "problem with ImageHeight"},
        {"HeightConvertValue=0.2", "HeightConvertValue=0", "problem with height convert"},
        {"WidthConvertValue=0.3", "WidthConvertValue=-1", "problem with width convert"},
        {"HeightUnit=\"um\"", "HeightUnit=\"nm\"", "problem with height unit"},
        {"WidthUnit=\"um\"", "WidthUnit=\"nm\"", "problem with width unit"},
        {"ValidBitCounts=12", "ValidBitCounts=7", "problem wth bitdepth"},
        {"ValidBitCounts=12", "ValidBitCounts=17", "problem wth bitdepth"},
        {"ImageWidth=4", "ImageWidth=0", "problem with references"},
        {"set one.oif", "other.oif", ".files does not exist"},
    };
    for (const auto& [before, after, text] : cases) {
        const LogCapture capture;
        EXPECT_FALSE(acceptedWith(before, after)) << after.toStdString();
        EXPECT_TRUE(capture.contains(text)) << text.toStdString();
    }
}

TEST_F(OlympusIoTest, TooFewFilesAreRefused)
{
    OifSet set;
    set.missing = 1;
    const LogCapture capture;
    const ImageFile file({set.save(m_directory)});
    EXPECT_EQ(file.attributes().type, ImageType::Unknown);
    EXPECT_FALSE(file.hasReader());
    EXPECT_TRUE(capture.contains("tiffs 19 should be 20"));
}

TEST_F(OlympusIoTest, WithoutItsDirectoryTheTextIsUnknown)
{
    const QString name = OifSet().save(m_directory);
    ASSERT_TRUE(QDir(name + ".files").removeRecursively());
    const LogCapture capture;
    EXPECT_EQ(ImageFile({name}).attributes().type, ImageType::Unknown);
    EXPECT_TRUE(capture.contains(".files does not exist"));
}

TEST_F(OlympusIoTest, AFileThatEndsEarlyLeavesZerosAndAText)
{
    OifSet set;
    set.z = 3;
    const QString name = set.save(m_directory);
    test::TiffPage page;
    page.bits = 16;
    page.fields = {{273, 4, {1000000}, {}}};
    test::TiffFile{{page}}.save(name + ".files/set one_C002Z002.tif");
    ImageFile file({name});
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"file ends early: 1 of 3 layers"});
    EXPECT_EQ(test::sample(file, 1, 1, 1, 0), 111);
    EXPECT_EQ(test::sample(file, 1, 1, 1, 1), 0);
}

TEST_F(OlympusIoTest, AFileThatCannotBeReadFails)
{
    const QString name = OifSet().save(m_directory);
    const QString tiff = test::saveBytes(name + ".files/set one_C001Z002.tif", "no TIFF");
    ImageFile file({name});
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"Could not open " + tiff});
    EXPECT_FALSE(file.isLoaded());
}

TEST_F(OlympusIoTest, CompressedFilesAreRefused)
{
    const QString name = OifSet().save(m_directory);
    test::TiffPage page;
    page.fields = {{259, 3, {5}, {}}};
    test::TiffFile{{page}}.save(name + ".files/set one_C001Z001.tif");
    ImageFile file({name});
    EXPECT_FALSE(file.read());
    EXPECT_EQ(file.errorList(), QStringList{"LZW compression is not supported"});
}

TEST_F(OlympusIoTest, ThereIsNoWriter)
{
    const auto stack = test::constantStack({2, 2, 2, 1, 8}, 1);
    EXPECT_FALSE(stack->write({m_directory.filePath("a.oif")}, ImageType::Olympus));
    EXPECT_EQ(stack->writeErrors(), QStringList{"Olympus not supported"});
}

TEST_F(OlympusIoTest, ATextCutAnywhereDoesNoHarm)
{
    const QString name = OifSet().save(m_directory);
    const QByteArray bytes = test::fileContent(name);
    for (int cut = 0; cut < bytes.size(); cut += 7) {
        test::saveBytes(name, bytes.left(cut));
        ImageFile owner;
        OlympusIO reader(owner, {name});
        if (owner.attributes().type == ImageType::Olympus)
            reader.readAll();
    }
}

} // namespace
} // namespace tirn
