#include "ui/edits/filterdialogs.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>

#include <gtest/gtest.h>

#include "uisupport/dialogtest.h"

namespace tirn {
namespace {

class FilterDialogs : public test::DialogTest
{
protected:
    std::optional<FilterJobParameters> ask(FilterOperation operation, int channels,
                                           const test::DialogScript::Answer& step,
                                           Qt::Key key = Qt::Key_Return)
    {
        script.then([&, key](QDialog& dialog) {
            step(dialog);
            press(dialog, key);
        });
        return askFilter(operation, channels, nullptr);
    }
    static QStringList labels(const QDialog& dialog)
    {
        QStringList all;
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            all += QString(label->text()).remove('&');
        return all;
    }
    static void expectRange(QDialog& dialog, const char* name, const std::array<int, 4>& valueAndRange)
    {
        const auto& box = child<QSpinBox>(dialog, name);
        EXPECT_EQ(box.value(), valueAndRange[0]);
        EXPECT_EQ(box.minimum(), valueAndRange[1]);
        EXPECT_EQ(box.maximum(), valueAndRange[2]);
        EXPECT_EQ(box.singleStep(), valueAndRange[3]);
    }
};

TEST_F(FilterDialogs, WindowFiltersAskForSizeChannelAndLayers)
{
    for (const FilterOperation operation : {FilterOperation::Mean, FilterOperation::Median,
                                            FilterOperation::Minimum, FilterOperation::Maximum}) {
        const auto asked = ask(operation, 3, [&](QDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), QString(findFilter(operation)->menuText) + " filter");
            EXPECT_EQ(labels(dialog), (QStringList{"Filter size", "All channels", "Channel", "3D"}));
            expectRange(dialog, "Filter size", {3, 3, 127, 2});
            expectRange(dialog, "Channel", {1, 1, 3, 1});
            EXPECT_EQ(child<QComboBox>(dialog, "All channels").currentText(), "True");
            EXPECT_EQ(child<QComboBox>(dialog, "3D").currentText(), "False");
        });
        ASSERT_TRUE(asked.has_value());
        EXPECT_EQ(asked->operation, operation);
        EXPECT_EQ(asked->size, 3);
        EXPECT_TRUE(asked->channelAll);
        EXPECT_FALSE(asked->threeD);
    }
}

TEST_F(FilterDialogs, GiveWhatWasChosenByKeys)
{
    const auto asked = ask(FilterOperation::Median, 3, [&](QDialog& dialog) {
        press(dialog, Qt::Key_F, Qt::AltModifier);
        type(*QApplication::focusWidget(), "8");
        press(dialog, Qt::Key_A, Qt::AltModifier);
        press(*QApplication::focusWidget(), Qt::Key_Up);
        press(dialog, Qt::Key_C, Qt::AltModifier);
        press(*QApplication::focusWidget(), Qt::Key_Up);
        press(dialog, Qt::Key_3, Qt::AltModifier);
        press(*QApplication::focusWidget(), Qt::Key_Down);
    });
    ASSERT_TRUE(asked.has_value());
    EXPECT_EQ(asked->size, 8);
    EXPECT_FALSE(asked->channelAll);
    EXPECT_EQ(asked->channel, 1);
    EXPECT_TRUE(asked->threeD);
}

TEST_F(FilterDialogs, TheChannelCountsOnlyWithoutAllChannels)
{
    ask(FilterOperation::Mean, 2, [&](QDialog& dialog) {
        EXPECT_FALSE(child<QSpinBox>(dialog, "Channel").isEnabled());
        press(child<QComboBox>(dialog, "All channels"), Qt::Key_Up);
        EXPECT_TRUE(child<QSpinBox>(dialog, "Channel").isEnabled());
    });
}

TEST_F(FilterDialogs, BackgroundSubtractionAsksForThePercentage)
{
    const auto asked = ask(FilterOperation::BackgroundSubtract, 1, [&](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Background Subtract filter");
        EXPECT_EQ(labels(dialog),
                  (QStringList{"Filter size", "All channels", "Channel", "Subtract Percentage"}));
        expectRange(dialog, "Filter size", {31, 3, 127, 2});
        expectRange(dialog, "Channel", {1, 1, 1, 1});
        expectRange(dialog, "Subtract Percentage", {100, 0, 100, 1});
        press(dialog, Qt::Key_S, Qt::AltModifier);
        type(*QApplication::focusWidget(), "40");
    });
    ASSERT_TRUE(asked.has_value());
    EXPECT_EQ(asked->operation, FilterOperation::BackgroundSubtract);
    EXPECT_EQ(asked->size, 31);
    EXPECT_EQ(asked->extra, 40);
}

TEST_F(FilterDialogs, EscapeAsksForNoFilter)
{
    EXPECT_FALSE(ask(
                     FilterOperation::Mean, 1, [](QDialog&) {}, Qt::Key_Escape)
                     .has_value());
    EXPECT_FALSE(ask(
                     FilterOperation::Custom, 1, [](QDialog&) {}, Qt::Key_Escape)
                     .has_value());
}

TEST_F(FilterDialogs, FlipsAndTheInversionAreNotAskedFor)
{
    for (const FilterOperation operation :
         {FilterOperation::FlipX, FilterOperation::FlipY, FilterOperation::FlipZ, FilterOperation::Invert}) {
        const auto asked = askFilter(operation, 2, nullptr);
        ASSERT_TRUE(asked.has_value());
        EXPECT_EQ(asked->operation, operation);
    }
}

TEST_F(FilterDialogs, TheCustomOneGivesItsTable)
{
    const auto asked = ask(FilterOperation::Custom, 2, [](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Custom");
        child<QSpinBox>(dialog, "spnWidth").setValue(1);
        child<QSpinBox>(dialog, "spnHeight").setValue(2);
        auto& table = child<QTableWidget>(dialog, "tblKernel");
        table.setItem(0, 0, new QTableWidgetItem("3"));
        table.setItem(1, 0, new QTableWidgetItem("4"));
    });
    ASSERT_TRUE(asked.has_value());
    EXPECT_EQ(asked->operation, FilterOperation::Custom);
    EXPECT_TRUE(asked->channelAll);
    EXPECT_EQ(asked->kernel, (FilterKernel{1, 2, {3, 4}}));
    EXPECT_TRUE(asked->channelAll);
}

} // namespace
} // namespace tirn
