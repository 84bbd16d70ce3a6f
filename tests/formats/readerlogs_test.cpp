// What readers and writers say in the log, step by step.

#include <gtest/gtest.h>

#include "formats/raw/unknownio.h"
#include "formats/tiff/mtiffio.h"
#include "formats/tiff/tiffseriesio.h"
#include "formats/vendor/imsubs.h"
#include "formats/vendor/lsminfo.h"
#include "formats/vendor/metamorphio.h"
#include "formats/vendor/olympusio.h"
#include "formats/vendor/vffio.h"
#include "formats/vendor/zeissio.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/lsmfile.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/stkfile.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::plainPage;
using test::TiffFile;

/// The first of `texts` that no line begins with, counting only lines behind those of the texts before it.
QString firstMissing(const QStringList& lines, const QStringList& texts)
{
    qsizetype line = 0;
    for (const QString& text : texts) {
        while (line < lines.size() && !lines[static_cast<int>(line)].startsWith(text))
            ++line;
        if (line++ == lines.size())
            return text + "\n-- of --\n" + lines.join('\n');
    }
    return {};
}

class ReaderLogs : public testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }
    /// Makes the reader of a file, reads all of it, and looks for the texts.
    template <class Reader>
    QString missing(const QString& name, const QStringList& texts)
    {
        const LogCapture capture;
        ImageFile owner;
        Reader reader(owner, {name});
        EXPECT_TRUE(reader.readAll()) << owner.errorList().join('|').toStdString();
        return firstMissing(capture.lines(), texts);
    }

    QTemporaryDir m_directory;
};

TEST_F(ReaderLogs, MetaMorphReads)
{
    EXPECT_EQ(missing<MetaMorphIO>(test::StkFile().save(path("a.stk")), {"Creating metamorph object\n",
                                                                         "enter readAttributes\n",
                                                                         "It's little Endian",
                                                                         "numIFD: ",
                                                                         "Samples per pixel: ",
                                                                         "a.stk ifd size 1",
                                                                         "Printing contents of IFD",
                                                                         "256 ImageWidth 4",
                                                                         "3",
                                                                         "2",
                                                                         "x 1/8",
                                                                         "y 1/8",
                                                                         " unit : ",
                                                                         "exit readAttributes\n",
                                                                         "enter readLayers\n",
                                                                         "channels: 1",
                                                                         "bitDepth: 16",
                                                                         "layerSize: 24",
                                                                         "numLayers: 5",
                                                                         "bufferSize: 120",
                                                                         "Stack is at: ",
                                                                         "stack read",
                                                                         "exit readLayers\n"}),
              QString());
}

TEST_F(ReaderLogs, ZeissReads)
{
    const QString ruler(50, '*');
    EXPECT_EQ(missing<ZeissIO>(test::LsmFile().save(path("a.lsm")),
                               {"I wanna read attributes of 1 files", ruler, "u32MagicNumber ",
                                "DataType 8-bit unsigned integer", "normal x-y-z-scan", "Scan data",
                                "time interval ", ruler, "tif x:4  tif y:3 lsm x:4",
                                "*** Done reading attributes ***", "Ready to read 10", "stkIFD size=20",
                                "Found layer reading 12 bytes", "Merging channels 8 bit", "Done Merging",
                                "merging channels elapsed 0", "*** Done reading lsm ***"}),
              QString());
}

TEST_F(ReaderLogs, TheRecordOfZeissNamesItsNumbers)
{
    const auto printed = [](const LsmInfo& info) {
        const LogCapture capture;
        printLsmInfo(info);
        return capture.lines();
    };
    const QStringList scans = {"normal x-y-z-scan", "Z-Scan",          "Line Scan",
                               "Time series x-y",   "Time series x-z", "Time series - Mean of ROIs",
                               "Unknown scan time"};
    for (std::uint16_t scan = 0; scan < scans.size(); ++scan) {
        LsmInfo info;
        info.scanType = scan;
        EXPECT_TRUE(printed(info).contains(scans[scan]));
    }
    const QStringList kinds = {"Scan data", "Calculated data", "Animation", "Unknown data type"};
    for (std::uint32_t kind = 0; kind < 4; ++kind) {
        LsmInfo info;
        info.dataKind = kind;
        EXPECT_TRUE(printed(info).contains(kinds[static_cast<int>(kind)]));
    }
    const std::pair<int, QString> types[] = {
        {0, "No clue man "},    {1, "8-bit unsigned integer"}, {2, "12-bit unsigned integer"},
        {3, "Unknow DataType"}, {5, "32-bit float"},           {-1, "Unknow DataType"}};
    for (const auto& [type, text] : types) {
        LsmInfo info;
        info.dataType = type;
        EXPECT_TRUE(printed(info).contains("DataType " + text)) << type;
    }
}

