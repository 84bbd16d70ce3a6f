// What holds for every form of the list, whoever wrote it.

#include "ui/formlist.h"

#include <set>

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include "uisupport/apptest.h"

namespace tirn {
namespace {

std::string nameOf(const ::testing::TestParamInfo<FormId>& info)
{
    QString name = formRow(info.param).failureName;
    return name.remove(' ').toStdString();
}

std::vector<FormId> madeForms()
{
    std::vector<FormId> ids;
    for (const FormRow& row : formRows()) {
        if (row.make != nullptr)
            ids.push_back(row.id);
    }
    return ids;
}

class EveryForm : public test::AppTest, public ::testing::WithParamInterface<FormId>
{
protected:
    /// A form may ask for a file as soon as it comes up: the question is left.
    EveryForm()
    {
        QObject::connect(&m_leave, &QTimer::timeout, [] {
            if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget()))
                dialog->reject();
        });
        m_leave.start(20);
    }
    const FormRow& row() const { return formRow(GetParam()); }
    ToolForm& show()
    {
        ToolForm* form = app().forms().create(GetParam(), true);
        if (form == nullptr)
            throw std::runtime_error(row().name);
        QCoreApplication::processEvents();
        return *form;
    }
    void hide()
    {
        app().forms().create(GetParam(), false);
        QCoreApplication::processEvents();
    }
    void loadStacks(int count)
    {
        for (int i = 0; i < count; ++i)
            load({picFile(QString("s%1.pic").arg(i))});
    }
    /// All that a session could keep of the scene, as text.
    QString sceneText()
    {
        return app().model().read([](const Scene& scene) {
            QString text = QString("%1 %2 %3 %4|")
                               .arg(scene.currentIndex)
                               .arg(scene.view.rotX)
                               .arg(scene.view.rotY)
                               .arg(scene.view.transZ);
            for (const auto& array : scene.arrays) {
                text += QString("%1 %2 %3 %4 %5 %6;")
                            .arg(array->scale.x)
                            .arg(array->scale.z)
                            .arg(array->cut.xMin)
                            .arg(array->cut.zMax)
                            .arg(array->timePoint())
                            .arg(array->stack().dimX);
                for (const Channel& channel : array->channels())
                    text += QString("%1 %2,")
                                .arg(static_cast<int>(channel.display.state))
                                .arg(channel.display.palette);
            }
            return text;
        });
    }

private:
    QTimer m_leave;
};

TEST_P(EveryForm, MadeTwiceIsOne)
{
    ToolForm* form = app().forms().create(GetParam(), false);
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(app().forms().create(GetParam(), false), form);
    EXPECT_EQ(app().forms().form(GetParam()), form);
    EXPECT_EQ(form->objectName(), row().name);
    EXPECT_FALSE(form->windowTitle().isEmpty());
}

TEST_P(EveryForm, ComesUpAndGoesWithNoOneAndSeveralStacks)
{
    for (const int stacks : {0, 1, 2}) {
        loadStacks(stacks - app().arrayCount());
        EXPECT_TRUE(show().isShown()) << stacks;
        hide();
        EXPECT_FALSE(app().forms().form(GetParam())->isShown()) << stacks;
    }
    show();
    app().closeAll();
    settle();
    hide();
}

TEST_P(EveryForm, TakesOverWhatChangedAndChangesNothing)
{
    loadStacks(2);
    show();
    const QString before = sceneText();
    std::vector<Changes> told;
    QObject::connect(&app().model(), &SceneModel::changed, &app().mainForm(),
                     [&](Changes changes) { told.push_back(changes); });
    app().model().follow(kAllChanges);
    EXPECT_EQ(told.size(), 1U) << "a form that follows a change makes none";
    EXPECT_EQ(sceneText(), before);
    hide();
    show();
    EXPECT_EQ(told.size(), 1U) << "a form that comes up makes no change";
    EXPECT_EQ(sceneText(), before);
    hide();
}

TEST_P(EveryForm, ItsSessionElementGoesThereAndBack)
{
    loadStacks(1);
    ToolForm& form = show();
    const auto saved = [&form] {
        QDomDocument document;
        QDomElement element = document.createElement("dialog");
        form.saveSession(element);
        document.appendChild(element);
        return document;
    };
    const QDomDocument first = saved();
    form.loadSession(first.documentElement());
    EXPECT_EQ(saved().toString().toStdString(), first.toString().toStdString());
    // Nothing of what it expects is there.
    form.loadSession(QDomDocument().createElement("dialog"));
    hide();
}

/// Changes every number, choice and switch of a form once.
void useAll(const QWidget& form)
{
    for (QWidget* each : form.findChildren<QWidget*>()) {
        if (!each->isEnabled() || !each->isVisible())
            continue;
        if (auto* number = qobject_cast<QAbstractSpinBox*>(each))
            number->stepUp();
        else if (auto* list = qobject_cast<QComboBox*>(each))
            list->setCurrentIndex((list->currentIndex() + 1) % std::max(1, list->count()));
        else if (auto* box = qobject_cast<QCheckBox*>(each))
            box->toggle();
        else if (auto* slider = qobject_cast<QAbstractSlider*>(each))
            slider->setValue(slider->value() + 1);
        QCoreApplication::processEvents();
    }
}

