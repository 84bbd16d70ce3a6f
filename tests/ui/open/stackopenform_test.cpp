// How the form is filled for a file, and what it shows.

#include "ui/open/stackopenform.h"

#include <QCheckBox>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include "support/otheruser.h"
#include "support/picfile.h"
#include "support/tifffile.h"
#include "ui/open/stackopenextension.h"
#include "ui/widgets/filechooser.h"
#include "ui/widgets/floatspinbox.h"
#include "uisupport/openformtest.h"

namespace tirn {
namespace {

using test::SeenBox;

const QString kData = TIRN_TEST_DATA;

class StackOpen : public test::OpenFormTest
{
protected:
    StackOpen() { makeForm(); }

    void makeForm() { form = std::make_unique<StackOpenForm>(services(), nullptr); }
    void setUpFor(const QString& file)
    {
        form->setup(file);
        waitForProbes();
    }
    QString page() const { return find<QStackedWidget>(*form, "wskOpen").currentWidget()->objectName(); }
    int rows() const { return find<QTableWidget>(*form, "tblChannels").rowCount(); }
    QString row(int number) const { return nameIn(*form, "fchChannel" + QString::number(number)); }
    int spin(const char* name) const { return find<QSpinBox>(*form, name).value(); }
    double voxel(const char* name) const { return find<FloatSpinBox>(*form, name).doubleValue(); }
    QString memory() const { return label(*form, "lblMemory"); }
    QWidget& extension() const { return find<StackOpenExtension>(*form, "extension"); }
    template <class Widget>
    Widget& get(const char* name) const
    {
        return find<Widget>(*form, name);
    }
    QString tiff(const QString& name, int pages, int channels)
    {
        return test::TiffFile{
            std::vector<test::TiffPage>(static_cast<std::size_t>(pages),
                                        test::TiffPage{.x = 8, .y = 6, .channels = channels})}
            .save(path(name));
    }

