// What other threads report.

#include <QMessageBox>
#include <QStatusBar>

#include "app/tirnapplication.h"
#include "base/log.h"
#include "ui/jobprogressform.h"
#include "ui/managerform.h"

namespace tirn {

void TirnApplication::customEvent(QEvent* event)
{
    switch (static_cast<EventId>(event->type())) {
    case EventId::TimePoint:
        if (ManagerForm* manager = managerForm())
            manager->timePointChanged();
        return;
    case EventId::Rotation:
    case EventId::StatisticsDone:
        // For forms that follow the view; none is there yet.
        return;
    case EventId::Progress:
        handleProgress(static_cast<const ProgressEvent&>(*event));
        return;
    case EventId::StackLoaded: {
        auto& loaded = static_cast<StackLoadedEvent&>(*event);
        logDebug("Made it to stack Loaded!!!");
        addArray(std::move(loaded.array), loaded.filesToLoad, std::move(loaded.palettes));
        return;
    }
    case EventId::KeyFrame:
        Q_EMIT frameRecorded(static_cast<const KeyFrameEvent&>(*event).count);
        return;
    case EventId::Start:
        start();
        return;
    case EventId::ReencodeDone:
        handleReencodeDone(static_cast<const ReencodeDoneEvent&>(*event));
        return;
    case EventId::ImageProgress:
        handleImageProgress(static_cast<const ImageProgressEvent&>(*event));
        return;
    }
    showWarning("Unknown Event", "id " + QString::number(static_cast<int>(event->type())));
}

QProgressDialog& TirnApplication::progressDialog()
{
    if (m_progressDialog == nullptr) {
        m_progressDialog = new QProgressDialog("Loading...", "Cancel", 0, 0, m_mainForm.get());
        m_progressDialog->setObjectName("progress");
        m_progressDialog->setWindowTitle("Tirn");
        m_progressDialog->setAutoReset(true);
        m_progressDialog->setAutoClose(true);
        // Loads that take no time leave the dialog unseen.
        m_progressDialog->setMinimumDuration(400);
        connect(m_progressDialog, &QProgressDialog::canceled, this, &TirnApplication::stopLoading);
    }
    return *m_progressDialog;
}

void TirnApplication::showProgress(const QString& message, int value, int total)
{
    QProgressDialog& dialog = progressDialog();
    if (!message.isEmpty())
        dialog.setLabelText(message);
    if (total >= 0 && dialog.maximum() != total)
        dialog.setMaximum(total);
    if (dialog.value() != value)
        dialog.setValue(value);
}

void TirnApplication::handleProgress(const ProgressEvent& event)
{
    if (event.done) {
        if (m_progressDialog != nullptr)
            m_progressDialog->reset();
        if (!event.message.isEmpty())
            showWarning("File load error", event.message);
        return;
    }
    if (event.total == -1) {
        showProgress(event.message, event.progress + m_lastBaseProgress, -1);
        return;
    }
    m_lastBaseProgress = event.progress;
    showProgress(event.message, event.progress, event.total);
}

void TirnApplication::handleImageProgress(const ImageProgressEvent& event)
{
    // A job may have ended while what it said of its progress was still on the way.
    if (m_filterProgress->isVisible())
        m_filterProgress->setProgress(event.message, event.progress, event.total);
    else
        showProgress(event.message, event.progress, event.total);
}

void TirnApplication::showWarning(const QString& title, const QString& text)
{
    showBox(QMessageBox::Warning, title, text);
}

void TirnApplication::showBox(QMessageBox::Icon icon, const QString& title, const QString& text)
{
    auto* box = new QMessageBox(icon, title, text, QMessageBox::Ok, m_mainForm.get());
    // Names of files are no markup.
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace tirn
