// What the form loads, and what it refuses.

#include <QCheckBox>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

#include "support/otheruser.h"
#include "support/picfile.h"
#include "support/tifffile.h"
#include "ui/open/stackopenform.h"
#include "ui/widgets/filechooser.h"
#include "ui/widgets/floatspinbox.h"
#include "uisupport/openformtest.h"

namespace tirn {
namespace {

using test::SeenBox;
using Lists = std::vector<QStringList>;

class StackLists : public test::OpenFormTest
{
protected:
    StackLists() { form = std::make_unique<StackOpenForm>(services(), nullptr); }

    void setUpFor(const QString& file)
    {
        form->setup(file);
        waitForProbes();
    }
    void loadKnown(const Lists& files, int channels, int timePoints)
    {
        form->buildFileList_knownList(files, channels, timePoints);
        waitForProbes();
    }
    /// Shows the page of a file for each channel with these names.
    void name(const QStringList& names)
    {
        setUpFor(picFile("first.pic"));
        form->setNumberOfChannels(static_cast<int>(names.size()));
        // Rows that went are gone for good.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (int i = 0; i < names.size(); ++i)
            typeName(*form, "fchChannel" + QString::number(i + 1), names.at(i));
    }
    /// Files of 16 x 12 x 8, and their names.
    QStringList series(const QString& stem, int count)
    {
        QStringList names;
        for (int i = 0; i < count; ++i)
            names.append(picFile(QString("%1_t%2.pic").arg(stem).arg(i)));
        return names;
    }
    void open() { click(*form, "btnOpen"); }
    SeenBox refusal(const QString& text) const
    {
        return {QMessageBox::Warning, "File Load Error", text, true};
    }
    void expectRefused(const SeenBox& box)
    {
        EXPECT_EQ(seenBox(), box);
        EXPECT_EQ(loads(), 0U);
        EXPECT_TRUE(form->isVisible());
    }
    template <class Widget>
    Widget& get(const char* widget) const
    {
        return find<Widget>(*form, widget);
    }

    std::unique_ptr<StackOpenForm> form;
};

TEST_F(StackLists, AnEmptyLastRowIsLeftOut)
{
    name({picFile("a.pic"), ""});
    log.clear();
    open();
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(seenBox(), SeenBox());
    EXPECT_EQ(get<QTableWidget>("tblChannels").rowCount(), 1);
    EXPECT_EQ(get<QSpinBox>("spnNumChannels").value(), 1);
    EXPECT_TRUE(log.contains("starting to buildfilelist 1"));
    EXPECT_TRUE(log.contains("************ done building file list ************"));
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{{path("a.pic")}}));
    EXPECT_EQ(loaded().channels, 1);
    EXPECT_EQ(loaded().timePoints, 1);
    EXPECT_EQ(loaded().fileType, ImageType::Unknown);
    EXPECT_FALSE(loaded().partial);
    EXPECT_EQ(loaded().dimX, -1);
    EXPECT_EQ(settings.stackPath, QFileInfo(path("a.pic")).path());
}

TEST_F(StackLists, AFileForEachChannelIsOneElement)
{
    name({picFile("a.pic"), picFile("b.pic")});
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{{path("a.pic"), path("b.pic")}}));
    EXPECT_EQ(loaded().channels, 2);
}

TEST_F(StackLists, ARowWithoutNameIsTold)
{
    name({"", picFile("b.pic")});
    open();
    expectRefused(refusal("No filename specified for channel 1.  Aborting!"));
    EXPECT_EQ(get<QTableWidget>("tblChannels").rowCount(), 2);
    typeName(*form, "fchChannel1", path("b.pic"));
    typeName(*form, "fchChannel2", "  ");
    open();
    expectRefused(refusal("No filename specified for channel 2.  Aborting!"));
}

TEST_F(StackLists, APatternWithoutFilesIsTold)
{
    name({path("none*.pic")});
    click(*form, "chkTimeSeries");
    open();
    expectRefused(
        refusal("The pattern " + path("none*.pic") + " does not return any valid filenames.  Aborting!"));
}

