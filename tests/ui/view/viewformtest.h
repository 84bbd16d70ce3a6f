#pragma once

#include <QComboBox>
#include <QPushButton>
#include <QTest>

#include "ui/view/viewform.h"
#include "ui/widgets/floatspinbox.h"
#include "uisupport/apptest.h"

namespace tirn::test {

/// The whole program with the view form, which has the keyboard.
class ViewFormTest : public AppTest
{
protected:
    ViewForm& form()
    {
        if (m_form == nullptr) {
            QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
            m_form = static_cast<ViewForm*>(app().forms().create(FormId::View, true));
            m_form->window()->activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(m_form->window()));
        }
        return *m_form;
    }
    template <class Widget>
    Widget& find(const QString& name)
    {
        auto* widget = form().findChild<Widget*>(name);
        if (widget == nullptr)
            throw std::runtime_error(name.toStdString());
        return *widget;
    }
    FloatSpinBox& box(const char* name) { return find<FloatSpinBox>(QString("fspn") + name); }
    void click(const char* button) { QTest::mouseClick(&find<QPushButton>(button), Qt::LeftButton); }
    /// Puts a text into a field without saying that it is complete.
    static void write(QAbstractSpinBox& field, const QString& text)
    {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
    }
    static void enter(QAbstractSpinBox& field, const QString& text)
    {
        write(field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    }
    void choose(const char* combo, int item)
    {
        auto& list = find<QComboBox>(combo);
        list.setCurrentIndex(item);
        Q_EMIT list.activated(item);
    }
    AxisScale scale() { return app().scene().current()->scale; }
    void expectAngles(double x, double y, double z)
    {
        const ViewState shown = view();
        EXPECT_NEAR(shown.rotX, x, 1e-9);
        EXPECT_NEAR(shown.rotY, y, 1e-9);
        EXPECT_NEAR(shown.rotZ, z, 1e-9);
    }
    void undo() { app().model().undoStack().undo(); }
    int steps() { return app().model().undoStack().count(); }

private:
    ViewForm* m_form = nullptr;
};

} // namespace tirn::test
