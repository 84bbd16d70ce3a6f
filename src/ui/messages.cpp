#include "ui/messages.h"

#include <QPushButton>

namespace tirn {

namespace {

QWidget* visibleOwner(QWidget* form)
{
    return form != nullptr && !form->isVisible() ? form->parentWidget() : form;
}

/// Names of files are no markup.
void makePlain(QMessageBox& box) { box.setTextFormat(Qt::PlainText); }

} // namespace

void showMessage(QWidget* form, QMessageBox::Icon icon, const QString& title, const QString& text)
{
    auto* box = new QMessageBox(icon, title, text, QMessageBox::Ok, visibleOwner(form));
    makePlain(*box);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void waitForMessage(QWidget* form, QMessageBox::Icon icon, const QString& title, const QString& text)
{
    QMessageBox box(icon, title, text, QMessageBox::Ok, visibleOwner(form));
    makePlain(box);
    box.exec();
}

bool askQuestion(QWidget* form, const QString& title, const QString& text, const QString& yes,
                 const QString& no)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::NoButton, visibleOwner(form));
    makePlain(box);
    const QPushButton* accept = box.addButton(yes, QMessageBox::YesRole);
    box.setEscapeButton(box.addButton(no, QMessageBox::NoRole));
    box.exec();
    return box.clickedButton() == accept;
}

Answer askWithCancel(QWidget* form, const QString& title, const QString& text, const QString& yes,
                     const QString& no)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::NoButton, visibleOwner(form));
    makePlain(box);
    const QPushButton* accept = box.addButton(yes, QMessageBox::YesRole);
    const QPushButton* refuse = box.addButton(no, QMessageBox::NoRole);
    box.setEscapeButton(box.addButton(QObject::tr("Cancel"), QMessageBox::RejectRole));
    box.exec();
    if (box.clickedButton() == accept)
        return Answer::Yes;
    return box.clickedButton() == refuse ? Answer::No : Answer::Cancel;
}

} // namespace tirn
