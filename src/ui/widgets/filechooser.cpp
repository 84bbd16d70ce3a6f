#include "ui/widgets/filechooser.h"

#include <QFileDialog>
#include <QFocusEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>

namespace tirn {

FileChooser::FileChooser(Mode mode, QWidget* parent)
    : QWidget(parent), m_mode(mode), m_line(new QLineEdit(this)), m_button(new QToolButton(this))
{
    m_line->setObjectName("txtFileName");
    m_button->setObjectName("btnBrowse");
    m_button->setText("...");
    m_button->setToolTip(mode == Mode::Directory ? tr("Choose a folder.") : tr("Choose a file."));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_line, 1);
    layout->addWidget(m_button);
    // Not a proxy, which would be a stop of the tab key beside the line itself.
    setFocusPolicy(Qt::ClickFocus);
    connect(m_line, &QLineEdit::textEdited, this, &FileChooser::fileNameChanged);
    connect(m_button, &QToolButton::clicked, this, &FileChooser::browse);
}

QString FileChooser::fileName() const { return m_line->text(); }

void FileChooser::setFileName(const QString& name) { m_line->setText(name); }

void FileChooser::focusInEvent(QFocusEvent* event) { m_line->setFocus(event->reason()); }

void FileChooser::keyPressEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    if (m_button->hasFocus())
        browse();
}

void FileChooser::browse()
{
    const QString start = fileName().isEmpty() ? m_pathHint : fileName();
    QString chosen;
    if (m_mode == Mode::Directory)
        chosen = QFileDialog::getExistingDirectory(this, m_title, start);
    else if (m_mode == Mode::SaveFile)
        chosen = QFileDialog::getSaveFileName(this, m_title, start, m_filter, nullptr,
                                              QFileDialog::DontConfirmOverwrite);
    else
        chosen = QFileDialog::getOpenFileName(this, m_title, start, m_filter);
    if (chosen.isEmpty())
        return;
    setFileName(chosen);
    Q_EMIT fileNameChanged(chosen);
}

} // namespace tirn