TEST_F(StackLists, AFileThatVanishedOrMayNotBeReadIsTold)
{
    name({picFile("a.pic"), path("none.pic")});
    open();
    expectRefused({QMessageBox::Critical, "File does not exist", "Cannot find " + path("none.pic"), true});
    QFile::setPermissions(path("."), QFile::Permissions(0x7755));
    QFile::setPermissions(path("a.pic"), QFile::Permissions());
    const test::OtherUser user;
    open();
    expectRefused({QMessageBox::Critical, "Permissions error", "Cannot read " + path("a.pic"), true});
}

TEST_F(StackLists, ChannelsOfAnotherSizeAreTold)
{
    name({picFile("a.pic", 16, 12, 8), picFile("b.pic", 15, 12, 7)});
    open();
    expectRefused(refusal("Sorry, but channel 2 has dimensions x: 15 y: 12 z: 7 , while channel 1 has "
                          "dimensions x: 16 y: 12 z: 8.  Aborting!"));
    EXPECT_EQ(nameIn(*form, "fchChannel2"), path("b.pic"));
}

TEST_F(StackLists, ATimeSeriesHasAnElementForEachTimePoint)
{
    const QStringList a = series("a", 3);
    const QStringList b = series("b", 3);
    name({path("a_t?.pic"), path("b_t?.pic")});
    click(*form, "chkTimeSeries");
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{{a[0], b[0]}, {a[1], b[1]}, {a[2], b[2]}}));
    EXPECT_EQ(loaded().channels, 2);
    EXPECT_EQ(loaded().timePoints, 3);
}

TEST_F(StackLists, ABlankInAPatternIsAnyCharacter)
{
    const QString one = picFile("a b1.pic");
    const QString two = picFile("a_b2.pic");
    name({path("a b?.pic")});
    click(*form, "chkTimeSeries");
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{{one}, {two}}));
}

TEST_F(StackLists, AReferenceStandsBesideEachTimePoint)
{
    const QStringList a = series("a", 3);
    name({path("a_t?.pic"), picFile("still.pic")});
    click(*form, "chkTimeSeries");
    answer("Yes");
    open();
    EXPECT_EQ(question,
              (SeenBox{QMessageBox::Question, "Files to Open",
                       "Do you want to load " + path("still.pic") + "\nin channel2 as a constant?", true}));
    ASSERT_EQ(loads(), 1U);
    const QString still = path("still.pic");
    EXPECT_EQ(loaded().filesToLoad, (Lists{{a[0], still}, {a[1], still}, {a[2], still}}));
    EXPECT_EQ(loaded().channels, 2);
    EXPECT_EQ(loaded().timePoints, 3);
}

TEST_F(StackLists, WithoutAReferenceNothingIsLoaded)
{
    series("a", 3);
    name({path("a_t?.pic"), picFile("still.pic")});
    click(*form, "chkTimeSeries");
    answer("No!");
    open();
    EXPECT_EQ(question.title, "Files to Open");
    expectRefused(SeenBox());
    // Closing the question is no yes.
    answer("another button");
    open();
    expectRefused(SeenBox());
    EXPECT_EQ(nameIn(*form, "fchChannel2"), path("still.pic"));
}

TEST_F(StackLists, AnotherNumberOfFilesIsTold)
{
    series("a", 3);
    series("b", 2);
    name({path("a_t?.pic"), path("b_t?.pic")});
    click(*form, "chkTimeSeries");
    open();
    expectRefused(refusal("Sorry, but channel 2 has 2 files, while other channels have 3files.  Aborting!"));
}

TEST_F(StackLists, ATimeStepTakesEverySecondFile)
{
    const QStringList a = series("a", 5);
    name({path("a_t?.pic")});
    click(*form, "chkTimeSeries");
    click(*form, "btnDetails");
    get<QSpinBox>("spnTimeStep").setValue(2);
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{{a[0]}, {a[2]}, {a[4]}}));
    EXPECT_EQ(loaded().timePoints, 3);
}

