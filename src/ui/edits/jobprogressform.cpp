#include "ui/edits/jobprogressform.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tirn {

namespace {

/// Wide enough for the longest text of a job, in average characters.
constexpr int kWidthInCharacters = 44;

} // namespace

JobProgressForm::JobProgressForm(const QString& name, QWidget* parent)
    : QDialog(parent), m_text(new QLabel(this)), m_bar(new QProgressBar(this)), m_cancel(nullptr)
{
    setObjectName(name);
    m_text->setObjectName("lblText");
    m_text->setTextFormat(Qt::PlainText);
    m_bar->setObjectName("barProgress");
    m_bar->setMinimumWidth(kWidthInCharacters * fontMetrics().averageCharWidth());
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_cancel = buttons->button(QDialogButtonBox::Cancel);
    m_cancel->setObjectName("btnCancel");
    m_cancel->setText(tr("&Cancel"));
    // Enter must not end what takes long.
    m_cancel->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::rejected, this, &JobProgressForm::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(m_bar);
    layout->addWidget(buttons);
}

void JobProgressForm::start(const QString& caption, const QString& text)
{
    setWindowTitle(caption);
    m_text->setText(text);
    m_bar->setRange(0, 100);
    m_bar->setValue(0);
    m_cancel->setEnabled(true);
    show();
}

void JobProgressForm::setProgress(const QString& text, int value, int total)
{
    // What is said after Cancel was pressed stays.
    if (!text.isEmpty() && m_cancel->isEnabled())
        m_text->setText(text);
    if (total > 0 && total != m_bar->maximum())
        m_bar->setMaximum(total);
    m_bar->setValue(value);
}

void JobProgressForm::finish() { hide(); }

void JobProgressForm::reject()
{
    if (!m_cancel->isEnabled() || !isVisible())
        return;
    m_cancel->setEnabled(false);
    m_text->setText(tr("Cancelling..."));
    Q_EMIT cancelled();
}

} // namespace tirn
