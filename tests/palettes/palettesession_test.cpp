#include <gtest/gtest.h>

#include "palettes/palettesession.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

QDomElement elementOf(const Palette& palette, const QString& baseDir = "/data")
{
    static QDomDocument document;
    return savePaletteToSession(palette, document, baseDir);
}

QDomElement parsed(const QString& xml)
{
    static QDomDocument document;
    document.setContent(xml);
    return document.documentElement();
}

TEST(PaletteSession, APaletteInAFileIsSavedAsItsRelativePath)
{
    Palette palette("hot.map", 8);
    palette.setPath("/data/maps");
    const QDomElement element = elementOf(palette);
    EXPECT_EQ(element.tagName(), "palette");
    EXPECT_EQ(element.attribute("depth"), "8");
    EXPECT_EQ(element.attribute("saved"), "1");
    EXPECT_EQ(element.text(), "maps/hot.map");
    const SessionPalette read = readSessionPalette(element);
    EXPECT_EQ(read.file, "maps/hot.map");
    EXPECT_EQ(read.palette, nullptr);
}

TEST(PaletteSession, AnyOtherPaletteIsSavedWholeAndComesBackUntitled)
{
    Palette palette("hot.map", 12);
    palette.setPath("/data/maps");
    palette.setEditFlags({true, true, true, true});
    palette.setRgb(7, 300, -1, 20.9, 40);
    const QDomElement element = elementOf(palette);
    EXPECT_EQ(element.attribute("depth"), "12");
    EXPECT_EQ(element.attribute("saved"), "0");
    EXPECT_EQ(element.text().section('\n', 0, 0), "0 0 0 0");
    EXPECT_EQ(element.text().section('\n', 7, 7), "255 0 20 40");
    EXPECT_EQ(element.text().count('\n'), 4096);

    const SessionPalette read = readSessionPalette(element);
    ASSERT_NE(read.palette, nullptr);
    EXPECT_TRUE(read.file.isEmpty());
    EXPECT_TRUE(read.palette->modified());
    EXPECT_TRUE(read.palette->name().startsWith("Untitled "));
    EXPECT_EQ(read.palette->depth(), 12);
    EXPECT_EQ(read.palette->red()[7], 255);
    EXPECT_EQ(read.palette->alpha()[4095], 255);
}

TEST(PaletteSession, ATableOfAnotherLengthIsReportedAndDropped)
{
    const test::LogCapture capture;
    const SessionPalette read =
        readSessionPalette(parsed("<palette depth='8' saved='0'>1 2 3 4\nx\n5 6 7 8\n</palette>"));
    EXPECT_EQ(read.palette, nullptr);
    EXPECT_EQ(capture.warnings(), QStringList{"Error: matched 2 instead of 256 palette entries"});
}

TEST(PaletteSession, OtherDepthsThanEightAndTwelveComeBack)
{
    const SessionPalette read =
        readSessionPalette(parsed("<palette depth='1' saved='0'>1 2 3 4\n5 6 7 8\n</palette>"));
    ASSERT_NE(read.palette, nullptr);
    EXPECT_EQ(read.palette->size(), 2);
    EXPECT_EQ(read.palette->blue()[1], 7);
}

TEST(PaletteSession, ImpossibleDepthsAreRefused)
{
    for (const char* depth : {"-1", "31", "32", "64", "x", "99999999999"}) {
        const test::LogCapture capture;
        const QString xml = QString("<palette depth='%1' saved='0'>1 2 x 4\n</palette>").arg(depth);
        EXPECT_EQ(readSessionPalette(parsed(xml)).palette, nullptr);
        EXPECT_EQ(capture.warnings().size(), 1);
    }
}

TEST(PaletteSession, AnElementWithoutTextGivesNothing)
{
    const test::LogCapture capture;
    for (const char* xml :
         {"<palette depth='8' saved='1'/>", "<palette depth='8' saved='0'><a/></palette>"}) {
        const SessionPalette read = readSessionPalette(parsed(xml));
        EXPECT_TRUE(read.file.isEmpty());
        EXPECT_EQ(read.palette, nullptr);
    }
    EXPECT_TRUE(capture.lines().isEmpty());
}

} // namespace
} // namespace tirn
