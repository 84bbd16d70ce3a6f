// The tool as people run it: arguments in; exit code, output and files out.

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

#include "cli/toolrun.h"
#include "formats/imageformats.h"
#include "image/imagefile.h"
#include "palettes/palettefile.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/stkfile.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

using test::Outcome;
using test::samples;
using test::tool;

class Tool : public testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }
    QStringList files() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::Files | QDir::Hidden | QDir::Dirs | QDir::NoDotAndDotDot);
    }
    /// A stack of 4 x 3 x z voxels, its layers counting up.
    QString stk(int z = 5, int channels = 1, int bits = 16)
    {
        test::StkFile file;
        file.z = z;
        file.channels = channels;
        file.bits = bits;
        return file.save(path("in.stk"));
    }
    std::vector<int> inputSamples()
    {
        ImageFile file({path("in.stk")});
        EXPECT_TRUE(file.read());
        return samples(file);
    }

    QTemporaryDir m_directory;
};

QJsonObject json(const Outcome& outcome) { return QJsonDocument::fromJson(outcome.out).object(); }

TEST_F(Tool, HelpAndVersionAreAnswers)
{
    EXPECT_EQ(tool({"--version"}).out, "tirntool 0.1.0\n");
    EXPECT_EQ(tool({"--help"}).code, 0);
    for (const char* command : {"info", "dump", "raw", "convert", "palette", "render", "depth"}) {
        EXPECT_TRUE(tool({"--help"}).out.contains(QByteArray("  ") + command));
        const Outcome help = tool({command, "--help"});
        EXPECT_EQ(help.code, 0);
        EXPECT_TRUE(help.out.startsWith(QByteArray("Usage: tirntool ") + command));
        EXPECT_TRUE(help.err.isEmpty());
    }
    EXPECT_TRUE(tool({"convert", "--help"}).out.contains("default"));
    QByteArrayList words;
    for (const ImageFormat& format : imageFormats()) {
        if (format.word != nullptr)
            words.append(format.word);
    }
    EXPECT_TRUE(tool({"convert", "--help"}).out.contains("[--to " + words.join('|') + "]"));
    EXPECT_TRUE(tool({"--help"}).out.contains("Exit code: 0 done, 1 "));
}

TEST_F(Tool, WrongUsageEndsWithTwoAndOneLine)
{
    const QString in = stk();
    const QList<QStringList> cases = {
        {},
        {"bogus"},
        {"info"},
        {"info", "--bogus", in},
        {"dump", in},
        {"dump", "--step", "0", in, path("a")},
        {"dump", "--first", "x", in, path("a")},
        {"dump", "--first", "3", "--last", "1", in, path("a")},
        {"dump", in, in, path("a")},
        {"raw", in, path("a")},
        {"raw", "--size", "4,3", in, path("a")},
        {"raw", "--size", "4,3,0", in, path("a")},
        {"raw", "--size", "4,3,2", "--bits", "12", in, path("a")},
        {"raw", "--size", "4,3,2", "--offset", "-1", in, path("a")},
        {"convert", in, path("a.xyz")},
        {"convert", "--to", "gif", in, path("a.pic")},
        {"convert", "--bits", "12", in, path("a.pic")},
        {"convert", "--flip", "XQ", in, path("a.pic")},
        {"convert", "--crop", "1,2,3", in, path("a.pic")},
        {"convert", "--project", "mean", in, path("a.pic")},
        {"convert", "--filter", "blur,3", in, path("a.pic")},
        {"convert", "--filter", "mean", in, path("a.pic")},
        {"convert", "--filter", "mean,3,4d", in, path("a.pic")},
        {"convert", "--filter", "mean,0", in, path("a.pic")},
        {"convert", "--filter", "median,257,3d", in, path("a.pic")},
        {"convert", "--filter", "zfilter,3,threshold=x", in, path("a.pic")},
        {"convert", "--subsample", "9", in, path("a.pic")},
        {"convert", "--add", "5", in, path("a.pic")},
        {"convert", "--add", "5,-2", in, path("a.pic")},
        {"convert", "--add", "70000,0", in, path("a.pic")},
        {"convert", "--ratio", "0", in, path("a.pic")},
        {"convert", "--pad", "0,5,5", in, path("a.pic")},
        {"convert", "--extract", "x", in, path("a.pic")},
        {"convert", "--depth", "clamp", in, path("a.pic")},
        {"convert", "--depth", "to=17", in, path("a.pic")},
        {"convert", "--depth", "range=9:3", in, path("a.pic")},
        {"palette"},
        {"palette", path("a.txt")},
        {"palette", "--depth", "9", path("a.map")},
        {"palette", "--color", "red", path("a.map")},
        {"palette", "--color", "ff0000", "--identity", path("a.map")},
        {"palette", "--curve", "1,2", path("a.map")},
        {"palette", "--curve", "1,2,x", path("a.map")},
    };
    for (const QStringList& arguments : cases) {
        const Outcome outcome = tool(arguments);
        EXPECT_EQ(outcome.code, 2) << arguments.join(' ').toStdString();
        EXPECT_EQ(outcome.err.count('\n'), 1);
        EXPECT_TRUE(outcome.err.startsWith("tirntool: ") && outcome.err.endsWith("see tirntool --help\n"));
        EXPECT_TRUE(outcome.out.isEmpty());
    }
    EXPECT_EQ(files(), QStringList{"in.stk"});
}

