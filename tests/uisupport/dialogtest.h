#pragma once

#include <deque>

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "support/logcapture.h"

namespace tirn::test {

/// What a user does in the modal dialogs that come up, one after the other.
class DialogScript : public QObject
{
public:
    using Step = std::function<void(QDialog&)>;

    DialogScript() { qApp->installEventFilter(this); }
    void then(Step step) { m_steps.push_back(std::move(step)); }
    /// Types a path into a file dialog and accepts it.
    void chooseFile(const QString& path)
    {
        then([path](QDialog& dialog) {
            auto* line = dialog.findChild<QLineEdit*>("fileNameEdit");
            ASSERT_NE(line, nullptr);
            line->setText(path);
            QTest::keyClick(line, Qt::Key_Return);
        });
    }
    bool isDone() const { return m_steps.empty(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* dialog = qobject_cast<QDialog*>(watched);
        if (event->type() == QEvent::Show && dialog != nullptr && dialog->isModal()) {
            // Once its loop runs.
            QTimer::singleShot(0, dialog, [this, dialog] {
                if (m_steps.empty()) {
                    ADD_FAILURE() << "unexpected dialog " << dialog->windowTitle().toStdString();
                    dialog->reject();
                    return;
                }
                const Step step = std::move(m_steps.front());
                m_steps.pop_front();
                dialog->activateWindow();
                EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
                step(*dialog);
            });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::deque<Step> m_steps;
};

/// An application with a script, and a directory for files.
class DialogTest : public ::testing::Test
{
private:
    int m_argc = 1;
    char m_name[5] = "tirn";
    char* m_argv[2] = {m_name, nullptr};
    /// The dialogs of a desktop cannot be driven.
    bool m_isPlain = (QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs), true);
    QApplication m_application{m_argc, m_argv};

protected:
    DialogTest() { EXPECT_TRUE(m_isPlain); }
    ~DialogTest() override { EXPECT_TRUE(script.isDone()); }

    LogCapture log;
    QTemporaryDir directory;
    DialogScript script;
    QString path(const QString& name) const { return directory.filePath(name); }

    template <class Widget>
    static Widget& child(QWidget& parent, const char* name)
    {
        auto* widget = parent.findChild<Widget*>(name);
        if (widget == nullptr)
            throw std::runtime_error(name);
        return *widget;
    }
    static void press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&widget, key, modifiers);
    }
    /// Puts a text in place of what stands in an editor.
    static void type(QWidget& editor, const QString& text)
    {
        press(editor, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(&editor, text);
    }
};

} // namespace tirn::test