TEST_F(ReaderLogs, TheRecordOfZeissIsReadFromItsPlaces)
{
    // Every field holds the number of its place, so that a shift by any field would show.
    QByteArray bytes(300, '\0');
    for (int at = 0; at < 224; at += 4)
        bytes[at] = static_cast<char>(at);
    const double sizes[] = {1.5, 2.5, 3.5, 0.25};
    const int places[] = {40, 48, 56, 112};
    for (int i = 0; i < 4; ++i)
        bytes.replace(places[i], 8, reinterpret_cast<const char*>(&sizes[i]), 8);
    bytes.replace(28, 4, QByteArray(4, '\0'));
    bytes[20] = 2;
    bytes.replace(224, 8, QByteArray("\1\0\0\0\2\0\0\0", 8));
    bytes.replace(120, 4, QByteArray("\xe0\0\0\0", 4));
    QFile file(test::saveBytes(path("record"), bytes));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    WindowedFile window(file);
    const LsmInfo info = readLsmInfo(window, 0);
    EXPECT_EQ(info.magicNumber, 0U);
    EXPECT_EQ((std::vector{info.structureSize, info.dimX, info.dimY, info.dimZ, info.dimChannels,
                           info.dimTime, info.dataType, info.thumbnailX, info.thumbnailY}),
              (std::vector{4, 8, 12, 16, 2, 24, 0, 32, 36}));
    EXPECT_EQ((std::vector{info.voxelSizeX, info.voxelSizeY, info.voxelSizeZ, info.timeInterval}),
              (std::vector{1.5, 2.5, 3.5, 0.25}));
    EXPECT_EQ(info.scanType, 88);
    EXPECT_EQ(info.dataKind, 92U);
    EXPECT_EQ((std::vector(info.offsets.begin(), info.offsets.end())),
              (std::vector<std::uint32_t>{96, 100, 104, 108, 224, 124, 128, 132, 136, 140, 144, 148}));
    EXPECT_EQ(info.channelTypes, (std::vector<std::int32_t>{1, 2}));
    const LogCapture capture;
    printLsmInfo(info);
    EXPECT_TRUE(capture.contains("offset to vector overlay 96"));
    EXPECT_TRUE(capture.contains("offset to next LSM file in this file 148"));
}

TEST_F(ReaderLogs, MultiPageTiffReads)
{
    TiffFile tiff{{plainPage(4, 3, 1, 16), plainPage(4, 3, 2, 16)}};
    EXPECT_EQ(missing<MTiffIO>(tiff.save(path("a.tif")),
                               {"Creating TiffSeries object", "It's Little endian", "enter readLayers\n",
                                "allocated 48 bytes", "stkIFD.size(): 1", "stkIFD[0].size(): 2",
                                "exit readLayers\n"}),
              QString());
    tiff.bigEndian = true;
    EXPECT_EQ(missing<MTiffIO>(tiff.save(path("b.tif")), {"It's Big endian", "enter swapEndian (len = 24)",
                                                          "exit swapEndian (len = 24)"}),
              QString());
}

TEST_F(ReaderLogs, TiffSeriesRead)
{
    TiffFile tiff{{plainPage(4, 3, 1)}};
    tiff.pages[0].fields = {{306, 2, {'2', '0', '0', '4', 0}, {}}, {270, 2, {'h', 'i', 0}, {}}};
    EXPECT_EQ(missing<TiffSeriesIO>(tiff.save(path("a.tif")),
                                    {"Tiff object created", "I wanna read attributes of 1 files",
                                     "It's little endian", "date 2004", "270 Image Description hi",
                                     "exit readAttributes", "Allocating 12"}),
              QString());
    tiff.bigEndian = true;
    EXPECT_EQ(missing<TiffSeriesIO>(tiff.save(path("a.tif")), {"it's big endian"}), QString());
}

