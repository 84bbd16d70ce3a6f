#include "ui/open/sequencetiffform.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>
#include <QTextLayout>

#include <gtest/gtest.h>

#include "support/tifffile.h"
#include "ui/open/stackopenform.h"
#include "ui/widgets/sequencehighlighter.h"
#include "uisupport/openformtest.h"

namespace tirn {
namespace {

using test::SeenBox;
using Lists = std::vector<QStringList>;

class SequenceTiff : public test::OpenFormTest
{
protected:
    SequenceTiff() : form(services(), nullptr)
    {
        QObject::connect(&form, &SequenceTiffForm::setupTiff, &form,
                         [this](const LoadDescription& load, const QString& pattern, int bits, int slices) {
                             next = load;
                             handedOver = QString("%1 %2 %3 %4 %5")
                                              .arg(pattern)
                                              .arg(load.channels)
                                              .arg(bits)
                                              .arg(slices)
                                              .arg(load.timePoints);
                         });
    }

    void makeFiles(const QStringList& names)
    {
        for (const QString& name : names)
            test::TiffFile{{test::TiffPage{.x = 8, .y = 6}}}.save(path(name));
    }
    /// Every combination of two time points, two slices and two channels.
    void makeAll()
    {
        for (const char* time : {"t1", "t2"}) {
            for (const char* slice : {"z01", "z02"}) {
                for (const char* channel : {"c1", "c2"})
                    makeFiles({QString("%1_%2_%3.tif").arg(time, slice, channel)});
            }
        }
    }
    QStringList paths(const QStringList& names) const
    {
        QStringList all;
        for (const QString& name : names)
            all.append(path(name));
        return all;
    }
    QTextEdit& nameText() { return find<QTextEdit>(form, "tedFileName"); }
    QString question() { return label(form, "lblQuestion"); }
    /// A click on a character of the name.
    void clickOn(int position)
    {
        QTextCursor cursor(nameText().document());
        cursor.setPosition(position);
        const QRect left = nameText().cursorRect(cursor);
        cursor.setPosition(position + 1);
        const QRect right = nameText().cursorRect(cursor);
        QTest::mouseClick(nameText().viewport(), Qt::LeftButton, {}, (left.center() + right.center()) / 2);
        waitForProbes();
    }
    QTextCharFormat formatAt(int position)
    {
        const auto formats = nameText().document()->firstBlock().layout()->formats();
        for (const QTextLayout::FormatRange& range : formats) {
            if (position >= range.start && position < range.start + range.length)
                return range.format;
        }
        return {};
    }
    /// The background of a character of the name.
    QColor colourAt(int position)
    {
        const QBrush background = formatAt(position).background();
        return background.style() == Qt::NoBrush ? QColor() : background.color();
    }
    bool isUnderlined(int position) { return formatAt(position).fontUnderline(); }

