#include <QDir>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include "palettes/palettefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"

namespace tirn {
namespace {

using test::fileContent;
using test::LogCapture;
using test::saveBytes;

class PaletteFileTest : public testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }
    QString write(const QString& name, const QByteArray& bytes) const { return saveBytes(path(name), bytes); }

    QTemporaryDir m_directory;
};

PaletteEntry entryAt(const PaletteFile& file, std::size_t index) { return file.entries().at(index); }

QByteArray mapLines(int count)
{
    QByteArray lines;
    for (int i = 0; i < count; ++i)
        lines += QByteArray::number(i % 256) + " 2 3 4\n";
    return lines;
}

QByteArray andorLines(int count)
{
    QByteArray lines;
    for (int i = 0; i < count; ++i)
        lines += QByteArray::number(i) + "=001 002 003\n";
    return lines;
}

QByteArray amiraLines(int count)
{
    QByteArray lines = "# AmiraMesh 3D ASCII  2.0\n";
    for (int i = 0; i < count; ++i)
        lines += "1.000000 0.501961 0.2 1e-1\n";
    return lines;
}

TEST_F(PaletteFileTest, AMapWritesFourNumbersALine)
{
    Palette palette("a", 8);
    palette.setEditFlags({true, true, true, true});
    palette.setRgb(0, 300, -7, 12.9, 4);
    const QString name = path("a.map");
    EXPECT_TRUE(PaletteFile(name).write(palette));
    const QList<QByteArray> lines = fileContent(name).split('\n');
    ASSERT_EQ(lines.size(), 257);
    EXPECT_EQ(lines[0], "255 0 12 4");
    EXPECT_EQ(lines[255], "255 255 255 255");
    EXPECT_EQ(lines[256], "");
}

TEST_F(PaletteFileTest, AMapReadsBack)
{
    const QString name = path("deep.map");
    const Palette palette(QColor(10, 200, 255), 12);
    ASSERT_TRUE(PaletteFile(name).write(palette));
    PaletteFile file(name);
    ASSERT_TRUE(file.read());
    EXPECT_TRUE(file.comments().isEmpty());
    const auto read = file.makePalette();
    EXPECT_EQ(read->name(), "deep.map");
    EXPECT_EQ(read->depth(), 12);
    EXPECT_EQ(read->values(), palette.values());
    EXPECT_FALSE(read->modified());
}

TEST_F(PaletteFileTest, AMapTakesSignsBlanksAndOtherLines)
{
    PaletteFile file(
        write("a.map", "a comment\n  -1 -22\t-333   -4\r\n1 2 3\n70000 65535 300 0\n" + mapLines(254)));
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.comments(), (QStringList{"a comment", "1 2 3"}));
    EXPECT_EQ(entryAt(file, 0), (PaletteEntry{1, 22, 333, 4}));
    EXPECT_EQ(entryAt(file, 1), (PaletteEntry{0, 65535, 300, 0})) << "what 16 bits cannot hold is 0";
    EXPECT_EQ(entryAt(file, 2), (PaletteEntry{0, 2, 3, 4}));
}

TEST_F(PaletteFileTest, AMapHasExactly256Or4096Entries)
{
    for (const int count : {0, 1, 255, 257, 300, 4095, 4097}) {
        PaletteFile file(write("a.map", "stray\n" + mapLines(count)));
        const LogCapture capture;
        EXPECT_FALSE(file.read()) << count;
        EXPECT_EQ(capture.warnings(),
                  QStringList{QString("Did not read palette file correctly! Only %1 matches").arg(count)});
        EXPECT_EQ(capture.debugLines(), QStringList{"stray"});
        EXPECT_TRUE(file.entries().empty());
    }
    PaletteFile deep(write("a.map", mapLines(4096)));
    ASSERT_TRUE(deep.read());
    EXPECT_EQ(deep.makePalette()->depth(), 12);
}

TEST_F(PaletteFileTest, AnyOtherEndingIsTriedAsAMap)
{
    PaletteFile file(write("table.txt", mapLines(256)));
    EXPECT_TRUE(file.read());
}