    std::unique_ptr<StackOpenForm> form;
};

SeenBox warning(const QString& title, const QString& text)
{
    return {QMessageBox::Warning, title, text, true};
}

SeenBox critical(const QString& title, const QString& text)
{
    return {QMessageBox::Critical, title, text, true};
}

TEST_F(StackOpen, AFileThatIsNotThereIsTold)
{
    setUpFor(path("none.pic"));
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(seenBox(), critical("File does not exist", "Cannot find " + path("none.pic")));
}

TEST_F(StackOpen, AFileThatMayNotBeReadIsTold)
{
    const QString name = picFile("a.pic");
    QFile::setPermissions(path("."), QFile::Permissions(0x7755));
    QFile::setPermissions(name, QFile::Permissions());
    {
        const test::OtherUser user;
        setUpFor(name);
    }
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(seenBox(), critical("Permissions error", "Cannot read " + name));
}

TEST_F(StackOpen, AFileOfNoKnownTypeIsTold)
{
    const QString text = " does not appear to be any image file format recognized by Tirn. You may want to "
                         "try Import Raw Stack.";
    const QString name = test::saveBytes(path("a <b>.dat"), "nothing");
    setUpFor(name);
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(seenBox(), warning("Unknown file type", name + text));
    setUpFor(path("."));
    EXPECT_EQ(seenBox(), warning("Unknown file type", path(".") + text));
}

TEST_F(StackOpen, AFileThatCannotBeReadSaysWhy)
{
    test::TiffPage page{.x = 8, .y = 6};
    page.fields = {{259, 3, {5}, {}}};
    const QString name = test::TiffFile{{page, page}}.save(path("packed.tif"));
    setUpFor(name);
    EXPECT_EQ(seenBox(),
              warning("Unknown file type",
                      name + " does not appear to be any image file format recognized by Tirn. You "
                             "may want to try Import Raw Stack.\nLZW compression is not supported"));
}

TEST_F(StackOpen, ASingleTiffBelongsToTheOtherForm)
{
    const QString name = tiff("a.tif", 1, 1);
    setUpFor(name);
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(seenBox(),
              warning("Tif load", name + " appears to be a single slice tiff file. If you want to load a "
                                         "series of tiff files, please use Load Sequence Tiff."));
}

TEST_F(StackOpen, ALeicaTextPointsToItsTiffs)
{
    const QString name = test::saveBytes(path("a.txt"), "LEICA MICROSYSTEMS\n[HARDWARE PARAMETER]\n"
                                                        "[SCANNER INFORMATION]\n[TIME INFORMATION]\n");
    setUpFor(name);
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(seenBox(),
              warning("Leica load", name + " describes images whose voxels are in the tiff files beside it. "
                                           "To load them, please use Load Sequence Tiff and choose the first "
                                           "of them."));
}

TEST_F(StackOpen, BioRadFilesBringTheirSiblings)
{
    for (const char* name : {"cell1.pic", "cell2.pic", "cell3.pic", "other.pic"})
        picFile(name);
    setUpFor(path("cell2.pic"));
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(page(), "singleChannel");
    ASSERT_EQ(rows(), 3);
    EXPECT_EQ(spin("spnNumChannels"), 3);
    EXPECT_EQ(row(1), path("cell1.pic"));
    EXPECT_EQ(row(2), path("cell2.pic"));
    EXPECT_EQ(row(3), path("cell3.pic"));
    EXPECT_EQ(get<QTableWidget>("tblChannels").item(2, 0)->text(), "Channel 3");
    EXPECT_EQ(settings.stackPath, QFileInfo(path("cell1.pic")).path());
}

TEST_F(StackOpen, FiveSiblingsAreTooManyForChannels)
{
    for (int i = 0; i < 5; ++i)
        picFile(QString("cell%1.pic").arg(i));
    setUpFor(path("cell3.pic"));
    ASSERT_EQ(rows(), 2);
    EXPECT_EQ(row(1), path("cell3.pic"));
    EXPECT_EQ(row(2), "");
    QFile::remove(path("cell0.pic"));
    setUpFor(path("cell3.pic"));
    EXPECT_EQ(rows(), 4);
}

TEST_F(StackOpen, AFileThatTheSiblingsPatternMissesStandsAlone)
{
    // Without an ending the pattern asks for a dot at the end.
    setUpFor(picFile("cell1"));
    ASSERT_EQ(rows(), 2);
    EXPECT_EQ(row(1), path("cell1"));
    EXPECT_EQ(row(2), "");
}

TEST_F(StackOpen, FilesWithAllChannelsHaveAPageOfTheirOwn)
{
    for (const char* name : {"/made/vff/synth_8bit.vff", "/made/dv/synth_be_i16_WZT_3c_2t.r3d",
                             "/made/lsm/synth_8bit_z4_c4.lsm", "/made/stk/synth_8bit_10z_strips.stk"}) {
        makeForm();
        setUpFor(kData + name);
        EXPECT_TRUE(form->isVisible());
        EXPECT_EQ(page(), "multiChannel") << name;
        EXPECT_EQ(nameIn(*form, "fchMultiChannel"), kData + name);
    }
    EXPECT_EQ(spin("spnLast"), 9);
    EXPECT_EQ(voxel("spnXDim"), 0.11);
    EXPECT_EQ(voxel("spnZDim"), static_cast<double>(0.3F));
}

TEST_F(StackOpen, AMultiPageTiffIsAChannelOrHasAll)
{
    setUpFor(tiff("grey.tif", 3, 1));
    EXPECT_EQ(page(), "singleChannel");
    ASSERT_EQ(rows(), 2);
    EXPECT_EQ(row(1), path("grey.tif"));
    EXPECT_EQ(row(2), "");
    EXPECT_EQ(spin("spnLast"), 2);
    setUpFor(tiff("colour.tif", 3, 3));
    EXPECT_EQ(page(), "multiChannel");
    EXPECT_EQ(nameIn(*form, "fchMultiChannel"), path("colour.tif"));
}

TEST_F(StackOpen, AnOlympusSetIsOneElementWithItsOwnChannels)
{
    const QString name = kData + "/oif/synth_z8_c2.oif";
    setUpFor(name);
    EXPECT_EQ(page(), "tiffSeries");
    EXPECT_EQ(label(*form, "lblChannels"), "Channels: 2");
    EXPECT_EQ(label(*form, "lblBitDepth"), "Bit Depth: 12");
    EXPECT_EQ(label(*form, "lblSlices"), "Slices: 8");
    EXPECT_EQ(label(*form, "lblTimePoints"), "Time Points: 1");
    EXPECT_EQ(spin("spnLast"), 7);
    EXPECT_EQ(voxel("spnXDim"), 0.2);
    EXPECT_EQ(voxel("spnZDim"), 0.75);
    EXPECT_NE(memory(), "Memory required: Not enough info");
    click(*form, "btnOpen");
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, std::vector<QStringList>{{name}});
    EXPECT_EQ(loaded().channels, 2);
    EXPECT_EQ(loaded().timePoints, 1);
    EXPECT_EQ(loaded().fileType, ImageType::Unknown);
    EXPECT_FALSE(loaded().partial);
}

TEST_F(StackOpen, HasTheTextsOfItsWidgets)
{
    EXPECT_EQ(form->windowTitle(), "File Open");
    EXPECT_EQ(extension().windowTitle(), "Details");
    EXPECT_EQ(get<QPushButton>("btnOpen").text(), "&Open");
    EXPECT_EQ(get<QPushButton>("btnCancel").text(), "&Cancel");
    EXPECT_EQ(get<QPushButton>("btnDetails").text(), "&Details >>>");
    for (const char* box : {"chkTimeSeries", "chkMultiTimeSeries"})
        EXPECT_EQ(get<QCheckBox>(box).text(), "&Time Series");
    EXPECT_EQ(label(*form, "lblHint"),
              "For time series use * or ? wildcards to denote\nthe numbered portion of the file name.");
    const auto& table = get<QTableWidget>("tblChannels");
    EXPECT_EQ(table.horizontalHeaderItem(0)->text(), "Channel");
    EXPECT_EQ(table.horizontalHeaderItem(1)->text(), "File");
}

TEST_F(StackOpen, TheDetailsBeginWithAllOfTheStack)
{
    setUpFor(picFile("a.pic", 16, 12, 8));
    EXPECT_FALSE(extension().isVisible());
    click(*form, "btnDetails");
    EXPECT_TRUE(extension().isVisible());
    EXPECT_EQ(get<QPushButton>("btnDetails").text(), "&Details <<<");
    const auto range = [&](const char* name) {
        const auto& box = get<QSpinBox>(name);
        return std::vector{box.minimum(), box.maximum(), box.value()};
    };
    EXPECT_EQ(range("spnFirst"), (std::vector{0, 7, 0}));
    EXPECT_EQ(range("spnLast"), (std::vector{0, 7, 7}));
    EXPECT_EQ(range("spnStep"), (std::vector{1, 8, 1}));
    EXPECT_EQ(range("spnTimeStep"), (std::vector{1, 1, 1}));
    EXPECT_EQ(range("spnSubsample"), (std::vector{1, 8, 1}));
    EXPECT_FALSE(get<QSpinBox>("spnTimeStep").isVisible());
    EXPECT_FALSE(get<QLabel>("lblTimeStep").isVisible());
    EXPECT_FALSE(get<QCheckBox>("chkConserveMem").isChecked());
    EXPECT_TRUE(get<QRadioButton>("btn2D").isChecked());
    EXPECT_FALSE(get<QCheckBox>("chkResliceZ").isEnabled());
    EXPECT_FALSE(get<QSpinBox>("spnZSlices").isEnabled());
    EXPECT_EQ(get<QRadioButton>("btn3D").toolTip(),
              "Encode the data using 3D texture maps.  \nUsing 1/3 the memory, but renders \nslower in most "
              "cases.");
    click(*form, "btnDetails");
    EXPECT_FALSE(extension().isVisible());
    EXPECT_EQ(get<QPushButton>("btnDetails").text(), "&Details >>>");
}

TEST_F(StackOpen, ReslicingNeeds3DTextureMaps)
{
    setUpFor(picFile("a.pic"));
    click(*form, "btnDetails");
    click(*form, "btn3D");
    EXPECT_TRUE(get<QCheckBox>("chkResliceZ").isEnabled());
    EXPECT_TRUE(get<QSpinBox>("spnZSlices").isEnabled());
    EXPECT_TRUE(get<QLabel>("txtReslice").isEnabled());
    click(*form, "btn3DParallel");
    EXPECT_FALSE(get<QCheckBox>("chkResliceZ").isEnabled());
}

TEST_F(StackOpen, ACardWithout3DTexturesHasNoneOfThem)
{
    card.hasTexture3D = false;
    settings.defaultEncode = 1;
    makeForm();
    setUpFor(picFile("a.pic"));
    for (const char* name : {"btn3D", "btn3DParallel"})
        EXPECT_FALSE(get<QRadioButton>(name).isEnabled()) << name;
    for (const char* name : {"btn3D", "btn3DParallel", "chkResliceZ", "spnZSlices", "txtReslice"})
        EXPECT_EQ(get<QWidget>(name).toolTip(), "Sorry your video card does not support 3D texture maps.");
    EXPECT_TRUE(get<QRadioButton>("btn2D").isChecked());
}

TEST_F(StackOpen, TheDefaultsChooseTheTexturesUntilTheDetailsAreOpened)
{
    settings.defaultTimeSeriesEncode = 1;
    setUpFor(picFile("a.pic"));
    EXPECT_TRUE(get<QRadioButton>("btn2D").isChecked());
    click(*form, "chkTimeSeries");
    EXPECT_TRUE(get<QRadioButton>("btn3D").isChecked());
    click(*form, "chkTimeSeries");
    EXPECT_TRUE(get<QRadioButton>("btn2D").isChecked());
    click(*form, "btnDetails");
    click(*form, "chkTimeSeries");
    EXPECT_TRUE(get<QRadioButton>("btn2D").isChecked());
    EXPECT_TRUE(get<QSpinBox>("spnTimeStep").isVisible());
    EXPECT_TRUE(extension().isVisible());
    // Set up anew they count again.
    settings.defaultEncode = 1;
    setUpFor(path("a.pic"));
    EXPECT_FALSE(extension().isVisible());
    EXPECT_TRUE(get<QRadioButton>("btn3D").isChecked());
}

TEST_F(StackOpen, MoreChannelsAreMoreRows)
{
    setUpFor(picFile("a.pic"));
    log.clear();
    auto& count = get<QSpinBox>("spnNumChannels");
    QTest::keyClick(&count, Qt::Key_Up);
    ASSERT_EQ(rows(), 2);
    EXPECT_EQ(row(2), "");
    EXPECT_TRUE(log.contains("Row 1 added"));
    form->setNumberOfChannels(2);
    EXPECT_EQ(log.lines().filter("Row ").size(), 1);
    QTest::keyClick(&count, Qt::Key_Down);
    EXPECT_EQ(rows(), 1);
    EXPECT_TRUE(log.contains("Row 1 of 2 removed"));
    form->setNumberOfChannels(-3);
    EXPECT_EQ(rows(), 1);
    EXPECT_EQ(row(1), path("a.pic"));
}

TEST_F(StackOpen, EscapeAndCancelLoadNothing)
{
    setUpFor(picFile("a.pic"));
    QTest::keyClick(&find<QLineEdit>(get<FileChooser>("fchChannel1"), "txtFileName"), Qt::Key_Escape);
    EXPECT_FALSE(form->isVisible());
    setUpFor(path("a.pic"));
    // Other keys travel on.
    QTest::keyClick(form.get(), Qt::Key_A);
    EXPECT_TRUE(form->isVisible());
    click(*form, "btnCancel");
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(loads(), 0U);
}

TEST_F(StackOpen, ButtonsHaveTheirKeys)
{
    setUpFor(picFile("a.pic"));
    form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    // A button pressed by its key shows that for a while.
    QTest::keyClick(form.get(), Qt::Key_D, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return extension().isVisible(); }));
    QTest::keyClick(form.get(), Qt::Key_O, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return loads() == 1; }));
}

