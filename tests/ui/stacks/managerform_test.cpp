// The stack manager, driven in the whole program.

#include "ui/stacks/managerform.h"

#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTableWidget>
#include <QTest>
#include <QToolButton>

#include "ui/stacks/managertexts.h"
#include "ui/stacks/stackdimensionsform.h"
#include "ui/widgets/floatspinbox.h"
#include "uisupport/apptest.h"
#include "uisupport/modalanswers.h"

namespace tirn {
namespace {

class Manager : public test::AppTest
{
protected:
    ManagerForm& form()
    {
        app().forms().create(FormId::Manager, true);
        return *static_cast<ManagerForm*>(app().forms().form(FormId::Manager));
    }
    TirnStackItem& row(int i) { return *form().item(i); }
    QTableWidget& table() { return *form().findChild<QTableWidget*>("tblManager"); }
    QString text(int i, const char* label) { return row(i).findChild<QLabel*>(label)->text(); }
    QComboBox& combo(int i, int channel, int column)
    {
        return *static_cast<QComboBox*>(
            row(i).findChild<QTableWidget*>("tblChannels")->cellWidget(channel, column));
    }
    ChannelDisplay display(int channel)
    {
        return app().scene().current()->channels()[static_cast<std::size_t>(channel)].display;
    }
    bool isPlaying()
    {
        return app().model().read([](const Scene& scene) { return scene.isPlaying(); });
    }
    QAction* entry(const QString& text)
    {
        for (QAction* each : form().findChild<QMenu*>("rowMenu")->actions()) {
            if (each->text() == text)
                return each;
        }
        return nullptr;
    }
    /// A volume of several time points, which are all the same file.
    void addSeries(int timePoints)
    {
        load({picFile("series.pic")});
        app().closeAll();
        PaletteList palettes;
        palettes.push_back(std::make_unique<Palette>("", 8, app().paletteTables()));
        auto array = std::make_unique<VoxelArray>(VolumeOptions());
        for (int t = 0; t < timePoints; ++t) {
            auto image = std::make_shared<ImageFile>(QStringList(path("series.pic")));
            ASSERT_TRUE(image->read());
            array->appendImage(image);
        }
        array->stack() = array->images().front()->attributes();
        array->setChannelCount(1);
        array->setTimePoints(timePoints);
        app().stacks().add(std::move(array), std::move(palettes));
        settle();
    }
};

TEST_F(Manager, HasARowForEachStack)
{
    form();
    EXPECT_EQ(form().windowTitle(), "Stack Manager");
    EXPECT_EQ(table().rowCount(), 0);
    load({picFile("a.pic")});
    load({picFile("b.pic"), picFile("c.pic")});
    ASSERT_EQ(form().itemCount(), 2);
    EXPECT_EQ(table().rowCount(), 2);
    EXPECT_EQ(row(0).id(), app().scene().arrays[0]->id());
    EXPECT_EQ(text(0, "lblFilename"), fileNameText(*app().scene().arrays[0]));
    EXPECT_EQ(text(0, "lblFileType"), imageTypeRowName(ImageType::BioRad) + "8bit");
    EXPECT_EQ(text(0, "lblStackDims"), "x: 16 y: 12 \nz: 0-7 of 8");
    EXPECT_EQ(text(0, "lblDetails"), "time points: 1 channels: 1");
    EXPECT_EQ(text(1, "lblDetails"), "time points: 1 channels: 2");
}

TEST_F(Manager, RowsOfStacksThatWereThereBeforeStandToo)
{
    load({picFile("a.pic")});
    EXPECT_EQ(form().itemCount(), 1);
    form().initTable();
    EXPECT_EQ(form().itemCount(), 1);
    EXPECT_EQ(table().rowCount(), 1);
}

TEST_F(Manager, ShowsThirtyCharactersOfTheName)
{
    load({picFile("a-name-that-is-much-longer-than-thirty.pic")});
    form();
    EXPECT_EQ(text(0, "lblFilename").size(), 30);
}

TEST_F(Manager, OneTimePointNeedsNoPlayer)
{
    load({picFile("a.pic")});
    EXPECT_FALSE(row(0).findChild<QWidget*>("grpTime")->isVisibleTo(&row(0)));
}

TEST_F(Manager, SeveralTimePointsArePlayed)
{
    addSeries(3);
    form();
    EXPECT_TRUE(row(0).findChild<QWidget*>("grpTime")->isVisible());
    auto* slider = row(0).findChild<QSlider*>("movieSlider");
    EXPECT_EQ(slider->maximum(), 2);
    EXPECT_EQ(text(0, "lblFrame"), "00");
    EXPECT_EQ(text(0, "lblFrameRate"), "FrameRate");
    EXPECT_EQ(row(0).findChild<QToolButton*>("btnStart")->toolTip(), "Rewind to first time point.");
    EXPECT_EQ(row(0).findChild<QToolButton*>("btnStop")->toolTip(), "Stop moving through the time points.");
    EXPECT_EQ(row(0).findChild<QToolButton*>("btnPlay")->toolTip(), "Play the time points.");
    QSignalSpy changed(&form(), &ManagerForm::timepointChanged);
    QTest::mouseClick(row(0).findChild<QToolButton*>("btnEnd"), Qt::LeftButton);
    EXPECT_EQ(app().scene().current()->timePoint(), 2);
    EXPECT_EQ(text(0, "lblFrame"), "02");
    QTest::mouseClick(row(0).findChild<QToolButton*>("btnStart"), Qt::LeftButton);
    EXPECT_EQ(app().scene().current()->timePoint(), 0);
    EXPECT_EQ(changed.size(), 2);
}

TEST_F(Manager, PlayingAndStoppingGoToTheRenderThread)
{
    addSeries(3);
    form();
    row(0).findChild<QSpinBox*>("spnFrameRate")->setValue(20);
    QSignalSpy steps(&widget(), &TirnWidget::timePointChanged);
    QTest::mouseClick(row(0).findChild<QToolButton*>("btnPlay"), Qt::LeftButton);
    EXPECT_TRUE(isPlaying());
    EXPECT_EQ(view().timeRate, 20);
    auto* slider = row(0).findChild<QSlider*>("movieSlider");
    // The slider follows what the thread does.
    EXPECT_TRUE(QTest::qWaitFor([slider] { return slider->value() == 1; }, 5000));
    QTest::mouseClick(row(0).findChild<QToolButton*>("btnStop"), Qt::LeftButton);
    EXPECT_FALSE(isPlaying());
    settle();
    EXPECT_EQ(slider->value(), app().scene().current()->timePoint());
}

TEST_F(Manager, PlayingAnotherStackShowsItFirst)
{
    addSeries(2);
    load({picFile("b.pic")});
    form();
    ASSERT_EQ(app().currentIndex(), 1);
    QTest::mouseClick(row(0).findChild<QToolButton*>("btnPlay"), Qt::LeftButton);
    EXPECT_EQ(app().currentIndex(), 0);
    EXPECT_TRUE(isPlaying());
    row(0).stop();
}

TEST_F(Manager, NothingIsPlayedWhileAMovieIsRecorded)
{
    addSeries(2);
    form();
    const auto record = [this](bool on) {
        app().model().edit({}, [on](Scene& scene) { scene.recording = on; });
    };
    record(true);
    row(0).play();
    EXPECT_FALSE(isPlaying());
    record(false);
    row(0).play();
    record(true);
    row(0).stop();
    EXPECT_TRUE(isPlaying());
    record(false);
    row(0).stop();
    EXPECT_FALSE(isPlaying());
}

TEST_F(Manager, TheNextFrameIsShownWithoutGoingThere)
{
    addSeries(3);
    form();
    row(0).nextFrame();
    EXPECT_EQ(row(0).findChild<QSlider*>("movieSlider")->value(), 1);
    EXPECT_EQ(app().scene().current()->timePoint(), 0);
}

TEST_F(Manager, AMovieTakesThePlayerAwayAndGivesItBack)
{
    addSeries(2);
    Q_EMIT form().prepMovie();
    const char* names[] = {"btnStart",    "btnStop",  "btnPlay",      "btnEnd",
                           "movieSlider", "lblFrame", "lblFrameRate", "spnFrameRate"};
    for (const char* name : names)
        EXPECT_FALSE(row(0).findChild<QWidget*>(name)->isEnabled()) << name;
    EXPECT_TRUE(row(0).findChild<QWidget*>("btnStop")->isVisible());
    EXPECT_FALSE(row(0).findChild<QWidget*>("btnPlay")->isVisible());
    Q_EMIT form().returnMovie();
    for (const char* name : names) {
        EXPECT_TRUE(row(0).findChild<QWidget*>(name)->isEnabled()) << name;
        EXPECT_TRUE(row(0).findChild<QWidget*>(name)->isVisible()) << name;
    }
}

TEST_F(Manager, ChannelsHaveAPaletteAndAState)
{
    load({picFile("a.pic"), picFile("b.pic"), mapFile("red.map"), mapFile("green.map")});
    QSignalSpy palettes(&form(), &ManagerForm::paletteAssignment);
    QSignalSpy states(&form(), &ManagerForm::paletteStateChanged);
    auto* channels = row(0).findChild<QTableWidget*>("tblChannels");
    ASSERT_EQ(channels->rowCount(), 2);
    EXPECT_TRUE(channels->isColumnHidden(2)) << "no channel toggles";
    EXPECT_EQ(channels->verticalHeaderItem(1)->text(), "Channel 2");
    EXPECT_EQ(combo(0, 1, 0).currentText(), "green.map");
    combo(0, 1, 0).setCurrentIndex(0);
    EXPECT_EQ(display(1).palette, 0);
    EXPECT_EQ(palettes.size(), 1);
    EXPECT_TRUE(log.contains("setting palette 1 to 0"));
    const ChannelState expected[] = {ChannelState::Shown, ChannelState::Hidden, ChannelState::FlashOn,
                                     ChannelState::PaletteSwap};
    const QStringList items = {"On", "Off", "Flash", "Toggle"};
    for (int item = 3; item >= 0; --item) {
        EXPECT_EQ(combo(0, 0, 1).itemText(item), items[item]);
        combo(0, 0, 1).setCurrentIndex(item);
        widget().stopAndWait();
        const ChannelState state = display(0).state;
        // The thread may have turned a flash off already.
        EXPECT_TRUE(state == expected[item] || (item == 2 && state == ChannelState::FlashOff)) << item;
    }
    EXPECT_EQ(states.size(), 4);
}

TEST_F(Manager, AChannelTogglesToThePaletteThatIsChosenForItAndBack)
{
    load({picFile("a.pic"), mapFile("red.map")});
    app().loads().loadPalettes({mapFile("green.map"), mapFile("blue.map")});
    form();
    combo(0, 0, 1).setCurrentIndex(3);
    ASSERT_FALSE(row(0).findChild<QTableWidget*>("tblChannels")->isColumnHidden(2));
    ASSERT_EQ(combo(0, 0, 2).itemText(2), "blue.map");
    combo(0, 0, 2).setCurrentIndex(2);
    const auto drawn = [this] {
        return app().model().read(
            [](const Scene& scene) { return scene.current()->channels()[0].display.palette; });
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return drawn() == 2; }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return drawn() == 0; }));
    // Whatever is drawn just now: what is named is drawn when it is named, and when the toggling ends.
    ASSERT_TRUE(QTest::qWaitFor([&] { return drawn() == 2; }));
    EXPECT_EQ(combo(0, 0, 0).currentText(), "red.map");
    combo(0, 0, 1).setCurrentIndex(0);
    settle();
    EXPECT_EQ(drawn(), 0);
    EXPECT_TRUE(row(0).findChild<QTableWidget*>("tblChannels")->isColumnHidden(2));
}

