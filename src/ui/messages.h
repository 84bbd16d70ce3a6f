#pragma once

#include <QMessageBox>

namespace tirn {

/// A modal box with plain text over a form, or over the form's parent while that one is hidden. Comes back
/// at once; the box goes away by itself.
void showMessage(QWidget* form, QMessageBox::Icon icon, const QString& title, const QString& text);

/// The same for what comes back when the box was closed, since the program ends then or goes on asking.
void waitForMessage(QWidget* form, QMessageBox::Icon icon, const QString& title, const QString& text);

/// Waits for the answer to a question. True for yes; closing the box means no.
bool askQuestion(QWidget* form, const QString& title, const QString& text, const QString& yes,
                 const QString& no);

enum class Answer { Yes, No, Cancel };

/// The same with a third way out, which closing the box means.
Answer askWithCancel(QWidget* form, const QString& title, const QString& text, const QString& yes,
                     const QString& no);

} // namespace tirn