TEST_F(StackLists, ARemainderAboveOneRepeatsTheFirstFile)
{
    const QStringList a = series("a", 5);
    name({path("a_t?.pic")});
    click(*form, "chkTimeSeries");
    click(*form, "btnDetails");
    get<QSpinBox>("spnTimeStep").setValue(3);
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{{a[0]}, {a[3]}, {a[0]}}));
    EXPECT_EQ(loaded().timePoints, 3);
}

TEST_F(StackLists, TheDetailsCountOnceTheyWereOpened)
{
    name({picFile("a.pic", 16, 12, 8)});
    click(*form, "btnDetails");
    get<QSpinBox>("spnFirst").setValue(1);
    get<QSpinBox>("spnLast").setValue(6);
    get<QSpinBox>("spnStep").setValue(2);
    get<QSpinBox>("spnSubsample").setValue(4);
    click(*form, "btn3D");
    click(*form, "chkResliceZ");
    get<QSpinBox>("spnZSlices").setValue(5);
    click(*form, "chkConserveMem");
    get<FloatSpinBox>("spnXDim").setDoubleValue(0.123456789);
    get<FloatSpinBox>("spnYDim").setDoubleValue(0.2);
    get<FloatSpinBox>("spnZDim").setDoubleValue(1.5);
    // Closed they count as well.
    click(*form, "btnDetails");
    open();
    ASSERT_EQ(loads(), 1U);
    const LoadDescription& load = loaded();
    EXPECT_TRUE(load.partial);
    EXPECT_EQ((std::vector{load.first, load.last, load.step, load.subsample, load.resliceZ}),
              (std::vector{1, 6, 2, 4, 5}));
    EXPECT_TRUE(load.reslice);
    EXPECT_TRUE(load.conserveMemory);
    EXPECT_EQ(load.textureTarget, static_cast<GLenum>(GL_TEXTURE_3D));
    EXPECT_EQ((std::vector{load.dimX, load.dimY, load.dimZ}), (std::vector{0.123456789, 0.2, 1.5}));
    // Set up anew they do not count any more.
    name({path("a.pic")});
    open();
    ASSERT_EQ(loads(), 2U);
    EXPECT_FALSE(loaded().partial);
    EXPECT_FALSE(loaded().conserveMemory);
    EXPECT_EQ(loaded().textureTarget, static_cast<GLenum>(GL_TEXTURE_2D));
}

TEST_F(StackLists, OnlyPlain3DTextureMapsAreThat)
{
    name({picFile("a.pic")});
    click(*form, "btnDetails");
    click(*form, "btn3D");
    click(*form, "chkResliceZ");
    click(*form, "btn3DParallel");
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().textureTarget, static_cast<GLenum>(GL_TEXTURE_2D));
    EXPECT_FALSE(loaded().reslice);
}

TEST_F(StackLists, TheDefaultTargetIsThatOfThePreference)
{
    settings.defaultEncode = 1;
    name({picFile("a.pic")});
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().textureTarget, static_cast<GLenum>(GL_TEXTURE_3D));
}

TEST_F(StackLists, AnAbandonedSequenceLeavesNoTraceInTheNextLoad)
{
    LoadDescription sequence;
    sequence.fileType = ImageType::TiffSeries;
    sequence.filesToLoad = {{"x"}};
    sequence.raw = true;
    form->setupTiff(sequence, "x", 8, 1);
    name({picFile("a.pic")});
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().fileType, ImageType::Unknown);
    EXPECT_FALSE(loaded().raw);
}

TEST_F(StackLists, WhileAnotherLoadIsUnderWayTheFormComesBack)
{
    name({picFile("a.pic")});
    isBusy = true;
    open();
    expectRefused(refusal("Another stack is being loaded. Please wait until it stands, or cancel it."));
    isBusy = false;
    open();
    EXPECT_EQ(loads(), 1U);
}

