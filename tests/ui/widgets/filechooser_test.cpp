#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include "ui/widgets/filechooser.h"
#include "uisupport/apptest.h"
#include "uisupport/modalanswers.h"

namespace tirn {
namespace {

class FileChooserTest : public test::AppTest
{};

TEST_F(FileChooserTest, ANameCountsAsItIsTyped)
{
    FileChooser chooser(FileChooser::Mode::OpenFile);
    QSignalSpy changed(&chooser, &FileChooser::fileNameChanged);
    auto* line = chooser.findChild<QLineEdit*>("txtFileName");
    ASSERT_NE(line, nullptr);
    QTest::keyClicks(line, "/a/b.tif");
    ASSERT_EQ(changed.count(), 8);
    EXPECT_EQ(changed.first().first().toString(), "/");
    EXPECT_EQ(changed.last().first().toString(), "/a/b.tif");
    EXPECT_EQ(chooser.fileName(), "/a/b.tif");
    // Nothing is new when it is taken by Enter or left.
    QTest::keyClick(line, Qt::Key_Return);
    line->clearFocus();
    EXPECT_EQ(changed.count(), 8);
}

TEST_F(FileChooserTest, EnterStaysInItAndBrowsesFromTheButton)
{
    QDialog dialog;
    FileChooser chooser(FileChooser::Mode::OpenFile, &dialog);
    QPushButton other("Open", &dialog);
    other.setDefault(true);
    QSignalSpy pressed(&other, &QPushButton::clicked);
    dialog.show();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    chooser.setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    chooser.findChild<QToolButton*>("btnBrowse")->setFocus();
    test::ModalAnswers answers;
    answers.choose(picFile("a.pic"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(answers.allAsked());
    EXPECT_EQ(chooser.fileName(), path("a.pic"));
    EXPECT_EQ(pressed.count(), 0);
}

TEST_F(FileChooserTest, ANameSetFromOutsideSendsNothingBack)
{
    FileChooser chooser(FileChooser::Mode::Directory);
    QSignalSpy changed(&chooser, &FileChooser::fileNameChanged);
    chooser.setFileName("/a");
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(chooser.fileName(), "/a");
}

} // namespace
} // namespace tirn
