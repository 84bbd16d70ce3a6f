// The executable as a process of its own.

#include <QProcess>
#include <gtest/gtest.h>

namespace tirn::test {
namespace {

struct Ended
{
    int exitCode = -1;
    QString output;
    QString errors;
};

Ended runTirn(const QStringList& arguments)
{
    QProcess process;
    process.start(TIRN_EXECUTABLE, arguments);
    EXPECT_TRUE(process.waitForFinished(30000));
    return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}

TEST(Process, AHelpArgumentAnywherePrintsTheUsageAndEnds)
{
    for (const QStringList& arguments :
         {QStringList{"-h"}, QStringList{"a.pic", "-?"}, QStringList{"a.pic", "b.map", "--help"}}) {
        const Ended ended = runTirn(arguments);
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.output, QString());
        EXPECT_EQ(ended.errors, QString("Warning: Usage: " TIRN_EXECUTABLE " [options] <stacks> <maps>\n"
                                        "Warning: -b:\t( geforce | geforcefx | radeon )\n"));
    }
}

} // namespace
} // namespace tirn::test
