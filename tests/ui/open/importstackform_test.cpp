#include "ui/open/importstackform.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include "support/picfile.h"
#include "ui/widgets/filechooser.h"
#include "uisupport/openformtest.h"

namespace tirn {
namespace {

using test::SeenBox;

class ImportStack : public test::OpenFormTest
{
protected:
    ImportStack() : form(services(), nullptr) {}

    QString rawFile(int bytes) { return test::saveBytes(path("a.raw"), QByteArray(bytes, 'x')); }
    /// Shows the form with a file of so many bytes.
    void showWith(int bytes)
    {
        form.setFileName(rawFile(bytes));
        form.show();
    }
    void set(const char* name, int value) { find<QSpinBox>(form, name).setValue(value); }
    int value(const char* name) { return find<QSpinBox>(form, name).value(); }
    QColor estimateBackground()
    {
        return find<QLabel>(form, "lblEstimated").palette().color(QPalette::Window);
    }
    void expectRefused(const QString& text)
    {
        click(form, "btnOpen");
        EXPECT_EQ(seenBox(), (SeenBox{QMessageBox::Information, "File Load Error", text, true}));
        EXPECT_EQ(loads(), 0U);
        EXPECT_TRUE(form.isVisible());
    }
    /// 10 x 4 words in 5 layers behind 100 bytes.
    void describeWords()
    {
        find<QComboBox>(form, "cboBitDepth").setCurrentIndex(8);
        for (const auto& [name, number] :
             {std::pair{"spnX", 10}, {"spnY", 4}, {"spnZ", 5}, {"spnOffset", 100}})
            set(name, number);
    }

    ImportStackForm form;
};

TEST_F(ImportStack, HasItsTexts)
{
    EXPECT_EQ(form.windowTitle(), "Import Stack");
    EXPECT_EQ(find<QCheckBox>(form, "chkEndian").text(), "S&wap Endian");
    EXPECT_EQ(find<QRadioButton>(form, "rdo2D").text(), "&2D Texmaps");
    EXPECT_EQ(find<QRadioButton>(form, "rdo3D").text(), "&3D Texmaps");
    QStringList labels;
    for (const QLabel* label : form.findChildren<QLabel*>())
        labels.append(label->text().remove('&'));
    for (const char* text : {"Filename", "Byte Offset", "Bit Depth", "Channels", "First Slice", "Last Slice",
                             "Step", "Sub sample", "File size:", "Specified size:"})
        EXPECT_TRUE(labels.contains(text)) << text;
}

TEST_F(ImportStack, DepthsBetweenBytesAndWordsCannotBeChosen)
{
    auto& depths = find<QComboBox>(form, "cboBitDepth");
    ASSERT_EQ(depths.count(), 9);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(depths.itemText(i), QString::number(i + 8));
        const auto* model = static_cast<QStandardItemModel*>(depths.model());
        EXPECT_EQ(model->item(i)->isEnabled(), i == 0 || i == 8);
    }
    QTest::keyClick(&depths, Qt::Key_Down);
    EXPECT_EQ(depths.currentText(), "16");
    QTest::keyClick(&depths, Qt::Key_Up);
    EXPECT_EQ(depths.currentText(), "8");
}

TEST_F(ImportStack, EachShowBeginsAnew)
{
    showWith(500);
    describeWords();
    set("spnCh", 3);
    set("spnStep", 2);
    set("spnFirst", 2);
    form.hide();
    showWith(500);
    for (const char* name : {"spnX", "spnY", "spnZ", "spnCh", "spnStep"})
        EXPECT_EQ(value(name), 1) << name;
    for (const char* name : {"spnOffset", "spnFirst", "spnLast"})
        EXPECT_EQ(value(name), 0) << name;
    EXPECT_EQ(value("spnSubsample"), 1);
    EXPECT_EQ(find<QSpinBox>(form, "spnSubsample").maximum(), 8);
    EXPECT_EQ(label(form, "lblReal"), "500 B");
}

TEST_F(ImportStack, AsksForAFileWhenItComesUpWithoutOne)
{
    form.show();
    EXPECT_EQ(label(form, "lblReal"), "00 B");
    EXPECT_EQ(label(form, "lblEstimated"), "1 B");
    QString title;
    QStringList filters;
    QTimer::singleShot(0, &form, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr)
            return;
        title = dialog->windowTitle();
        filters = dialog->nameFilters();
        dialog->reject();
    });
    QCoreApplication::processEvents();
    EXPECT_EQ(title, "Choose a file to open");
    EXPECT_EQ(filters, QStringList{"Raw (*.*)"});
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(label(form, "lblReal"), "00 B");
}