TEST_F(Tool, FilesThatCannotBeReadEndWithOneAndTheirTexts)
{
    const auto fails = [](const QStringList& arguments, const QString& err) {
        const Outcome outcome = tool(arguments);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.err, err);
        EXPECT_TRUE(outcome.out.isEmpty());
    };
    fails({"info", path("none")}, "tirntool: " + path("none") + ": No such file\n");
    const QString text = test::saveBytes(path("a.txt"), "no stack");
    fails({"info", text}, "tirntool: " + text + ": Could not allocate ImageIO object\n");
    test::TiffPage page;
    page.fields = {{259, 3, {5}, {}}};
    const QString lzw = test::TiffFile{{page}}.save(path("lzw.tif"));
    fails({"info", lzw}, "tirntool: " + lzw + ": LZW compression is not supported\n");
    fails({"dump", "--last", "9", stk(), path("out")},
          "tirntool: " + path("in.stk") + ": no layers 0 to 9 by 1 in a file of 5\n");
    const QString leica = test::saveBytes(path("l.txt"), "Leica Microsystems\n");
    EXPECT_EQ(tool({"dump", leica, path("out")}).code, 1);
    EXPECT_FALSE(tool({"dump", leica, path("out")}).err.isEmpty());
    EXPECT_FALSE(QFile::exists(path("out")));
}

TEST_F(Tool, OnlyVerbosePrintsTheLog)
{
    EXPECT_TRUE(tool({"info", stk()}).err.isEmpty());
    const Outcome verbose = tool({"info", stk(), "--verbose"});
    EXPECT_TRUE(verbose.err.contains("I think it is a Metamorph"));
    EXPECT_EQ(verbose.out, tool({"info", stk()}).out);
}

TEST_F(Tool, InfoPrintsJson)
{
    const Outcome outcome = tool({"info", "--json", stk()});
    ASSERT_EQ(outcome.code, 0);
    const QJsonObject object = json(outcome);
    EXPECT_EQ(object["type"].toInt(), 4);
    EXPECT_EQ(object["typeName"].toString(), "MetaMorph");
    EXPECT_EQ(object["files"].toArray(), QJsonArray{path("in.stk")});
    EXPECT_EQ(object["x"].toInt(), 4);
    EXPECT_EQ(object["y"].toInt(), 3);
    EXPECT_EQ(object["z"].toInt(), 5);
    EXPECT_EQ(object["channels"].toInt(), 1);
    EXPECT_EQ(object["bitDepth"].toInt(), 16);
    EXPECT_EQ(object["dimX"].toDouble(), 0.125);
    EXPECT_TRUE(object["timestamp"].isNull());
    EXPECT_FALSE(object.contains("stats"));
}

