#include "ui/messages.h"

#include <QPushButton>

namespace tirn {

namespace {

QWidget* visibleOwner(QWidget* form)
{
    return form != nullptr && !form->isVisible() ? form->parentWidget() : form;
}

} // namespace

void showMessage(QWidget* form, QMessageBox::Icon icon, const QString& title, const QString& text)
{
    auto* box = new QMessageBox(icon, title, text, QMessageBox::Ok, visibleOwner(form));
    // Names of files are no markup.
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

bool askQuestion(QWidget* form, const QString& title, const QString& text, const QString& yes,
                 const QString& no)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::NoButton, visibleOwner(form));
    box.setTextFormat(Qt::PlainText);
    const QPushButton* accept = box.addButton(yes, QMessageBox::YesRole);
    box.setEscapeButton(box.addButton(no, QMessageBox::NoRole));
    box.exec();
    return box.clickedButton() == accept;
}

} // namespace tirn
