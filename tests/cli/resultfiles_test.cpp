// What each subcommand makes of an output that is there: plain files, links, pipes, devices.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QRegularExpression>

#include "cli/drawingtool.h"

namespace tirn {
namespace {

/// A subcommand that writes one file; "IN" stands for a stack, "OUT" for the result.
struct Writer
{
    const char* ending;
    QStringList arguments;
    /// The tool counts frames into the name.
    const char* number = "";
};

std::ostream& operator<<(std::ostream& stream, const Writer& writer)
{
    return stream << writer.arguments.join(' ').toStdString();
}

class ResultFile : public DrawingTool, public ::testing::WithParamInterface<Writer>
{
protected:
    ResultFile() { m_in = pic(); }

    QString name(const QString& stem) const { return stem + GetParam().number + GetParam().ending; }
    /// Runs the subcommand for a result of this stem.
    Outcome writeTo(const QString& stem, const QStringList& options = {}) const
    {
        QStringList arguments = GetParam().arguments;
        arguments.replaceInStrings(QRegularExpression("^IN$"), m_in);
        arguments.replaceInStrings(QRegularExpression("^OUT$"), path(stem + GetParam().ending));
        return program(TIRN_TOOL, arguments + options);
    }
    /// What the subcommand writes.
    QByteArray expected() const
    {
        EXPECT_EQ(writeTo("plain").code, 0);
        return test::fileContent(path(name("plain")));
    }

    QString m_in;
};

TEST_P(ResultFile, OfALinkIsTheOneBehindIt)
{
    const QByteArray wanted = expected();
    ASSERT_FALSE(wanted.isEmpty());
    test::saveBytes(path("real"), "mine");
    const QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
    QFile::setPermissions(path("real"), permissions);
    ASSERT_TRUE(QFile::link("real", path(name("link"))));
    const Outcome refused = writeTo("link");
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.err, "tirntool: " + path(name("link")) + ": File exists; --overwrite replaces it\n");
    EXPECT_EQ(test::fileContent(path("real")), "mine");
    EXPECT_EQ(writeTo("link", {"--overwrite"}).code, 0);
    EXPECT_TRUE(QFileInfo(path(name("link"))).isSymLink());
    EXPECT_EQ(test::fileContent(path("real")), wanted);
    struct stat status = {};
    ASSERT_EQ(::stat(QFile::encodeName(path("real")).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);

    ASSERT_TRUE(QFile::link("later", path(name("dangling"))));
    EXPECT_EQ(writeTo("dangling").code, 0);
    EXPECT_TRUE(QFileInfo(path(name("dangling"))).isSymLink());
    EXPECT_EQ(test::fileContent(path("later")), wanted);
}

TEST_P(ResultFile, ThatIsAPipeTakesTheBytes)
{
    const QByteArray wanted = expected();
    const QByteArray pipe = QFile::encodeName(path(name("pipe")));
    for (const QStringList& options : {QStringList{}, QStringList{"--overwrite"}}) {
        ::unlink(pipe.constData());
        ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
        const int reader = ::open(pipe.constData(), O_RDONLY | O_NONBLOCK);
        ASSERT_GE(reader, 0);
        const Outcome done = writeTo("pipe", options);
        EXPECT_EQ(done.code, 0) << done.err.toStdString();
        QByteArray seen(wanted.size() + 1, '\0');
        seen.truncate(static_cast<int>(
            std::max<ssize_t>(0, ::read(reader, seen.data(), static_cast<std::size_t>(seen.size())))));
        ::close(reader);
        EXPECT_EQ(seen, wanted);
        struct stat status = {};
        ASSERT_EQ(::lstat(pipe.constData(), &status), 0);
        EXPECT_TRUE(S_ISFIFO(status.st_mode));
    }
}

TEST_P(ResultFile, ThatLeadsToADeviceLeavesTheDevice)
{
    ASSERT_TRUE(QFile::link("/dev/null", path(name("null"))));
    for (const QStringList& options : {QStringList{}, QStringList{"--overwrite"}}) {
        EXPECT_EQ(writeTo("null", options).code, 0);
        EXPECT_TRUE(QFileInfo(path(name("null"))).isSymLink());
        struct stat status = {};
        ASSERT_EQ(::stat("/dev/null", &status), 0);
        EXPECT_TRUE(S_ISCHR(status.st_mode));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Subcommands, ResultFile,
    ::testing::Values(Writer{".pic", {"convert", "IN", "OUT"}}, Writer{".tif", {"convert", "IN", "OUT"}},
                      Writer{".raw", {"dump", "IN", "OUT"}},
                      Writer{".raw", {"raw", "--size", "8,8,8", "--offset", "76", "IN", "OUT"}},
                      Writer{".map", {"palette", "--color", "ff8000", "OUT"}},
                      Writer{".mzp", {"depth", "--power", "1.5", "IN", "OUT"}},
                      Writer{".png", {"render", "--size", "16x16", "IN", "OUT"}},
                      Writer{".tif", {"render", "--size", "16x16", "IN", "OUT"}},
                      Writer{".tif", {"movie", "--frames", "1", "--size", "16x16", "IN", "OUT"}, "0000"}));

using MovieFile = DrawingTool;

TEST_F(MovieFile, ThatIsAPipeIsNoPlaceForAnAvi)
{
    const QByteArray pipe = QFile::encodeName(path("pipe.avi"));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    const Outcome refused = program(
        TIRN_TOOL, {"movie", "--overwrite", "--frames", "2", "--size", "16x16", pic(), path("pipe.avi")});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains("cannot be written to")) << refused.err.toStdString();
    struct stat status = {};
    ASSERT_EQ(::lstat(pipe.constData(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

} // namespace
} // namespace tirn