TEST_F(StackOpen, TheTabKeyGoesFromTopToBottomAndThenToTheButtons)
{
    setUpFor(picFile("a.pic"));
    click(*form, "btnDetails");
    click(*form, "btn3D");
    // A row that came later stands above the box all the same.
    form->setNumberOfChannels(3);
    form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    get<QSpinBox>("spnNumChannels").setFocus();
    QStringList reached;
    do {
        reached.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    } while (QApplication::focusWidget() != &get<QSpinBox>("spnNumChannels") && reached.size() < 40);
    EXPECT_EQ(reached,
              (QStringList{"spnNumChannels", "txtFileName",  "btnBrowse",      "txtFileName", "btnBrowse",
                           "txtFileName",    "btnBrowse",    "chkTimeSeries",  "spnFirst",    "spnLast",
                           "spnStep",        "spnSubsample", "chkConserveMem", "btn3D",       "chkResliceZ",
                           "spnZSlices",     "spnXDim",      "spnYDim",        "spnZDim",     "btnOpen",
                           "btnCancel",      "btnDetails"}));
}

TEST_F(StackOpen, EnterTakesANameAndOpensFromElsewhere)
{
    setUpFor(picFile("a.pic"));
    form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    typeName(*form, "fchChannel1", picFile("b.pic"));
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(loads(), 0U);
    get<QSpinBox>("spnNumChannels").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    waitForProbes();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (std::vector<QStringList>{{path("b.pic")}}));
    // On a button it presses that button.
    setUpFor(path("a.pic"));
    form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    get<QPushButton>("btnCancel").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Enter);
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(loads(), 1U);
}

