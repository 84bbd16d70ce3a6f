#include <QDir>

#include <gtest/gtest.h>

#include "palettes/palettefile.h"
#include "palettes/palettelist.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/recordingtables.h"

namespace tirn {
namespace {

/// A letter for each palette: r, g, b for ramps of these colours, w for grey.
QString kinds(const PaletteList& palettes)
{
    QString letters;
    for (const auto& palette : palettes) {
        const std::vector<double> top = {palette->red()[255], palette->green()[255], palette->blue()[255]};
        if (top == std::vector<double>{254, 0, 0})
            letters += 'r';
        else if (top == std::vector<double>{0, 254, 0})
            letters += 'g';
        else if (top == std::vector<double>{0, 0, 254})
            letters += 'b';
        else
            letters += top == std::vector<double>{255, 255, 255} ? 'w' : '?';
    }
    return letters;
}

QString generated(int existing, int channels, PaletteGeneration generation)
{
    PaletteList palettes;
    for (int i = 0; i < existing; ++i)
        palettes.push_back(std::make_unique<Palette>("a", 8));
    appendMissingPalettes(palettes, channels, generation);
    return kinds(palettes).mid(existing);
}

TEST(PaletteList, ChannelsWithoutAPaletteGetRedGreenAndBlueRampsThenGrey)
{
    EXPECT_EQ(generated(0, 1, PaletteGeneration::RedGreenBlue), "w");
    EXPECT_EQ(generated(0, 2, PaletteGeneration::RedGreenBlue), "rg");
    EXPECT_EQ(generated(0, 3, PaletteGeneration::RedGreenBlue), "rgb");
    EXPECT_EQ(generated(0, 4, PaletteGeneration::RedGreenBlue), "rgbw");
}

TEST(PaletteList, OtherGenerationsGiveGrey)
{
    EXPECT_EQ(generated(0, 3, PaletteGeneration::Grayscale), "www");
    EXPECT_EQ(generated(0, 2, PaletteGeneration::Favorites), "ww");
}

TEST(PaletteList, OnlyWhatIsMissingIsGenerated)
{
    EXPECT_EQ(generated(1, 2, PaletteGeneration::RedGreenBlue), "r");
    EXPECT_EQ(generated(1, 3, PaletteGeneration::RedGreenBlue), "rg");
    EXPECT_EQ(generated(3, 3, PaletteGeneration::RedGreenBlue), "");
    EXPECT_EQ(generated(5, 3, PaletteGeneration::Grayscale), "");
}

TEST(PaletteList, GeneratedPalettesReachTheCard)
{
    test::RecordingTables tables;
    PaletteList palettes;
    appendMissingPalettes(palettes, 3, PaletteGeneration::RedGreenBlue, &tables);
    EXPECT_EQ(tables.made, 3U);
    EXPECT_EQ(palettes[2]->glHandle(), 3U);
}

TEST(PaletteList, FavoritesComeFromTheLastNameToTheFirst)
{
    const QTemporaryDir directory;
    for (const char* name : {"b.map", "a.map", "c.map", "d.col"})
        ASSERT_TRUE(PaletteFile(directory.filePath(name)).write(Palette("x", 8)));
    test::saveBytes(directory.filePath("bad.map"), "1 2 3 4\n");
    ASSERT_TRUE(QDir(directory.path()).mkdir("folder.map"));
    const test::LogCapture capture;
    PaletteList palettes;
    appendFavoritePalettes(palettes, directory.path());
    QStringList names;
    for (const auto& palette : palettes)
        names.append(palette->name());
    EXPECT_EQ(names, (QStringList{"c.map", "b.map", "a.map"}));
    EXPECT_EQ(palettes[0]->fullPath(), directory.filePath("c.map"));
    EXPECT_TRUE(palettes[0]->hasFile());
    EXPECT_EQ(capture.debugLines().filter("loaded: "),
              (QStringList{"loaded: " + directory.filePath("c.map"), "loaded: " + directory.filePath("b.map"),
                           "loaded: " + directory.filePath("a.map")}));
}

TEST(PaletteList, WithoutAFavoritesFolderNothingLoads)
{
    PaletteList palettes;
    appendFavoritePalettes(palettes, "");
    appendFavoritePalettes(palettes, "/no/such/folder");
    EXPECT_TRUE(palettes.empty());
}

TEST(PaletteList, TheChannelOfAPaletteIsTheFirstThatUsesIt)
{
    const std::vector<int> indices = {2, 0, 2};
    const test::LogCapture capture;
    EXPECT_EQ(channelOfPalette(indices, 2), 0);
    EXPECT_EQ(channelOfPalette(indices, 0), 1);
    EXPECT_EQ(channelOfPalette(indices, 1), -1);
    EXPECT_EQ(capture.debugLines().first(), "2 is the palette for channel 0 2");
    EXPECT_EQ(capture.debugLines().size(), 1 + 2 + 3);
}

TEST(PaletteList, DimDatasetsEndAtTheBitsInUse)
{
    EXPECT_EQ(lastStackIndex(16, 12, true), 4095);
    EXPECT_EQ(lastStackIndex(16, 12, false), 65535);
}

TEST(PaletteList, IndicesScaleByAPowerOfTwo)
{
    EXPECT_EQ(toPaletteIndex(10.3, 8, 12), 164);
    EXPECT_EQ(toPaletteIndex(170, 12, 8), 10);
    EXPECT_EQ(fromPaletteIndex(170, 8, 12), 10);
    EXPECT_EQ(fromPaletteIndex(10.3, 12, 8), 164);
    EXPECT_EQ(toPaletteIndex(10.3, 8, 8), 10.3);
    EXPECT_EQ(fromPaletteIndex(10.3, 8, 0), 10.3) << "no stack";
}

} // namespace
} // namespace tirn