TEST_F(Tool, TheJsonHasAllItsKeys)
{
    const QJsonObject object = json(tool({"info", "--json", "--stats", stk()}));
    EXPECT_EQ(object.keys(), (QStringList{"bitDepth", "channels", "dimX", "dimY", "dimZ", "files", "lens",
                                          "magFactor", "maxValue", "notes", "realBitDepth", "stats",
                                          "timestamp", "type", "typeName", "x", "y", "z"}));
    EXPECT_EQ(object["lens"].toInt(), -1);
    EXPECT_EQ(object["magFactor"].toDouble(), -1);
    EXPECT_EQ(object["notes"].toArray(), QJsonArray());
    EXPECT_EQ(object["stats"].toArray()[0].toObject().keys(),
              (QStringList{"channel", "entropy", "max", "mean", "median", "min", "mode", "sliceKurtosis",
                           "sliceMean", "sliceSkew", "sliceStdDev"}));
    test::TiffPage page;
    page.fields = {
        {306,
         2,
         {'2', '0', '0', '4', ':', '0', '5', ':', '0', '6', ' ', '0', '7', ':', '0', '8', ':', '0', '9', 0},
         {}},
        {281, 3, {200}, {}}};
    const QString tiff = test::TiffFile{{page}}.save(path("dated.tif"));
    const QJsonObject dated = json(tool({"info", "--json", tiff}));
    EXPECT_EQ(dated["timestamp"].toString(), "2004-05-06T07:08:09");
    EXPECT_EQ(dated["maxValue"].toInt(), 200);
    EXPECT_EQ(dated["realBitDepth"].toInt(), 8);
    EXPECT_TRUE(dated["dimX"].isNull());
}

TEST_F(Tool, WhatIsNoNumberIsNull)
{
    test::StkFile file;
    file.distance[0] = file.distance[1] = 0;
    file.calibration[1] = 0;
    const QJsonObject object = json(tool({"info", "--json", file.save(path("in.stk"))}));
    EXPECT_TRUE(object["dimX"].isNull());
    EXPECT_TRUE(object["dimZ"].isNull());
}

TEST_F(Tool, InfoWithStatsReadsTheVoxels)
{
    const QJsonArray stats = json(tool({"info", "--json", "--stats", stk(5, 2)}))["stats"].toArray();
    ASSERT_EQ(stats.size(), 2);
    const QJsonObject second = stats[1].toObject();
    EXPECT_EQ(second["channel"].toInt(), 1);
    EXPECT_EQ(second["min"].toInt(), 50);
    EXPECT_EQ(second["max"].toInt(), 50 + 23 + 400);
    EXPECT_EQ(second["sliceMean"].toArray().size(), 5);
    EXPECT_NEAR(second["sliceMean"].toArray()[1].toDouble(), 50 + 100 + 11.5, 1e-9);
    EXPECT_TRUE(tool({"info", "--stats", stk()}).out.contains("Mean "));
}

TEST_F(Tool, DumpWritesTheBuffer)
{
    const QString in = stk(5, 2);
    ASSERT_EQ(tool({"dump", in, path("out")}).code, 0);
    const QByteArray bytes = test::fileContent(path("out"));
    ASSERT_EQ(bytes.size(), 4 * 3 * 5 * 2 * 2);
    EXPECT_EQ(bytes.left(8), QByteArray("\0\0\x32\0\1\0\x33\0", 8)) << "channels interleaved, little-endian";
    EXPECT_EQ(tool({"dump", in, "-"}).out, bytes);
    const Outcome layers = tool({"dump", "--first", "1", "--last", "4", "--step", "2", in, "-"});
    EXPECT_EQ(layers.out, bytes.mid(48, 48) + bytes.mid(3 * 48, 48));
    EXPECT_EQ(tool({"dump", "--", in, path("other")}).code, 0);
}

TEST_F(Tool, NoFileIsReplacedWithoutOverwrite)
{
    const QString in = stk();
    for (const QString& out : {path("out.raw"), path("out.pic"), path("out.stk"), path("out.tif")}) {
        test::saveBytes(out, "old");
        const Outcome refused = tool({"convert", in, out});
        EXPECT_EQ(refused.code, 1);
        EXPECT_EQ(refused.err, "tirntool: " + out + ": File exists; --overwrite replaces it\n");
        EXPECT_EQ(test::fileContent(out), "old");
        EXPECT_EQ(tool({"convert", "--overwrite", in, out}).code, 0);
        EXPECT_NE(test::fileContent(out), "old");
    }
    const QString palette = test::saveBytes(path("p.map"), "old");
    EXPECT_EQ(tool({"palette", palette}).code, 1);
    EXPECT_EQ(tool({"palette", palette, "--overwrite"}).code, 0);
}

TEST_F(Tool, EveryNameOfASeriesIsCheckedBeforeAnyIsWritten)
{
    const QString in = stk();
    test::saveBytes(path("s_z0003.tif"), "old");
    const Outcome refused = tool({"convert", "--to", "tiff", in, path("s.tif")});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains("s_z0003.tif"));
    EXPECT_EQ(files(), (QStringList{"in.stk", "s_z0003.tif"}));
}