TEST_F(StackOpen, ANameJustTypedIsOpenedWithItsOwnLayers)
{
    setUpFor(picFile("a.pic", 16, 12, 8));
    picFile("b.pic", 16, 12, 5);
    click(*form, "btnDetails");
    form->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    auto& line = find<QLineEdit>(get<FileChooser>("fchChannel1"), "txtFileName");
    line.setFocus();
    line.selectAll();
    QTest::keyClicks(&line, path("b.pic"));
    QTest::keyClick(&line, Qt::Key_O, Qt::AltModifier);
    ASSERT_TRUE(QTest::qWaitFor([&] { return loads() == 1; }));
    EXPECT_EQ(loaded().filesToLoad, (std::vector<QStringList>{{path("b.pic")}}));
    EXPECT_EQ((std::vector{loaded().first, loaded().last}), (std::vector{0, 4}));
}

/// The same form with files on a slow disk.
class SlowStackOpen : public StackOpen
{
protected:
    SlowStackOpen()
    {
        setUpFor(picFile("a.pic"));
        picFile("b.pic", 16, 12, 5);
        gate.close();
        auto& line = find<QLineEdit>(get<FileChooser>("fchChannel1"), "txtFileName");
        line.selectAll();
        QTest::keyClicks(&line, path("b.pic"));
        gate.waitForReader();
    }
    ~SlowStackOpen() override { gate.open(); }
};