TEST_F(Manager, ChoosingAPaletteIsTakenBackByUndo)
{
    load({picFile("a.pic"), mapFile("red.map")});
    app().loads().loadPalettes({mapFile("green.map")});
    form();
    QAction* undo = app().mainForm().action("editUndoAction");
    EXPECT_FALSE(undo->isEnabled());
    combo(0, 0, 0).setCurrentIndex(1);
    EXPECT_EQ(display(0).palette, 1);
    ASSERT_TRUE(undo->isEnabled());
    undo->trigger();
    EXPECT_EQ(display(0).palette, 0);
    EXPECT_EQ(combo(0, 0, 0).currentIndex(), 0);
    app().mainForm().action("editRedoAction")->trigger();
    EXPECT_EQ(display(0).palette, 1);
    EXPECT_EQ(combo(0, 0, 0).currentIndex(), 1);
}

TEST_F(Manager, PlayingEndsWithItsStackAndWhenAnotherIsShown)
{
    addSeries(2);
    load({picFile("b.pic")});
    form();
    row(0).play();
    ASSERT_TRUE(isPlaying());
    app().setCurrentArray(1);
    EXPECT_FALSE(isPlaying());
    EXPECT_TRUE(QTest::qWaitFor([this] { return !widget().renderThread().isRunning(); }));
    row(0).play();
    ASSERT_TRUE(isPlaying());
    app().closeStack(0);
    EXPECT_FALSE(isPlaying());
    EXPECT_TRUE(QTest::qWaitFor([this] { return !widget().renderThread().isRunning(); }));
}

