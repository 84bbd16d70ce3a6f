#include "uisupport/apptest.h"

#include <QFile>
#include <QKeyEvent>
#include <QMessageBox>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

namespace tirn::test {

void writePic(const QString& path, const PlainStack& stack)
{
    QByteArray header(76, '\0');
    const auto put = [&header](int offset, int value) {
        header[offset] = static_cast<char>(value & 255);
        header[offset + 1] = static_cast<char>(value >> 8 & 255);
    };
    put(0, stack.x);
    put(2, stack.y);
    put(4, stack.z);
    put(14, stack.bits == 8 ? 1 : 0);
    put(54, 12345);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(header);
    const std::vector<std::uint8_t> bytes = stack.bytes();
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
}

AppTest::AppTest()
{
    qputenv("XDG_CONFIG_HOME", m_directory.path().toLocal8Bit());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_directory.path());
    restart();
}

AppTest::~AppTest() { m_app.reset(); }

void AppTest::restart()
{
    m_app.reset();
    m_app = std::make_unique<TirnApplication>(m_argc, m_argv);
    ASSERT_TRUE(m_app->initializeGl());
    QCoreApplication::postEvent(m_app.get(), new StartEvent);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_app->mainForm()));
    QTRY_VERIFY_WITH_TIMEOUT(widget().surface().isReady(), 5000);
    settle();
}

void AppTest::settle()
{
    const bool wasProbing = app().probes().isBusy();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    if (wasProbing) {
        QTRY_VERIFY_WITH_TIMEOUT(!app().probes().isBusy(), 30000);
        app().loads().fileThread().wait();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    widget().renderThread().wait(5000);
    QCoreApplication::processEvents();
}

void AppTest::load(const QStringList& names)
{
    app().loadFromCommandLine(QStringList{"tirn"} + names);
    QTRY_VERIFY_WITH_TIMEOUT(!app().probes().isBusy(), 30000);
    app().loads().fileThread().wait();
    settle();
}

QString AppTest::takeBox()
{
    QCoreApplication::processEvents();
    for (QWidget* top : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(top);
        if (box != nullptr && box->isVisible()) {
            const QString text = box->windowTitle() + ": " + box->text();
            box->done(0);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return text;
        }
    }
    return {};
}

QString AppTest::picFile(const QString& name, int x, int y, int z, int bits)
{
    writePic(path(name), denseStack(x, y, z, 1, bits));
    return path(name);
}

QString AppTest::mapFile(const QString& name, int lines)
{
    QFile file(path(name));
    if (file.open(QIODevice::WriteOnly)) {
        for (int i = 0; i < lines; ++i)
            file.write(QByteArray::number(i & 255) + " 0 0 " + QByteArray::number(i & 255) + "\n");
    }
    return path(name);
}

void AppTest::mouse(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held,
                    Qt::KeyboardModifiers modifiers)
{
    QMouseEvent event(type, at, widget().mapToGlobal(at), button, held, modifiers);
    event.setTimestamp(mouseClock);
    QCoreApplication::sendEvent(&widget(), &event);
}

void AppTest::press(QPoint at, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    mouse(QEvent::MouseButtonPress, at, button, button, modifiers);
}

void AppTest::moveTo(QPoint at, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    mouse(QEvent::MouseMove, at, Qt::NoButton, button, modifiers);
}

void AppTest::release(QPoint at, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    mouse(QEvent::MouseButtonRelease, at, button, Qt::NoButton, modifiers);
}

void AppTest::drag(QPoint from, QPoint to, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    press(from, button, modifiers);
    moveTo(to, button, modifiers);
    // Standing still before the release, so that nothing is thrown.
    moveTo(to, button, modifiers);
    release(to, button, modifiers);
}

void AppTest::type(const QString& text)
{
    for (const QChar character : text)
        QTest::keyClick(&widget(), character.toLatin1());
}

void AppTest::key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(&widget(), key, modifiers);
}

} // namespace tirn::test
