#pragma once

#include <mutex>

#include <QStringList>
#include <QtGlobal>

#include "support/qtprint.h"

namespace tirn::test {

/// Collects what the program logs while it lives, instead of printing it. One at a time.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// All texts so far, in order, and those of one level.
    QStringList lines() const;
    QStringList debugLines() const;
    QStringList warnings() const;

    bool contains(const QString& text) const { return lines().contains(text); }
    int count(const QString& text) const { return static_cast<int>(lines().count(text)); }
    void clear();

private:
    struct Line
    {
        QtMsgType type;
        QString text;
    };
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text);
    QStringList linesOf(QtMsgType type) const;

    mutable std::mutex m_mutex;
    QList<Line> m_lines;
    QtMessageHandler m_previous;
};

} // namespace tirn::test
