#pragma once

#include <memory>

#include <QPointer>
#include <QProcess>
#include <QString>

#include "ui/main/helpwindow.h"

namespace tirn {

/// Opens help pages: with the toolkit's assistant where it is installed and knows what to do with our
/// profile, otherwise in a window of our own.
///
/// Only the end of the assistant tells that it could not show the page, so that our window may come a little
/// later.
class HelpPages
{
public:
    /// `directory` holds the pages and the profile "tirn2.adp".
    explicit HelpPages(QString directory) : m_directory(std::move(directory)) {}
    ~HelpPages();
    HelpPages(const HelpPages&) = delete;
    HelpPages& operator=(const HelpPages&) = delete;

    /// Shows a page of the directory. A window of our own belongs to `parent`, and there is one for all
    /// pages.
    void open(const QString& page, QWidget* parent);
    /// The window of our own, null while there is none.
    HelpWindow* window() const { return m_window; }
    bool isAssistantRunning() const;

private:
    bool startAssistant(const QString& page);
    void stopAssistant();
    void assistantFailed(const QString& page);
    void showInWindow(const QString& page);

    QString m_directory;
    QPointer<QWidget> m_parent;
    QPointer<HelpWindow> m_window;
    std::unique_ptr<QProcess> m_assistant;
    /// An assistant that failed once is not asked again.
    bool m_hasFailed = false;
};

} // namespace tirn
