#include "ui/view/analyzethisform.h"

#include <QClipboard>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include "gl/cardreport.h"
#include "uisupport/apptest.h"

namespace tirn {
namespace {

class Analyze : public test::AppTest
{
protected:
    AnalyzeThisForm& form()
    {
        app().mainForm().action("helpVideo_Card_CapabilitiesAction")->trigger();
        return *static_cast<AnalyzeThisForm*>(app().forms().form(FormId::AnalyzeThis));
    }
    QPlainTextEdit& text() { return *form().findChild<QPlainTextEdit*>("txtReport"); }
};

TEST_F(Analyze, ShowsTheStatedLinesAndTheRequirementsOfItsOwn)
{
    EXPECT_EQ(form().windowTitle(), "Analyze Video Card Capabilities");
    EXPECT_TRUE(text().toPlainText().startsWith(cardReport(app().card())));
    EXPECT_TRUE(text().toPlainText().endsWith(requirementsReport(app().card())));
    EXPECT_TRUE(text().isReadOnly());
}

TEST_F(Analyze, TheTextIsSelectedAndCopied)
{
    QTest::keyClick(&text(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_FALSE(text().textCursor().selectedText().isEmpty());
    QApplication::clipboard()->clear();
    QTest::mouseClick(form().findChild<QPushButton*>("btnCopy"), Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->text(), text().toPlainText());
}

TEST_F(Analyze, OkClosesIt)
{
    AnalyzeThisForm& shown = form();
    EXPECT_TRUE(shown.isVisible());
    QTest::keyClick(&shown, Qt::Key_Return);
    EXPECT_FALSE(shown.isVisible());
}

} // namespace
} // namespace tirn
