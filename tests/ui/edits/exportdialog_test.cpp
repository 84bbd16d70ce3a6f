#include "ui/edits/exportdialog.h"

#include <QMessageBox>
#include <QPushButton>

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"
#include "support/picfile.h"
#include "uisupport/dialogtest.h"

namespace tirn {
namespace {

using test::denseStack;

class ExportDialog : public test::DialogTest
{
protected:
    test::GlRecorder gl{test::GlRecorder::Mode::StandAlone};
    std::unique_ptr<VoxelArray> array;
    QString boxText;

    void show(int timePoints, int channels, int bits)
    {
        array = test::makeVolume(
            std::vector(static_cast<std::size_t>(timePoints), denseStack(4, 3, 2, channels, bits)), {});
    }
    /// Types a name; the second filter is TIFF.
    void choose(const QString& name, bool isTiff = false)
    {
        script.then([name, isTiff](QDialog& dialog) {
            auto& chooser = static_cast<QFileDialog&>(dialog);
            if (isTiff)
                chooser.selectNameFilter(chooser.nameFilters().last());
            auto& line = child<QLineEdit>(dialog, "fileNameEdit");
            line.setText(name);
            press(line, Qt::Key_Return);
        });
    }
    /// Presses the button of a box that begins with a text.
    void answer(const QString& buttonText)
    {
        script.then([this, buttonText](QDialog& dialog) {
            boxText = dialog.windowTitle() + ": " + static_cast<QMessageBox&>(dialog).text();
            for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
                if (QString(button->text()).remove('&').startsWith(buttonText))
                    QTest::mouseClick(button, Qt::LeftButton);
            }
        });
    }
    std::optional<ExportJob> ask(ExportMode mode = ExportMode::Core)
    {
        return askExport(*array, mode, directory.path(), nullptr);
    }
};

TEST_F(ExportDialog, AsksForAFileInTheStacksFolder)
{
    show(1, 1, 8);
    script.then([&](QDialog& dialog) {
        auto& chooser = static_cast<QFileDialog&>(dialog);
        EXPECT_EQ(dialog.windowTitle(), "Export stack");
        EXPECT_EQ(chooser.nameFilters(), (QStringList{"Biorad (*.pic)", "MTiff (*.tif *.tiff)"}));
        EXPECT_EQ(chooser.fileMode(), QFileDialog::AnyFile);
        EXPECT_EQ(chooser.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(chooser.directory(), QDir(directory.path()));
        press(dialog, Qt::Key_Escape);
    });
    EXPECT_FALSE(ask().has_value());
}

TEST_F(ExportDialog, GivesTheJobWithTheFormatsEnding)
{
    show(1, 1, 16);
    choose(path("a"));
    const auto pic = ask(ExportMode::AllChanges);
    ASSERT_TRUE(pic.has_value());
    EXPECT_EQ(pic->fileName, path("a.pic"));
    EXPECT_EQ(pic->mode, ExportMode::AllChanges);
    EXPECT_EQ(pic->timePoints.size(), 1U);
    choose(path("a"), true);
    const auto tiff = ask();
    ASSERT_TRUE(tiff.has_value());
    EXPECT_EQ(tiff->fileName, path("a.tif"));
}

TEST_F(ExportDialog, AsksBeforeAFileIsOverwritten)
{
    show(1, 1, 8);
    test::saveBytes(path("a.pic"), "old");
    choose(path("a"));
    answer("No");
    EXPECT_FALSE(ask().has_value());
    EXPECT_EQ(boxText, "Overwrite File: Overwrite " + path("a.pic") + "?");
    choose(path("a"));
    answer("Yes");
    EXPECT_TRUE(ask().has_value());
    choose(path("a"));
    script.then([](QDialog& dialog) { press(dialog, Qt::Key_Escape); });
    EXPECT_FALSE(ask().has_value());
}

TEST_F(ExportDialog, AsksOnceForAllFilesOfASeries)
{
    show(3, 2, 8);
    test::saveBytes(path("a000_c01.pic"), "old");
    test::saveBytes(path("a002_c00.pic"), "old");
    // The chosen name itself is not written.
    test::saveBytes(path("a.pic"), "old");
    choose(path("a"));
    answer("Yes");
    EXPECT_TRUE(ask().has_value());
    EXPECT_EQ(boxText,
              "Overwrite File: Overwrite " + path("a000_c01.pic") + "\n" + path("a002_c00.pic") + "?");
}

TEST_F(ExportDialog, NamesOnlySomeOfManyFiles)
{
    show(12, 1, 8);
    for (int t = 0; t < 12; ++t)
        test::saveBytes(path(QString::asprintf("a%.3d.pic", t)), "old");
    choose(path("a"));
    answer("Yes");
    ask();
    EXPECT_EQ(boxText.count('\n'), 9);
    EXPECT_TRUE(boxText.endsWith(path("a008.pic") + "\nand 3 more?")) << boxText.toStdString();
}

struct NamedFile
{
    QString typed;
    bool isTiff;
    QString written;
};

TEST_F(ExportDialog, KeepsAnEndingOfTheChosenFormat)
{
    show(1, 1, 16);
    for (const NamedFile& each : {NamedFile{"a.pic", false, "a.pic"},
                                  {"a.PIC", false, "a.PIC"},
                                  {"a.tif", true, "a.tif"},
                                  {"a.TIFF", true, "a.TIFF"},
                                  {"a.b", true, "a.b.tif"},
                                  {"a.b", false, "a.b.pic"}}) {
        choose(path(each.typed), each.isTiff);
        const auto job = ask();
        ASSERT_TRUE(job.has_value());
        EXPECT_EQ(job->fileName, path(each.written));
    }
}

TEST_F(ExportDialog, AsksWhichOfTwoFormatsCounts)
{
    show(1, 1, 16);
    for (const NamedFile& each :
         {NamedFile{"a.tif", false, "a.pic"}, {"a.TIFF", false, "a.pic"}, {"a.Pic", true, "a.tif"}}) {
        const QString named = each.isTiff ? "Biorad" : "MTiff";
        const QString chosen = each.isTiff ? "MTiff" : "Biorad";
        choose(path(each.typed), each.isTiff);
        answer("Write " + named);
        EXPECT_EQ(ask()->fileName, path(each.typed));
        EXPECT_EQ(boxText, "Export stack: The name ends like a " + named + " file, but " + chosen +
                               " was chosen.\n" + path(each.typed));
        choose(path(each.typed), each.isTiff);
        answer("Write " + chosen);
        EXPECT_EQ(ask()->fileName, path(each.written));
        choose(path(each.typed), each.isTiff);
        script.then([](QDialog& dialog) { press(dialog, Qt::Key_Escape); });
        EXPECT_FALSE(ask().has_value());
    }
}

} // namespace
} // namespace tirn
