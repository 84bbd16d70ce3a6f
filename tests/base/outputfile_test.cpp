#include "base/outputfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include "support/picfile.h"

namespace tirn {
namespace {

using test::fileContent;
using test::saveBytes;

class Output : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QStringList files() const
    {
        return QDir(m_folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    /// Moves a file with these bytes over a name.
    bool move(const QByteArray& bytes, const QString& target) const
    {
        return moveOver(saveBytes(path("made"), bytes), target);
    }
    bool write(const QByteArray& bytes, const QString& target) const
    {
        return writeFile(target, bytes.constData(), bytes.size());
    }

    QTemporaryDir m_folder;
};

TEST_F(Output, ReplacesAFileAndKeepsItsPermissions)
{
    const QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
    const auto seen = [&] {
        return QFileInfo(path("a")).permissions() &
               (QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    };
    saveBytes(path("a"), "old");
    QFile::setPermissions(path("a"), permissions);
    ASSERT_TRUE(write("new", path("a")));
    EXPECT_EQ(fileContent(path("a")), "new");
    EXPECT_EQ(seen(), permissions);
    ASSERT_TRUE(move("moved", path("a")));
    EXPECT_EQ(fileContent(path("a")), "moved");
    EXPECT_EQ(seen(), permissions);
    EXPECT_EQ(files(), QStringList{"a"});
}

TEST_F(Output, FollowsLinksToFilesThatAreThereAndThatAreNot)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkdir("other"));
    saveBytes(path("other/real"), "old");
    ASSERT_TRUE(QFile::link("other/real", path("link")));
    ASSERT_TRUE(QFile::link("link", path("linklink")));
    ASSERT_TRUE(QFile::link("other/none", path("dangling")));
    ASSERT_TRUE(write("new", path("linklink")));
    EXPECT_EQ(fileContent(path("other/real")), "new");
    ASSERT_TRUE(move("moved", path("linklink")));
    EXPECT_EQ(fileContent(path("other/real")), "moved");
    ASSERT_TRUE(move("made", path("dangling")));
    EXPECT_EQ(fileContent(path("other/none")), "made");
    for (const char* link : {"link", "linklink", "dangling"})
        EXPECT_TRUE(QFileInfo(path(link)).isSymLink()) << link;
    EXPECT_EQ(QFileInfo(stagingPattern(path("linklink"))).absolutePath(), path("other"));
}

TEST_F(Output, WritesIntoAPipe)
{
    const QByteArray name = QFile::encodeName(path("pipe"));
    ASSERT_EQ(::mkfifo(name.constData(), 0600), 0);
    const int reader = ::open(name.constData(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    const auto heard = [reader] {
        char bytes[16] = {};
        const ssize_t count = ::read(reader, bytes, sizeof bytes);
        return QByteArray(bytes, count > 0 ? static_cast<int>(count) : 0);
    };
    EXPECT_TRUE(write("written", path("pipe")));
    EXPECT_EQ(heard(), "written");
    EXPECT_TRUE(move("moved", path("pipe")));
    EXPECT_EQ(heard(), "moved");
    ::close(reader);
    struct stat status = {};
    ASSERT_EQ(::lstat(name.constData(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
    EXPECT_EQ(files(), QStringList{"pipe"});
    EXPECT_NE(QFileInfo(stagingPattern(path("pipe"))).absolutePath(), m_folder.path());
}

TEST_F(Output, WritesIntoADevice)
{
    ASSERT_TRUE(QFile::link("/dev/null", path("null")));
    EXPECT_TRUE(write("lost", "/dev/null"));
    EXPECT_TRUE(move("lost", path("null")));
    EXPECT_TRUE(QFileInfo(path("null")).isSymLink());
    struct stat status = {};
    ASSERT_EQ(::stat("/dev/null", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
    EXPECT_EQ(files(), QStringList{"null"});
}

TEST_F(Output, RefusesFoldersAndLinksThatGoRoundInACircle)
{
    ASSERT_TRUE(QFile::link("b", path("a")));
    ASSERT_TRUE(QFile::link("a", path("b")));
    for (const QString& name : {path("a"), m_folder.path()}) {
        EXPECT_FALSE(outputPlace(name).usable);
        EXPECT_FALSE(write("x", name));
        EXPECT_FALSE(move("x", name));
    }
    EXPECT_FALSE(write("x", path("none/x")));
    EXPECT_EQ(files(), (QStringList{"a", "b", "made"}));
}

TEST_F(Output, WhatIsNotCommittedLeavesNothing)
{
    saveBytes(path("a"), "old");
    {
        OutputFile file(path("a"));
        ASSERT_TRUE(file.open());
        EXPECT_TRUE(file.write("new", 3));
    }
    EXPECT_EQ(fileContent(path("a")), "old");
    EXPECT_EQ(files(), QStringList{"a"});
}

} // namespace
} // namespace tirn
