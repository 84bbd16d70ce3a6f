#pragma once

#include <memory>

#include <QPointer>

#include "app/events.h"
#include "app/filtercommand.h"
#include "app/windowstage.h"
#include "threads/exportjob.h"
#include "threads/filterthread.h"
#include "ui/edits/jobprogressform.h"
#include "ui/formservices.h"
#include "ui/main/mainform.h"

namespace tirn {

/// Jobs on the voxels of stacks: filters, exports, and what forms ask for. One at a time, since an image has
/// no lock.
class Jobs : public QObject, public JobService, private FilterRuns
{
    Q_OBJECT

public:
    /// Reports of filters are posted to `receiver` as events.
    Jobs(SceneModel& model, MainForm& mainForm, Settings& settings, WindowStage& stage, QObject& receiver);
    ~Jobs() override { finish(); }

    bool runJob(const QString& caption, const QString& text, Job job,
                std::function<void(const JobResult&)> finished) override;
    /// Asks for the parameters of a filter and runs it on the current stack.
    void filter(FilterOperation operation);
    /// Asks for a name and writes the current stack.
    void exportStack(ExportMode mode);
    /// Writes it.
    void write(ExportJob job);
    /// Stacks that were filtered, flipped or inverted and not written since.
    std::vector<UnsavedThing> unsavedStacks();
    /// False, with a note, where a command of the undo stack has to wait for what is at work.
    bool mayUndo(const QUndoCommand* command);
    /// Ends what is at work: a filter is cancelled, everything else comes to its end.
    void finish();
    /// False, with the progress in front, while something is being written.
    bool mayClose();
    /// While a job works on voxels nobody else reads them.
    bool isBusy() const;
    FilterThread& filterThread() { return *m_filterThread; }
    JobThread& saveThread() { return *m_saveThread; }

    /// False when the progress is none of a filter's.
    bool handle(const ImageProgressEvent& event);
    void handle(const ReencodeDoneEvent& event);

private:
    /// With a stack and no other job; the status bar tells of that one.
    bool canStart();
    bool isFree();
    bool run(StackId stack, const FilterJobParameters& parameters);
    bool writeAndWait(StackId stack);
    void keepForUndo(std::shared_ptr<AppliedEdit> applied);
    void runAgain(FilterCommand& command) override;
    void takeBack(StackId stack, std::shared_ptr<AppliedEdit> applied) override;
    void forget(const FilterCommand& command) override;

    SceneModel& m_model;
    MainForm& m_mainForm;
    Settings& m_settings;
    QPointer<JobProgressForm> m_filterProgress;
    QPointer<JobProgressForm> m_saveProgress;
    /// Whom the job on the save thread belongs to.
    std::function<void(const JobResult&)> m_finished;
    /// The filter at work, and the command that it is run for again; null for a new one.
    StackId m_filtered = StackId::None;
    FilterJobParameters m_parameters;
    FilterCommand* m_repeated = nullptr;
    std::unique_ptr<FilterThread> m_filterThread;
    std::unique_ptr<JobThread> m_saveThread;
};

} // namespace tirn
