// The tool at a terminal: the progress bar, and Ctrl-C. Each test holds the tool up at a full pipe, so that
// it does not matter how fast either side is.

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <QDir>
#include <QProcess>

#include <gtest/gtest.h>

#include "support/picfile.h"

namespace tirn {
namespace {

constexpr int kStopped = 130;

class Terminal : public testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }
    QStringList files() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::Files | QDir::Hidden | QDir::Dirs | QDir::NoDotAndDotDot);
    }
    /// Arguments that write 24 MB to stdout, far more than a pipe holds.
    QStringList longDump()
    {
        QFile file(path("in.raw"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(24 << 20));
        return {"raw", "--size", "1024,1024,24", file.fileName(), "-"};
    }

    QTemporaryDir m_directory;
};

/// Waits until a text came on a channel; the process stops when the pipe behind it is full.
void waitFor(QProcess& process, QProcess::ProcessChannel channel, const QByteArray& text)
{
    process.setReadChannel(channel);
    while (!process.peek(1 << 20).contains(text)) {
        if (!process.waitForReadyRead(-1)) {
            ADD_FAILURE() << "never came: " << text.constData();
            return;
        }
    }
}

void pressCtrlC(const QProcess& process) { ::kill(static_cast<pid_t>(process.processId()), SIGINT); }

TEST_F(Terminal, CtrlCEndsADump)
{
    QProcess process;
    process.start(TIRN_TOOL, longDump());
    waitFor(process, QProcess::StandardOutput, QByteArray(1, '\0'));
    pressCtrlC(process);
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), kStopped);
    EXPECT_EQ(process.readAllStandardError(), "tirntool: stopped\n") << "no bar where there is no terminal";
    EXPECT_LT(process.readAllStandardOutput().size(), 24 << 20);
}

TEST_F(Terminal, CtrlCLeavesNoFiles)
{
    // A line of the log for each of 4000 layers: several times what a pipe holds.
    test::PicFile pic;
    pic.x = pic.y = 1;
    pic.z = 4000;
    const QString in = pic.save(path("in.pic"));
    QProcess process;
    process.start(TIRN_TOOL, {"convert", "--verbose", "--to", "tiff", in, path("out.tif")});
    waitFor(process, QProcess::StandardError, "about to write ");
    pressCtrlC(process);
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitCode(), kStopped);
    EXPECT_EQ(files(), QStringList{"in.pic"});
}

/// The two ends of a terminal that nobody sits at.
class PseudoTerminal
{
public:
    PseudoTerminal() : m_master(::posix_openpt(O_RDWR | O_NOCTTY))
    {
        EXPECT_GE(m_master, 0);
        EXPECT_EQ(::grantpt(m_master), 0);
        EXPECT_EQ(::unlockpt(m_master), 0);
        // Kept open, so that what was written stays there to be read.
        m_slave = ::open(name().toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
        EXPECT_GE(m_slave, 0);
    }
    ~PseudoTerminal()
    {
        ::close(m_slave);
        ::close(m_master);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    QString name() const { return QString::fromLocal8Bit(::ptsname(m_master)); }

    /// All that was shown, from the start until `text` came.
    QByteArray shownUntil(const QByteArray& text)
    {
        while (!m_shown.contains(text)) {
            char bytes[4096];
            const auto got = ::read(m_master, bytes, sizeof bytes);
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                break;
            m_shown.append(bytes, static_cast<int>(got));
        }
        return m_shown;
    }
    /// What is there already, without waiting.
    QByteArray shown()
    {
        pollfd waiting = {m_master, POLLIN, 0};
        while (::poll(&waiting, 1, 0) > 0 && (waiting.revents & POLLIN) != 0) {
            char bytes[4096];
            const auto got = ::read(m_master, bytes, sizeof bytes);
            if (got <= 0)
                break;
            m_shown.append(bytes, static_cast<int>(got));
        }
        return m_shown;
    }

private:
    int m_master;
    int m_slave;
    QByteArray m_shown;
};

TEST_F(Terminal, LongWorkShowsABarAndWipesIt)
{
    PseudoTerminal terminal;
    QProcess process;
    process.setStandardErrorFile(terminal.name());
    process.start(TIRN_TOOL, longDump());
    waitFor(process, QProcess::StandardOutput, QByteArray(1, '\0'));
    // Nobody takes the rest, so the work lasts as long as it takes for the bar to come.
    EXPECT_TRUE(terminal.shownUntil("\rWriting [").contains("\rWriting ["));
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(process.readAllStandardOutput().size(), 24 << 20);
    EXPECT_TRUE(terminal.shown().endsWith("\r\033[K"));
}

TEST_F(Terminal, ShortWorkShowsNothing)
{
    PseudoTerminal terminal;
    test::saveBytes(path("small.raw"), QByteArray(8, 'x'));
    QProcess process;
    process.setStandardErrorFile(terminal.name());
    process.start(TIRN_TOOL, {"raw", "--size", "2,2,2", path("small.raw"), path("out")});
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(terminal.shown(), QByteArray());
}

} // namespace
} // namespace tirn
