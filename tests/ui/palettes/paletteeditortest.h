#pragma once

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QMouseEvent>
#include <QTest>
#include <QToolButton>

#include "ui/palettes/paletteform.h"
#include "ui/widgets/floatspinbox.h"
#include "uisupport/apptest.h"
#include "uisupport/modalanswers.h"

namespace tirn::test {

/// The palette editor in the running program, driven by mouse and keys.
class PaletteEditorTest : public AppTest
{
protected:
    PaletteForm& form()
    {
        auto* shown = static_cast<PaletteForm*>(app().forms().create(FormId::Palette, true));
        if (shown == nullptr)
            throw std::runtime_error("no palette form");
        shown->activateWindow();
        QCoreApplication::processEvents();
        return *shown;
    }
    Palette& palette()
    {
        Palette* selected = form().currentPalette();
        if (selected == nullptr)
            throw std::runtime_error("no palette");
        return *selected;
    }
    PalettePlot& plot() { return form().page().plot(); }
    template <class Widget>
    Widget& child(const char* name)
    {
        auto* widget = form().findChild<Widget*>(name);
        if (widget == nullptr)
            throw std::runtime_error(name);
        return *widget;
    }
    QToolButton& button(const char* name) { return child<QToolButton>(name); }
    FloatSpinBox& spin(const char* name) { return child<FloatSpinBox>(name); }
    double number(const char* name) { return spin(name).doubleValue(); }
    QAction& action(const char* name) { return child<QAction>(name); }
    void click(const char* name) { QTest::mouseClick(&child<QAbstractButton>(name), Qt::LeftButton); }
    void tick(const char* name)
    {
        auto& box = child<QCheckBox>(name);
        QTest::mouseClick(&box, Qt::LeftButton, {}, {8, box.height() / 2});
    }
    /// Where a place of the plot is seen.
    QPoint at(int x, int y) { return plot().placeOf({x, y}); }
    void mouse(QEvent::Type type, QPoint place, Qt::MouseButtons held, Qt::KeyboardModifiers modifiers = {},
               Qt::MouseButton button = Qt::LeftButton)
    {
        QWidget* canvas = plot().canvas();
        QMouseEvent event(type, place, canvas->mapToGlobal(place),
                          type == QEvent::MouseMove ? Qt::NoButton : button, held, modifiers);
        QCoreApplication::sendEvent(canvas, &event);
    }
    void pressAt(QPoint place) { mouse(QEvent::MouseButtonPress, place, Qt::LeftButton); }
    void dragTo(QPoint place, Qt::KeyboardModifiers modifiers = {})
    {
        mouse(QEvent::MouseMove, place, Qt::LeftButton, modifiers);
    }
    void releaseAt(QPoint place) { mouse(QEvent::MouseButtonRelease, place, Qt::NoButton); }
    void stroke(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {})
    {
        pressAt(from);
        dragTo(to, modifiers);
        releaseAt(to);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        plot().canvas()->setFocus();
        QTest::keyClick(plot().canvas(), key, modifiers);
    }
    QStringList names()
    {
        QStringList list;
        for (const auto& each : app().scene().palettes)
            list.append(each->name());
        return list;
    }
    int paletteOf(int array, std::size_t channel)
    {
        return app()
            .scene()
            .arrays.at(static_cast<std::size_t>(array))
            ->channels()
            .at(channel)
            .display.palette;
    }
    /// A stack of 2048 voxels: so many of each value, the rest 0.
    QString stackOf(const QString& name, int bits, const std::vector<std::pair<int, int>>& counts)
    {
        PlainStack stack = PlainStack::blank(32, 32, 2, 1, bits);
        auto next = stack.voxels.begin();
        for (const auto& [value, count] : counts)
            next = std::fill_n(next, count, static_cast<std::uint16_t>(value));
        writePic(path(name), stack);
        return path(name);
    }

    /// A straight line of a dense table is easy to see; so is each of its steps.
    static std::vector<double> part(const std::vector<double>& values, int from, int to)
    {
        return {values.begin() + from, values.begin() + to + 1};
    }
};

} // namespace tirn::test
