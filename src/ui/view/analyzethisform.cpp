#include "ui/view/analyzethisform.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "gl/cardreport.h"

namespace tirn {

namespace {

constexpr int kColumns = 64;
constexpr int kLines = 16;

} // namespace

AnalyzeThisForm::AnalyzeThisForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, {}, parent), m_text(new QPlainTextEdit(this))
{
    setWindowTitle(tr("Analyze Video Card Capabilities"));
    m_text->setObjectName("txtReport");
    m_text->setReadOnly(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    auto* copyButton = buttons->addButton(tr("&Copy"), QDialogButtonBox::ActionRole);
    copyButton->setObjectName("btnCopy");
    copyButton->setAutoDefault(false);
    connect(copyButton, &QPushButton::clicked, this, &AnalyzeThisForm::copy);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(buttons);
    const QFontMetrics metrics = m_text->fontMetrics();
    m_text->setMinimumSize(kColumns * metrics.averageCharWidth(), kLines * metrics.lineSpacing());
}

void AnalyzeThisForm::refresh(Changes /*changes*/) { analyze(); }

void AnalyzeThisForm::analyze()
{
    m_text->setPlainText(cardReport(services().card) + "\n" + requirementsReport(services().card));
}

void AnalyzeThisForm::copy() { QApplication::clipboard()->setText(m_text->toPlainText()); }

} // namespace tirn