TEST_F(PaletteFileTest, WhatCannotBeOpenedIsLogged)
{
    for (const char* name : {"no.map", "no.lut", "no.col"}) {
        const LogCapture capture;
        EXPECT_FALSE(PaletteFile(path(name)).read());
        EXPECT_EQ(capture.debugLines(), QStringList{"Could not open " + path(name)});
    }
}

TEST_F(PaletteFileTest, ReadingAMapStopsAtAMebibyteOfText)
{
    // The last line that is read takes the count of characters past the limit.
    const QByteArray comment = QByteArray(0xffff, 'x') + '\n';
    const QByteArray before = comment.repeated(16);
    PaletteFile reached(write("a.map", before + QByteArray(9, 'y') + '\n' + mapLines(256)));
    EXPECT_FALSE(reached.read()) << "16 times 65535 and 9 characters leave room for one line of 7";
    PaletteFile first(write("b.map", before + QByteArray(15, 'y') + "\n1 2 3 4\n5 6 7 8\n"));
    EXPECT_FALSE(first.read());
    EXPECT_EQ(first.comments().size(), 17);
    const LogCapture capture;
    PaletteFile(write("c.map", before + QByteArray(15, 'y') + "\n1 2 3 4\n5 6 7 8\n")).read();
    EXPECT_EQ(capture.warnings(), QStringList{"Did not read palette file correctly! Only 1 matches"});
    PaletteFile inside(write("d.map", mapLines(256) + before + QByteArray(100, 'y') + '\n' + mapLines(9)));
    EXPECT_TRUE(inside.read());
}

TEST_F(PaletteFileTest, AnAndorTableStopsAtTheSameLimit)
{
    const QByteArray before = (QByteArray(0xffff, 'x') + '\n').repeated(17);
    EXPECT_TRUE(PaletteFile(write("a.lut", andorLines(256) + before + andorLines(5))).read());
    EXPECT_FALSE(PaletteFile(write("b.lut", before + andorLines(256))).read());
}

TEST_F(PaletteFileTest, AnAmiraTableHasNoLimit)
{
    const QByteArray before = (QByteArray(0xffff, 'x') + '\n').repeated(20);
    const QByteArray lines = amiraLines(256);
    const auto header = lines.indexOf('\n') + 1;
    EXPECT_TRUE(PaletteFile(write("a.col", lines.left(header) + before + lines.mid(header))).read());
}

TEST_F(PaletteFileTest, LinesOfTenMegabytesAndGarbageFail)
{
    for (const char* ending : {".map", ".lut", ".col"}) {
        const LogCapture capture;
        const QByteArray first = QByteArray(ending) == ".col" ? "# AmiraMesh 3D ASCII\n" : "";
        EXPECT_FALSE(
            PaletteFile(write(QString("digits") + ending, first + QByteArray(10 << 20, '7'))).read());
        QByteArray garbage(1 << 16, '\0');
        for (int i = 0; i < garbage.size(); ++i)
            garbage[i] = static_cast<char>(i * 7919 >> 3);
        EXPECT_FALSE(PaletteFile(write(QString("garbage") + ending, first + garbage)).read());
        EXPECT_FALSE(PaletteFile(write(QString("digitlines") + ending,
                                       first + (QByteArray(60000, '7') + '\n').repeated(150)))
                         .read());
    }
}

