// Jobs on the current stack: filters and exports.

#include <QFileInfo>
#include <QStatusBar>

#include "app/tirnapplication.h"
#include "ui/exportdialog.h"
#include "ui/filterdialogs.h"
#include "ui/jobprogressform.h"
#include "ui/managerform.h"

namespace tirn {

void TirnApplication::createJobThreads()
{
    m_filterProgress = new JobProgressForm("filterstuff", m_mainForm.get());
    m_exportProgress = new JobProgressForm("exportstuff", m_mainForm.get());
    JobReport exports;
    exports.progress = [this](const QString& message, int done, int total) {
        QMetaObject::invokeMethod(
            this, [this, message, done, total] { m_exportProgress->setProgress(message, done, total); },
            Qt::QueuedConnection);
    };
    exports.finished = [this](const JobResult& result) {
        QMetaObject::invokeMethod(
            this, [this, result] { exportFinished(result); }, Qt::QueuedConnection);
    };
    m_saveThread = std::make_unique<ExportThread>(std::move(exports));
    JobReport filters;
    filters.progress = [this](const QString& message, int done, int total) {
        postEvent(this, new ImageProgressEvent(message, done, total));
    };
    filters.finished = [this](const JobResult& result) {
        postEvent(this, new ReencodeDoneEvent(result.error));
    };
    m_filterThread = std::make_unique<FilterThread>(m_hidden->context(), m_renderLock, std::move(filters));
    connect(m_filterProgress, &JobProgressForm::cancelled, this, [this] { m_filterThread->cancel(); });
    connect(m_exportProgress, &JobProgressForm::cancelled, this, [this] { m_saveThread->cancel(); });
}

bool TirnApplication::canStartJob()
{
    if (m_scene.current() == nullptr || m_scene.batchMode)
        return false;
    if (!m_filterThread->isBusy() && !m_saveThread->isBusy())
        return true;
    m_mainForm->showNote("Another job is still at work on a stack.");
    return false;
}

void TirnApplication::filter(FilterOperation operation)
{
    if (!canStartJob())
        return;
    const auto parameters = askFilter(operation, m_scene.current()->channelCount(), m_mainForm.get());
    // While the dialog stood another job may have begun, or the stack been closed.
    if (!parameters || !canStartJob())
        return;
    m_filterProgress->start(kFilterCaption, progressText(operation));
    if (!m_filterThread->filter({m_scene.current(), *parameters}))
        m_filterProgress->finish();
}

void TirnApplication::exportStack(ExportMode mode)
{
    if (!canStartJob())
        return;
    std::optional<ExportJob> job =
        askExport(*m_scene.current(), mode, m_preferences.stackPath, m_mainForm.get());
    if (!job || !canStartJob())
        return;
    m_preferences.stackPath = QFileInfo(job->fileName).absolutePath();
    m_exportProgress->start("Export stack", "Writing " + QFileInfo(job->fileName).fileName());
    m_saveThread->save(std::move(*job));
}

void TirnApplication::exportFinished(const JobResult& result)
{
    m_exportProgress->finish();
    if (result.outcome == JobOutcome::Failed)
        showWarning("Export stack", result.error);
    else if (result.outcome == JobOutcome::Done)
        m_mainForm->showNote("The stack was written.");
}

void TirnApplication::handleReencodeDone(const ReencodeDoneEvent& event)
{
    m_filterProgress->finish();
    if (m_progressDialog != nullptr)
        m_progressDialog->reset();
    m_mainForm->statusBar()->clearMessage();
    if (ManagerForm* manager = managerForm())
        manager->stacksChanged();
    m_currentWidget->renderThread().forceRebuild = true;
    m_currentWidget->requestFrame();
    if (!event.message.isEmpty())
        showWarning(kFilterCaption, event.message);
}

/// A filter is cancelled, an export written to its end.
void TirnApplication::finishJobs()
{
    m_filterThread->stopAndWait();
    m_saveThread->wait();
}

} // namespace tirn