TEST(StackManagerStates, ToggleSwapsPalettesAndNothingTakesTurns)
{
    EXPECT_EQ(stateOfItem(0), ChannelState::Shown);
    EXPECT_EQ(stateOfItem(1), ChannelState::Hidden);
    EXPECT_EQ(stateOfItem(2), ChannelState::FlashOn);
    EXPECT_EQ(stateOfItem(3), ChannelState::PaletteSwap);
    for (int state = 0; state <= 6; ++state)
        EXPECT_LT(itemOfState(static_cast<ChannelState>(state)), 4);
    EXPECT_EQ(itemOfState(ChannelState::FlashOff), 2);
    EXPECT_EQ(itemOfState(ChannelState::PaletteSwap), 3);
}

TEST_F(Manager, APaletteThatComesStandsInTheLists)
{
    load({picFile("a.pic")});
    form();
    app().loads().loadPalettes({mapFile("red.map")});
    EXPECT_EQ(combo(0, 0, 0).count(), 2);
    EXPECT_EQ(combo(0, 0, 0).itemText(1), "red.map");
    EXPECT_EQ(combo(0, 0, 0).currentIndex(), 0);
}

TEST_F(Manager, MakesAnotherStackCurrentAndMarksIt)
{
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    form();
    EXPECT_EQ(table().verticalHeaderItem(0)->text(), "");
    EXPECT_NE(table().verticalHeaderItem(1)->text(), "");
    table().setCurrentCell(0, 0);
    entry("Make current array")->trigger();
    EXPECT_EQ(app().currentIndex(), 0);
    EXPECT_NE(table().verticalHeaderItem(0)->text(), "");
    EXPECT_EQ(table().verticalHeaderItem(1)->text(), "");
}

