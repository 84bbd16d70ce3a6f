#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include "ui/widgets/filechooser.h"
#include "uisupport/apptest.h"

namespace tirn {
namespace {

class FileChooserTest : public test::AppTest
{};

TEST_F(FileChooserTest, TellsOfANameThatWasTypedToItsEnd)
{
    FileChooser chooser(FileChooser::Mode::OpenFile);
    QSignalSpy changed(&chooser, &FileChooser::fileNameChanged);
    auto* line = chooser.findChild<QLineEdit*>("txtFileName");
    ASSERT_NE(line, nullptr);
    QTest::keyClicks(line, "/a/b.tif");
    EXPECT_EQ(changed.count(), 0);
    QTest::keyClick(line, Qt::Key_Return);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.first().first().toString(), "/a/b.tif");
    EXPECT_EQ(chooser.fileName(), "/a/b.tif");
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
