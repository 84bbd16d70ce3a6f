#include "support/logcapture.h"

namespace tirn::test {

namespace {
LogCapture* active = nullptr;
}

LogCapture::LogCapture()
{
    active = this;
    m_previous = qInstallMessageHandler(&LogCapture::handle);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    active = nullptr;
}

void LogCapture::handle(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    const std::scoped_lock lock(active->m_mutex);
    active->m_lines.append({type, text});
}

QStringList LogCapture::lines() const
{
    const std::scoped_lock lock(m_mutex);
    QStringList texts;
    for (const Line& line : m_lines)
        texts.append(line.text);
    return texts;
}

QStringList LogCapture::linesOf(QtMsgType type) const
{
    const std::scoped_lock lock(m_mutex);
    QStringList texts;
    for (const Line& line : m_lines) {
        if (line.type == type)
            texts.append(line.text);
    }
    return texts;
}

QStringList LogCapture::debugLines() const { return linesOf(QtDebugMsg); }

QStringList LogCapture::warnings() const { return linesOf(QtWarningMsg); }

void LogCapture::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_lines.clear();
}

} // namespace tirn::test