TEST_F(PaletteFileTest, AnAmiraTableHasItsHeaderAndALineAnEntry)
{
    const QString name = path("a.col");
    Palette palette("a", 8);
    palette.setEditFlags({true, true, true, true});
    palette.setRgb(1, -3, 128.9, 300, 255);
    ASSERT_TRUE(PaletteFile(name).write(palette));
    const QString text = QString::fromUtf8(fileContent(name));
    const QRegularExpression header(
        "^# AmiraMesh 3D ASCII  2\\.0\n#\n"
        "# CreationDate: \\w{3} \\w{3} \\d\\d \\d\\d:\\d\\d:\\d\\d \\d{4}\n\n\n"
        "define Lattice 256\n\nParameters \\{\n    ContentType \"Colormap\",\n"
        "    MinMax 0 255\n\\}\n\nLattice \\{ float\\[4\\] Data \\} @1\n\n"
        "# Data Section follows\n@1\n0\\.000000 0\\.000000 0\\.000000 0\\.000000\n");
    EXPECT_TRUE(header.match(text).hasMatch()) << text.left(300).toStdString();
    const QStringList lines = text.split('\n');
    ASSERT_EQ(lines.size(), 16 + 256 + 2);
    // 128 / 255, and 300 / 255, which the bound after the division lets pass
    EXPECT_EQ(lines[17], "0.000000 0.501961 1.176471 1.000000");
    EXPECT_EQ(lines[271], "1.000000 1.000000 1.000000 1.000000");
    EXPECT_TRUE(text.endsWith("1.000000\n\n"));
}

TEST_F(PaletteFileTest, AnAmiraValueIsBoundedBy255AfterTheDivision)
{
    const QString name = path("a.col");
    Palette palette("a", 8);
    palette.setEditFlags({.red = true});
    palette.setRgb(0, 100000, 0, 0, 0);
    ASSERT_TRUE(PaletteFile(name).write(palette));
    EXPECT_TRUE(fileContent(name).contains("\n255.000000 0.000000 0.000000 0.000000\n"));
}

TEST_F(PaletteFileTest, AnAmiraTableReadsBack)
{
    const QString name = path("a.col");
    const Palette palette(QColor(10, 200, 255), 8);
    ASSERT_TRUE(PaletteFile(name).write(palette));
    PaletteFile file(name);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.makePalette()->values(), palette.values());
    EXPECT_EQ(file.comments().size(), 16 + 1);
}

TEST_F(PaletteFileTest, AnAmiraNumberMayHaveADotAndANegativeExponent)
{
    QByteArray lines = amiraLines(254);
    lines += "  -0.5 1. 1 5.0e-1   \n2 300 0.0000 99999999999999999999\n";
    PaletteFile file(write("a.COL", lines));
    ASSERT_TRUE(file.read());
    EXPECT_EQ(entryAt(file, 0), (PaletteEntry{255, 128, 51, 26})); // 0.1 * 255 + 0.5 = 26
    EXPECT_EQ(entryAt(file, 254), (PaletteEntry{128, 255, 255, 128}));
    EXPECT_EQ(entryAt(file, 255), (PaletteEntry{510, 65535, 0, 65535}));
}

TEST_F(PaletteFileTest, AnAmiraTableHasExactly256Entries)
{
    for (const int count : {255, 257, 4096}) {
        const LogCapture capture;
        EXPECT_FALSE(PaletteFile(write("a.col", amiraLines(count))).read());
        EXPECT_EQ(capture.debugLines(),
                  (QStringList{QString("Did not read palette file correctly! Only %1 matches.").arg(count),
                               "# AmiraMesh 3D ASCII  2.0"}));
        EXPECT_TRUE(capture.warnings().isEmpty());
    }
}

TEST_F(PaletteFileTest, ATwelveBitPaletteAsColHas4096LinesAndDoesNotReadBack)
{
    const QString name = path("a.col");
    ASSERT_TRUE(PaletteFile(name).write(Palette("a", 12)));
    EXPECT_EQ(fileContent(name).count('\n'), 16 + 4096 + 1);
    EXPECT_TRUE(fileContent(name).contains("define Lattice 256\n"));
    EXPECT_FALSE(PaletteFile(name).read());
}

TEST_F(PaletteFileTest, AColWithoutTheAmiraLineIsReadAsAMap)
{
    PaletteFile file(write("a.col", mapLines(4096)));
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.entries().size(), 4096U);
    EXPECT_FALSE(PaletteFile(write("b.col", "\n" + amiraLines(256))).read()) << "only the first line counts";
    EXPECT_FALSE(PaletteFile(write("c.col", QByteArray(255, ' ') + amiraLines(256))).read())
        << "only 255 characters of it";
}

