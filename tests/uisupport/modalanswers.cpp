#include "uisupport/modalanswers.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTimer>
#include <gtest/gtest.h>

namespace tirn::test {

ModalAnswers::ModalAnswers() { qApp->installEventFilter(this); }

ModalAnswers::~ModalAnswers()
{
    if (qApp != nullptr)
        qApp->removeEventFilter(this);
}

void ModalAnswers::press(const QString& button)
{
    add([button](QDialog& dialog) {
        for (QAbstractButton* each : dialog.findChildren<QAbstractButton*>()) {
            if (each->text().remove('&') == button && each->isVisible() && each->isEnabled()) {
                each->click();
                return;
            }
        }
        ADD_FAILURE() << "no button " << button.toStdString();
        dialog.reject();
    });
}

void ModalAnswers::choose(const QString& fileName)
{
    add([fileName](QDialog& dialog) {
        auto* files = qobject_cast<QFileDialog*>(&dialog);
        ASSERT_NE(files, nullptr);
        files->findChild<QLineEdit*>("fileNameEdit")->setText(fileName);
        // Its own accept is protected from names that its model has not listed yet.
        QMetaObject::invokeMethod(files, "accept");
    });
}

bool ModalAnswers::eventFilter(QObject* watched, QEvent* event)
{
    auto* dialog = event->type() == QEvent::Show ? qobject_cast<QDialog*>(watched) : nullptr;
    if (dialog != nullptr && dialog->isModal()) {
        // After the dialog has come up and waits.
        QTimer::singleShot(0, dialog, [this, dialog] { answer(*dialog); });
    }
    return QObject::eventFilter(watched, event);
}

void ModalAnswers::answer(QDialog& dialog)
{
    QString text = dialog.windowTitle();
    if (const auto* box = qobject_cast<QMessageBox*>(&dialog))
        text += ": " + box->text();
    m_shown.append(text);
    if (m_answers.empty()) {
        dialog.reject();
        return;
    }
    const Answer next = std::move(m_answers.front());
    m_answers.pop_front();
    next(dialog);
}

} // namespace tirn::test