    SequenceTiffForm form;
    QString handedOver;
    LoadDescription next;
};

QString asked(const QString& text) { return "<p align=\"center\">" + text + "</p>"; }
const QString kTime = asked("Which field represents time points?");
const QString kSlices = asked("Which field represents z slices?");
const QString kChannels = asked("Which field represents channels?");

TEST_F(SequenceTiff, AsksThreeQuestions)
{
    EXPECT_EQ(form.windowTitle(), "Load Tiff Sequence");
    EXPECT_EQ(question(), asked("What is your quest?"));
    EXPECT_EQ(find<QPushButton>(form, "btnNone").text(), "&None of the above");
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(nameText().toPlainText(), "t1_z01_c1.tif");
    EXPECT_TRUE(nameText().isReadOnly());
    EXPECT_EQ(question(), kTime);
    clickOn(1);
    EXPECT_EQ(question(), kSlices);
    clickOn(5);
    EXPECT_EQ(question(), kChannels);
    clickOn(8);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(handedOver, "t?_z??_c?.tif 2 8 2 2");
}

TEST_F(SequenceTiff, HandsOverATimeMajorList)
{
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    for (const int position : {1, 4, 8})
        clickOn(position);
    EXPECT_EQ(next.filesToLoad,
              (Lists{paths({"t1_z01_c1.tif", "t1_z02_c1.tif"}), paths({"t1_z01_c2.tif", "t1_z02_c2.tif"}),
                     paths({"t2_z01_c1.tif", "t2_z02_c1.tif"}), paths({"t2_z01_c2.tif", "t2_z02_c2.tif"})}));
    EXPECT_EQ(next.channels, 2);
    EXPECT_EQ(next.timePoints, 2);
    EXPECT_EQ(next.fileType, ImageType::TiffSeries);
    EXPECT_EQ(loads(), 0U);
    EXPECT_EQ(settings.stackPath, QFileInfo(path("t1_z01_c1.tif")).path());
    EXPECT_TRUE(log.contains("timepoint 2 channel 2"));
}

TEST_F(SequenceTiff, TwoGroupsNeedNoThirdQuestion)
{
    makeFiles({"t1_z1.tif", "t1_z2.tif", "t2_z1.tif", "t2_z2.tif", "t2_zx.tif"});
    form.setFilename(path("t1_z1.tif"), 0);
    clickOn(1);
    EXPECT_TRUE(form.isVisible());
    clickOn(4);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(handedOver, "t?_z?.tif 1 8 2 2");
    EXPECT_EQ(next.filesToLoad,
              (Lists{paths({"t1_z1.tif", "t1_z2.tif"}), paths({"t2_z1.tif", "t2_z2.tif"})}));
}

TEST_F(SequenceTiff, ANameWithoutDigitsIsOneFile)
{
    makeFiles({"stack.tif", "other.tif"});
    form.setFilename(path("stack.tif"), 0);
    for (const QString& next_question : {kTime, kSlices, kChannels}) {
        EXPECT_EQ(question(), next_question);
        click(form, "btnNone");
    }
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(handedOver, "stack.tif 1 8 1 1");
    EXPECT_EQ(next.filesToLoad, (Lists{paths({"stack.tif"})}));
}

TEST_F(SequenceTiff, NoneLeavesAFieldOut)
{
    makeFiles({"a1_z1.tif", "a1_z2.tif", "a2_z1.tif"});
    form.setFilename(path("a1_z1.tif"), 0);
    click(form, "btnNone");
    clickOn(4);
    EXPECT_EQ(question(), kChannels);
    click(form, "btnNone");
    // The digits that nothing was said of mean themselves.
    EXPECT_EQ(handedOver, "a1_z?.tif 1 8 2 1");
    EXPECT_EQ(next.filesToLoad, (Lists{paths({"a1_z1.tif", "a1_z2.tif"})}));
}

TEST_F(SequenceTiff, AClickBesideTheDigitsChangesNothing)
{
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    for (const int position : {0, 2, 3, 6, 7, 9, 12})
        clickOn(position);
    EXPECT_EQ(question(), kTime);
    // Far right of the name and below it.
    QTest::mouseClick(nameText().viewport(), Qt::LeftButton, {},
                      QPoint(nameText().viewport()->width() - 2, 8));
    QTest::mouseClick(nameText().viewport(), Qt::LeftButton, {},
                      QPoint(nameText().viewport()->width() / 2, nameText().viewport()->height() - 2));
    EXPECT_EQ(question(), kTime);
    form.selectField(1, 1);
    form.selectField(0, -5);
    form.selectField(0, 5000);
    EXPECT_EQ(question(), kTime);
}

TEST_F(SequenceTiff, WhatNumbersOneThingNumbersNoOther)
{
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    clickOn(1);
    clickOn(1);
    EXPECT_EQ(question(), kSlices);
    clickOn(4);
    clickOn(1);
    clickOn(5);
    EXPECT_EQ(question(), kChannels);
    EXPECT_TRUE(form.isVisible());
}

TEST_F(SequenceTiff, FreeDigitsAreGreenAndChosenOnesRed)
{
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    const auto isGreen = [](const QColor& colour) { return colour.green() > 0 && colour.red() == 0; };
    const auto isRed = [](const QColor& colour) { return colour.red() > 0 && colour.green() == 0; };
    for (const int position : {1, 4, 5, 8})
        EXPECT_TRUE(isGreen(colourAt(position))) << position;
    for (const int position : {0, 2, 3, 6, 9})
        EXPECT_FALSE(colourAt(position).isValid()) << position;
    clickOn(4);
    EXPECT_TRUE(isRed(colourAt(4)));
    EXPECT_TRUE(isRed(colourAt(5)));
    EXPECT_TRUE(isGreen(colourAt(1)));
    const auto& highlighter = *form.findChild<SequenceHighlighter*>();
    EXPECT_EQ(highlighter.fieldStarts(), (std::vector{1, 4, 8}));
    EXPECT_EQ(highlighter.fieldLengths(), (std::vector{1, 2, 1}));
    EXPECT_EQ(highlighter.fields(), (SequenceFields{1, -1, -1}));
}

TEST_F(SequenceTiff, WildcardsStandForTheChosenDigitsOnly)
{
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    EXPECT_EQ(form.wildcardTime("t1_z01_c1.tif"), "t1_z01_c1.tif");
    clickOn(1);
    clickOn(4);
    EXPECT_EQ(form.wildcardTime("t1_z01_c1.tif"), "t?_z01_c1.tif");
    EXPECT_EQ(form.wildcardSlice("t1_z01_c1.tif"), "t1_z??_c1.tif");
    EXPECT_EQ(form.wildcardChannel("t1_z01_c1.tif"), "t1_z01_c1.tif");
}

TEST_F(SequenceTiff, MoviesGetTheListsAlone)
{
    makeFiles({"t1.tif", "t2.tif"});
    Lists advanced;
    Lists movie;
    QObject::connect(&form, &SequenceTiffForm::advancedTiffs, &form,
                     [&](const Lists& all) { advanced = all; });
    QObject::connect(&form, &SequenceTiffForm::movieTiffs, &form, [&](const Lists& all) { movie = all; });
    form.setFilename(path("t1.tif"), 1);
    clickOn(1);
    EXPECT_EQ(advanced, (Lists{paths({"t1.tif"}), paths({"t2.tif"})}));
    EXPECT_EQ(movie, Lists());
    form.setFilename(path("t1.tif"), 2);
    clickOn(1);
    EXPECT_EQ(movie, advanced);
    EXPECT_EQ(handedOver, "");
    EXPECT_TRUE(next.filesToLoad.empty());
}

TEST_F(SequenceTiff, ItStartsAnewForAnotherName)
{
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    clickOn(1);
    form.setFilename(path("t2_z01_c1.tif"), 0);
    EXPECT_EQ(question(), kTime);
    EXPECT_EQ(form.findChild<SequenceHighlighter*>()->fields(), SequenceFields());
}

TEST_F(SequenceTiff, BlanksAndSignsInTheNameAreNoMatter)
{
    makeFiles({"my  stack (1) [a] & <b> t1.tif", "my  stack (1) [a] & <b> t2.tif"});
    form.setFilename(path("my  stack (1) [a] & <b> t1.tif"), 0);
    EXPECT_EQ(nameText().toPlainText(), "my  stack (1) [a] & <b> t1.tif");
    clickOn(25);
    click(form, "btnNone");
    click(form, "btnNone");
    EXPECT_EQ(next.filesToLoad,
              (Lists{paths({"my  stack (1) [a] & <b> t1.tif"}), paths({"my  stack (1) [a] & <b> t2.tif"})}));
}

TEST_F(SequenceTiff, FilesThatVanishedAreToldAndTheQuestionsComeAgain)
{
    makeFiles({"t1.tif"});
    form.setFilename(path("t1.tif"), 0);
    QFile::remove(path("t1.tif"));
    clickOn(1);
    EXPECT_EQ(seenBox(), (SeenBox{QMessageBox::Warning, "Load Tiff Sequence",
                                  "sequence tiff couldn't find any files!", true}));
    EXPECT_TRUE(log.warnings().contains("sequence tiff couldn't find any files!"));
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(question(), kTime);
    EXPECT_EQ(handedOver, "");
}

TEST_F(SequenceTiff, ATimePointThatLacksAChannelIsTold)
{
    makeFiles({"t1c1.tif", "t1c2.tif", "t2c1.tif"});
    form.setFilename(path("t1c1.tif"), 0);
    clickOn(1);
    click(form, "btnNone");
    clickOn(3);
    EXPECT_EQ(
        seenBox(),
        (SeenBox{QMessageBox::Warning, "Load Tiff Sequence",
                 "Sorry, but time point 2 has 1 channels, while time point 1 has 2.  Aborting!", true}));
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(handedOver, "");
}

TEST_F(SequenceTiff, TheKeyboardChoosesDigitsToo)
{
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    ASSERT_EQ(QApplication::focusWidget(), &nameText());
    EXPECT_TRUE(isUnderlined(1));
    QTest::keyClick(&nameText(), Qt::Key_Right);
    EXPECT_FALSE(isUnderlined(1));
    EXPECT_TRUE(isUnderlined(4));
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(&nameText(), Qt::Key_Right);
    EXPECT_TRUE(isUnderlined(8));
    QTest::keyClick(&nameText(), Qt::Key_Return);
    EXPECT_EQ(question(), kSlices);
    QTest::keyClick(&nameText(), Qt::Key_Left);
    QTest::keyClick(&nameText(), Qt::Key_Space);
    EXPECT_EQ(question(), kChannels);
    EXPECT_EQ(form.findChild<SequenceHighlighter*>()->fields(), (SequenceFields{2, 1, -1}));
    // From the name to the buttons.
    QTest::keyClick(&nameText(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "btnNone");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "btnCancel");
}

TEST_F(SequenceTiff, EscapeAndCancelLeaveTheLoadAlone)
{
    makeAll();
    form.setFilename(path("t1_z01_c1.tif"), 0);
    QTest::keyClick(&nameText(), Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    form.setFilename(path("t1_z01_c1.tif"), 0);
    click(form, "btnCancel");
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(handedOver, "");
}

TEST_F(SequenceTiff, TheProgramLeadsFromTheQuestionsToThePageOfTheSequence)
{
    makeFiles({"t1.tif", "t2.tif", "t3.tif"});
    auto* questions = static_cast<SequenceTiffForm*>(app().forms().create(FormId::SequenceTiff, false));
    questions->setFilename(path("t1.tif"), 0);
    questions->selectField(0, 1);
    settle();
    auto* open = static_cast<StackOpenForm*>(app().forms().form(FormId::Stack));
    EXPECT_EQ(open->objectName(), "StackOpen");
    EXPECT_TRUE(open->isVisible());
    EXPECT_EQ(label(*open, "lblPattern"), "<p align=\"center\">Filename pattern: t?.tif</p>");
    EXPECT_EQ(label(*open, "lblTimePoints"), "Time points: <b>3</b>");
    EXPECT_EQ(questions->objectName(), "Sequence Tiff");
    EXPECT_EQ(app().forms().form(FormId::ImportStack)->objectName(), "Import");
}

} // namespace
} // namespace tirn