TEST_F(ImportStack, ShowsBothSizes)
{
    showWith(500);
    EXPECT_EQ(label(form, "lblReal"), "500 B");
    EXPECT_EQ(label(form, "lblEstimated"), "1 B");
    describeWords();
    EXPECT_EQ(label(form, "lblEstimated"), "500 B");
    set("spnCh", 3);
    EXPECT_EQ(label(form, "lblEstimated"), "1300 B");
    typeName(form, "fchRaw", path("none.raw"));
    EXPECT_EQ(label(form, "lblReal"), "unknown");
}

TEST_F(ImportStack, TheEstimateTurnsRedWhileTheNumberIsTyped)
{
    showWith(50);
    const QColor plain = form.palette().color(QPalette::Window);
    EXPECT_EQ(estimateBackground(), plain);
    auto& width = find<QSpinBox>(form, "spnX");
    width.selectAll();
    QTest::keyClicks(&width, "50");
    EXPECT_EQ(estimateBackground(), plain);
    QTest::keyClicks(&width, "0");
    EXPECT_EQ(estimateBackground(), QColor(225, 0, 0));
    QTest::keyClick(&width, Qt::Key_Backspace);
    EXPECT_EQ(estimateBackground(), plain);
}

TEST_F(ImportStack, TheEstimateFollowsTheColoursOfTheForm)
{
    showWith(50);
    QPalette dark = form.palette();
    dark.setColor(QPalette::Window, QColor(20, 20, 30));
    form.setPalette(dark);
    EXPECT_EQ(estimateBackground(), QColor(20, 20, 30));
}

TEST_F(ImportStack, TheSlicesDecideAboutTheLast)
{
    showWith(5000);
    set("spnZ", 9);
    EXPECT_EQ(value("spnLast"), 8);
    EXPECT_EQ(find<QSpinBox>(form, "spnLast").maximum(), 8);
    set("spnZ", 4);
    EXPECT_EQ(value("spnLast"), 3);
}

TEST_F(ImportStack, AFileThatIsNotThereIsTold)
{
    showWith(500);
    QFile::remove(path("a.raw"));
    expectRefused("Could not find " + path("a.raw"));
}

TEST_F(ImportStack, AnOffsetBehindTheFileIsTold)
{
    showWith(500);
    set("spnOffset", 501);
    expectRefused("The offset is greater than the size of the file.");
}

TEST_F(ImportStack, DimensionsThatAreTooLargeAreTold)
{
    showWith(299);
    describeWords();
    expectRefused("Given dimensions are greater than the size of the file.");
}

TEST_F(ImportStack, AFirstLayerBehindTheFileIsTold)
{
    // A layer counts 40 bytes here: the seventh begins where the file ends.
    showWith(100 + 7 * 40);
    describeWords();
    set("spnLast", 0);
    set("spnFirst", 8);
    expectRefused("First layer position beyond the end of the file.");
    set("spnFirst", 7);
    click(form, "btnOpen");
    EXPECT_EQ(seenBox(), SeenBox());
    EXPECT_EQ(loads(), 1U);
}

TEST_F(ImportStack, ALastLayerBehindTheFileIsTold)
{
    showWith(100 + 4 * 80 - 1);
    describeWords();
    expectRefused("Last layer position beyond the end of the file.");
}

TEST_F(ImportStack, AStepOfNothingIsTold)
{
    showWith(500);
    set("spnStep", 0);
    expectRefused("Step size must be at least 1.");
}

