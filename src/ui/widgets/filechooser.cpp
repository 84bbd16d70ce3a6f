#include "ui/widgets/filechooser.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

namespace tirn {

FileChooser::FileChooser(Mode mode, QWidget* parent)
    : QWidget(parent), m_mode(mode), m_line(new QLineEdit(this))
{
    m_line->setObjectName("txtFileName");
    auto* button = new QToolButton(this);
    button->setObjectName("btnBrowse");
    button->setText("...");
    button->setToolTip(mode == Mode::Directory ? tr("Choose a folder.") : tr("Choose a file."));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_line, 1);
    layout->addWidget(button);
    setFocusProxy(m_line);
    connect(m_line, &QLineEdit::editingFinished, this, [this] { Q_EMIT fileNameChanged(fileName()); });
    connect(button, &QToolButton::clicked, this, &FileChooser::browse);
}

QString FileChooser::fileName() const { return m_line->text(); }

void FileChooser::setFileName(const QString& name) { m_line->setText(name); }

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