TEST_F(Tool, ConvertedStacksReadBack)
{
    const QString in = stk(3, 2);
    const std::vector<int> expected = inputSamples();
    ASSERT_EQ(tool({"convert", in, path("o.pic")}).code, 0);
    ImageFile pic({path("o_c00.pic"), path("o_c01.pic")});
    ASSERT_TRUE(pic.read());
    EXPECT_EQ(samples(pic), expected);
    ASSERT_EQ(tool({"convert", in, path("o.stk")}).code, 0);
    ImageFile copy({path("o.stk")});
    ASSERT_TRUE(copy.read());
    EXPECT_EQ(samples(copy), expected);
    EXPECT_EQ(copy.attributes().dimZ, 1.5);
    ASSERT_EQ(tool({"convert", "--to", "tiff", in, path("o.tif")}).code, 0);
    ImageFile series({path("o_z0000.tif"), path("o_z0001.tif"), path("o_z0002.tif")});
    ASSERT_TRUE(series.read());
    EXPECT_EQ(samples(series), expected);
    ASSERT_EQ(tool({"convert", "--to", "raw", in, path("o.dump")}).code, 0);
    EXPECT_EQ(test::fileContent(path("o.dump")), tool({"dump", in, "-"}).out);
}

TEST_F(Tool, WhatIsWrongWithAFileIsSaidWhereItsTypeIsKnown)
{
    test::StkFile file;
    file.fields = {{258, 3, {16, 8}, {}}};
    const Outcome info = tool({"info", file.save(path("in.stk"))});
    EXPECT_TRUE(info.out.startsWith("Metamorph:"));
    EXPECT_TRUE(info.err.contains("Bitdepth per color channel must be equal")) << info.err.toStdString();
    EXPECT_EQ(tool({"dump", path("in.stk"), "-"}).code, 1);
}

TEST_F(Tool, EndingsInCapitalsAreEndings)
{
    ASSERT_EQ(tool({"convert", stk(), path("O.PIC")}).code, 0);
    ASSERT_EQ(tool({"convert", "--extract", "1", stk(3, 2), path("P.Tif")}).code, 0);
    ASSERT_EQ(tool({"convert", stk(3, 2), path("Q.PIC")}).code, 0);
    EXPECT_EQ(files(), (QStringList{"in.stk", "O.PIC", "P.Tif", "Q_c00.pic", "Q_c01.pic"}));
}

TEST_F(Tool, ConvertReadsARange)
{
    const QString in = stk(7);
    ASSERT_EQ(tool({"convert", in, path("o.pic"), "--first", "2", "--last", "5", "--step", "2"}).code, 0);
    ImageFile pic({path("o.pic")});
    ASSERT_TRUE(pic.read());
    EXPECT_EQ(pic.attributes().z, 2);
    EXPECT_EQ(test::sample(pic, 0, 0, 0), 200);
    EXPECT_EQ(test::sample(pic, 0, 0, 1), 400);
}

TEST_F(Tool, BitsConvert)
{
    const QString in = stk(2, 1, 8);
    ASSERT_EQ(tool({"convert", "--bits", "16", in, path("o.pic")}).code, 0);
    EXPECT_EQ(ImageFile({path("o.pic")}).attributes().bitDepth, 16);
    ASSERT_EQ(tool({"convert", "--bits", "8", path("o.pic"), path("p.pic")}).code, 0);
    EXPECT_EQ(ImageFile({path("p.pic")}).attributes().bitDepth, 8);
    ASSERT_EQ(tool({"convert", "--bits", "16", in, path("o.raw")}).code, 0);
    EXPECT_EQ(QFileInfo(path("o.raw")).size(), 4 * 3 * 2 * 2);
}

TEST_F(Tool, OperationsRunInTheirOrder)
{
    const QString in = stk(2, 1, 8);
    ASSERT_EQ(tool({"convert", "--flip", "XZ", "--invert", in, path("o.raw")}).code, 0);
    const QByteArray bytes = test::fileContent(path("o.raw"));
    // The last column of the last layer comes first: 255 - (3 + 100).
    EXPECT_EQ(static_cast<unsigned char>(bytes[0]), 255 - 103);
}

/// The samples that a conversion of `in` with these operations leaves, as bytes.
QByteArray converted(const QString& in, const QStringList& operations)
{
    return tool(QStringList{"convert", "--to", "raw"} + operations + QStringList{in, "-"}).out;
}

