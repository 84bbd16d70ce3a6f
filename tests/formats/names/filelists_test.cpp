#include "formats/names/filelists.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace tirn {
namespace {

class FileLists : public ::testing::Test
{
protected:
    void touch(const QStringList& names)
    {
        for (const QString& name : names) {
            QFile file(path(name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
        }
    }
    QString path(const QString& name) const { return m_directory.filePath(name); }
    QStringList expanded(const QString& name) const { return expandPattern(path(name)); }
    QStringList siblings(const QString& name) const
    {
        QStringList names;
        for (const QString& sibling : siblingChannelFiles(path(name))) {
            EXPECT_TRUE(sibling.startsWith(m_directory.path() + '/'));
            names.append(sibling.mid(m_directory.path().size() + 1));
        }
        return names;
    }

private:
    QTemporaryDir m_directory;
};

TEST_F(FileLists, StarsAndQuestionMarksExpandToFilesByName)
{
    touch({"t2.tif", "t1.tif", "t10.tif", "u1.tif"});
    QDir(path(".")).mkdir("t3.tif");
    EXPECT_EQ(expanded("t?.tif"), (QStringList{"t1.tif", "t2.tif"}));
    EXPECT_EQ(expanded("t*.tif"), (QStringList{"t1.tif", "t10.tif", "t2.tif"}));
    EXPECT_EQ(expanded("t1.tif"), QStringList{"t1.tif"});
    EXPECT_EQ(expanded("x*.tif"), QStringList());
    EXPECT_EQ(expanded("nowhere/t*.tif"), QStringList());
    EXPECT_EQ(expanded(""), QStringList());
}

TEST_F(FileLists, ABlankMatchesAnyCharacter)
{
    touch({"a b1.tif", "a_b2.tif", "ab3.tif", "a  b4.tif"});
    EXPECT_EQ(expanded("a b?.tif"), (QStringList{"a b1.tif", "a_b2.tif"}));
}

TEST_F(FileLists, BracketsMeanThemselves)
{
    touch({"s[1]_1.tif", "s[1]_2.tif", "s1_3.tif"});
    EXPECT_EQ(expanded("s[1]_?.tif"), (QStringList{"s[1]_1.tif", "s[1]_2.tif"}));
}

TEST_F(FileLists, PathsHaveTheDirectoryOfThePattern)
{
    touch({"t1.tif", "t2.tif"});
    EXPECT_EQ(expandPatternToPaths(path("./x/../t?.tif")), (QStringList{path("t1.tif"), path("t2.tif")}));
    EXPECT_EQ(besideFile("/t1.tif", "u.tif"), "/u.tif");
}

TEST_F(FileLists, SiblingsDifferInDigitsAmongTheLastThreeCharacters)
{
    touch({"cell01.pic", "cell02.pic", "cell11.pic", "cell0a.pic", "dell01.pic", "cell01.tif"});
    EXPECT_EQ(siblings("cell02.pic"), (QStringList{"cell01.pic", "cell02.pic", "cell0a.pic", "cell11.pic"}));
    EXPECT_EQ(siblings("cell0a.pic"), QStringList{"cell0a.pic"});
}

TEST_F(FileLists, SiblingsKeepDigitsFurtherInFront)
{
    touch({"1234a.pic", "1235a.pic", "2234a.pic", "my cell.1.pic", "my cell.2.pic"});
    EXPECT_EQ(siblings("1234a.pic"), (QStringList{"1234a.pic", "1235a.pic"}));
    EXPECT_EQ(siblings("my cell.1.pic"), (QStringList{"my cell.1.pic", "my cell.2.pic"}));
    touch({"7.pic", "8.pic"});
    EXPECT_EQ(siblings("7.pic"), (QStringList{"7.pic", "8.pic"}));
}

QStringList numbered(int count, const QString& stem = "f")
{
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(stem + QString::number(i));
    return names;
}

TEST(TimeSteps, TheRemainderCountsAsTimePoints)
{
    EXPECT_EQ(steppedTimePoints(5, 1), 5);
    EXPECT_EQ(steppedTimePoints(5, 2), 3);
    EXPECT_EQ(steppedTimePoints(6, 2), 3);
    EXPECT_EQ(steppedTimePoints(5, 3), 3);
    EXPECT_EQ(steppedTimePoints(7, 4), 4);
    EXPECT_EQ(steppedTimePoints(1, 1), 1);
}

TEST(TimeSteps, EveryElementHoldsAFileOfEachChannel)
{
    EXPECT_EQ(channelsByTime({numbered(2, "a"), numbered(2, "b")}, 1),
              (std::vector<QStringList>{{"a0", "b0"}, {"a1", "b1"}}));
    EXPECT_EQ(channelsByTime({numbered(5)}, 2), (std::vector<QStringList>{{"f0"}, {"f2"}, {"f4"}}));
}

TEST(TimeSteps, AChannelsOnlyFileStandsAtEachTimePoint)
{
    EXPECT_EQ(channelsByTime({numbered(3, "a"), {"still"}}, 1),
              (std::vector<QStringList>{{"a0", "still"}, {"a1", "still"}, {"a2", "still"}}));
    EXPECT_EQ(channelsByTime({numbered(5, "a"), {"still"}}, 2),
              (std::vector<QStringList>{{"a0", "still"}, {"a2", "still"}, {"a4", "still"}}));
}

TEST(TimeSteps, TimePointsPastTheFilesTakeTheFirstOne)
{
    // Two more than the files serve: 8 and 12 of 7.
    EXPECT_EQ(channelsByTime({numbered(7)}, 4), (std::vector<QStringList>{{"f0"}, {"f4"}, {"f0"}, {"f0"}}));
    EXPECT_EQ(channelsByTime({numbered(5)}, 3), (std::vector<QStringList>{{"f0"}, {"f3"}, {"f0"}}));
    EXPECT_EQ(channelsByTime({numbered(2)}, 5), (std::vector<QStringList>{{"f0"}, {"f0"}}));
}

TEST(TimeSteps, FilesWithAllChannelsAreSteppedThrough)
{
    EXPECT_EQ(filesByTime(numbered(5), 1).size(), 5U);
    EXPECT_EQ(filesByTime(numbered(5), 3), (std::vector<QStringList>{{"f0"}, {"f3"}}));
    EXPECT_EQ(filesByTime({}, 1), std::vector<QStringList>());
}

TEST(TimeSteps, WholeGroupsOfChannelsStayOrGo)
{
    const std::vector<QStringList> all = {{"t0c0"}, {"t0c1"}, {"t1c0"}, {"t1c1"}, {"t2c0"}, {"t2c1"}};
    EXPECT_EQ(everyStepOfGroups(all, 2, 1), all);
    EXPECT_EQ(everyStepOfGroups(all, 2, 2),
              (std::vector<QStringList>{{"t0c0"}, {"t0c1"}, {"t2c0"}, {"t2c1"}}));
    EXPECT_EQ(everyStepOfGroups(all, 3, 2), (std::vector<QStringList>{{"t0c0"}, {"t0c1"}, {"t1c0"}}));
    EXPECT_EQ(everyStepOfGroups(all, 0, 1), all);
}

} // namespace
} // namespace tirn