TEST_F(PaletteFileTest, AnAndorTableHas256LinesWithoutAlpha)
{
    const QString name = path("a.lut");
    Palette palette("a", 8);
    palette.setEditFlags({true, true, true, true});
    palette.setRgb(1, 300, -1, 12.9, 99);
    ASSERT_TRUE(PaletteFile(name).write(palette));
    const QList<QByteArray> lines = fileContent(name).split('\n');
    ASSERT_EQ(lines.size(), 3 + 256 + 1);
    EXPECT_EQ(lines.mid(0, 5), (QList<QByteArray>{"[Description]", "ASCII LUT File=TRUE", "[Red Green Blue]",
                                                  "000=000 000 000", "001=255 000 012"}));
    EXPECT_EQ(lines[258], "255=255 255 255");
    PaletteFile file(name);
    ASSERT_TRUE(file.read());
    EXPECT_EQ(entryAt(file, 1), (PaletteEntry{255, 0, 12, 1})) << "alpha is the index";
    EXPECT_EQ(file.comments().size(), 3);
}

TEST_F(PaletteFileTest, ATwelveBitPaletteAsLutKeepsItsFirst256Entries)
{
    const QString name = path("a.lut");
    ASSERT_TRUE(PaletteFile(name).write(Palette("a", 12)));
    PaletteFile file(name);
    ASSERT_TRUE(file.read());
    const auto palette = file.makePalette();
    EXPECT_EQ(palette->depth(), 8);
    EXPECT_EQ(palette->red()[255], 15);
    EXPECT_EQ(palette->alpha()[255], 255);
}

TEST_F(PaletteFileTest, AnAndorTableHasExactly256Entries)
{
    for (const int count : {255, 257}) {
        const LogCapture capture;
        EXPECT_FALSE(PaletteFile(write("a.lut", andorLines(count))).read());
        EXPECT_EQ(capture.debugLines(),
                  QStringList{QString("Did not read palette file correctly! Only %1 matches.").arg(count)});
    }
}

TEST_F(PaletteFileTest, AnAndorLineMayHaveSeveralEqualSigns)
{
    PaletteFile file(write("a.lut", " -7==-1 2 3\n" + andorLines(255)));
    ASSERT_TRUE(file.read());
    EXPECT_EQ(entryAt(file, 0), (PaletteEntry{1, 2, 3, 7}));
}

TEST_F(PaletteFileTest, SmallLutsAreMetaMorphTables)
{
    QByteArray bytes(1023, '\0');
    bytes[128 + 5] = char(201);
    bytes[128 + 256 + 5] = char(2);
    bytes[128 + 512 + 5] = char(103);
    const LogCapture capture;
    PaletteFile small(write("a.LUT", bytes));
    ASSERT_TRUE(small.read());
    EXPECT_EQ(capture.debugLines(), QStringList{"ok we reading metamorph"});
    EXPECT_EQ(entryAt(small, 5), (PaletteEntry{201, 2, 103, 5}));
    EXPECT_EQ(entryAt(small, 255), (PaletteEntry{0, 0, 0, 255}));
    EXPECT_FALSE(PaletteFile(write("b.lut", bytes + '\0')).read()) << "1024 bytes are an Andor table";
}

TEST_F(PaletteFileTest, AShortMetaMorphTableStillHas256Entries)
{
    for (const int size : {0, 10, 128, 129, 500, 895}) {
        PaletteFile file(write("a.lut", QByteArray(size, char(9))));
        ASSERT_TRUE(file.read()) << size;
        ASSERT_EQ(file.entries().size(), 256U);
        EXPECT_EQ(entryAt(file, 0), (PaletteEntry{static_cast<std::uint16_t>(size > 128 ? 9 : 0),
                                                  static_cast<std::uint16_t>(size > 384 ? 9 : 0),
                                                  static_cast<std::uint16_t>(size > 640 ? 9 : 0), 0}));
        EXPECT_EQ(entryAt(file, 255), (PaletteEntry{static_cast<std::uint16_t>(size > 383 ? 9 : 0),
                                                    static_cast<std::uint16_t>(size > 639 ? 9 : 0), 0, 255}));
    }
}