TEST_P(EveryForm, IsUsedWhileTheVolumeSpinsAndTheLastChangeIsDrawn)
{
    loadStacks(1);
    app().model().edit(Change::Pose, [](Scene& scene) { scene.view.spinY = 3; });
    // Motion along y turns about x.
    const double before = app().model().view().rotX;
    ToolForm& form = show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return app().model().view().rotX != before; }));
    if (row().kind == FormKind::Tool)
        useAll(form);
    hide();
    EXPECT_TRUE(app().model().view().isSpinning());
    // The last change comes while a frame is under way.
    changeView([](ViewState& state) {
        state.renderMode = RenderMode::Normal;
        state.spinX = state.spinY = state.spinZ = 0;
        state.colorVision = ColorVision::Normal;
        state.backgroundColor = QColor(10, 200, 30);
    });
    const auto corner = [this] {
        settle();
        return widget().screen()->grabWindow(widget().winId(), 2, 2, 1, 1).toImage().pixelColor(0, 0);
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return corner() == QColor(10, 200, 30); }));
}

/// Texts that do not fit into their widgets.
QStringList cutTexts(const QWidget& form)
{
    QStringList cut;
    for (const QLabel* label : form.findChildren<QLabel*>()) {
        if (label->isVisible() && !label->wordWrap() && !label->text().isEmpty() &&
            label->width() < label->minimumSizeHint().width())
            cut.append(label->objectName() + ": " + label->text());
    }
    for (const QAbstractButton* button : form.findChildren<QAbstractButton*>()) {
        if (button->isVisible() && !button->text().isEmpty() &&
            button->width() < button->minimumSizeHint().width())
            cut.append(button->objectName() + ": " + button->text());
    }
    return cut;
}

TEST_P(EveryForm, EveryLabelFits)
{
    loadStacks(1);
    EXPECT_EQ(cutTexts(show()).join('\n').toStdString(), "");
    hide();
}

TEST_P(EveryForm, EveryLabelFitsInAFontTwiceAsLarge)
{
    QFont large = QApplication::font();
    large.setPointSizeF(2 * large.pointSizeF());
    QApplication::setFont(large);
    loadStacks(1);
    EXPECT_EQ(cutTexts(show()).join('\n').toStdString(), "");
    hide();
}

TEST_P(EveryForm, StandsOnTheScreenAndClearOfTheMenu)
{
    ToolForm& form = show();
    const QRect frame = form.frame()->frameGeometry();
    EXPECT_TRUE(form.screen()->geometry().contains(frame))
        << frame.x() << " " << frame.y() << " " << frame.width() << " " << frame.height();
    const QMenuBar* menu = app().mainForm().menuBar();
    EXPECT_FALSE(frame.intersects({menu->mapToGlobal(QPoint()), menu->size()}))
        << frame.x() << " " << frame.y() << " " << frame.width() << " " << frame.height() << ", menu "
        << menu->mapToGlobal(QPoint()).x() << " " << menu->mapToGlobal(QPoint()).y() << " " << menu->width();
    hide();
}

INSTANTIATE_TEST_SUITE_P(List, EveryForm, ::testing::ValuesIn(madeForms()), nameOf);

using FormList = test::AppTest;

TEST(FormRows, HaveOneRowForEachId)
{
    std::set<FormId> ids;
    std::set<QString> actions;
    for (const FormRow& row : formRows()) {
        EXPECT_TRUE(ids.insert(row.id).second) << row.name;
        const bool hasAction = *row.action != '\0';
        EXPECT_TRUE(!hasAction || actions.insert(row.action).second) << row.action;
    }
    EXPECT_EQ(ids.size(), 22U);
}

TEST(FormRows, AreMadeInTheirOrder)
{
    const char* order[] = {
        "Palette Editor", "StackOpen",  "About",         "Analyze",       "Matrix",         "Cut",
        "Import",         "Manager",    "Merge",         "Movie",         "Movie2",         "Preferences",
        "Render Options", "Statistics", "Sequence Tiff", "Shader Tricks", "Render Options", "View",
        "ZScale",         "Import",     "MaskEdit",      "Shader Editor"};
    std::size_t i = 0;
    for (const FormRow& row : formRows())
        EXPECT_STREQ(row.name, order[i++]);
}

TEST_F(FormList, TheWindowMenuHoldsTheFormsInTheirPlaces)
{
    QStringList texts;
    for (const QAction* menu : app().mainForm().menuBar()->actions()) {
        if (menu->text() != "&Window")
            continue;
        for (const QAction* action : menu->menu()->actions())
            texts.append(action->text());
    }
    EXPECT_EQ(texts,
              QStringList({"Stack Manager", "Palette Editor", "Renderer", "Snapshot", "Movie Maker",
                           "Advanced Movie Maker", "View", "Cut Planes", "Z Intensity Correction", "Merger",
                           "Mask of Zero", "Channel Unmixing", "Shader Tricks", "Statistics", "Lighting"}));
}

