#include "session/droppedfiles.h"

#include <map>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "support/logcapture.h"

namespace tirn {
namespace {

/// Types by the ending of a name; TIFFs are single pages.
ImageAttributes probeByName(const QString& name)
{
    static const std::map<QString, ImageType> types = {{"pic", ImageType::BioRad},
                                                       {"stk", ImageType::MetaMorph},
                                                       {"tif", ImageType::TiffSeries},
                                                       {"lsm", ImageType::Zeiss}};
    ImageAttributes attributes;
    const auto found = types.find(name.section('.', -1).toLower());
    attributes.type = found != types.end() ? found->second : ImageType::Unknown;
    attributes.channels = attributes.type == ImageType::Zeiss ? 3 : 1;
    return attributes;
}

DroppedFiles drop(const QStringList& names) { return sortDroppedFiles(sortDroppedNames(names), probeByName); }

class DroppedFolder : public ::testing::Test
{
protected:
    void touch(const QString& name)
    {
        QFile file(directory.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    QString path(const QString& name) const { return directory.filePath(name); }

    QTemporaryDir directory;
};

TEST(DroppedFiles, ThreeBioRadFilesAreOneStackWithThreeChannels)
{
    const DroppedFiles dropped = drop({"a.pic", "b.PIC", "c.pic"});
    EXPECT_EQ(dropped.files, std::vector<QStringList>({{"a.pic", "b.PIC", "c.pic"}}));
    EXPECT_EQ(dropped.channels, 3);
    EXPECT_EQ(dropped.timePoints, 1);
}

TEST(DroppedFiles, ThreeMetaMorphFilesAreThreeTimePoints)
{
    const DroppedFiles dropped = drop({"a.stk", "b.stk", "c.stk"});
    EXPECT_EQ(dropped.files, std::vector<QStringList>({{"a.stk"}, {"b.stk"}, {"c.stk"}}));
    EXPECT_EQ(dropped.channels, 1);
    EXPECT_EQ(dropped.timePoints, 3);
}

TEST(DroppedFiles, TheChannelsAreThoseOfTheFirst) { EXPECT_EQ(drop({"a.lsm", "b.stk"}).channels, 3); }

TEST(DroppedFiles, ASessionIsAllThatCounts)
{
    const DroppedNames dropped = sortDroppedNames({"red.map", "work.TIR", "a.pic"});
    EXPECT_EQ(dropped.session, "work.TIR");
    EXPECT_EQ(dropped.palettes, QStringList());
    EXPECT_EQ(dropped.others, QStringList());
}

TEST(DroppedFiles, PalettesAreTakenOut)
{
    const QStringList names = {"red.map", "a.pic", "b.COL", "c.lut"};
    EXPECT_EQ(sortDroppedNames(names).palettes, QStringList({"red.map", "b.COL", "c.lut"}));
    const DroppedFiles dropped = drop(names);
    EXPECT_EQ(dropped.files, std::vector<QStringList>({{"a.pic"}}));
    EXPECT_EQ(dropped.channels, 1);
}

TEST(DroppedFiles, OnlyPalettesLoadNoStack)
{
    const DroppedFiles dropped = drop({"red.map"});
    EXPECT_TRUE(dropped.files.empty());
    EXPECT_TRUE(dropped.sequence.isEmpty());
}

TEST(DroppedFiles, WhatIsNoStackIsLeftOut)
{
    const DroppedFiles dropped = drop({"notes.txt", "a.stk", "photo.jpg"});
    EXPECT_EQ(dropped.files, std::vector<QStringList>({{"a.stk"}}));
    EXPECT_EQ(dropped.unknown, QStringList({"notes.txt", "photo.jpg"}));
    EXPECT_EQ(drop({"notes.txt"}).unknown, QStringList({"notes.txt"}));
    EXPECT_TRUE(drop({"notes.txt"}).files.empty());
}

TEST(DroppedFiles, TheLogNamesThem)
{
    test::LogCapture log;
    drop({"a.stk"});
    EXPECT_TRUE(log.contains("cleaned string a.stk"));
}

TEST(DroppedFiles, NothingGivesNothing) { EXPECT_EQ(drop({}), DroppedFiles()); }

TEST_F(DroppedFolder, OfSinglePagesAsksWhatTheDigitsMean)
{
    touch("s_02.tif");
    touch("s_01.tif");
    touch("readme.txt");
    const DroppedFiles dropped = drop({directory.path()});
    EXPECT_EQ(dropped.sequence, path("s_01.tif"));
    EXPECT_TRUE(dropped.files.empty());
}

TEST_F(DroppedFolder, OfAnythingElseIsItsFilesInNameOrder)
{
    touch("b.stk");
    touch("a.stk");
    ASSERT_TRUE(QDir(directory.path()).mkdir("inner.stk"));
    const DroppedFiles dropped = drop({directory.path()});
    EXPECT_TRUE(dropped.sequence.isEmpty());
    EXPECT_EQ(dropped.files, std::vector<QStringList>({{path("a.stk")}, {path("b.stk")}}));
    EXPECT_EQ(dropped.timePoints, 2);
}

TEST_F(DroppedFolder, WithOnePageIsThisPage)
{
    touch("only.tif");
    EXPECT_EQ(drop({directory.path()}).files, std::vector<QStringList>({{path("only.tif")}}));
}

TEST_F(DroppedFolder, OfBioRadFilesIsOneStack)
{
    touch("b.pic");
    touch("a.pic");
    EXPECT_EQ(drop({directory.path()}).files, std::vector<QStringList>({{path("a.pic"), path("b.pic")}}));
}

TEST_F(DroppedFolder, SinglePagesThatWereDroppedOneByOneAreTimePoints)
{
    EXPECT_EQ(drop({"a.tif", "b.tif"}).timePoints, 2);
}

TEST_F(DroppedFolder, AnEmptyOneGivesNothing) { EXPECT_EQ(drop({directory.path()}), DroppedFiles()); }

} // namespace
} // namespace tirn
