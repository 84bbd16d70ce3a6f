#include "ui/edits/customfilterform.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>

#include <gtest/gtest.h>

#include "support/picfile.h"
#include "uisupport/dialogtest.h"

namespace tirn {
namespace {

class CustomFilter : public test::DialogTest
{
protected:
    CustomFilterForm form{3};

    QTableWidget& table() { return child<QTableWidget>(form, "tblKernel"); }
    QSpinBox& spin(const char* name) { return child<QSpinBox>(form, name); }
    void put(int row, int column, const QString& text)
    {
        table().setItem(row, column, new QTableWidgetItem(text));
    }
    void clickLoad() { QTest::mouseClick(&child<QPushButton>(form, "btnLoad"), Qt::LeftButton); }
    /// Closes the box that comes up; its text goes to `boxText`.
    void expectBox()
    {
        script.then([this](QDialog& dialog) {
            boxText = dialog.windowTitle() + ": " + static_cast<QMessageBox&>(dialog).text();
            press(dialog, Qt::Key_Return);
        });
    }
    QString boxText;
};

TEST_F(CustomFilter, BeginsWithThreeByThreeThatChangeNothing)
{
    EXPECT_EQ(form.windowTitle(), "Custom");
    EXPECT_EQ(form.kernel(), (FilterKernel{3, 3, {0, 0, 0, 0, 1, 0, 0, 0, 0}}));
    EXPECT_EQ(spin("spnWidth").value(), 3);
    EXPECT_EQ(spin("spnHeight").value(), 3);
    EXPECT_EQ(child<QPushButton>(form, "btnLoad").text(), "&Load...");
    EXPECT_EQ(child<QPushButton>(form, "btnCancel").text(), "&Cancel");
}

TEST_F(CustomFilter, WorksOnAllChannelsUnlessOneIsChosen)
{
    form.show();
    auto& all = child<QCheckBox>(form, "chkAllChannels");
    EXPECT_TRUE(all.isChecked());
    EXPECT_FALSE(spin("spnChannel").isEnabled());
    EXPECT_EQ(form.channel(), -1);
    press(all, Qt::Key_Space);
    EXPECT_TRUE(spin("spnChannel").isEnabled());
    EXPECT_EQ(spin("spnChannel").minimum(), 1);
    EXPECT_EQ(spin("spnChannel").maximum(), 3);
    press(spin("spnChannel"), Qt::Key_Up);
    EXPECT_EQ(form.channel(), 1);
}

TEST_F(CustomFilter, BoxesSetColumnsAndRows)
{
    form.show();
    press(spin("spnWidth"), Qt::Key_Up);
    press(spin("spnHeight"), Qt::Key_Down);
    EXPECT_EQ(table().columnCount(), 4);
    EXPECT_EQ(table().rowCount(), 2);
    EXPECT_EQ(form.kernel(), (FilterKernel{4, 2, {0, 0, 0, 0, 0, 1, 0, 0}}));
    EXPECT_EQ(spin("spnWidth").minimum(), 1);
}

TEST_F(CustomFilter, WeightsAreTypedIntoTheTable)
{
    form.show();
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    table().setFocus();
    table().setCurrentCell(0, 0);
    // The first key opens an editor, which has the others.
    QTest::keyClicks(&table(), "-");
    QTest::keyClicks(QApplication::focusWidget(), "2.5");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    // The toolkit takes an editor's text over by a call that waits in the queue.
    QCoreApplication::processEvents();
    // Enter ends the editing and does not accept the form.
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(form.kernel().weights[0], -2.5);
    press(table(), Qt::Key_Return);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(form.result(), QDialog::Accepted);
}

TEST_F(CustomFilter, TheLocalesSignIsUnderstoodAndAnEmptyPlaceIsNothing)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    put(0, 0, "1,5");
    put(0, 1, "0.25");
    put(0, 2, " ");
    EXPECT_EQ(form.kernel().weights[0], 1.5);
    EXPECT_EQ(form.kernel().weights[1], 0.25);
    EXPECT_EQ(form.kernel().weights[2], 0);
    QLocale::setDefault(before);
}

TEST_F(CustomFilter, WhatIsNoNumberIsSaidAndTheFormStays)
{
    form.show();
    for (const QString wrong : {"abc", "nan", "1e200"}) {
        put(1, 2, wrong);
        expectBox();
        QTest::mouseClick(&child<QPushButton>(form, "btnOK"), Qt::LeftButton);
        EXPECT_EQ(boxText, "Custom: The weight in row 2, column 3 is no number.");
        EXPECT_TRUE(form.isVisible());
    }
}

TEST_F(CustomFilter, EscapeCancels)
{
    form.show();
    press(form, Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(form.result(), QDialog::Rejected);
}

TEST_F(CustomFilter, LoadsAFileOfRows)
{
    form.show();
    const QString name = test::saveBytes(path("kernel.txt"), "1 2 3.5\n-4 5 6\n");
    script.then([&](QDialog& dialog) {
        EXPECT_EQ(dialog.objectName(), "Load filter kernel");
        EXPECT_EQ(dialog.windowTitle(), "Load filter Kernel");
        EXPECT_EQ(static_cast<QFileDialog&>(dialog).nameFilters(), QStringList("Kernel (*.txt)"));
        auto& line = child<QLineEdit>(dialog, "fileNameEdit");
        line.setText(name);
        press(line, Qt::Key_Return);
    });
    clickLoad();
    EXPECT_EQ(form.kernel(), (FilterKernel{3, 2, {1, 2, 3.5, -4, 5, 6}}));
    EXPECT_EQ(spin("spnHeight").value(), 2);
    EXPECT_EQ(table().item(0, 2)->text(), "3.5");
}

TEST_F(CustomFilter, AFileThatHoldsNoKernelIsSaidAndTheTableStays)
{
    form.show();
    const QString name = test::saveBytes(path("bad.txt"), "1 2\n3\n");
    script.choose(name);
    expectBox();
    clickLoad();
    EXPECT_EQ(boxText, "Load filter Kernel: " + name + ":\nline 2 has 1 numbers, not 2");
    EXPECT_EQ(form.kernel(), (FilterKernel{3, 3, {0, 0, 0, 0, 1, 0, 0, 0, 0}}));
}

TEST_F(CustomFilter, CancellingTheChoiceChangesNothing)
{
    form.show();
    script.then([](QDialog& dialog) { press(dialog, Qt::Key_Escape); });
    clickLoad();
    EXPECT_EQ(form.kernel().width, 3);
    EXPECT_TRUE(form.isVisible());
}

} // namespace
} // namespace tirn