TEST_F(ReaderLogs, OlympusReads)
{
    const QString set = test::testData("oif/synth_z8_c2.oif");
    EXPECT_EQ(missing<OlympusIO>(set, {"Olympus object created", "I wanna read olympus attributes",
                                       "returning happy", "first 0 last 7 step 1"}),
              QString());
    const LogCapture capture;
    EXPECT_TRUE(OlympusIO::isOlympus(set));
    EXPECT_EQ(capture.lines(), (QStringList{"is " + set + " an olympus?", "yes it is an olympus"}));
}

TEST_F(ReaderLogs, DeltaVisionReads)
{
    EXPECT_EQ(missing<IMSubs>(test::testData("made/dv/synth_be_i16_WZT_3c_2t.r3d"),
                              {"IMSubs readAttributes", "subs ", " zfac ", "IMSubs: enter readLayers",
                               "Merging channels 16 bit ch", "Done Merging", "merging channels elapsed ",
                               "enter swapEndian (len = ", "IMSubs: exit readLayers"}),
              QString());
}

TEST_F(ReaderLogs, VffReads)
{
    const QByteArray header = "ncaa\ntype=raster;\nformat=slice;\nbits=16;\nsize=2 2 3;\n\f\n";
    EXPECT_EQ(missing<VffIO>(test::saveBytes(path("a.vff"), header + QByteArray(24, '\xff')),
                             {"I wanna read vff attributes",
                              QString("stack 24 slice 8 offset %1").arg(header.size()), "minimum is 1"}),
              QString());
}

TEST_F(ReaderLogs, WritersWrite)
{
    const auto stack = test::constantStack({4, 3, 2, 1, 16}, 7);
    const auto missingOf = [&](ImageType type, const QString& name, const QStringList& texts) {
        const LogCapture capture;
        EXPECT_TRUE(stack->write({name}, type));
        return firstMissing(capture.lines(), texts);
    };
    const QString stk = path("a.stk");
    EXPECT_EQ(missingOf(ImageType::MetaMorph, stk,
                        {"enter MetaMorphIO::write()", "filename: " + stk, "ImageSize: 48",
                         "Image about to be written at: 276", "stack written", "exit MetaMorphIO::write()"}),
              QString())
        << "170 and 3 x 6 bytes of strips, 16 of resolutions, 3 x 24 of planes";
    const QString tif = path("a.tif");
    EXPECT_TRUE(missingOf(ImageType::MultiPageTiff, tif, {"ratio for "}).startsWith("ratio for "))
        << "an unknown voxel size is no ratio";
    stack->attributes().dimX = 1;
    EXPECT_EQ(missingOf(ImageType::MultiPageTiff, tif,
                        {"enter MTiffIO::write()", "filename: " + tif, "ratio for 0.0001", " is 1/10000",
                         "ImageSize: 48", "Image about to be written at: 376", "stack written"}),
              QString())
        << "8 and two pages of 150, 18 and 16 bytes";
    EXPECT_EQ(missingOf(ImageType::TiffSeries, path("s.tif"),
                        {"Here ", "rowSize 8", " rowsperstrip 3", " strips 1", " leftover 0",
                         "currently at 8", "currently at 162", "about to write " + path("s_z0000.tif"),
                         "about to write " + path("s_z0001.tif")}),
              QString())
        << "8, 2, 11 entries of 12, 4 and two resolutions";
}

TEST_F(ReaderLogs, SeveralStripsOfASeriesAreCountedWithTheirBytes)
{
    const auto stack = test::constantStack({40000, 3, 1, 1, 8}, 7);
    const LogCapture capture;
    ASSERT_TRUE(stack->write({path("s.tif")}, ImageType::TiffSeries));
    EXPECT_EQ(firstMissing(capture.lines(), {"rowSize 40000", " rowsperstrip 1", " strips 3", " leftover 0",
                                             "writing sbc 0", "writing sbc 1", "writing sbc 2"}),
              QString());
}

} // namespace
} // namespace tirn