TEST_F(Tool, EveryOperationReachesItsConversion)
{
    const QString in = stk(2, 2, 8); // x + 10 y + 50 c + 100 z, 4 x 3 x 2
    EXPECT_EQ(converted(in, {"--crop", "1,2,0,0,1,1"}), QByteArray("\x65\x97\x66\x98"));
    EXPECT_EQ(converted(in, {"--extract", "1", "--crop", "0,1,0,0,0,0"}), QByteArray("\x32\x33"));
    EXPECT_EQ(converted(in, {"--project", "max", "--crop", "0,0,0,0,0,0"}), QByteArray("\x64\x96"));
    EXPECT_EQ(converted(in, {"--pad-back", "5"}).size(), 4 * 3 * 5 * 2);
    EXPECT_EQ(converted(in, {"--pad", "6,5,4"}).size(), 6 * 5 * 4 * 2);
    EXPECT_EQ(converted(in, {"--subsample-max", "4,3,2"}), QByteArray("\x7b\xad")) << "123 and 173";
    EXPECT_EQ(converted(in, {"--subsample", "2"}).size(), 2 * 2 * 1 * 2);
    EXPECT_EQ(converted(in, {"--subsample-mean", "2,1,1"}).size(), 2 * 3 * 2 * 2);
    EXPECT_EQ(converted(in, {"--depth", "short"}).size(), 4 * 3 * 2 * 2 * 2);
    EXPECT_EQ(converted(in, {"--depth", "to=12", "--depth", "clamp-lower"}).size(), 4 * 3 * 2 * 2);
    EXPECT_EQ(converted(in, {"--depth", "short", "--depth", "range=0:255"}).size(), 4 * 3 * 2 * 2);
    EXPECT_EQ(converted(in, {"--ratio", "0,1"}).size(), 4 * 3 * 2);
    const QStringList corner = {"--crop", "1,1,1,1,0,0"};
    // The window of size 3 reaches from one voxel below to the voxel itself.
    EXPECT_EQ(converted(in, QStringList{"--filter", "max,3"} + corner), QByteArray("\x0b\x3d"));
    EXPECT_EQ(converted(in, QStringList{"--filter", "min,3,channel=1"} + corner), QByteArray("\x0b\x32"));
    EXPECT_EQ(converted(in, QStringList{"--filter", "median,3"} + corner), QByteArray("\x0b\x3d"));
    EXPECT_EQ(converted(in, QStringList{"--filter", "mean,3"} + corner), QByteArray("\x0b\x3d"));
    EXPECT_EQ(converted(in, QStringList{"--filter", "background,3,percent=100"} + corner),
              QByteArray(2, '\0'));
    // The 3 x 3 of the other layer reach 122 and 172.
    EXPECT_EQ(converted(in, QStringList{"--filter", "zfilter,3,threshold=130"} + corner),
              QByteArray("\x00\x3d", 2));
    EXPECT_EQ(converted(in, QStringList{"--filter", "zfilter,3,channel=0"} + corner),
              QByteArray("\x0b\x00", 2));
    EXPECT_EQ(converted(in, QStringList{"--add", "-12,0"} + corner), QByteArray("\x00\x3d", 2));
    EXPECT_EQ(converted(in, QStringList{"--add", "200,-1"} + corner), QByteArray("\xd3\xff", 2));
}

TEST_F(Tool, StatisticsAreMadeAnewAfterEachOperation)
{
    // 0 to 123 become 65535 to 65412; the narrow range is moved down by the minimum that there is now.
    const QByteArray bytes = converted(stk(2, 1, 16), {"--invert", "--depth", "smart-mult"});
    ASSERT_EQ(bytes.size(), 24);
    EXPECT_EQ(bytes.front(), 123);
    EXPECT_EQ(bytes.back(), 0);
}

TEST_F(Tool, OperationsThatTheStackDoesNotAllowEndWithOne)
{
    const QString in = stk(2, 2, 8);
    for (const QStringList& operation :
         {QStringList{"--crop", "0,9,0,0,0,0"}, QStringList{"--extract", "5"}, QStringList{"--ratio", "0,7"},
          QStringList{"--pad", "1,1,1"}, QStringList{"--pad-back", "1"},
          QStringList{"--filter", "mean,3,channel=7"}, QStringList{"--add", "1,2"}}) {
        const Outcome outcome = tool(QStringList{"convert"} + operation + QStringList{in, path("o.pic")});
        EXPECT_EQ(outcome.code, 1) << operation.join(' ').toStdString();
        EXPECT_TRUE(outcome.err.startsWith("tirntool: " + in + ": " + operation.first()));
    }
    EXPECT_EQ(files(), QStringList{"in.stk"});
}

