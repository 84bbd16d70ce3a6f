// Filters and exports, from the menu to the result.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QSpinBox>
#include <QStatusBar>

#include "glsupport/glrecorder.h"
#include "image/filters/extremafilters.h"
#include "support/picturecompare.h"
#include "ui/edits/jobprogressform.h"
#include "uisupport/apptest.h"
#include "uisupport/modalanswers.h"

namespace tirn::test {
namespace {

class Jobs : public AppTest
{
protected:
    void trigger(const char* action) { app().mainForm().action(action)->trigger(); }
    void finishJob()
    {
        app().jobs().filterThread().wait();
        app().jobs().saveThread().wait();
        settle();
    }
    void drawOn(Drawing drawing)
    {
        app().model().edit(Change::Settings | Change::Look,
                           [drawing](Scene& scene) { scene.settings.drawing = drawing; });
        settle();
        widget().renderThread().wait();
    }
    QByteArray voxels()
    {
        const ImageFile& image = *app().scene().current()->images().front();
        return {reinterpret_cast<const char*>(image.stackData()), static_cast<int>(image.sampleCount())};
    }
    bool progressShown(const char* name)
    {
        return app().mainForm().findChild<JobProgressForm*>(name)->isVisible();
    }
    QString message() { return app().mainForm().statusBar()->currentMessage(); }
};

TEST_F(Jobs, NeedAStack)
{
    for (const char* name : {"filterMeanAction", "flipXAction", "invertAction", "fileSaveCoreAction",
                             "editCopyAction", "printAction", "closeStackAction"}) {
        EXPECT_FALSE(app().mainForm().action(name)->isEnabled()) << name;
    }
    load({picFile("a.pic")});
    EXPECT_TRUE(app().mainForm().action("filterMeanAction")->isEnabled());
    app().closeStack();
    EXPECT_FALSE(app().mainForm().action("filterMeanAction")->isEnabled());
    app().jobs().filter(FilterOperation::Mean);
    app().jobs().exportStack(ExportMode::Core);
    EXPECT_FALSE(app().jobs().filterThread().isBusy());
}

TEST_F(Jobs, AFlipGoesThroughTheThread)
{
    load({picFile("a.pic")});
    const QByteArray before = voxels();
    const int frames = widget().renderThread().framesDrawn();
    trigger("flipXAction");
    EXPECT_TRUE(progressShown("filterstuff"));
    finishJob();
    EXPECT_FALSE(progressShown("filterstuff"));
    const QByteArray after = voxels();
    for (int i = 0; i < after.size(); ++i)
        ASSERT_EQ(after[i], before[i / 16 * 16 + 15 - i % 16]);
    EXPECT_GT(widget().renderThread().framesDrawn(), frames);
    EXPECT_TRUE(log.contains("Flipping on X"));
}

TEST_F(Jobs, AJobBuildsTheListOfWhatIsShownOnce)
{
    load({picFile("a.pic")});
    drawOn(Drawing::Card);
    GlRecorder gl(GlRecorder::Mode::Forward);
    trigger("invertAction");
    finishJob();
    EXPECT_EQ(gl.count("NewList"), 1);
    app().model().redraw();
    settle();
    EXPECT_EQ(gl.count("NewList"), 1);
}

TEST_F(Jobs, AJobIsSeenWhoeverDraws)
{
    load({picFile("a.pic")});
    drawOn(Drawing::Processor);
    const QImage before = widget().renderThread().grabNextFrame();
    trigger("invertAction");
    finishJob();
    const QImage processor = widget().renderThread().grabNextFrame();
    EXPECT_GT(largestDifference(processor, before), 50);
    drawOn(Drawing::Card);
    EXPECT_LE(largestDifference(processor, widget().renderThread().grabNextFrame()), 8);
}

TEST_F(Jobs, AFilterAsksForItsParametersFirst)
{
    load({picFile("a.pic")});
    ImageFile reference(QStringList(path("a.pic")));
    ASSERT_TRUE(reference.read());
    ASSERT_TRUE(maxFilter(reference, 5, -1, false));
    ModalAnswers answers;
    answers.add([](QDialog& dialog) {
        dialog.findChild<QSpinBox*>()->setValue(5);
        dialog.accept();
    });
    trigger("filterMaxAction");
    finishJob();
    EXPECT_EQ(answers.shown(), QStringList("Max filter"));
    EXPECT_EQ(voxels(), QByteArray(reinterpret_cast<const char*>(reference.stackData()),
                                   static_cast<int>(reference.sampleCount())));
}

TEST_F(Jobs, ADialogThatIsLeftChangesNothing)
{
    load({picFile("a.pic")});
    const QByteArray before = voxels();
    ModalAnswers answers;
    trigger("filterMeanAction");
    EXPECT_EQ(answers.shown(), QStringList("Mean filter"));
    EXPECT_FALSE(app().jobs().filterThread().isBusy());
    EXPECT_EQ(voxels(), before);
}

TEST_F(Jobs, AFilterIsUndoneAndDoneAgain)
{
    load({picFile("a.pic")});
    const QByteArray before = voxels();
    const QImage picture = widget().renderThread().grabNextFrame();
    ModalAnswers answers;
    answers.add([](QDialog& dialog) {
        dialog.findChild<QSpinBox*>()->setValue(5);
        dialog.accept();
    });
    trigger("filterMedianAction");
    finishJob();
    const QByteArray filtered = voxels();
    ASSERT_NE(filtered, before);
    QAction* undo = app().mainForm().action("editUndoAction");
    QAction* redo = app().mainForm().action("editRedoAction");
    EXPECT_EQ(undo->text(), "&Undo median 5");
    EXPECT_TRUE(undo->isEnabled());
    undo->trigger();
    finishJob();
    EXPECT_EQ(voxels(), before);
    EXPECT_EQ(widget().renderThread().grabNextFrame(), picture);
    EXPECT_FALSE(undo->isEnabled());
    EXPECT_EQ(redo->text(), "&Redo median 5");
    redo->trigger();
    finishJob();
    EXPECT_EQ(voxels(), filtered);
    undo->trigger();
    finishJob();
    EXPECT_EQ(voxels(), before);
}

TEST_F(Jobs, OnlyTheLastOfTheFiltersIsUndone)
{
    load({picFile("a.pic")});
    trigger("flipXAction");
    finishJob();
    const QByteArray flipped = voxels();
    trigger("invertAction");
    finishJob();
    QAction* undo = app().mainForm().action("editUndoAction");
    EXPECT_EQ(undo->text(), "&Undo inversion");
    undo->trigger();
    finishJob();
    EXPECT_EQ(voxels(), flipped);
    EXPECT_EQ(app().scene().current()->transforms(), (DataTransforms{true, false, false, false}));
    undo->trigger();
    finishJob();
    EXPECT_EQ(voxels(), flipped);
    EXPECT_EQ(message(), "The voxels before this filter are no longer kept.");
}

TEST_F(Jobs, AFilterIsNotUndoneWhileAnotherJobWorks)
{
    load({picFile("a.pic", 64, 64, 32)});
    trigger("flipXAction");
    finishJob();
    trigger("invertAction");
    trigger("editUndoAction");
    EXPECT_EQ(message(), "Another job is still at work on a stack.");
    EXPECT_TRUE(app().model().undoStack().canUndo());
    finishJob();
}

TEST_F(Jobs, AFilterOfAClosedStackIsForgotten)
{
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    trigger("invertAction");
    finishJob();
    app().closeStack();
    const QByteArray before = voxels();
    trigger("editUndoAction");
    finishJob();
    EXPECT_EQ(voxels(), before);
}

TEST_F(Jobs, OnlyOneWorksAtATime)
{
    load({picFile("a.pic", 64, 64, 32)});
    trigger("invertAction");
    trigger("flipXAction");
    EXPECT_EQ(message(), "Another job is still at work on a stack.");
    finishJob();
    EXPECT_FALSE(log.contains("Flipping on X"));
}

TEST_F(Jobs, ClosingTheStackEndsItsFilter)
{
    load({picFile("a.pic", 64, 64, 32)});
    trigger("invertAction");
    app().closeStack();
    settle();
    EXPECT_EQ(app().arrayCount(), 0);
    EXPECT_FALSE(app().jobs().filterThread().isBusy());
    EXPECT_FALSE(progressShown("filterstuff"));
}

TEST_F(Jobs, AnExportWritesWhatLiesInTheCutBox)
{
    load({picFile("a.pic")});
    {
        const std::scoped_lock lock(app().scene().mutex);
        app().scene().current()->cut = {2, 9, 1, 6, 3, 5};
    }
    ModalAnswers answers;
    answers.choose(path("core"));
    trigger("fileSaveCoreAction");
    finishJob();
    EXPECT_EQ(answers.shown(), QStringList("Export stack"));
    EXPECT_EQ(message(), "Written to core.pic in " + path(""));
    ImageFile written(QStringList(path("core.pic")));
    ASSERT_TRUE(written.read());
    EXPECT_EQ(written.attributes().x, 8);
    EXPECT_EQ(written.attributes().y, 6);
    EXPECT_EQ(written.attributes().z, 3);
    EXPECT_EQ(app().preferences().stackPath, QFileInfo(path("core.pic")).path());
    // The stack that is shown stays whole.
    EXPECT_EQ(app().scene().current()->width(), 16);
    EXPECT_EQ(voxels().size(), 16 * 12 * 8);
}

TEST_F(Jobs, AnExportThatFailsSaysWhy)
{
    load({picFile("a.pic")});
    ExportJob job = exportJob(*app().scene().current(), ExportMode::Core, path("no/such/folder.pic"));
    app().jobs().write(std::move(job));
    finishJob();
    EXPECT_TRUE(takeBox().startsWith("Export stack: "));
    EXPECT_FALSE(QFileInfo::exists(path("no")));
}

TEST_F(Jobs, TheWindowStaysOpenWhileAStackIsWritten)
{
    load({picFile("a.pic"), mapFile("red.map")});
    ExportJob job = exportJob(*app().scene().current(), ExportMode::Core, path("copy.pic"));
    // An image that has to be read again from a pipe, where the job waits.
    const QByteArray pipe = picFile("pipe.pic").toLocal8Bit();
    job.timePoints = {{std::make_shared<ImageFile>(QStringList(path("pipe.pic")))}};
    job.isOnDisk = true;
    ASSERT_TRUE(QFile::remove(path("pipe.pic")));
    ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);
    app().jobs().write(std::move(job));
    EXPECT_FALSE(app().mainForm().close());
    EXPECT_EQ(message(), "A stack is still being written.");
    app().jobs().filter(FilterOperation::FlipX);
    EXPECT_FALSE(app().jobs().filterThread().isBusy());
    // A pipe without data ends the job.
    const int writer = open(pipe.constData(), O_WRONLY);
    ASSERT_GE(writer, 0);
    close(writer);
    finishJob();
    EXPECT_TRUE(takeBox().startsWith("Export stack: "));
    EXPECT_FALSE(QFileInfo::exists(path("copy.pic")));
    EXPECT_TRUE(app().mainForm().close());
}

} // namespace
} // namespace tirn::test
