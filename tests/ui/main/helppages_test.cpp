// Help: the pages themselves, the assistant that may show them, and the window that shows them otherwise.

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include "uisupport/apptest.h"

namespace tirn::test {
namespace {

const QString kDocs = QString(TIRN_SOURCE_DIR) + "/docs";

QString textOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// All first captures of a pattern.
QStringList captures(const QString& text, const QString& pattern)
{
    QStringList found;
    auto match = QRegularExpression(pattern).globalMatch(text);
    while (match.hasNext())
        found.append(match.next().captured(1));
    return found;
}

/// True when a link of a page, "page#place", leads to a place that is there.
bool leadsSomewhere(const QString& page, const QString& link)
{
    const QString target = link.section('#', 0, 0).isEmpty() ? page : link.section('#', 0, 0);
    const QString place = link.section('#', 1);
    const QString text = textOf(kDocs + "/" + target);
    return !text.isEmpty() && (place.isEmpty() || text.contains("name=\"" + place + "\""));
}

TEST(HelpFiles, EveryLinkLeadsSomewhere)
{
    const QStringList pages = QDir(kDocs).entryList({"*.html"});
    EXPECT_EQ(pages, (QStringList{"help.html", "index.html", "palette.html", "stacks.html"}));
    for (const QString& page : pages) {
        const QStringList links = captures(textOf(kDocs + "/" + page), "href=\"([^\"]*)\"");
        EXPECT_FALSE(links.isEmpty());
        for (const QString& link : links)
            EXPECT_TRUE(leadsSomewhere(page, link)) << qPrintable(page + ": " + link);
    }
}

TEST(HelpFiles, TheProfileNamesPlacesThatAreThere)
{
    const QString profile = textOf(kDocs + "/tirn2.adp");
    EXPECT_TRUE(QDomDocument().setContent(profile));
    const QStringList links = captures(profile, "ref=\"([^\"]*)\"");
    EXPECT_GT(links.size(), 3);
    for (const QString& link : links)
        EXPECT_TRUE(leadsSomewhere("", link)) << qPrintable(link);
}

class Help : public AppTest
{
protected:
    Help() : m_path(qgetenv("PATH"))
    {
        QDir(path("")).mkdir("programs");
        qputenv("PATH", path("programs").toLocal8Bit());
    }
    ~Help() override { qputenv("PATH", m_path); }