TEST_F(Tool, EveryMultiPageTiffReadsBack)
{
    for (const int channels : {1, 2, 3}) {
        for (const int bits : {8, 16}) {
            const QString in = stk(3, channels, bits);
            const Outcome written = tool({"convert", "--overwrite", in, path("a.tif")});
            EXPECT_TRUE(written.err.isEmpty()) << written.err.toStdString();
            ASSERT_EQ(tool({"convert", "--overwrite", in, path("in.raw")}).code, 0);
            ASSERT_EQ(tool({"convert", "--overwrite", path("a.tif"), path("back.raw")}).code, 0);
            EXPECT_EQ(test::fileContent(path("back.raw")), test::fileContent(path("in.raw")));
        }
    }
}

TEST_F(Tool, AWriterThatRefusesLeavesNothing)
{
    const QString raw = test::saveBytes(path("wide"), QByteArray(70000 * 2, 'x'));
    ASSERT_EQ(tool({"raw", "--size", "70000,1,2", raw, path("r")}).code, 0);
    // A file that no writer of TIFF can hold.
    test::PicFile pic;
    const QString unwritable = path("no/such/folder/o.pic");
    EXPECT_EQ(tool({"convert", stk(), unwritable}).code, 1);
    EXPECT_EQ(files(), (QStringList{"in.stk", "r", "wide"}));
}

TEST_F(Tool, RawReadsHeaderlessData)
{
    const QString in = test::saveBytes(path("in.raw"), QByteArray("HH\1\2\3\4\5\6\7\x08", 10));
    EXPECT_EQ(tool({"raw", "--size", "2,2,2", "--offset", "2", in, "-"}).out,
              QByteArray("\1\2\3\4\5\6\7\x08", 8));
    EXPECT_EQ(tool({"raw", "--size", "2,1,1", "--channels", "2", "--bits", "16", "--offset", "2", "--swap",
                    in, "-"})
                  .out,
              QByteArray("\2\1\4\3\6\5\x08\7", 8));
    const Outcome shortFile = tool({"raw", "--size", "2,2,3", in, "-"});
    EXPECT_EQ(shortFile.code, 1);
    EXPECT_EQ(shortFile.err, "tirntool: " + in + ": Unable to read in file: " + in + "\n");
}

TEST_F(Tool, PalettesAreMadeAndConverted)
{
    ASSERT_EQ(tool({"palette", "--color", "ff8000", path("a.map")}).code, 0);
    PaletteFile file(path("a.map"));
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.entries()[255], (PaletteEntry{254, 128, 0, 255}));
    ASSERT_EQ(tool({"palette", "--in", path("a.map"), path("a.lut")}).code, 0);
    PaletteFile lut(path("a.lut"));
    ASSERT_TRUE(lut.read());
    EXPECT_EQ(lut.entries()[255], (PaletteEntry{254, 128, 0, 255}));
    ASSERT_EQ(tool({"palette", "--depth", "12", path("deep.map")}).code, 0);
    EXPECT_EQ(test::fileContent(path("deep.map")).count('\n'), 4096);
    ASSERT_EQ(tool({"palette", "--curve", "1,2,0", path("curve.col")}).code, 0);
    PaletteFile col(path("curve.col"));
    ASSERT_TRUE(col.read());
    EXPECT_EQ(col.entries()[128], (PaletteEntry{64, 64, 64, 64})); // (128 / 255)^2 * 255 = 64.25
    EXPECT_EQ(tool({"palette", "--in", path("none.map"), path("b.map")}).code, 1);
    EXPECT_EQ(tool({"palette", "--in", stk(), path("b.map")}).code, 1);
    EXPECT_FALSE(QFile::exists(path("b.map")));
}

TEST_F(Tool, ATextAboutAFileThatEndsEarlyIsPrintedOnSuccess)
{
    const QByteArray bytes = test::fileContent(stk());
    test::TiffPage page = test::plainPage(4, 3, 9, 16);
    const QString first = test::TiffFile{{page}}.save(path("1.tif"));
    page.fields = {{273, 4, {1000000}, {}}};
    const QString second = test::TiffFile{{page}}.save(path("2.tif"));
    const Outcome outcome = tool({"dump", first, second, "-"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "tirntool: " + first + ": file ends early: 1 of 2 layers\n");
    EXPECT_EQ(outcome.out.size(), 2 * 4 * 3 * 2);
}

} // namespace
} // namespace tirn
