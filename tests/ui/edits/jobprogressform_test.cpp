#include "ui/edits/jobprogressform.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include "uisupport/dialogtest.h"

namespace tirn {
namespace {

class JobProgress : public test::DialogTest
{
protected:
    JobProgressForm form{"filterstuff", nullptr};
    QSignalSpy cancelled{&form, &JobProgressForm::cancelled};

    QString text() { return child<QLabel>(form, "lblText").text(); }
    QProgressBar& bar() { return child<QProgressBar>(form, "barProgress"); }
    QPushButton& button() { return child<QPushButton>(form, "btnCancel"); }
};

TEST_F(JobProgress, ShowsOnlyWhileAJobRuns)
{
    EXPECT_EQ(form.objectName(), "filterstuff");
    EXPECT_FALSE(form.isVisible());
    form.start("Event", "Mean filtering...");
    EXPECT_TRUE(form.isVisible());
    EXPECT_FALSE(form.isModal());
    EXPECT_EQ(form.windowTitle(), "Event");
    EXPECT_EQ(text(), "Mean filtering...");
    form.finish();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(cancelled.count(), 0);
}

TEST_F(JobProgress, Counts)
{
    form.start("Event", "a");
    form.setProgress("b", 50, 400);
    EXPECT_EQ(text(), "b");
    EXPECT_EQ(bar().value(), 50);
    EXPECT_EQ(bar().maximum(), 400);
    form.setProgress("", 100, -1);
    EXPECT_EQ(text(), "b");
    EXPECT_EQ(bar().value(), 100);
    EXPECT_EQ(bar().maximum(), 400);
    form.finish();
    form.start("Event", "c");
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(JobProgress, CancelAsksOnceAndStaysUntilTheJobHasEnded)
{
    form.start("Event", "a");
    QTest::mouseClick(&button(), Qt::LeftButton);
    EXPECT_EQ(cancelled.count(), 1);
    EXPECT_EQ(text(), "Cancelling...");
    EXPECT_FALSE(button().isEnabled());
    form.setProgress("b", 50, 400);
    EXPECT_EQ(text(), "Cancelling...");
    press(form, Qt::Key_Escape);
    EXPECT_EQ(cancelled.count(), 1);
    EXPECT_TRUE(form.isVisible());
    form.finish();
    EXPECT_FALSE(form.isVisible());
    form.start("Event", "c");
    EXPECT_TRUE(button().isEnabled());
}

TEST_F(JobProgress, EscapeAndTheWindowsCloseButtonCancel)
{
    form.start("Event", "a");
    press(form, Qt::Key_Escape);
    EXPECT_EQ(cancelled.count(), 1);
    EXPECT_TRUE(form.isVisible());
    form.finish();
    form.start("Event", "b");
    form.close();
    EXPECT_EQ(cancelled.count(), 2);
    EXPECT_TRUE(form.isVisible());
}

TEST_F(JobProgress, EnterDoesNotCancel)
{
    form.start("Event", "a");
    press(form, Qt::Key_Return);
    EXPECT_EQ(cancelled.count(), 0);
}

} // namespace
} // namespace tirn