TEST_F(Manager, TheContextMenuActsOnItsRow)
{
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    QStringList texts;
    for (const QAction* each : form().findChild<QMenu*>("rowMenu")->actions())
        texts.append(each->isSeparator() ? "-" : each->text());
    EXPECT_EQ(texts, QStringList({"Edit palette", "-", "Make current array", "Correct voxel dimensions",
                                  "Load stack", "Close stack"}));
    form().contextMenuRequested_(0, 0, QPoint(10, 10));
    EXPECT_TRUE(form().findChild<QMenu*>("rowMenu")->isVisible());
    EXPECT_EQ(table().currentRow(), 0);
    form().findChild<QMenu*>("rowMenu")->close();
    form().contextMenuRequested_(7, 0, QPoint(10, 10));
    EXPECT_FALSE(form().findChild<QMenu*>("rowMenu")->isVisible());
}

TEST_F(Manager, ClosingARowBelowTheCurrentOneLowersIt)
{
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    load({picFile("c.pic")});
    form();
    QSignalSpy closed(&form(), &ManagerForm::currentStackClosed);
    table().setCurrentCell(0, 0);
    entry("Close stack")->trigger();
    EXPECT_EQ(app().arrayCount(), 2);
    EXPECT_EQ(app().currentIndex(), 1);
    EXPECT_EQ(form().itemCount(), 2);
    EXPECT_EQ(closed.size(), 1);
    EXPECT_EQ(text(1, "lblFilename"), fileNameText(*app().scene().arrays[1]));
}

