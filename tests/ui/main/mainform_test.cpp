// The main window, driven in the whole program.

#include <QDialogButtonBox>
#include <QDropEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include "ui/main/mainactions.h"
#include "uisupport/apptest.h"
#include "uisupport/modalanswers.h"

namespace tirn {
namespace {

RecentStack recentStack(const std::vector<QStringList>& files, int channels, int timePoints)
{
    RecentStack stack;
    stack.files = files;
    stack.channels = channels;
    stack.timePoints = timePoints;
    return stack;
}

class MainWindow : public test::AppTest
{
protected:
    MainForm& form() { return app().mainForm(); }
    QAction* action(const char* name) { return form().action(name); }

    QMenu* menu(const QString& path)
    {
        QMenu* found = nullptr;
        for (const QString& title : path.split('/')) {
            QWidget* holder = found != nullptr ? static_cast<QWidget*>(found) : form().menuBar();
            found = nullptr;
            for (QAction* each : holder->actions()) {
                if (each->menu() != nullptr && each->text() == title)
                    found = each->menu();
            }
            if (found == nullptr)
                return nullptr;
        }
        return found;
    }
    /// Texts of a menu's entries; "-" for a separator.
    QStringList entries(const QString& path)
    {
        QStringList texts;
        for (const QAction* each : menu(path)->actions())
            texts.append(each->isSeparator() ? "-" : each->text());
        return texts;
    }
    void drop(const QStringList& names)
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& name : names)
            urls.append(QUrl::fromLocalFile(name));
        data.setUrls(urls);
        drop(data);
    }
    bool drop(const QMimeData& data)
    {
        QDragEnterEvent enter({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&form(), &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent event({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&form(), &event);
        settle();
        return true;
    }
    QString directory() const { return QFileInfo(path("x")).path(); }
    /// Keeps what stacks the window asks for.
    void catchStacks()
    {
        QObject::connect(&form(), &MainForm::loadRecentStack, &form(),
                         [this](const std::vector<QStringList>& files, int channels, int timePoints) {
                             wanted.push_back(recentStack(files, channels, timePoints));
                         });
    }
    QSettings store() { return {QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2"}; }

    void changePalette(std::size_t index)
    {
        PaletteValues values = app().scene().palettes[index]->values();
        values.red[7] = values.red[7] < 100 ? 200 : 50;
        app().model().edit(Change::Colours, [&](Scene& scene) { scene.palettes[index]->setValues(values); });
    }

    std::vector<RecentStack> wanted;
};

TEST_F(MainWindow, HasTheMenusInOrder)
{
    QStringList bar;
    for (const QAction* each : form().menuBar()->actions())
        bar.append(each->text());
    EXPECT_EQ(bar, QStringList({"&File", "&Edit", "&View", "&Window", "&Help"}));
    EXPECT_EQ(entries("&File"),
              QStringList({"Load", "Save", "Close", "Export", "-", "Print...", "-", "E&xit"}));
    EXPECT_EQ(entries("&File/Load"),
              QStringList({"Stack...", "Palette...", "New Palette", "Raw Stack...", "Session...",
                           "Sequence Tiff...", "Segmentation...", "Z Correction Curve...", "-",
                           "Recent Stacks", "Recent Palettes"}));
    EXPECT_EQ(entries("&File/Save"), QStringList({"Save Session...", "Save Palette..."}));
    EXPECT_EQ(entries("&File/Close"), QStringList({"Stack", "Palette", "Segmentation", "All"}));
    EXPECT_EQ(entries("&File/Export"),
              QStringList({"Export Core...", "Export Z corrected...", "All Changes"}));
    EXPECT_EQ(entries("&Edit"),
              QStringList({"&Undo", "&Redo", "&Copy", "-", "Filter", "Flip", "Invert Intensities", "-",
                           "Show Segmentation", "Stretch to used bits", "Preferences..."}));
    EXPECT_EQ(entries("&View"),
              QStringList({"&Fit", "&Reset View", "-", "From the Front", "From the Back", "From the Left",
                           "From the Right", "From Above", "From Below", "-", "Ruler"}));
    EXPECT_EQ(entries("&Edit/Filter"),
              QStringList({"Mean", "Median", "Min", "Max", "Custom...", "Background Subtract"}));
    EXPECT_EQ(entries("&Edit/Flip"), QStringList({"X Axis", "Y Axis", "Z Axis"}));
    EXPECT_EQ(entries("&Window"),
              QStringList({"Stack Manager", "Palette Editor", "Renderer", "Snapshot", "Movie Maker",
                           "Advanced Movie Maker", "View", "Cut Planes", "Z Intensity Correction", "Merger",
                           "Mask of Zero", "Channel Unmixing", "Shader Tricks", "Statistics", "Lighting"}));
    EXPECT_EQ(entries("&Help"),
              QStringList({"&Contents...", "Video Card Capabilities", "&About", "Check for Updates..."}));
}

TEST_F(MainWindow, HasTheShortcuts)
{
    const auto keys = [&](const char* name) { return action(name)->shortcut().toString(); };
    EXPECT_EQ(keys("fileSaveCoreAction"), "Ctrl+S");
    EXPECT_EQ(keys("fileExitAction"), "Ctrl+Q");
    EXPECT_EQ(keys("editUndoAction"), "Ctrl+Z");
    EXPECT_EQ(keys("editRedoAction"), "Ctrl+Y");
    EXPECT_EQ(keys("editCopyAction"), "Ctrl+C");
    EXPECT_EQ(action("editCopyAction")->toolTip(), "Copy the current window contents to the clipboard.");
}

TEST_F(MainWindow, ActionsWithoutAMenuAreMadeAllTheSame)
{
    for (const char* name : {"fileOpenAction", "fileSaveAsAction", "filePrintAction", "editCutAction",
                             "editPasteAction", "editFindAction", "helpIndexAction"}) {
        ASSERT_NE(action(name), nullptr) << name;
        EXPECT_TRUE(action(name)->associatedWidgets().isEmpty()) << name;
    }
}

TEST_F(MainWindow, ADisabledActionSaysWhy)
{
    for (const ActionRow& row : mainActions()) {
        if (row.enabled || *row.name == '\0')
            continue;
        EXPECT_FALSE(action(row.name)->isEnabled()) << row.name;
        EXPECT_NE(action(row.name)->toolTip(), action(row.name)->text()) << row.name;
    }
    EXPECT_TRUE(menu("&Window")->toolTipsVisible());
}

TEST_F(MainWindow, TheStatusBarHasFourLabels)
{
    const auto label = [&](const char* name) { return form().findChild<QLabel*>(name); };
    EXPECT_EQ(label("alpha")->text(), "alpha");
    EXPECT_EQ(label("Zcorr")->text(), "Z corr");
    EXPECT_FALSE(label("Zcorr")->isVisible());
    EXPECT_EQ(label("tex")->text(), "none");
    EXPECT_GE(label("tex")->width(), 35);
    EXPECT_TRUE(label("memory")->text().startsWith("Memory: "));
    EXPECT_TRUE(label("memory")->text().endsWith("MB"));
    EXPECT_GE(label("memory")->width(), 90);
    form().updateBlendingStatus(GL_MAX);
    EXPECT_EQ(label("alpha")->text(), "max");
    form().updateBlendingStatus(GL_FUNC_ADD);
    EXPECT_EQ(label("alpha")->text(), "alpha");
    EXPECT_LT(label("alpha")->x(), label("tex")->x());
    EXPECT_LT(label("tex")->x(), label("memory")->x());
}

TEST_F(MainWindow, ALoadedStackStandsInTheRecentOnes)
{
    load({picFile("a&b.pic")});
    const QList<QAction*> recent = menu("&File/Load/Recent Stacks")->actions();
    ASSERT_EQ(recent.size(), 1);
    EXPECT_EQ(recent[0]->data().toString(), path("a&b.pic"));
    EXPECT_TRUE(recent[0]->text().contains("&&"));
}

TEST_F(MainWindow, ARecentStackIsLoadedAgain)
{
    form().addRecentStack(recentStack({{"x0.pic", "x1.pic"}, {"y0.pic", "y1.pic"}}, 2, 2));
    form().addRecentStack(recentStack({{"z.stk"}}, 1, 1));
    catchStacks();
    menu("&File/Load/Recent Stacks")->actions()[1]->trigger();
    EXPECT_EQ(wanted, (std::vector{recentStack({{"x0.pic", "x1.pic"}, {"y0.pic", "y1.pic"}}, 2, 2)}));
}

TEST_F(MainWindow, AStackOfSeveralFilesComesBackFromTheRecentOnes)
{
    load({picFile("a.pic"), picFile("b.pic")});
    app().closeAll();
    menu("&File/Load/Recent Stacks")->actions().first()->trigger();
    app().loads().fileThread().wait();
    settle();
    ASSERT_EQ(app().arrayCount(), 1);
    EXPECT_EQ(app().scene().current()->channelCount(), 2);
    EXPECT_EQ(app().scene().current()->timePointCount(), 1);
    EXPECT_EQ(menu("&File/Load/Recent Stacks")->actions().size(), 1);
}

TEST_F(MainWindow, ThreeDroppedStacksAreThreeChannelsOrThreeTimePoints)
{
    drop({picFile("a.pic"), picFile("b.pic"), picFile("c.pic")});
    app().loads().fileThread().wait();
    settle();
    ASSERT_EQ(app().arrayCount(), 1);
    EXPECT_EQ(app().scene().current()->channelCount(), 3);
    EXPECT_EQ(app().scene().current()->timePointCount(), 1);
    QStringList series;
    for (const char* name : {"a.stk", "b.stk", "c.stk"}) {
        ASSERT_TRUE(QFile::copy(QString(TIRN_TEST_DATA) + "/stk/scifio_test.stk", path(name)));
        series.append(path(name));
    }
    drop(series);
    app().loads().fileThread().wait();
    settle();
    ASSERT_EQ(app().arrayCount(), 2);
    EXPECT_EQ(app().scene().current()->channelCount(), 1);
    EXPECT_EQ(app().scene().current()->timePointCount(), 3);
}

TEST_F(MainWindow, ADroppedFolderOfSinglePagesOpensTheSequenceForm)
{
    drop({QString(TIRN_TEST_DATA) + "/tiff-series/c_elegans_em"});
    settle();
    EXPECT_TRUE(app().forms().form(FormId::SequenceTiff)->isVisible());
    EXPECT_EQ(app().arrayCount(), 0);
}

TEST_F(MainWindow, TheEleventhRecentStackPushesOutTheOldest)
{
    for (int i = 0; i < 11; ++i)
        form().addRecentStack(recentStack({{QString("s%1.pic").arg(i)}}, 1, 1));
    const QList<QAction*> recent = menu("&File/Load/Recent Stacks")->actions();
    ASSERT_EQ(recent.size(), 10);
    EXPECT_EQ(recent.first()->text(), "s10.pic");
    EXPECT_EQ(recent.last()->text(), "s1.pic");
}

TEST_F(MainWindow, ALongNameIsCutInTheMiddle)
{
    const QString name = QString(90, 'a') + QString(90, 'b');
    form().paletteLoaded(name);
    const QAction* entry = menu("&File/Load/Recent Palettes")->actions().first();
    EXPECT_EQ(entry->text(), QString(50, 'a') + QChar(0x2026) + QString(50, 'b'));
    EXPECT_EQ(entry->data().toString(), name);
}

TEST_F(MainWindow, ARecentPaletteIsLoadedAgain)
{
    load({mapFile("red.map")});
    ASSERT_EQ(app().scene().palettes.size(), 1U);
    menu("&File/Load/Recent Palettes")->actions().first()->trigger();
    ASSERT_EQ(app().scene().palettes.size(), 2U);
    EXPECT_EQ(app().palette(1)->name(), "red.map");
    EXPECT_EQ(menu("&File/Load/Recent Palettes")->actions().size(), 1);
}

TEST_F(MainWindow, DroppedPalettesAreLoaded)
{
    drop({mapFile("red.map"), mapFile("green.map")});
    EXPECT_EQ(app().scene().palettes.size(), 2U);
    EXPECT_TRUE(log.contains("Foo! " + path("red.map")));
    EXPECT_EQ(app().preferences().palettePath, directory());
}

TEST_F(MainWindow, ADroppedSessionIsAllThatCounts)
{
    QSignalSpy sessions(&form(), &MainForm::loadSession);
    drop({mapFile("red.map"), path("work.tir")});
    ASSERT_EQ(sessions.size(), 1);
    EXPECT_EQ(sessions[0][0].toString(), path("work.tir"));
    EXPECT_TRUE(app().scene().palettes.empty());
    takeBox();
}

TEST_F(MainWindow, ADropOfThreeStacksAsksForThreeChannelsOfOneTimePoint)
{
    catchStacks();
    drop({picFile("a.pic"), picFile("b.pic"), picFile("c.pic")});
    EXPECT_EQ(wanted, (std::vector{recentStack({{path("a.pic"), path("b.pic"), path("c.pic")}}, 3, 1)}));
}

TEST_F(MainWindow, WhatIsNoFileIsNotTaken)
{
    QMimeData text;
    text.setText("a.pic");
    EXPECT_FALSE(drop(text));
    QMimeData remote;
    remote.setUrls({QUrl("http://example.org/a.pic")});
    EXPECT_FALSE(drop(remote));
}

TEST_F(MainWindow, PalettesThatNobodyTouchedAreNotAskedAbout)
{
    load({picFile("a.pic"), picFile("b.pic")});
    ASSERT_EQ(app().scene().palettes.size(), 2U);
    test::ModalAnswers answers;
    EXPECT_TRUE(form().close());
    EXPECT_TRUE(answers.shown().isEmpty());
}

TEST_F(MainWindow, ClosingAsksOnceAboutAllThatWasChanged)
{
    load({picFile("a.pic"), picFile("b.pic")});
    changeView([](ViewState& view) { view.spinY = 2; });
    changePalette(0);
    changePalette(1);
    app().mainForm().action("invertAction")->trigger();
    app().jobs().filterThread().wait();
    settle();
    const QStringList names = {"palette " + app().palette(0)->name(), "palette " + app().palette(1)->name(),
                               "stack a.pic ... b.pic (inversion)"};
    {
        test::ModalAnswers answers;
        answers.add([&](QDialog& dialog) {
            EXPECT_EQ(dialog.findChild<QLabel*>("lblQuestion")->text(),
                      "Do you want to save the changes to these?");
            const auto* list = dialog.findChild<QListWidget*>("lstUnsaved");
            ASSERT_EQ(list->count(), 3);
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(list->item(i)->text(), names[i]);
                EXPECT_EQ(list->item(i)->checkState(), Qt::Checked);
            }
            dialog.reject();
        });
        EXPECT_FALSE(form().close());
        EXPECT_EQ(answers.shown().size(), 1);
    }
    EXPECT_TRUE(form().isVisible());
    // The window that was covered may still be drawn once more; a spin would never come to its end.
    EXPECT_TRUE(QTest::qWaitFor([this] { return !widget().renderThread().isRunning(); }));
    EXPECT_EQ(view().spinY, 0);
    test::ModalAnswers answers;
    answers.press("Discard");
    EXPECT_TRUE(form().close());
    EXPECT_EQ(answers.shown(), QStringList("Unsaved Changes"));
}

TEST_F(MainWindow, WhatIsCheckedIsSavedOnClosing)
{
    load({picFile("a.pic"), picFile("b.pic")});
    changePalette(0);
    changePalette(1);
    const QString left = app().palette(1)->name();
    app().mainForm().action("flipXAction")->trigger();
    app().jobs().filterThread().wait();
    settle();
    test::ModalAnswers answers;
    answers.add([](QDialog& dialog) {
        dialog.findChild<QListWidget*>("lstUnsaved")->item(1)->setCheckState(Qt::Unchecked);
        dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
    });
    answers.choose(path("mine"));
    answers.choose(path("flipped"));
    EXPECT_TRUE(form().close());
    EXPECT_EQ(answers.shown(), (QStringList{"Unsaved Changes", "Save Palette", "Export stack"}));
    EXPECT_TRUE(QFileInfo::exists(path("mine.map")));
    EXPECT_EQ(app().palette(0)->name(), "mine.map");
    EXPECT_EQ(app().palette(1)->name(), left);
    EXPECT_TRUE(QFileInfo::exists(path("flipped_c00.pic")));
    EXPECT_TRUE(QFileInfo::exists(path("flipped_c01.pic")));
}

TEST_F(MainWindow, LeavingASaveDialogKeepsTheProgramOpen)
{
    load({picFile("a.pic")});
    changePalette(0);
    test::ModalAnswers answers;
    answers.press("Save");
    EXPECT_FALSE(form().close());
    EXPECT_EQ(answers.shown().size(), 2);
}

TEST_F(MainWindow, AChangeThatWasTakenBackIsNoChange)
{
    load({picFile("a.pic")});
    const PaletteValues before = app().palette(0)->values();
    changePalette(0);
    app().model().edit(Change::Colours, [&](Scene& scene) { scene.palettes[0]->setValues(before); });
    app().mainForm().action("flipXAction")->trigger();
    app().jobs().filterThread().wait();
    settle();
    app().mainForm().action("editUndoAction")->trigger();
    app().jobs().filterThread().wait();
    settle();
    test::ModalAnswers answers;
    EXPECT_TRUE(form().close());
    EXPECT_TRUE(answers.shown().isEmpty());
}

TEST_F(MainWindow, APaletteInItsFileIsNotAskedAbout)
{
    load({picFile("a.pic"), mapFile("red.map")});
    test::ModalAnswers answers;
    EXPECT_TRUE(form().close());
    EXPECT_TRUE(answers.shown().isEmpty());
}

TEST_F(MainWindow, ClosingKeepsDirectoriesAndLists)
{
    drop({mapFile("red.map")});
    form().addRecentStack(recentStack({{"a.pic"}}, 1, 1));
    EXPECT_TRUE(form().close());
    EXPECT_EQ(store().value("Paths/PalettePath").toString(), directory());
    EXPECT_FALSE(store().contains("Paths/StackPath"));
    EXPECT_EQ(store().value("RecentPalettes/0").toString(), path("red.map"));
    EXPECT_EQ(store().value("RecentStacks/0name0").toStringList(), QStringList("a.pic"));
    restart();
    EXPECT_EQ(menu("&File/Load/Recent Palettes")->actions().size(), 1);
    EXPECT_EQ(menu("&File/Load/Recent Stacks")->actions().first()->text(), "a.pic");
    EXPECT_EQ(app().preferences().palettePath, directory());
}

TEST_F(MainWindow, PreferencesKeepTheDirectoriesThatCameSince)
{
    app().forms().create(FormId::Preferences, true);
    settle();
    drop({mapFile("red.map")});
    QTest::keyClick(app().forms().form(FormId::Preferences), Qt::Key_Return);
    EXPECT_EQ(app().preferences().palettePath, directory());
}

TEST_F(MainWindow, LookingForANewVersionAsksNobody)
{
    action("checkForUpdatesAction")->trigger();
    EXPECT_EQ(takeBox(), "Checking for new version: "
                         "This build is older than 4AM, of course you need to update.");
}

TEST_F(MainWindow, AWindowsActionFollowsTheWindow)
{
    QAction* toggle = action("windowStack_ManagerAction");
    toggle->trigger();
    QWidget* manager = app().forms().form(FormId::Manager);
    ASSERT_NE(manager, nullptr);
    EXPECT_TRUE(manager->isVisible());
    manager->close();
    EXPECT_FALSE(toggle->isChecked());
    app().forms().create(FormId::Manager, true);
    EXPECT_TRUE(toggle->isChecked());
    toggle->trigger();
    EXPECT_FALSE(manager->isVisible());
}

TEST_F(MainWindow, ASequenceThatIsNotThereIsNotAskedFor)
{
    QSignalSpy asked(&form(), &MainForm::loadTiffs);
    test::ModalAnswers answers;
    action("sequenceTiffAction")->trigger();
    EXPECT_EQ(answers.shown(), QStringList("Load Sequence Tiff"));
    EXPECT_EQ(asked.size(), 0);
}

} // namespace
} // namespace tirn