TEST_F(FormList, AnActionIsEnabledExactlyWhenItsFormIsThere)
{
    for (const FormRow& row : formRows()) {
        const QAction* action = app().mainForm().action(row.action);
        EXPECT_TRUE(action == nullptr || action->isEnabled() == (row.make != nullptr)) << row.action;
    }
}

TEST_F(FormList, AToggleShowsItsFormAndFollowsIt)
{
    for (const FormRow& row : formRows()) {
        QAction* action = app().mainForm().action(row.action);
        if (row.make == nullptr || action == nullptr || !action->isCheckable())
            continue;
        action->trigger();
        ASSERT_TRUE(app().forms().form(row.id)->isShown()) << row.name;
        EXPECT_TRUE(action->isChecked());
        app().forms().form(row.id)->frame()->close();
        EXPECT_FALSE(action->isChecked()) << row.name;
        action->trigger();
        EXPECT_TRUE(app().forms().form(row.id)->isShown()) << row.name;
        action->trigger();
        EXPECT_FALSE(app().forms().form(row.id)->isShown()) << row.name;
    }
}

/// Tells whether somebody listens to a signal.
struct Ear : QObject
{
    template <class Signal>
    static bool hears(const QObject& sender, Signal signal)
    {
        return (sender.*(&Ear::isSignalConnected))(QMetaMethod::fromSignal(signal));
    }
};

TEST_F(FormList, EveryEnabledActionHasSomebodyWhoHearsIt)
{
    load({picFile("a.pic")});
    for (const QAction* action : app().mainForm().findChildren<QAction*>()) {
        const bool isPlain = !action->isSeparator() && action->menu() == nullptr;
        // Those without a menu are made and lead nowhere.
        if (!isPlain || !action->isEnabled() || action->associatedWidgets().isEmpty())
            continue;
        const bool heard = Ear::hears(*action, &QAction::triggered) || Ear::hears(*action, &QAction::toggled);
        EXPECT_TRUE(heard) << action->objectName().toStdString() << " " << action->text().toStdString();
    }
}

class Docks : public test::AppTest
{
protected:
    QDockWidget& dock()
    {
        auto* found = app().mainForm().findChild<QDockWidget*>("dockwindowStack_ManagerAction");
        if (found == nullptr)
            throw std::runtime_error("no dock");
        return *found;
    }
};

TEST_F(Docks, AToolFormFloatsUntilItIsDocked)
{
    EXPECT_TRUE(dock().isFloating());
    EXPECT_FALSE(dock().isVisible());
    ToolForm* manager = app().forms().create(FormId::Manager, true);
    EXPECT_TRUE(dock().isVisible());
    EXPECT_TRUE(dock().isFloating());
    EXPECT_EQ(dock().windowTitle(), "Stack Manager");
    EXPECT_TRUE(dock().isAncestorOf(manager));
}

TEST_F(Docks, AFormThatIsDockedTakesNoRoomFromThePicture)
{
    app().forms().create(FormId::Manager, true);
    QCoreApplication::processEvents();
    const QSize picture = widget().size();
    dock().setFloating(false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return app().mainForm().width() > picture.width() + 100; }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return widget().size() == picture; }));
}

TEST_F(Docks, AFormThatFloatsAgainLeavesThePictureAsItIs)
{
    app().forms().create(FormId::Manager, true);
    QCoreApplication::processEvents();
    const QSize picture = widget().size();
    const int width = app().mainForm().width();
    dock().setFloating(false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return app().mainForm().width() > picture.width() + 100; }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return widget().size() == picture; }));
    // The size of the picture is taken over once it has come to rest.
    QCoreApplication::processEvents();
    dock().setFloating(true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return app().mainForm().width() == width; }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return widget().size() == picture; }));
}

TEST_F(Docks, ADockedFormIsFoundDockedAfterARestart)
{
    app().forms().create(FormId::Manager, true);
    app().mainForm().addDockWidget(Qt::RightDockWidgetArea, &dock());
    dock().setFloating(false);
    QCoreApplication::processEvents();
    ASSERT_TRUE(dock().isVisible());
    ASSERT_TRUE(app().mainForm().close());
    restart();
    EXPECT_FALSE(dock().isFloating());
    EXPECT_TRUE(dock().isVisible());
    EXPECT_EQ(app().mainForm().dockWidgetArea(&dock()), Qt::RightDockWidgetArea);
    EXPECT_TRUE(app().mainForm().action("windowStack_ManagerAction")->isChecked());
    load({picFile("a.pic")});
    EXPECT_EQ(app().forms().form(FormId::Manager)->findChildren<QLabel*>("lblFilename").size(), 1);
}

TEST_F(Docks, AFloatingFormIsFoundWhereItWas)
{
    app().forms().create(FormId::Manager, true);
    dock().move(40, 500);
    QCoreApplication::processEvents();
    const QPoint place = dock().pos();
    ASSERT_TRUE(app().mainForm().close());
    restart();
    EXPECT_TRUE(dock().isFloating());
    EXPECT_TRUE(dock().isVisible());
    EXPECT_EQ(dock().pos(), place);
}

} // namespace
} // namespace tirn