TEST_F(SlowStackOpen, ShowsWhatItKnowsMeanwhile)
{
    EXPECT_EQ(memory(), "Memory required: Not enough info");
    EXPECT_EQ(spin("spnLast"), 7);
    gate.open();
    waitForProbes();
    EXPECT_EQ(spin("spnLast"), 4);
    // 16 x 12 x 5 and 16 x 8 x 12 + 16 x 8 x 16 + 16 x 16.
    EXPECT_EQ(memory(), "Memory required: 4.69KB");
}

TEST_F(SlowStackOpen, OpeningWaitsWithoutStandingStill)
{
    QTest::mouseClick(&get<QPushButton>("btnOpen"), Qt::LeftButton);
    EXPECT_EQ(loads(), 0U);
    EXPECT_TRUE(form->isVisible());
    EXPECT_FALSE(get<QPushButton>("btnOpen").isEnabled());
    EXPECT_EQ(memory(), "Looking into the files...");
    gate.open();
    waitForProbes();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (std::vector<QStringList>{{path("b.pic")}}));
    EXPECT_FALSE(form->isVisible());
}

TEST_F(SlowStackOpen, ACancelWhileItWaitsOpensNothing)
{
    QTest::mouseClick(&get<QPushButton>("btnOpen"), Qt::LeftButton);
    QTest::mouseClick(&get<QPushButton>("btnCancel"), Qt::LeftButton);
    EXPECT_FALSE(form->isVisible());
    gate.open();
    waitForProbes();
    EXPECT_EQ(loads(), 0U);
    setUpFor(path("a.pic"));
    EXPECT_TRUE(get<QPushButton>("btnOpen").isEnabled());
}

