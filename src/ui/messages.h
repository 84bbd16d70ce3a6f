#pragma once

#include <QMessageBox>

namespace tirn {

/// A modal box with plain text over a form, or over the form's parent while that one is hidden. Comes back
/// at once; the box goes away by itself.
void showMessage(QWidget* form, QMessageBox::Icon icon, const QString& title, const QString& text);

/// Waits for the answer to a question. True for yes; closing the box means no.
bool askQuestion(QWidget* form, const QString& title, const QString& text, const QString& yes,
                 const QString& no);

} // namespace tirn
