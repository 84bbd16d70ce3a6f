#include "app/commandline.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tirn {
namespace {

const auto everything = [](const QString&) { return true; };
const auto nothing = [](const QString&) { return false; };

QString existingFile(const QTemporaryDir& directory, const QString& name)
{
    QFile file(directory.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    return file.fileName();
}

TEST(CommandLine, HelpAnywhereAsksForTheUsage)
{
    EXPECT_TRUE(wantsUsage({"tirn", "a.pic", "-h"}));
    EXPECT_TRUE(wantsUsage({"tirn", "-?"}));
    EXPECT_TRUE(wantsUsage({"tirn", "--help", "b.map"}));
    EXPECT_FALSE(wantsUsage({"tirn", "-x"}));
    EXPECT_FALSE(wantsUsage({"tirn", "-hh"}));
    EXPECT_FALSE(wantsUsage({"-h"}));
}

TEST(CommandLine, TheUsageHasTwoLines)
{
    EXPECT_EQ(usageText("tirn"), QStringList({"Usage: tirn [options] <stacks> <maps>",
                                              "-b:\t( geforce | geforcefx | radeon )"}));
}

TEST(CommandLine, ANumberIsAPaletteIndexEvenIfAFileIsCalledSo)
{
    const QTemporaryDir directory;
    const QString name = existingFile(directory, "3");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(directory.path()));
    ASSERT_TRUE(QFile::exists("3"));
    const CommandLine line = parseCommandLine({"tirn", "3", "./3"}, everything);
    QDir::setCurrent(before);
    EXPECT_EQ(line.paletteIds, std::vector<unsigned>{3});
    EXPECT_EQ(line.stacks, QStringList{"./3"});
    EXPECT_EQ(parseCommandLine({"tirn", name}, everything).stacks, QStringList{name});
}

TEST(CommandLine, NamesAreSortedByTheirEndings)
{
    const QTemporaryDir directory;
    const QString stack = existingFile(directory, "a.pic");
    const CommandLine line =
        parseCommandLine({"tirn", stack, "red.map", "2", "green.map", "gone.pic"}, everything);
    EXPECT_EQ(line.stacks, QStringList{stack});
    EXPECT_EQ(line.palettes, QStringList({"red.map", "green.map"}));
    EXPECT_EQ(line.missing, QStringList{"gone.pic"});
    EXPECT_EQ(line.paletteIds, std::vector<unsigned>{2});
}

TEST(CommandLine, AFileThatNoReaderKnowsIsUnknown)
{
    const QTemporaryDir directory;
    const QString name = existingFile(directory, "a.txt");
    EXPECT_EQ(parseCommandLine({"tirn", name}, nothing).unknown, QStringList{name});
}

TEST(CommandLine, ASessionEndsTheWalk)
{
    const CommandLine line = parseCommandLine({"tirn", "red.map", "work.tir", "blue.map"}, everything);
    EXPECT_EQ(line.session, QString("work.tir"));
    EXPECT_EQ(line.palettes, QStringList{"red.map"});
}

} // namespace
} // namespace tirn