TEST_F(StackOpen, AnEmptyStackPathIsThatOfThePalettes)
{
    settings.palettePath = "/palettes";
    form->show();
    EXPECT_EQ(settings.stackPath, "/palettes");
    form->hide();
    settings.stackPath = "/stacks";
    form->show();
    EXPECT_EQ(settings.stackPath, "/stacks");
}

TEST_F(StackOpen, ATypedNameBringsItsRanges)
{
    setUpFor(picFile("a.pic", 16, 12, 8));
    picFile("b.pic", 16, 12, 5);
    click(*form, "btnDetails");
    get<QSpinBox>("spnFirst").setValue(3);
    // The same name again is no change.
    typeName(*form, "fchChannel1", path("a.pic"));
    EXPECT_EQ(spin("spnFirst"), 3);
    typeName(*form, "fchChannel1", path("b.pic"));
    EXPECT_EQ(spin("spnFirst"), 0);
    EXPECT_EQ(spin("spnLast"), 4);
    // What is no stack leaves all as it was.
    settings.stackPath = "/elsewhere";
    typeName(*form, "fchChannel1", test::saveBytes(path("c.pic"), "nothing"));
    EXPECT_EQ(spin("spnLast"), 4);
    EXPECT_EQ(settings.stackPath, "/elsewhere");
}

TEST_F(StackOpen, APatternBringsTheTimeSteps)
{
    setUpFor(picFile("t1.pic"));
    for (const char* name : {"t2.pic", "t3.pic"})
        picFile(name);
    click(*form, "chkTimeSeries");
    EXPECT_EQ(get<QSpinBox>("spnTimeStep").maximum(), 1);
    typeName(*form, "fchChannel1", path("t?.pic"));
    EXPECT_EQ(get<QSpinBox>("spnTimeStep").maximum(), 3);
    EXPECT_EQ(spin("spnLast"), 7);
}

TEST_F(StackOpen, EstimatesTheMemory)
{
    // 16 x 12 x 8 voxels, and textures of 16 x 8 x 12 + 16 x 8 x 16 + 16 x 16.
    setUpFor(picFile("a.pic", 16, 12, 8));
    EXPECT_EQ(memory(), "Memory required: 5.25KB");
    click(*form, "btnDetails");
    click(*form, "chkConserveMem");
    EXPECT_EQ(memory(), "Memory required: 3.75KB");
    click(*form, "btn3D");
    EXPECT_EQ(memory(), "Memory required: 2.00KB");
    click(*form, "btn3DParallel");
    EXPECT_EQ(memory(), "Memory required: 2.00KB");
    click(*form, "chkConserveMem");
    EXPECT_EQ(memory(), "Memory required: 3.50KB");
    // 8 x 6 x 4, padded to 8 x 8 x 4.
    QTest::keyClick(&get<QSpinBox>("spnSubsample"), Qt::Key_Up);
    EXPECT_EQ(memory(), "Memory required: 0.44KB");
    get<QSpinBox>("spnSubsample").setValue(1);
    // Four layers.
    QTest::keyClick(&get<QSpinBox>("spnStep"), Qt::Key_Up);
    EXPECT_EQ(memory(), "Memory required: 1.75KB");
}

TEST_F(StackOpen, EstimatesChannelsAndTimePoints)
{
    for (const char* name : {"t1.pic", "t2.pic", "t3.pic"})
        picFile(name, 16, 12, 8);
    setUpFor(path("t1.pic"));
    // Three rows are three channels.
    EXPECT_EQ(memory(), "Memory required: 15.75KB");
    form->setNumberOfChannels(1);
    EXPECT_EQ(memory(), "Memory required: 5.25KB");
    typeName(*form, "fchChannel1", path("t?.pic"));
    EXPECT_EQ(memory(), "Memory required: Not enough info");
    click(*form, "chkTimeSeries");
    EXPECT_EQ(memory(), "Memory required: 15.75KB");
}

