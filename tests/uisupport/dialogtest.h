#pragma once

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include "support/logcapture.h"
#include "uisupport/modalanswers.h"

namespace tirn::test {

/// What a user does in the modal dialogs that come up, one after the other, once each has the keyboard.
class DialogScript : public ModalAnswers
{
public:
    void then(const Answer& step)
    {
        add([step](QDialog& dialog) {
            dialog.activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
            step(dialog);
        });
    }
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
    ~DialogTest() override { EXPECT_TRUE(script.allAsked()); }

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