TEST_F(ImportStack, LoadsWhatWasDescribed)
{
    showWith(100 + 10 * 4 * 5 * 2 * 2);
    describeWords();
    set("spnCh", 2);
    set("spnFirst", 1);
    set("spnStep", 2);
    set("spnSubsample", 3);
    click(form, "chkEndian");
    click(form, "rdo3D");
    click(form, "btnOpen");
    ASSERT_EQ(loads(), 1U);
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(log.contains("*** made it here ***"));
    const LoadDescription& load = loaded();
    EXPECT_TRUE(load.raw);
    EXPECT_EQ(load.rawLayout, (RawLayout{100, 10, 4, 5, 16, true}));
    EXPECT_EQ(load.filesToLoad, (std::vector<QStringList>{{path("a.raw")}}));
    EXPECT_EQ(load.channels, 2);
    EXPECT_EQ(load.timePoints, 1);
    EXPECT_EQ(load.fileType, ImageType::Unknown);
    EXPECT_TRUE(load.partial);
    EXPECT_EQ((std::vector{load.first, load.last, load.step, load.subsample, load.resliceZ}),
              (std::vector{1, 4, 2, 3, 0}));
    EXPECT_FALSE(load.reslice);
    EXPECT_FALSE(load.conserveMemory);
    EXPECT_EQ(load.textureTarget, static_cast<GLenum>(GL_TEXTURE_3D));
}

TEST_F(ImportStack, BytesInOrderAreTheDefault)
{
    showWith(500);
    click(form, "btnOpen");
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().rawLayout, (RawLayout{0, 1, 1, 1, 8, false}));
    EXPECT_EQ(loaded().textureTarget, static_cast<GLenum>(GL_TEXTURE_2D));
}

TEST_F(ImportStack, EscapeClosesIt)
{
    showWith(500);
    QTest::keyClick(&find<QSpinBox>(form, "spnX"), Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(loads(), 0U);
}

TEST_F(ImportStack, TheKeyboardReachesEveryWidgetInOrder)
{
    showWith(500);
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    find<QLineEdit>(form, "txtFileName").setFocus();
    QStringList reached;
    for (int i = 0; i < 16; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        reached.append(QApplication::focusWidget()->objectName());
    }
    reached.removeAll("btnBrowse");
    EXPECT_EQ(
        reached.mid(0, 15),
        (QStringList{"chkEndian", "spnOffset", "cboBitDepth", "spnCh", "spnX", "spnY", "spnZ", "spnFirst",
                     "spnLast", "spnStep", "spnSubsample", "rdo2D", "btnOpen", "btnCancel", "txtFileName"}));
}

TEST_F(ImportStack, ARefusedImportKeepsWhatWasTyped)
{
    showWith(500);
    describeWords();
    isBusy = true;
    click(form, "btnOpen");
    EXPECT_EQ(seenBox(),
              (SeenBox{QMessageBox::Warning, "File Load Error",
                       "Another stack is being loaded. Please wait until it stands, or cancel it.", true}));
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(
        (std::vector{value("spnX"), value("spnY"), value("spnZ"), value("spnOffset"), value("spnLast")}),
        (std::vector{10, 4, 5, 100, 4}));
    isBusy = false;
    click(form, "btnOpen");
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().rawLayout.x, 10);
}

TEST_F(ImportStack, TheTabKeyGoesFromTopToBottomAndThenToTheButtons)
{
    showWith(500);
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    auto& line = find<QLineEdit>(form, "txtFileName");
    line.setFocus();
    QStringList reached;
    do {
        reached.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    } while (QApplication::focusWidget() != &line && reached.size() < 40);
    EXPECT_EQ(reached, (QStringList{"txtFileName", "btnBrowse", "chkEndian", "spnOffset", "cboBitDepth",
                                    "spnCh", "spnX", "spnY", "spnZ", "spnFirst", "spnLast", "spnStep",
                                    "spnSubsample", "rdo2D", "btnOpen", "btnCancel"}));
}

TEST_F(ImportStack, EnterTakesANameAndOpensFromElsewhere)
{
    showWith(500);
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    find<QLineEdit>(form, "txtFileName").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(loads(), 0U);
    find<QSpinBox>(form, "spnX").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(loads(), 1U);
}

} // namespace
} // namespace tirn