TEST_F(StackLists, APageThatIsNotThereIsLogged)
{
    name({picFile("a.pic")});
    auto& pages = get<QStackedWidget>("wskOpen");
    pages.setCurrentIndex(pages.addWidget(new QWidget));
    open();
    EXPECT_TRUE(log.contains("Uh 3 tab doesn't exist\n"));
    EXPECT_EQ(loads(), 0U);
}

/// The page of files with all channels.
class MultiChannelLists : public StackLists
{
protected:
    MultiChannelLists()
    {
        for (int i = 0; i < 5; ++i) {
            files.append(path(QString("t%1.lsm").arg(i)));
            QFile::copy(TIRN_TEST_DATA "/made/lsm/synth_8bit_z4_c4.lsm", files.last());
        }
        setUpFor(files.first());
    }

    QStringList files;
};

TEST_F(MultiChannelLists, OneFileIsOneTimePoint)
{
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{{files[0]}}));
    EXPECT_EQ(loaded().channels, 4);
    EXPECT_EQ(loaded().timePoints, 1);
    EXPECT_FALSE(form->isVisible());
}

TEST_F(MultiChannelLists, AFileIsATimePointAlone)
{
    click(*form, "chkMultiTimeSeries");
    typeName(*form, "fchMultiChannel", path("t*.lsm"));
    click(*form, "btnDetails");
    get<QSpinBox>("spnTimeStep").setValue(3);
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{{files[0]}, {files[3]}}));
    EXPECT_EQ(loaded().channels, 4);
    EXPECT_EQ(loaded().timePoints, 2);
}

TEST_F(MultiChannelLists, AnEmptyNameIsTold)
{
    typeName(*form, "fchMultiChannel", "");
    open();
    expectRefused(refusal("No filename specified for multichannel  Aborting!"));
}

TEST_F(MultiChannelLists, APatternWithoutFilesIsTold)
{
    click(*form, "chkMultiTimeSeries");
    typeName(*form, "fchMultiChannel", path("u*.lsm"));
    open();
    expectRefused(
        refusal("The pattern " + path("u*.lsm") + " does not return any valid filenames.  Aborting!"));
}

TEST_F(MultiChannelLists, OneTimePointIsNoSeries)
{
    click(*form, "chkMultiTimeSeries");
    open();
    expectRefused({QMessageBox::Critical, "Silly situation for multichannel",
                   "It's not a time series if there's only one time point!", true});
    EXPECT_FALSE(get<QCheckBox>("chkMultiTimeSeries").isChecked());
    EXPECT_EQ(nameIn(*form, "fchMultiChannel"), files[0]);
}

TEST_F(MultiChannelLists, AFileThatIsNotThereIsTold)
{
    typeName(*form, "fchMultiChannel", path("none.lsm"));
    open();
    expectRefused({QMessageBox::Critical, "File does not exist", "Cannot find " + path("none.lsm"), true});
}

/// The page of a sequence with two channels and three time points.
class SeriesLists : public StackLists
{
protected:
    SeriesLists()
    {
        for (const char* time : {"t1", "t2", "t3"}) {
            for (const char* channel : {"c1", "c2"})
                elements.push_back(
                    {path(QString(time) + channel + "z1"), path(QString(time) + channel + "z2")});
        }
        LoadDescription next;
        next.fileType = ImageType::TiffSeries;
        next.channels = 2;
        next.timePoints = 3;
        next.filesToLoad = elements;
        form->setupTiff(next, "t?c?z?", 8, 2);
    }

    Lists elements;
};

TEST_F(SeriesLists, TheWholeSequenceIsLoaded)
{
    open();
    EXPECT_FALSE(form->isVisible());
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, elements);
    EXPECT_EQ(loaded().channels, 2);
    EXPECT_EQ(loaded().timePoints, 3);
    EXPECT_EQ(loaded().fileType, ImageType::TiffSeries);
    EXPECT_FALSE(loaded().partial);
}