TEST_F(Manager, ClosingTheCurrentOneAtZeroKeepsZeroOnTheOther)
{
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    app().setCurrentArray(0);
    const VoxelArray* other = app().scene().arrays[1].get();
    form();
    table().setCurrentCell(0, 0);
    form().closeStack();
    EXPECT_EQ(app().currentIndex(), 0);
    EXPECT_EQ(app().scene().current(), other);
}

TEST_F(Manager, ClosingTheLastOneLeavesAnEmptyTable)
{
    load({picFile("a.pic")});
    form();
    int index = 7;
    QObject::connect(&app(), &TirnApplication::currentArrayChanged, &form(),
                     [&] { index = app().currentIndex(); });
    form().closeStack();
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_EQ(index, -1);
    form().closeStack();
    form().makeCurrent();
    form().changeVoxelDimensions();
    EXPECT_EQ(app().arrayCount(), 0);
}

TEST_F(Manager, ClosingAllEmptiesTheTable)
{
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    form();
    app().closeAll();
    EXPECT_EQ(table().rowCount(), 0);
    form().removeItem(3);
    form().removeItem(-1);
}

TEST_F(Manager, VoxelSizesAreCorrected)
{
    load({picFile("a.pic")});
    form();
    EXPECT_FALSE(row(0).findChild<QLabel*>("lblDim")->isVisible());
    QSignalSpy scales(&form(), &ManagerForm::scaleChanged);
    test::ModalAnswers answers;
    answers.add([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Voxel Dimensions");
        dialog.findChild<FloatSpinBox*>("spnX")->setDoubleValue(0.5);
        dialog.findChild<FloatSpinBox*>("spnY")->setDoubleValue(0.5);
        dialog.findChild<FloatSpinBox*>("spnZ")->setDoubleValue(1.0);
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    entry("Correct voxel dimensions")->trigger();
    EXPECT_EQ(text(0, "lblDim"), "x: 0.5000µm y: 0.5000µm z: 1.0000µm");
    const AxisScale scale = app().scene().current()->scale;
    EXPECT_EQ(scale, (AxisScale{0.5, 0.5, 1.0}));
    ASSERT_EQ(scales.size(), 1);
    EXPECT_EQ(scales[0][0].toDouble(), 0.5);
}

TEST_F(Manager, AnUnknownDepthLeavesTwoSizesAndBringsTheScaleBackToOne)
{
    load({picFile("a.pic")});
    form();
    app().model().edit(Change::Scale, [](Scene& scene) { scene.current()->scale = {0.25, 0.5, 3}; });
    test::ModalAnswers answers;
    answers.add([](QDialog& dialog) {
        static_cast<StackDimensionsForm&>(dialog).setDimensions(1, 1, 0);
        dialog.accept();
    });
    form().changeVoxelDimensions();
    EXPECT_EQ(text(0, "lblDim"), "x: 1.0000µm y: 1.0000µm");
    EXPECT_EQ(app().scene().current()->scale, (AxisScale{1, 1, 1}));
}

TEST_F(Manager, LeavingTheSizesAloneChangesNothing)
{
    load({QString(TIRN_TEST_DATA) + "/golgi_16bit.pic"});
    form();
    const AxisScale scale = app().scene().current()->scale;
    test::ModalAnswers answers;
    form().changeVoxelDimensions();
    EXPECT_EQ(answers.shown(), QStringList("Voxel Dimensions"));
    EXPECT_EQ(app().scene().current()->scale, scale);
}

TEST(StackManagerTexts, ADepthThatIsNotUsedWholeIsTold)
{
    ImageAttributes stack;
    stack.bitDepth = 16;
    stack.maxValue = 4095;
    EXPECT_EQ(stack.depthText(), "16bit really 12bit");
}

TEST(StackManagerTexts, SizesAreThoseOfTheFile)
{
    VoxelArray array{VolumeOptions()};
    array.stack().x = 128;
    array.stack().y = 64;
    array.stack().z = 10;
    array.sliceFirst = 2;
    array.sliceLast = 20;
    array.sliceStep = 2;
    array.subsample = 4;
    EXPECT_EQ(stackSizeText(array), "x: 512 y: 256 \nz: 2-20 of 10 step 2 subsampled 4x");
}

} // namespace
} // namespace tirn