    /// Puts a program of that name and text where programs are looked for.
    void installAssistant(const QByteArray& text)
    {
        QFile file(path("programs/assistant"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    /// An assistant that writes down its arguments before it goes on with `rest`.
    void installWritingAssistant(const QByteArray& rest)
    {
        const QByteArray notes = path("arguments").toLocal8Bit();
        installAssistant("#!/bin/sh\necho \"$@\" >" + notes + ".part\n/bin/mv " + notes + ".part " + notes +
                         "\n" + rest + "\n");
    }
    QString shownFile() { return pages.window()->browser().source().fileName(); }

    HelpPages pages{kDocs};

private:
    QByteArray m_path;
};

TEST_F(Help, WithoutAnAssistantThePageIsInAWindowOfOurOwn)
{
    pages.open("help.html", &app().mainForm());
    ASSERT_NE(pages.window(), nullptr);
    EXPECT_TRUE(pages.window()->isVisible());
    EXPECT_EQ(shownFile(), QString("help.html"));
    EXPECT_TRUE(pages.window()->browser().toPlainText().contains("left drag"));
    EXPECT_TRUE(log.contains("help page " + kDocs + "/help.html"));
}

TEST_F(Help, AnotherPageGoesToTheWindowThatIsOpen)
{
    pages.open("help.html", &app().mainForm());
    const QPointer<HelpWindow> first = pages.window();
    pages.open("palette.html", &app().mainForm());
    EXPECT_EQ(pages.window(), first.data());
    EXPECT_EQ(shownFile(), QString("palette.html"));
    first->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    pages.open("index.html", &app().mainForm());
    EXPECT_EQ(shownFile(), QString("index.html"));
}

TEST_F(Help, EscapeClosesTheWindowAndLeavesTheProgram)
{
    pages.open("help.html", &app().mainForm());
    QTest::keyClick(&pages.window()->browser(), Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(pages.window(), nullptr);
    EXPECT_TRUE(app().mainForm().isVisible());
}

TEST_F(Help, AMissingPageIsNamedAndTheContentsStillOpen)
{
    pages.open("gone.html", &app().mainForm());
    EXPECT_TRUE(pages.window()->browser().toPlainText().contains(kDocs + "/gone.html is missing"));
    pages.window()->showPage("index.html");
    EXPECT_TRUE(pages.window()->browser().toPlainText().contains("Opening files"));
}

TEST_F(Help, AnAssistantThatWorksIsGivenProfileAndPage)
{
    installWritingAssistant("exec /bin/sleep 1000");
    pages.open("palette.html", &app().mainForm());
    ASSERT_TRUE(QTest::qWaitFor([this] { return QFile::exists(path("arguments")); }));
    EXPECT_EQ(textOf(path("arguments")).trimmed(),
              "-profile " + kDocs + "/tirn2.adp " + kDocs + "/palette.html");
    EXPECT_TRUE(pages.isAssistantRunning());
    EXPECT_EQ(pages.window(), nullptr);
}

TEST_F(Help, AnAssistantThatIsClosedLeavesNoWindow)
{
    installAssistant("#!/bin/sh\nexit 0\n");
    pages.open("palette.html", &app().mainForm());
    ASSERT_TRUE(QTest::qWaitFor([this] { return !pages.isAssistantRunning(); }));
    EXPECT_EQ(pages.window(), nullptr);
}

TEST_F(Help, ASecondPageTakesThePlaceOfTheFirstInTheAssistant)
{
    installWritingAssistant("exec /bin/sleep 1000");
    pages.open("help.html", &app().mainForm());
    ASSERT_TRUE(QTest::qWaitFor([this] { return QFile::exists(path("arguments")); }));
    QFile::remove(path("arguments"));
    pages.open("palette.html", &app().mainForm());
    ASSERT_TRUE(QTest::qWaitFor([this] { return QFile::exists(path("arguments")); }));
    EXPECT_TRUE(textOf(path("arguments")).trimmed().endsWith("palette.html"));
    EXPECT_EQ(pages.window(), nullptr);
}

TEST_F(Help, AnAssistantThatFailsIsReplacedByTheWindowAndNotAskedAgain)
{
    installWritingAssistant("exit 1");
    pages.open("help.html", &app().mainForm());
    ASSERT_TRUE(QTest::qWaitFor([this] { return pages.window() != nullptr; }));
    EXPECT_EQ(shownFile(), QString("help.html"));
    QFile::remove(path("arguments"));
    pages.open("palette.html", &app().mainForm());
    EXPECT_EQ(shownFile(), QString("palette.html"));
    EXPECT_FALSE(pages.isAssistantRunning());
    EXPECT_FALSE(QFile::exists(path("arguments")));
}

TEST_F(Help, AnAssistantThatCannotStartIsReplacedByTheWindow)
{
    installAssistant("#!/no/such/interpreter\n");
    pages.open("help.html", &app().mainForm());
    ASSERT_TRUE(QTest::qWaitFor([this] { return pages.window() != nullptr; }));
    EXPECT_EQ(shownFile(), QString("help.html"));
}

TEST_F(Help, TheMenuOpensTheContentsAndF1TheKeys)
{
    app().mainForm().action("helpContentsAction")->trigger();
    const auto* window = app().mainForm().findChild<HelpWindow*>("Help");
    ASSERT_NE(window, nullptr);
    auto* browser = window->findChild<QTextBrowser*>();
    // The pages were copied beside the executable.
    EXPECT_EQ(browser->source().toLocalFile(), QCoreApplication::applicationDirPath() + "/docs/index.html");
    EXPECT_TRUE(browser->toPlainText().contains("Opening files"));
    key(Qt::Key_F1);
    EXPECT_EQ(browser->source().fileName(), QString("help.html"));
}

} // namespace
} // namespace tirn::test
