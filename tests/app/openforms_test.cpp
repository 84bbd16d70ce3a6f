// From the menu through the forms to the volume that is shown.

#include <QAbstractButton>
#include <QCheckBox>
#include <QFileInfo>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

#include "support/picfile.h"
#include "support/tifffile.h"
#include "ui/open/importstackform.h"
#include "ui/open/sequencetiffform.h"
#include "ui/open/stackopenform.h"
#include "ui/widgets/filechooser.h"
#include "uisupport/apptest.h"
#include "uisupport/modalanswers.h"

namespace tirn {
namespace {

class OpenForms : public test::AppTest
{
protected:
    QWidget& form(FormId id) { return *app().forms().form(id); }
    template <class Widget>
    Widget& find(FormId id, const char* name)
    {
        return *form(id).findChild<Widget*>(name);
    }
    void choose(const char* action, const QString& file)
    {
        answers.choose(file);
        app().mainForm().action(action)->trigger();
        settle();
    }
    void open(FormId id)
    {
        QTest::mouseClick(&find<QAbstractButton>(id, "btnOpen"), Qt::LeftButton);
        waitForLoad();
    }
    void waitForLoad()
    {
        app().loads().fileThread().wait();
        settle();
    }
    const VoxelArray& array() { return *app().scene().arrays.back(); }
    /// x, y, z, channels and time points of the volume.
    std::vector<int> shape()
    {
        if (app().arrayCount() == 0)
            return {};
        const ImageAttributes& stack = array().stack();
        return {stack.x, stack.y, stack.z, array().channelCount(), array().timePointCount()};
    }