TEST_F(StackOpen, EstimatesFilesWithAllChannels)
{
    QFile::copy(kData + "/made/lsm/synth_8bit_z4_c4.lsm", path("t1.lsm"));
    QFile::copy(path("t1.lsm"), path("t2.lsm"));
    setUpFor(path("t1.lsm"));
    // 40 x 40 x 4, textures 64 x 4 x 40 twice and 64 x 64; four channels.
    EXPECT_EQ(memory(), "Memory required: 121.00KB");
    click(*form, "chkMultiTimeSeries");
    typeName(*form, "fchMultiChannel", path("t*.lsm"));
    EXPECT_EQ(memory(), "Memory required: 242.00KB");
    typeName(*form, "fchMultiChannel", path("u*.lsm"));
    EXPECT_EQ(memory(), "Memory required: Not enough info");
}

TEST_F(StackOpen, NamesThatAreNotThereGiveNoEstimate)
{
    setUpFor(picFile("a.pic"));
    typeName(*form, "fchChannel1", path("none.pic"));
    EXPECT_EQ(memory(), "Memory required: Not enough info");
    typeName(*form, "fchChannel1", path("a.pic"));
    EXPECT_EQ(memory(), "Memory required: 5.25KB");
    // It vanishes while the form is open.
    QFile::remove(path("a.pic"));
    form->calculateMemory();
    EXPECT_EQ(memory(), "Memory required: Not enough info");
    typeName(*form, "fchChannel1", "");
    EXPECT_EQ(memory(), "Memory required: Not enough info");
}

TEST_F(StackOpen, ASequenceShowsItsFigures)
{
    LoadDescription next;
    next.filesToLoad = {{tiff("t1.tif", 1, 1)}, {tiff("t2.tif", 1, 1)}};
    next.fileType = ImageType::TiffSeries;
    next.timePoints = 2;
    form->setupTiff(next, "t?.tif", 8, 3);
    waitForProbes();
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(page(), "tiffSeries");
    EXPECT_EQ(label(*form, "lblPattern"), "<p align=\"center\">Filename pattern: t?.tif</p>");
    EXPECT_EQ(label(*form, "lblChannels"), "Channels: <b>1</b>");
    EXPECT_EQ(label(*form, "lblBitDepth"), "Bit depth: <b>8</b>");
    EXPECT_EQ(label(*form, "lblSlices"), "Slices: <b>3</b>");
    EXPECT_EQ(label(*form, "lblTimePoints"), "Time points: <b>2</b>");
    EXPECT_EQ(spin("spnLast"), 2);
    for (const char* name : {"spnXDim", "spnYDim", "spnZDim"})
        EXPECT_EQ(voxel(name), 1.0);
    // 8 x 6 x 3: 144 voxels, textures 8 x 4 x 6 + 8 x 4 x 8 + 8 x 8; two time points.
    EXPECT_EQ(memory(), "Memory required: 1.28KB");
    click(*form, "btnDetails");
    EXPECT_TRUE(get<QSpinBox>("spnTimeStep").isVisible());
    get<QSpinBox>("spnTimeStep").setValue(2);
    EXPECT_EQ(memory(), "Memory required: 0.64KB");
    next.timePoints = 1;
    form->setupTiff(next, "t?.tif", 8, 3);
    click(*form, "btnDetails");
    EXPECT_FALSE(get<QSpinBox>("spnTimeStep").isVisible());
}

TEST_F(StackOpen, TellsOfNewVoxelSizes)
{
    setUpFor(picFile("a.pic"));
    click(*form, "btnDetails");
    std::vector<double> told;
    QObject::connect(form.get(), &StackOpenForm::scaleChanged, form.get(), [&](double x, double y, double z) {
        told = {x, y, z};
    });
    auto& box = get<FloatSpinBox>("spnYDim");
    box.selectAll();
    QTest::keyClicks(&box, QLocale().toString(0.0645, 'f', 4));
    EXPECT_EQ(told, (std::vector{0.0, 0.0645, 0.0}));
}

} // namespace
} // namespace tirn
