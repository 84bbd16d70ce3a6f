#include "ui/main/helppages.h"

#include <QStandardPaths>

#include "base/log.h"
#include "ui/formplaces.h"

namespace tirn {

namespace {

constexpr int kMillisecondsToEnd = 500;

} // namespace

HelpPages::~HelpPages() { stopAssistant(); }

void HelpPages::open(const QString& page, QWidget* parent)
{
    logDebug("help page %s", qPrintable(m_directory + "/" + page));
    m_parent = parent;
    if (m_hasFailed || !startAssistant(page))
        showInWindow(page);
}

bool HelpPages::isAssistantRunning() const
{
    return m_assistant != nullptr && m_assistant->state() != QProcess::NotRunning;
}

bool HelpPages::startAssistant(const QString& page)
{
    const QString program = QStandardPaths::findExecutable("assistant");
    if (program.isEmpty())
        return false;
    stopAssistant();
    m_assistant = std::make_unique<QProcess>();
    m_assistant->setStandardOutputFile(QProcess::nullDevice());
    m_assistant->setStandardErrorFile(QProcess::nullDevice());
    QObject::connect(m_assistant.get(), &QProcess::errorOccurred, m_assistant.get(),
                     [this, page](QProcess::ProcessError error) {
                         if (error == QProcess::FailedToStart)
                             assistantFailed(page);
                     });
    QObject::connect(m_assistant.get(), qOverload<int, QProcess::ExitStatus>(&QProcess::finished),
                     m_assistant.get(), [this, page](int code, QProcess::ExitStatus status) {
                         if (code != 0 || status != QProcess::NormalExit)
                             assistantFailed(page);
                     });
    m_assistant->start(program, {"-profile", m_directory + "/tirn2.adp", m_directory + "/" + page});
    return true;
}

void HelpPages::stopAssistant()
{
    if (m_assistant == nullptr)
        return;
    // An end that we ask for is no failure.
    m_assistant->disconnect();
    m_assistant->terminate();
    if (!m_assistant->waitForFinished(kMillisecondsToEnd)) {
        m_assistant->kill();
        m_assistant->waitForFinished(kMillisecondsToEnd);
    }
    m_assistant.reset();
}

void HelpPages::assistantFailed(const QString& page)
{
    logDebug("The assistant does not show the page.");
    m_hasFailed = true;
    showInWindow(page);
}

void HelpPages::showInWindow(const QString& page)
{
    if (m_window == nullptr) {
        m_window = new HelpWindow(m_directory, m_parent);
        m_window->setAttribute(Qt::WA_DeleteOnClose);
        if (m_parent != nullptr)
            m_window->move(formPosition(m_parent->frameGeometry(), m_window->size(), screenOf(*m_parent),
                                        FormSide::Right));
    }
    m_window->showPage(page);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

} // namespace tirn
