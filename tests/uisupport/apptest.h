#pragma once

#include <functional>
#include <memory>

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "app/tirnapplication.h"
#include "support/logcapture.h"
#include "support/plainstack.h"

namespace tirn::test {

/// Starts the program without arguments, in a configuration directory of its own, and ends it.
class AppTest : public ::testing::Test
{
protected:
    AppTest();
    ~AppTest() override;

    TirnApplication& app() { return *m_app; }
    TirnWidget& widget() { return *m_app->currentWidget(); }
    ViewState view() { return app().model().view(); }

    void changeView(const std::function<void(ViewState&)>& change)
    {
        app().model().edit(Change::Look | Change::Pose, [&](Scene& scene) { change(scene.view); });
    }

    /// Starts again from nothing.
    void restart();
    void quit() { m_app.reset(); }
    /// Names files as on the command line, and waits until they stand, or until a box says why not.
    void load(const QStringList& names);
    /// Lets everything that is under way come to its end: posted events, and a render thread that ends by
    /// itself.
    void settle();
    /// The text of the message box on the screen, which is then closed; empty when there is none.
    QString takeBox();
    /// A Bio-Rad file of a dense stack in the test's directory.
    QString picFile(const QString& name, int x = 16, int y = 12, int z = 8, int bits = 8);
    /// A palette file of as many lines.
    QString mapFile(const QString& name, int lines = 256);
    QString path(const QString& name) const { return m_directory.filePath(name); }

    void press(QPoint at, Qt::MouseButton button, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void moveTo(QPoint at, Qt::MouseButton button, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void release(QPoint at, Qt::MouseButton button, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void drag(QPoint from, QPoint to, Qt::MouseButton button,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void type(const QString& text);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    LogCapture log;
    /// When the next mouse events happen, in milliseconds.
    unsigned long mouseClock = 1000;

private:
    void mouse(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held,
               Qt::KeyboardModifiers modifiers);

    QTemporaryDir m_directory;
    int m_argc = 1;
    char m_name[5] = "tirn";
    char* m_argv[2] = {m_name, nullptr};
    std::unique_ptr<TirnApplication> m_app;
};

/// Writes a Bio-Rad file byte by byte, independent of the program's writer.
void writePic(const QString& path, const PlainStack& stack);

} // namespace tirn::test
