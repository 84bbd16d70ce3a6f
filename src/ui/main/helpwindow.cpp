#include "ui/main/helpwindow.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>

namespace tirn {

HelpWindow::HelpWindow(QString directory, QWidget* parent)
    : QWidget(parent, Qt::Window), m_directory(std::move(directory)), m_browser(new QTextBrowser(this))
{
    setObjectName("Help");
    setWindowTitle(tr("Tirn Help"));
    m_browser->document()->setDocumentMargin(12);
    auto* bar = new QToolBar(this);
    QAction* back = bar->addAction(tr("Back"), m_browser, &QTextBrowser::backward);
    QAction* forward = bar->addAction(tr("Forward"), m_browser, &QTextBrowser::forward);
    bar->addAction(tr("Contents"), this, [this] { showPage("index.html"); });
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
    back->setEnabled(false);
    forward->setEnabled(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(m_browser);
    resize(600, 640);
}

void HelpWindow::showPage(const QString& page)
{
    const QString path = m_directory + "/" + page;
    m_browser->setSource(QUrl::fromLocalFile(path));
    if (!QFileInfo::exists(path))
        m_browser->setPlainText(tr("The help page %1 is missing.").arg(path));
}

void HelpWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

} // namespace tirn
