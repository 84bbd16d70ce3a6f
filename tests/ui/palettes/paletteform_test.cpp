// Which palettes there are, and which of them the editor shows.

#include "ui/palettes/paletteform.h"

#include <QDomDocument>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>

#include "palettes/palettefile.h"
#include "ui/palettes/paletteeditortest.h"

namespace tirn {
namespace {

class PaletteEditor : public test::PaletteEditorTest
{
protected:
    QComboBox& list() { return child<QComboBox>("cboPalettes"); }
    QStringList listed()
    {
        QStringList texts;
        for (int i = 0; i < list().count(); ++i)
            texts.append(list().itemText(i));
        return texts;
    }
    /// A row of files, dropped from a file manager or as plain text.
    void drop(QMimeData& data)
    {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&form(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent dropped({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&form(), &dropped);
    }
    /// Saves under a name with a filter chosen in the dialog.
    void saveAs(const QString& name, const QString& filter)
    {
        answers.add([=](QDialog& dialog) {
            auto* files = qobject_cast<QFileDialog*>(&dialog);
            EXPECT_EQ(files->windowTitle(), "Save Palette");
            EXPECT_EQ(files->nameFilters(),
                      QStringList({"Tirn Palette (*.map)", "Amira (*.col)", "Andor IQ (*.lut)"}));
            files->selectNameFilter(filter);
            files->findChild<QLineEdit*>("fileNameEdit")->setText(name);
            QMetaObject::invokeMethod(files, "accept");
        });
        action("palSaveAsAction").trigger();
    }
    QByteArray contents(const QString& name)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }
    void write(const QString& name, const QByteArray& bytes)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    /// What the next box since the last question said, which was closed.
    QString nextBox()
    {
        QCoreApplication::processEvents();
        return m_boxesSeen < answers.shown().size() ? answers.shown()[m_boxesSeen++] : QString();
    }

    test::ModalAnswers answers;

private:
    int m_boxesSeen = 0;
};

TEST_F(PaletteEditor, WithoutPalettesOnlyNewOnesCanBeMade)
{
    form();
    EXPECT_EQ(list().count(), 0);
    EXPECT_FALSE(plot().isEnabled());
    EXPECT_FALSE(list().isEnabled());
    EXPECT_TRUE(button("btnPalette").isEnabled());
    for (const char* each : {"palDuplicateAction", "palSaveAction", "palSaveAsAction", "palCloseAction",
                             "palUndoAction", "palRedoAction"})
        action(each).trigger();
    press(Qt::Key_Up);
    EXPECT_TRUE(names().isEmpty());
    action("palNew8Action").trigger();
    EXPECT_EQ(names().size(), 1);
    EXPECT_TRUE(plot().isEnabled());
    EXPECT_EQ(palette().depth(), 8);
}

TEST_F(PaletteEditor, ANewPaletteIsGivenToTheChannelThatUsedTheOneBefore)
{
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    form();
    QSignalSpy assigned(&form(), &PaletteForm::paletteAssigned);
    QSignalSpy listChanged(&form(), &PaletteForm::paletteListChanged);
    action("palNew8Action").trigger();
    EXPECT_EQ(names().size(), 2);
    EXPECT_EQ(list().currentIndex(), 1);
    EXPECT_EQ(paletteOf(1, 0), 1) << "the current stack";
    EXPECT_EQ(paletteOf(0, 0), 0);
    EXPECT_EQ(assigned.size(), 1);
    EXPECT_EQ(listChanged.size(), 1);
    form().changeSelectedPalette(0);
    action("palNew8Action").trigger();
    EXPECT_EQ(paletteOf(1, 0), 1) << "palette 0 is not used by the current stack";
}

TEST_F(PaletteEditor, ADeepStackGetsADeepPalette)
{
    form();
    action("palNewAction").trigger();
    EXPECT_EQ(names(), QStringList("12bit"));
    EXPECT_EQ(palette().size(), 4096);
    EXPECT_TRUE(log.contains("Creating 12bit palette"));
    load({picFile("a.pic")});
    action("palNewAction").trigger();
    EXPECT_EQ(names().last(), "8bit");
    EXPECT_EQ(palette().size(), 256);
    load({picFile("deep.pic", 16, 12, 8, 12)});
    action("palNewAction").trigger();
    EXPECT_EQ(names().last(), "12bit");
    EXPECT_EQ(spin("spnIndex").doubleMaxValue(), 4095);
    EXPECT_EQ(spin("spnAlpha").doubleMaxValue(), 255);
    tick("chkEditAlpha");
    child<FloatSpinBox>("spnIndex").setDoubleValue(4000);
    spin("spnAlpha").setDoubleValue(3);
    EXPECT_EQ(palette().alpha()[4000], 3);
}

TEST_F(PaletteEditor, ADuplicateIsSelectedAndUsedByNobody)
{
    load({picFile("a.pic"), mapFile("first.map")});
    form();
    tick("chkEditRed");
    action("palDuplicateAction").trigger();
    EXPECT_EQ(names(), QStringList({"first.map", "first.map copy"}));
    EXPECT_EQ(list().currentText(), "first.map copy");
    EXPECT_EQ(paletteOf(0, 0), 0);
    EXPECT_TRUE(child<QCheckBox>("chkEditRed").isChecked());
    EXPECT_TRUE(child<QCheckBox>("chkHSVEditAlpha").isChecked()) << "a copy has this flag";
    stroke(at(0, 200), at(255, 200));
    EXPECT_EQ(app().palette(0)->red()[50], 50);
    EXPECT_EQ(app().palette(1)->red()[50], 200);
}

TEST_F(PaletteEditor, ANewStackBringsThePaletteOfItsFirstChannelUp)
{
    form();
    load({picFile("a.pic"), mapFile("first.map")});
    EXPECT_EQ(list().currentText(), "first.map");
    action("palDuplicateAction").trigger();
    EXPECT_EQ(list().currentIndex(), 1);
    load({picFile("b.pic")});
    EXPECT_EQ(list().currentIndex(), paletteOf(1, 0));
    form().changeSelectedPalette(1);
    app().setCurrentArray(0);
    EXPECT_EQ(list().currentIndex(), 0);
}

TEST_F(PaletteEditor, AnIndexThatIsNotThereIsRefused)
{
    load({picFile("a.pic")});
    form();
    form().changeSelectedPalette(7);
    EXPECT_TRUE(log.contains("changing to a non-existant palette"));
    EXPECT_EQ(list().currentIndex(), 0);
}

TEST_F(PaletteEditor, AUsedPaletteIsNotClosedWhicheverStackUsesIt)
{
    load({picFile("a.pic")});
    load({picFile("b.pic")});
    form();
    action("palNew8Action").trigger();
    form().changeSelectedPalette(0);
    action("palCloseAction").trigger();
    EXPECT_EQ(nextBox(), "Palette in use: The palette in use by array number 1. It cannot be closed.");
    form().changeSelectedPalette(1);
    action("palCloseAction").trigger();
    EXPECT_EQ(nextBox(), "Palette in use: The palette in use by array number 2. It cannot be closed.");
    EXPECT_EQ(names().size(), 2);
}

TEST_F(PaletteEditor, TheOnlyPaletteOfAStackStays)
{
    load({picFile("a.pic")});
    form();
    action("palCloseAction").trigger();
    EXPECT_EQ(nextBox(), "");
    EXPECT_EQ(names().size(), 1);
    app().closeAll();
    settle();
    form();
    action("palNew8Action").trigger();
    action("palCloseAction").trigger();
    EXPECT_TRUE(names().isEmpty()) << "without a stack it may go";
    EXPECT_FALSE(plot().isEnabled());
}

TEST_F(PaletteEditor, ClosingAPaletteRenumbersEveryChannelOfEveryStack)
{
    load({picFile("a.pic"), mapFile("0.map")});
    load({picFile("b.pic")});
    form();
    for (const char* name : {"1.map", "2.map", "3.map"})
        form().loadPalette(QStringList(mapFile(name)));
    app().model().edit(Change::Channels, [](Scene& scene) {
        scene.arrays[0]->channels()[0].display.palette = 2;
        scene.arrays[0]->channels()[0].display.alternatePalette = 3;
        scene.arrays[1]->channels()[0].display.palette = 3;
        scene.arrays[1]->channels()[0].display.alternatePalette = 1;
    });
    form().changeSelectedPalette(1);
    action("palCloseAction").trigger();
    EXPECT_EQ(names(), QStringList({"0.map", "2.map", "3.map"}));
    EXPECT_EQ(listed(), names());
    EXPECT_EQ(list().currentText(), "2.map") << "its neighbour";
    EXPECT_EQ(app().palette(paletteOf(0, 0))->name(), "2.map");
    EXPECT_EQ(app().palette(paletteOf(1, 0))->name(), "3.map");
    EXPECT_EQ(app().scene().arrays[0]->channels()[0].display.alternatePalette, 2);
    EXPECT_EQ(app().scene().arrays[1]->channels()[0].display.alternatePalette, 2);
    form().changeSelectedPalette(0);
    action("palCloseAction").trigger();
    EXPECT_EQ(names(), QStringList({"2.map", "3.map"}));
    EXPECT_EQ(paletteOf(0, 0), 0);
    EXPECT_EQ(paletteOf(1, 0), 1);
}

TEST_F(PaletteEditor, APaletteThatIsSwappedWithIsInUse)
{
    load({picFile("a.pic"), mapFile("0.map")});
    form().loadPalette(QStringList(mapFile("1.map")));
    app().model().edit(Change::Channels, [](Scene& scene) {
        ChannelDisplay& display = scene.arrays[0]->channels()[0].display;
        display.alternatePalette = 1;
        chooseState(display, ChannelState::PaletteSwap);
    });
    form().changeSelectedPalette(1);
    action("palCloseAction").trigger();
    EXPECT_EQ(nextBox(), "Palette in use: The palette in use by array number 1. It cannot be closed.");
    app().model().edit(Change::Channels, [](Scene& scene) {
        chooseState(scene.arrays[0]->channels()[0].display, ChannelState::Shown);
    });
}

TEST_F(PaletteEditor, WhatWasTakenBackNeverNamesAnotherPalette)
{
    load({picFile("a.pic"), mapFile("0.map")});
    form();
    action("palNew8Action").trigger();
    ASSERT_TRUE(app().model().undoStack().canUndo());
    form().changeSelectedPalette(0);
    action("palCloseAction").trigger();
    EXPECT_FALSE(app().model().undoStack().canUndo());
    EXPECT_EQ(paletteOf(0, 0), 0);
}

TEST_F(PaletteEditor, LoadsFromTheLastNameToTheFirstAndSelectsTheLastOfTheList)
{
    form();
    form().loadPalette(QStringList({mapFile("a.map"), mapFile("b.map"), mapFile("c.map")}));
    EXPECT_EQ(names(), QStringList({"c.map", "b.map", "a.map"}));
    EXPECT_EQ(list().currentText(), "a.map");
    EXPECT_EQ(app().preferences().palettePath, QFileInfo(path("a.map")).absolutePath());
    EXPECT_EQ(app().mainForm().recent().palettes().first(), path("a.map"));
    EXPECT_TRUE(palette().hasFile());
}

TEST_F(PaletteEditor, AFileThatIsNotThereEndsTheListInSilence)
{
    form();
    form().loadPalette(QStringList({mapFile("a.map"), path("none.map"), mapFile("c.map")}));
    EXPECT_EQ(names(), QStringList("c.map"));
    EXPECT_EQ(nextBox(), "");
}

TEST_F(PaletteEditor, AFileThatIsNoPaletteLeavesListAndSelectionAsTheyWere)
{
    form().loadPalette(QStringList({mapFile("a.map"), mapFile("b.map")}));
    form().changeSelectedPalette(0);
    QByteArray half = contents("a.map");
    write("half.map", half.left(half.size() / 2));
    QByteArray noise;
    for (int i = 0; i < 5000; ++i)
        noise.append(static_cast<char>(i * 7919 % 251));
    write("noise.map", noise);
    write("noise.col", "# AmiraMesh 3D ASCII\n" + noise);
    write("noise.lut", noise);
    write("empty.map", "");
    write("long.map", QByteArray(3 << 20, '1'));
    write("long.col", "# AmiraMesh 3D ASCII\n" + QByteArray("1 1 1 1\n").repeated(200000));
    mapFile("many.map", 300);
    ASSERT_TRUE(QDir(path("")).mkdir("folder.map"));
    for (const char* name : {"half.map", "noise.map", "noise.col", "noise.lut", "empty.map", "long.map",
                             "long.col", "many.map", "folder.map"}) {
        form().loadPalette(QStringList(path(name)));
        EXPECT_EQ(nextBox(),
                  "File load error: The file " + path(name) + " does not use a known palett file format.");
        EXPECT_EQ(names(), QStringList({"b.map", "a.map"})) << name;
        EXPECT_EQ(list().currentIndex(), 0) << name;
    }
}

TEST_F(PaletteEditor, AGoodFileAmongBadOnesIsLoaded)
{
    form();
    write("bad.map", "nothing");
    form().loadPalette(QStringList({mapFile("a.map"), path("bad.map"), mapFile("c.map")}));
    EXPECT_TRUE(nextBox().startsWith("File load error: "));
    EXPECT_EQ(names(), QStringList({"c.map", "a.map"}));
}

TEST_F(PaletteEditor, TheDialogOffersTheFourKindsAndTakesSeveral)
{
    form();
    mapFile("a.map");
    mapFile("b.map");
    answers.add([this](QDialog& dialog) {
        auto* files = qobject_cast<QFileDialog*>(&dialog);
        EXPECT_EQ(files->windowTitle(), "Choose your palette");
        EXPECT_EQ(files->fileMode(), QFileDialog::ExistingFiles);
        EXPECT_EQ(files->nameFilters(), QStringList({"Tirn Palette (*.map)", "Amira Palette (*.col)",
                                                     "Andor IQ LUT (*.lut)", "Metamorph LUT (*.lut)"}));
        files->findChild<QLineEdit*>("fileNameEdit")
            ->setText('"' + path("a.map") + "\" \"" + path("b.map") + '"');
        QMetaObject::invokeMethod(files, "accept");
    });
    action("palLoadAction").trigger();
    EXPECT_EQ(names(), QStringList({"b.map", "a.map"}));
}

TEST_F(PaletteEditor, DroppedFilesKeepTheirOrder)
{
    form();
    QMimeData urls;
    urls.setUrls({QUrl::fromLocalFile(mapFile("a b.map")), QUrl::fromLocalFile(mapFile("b.map"))});
    drop(urls);
    EXPECT_EQ(names(), QStringList({"a b.map", "b.map"}));
    QMimeData text;
    text.setText("file://" + mapFile("c.map") + "\r\n" + mapFile("d.map") + "\r\n");
    drop(text);
    EXPECT_EQ(names(), QStringList({"a b.map", "b.map", "c.map", "d.map"}));
    EXPECT_EQ(list().currentText(), "d.map");
}

TEST(DroppedPalettes, LinesAreAddressesOrNames)
{
    EXPECT_EQ(namesOfText("file:///a/b%20c.map\r\n/d e.map\n\r\n"), QStringList({"/a/b c.map", "/d e.map"}));
    EXPECT_TRUE(namesOfText("").isEmpty());
}

TEST_F(PaletteEditor, SavesOverItsFile)
{
    form().loadPalette(QStringList(mapFile("a.map")));
    tick("chkEditBlue");
    stroke(at(0, 7), at(255, 7));
    EXPECT_FALSE(palette().hasFile());
    action("palSaveAction").trigger();
    EXPECT_TRUE(palette().hasFile());
    EXPECT_TRUE(contents("a.map").startsWith("0 0 7 0\n1 0 7 1\n"));
    EXPECT_TRUE(answers.shown().isEmpty());
}

TEST_F(PaletteEditor, TheFilterOfTheDialogGivesTheNameItsEnding)
{
    form();
    action("palNew8Action").trigger();
    QSignalSpy listChanged(&form(), &PaletteForm::paletteListChanged);
    saveAs(path("one"), "Tirn Palette (*.map)");
    EXPECT_EQ(names(), QStringList("one.map"));
    EXPECT_EQ(listed(), names());
    EXPECT_EQ(listChanged.size(), 1);
    EXPECT_FALSE(palette().modified());
    EXPECT_EQ(contents("one.map").count('\n'), 256);
    saveAs(path("two.MAP"), "Tirn Palette (*.map)");
    EXPECT_EQ(names(), QStringList("two.MAP"));
    saveAs(path("three"), "Amira (*.col)");
    EXPECT_TRUE(contents("three.col").startsWith("# AmiraMesh 3D ASCII"));
    saveAs(path("four"), "Andor IQ (*.lut)");
    EXPECT_TRUE(contents("four.lut").startsWith("[Description]"));
    EXPECT_EQ(names(), QStringList("four.lut"));
    EXPECT_EQ(palette().path(), QFileInfo(path("four.lut")).absolutePath());
}

TEST_F(PaletteEditor, APaletteFromALutIsSavedAsAMapAfterADialog)
{
    QByteArray andor = "[Red Green Blue]\n";
    for (int i = 0; i < 256; ++i)
        andor += QString::asprintf("%.3d=%.3d 000 000\n", i, i).toUtf8();
    write("a.lut", andor);
    form().loadPalette(QStringList(path("a.lut")));
    ASSERT_EQ(names(), QStringList("a.lut"));
    answers.add([](QDialog& dialog) {
        auto* files = qobject_cast<QFileDialog*>(&dialog);
        EXPECT_TRUE(files->selectedFiles().value(0).endsWith("a.lut"));
        QMetaObject::invokeMethod(files, "accept");
    });
    action("palSaveAction").trigger();
    EXPECT_EQ(names(), QStringList("a.lut.map"));
    EXPECT_EQ(contents("a.lut"), andor);
}

TEST_F(PaletteEditor, OverwritingIsAsked)
{
    form();
    action("palNew8Action").trigger();
    write("there.map", "precious");
    answers.choose(path("there.map"));
    answers.press("No");
    action("palSaveAsAction").trigger();
    EXPECT_EQ(contents("there.map"), "precious");
    EXPECT_TRUE(palette().modified());
    EXPECT_EQ(answers.shown().last(), "Overwrite file: Overwrite " + path("there.map"));
    answers.choose(path("there.map"));
    answers.press("Yes");
    action("palSaveAsAction").trigger();
    EXPECT_EQ(contents("there.map").count('\n'), 256);
    EXPECT_EQ(palette().name(), "there.map");
}

TEST_F(PaletteEditor, AFileThatCannotBeReplacedLosesNothing)
{
    form();
    action("palNew8Action").trigger();
    ASSERT_TRUE(QDir(path("")).mkdir("there.map"));
    answers.choose(path("there.map/x/y"));
    action("palSaveAsAction").trigger();
    EXPECT_TRUE(palette().modified());
    EXPECT_FALSE(palette().hasFile());
    EXPECT_TRUE(answers.shown().last().startsWith("Save Palette: Could not write\n"));
}

TEST_F(PaletteEditor, ControlSGoesToTheWindowThatHasTheFocus)
{
    load({picFile("a.pic")});
    form().loadPalette(QStringList(mapFile("a.map")));
    tick("chkEditBlue");
    stroke(at(0, 7), at(255, 7));
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(palette().hasFile());
    EXPECT_TRUE(answers.shown().isEmpty()) << "not the export of the stack";
    stroke(at(0, 9), at(255, 9));
    spin("spnAlpha").setFocus();
    QTest::keyClick(&spin("spnAlpha"), Qt::Key_S, Qt::ControlModifier);
    EXPECT_TRUE(palette().hasFile()) << "from a spin box, too";
}

TEST_F(PaletteEditor, UndoAndRedoHaveTheKeysOfTheMainWindow)
{
    load({picFile("a.pic")});
    form();
    tick("chkEditBlue");
    app().model().editUndoably("Turn", 0, Change::Look, [](Scene& scene) { scene.view.fontScale = 2; });
    stroke(at(0, 7), at(255, 7));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(palette().blue()[100], 100);
    EXPECT_EQ(view().fontScale, 2) << "the view keeps what was done to it";
    press(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(palette().blue()[100], 7);
    press(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(names().size(), 2);
}

TEST_F(PaletteEditor, TheMainMenuLeadsToIt)
{
    load({picFile("a.pic")});
    QWidget& main = app().mainForm();
    main.findChild<QAction*>("paletteNewAction")->trigger();
    EXPECT_EQ(names().size(), 2);
    answers.choose(mapFile("a.map"));
    main.findChild<QAction*>("paletteOpenAction")->trigger();
    EXPECT_EQ(names().last(), "a.map");
    main.findChild<QAction*>("closePaletteAction")->trigger();
    EXPECT_EQ(names().size(), 2);
    answers.add([](QDialog& dialog) { dialog.reject(); });
    main.findChild<QAction*>("paletteSaveAction")->trigger();
    EXPECT_EQ(answers.shown().last(), "Save Palette");
    EXPECT_FALSE(app().forms().form(FormId::Palette)->isShown());
}

TEST_F(PaletteEditor, NewFromAKindIsGivenToTheChannel)
{
    load({picFile("a.pic")});
    form();
    auto& kinds = child<QMenu>("kindsMenu");
    QStringList groups;
    QAction* green = nullptr;
    for (QAction* action : kinds.actions()) {
        if (action->menu() == nullptr)
            continue;
        groups.append(action->text());
        for (QAction* kind : action->menu()->actions()) {
            if (kind->text() == "GFP")
                green = kind;
        }
    }
    EXPECT_EQ(groups, QStringList({"Colours", "Fluorophores", "Maps", "Even Maps"}));
    ASSERT_NE(green, nullptr);
    EXPECT_EQ(green->toolTip(), "Emits most at 509 nm.");
    green->trigger();
    EXPECT_EQ(names().last(), "GFP");
    EXPECT_EQ(paletteOf(0, 0), 1);
    EXPECT_EQ(palette().green()[255], 255);
    EXPECT_EQ(palette().red()[255], 0);
    settle();
    const QImage seen = widget().renderThread().grabNextFrame();
    const QColor middle = seen.pixelColor(seen.rect().center());
    EXPECT_GT(middle.green(), 20);
    EXPECT_EQ(middle.red(), 0);
}

TEST_F(PaletteEditor, PalettesThatGoWhileItIsHiddenAreForgotten)
{
    load({picFile("a.pic")});
    form();
    app().forms().create(FormId::Palette, false);
    app().closeAll();
    settle();
    form().resize(form().size() + QSize(40, 40));
    QCoreApplication::processEvents();
    EXPECT_EQ(form().currentPalette(), nullptr);
    EXPECT_EQ(list().count(), 0);
    load({picFile("b.pic")});
    EXPECT_EQ(list().count(), 1);
    EXPECT_NE(form().currentPalette(), nullptr);
}

TEST_F(PaletteEditor, ADarkDesktopHasLightTextsAndTheSamePlot)
{
    load({picFile("a.pic")});
    const QColor before = plot().canvas()->grab().toImage().pixelColor(2, 2);
    QPalette dark = QApplication::palette();
    const std::pair<QPalette::ColorRole, QColor> roles[] = {
        {QPalette::Window, {40, 40, 44}},       {QPalette::WindowText, {230, 230, 230}},
        {QPalette::Base, {30, 30, 33}},         {QPalette::Text, {230, 230, 230}},
        {QPalette::Button, {52, 52, 57}},       {QPalette::ButtonText, {230, 230, 230}},
        {QPalette::AlternateBase, {36, 36, 40}}};
    for (const auto& [role, color] : roles)
        dark.setColor(role, color);
    QApplication::setPalette(dark);
    QCoreApplication::processEvents();
    const QImage seen = form().grab().toImage();
    EXPECT_EQ(plot().canvas()->grab().toImage().pixelColor(2, 2), before);
    // The titles and numbers of the axes, left of the canvas.
    const QPoint corner = plot().mapTo(&form(), QPoint(0, 0));
    int lightest = 0;
    int darkest = 255;
    for (int y = 0; y < plot().height(); ++y) {
        for (int x = 0; x < plot().canvas()->x() - 4; ++x) {
            const int grey = qGray(seen.pixel((corner + QPoint(x, y)) * seen.devicePixelRatio()));
            lightest = std::max(lightest, grey);
            darkest = std::min(darkest, grey);
        }
    }
    EXPECT_GT(lightest, 180);
    EXPECT_LT(darkest, 60);
}

TEST_F(PaletteEditor, ASessionBringsPalettesBack)
{
    QDomDocument document;
    ASSERT_TRUE(
        document.setContent(QString("<palette depth=\"8\" saved=\"1\">%1</palette>").arg(mapFile("a.map"))));
    form().loadPalette(document.documentElement());
    EXPECT_EQ(names(), QStringList("a.map"));
    QString table;
    for (int i = 0; i < 256; ++i)
        table += QString("%1 1 2 3\n").arg(i);
    ASSERT_TRUE(document.setContent("<palette depth=\"8\" saved=\"0\">" + table + "</palette>"));
    form().loadPalette(document.documentElement());
    ASSERT_EQ(names().size(), 2);
    EXPECT_TRUE(names().last().startsWith("Untitled "));
    EXPECT_EQ(palette().red()[77], 77);
    ASSERT_TRUE(document.setContent(QString("<palette depth=\"12\" saved=\"0\">1 2 3 4</palette>")));
    form().loadPalette(document.documentElement());
    EXPECT_EQ(names().size(), 2);
    EXPECT_TRUE(log.contains("Error: matched 1 instead of 4096 palette entries"));
}

} // namespace
} // namespace tirn
