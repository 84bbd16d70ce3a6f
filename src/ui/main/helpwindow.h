#pragma once

#include <QTextBrowser>
#include <QWidget>

namespace tirn {

/// Shows help pages, with buttons that lead back, forth and to the contents.
class HelpWindow : public QWidget
{
    Q_OBJECT

public:
    /// `directory` holds the pages, "index.html" being the contents.
    HelpWindow(QString directory, QWidget* parent);

    /// Shows a page of the directory; a page that is not there is named in its place.
    void showPage(const QString& page);
    QTextBrowser& browser() { return *m_browser; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QString m_directory;
    QTextBrowser* m_browser;
};

} // namespace tirn
