#include "app/jobs.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QStatusBar>

#include "ui/edits/exportdialog.h"
#include "ui/edits/filterdialogs.h"
#include "ui/messages.h"

namespace tirn {

namespace {

/// Where a stack was written, and under which names.
QString writtenText(const ExportJob& job)
{
    QStringList names;
    for (const QStringList& ofTimePoint :
         exportFileNames(job.fileName, static_cast<int>(job.timePoints.size()), job.channels()))
        names.append(ofTimePoint);
    const QString folder = QFileInfo(names.first()).absolutePath();
    const auto plain = [](const QString& name) { return QFileInfo(name).fileName(); };
    if (names.size() == 1)
        return MainForm::tr("Written to %1 in %2").arg(plain(names.first()), folder);
    return MainForm::tr("Written to %1 files, %2 to %3, in %4")
        .arg(names.size())
        .arg(plain(names.first()), plain(names.last()), folder);
}

} // namespace

Jobs::Jobs(SceneModel& model, MainForm& mainForm, Settings& settings, WindowStage& stage, QObject& receiver)
    : m_model(model), m_mainForm(mainForm), m_settings(settings),
      m_filterProgress(new JobProgressForm("filterstuff", &mainForm)),
      m_saveProgress(new JobProgressForm("exportstuff", &mainForm))
{
    JobReport filters;
    filters.progress = [&receiver](const QString& message, int done, int total) {
        QCoreApplication::postEvent(&receiver, new ImageProgressEvent(message, done, total));
    };
    filters.finished = [&receiver](const JobResult& result) {
        QCoreApplication::postEvent(&receiver, new ReencodeDoneEvent(result.error));
    };
    m_filterThread =
        std::make_unique<FilterThread>(stage.hidden().context(), stage.renderLock(), std::move(filters));
    JobReport others;
    others.progress = [this](const QString& message, int done, int total) {
        QMetaObject::invokeMethod(
            this, [this, message, done, total] { m_saveProgress->setProgress(message, done, total); },
            Qt::QueuedConnection);
    };
    others.finished = [this](const JobResult& result) {
        const auto tell = [this, result] {
            m_saveProgress->finish();
            // What is called may start the next job.
            if (const auto finished = std::exchange(m_finished, nullptr))
                finished(result);
        };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
    };
    m_saveThread = std::make_unique<JobThread>(std::move(others));
    connect(m_filterProgress, &JobProgressForm::cancelled, this, [this] { m_filterThread->cancel(); });
    connect(m_saveProgress, &JobProgressForm::cancelled, this, [this] { m_saveThread->cancel(); });
}

bool Jobs::isBusy() const { return m_filterThread->isBusy() || m_saveThread->isBusy(); }

bool Jobs::canStart()
{
    return m_model.scene().current() != nullptr && !m_model.scene().batchMode && isFree();
}

bool Jobs::isFree()
{
    if (!isBusy())
        return true;
    m_mainForm.showNote("Another job is still at work on a stack.");
    return false;
}

bool Jobs::runJob(const QString& caption, const QString& text, Job job,
                  std::function<void(const JobResult&)> finished)
{
    if (!canStart())
        return false;
    m_finished = std::move(finished);
    m_saveProgress->start(caption, text);
    return m_saveThread->startJob(std::move(job));
}

void Jobs::filter(FilterOperation operation)
{
    if (!canStart())
        return;
    const auto parameters = askFilter(operation, m_model.scene().current()->channelCount(), &m_mainForm);
    // While the dialog stood another job may have begun, or the stack been closed.
    if (!parameters || !canStart())
        return;
    run(m_model.scene().currentId(), *parameters);
}

bool Jobs::run(StackId stack, const FilterJobParameters& parameters)
{
    m_filtered = stack;
    m_parameters = parameters;
    m_filterProgress->start(kFilterCaption, progressText(parameters.operation));
    if (m_filterThread->filter({m_model.scene().find(stack), parameters}))
        return true;
    m_filterProgress->finish();
    return false;
}

std::vector<UnsavedThing> Jobs::unsavedStacks()
{
    // What was done and not undone stands below the index.
    QUndoStack& undo = m_model.undoStack();
    std::vector<UnsavedThing> things;
    for (const auto& array : m_model.scene().arrays) {
        QStringList edits;
        for (int i = 0; i < undo.index(); ++i) {
            const auto* command = dynamic_cast<const FilterCommand*>(undo.command(i));
            if (command != nullptr && command->stack() == array->id())
                edits.append(command->text());
        }
        if (!edits.isEmpty())
            things.push_back({MainForm::tr("stack %1 (%2)").arg(array->name(), edits.join(", ")),
                              [this, id = array->id()] { return writeAndWait(id); }});
    }
    return things;
}

/// With its progress in front. False where it was not written.
bool Jobs::writeAndWait(StackId stack)
{
    const VoxelArray* array = m_model.scene().find(stack);
    if (array == nullptr || !isFree())
        return false;
    std::optional<ExportJob> job =
        askExport(*array, ExportMode::AllChanges, m_settings.stackPath, &m_mainForm);
    if (!job)
        return false;
    QEventLoop loop;
    bool isWritten = false;
    const auto run = [job = std::move(*job)](const Progress& progress) {
        return runExportJob(job, progress);
    };
    const auto finished = [&](const JobResult& result) {
        isWritten = result.outcome == JobOutcome::Done;
        if (result.outcome == JobOutcome::Failed)
            waitForMessage(&m_mainForm, QMessageBox::Warning, "Export stack", result.error);
        loop.quit();
    };
    if (runJob("Export stack", "Writing " + array->name(), run, finished))
        loop.exec();
    return isWritten;
}

bool Jobs::mayUndo(const QUndoCommand* command)
{
    return dynamic_cast<const FilterCommand*>(command) == nullptr || isFree();
}

/// A new filter comes to the undo stack; what the ones before it kept is let go.
void Jobs::keepForUndo(std::shared_ptr<AppliedEdit> applied)
{
    if (FilterCommand* command = std::exchange(m_repeated, nullptr)) {
        command->setApplied(std::move(applied));
        return;
    }
    QUndoStack& undo = m_model.undoStack();
    for (int i = 0; i < undo.count(); ++i) {
        if (auto* earlier = dynamic_cast<FilterCommand*>(const_cast<QUndoCommand*>(undo.command(i))))
            earlier->setApplied(nullptr);
    }
    undo.push(new FilterCommand(*this, m_filtered, m_parameters, std::move(applied)));
}

void Jobs::runAgain(FilterCommand& command)
{
    if (m_model.scene().find(command.stack()) != nullptr && run(command.stack(), command.parameters()))
        m_repeated = &command;
}

void Jobs::takeBack(StackId stack, std::shared_ptr<AppliedEdit> applied)
{
    if (m_model.scene().find(stack) == nullptr)
        return;
    if (applied == nullptr) {
        m_mainForm.showNote(MainForm::tr("The voxels before this filter are no longer kept."));
        return;
    }
    m_filterProgress->start(kFilterCaption, MainForm::tr("Bringing the former voxels back..."));
    if (!m_filterThread->takeBack(std::move(applied)))
        m_filterProgress->finish();
}

void Jobs::forget(const FilterCommand& command)
{
    if (m_repeated == &command)
        m_repeated = nullptr;
}

void Jobs::exportStack(ExportMode mode)
{
    if (!canStart())
        return;
    std::optional<ExportJob> job =
        askExport(*m_model.scene().current(), mode, m_settings.stackPath, &m_mainForm);
    if (job)
        write(std::move(*job));
}

void Jobs::write(ExportJob job)
{
    m_settings.stackPath = QFileInfo(job.fileName).absolutePath();
    const QString text = "Writing " + QFileInfo(job.fileName).fileName();
    const QString written = writtenText(job);
    const auto run = [job = std::move(job)](const Progress& progress) { return runExportJob(job, progress); };
    runJob("Export stack", text, run, [this, written](const JobResult& result) {
        if (result.outcome == JobOutcome::Failed)
            showMessage(&m_mainForm, QMessageBox::Warning, "Export stack", result.error);
        else if (result.outcome == JobOutcome::Done)
            m_mainForm.showNote(written);
    });
}

bool Jobs::handle(const ImageProgressEvent& event)
{
    // A job may have ended while what it said of its progress was still on the way.
    if (!m_filterProgress->isVisible())
        return false;
    m_filterProgress->setProgress(event.message, event.progress, event.total);
    return true;
}

void Jobs::handle(const ReencodeDoneEvent& event)
{
    m_filterProgress->finish();
    m_mainForm.statusBar()->clearMessage();
    m_model.follow(Change::Voxels);
    m_model.redraw();
    if (auto applied = m_filterThread->takeApplied())
        keepForUndo(std::move(applied));
    m_repeated = nullptr;
    if (!event.message.isEmpty())
        showMessage(&m_mainForm, QMessageBox::Warning, kFilterCaption, event.message);
}

void Jobs::finish()
{
    m_filterThread->stopAndWait();
    m_saveThread->wait();
}

bool Jobs::mayClose()
{
    if (!m_saveThread->isBusy())
        return true;
    m_mainForm.statusBar()->showMessage("A stack is still being written.");
    m_saveProgress->raise();
    m_saveProgress->activateWindow();
    return false;
}

} // namespace tirn