TEST_F(SeriesLists, ATimeStepTakesAllChannelsOfATimePoint)
{
    click(*form, "btnDetails");
    get<QSpinBox>("spnTimeStep").setValue(2);
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, (Lists{elements[0], elements[1], elements[4], elements[5]}));
    EXPECT_EQ(loaded().timePoints, 2);
    EXPECT_TRUE(loaded().partial);
    EXPECT_EQ(loaded().last, 1);
    EXPECT_EQ((std::vector{loaded().dimX, loaded().dimY, loaded().dimZ}), (std::vector{1.0, 1.0, 1.0}));
}

TEST_F(SeriesLists, OpeningTwiceDoesNotStepTwice)
{
    click(*form, "btnDetails");
    get<QSpinBox>("spnTimeStep").setValue(2);
    isBusy = true;
    open();
    seenBox();
    isBusy = false;
    open();
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad.size(), 4U);
}

TEST_F(SeriesLists, ClosingLeavesTheSequenceToNoOne)
{
    QTest::keyClick(form.get(), Qt::Key_Escape);
    EXPECT_EQ(loads(), 0U);
}

using KnownLists = StackLists;

TEST_F(KnownLists, LeaveAFilledFormAsItIs)
{
    name({picFile("typed.pic")});
    loadKnown({{picFile("recent.pic")}}, 1, 1);
    ASSERT_EQ(loads(), 1U);
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(nameIn(*form, "fchChannel1"), path("typed.pic"));
}

TEST_F(KnownLists, AreLoadedAsTheyAre)
{
    const Lists files = {{picFile("a1.pic"), picFile("b1.pic")}, {picFile("a2.pic"), picFile("b2.pic")}};
    loadKnown(files, 2, 2);
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().filesToLoad, files);
    EXPECT_EQ(loaded().channels, 2);
    EXPECT_EQ(loaded().timePoints, 2);
    EXPECT_FALSE(loaded().partial);
    EXPECT_EQ(settings.stackPath, QFileInfo(path("a1.pic")).path());
    EXPECT_FALSE(form->isVisible());
}

TEST_F(KnownLists, EmptyOnesAreNothing)
{
    loadKnown({}, 1, 1);
    loadKnown({{}}, 1, 1);
    EXPECT_EQ(loads(), 0U);
    EXPECT_EQ(seenBox(), SeenBox());
}

TEST_F(KnownLists, NamesAfterTheFirstAreLookedFor)
{
    loadKnown({{picFile("a.pic"), path("b.pic")}}, 2, 1);
    EXPECT_EQ(loads(), 0U);
    EXPECT_EQ(seenBox(),
              (SeenBox{QMessageBox::Critical, "File does not exist", "Cannot find " + path("b.pic"), true}));
    // What is wrong with the first one is for the load to say.
    loadKnown({{path("none.pic")}}, 1, 1);
    EXPECT_EQ(loads(), 1U);
}

TEST_F(KnownLists, ALeicaTextPointsToItsTiffs)
{
    const QString name = test::saveBytes(path("a.txt"), "LEICA MICROSYSTEMS\n[HARDWARE PARAMETER]\n"
                                                        "[SCANNER INFORMATION]\n[TIME INFORMATION]\n");
    loadKnown({{name}}, 1, 1);
    EXPECT_EQ(loads(), 0U);
    EXPECT_EQ(seenBox().title, "Leica load");
}

TEST_F(KnownLists, ChannelsAndTimePointsAreFoundOut)
{
    const QString colour = TIRN_TEST_DATA "/made/lsm/synth_8bit_z4_c4.lsm";
    loadKnown({{colour}, {colour}}, 0, 0);
    ASSERT_EQ(loads(), 1U);
    EXPECT_EQ(loaded().channels, 4);
    EXPECT_EQ(loaded().timePoints, 2);
    // Files of one channel count as often as there are elements.
    const QString grey = picFile("a.pic");
    loadKnown({{grey}, {grey}, {grey}}, 0, 1);
    ASSERT_EQ(loads(), 2U);
    EXPECT_EQ(loaded().channels, 3);
    EXPECT_EQ(loaded().timePoints, 1);
}

} // namespace
} // namespace tirn