    test::ModalAnswers answers;
};

TEST_F(OpenForms, AStackComesFromTheMenu)
{
    choose("stackOpenAction", picFile("a.pic", 16, 12, 8));
    EXPECT_TRUE(form(FormId::Stack).isVisible());
    EXPECT_EQ(app().arrayCount(), 0);
    open(FormId::Stack);
    EXPECT_FALSE(form(FormId::Stack).isVisible());
    EXPECT_EQ(shape(), (std::vector{16, 12, 8, 1, 1}));
    EXPECT_EQ(app().preferences().stackPath, QFileInfo(path("a.pic")).path());
}

TEST_F(OpenForms, ADialogThatIsLeftOpensNothing)
{
    app().mainForm().action("stackOpenAction")->trigger();
    EXPECT_FALSE(form(FormId::Stack).isVisible());
    EXPECT_EQ(answers.shown(), QStringList{"Select first stack"});
}

TEST_F(OpenForms, AFileThatIsRefusedLeavesTheFormAsItWas)
{
    choose("stackOpenAction", picFile("a.pic", 16, 12, 8));
    choose("stackOpenAction", test::saveBytes(path("b.dat"), "nothing"));
    EXPECT_TRUE(form(FormId::Stack).isVisible());
    EXPECT_EQ(find<FileChooser>(FormId::Stack, "fchChannel1").fileName(), path("a.pic"));
    EXPECT_TRUE(answers.shown().last().startsWith("Unknown file type: " + path("b.dat")));
}

TEST_F(OpenForms, ATimeSeriesStandsBesideItsReference)
{
    for (const char* name : {"a_t1.pic", "a_t2.pic", "a_t3.pic", "still.pic"})
        picFile(name, 16, 12, 8);
    choose("stackOpenAction", path("still.pic"));
    auto& stack = static_cast<StackOpenForm&>(form(FormId::Stack));
    stack.setNumberOfChannels(2);
    // Rows that went are gone for good.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    find<FileChooser>(FormId::Stack, "fchChannel1").setFileName(path("a_t?.pic"));
    find<FileChooser>(FormId::Stack, "fchChannel2").setFileName(path("still.pic"));
    find<QCheckBox>(FormId::Stack, "chkTimeSeries").setChecked(true);
    answers.press("Yes");
    open(FormId::Stack);
    EXPECT_EQ(shape(), (std::vector{16, 12, 8, 2, 3}));
}

TEST_F(OpenForms, ThePartThatWasChosenIsLoaded)
{
    choose("stackOpenAction", picFile("a.pic", 16, 12, 8));
    QTest::mouseClick(&find<QAbstractButton>(FormId::Stack, "btnDetails"), Qt::LeftButton);
    find<QSpinBox>(FormId::Stack, "spnFirst").setValue(2);
    find<QSpinBox>(FormId::Stack, "spnLast").setValue(5);
    open(FormId::Stack);
    EXPECT_EQ(shape(), (std::vector{16, 12, 4, 1, 1}));
}

TEST_F(OpenForms, ARawStackIsAskedForAndDescribed)
{
    choose("importStackAction", test::saveBytes(path("a.raw"), QByteArray(7 + 10 * 4 * 5 * 2, 'x')));
    EXPECT_TRUE(form(FormId::ImportStack).isVisible());
    EXPECT_EQ(answers.shown(), QStringList{"Choose a file to open"});
    for (const auto& [name, number] :
         {std::pair{"spnX", 10}, {"spnY", 4}, {"spnZ", 5}, {"spnCh", 2}, {"spnOffset", 7}})
        find<QSpinBox>(FormId::ImportStack, name).setValue(number);
    open(FormId::ImportStack);
    EXPECT_EQ(shape(), (std::vector{10, 4, 5, 2, 1}));
}

TEST_F(OpenForms, ARecentRawStackComesBackWithItsLayout)
{
    choose("importStackAction", test::saveBytes(path("a.raw"), QByteArray(7 + 10 * 4 * 5 * 2, 'x')));
    for (const auto& [name, number] :
         {std::pair{"spnX", 10}, {"spnY", 4}, {"spnZ", 5}, {"spnCh", 2}, {"spnOffset", 7}})
        find<QSpinBox>(FormId::ImportStack, name).setValue(number);
    open(FormId::ImportStack);
    ASSERT_EQ(app().arrayCount(), 1);
    // Through the end of the program, too, which asks about no palette then.
    app().closeAll();
    app().mainForm().close();
    restart();
    app().mainForm().findChild<QMenu*>("recentStacksMenu")->actions().first()->trigger();
    waitForLoad();
    EXPECT_EQ(shape(), (std::vector{10, 4, 5, 2, 1}));
}

TEST_F(OpenForms, ASequenceIsAskedAboutAndLoaded)
{
    for (const char* name : {"t1z1c1", "t1z2c1", "t1z1c2", "t1z2c2", "t2z1c1", "t2z2c1", "t2z1c2", "t2z2c2"})
        test::TiffFile{{test::TiffPage{.x = 8, .y = 6}}}.save(path(QString(name) + ".tif"));
    choose("sequenceTiffAction", path("t1z1c1.tif"));
    auto& questions = static_cast<SequenceTiffForm&>(form(FormId::SequenceTiff));
    EXPECT_TRUE(questions.isVisible());
    for (const int position : {1, 3, 5})
        questions.selectField(0, position);
    settle();
    EXPECT_FALSE(questions.isVisible());
    EXPECT_TRUE(form(FormId::Stack).isVisible());
    open(FormId::Stack);
    EXPECT_EQ(shape(), (std::vector{8, 6, 2, 2, 2}));
    // An element for each channel of each time point comes back from the list of recent stacks.
    app().closeAll();
    Q_EMIT app().mainForm().loadRecentStack({{path("t1z1c1.tif"), path("t1z2c1.tif")},
                                             {path("t1z1c2.tif"), path("t1z2c2.tif")},
                                             {path("t2z1c1.tif"), path("t2z2c1.tif")},
                                             {path("t2z1c2.tif"), path("t2z2c2.tif")}},
                                            2, 2);
    waitForLoad();
    EXPECT_EQ(shape(), (std::vector{8, 6, 2, 2, 2}));
}

TEST_F(OpenForms, AStackAfterASequenceThatWasLeftIsNoSequence)
{
    test::TiffFile{{test::TiffPage{.x = 8, .y = 6}}}.save(path("t1.tif"));
    choose("sequenceTiffAction", path("t1.tif"));
    static_cast<SequenceTiffForm&>(form(FormId::SequenceTiff)).selectField(0, 1);
    QTest::keyClick(&form(FormId::Stack), Qt::Key_Escape);
    EXPECT_EQ(app().arrayCount(), 0);
    choose("stackOpenAction", picFile("a.pic", 16, 12, 8));
    open(FormId::Stack);
    EXPECT_EQ(shape(), (std::vector{16, 12, 8, 1, 1}));
}

} // namespace
} // namespace tirn
