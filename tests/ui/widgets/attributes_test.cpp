#include "ui/widgets/attributes.h"

#include <QColorDialog>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QFontDialog>
#include <QFormLayout>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QToolButton>

#include <gtest/gtest.h>

#include "support/picfile.h"
#include "ui/widgets/floatspinbox.h"
#include "uisupport/dialogtest.h"

namespace tirn {
namespace {

class AttributesTest : public test::DialogTest
{
protected:
    Attributes attributes;

    /// Shows the dialog, lets `step` act on it, and accepts it with Enter, or cancels it with Escape.
    bool show(const test::DialogScript::Answer& step, Qt::Key key = Qt::Key_Return)
    {
        script.then([&](QDialog& dialog) {
            step(dialog);
            press(dialog, key);
        });
        return attributes.dialog("Caption");
    }
    template <class Widget>
    bool edit(const std::function<void(Widget&)>& change, Qt::Key key = Qt::Key_Return)
    {
        return show([&](QDialog& dialog) { change(child<Widget>(dialog, "It")); }, key);
    }
    QString shown(const QString& name, const QString& property)
    {
        QString text;
        show([&](QDialog& dialog) {
            text = dialog.findChild<QWidget*>(name)->property(qPrintable(property)).toString();
        });
        return text;
    }
};

TEST_F(AttributesTest, KeepsValuesAndOptionsByName)
{
    attributes.setAttribute("a", 3, {{"minimum", 1}, {"maximum", 9}});
    EXPECT_EQ(attributes.value("a"), 3);
    EXPECT_FALSE(attributes.value("b").isValid());
    EXPECT_TRUE(attributes.contains("a"));
    attributes.setAttribute("a", 4, {{"maximum", 7}});
    EXPECT_EQ(attributes.value("a"), 4);
    EXPECT_EQ(attributes.option("a", "minimum"), 1);
    EXPECT_EQ(attributes.option("a", "maximum"), 7);
    attributes.setAttribute("a", 5);
    EXPECT_EQ(attributes.option("a", "maximum"), 7);
}

TEST_F(AttributesTest, ForgetsOneOrAll)
{
    attributes.setAttribute("a", 1);
    attributes.setAttribute("b", 2);
    attributes.removeAttribute("a");
    attributes.removeAttribute("none");
    EXPECT_FALSE(attributes.contains("a"));
    EXPECT_EQ(attributes.value("b"), 2);
    attributes.clear();
    EXPECT_FALSE(attributes.contains("b"));
}

TEST_F(AttributesTest, RowsStandInTheOrderInWhichTheyWereAdded)
{
    attributes.setAttribute("Zebra", 1);
    attributes.setAttribute("Ant", true);
    attributes.setAttribute("Zebra", 2);
    QStringList labels;
    EXPECT_TRUE(show([&](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Caption");
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            labels += label->text();
    }));
    EXPECT_EQ(labels, (QStringList{"&Zebra", "&Ant"}));
}

TEST_F(AttributesTest, AcceleratorsAreTheNextFreeCharacterOfEachLabel)
{
    QString free = "ABC1";
    EXPECT_EQ(withAccelerator("abc", free), "&abc");
    EXPECT_EQ(withAccelerator("aab", free), "aa&b");
    EXPECT_EQ(withAccelerator("x & c", free), "x && &c");
    EXPECT_EQ(withAccelerator("abc1", free), "abc&1");
    EXPECT_EQ(withAccelerator("abc1", free), "abc1");
    EXPECT_EQ(free, "");
}

TEST_F(AttributesTest, AnAcceleratorLeadsToItsEditor)
{
    attributes.setAttribute("First", 1);
    attributes.setAttribute("Second", "text");
    show([](QDialog& dialog) {
        press(dialog, Qt::Key_S, Qt::AltModifier);
        EXPECT_TRUE(child<QLineEdit>(dialog, "Second").hasFocus());
        press(dialog, Qt::Key_F, Qt::AltModifier);
        EXPECT_TRUE(child<QSpinBox>(dialog, "First").hasFocus());
    });
}

TEST_F(AttributesTest, EscapeAndCancelLeaveTheValues)
{
    attributes.setAttribute("It", 1);
    EXPECT_FALSE(edit<QSpinBox>([](QSpinBox& box) { box.setValue(2); }, Qt::Key_Escape));
    EXPECT_EQ(attributes.value("It"), 1);
    script.then([](QDialog& dialog) {
        child<QSpinBox>(dialog, "It").setValue(2);
        for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
            if (button->text() == "Cancel")
                QTest::mouseClick(button, Qt::LeftButton);
        }
    });
    EXPECT_FALSE(attributes.dialog("Caption"));
    EXPECT_EQ(attributes.value("It"), 1);
}

TEST_F(AttributesTest, AHiddenOneKeepsItsValueThroughTheDialog)
{
    attributes.setAttribute("It", 5, {{"hidden", true}});
    attributes.setAttribute("Other", 6);
    EXPECT_TRUE(show([](QDialog& dialog) { EXPECT_EQ(dialog.findChild<QWidget*>("It"), nullptr); }));
    EXPECT_EQ(attributes.value("It"), 5);
}

TEST_F(AttributesTest, AReadonlyOneIsDisabledAndHelpIsAToolTip)
{
    attributes.setAttribute("It", 5, {{"readonly", true}, {"helptext", "What it is."}});
    edit<QSpinBox>([](QSpinBox& box) {
        EXPECT_FALSE(box.isEnabled());
        EXPECT_EQ(box.toolTip(), "What it is.");
    });
    EXPECT_EQ(attributes.value("It"), 5);
}

TEST_F(AttributesTest, ARowIsDisabledWhileAnotherIsTrue)
{
    attributes.setAttribute("All", true);
    attributes.setAttribute("It", 5, {{"disabledwhile", "All"}});
    show([](QDialog& dialog) {
        auto& box = child<QSpinBox>(dialog, "It");
        EXPECT_FALSE(box.isEnabled());
        press(child<QComboBox>(dialog, "All"), Qt::Key_Up);
        EXPECT_TRUE(box.isEnabled());
    });
    EXPECT_EQ(attributes.value("All"), false);
}

TEST_F(AttributesTest, AStringIsALine)
{
    attributes.setAttribute("It", QString("before"));
    edit<QLineEdit>([](QLineEdit& line) {
        EXPECT_EQ(line.text(), "before");
        type(line, "after");
    });
    EXPECT_EQ(attributes.value("It"), "after");
}

TEST_F(AttributesTest, BytesBecomeAString)
{
    attributes.setAttribute("It", QByteArray("bytes"));
    EXPECT_EQ(attributes.value("It").userType(), static_cast<int>(QMetaType::QString));
    EXPECT_EQ(attributes.value("It"), "bytes");
}

TEST_F(AttributesTest, AStringWithAFilterAsksForAFile)
{
    const QString name = test::saveBytes(path("a.txt"), "text");
    attributes.setAttribute("It", "", {{"filefilter", "Texts (*.txt)"}});
    script.then([&](QDialog& dialog) {
        auto& row = child<QWidget>(dialog, "It");
        auto* button = row.findChild<QToolButton*>();
        ASSERT_NE(button, nullptr);
        EXPECT_EQ(button->text(), "...");
        EXPECT_EQ(button->toolTip(), "Choose a file");
        script.then([&](QDialog& chooser) {
            EXPECT_EQ(chooser.windowTitle(), "Choose a file");
            EXPECT_EQ(static_cast<QFileDialog&>(chooser).nameFilters(), QStringList("Texts (*.txt)"));
            auto& line = child<QLineEdit>(chooser, "fileNameEdit");
            line.setText(name);
            press(line, Qt::Key_Return);
        });
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_EQ(row.findChild<QLineEdit*>()->text(), name);
        press(dialog, Qt::Key_Return);
    });
    EXPECT_TRUE(attributes.dialog("Caption"));
    EXPECT_EQ(attributes.value("It"), name);
}

TEST_F(AttributesTest, AListIsAChoiceAndItsTextTheValue)
{
    const QStringList list = {"one", "two", "three"};
    attributes.setAttribute("It", list, {{"selected", 1}});
    edit<QComboBox>([&](QComboBox& box) {
        EXPECT_EQ(box.currentText(), "two");
        press(box, Qt::Key_Down);
    });
    EXPECT_EQ(attributes.value("It"), "three");
    // The list is still there.
    edit<QComboBox>([](QComboBox& box) {
        EXPECT_EQ(box.count(), 3);
        EXPECT_EQ(box.currentText(), "three");
        press(box, Qt::Key_Home);
    });
    EXPECT_EQ(attributes.value("It"), "one");
}

TEST_F(AttributesTest, AListsChoiceMayBeGivenAsText)
{
    attributes.setAttribute("It", QStringList{"5", "1", "0"}, {{"selected", "0"}});
    show([](QDialog&) {});
    EXPECT_EQ(attributes.value("It"), "0");
    attributes.setAttribute("It", QStringList{"a", "b"}, {{"selected", 7}});
    show([](QDialog&) {});
    EXPECT_EQ(attributes.value("It"), "a");
}

TEST_F(AttributesTest, AnIntIsASpinBoxWithItsOptions)
{
    attributes.setAttribute(
        "It", 31, {{"minimum", 3}, {"maximum", 127}, {"lineStep", 2}, {"prefix", "<"}, {"suffix", ">"}});
    edit<QSpinBox>([](QSpinBox& box) {
        EXPECT_EQ(box.text(), "<31>");
        EXPECT_EQ(box.minimum(), 3);
        EXPECT_EQ(box.maximum(), 127);
        press(box, Qt::Key_Up);
        EXPECT_EQ(box.value(), 33);
    });
    EXPECT_EQ(attributes.value("It"), 33);
    EXPECT_EQ(attributes.value("It").userType(), static_cast<int>(QMetaType::Int));
}

TEST_F(AttributesTest, ANumberBetweenTheStepsCanBeTyped)
{
    attributes.setAttribute("It", 3, {{"minimum", 3}, {"maximum", 127}, {"lineStep", 2}});
    edit<QSpinBox>([](QSpinBox& box) { type(box, "8"); });
    EXPECT_EQ(attributes.value("It"), 8);
}

TEST_F(AttributesTest, AnUnsignedOneStaysUnsigned)
{
    attributes.setAttribute("It", 7U);
    edit<QSpinBox>([](QSpinBox& box) {
        EXPECT_EQ(box.minimum(), 0);
        type(box, "9");
    });
    EXPECT_EQ(attributes.value("It").userType(), static_cast<int>(QMetaType::UInt));
    EXPECT_EQ(attributes.value("It").toUInt(), 9U);
    // Beyond what the editor holds, but not edited.
    attributes.setAttribute("It", 4000000000U);
    edit<QSpinBox>([](QSpinBox&) {});
    EXPECT_EQ(attributes.value("It").toUInt(), 4000000000U);
}

TEST_F(AttributesTest, ABoolIsFalseOrTrue)
{
    attributes.setAttribute("It", false);
    edit<QComboBox>([](QComboBox& box) {
        EXPECT_EQ(box.itemText(0), "False");
        EXPECT_EQ(box.itemText(1), "True");
        EXPECT_EQ(box.currentIndex(), 0);
        press(box, Qt::Key_Down);
    });
    EXPECT_EQ(attributes.value("It"), true);
}

TEST_F(AttributesTest, ADoubleIsAFloatSpinBox)
{
    attributes.setAttribute("It", 0.5, {{"minimum", -1.0}, {"maximum", 2.0}, {"lineStep", 0.25}});
    edit<FloatSpinBox>([](FloatSpinBox& box) {
        EXPECT_EQ(box.doubleMinValue(), -1);
        EXPECT_EQ(box.doubleMaxValue(), 2);
        press(box, Qt::Key_Up);
    });
    EXPECT_DOUBLE_EQ(attributes.value("It").toDouble(), 0.75);
    attributes.setAttribute("Wide", 12345.5);
    show([](QDialog&) {});
    EXPECT_DOUBLE_EQ(attributes.value("Wide").toDouble(), 12345.5);
}

TEST_F(AttributesTest, DatesAndTimesHaveEditorsAndLimits)
{
    const QDate day(2020, 5, 6);
    const QTime noon(12, 30, 15);
    attributes.setAttribute("It", day, {{"earliest", day.addDays(-1)}, {"latest", day.addDays(1)}});
    edit<QDateEdit>([&](QDateEdit& box) {
        EXPECT_EQ(box.minimumDate(), day.addDays(-1));
        EXPECT_EQ(box.maximumDate(), day.addDays(1));
        box.setDate(day.addDays(5));
    });
    EXPECT_EQ(attributes.value("It").toDate(), day.addDays(1));
    attributes.clear();
    attributes.setAttribute("It", noon, {{"earliest", noon.addSecs(-5)}, {"latest", noon.addSecs(5)}});
    edit<QTimeEdit>([&](QTimeEdit& box) {
        EXPECT_EQ(box.minimumTime(), noon.addSecs(-5));
        EXPECT_EQ(box.maximumTime(), noon.addSecs(5));
        EXPECT_TRUE(box.displayFormat().contains("ss"));
        box.setTime(noon.addSecs(3));
    });
    EXPECT_EQ(attributes.value("It").toTime(), noon.addSecs(3));
    attributes.clear();
    const QDateTime both(day, noon);
    attributes.setAttribute("It", both, {{"earliest", both.addSecs(-5)}, {"latest", both.addSecs(5)}});
    edit<QDateTimeEdit>([&](QDateTimeEdit& box) {
        EXPECT_EQ(box.minimumDateTime(), both.addSecs(-5));
        EXPECT_EQ(box.maximumDateTime(), both.addSecs(5));
        box.setDateTime(both.addSecs(-2));
    });
    EXPECT_EQ(attributes.value("It").toDateTime(), both.addSecs(-2));
}

TEST_F(AttributesTest, AFontIsAButtonThatAsksForOne)
{
    QFont font("Sans", 11);
    attributes.setAttribute("It", font);
    EXPECT_EQ(shown("It", "text"), font.family() + " 11-pt");
    font.setBold(true);
    font.setItalic(true);
    attributes.setAttribute("It", font);
    script.then([&](QDialog& dialog) {
        auto& button = child<QPushButton>(dialog, "It");
        EXPECT_EQ(button.text(), font.family() + " 11-ptbolditalic");
        script.then([](QDialog& chooser) {
            QFont other("Serif", 17);
            static_cast<QFontDialog&>(chooser).setCurrentFont(other);
            static_cast<QFontDialog&>(chooser).accept();
        });
        QTest::mouseClick(&button, Qt::LeftButton);
        EXPECT_TRUE(button.text().contains("17-pt")) << button.text().toStdString();
        press(dialog, Qt::Key_Return);
    });
    attributes.dialog("Caption");
    EXPECT_EQ(attributes.value("It").value<QFont>().pointSize(), 17);
}

TEST_F(AttributesTest, AColorIsAButtonThatAsksForOne)
{
    attributes.setAttribute("It", QColor("#102030"));
    script.then([&](QDialog& dialog) {
        auto& button = child<QPushButton>(dialog, "It");
        EXPECT_EQ(button.text(), "#102030");
        EXPECT_EQ(button.icon().pixmap(8, 8).toImage().pixelColor(1, 1), QColor("#102030"));
        script.then([](QDialog& chooser) {
            static_cast<QColorDialog&>(chooser).setCurrentColor(QColor("#ff8000"));
            static_cast<QColorDialog&>(chooser).accept();
        });
        QTest::mouseClick(&button, Qt::LeftButton);
        EXPECT_EQ(button.text(), "#ff8000");
        script.then([](QDialog& chooser) { press(chooser, Qt::Key_Escape); });
        QTest::mouseClick(&button, Qt::LeftButton);
        press(dialog, Qt::Key_Escape);
    });
    EXPECT_FALSE(attributes.dialog("Caption"));
    // What the button's dialog chose is kept at once.
    EXPECT_EQ(attributes.value("It").value<QColor>(), QColor("#ff8000"));
}

TEST_F(AttributesTest, APixmapIsAButtonThatAsksForAnImage)
{
    QImage image(200, 100, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(path("red.png")));
    attributes.setAttribute("It", QPixmap(), {{"maximum", 50}});
    script.then([&](QDialog& dialog) {
        script.then([&](QDialog& chooser) {
            EXPECT_EQ(chooser.windowTitle(), "Choose an image");
            const QString filter = static_cast<QFileDialog&>(chooser).nameFilters().first();
            EXPECT_TRUE(filter.startsWith("Images (*.")) << filter.toStdString();
            EXPECT_TRUE(filter.contains(" *.png"));
            auto& line = child<QLineEdit>(chooser, "fileNameEdit");
            line.setText(path("red.png"));
            press(line, Qt::Key_Return);
        });
        QTest::mouseClick(&child<QPushButton>(dialog, "It"), Qt::LeftButton);
        press(dialog, Qt::Key_Return);
    });
    attributes.dialog("Caption");
    const auto picture = attributes.value("It").value<QPixmap>();
    EXPECT_EQ(picture.size(), QSize(50, 25));
    EXPECT_EQ(picture.toImage().pixelColor(9, 9), QColor(Qt::red));
}

TEST_F(AttributesTest, WhatItCannotEditIsLoggedAndLeftOut)
{
    attributes.setAttribute("Point", QPoint(1, 2));
    EXPECT_TRUE(log.contains("Attributes::setAttribute() internal error"));
    EXPECT_TRUE(show([](QDialog& dialog) { EXPECT_EQ(dialog.findChild<QWidget*>("Point"), nullptr); }));
    EXPECT_TRUE(log.contains("Attributes does not support the Point type (QPoint)"));
    EXPECT_EQ(attributes.value("Point"), QPoint(1, 2));
}

TEST_F(AttributesTest, AValueThatChangesItsTypeMeanwhileIsLogged)
{
    attributes.setAttribute("It", 1);
    show([&](QDialog&) { attributes.setAttribute("It", QPoint(1, 2)); });
    EXPECT_EQ(log.count("Attributes::dialog() internal error"), 1);
    EXPECT_EQ(attributes.value("It"), QPoint(1, 2));
    attributes.setAttribute("It", true);
    show([&](QDialog&) { attributes.setAttribute("It", 2.5); });
    EXPECT_EQ(log.count("Attributes::dialog() internal error"), 2);
}

TEST_F(AttributesTest, AnUnknownButtonIsLogged)
{
    QMetaObject::invokeMethod(&attributes, "mapped", Q_ARG(QString, "none"));
    EXPECT_TRUE(log.contains("Attributes::mapped() internal error"));
    attributes.setAttribute("It", 1);
    QMetaObject::invokeMethod(&attributes, "mapped", Q_ARG(QString, "It"));
    EXPECT_EQ(log.count("Attributes::mapped() internal error"), 2);
}

} // namespace
} // namespace tirn
