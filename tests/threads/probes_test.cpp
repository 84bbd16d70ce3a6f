#include "threads/probes.h"

#include <QCoreApplication>
#include <QFile>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/picfile.h"
#include "uisupport/probegate.h"

namespace tirn {
namespace {

class ProbesTest : public ::testing::Test
{
protected:
    QString file(const QString& name, const QByteArray& bytes = "x")
    {
        return test::saveBytes(directory.filePath(name), bytes);
    }
    void wait()
    {
        ASSERT_TRUE(QTest::qWaitFor([this] { return !probes.isBusy(); }));
    }
    QStringList readNames() const { return gate.readNames(); }

    int argc = 1;
    char program[5] = "tirn";
    char* argv[2] = {program, nullptr};
    QCoreApplication application{argc, argv};
    QTemporaryDir directory;
    test::ProbeGate gate;
    Probes probes{gate.reader()};
    ProbeQuestion question{probes};
};

TEST_F(ProbesTest, ReadOnAnotherThreadAndAnswerOnThisOne)
{
    const QString name = file("a");
    QThread* answeredOn = nullptr;
    question.ask({{name}}, [&] { answeredOn = QThread::currentThread(); });
    EXPECT_EQ(answeredOn, nullptr);
    EXPECT_FALSE(probes.known({name}));
    wait();
    EXPECT_EQ(answeredOn, QThread::currentThread());
    EXPECT_NE(gate.readOn(), QThread::currentThread());
    EXPECT_EQ(question.known({name}).fileX, 7);
}

TEST_F(ProbesTest, ReadNoFileTwiceUntilItChanges)
{
    const QString name = file("a");
    ProbeQuestion other(probes);
    int answers = 0;
    question.ask({{name}}, [&] { ++answers; });
    other.ask({{name}}, [&] { ++answers; });
    wait();
    question.ask({{name}}, [&] { ++answers; });
    EXPECT_EQ(answers, 3);
    EXPECT_EQ(readNames(), QStringList{name});
    file("a", "longer");
    EXPECT_FALSE(probes.known({name}));
    question.ask({{name}}, [&] { ++answers; });
    wait();
    EXPECT_EQ(answers, 4);
    EXPECT_EQ(readNames(), (QStringList{name, name}));
}

TEST_F(ProbesTest, TheNewestQuestionWins)
{
    const QStringList names = {file("a"), file("b"), file("c"), file("d")};
    QString answered;
    gate.close();
    question.ask({{names[0]}, {names[1]}}, [&] { answered += "1"; });
    gate.waitForReader();
    question.ask({{names[2]}}, [&] { answered += "2"; });
    question.ask({{names[3]}}, [&] { answered += "3"; });
    gate.open();
    wait();
    EXPECT_EQ(answered, "3");
    // Of the first question only the file at hand was read.
    EXPECT_EQ(readNames(), (QStringList{names[0], names[3]}));
}

TEST_F(ProbesTest, AQuestionThatIsGoneIsNotAnswered)
{
    bool answered = false;
    gate.close();
    auto gone = std::make_unique<ProbeQuestion>(probes);
    gone->ask({{file("a")}}, [&] { answered = true; });
    gate.waitForReader();
    gone.reset();
    EXPECT_FALSE(probes.isBusy());
    gate.open();
    question.ask({{file("b")}}, [] {});
    wait();
    EXPECT_FALSE(answered);
}

TEST_F(ProbesTest, AnAnswerMayAskAgain)
{
    const QString second = file("b");
    int x = 0;
    question.ask({{file("a")}},
                 [&] { question.ask({{second}}, [&] { x = question.known({second}).fileX; }); });
    wait();
    EXPECT_EQ(x, 7);
}

TEST_F(ProbesTest, WhatIsNoPlainFileIsNoStackAndIsNotOpened)
{
    const QString pipe = directory.filePath("pipe");
    ASSERT_EQ(mkfifo(qPrintable(pipe), 0600), 0);
    bool answered = false;
    question.ask({{pipe}, {directory.path()}, {directory.filePath("none")}, {}}, [&] { answered = true; });
    wait();
    EXPECT_TRUE(answered);
    EXPECT_EQ(question.known({pipe}).type, ImageType::Unknown);
    EXPECT_EQ(readNames(), QStringList());
}

TEST_F(ProbesTest, NothingToBeReadIsAnsweredAtOnce)
{
    bool answered = false;
    question.ask({}, [&] { answered = true; });
    EXPECT_TRUE(answered);
    EXPECT_FALSE(probes.isBusy());
}

TEST_F(ProbesTest, TheEndWaitsForTheFileAtHandOnly)
{
    const QStringList names = {file("a"), file("b")};
    test::ProbeGate own;
    auto ending = std::make_unique<Probes>(own.reader());
    auto asked = std::make_unique<ProbeQuestion>(*ending);
    own.close();
    asked->ask({{names[0]}, {names[1]}}, [] { FAIL(); });
    own.waitForReader();
    asked.reset();
    own.open();
    ending.reset();
    EXPECT_EQ(own.readNames(), QStringList{names[0]});
}

TEST(ProbesOfFiles, TellWhatTheHeaderSays)
{
    int argc = 1;
    char name[5] = "tirn";
    char* argv[2] = {name, nullptr};
    QCoreApplication application(argc, argv);
    const QTemporaryDir directory;
    const QString file = test::PicFile{.x = 6, .y = 5, .z = 4}.save(directory.filePath("a.pic"));
    Probes probes;
    ProbeQuestion question(probes);
    bool answered = false;
    question.ask({{file}}, [&] { answered = true; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return answered; }));
    const ImageAttributes known = question.known({file});
    EXPECT_EQ(known.type, ImageType::BioRad);
    EXPECT_EQ((std::vector{known.fileX, known.fileY, known.fileZ}), (std::vector{6, 5, 4}));
}

} // namespace
} // namespace tirn