TEST_F(PaletteFileTest, TheWriterLooksAtTheEndingWithItsCase)
{
    const Palette palette("a", 8);
    ASSERT_TRUE(PaletteFile(path("a.COL")).write(palette));
    EXPECT_TRUE(fileContent(path("a.COL")).startsWith("0 0 0 0\n"));
    ASSERT_TRUE(PaletteFile(path("a.LUT")).write(palette));
    EXPECT_TRUE(fileContent(path("a.LUT")).startsWith("0 0 0 0\n"));
}

TEST_F(PaletteFileTest, NoWriterReplacesAFile)
{
    for (const char* ending : {".map", ".lut", ".col"}) {
        const QString name = write(QString("old") + ending, "old");
        EXPECT_FALSE(PaletteFile(name).write(Palette("a", 8)));
        EXPECT_EQ(fileContent(name), "old");
        EXPECT_FALSE(PaletteFile(path("no/folder") + ending).write(Palette("a", 8)));
    }
}

TEST_F(PaletteFileTest, AFailedWriteLeavesNothing)
{
    const QString folder = path("full");
    ASSERT_TRUE(QDir().mkdir(folder));
    EXPECT_FALSE(PaletteFile(folder + "/missing/a.map").write(Palette("a", 8)));
    EXPECT_TRUE(QDir(folder).isEmpty());
}

TEST(PaletteFileSamples, ARawTableOf768BytesIsTakenForMetaMorph)
{
    const QString name = TIRN_TEST_DATA "/lut/Grays.lut";
    PaletteFile file(name);
    ASSERT_TRUE(file.read());
    // Three ramps of 256 bytes read from byte 128 on.
    EXPECT_EQ(entryAt(file, 0), (PaletteEntry{128, 128, 128, 0}));
    EXPECT_EQ(entryAt(file, 127), (PaletteEntry{255, 255, 255, 127}));
    EXPECT_EQ(entryAt(file, 128), (PaletteEntry{0, 0, 0, 128}));
    EXPECT_EQ(entryAt(file, 255), (PaletteEntry{127, 127, 0, 255}));
    EXPECT_TRUE(PaletteFile(TIRN_TEST_DATA "/lut/Fire.lut").read());
    EXPECT_TRUE(PaletteFile(TIRN_TEST_DATA "/lut/blue_orange_icb.lut").read());
}

TEST(PaletteFileSamples, TextTablesOfOtherProgramsAreRefusedAsLut)
{
    const LogCapture capture;
    EXPECT_FALSE(PaletteFile(TIRN_TEST_DATA "/lut/unionjack.lut").read());
    EXPECT_FALSE(PaletteFile(TIRN_TEST_DATA "/lut/BOP orange.lut").read());
    EXPECT_EQ(capture.count("Did not read palette file correctly! Only 0 matches."), 2);
    EXPECT_EQ(capture.count("Index\tRed\tGreen\tBlue"), 2);
}

TEST_F(PaletteFileTest, ATextTableOfFourColumnsReadsAsAMap)
{
    PaletteFile file(write("unionjack.map", fileContent(TIRN_TEST_DATA "/lut/unionjack.lut")));
    ASSERT_TRUE(file.read());
    EXPECT_EQ(file.comments(), QStringList{"Index\tRed\tGreen\tBlue"});
    EXPECT_EQ(entryAt(file, 255).red, 255);
}

TEST(PaletteFile, AnEndlessFileIsNoPalette)
{
    QTemporaryDir directory;
    EXPECT_FALSE(PaletteFile("/dev/zero").read());
    // A file with a hole of 80 GB takes no room on the disk.
    for (const char* name : {"large.col", "large.map", "large.lut"}) {
        QFile large(directory.filePath(name));
        ASSERT_TRUE(large.open(QIODevice::WriteOnly));
        large.write("# AmiraMesh 3D ASCII\n");
        ASSERT_TRUE(large.resize(qint64{80} << 30));
        EXPECT_FALSE(PaletteFile(large.fileName()).read()) << name;
    }
}

} // namespace
} // namespace tirn
