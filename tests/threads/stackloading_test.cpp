// One load, step by step: what is reported, what is made, what is refused.

#include "support/stacks.h"
#include "support/tifffile.h"
#include "uisupport/loadrig.h"

namespace tirn::test {
namespace {

using StackLoadingTest = LoadRig;

TEST_F(StackLoadingTest, EachStackCountsAHundredForReadingAndAHundredForEncoding)
{
    describePics(2);
    const QString first = description.filesToLoad[0][0];
    const QString second = description.filesToLoad[1][0];
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(reports.steps(),
              QStringList({"Loading " + first + " 0/400", "Encoding " + first + " 100/400", " 200/400",
                           "Loading " + second + " 200/400", "Encoding " + second + " 300/400", " 400/400"}));
    EXPECT_EQ(loaded->files, (std::vector<QStringList>{{first}, {second}}));
    const VoxelArray& array = *loaded->array;
    EXPECT_EQ(array.timePointCount(), 2);
    EXPECT_EQ(array.channelCount(), 1);
    EXPECT_EQ(array.width(), 6);
    EXPECT_EQ(array.depth(), 4);
    EXPECT_EQ(array.images().size(), 2U);
    EXPECT_EQ(array.textures().size(), 2U * (6 + 5 + 4));
    EXPECT_TRUE(array.isComplete());
    EXPECT_EQ(array.sliceFirst, 0);
    EXPECT_EQ(array.sliceLast, 3);
    EXPECT_EQ(array.sliceStep, 1);
    EXPECT_EQ(array.subsample, 1);
    EXPECT_TRUE(log.contains("before push time 1"));
    EXPECT_EQ(log.count("Before encode"), 2);
    EXPECT_TRUE(log.contains("bitdepth is 8"));
}

TEST_F(StackLoadingTest, TheEncoderContinuesFromTheLastReportInPercent)
{
    describePics(1);
    load();
    const QStringList percents = reports.continuations();
    ASSERT_FALSE(percents.isEmpty());
    // 15 slices: each step is a new percentage, and the hundredth is the report that follows.
    EXPECT_EQ(percents.size(), 14);
    EXPECT_EQ(percents.first(), " 6/-1");
    EXPECT_EQ(percents.last(), " 93/-1");
}

TEST_F(StackLoadingTest, TheTexturesAreFinishedBeforeTheStackIsGivenAway)
{
    describePics(2);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(gl.texts().back(), "Finish()");
}

TEST_F(StackLoadingTest, SeveralNamesOfAPicAreItsChannels)
{
    description.filesToLoad = {{pic("c0.pic"), pic("c1.pic"), pic("c2.pic")}};
    description.fileType = ImageType::BioRad;
    description.channels = 3;
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->channelCount(), 3);
    EXPECT_EQ(loaded->array->images().size(), 1U);
    EXPECT_EQ(loaded->array->textures().size(), 3U * (6 + 5 + 4));
}

TEST_F(StackLoadingTest, AnUnknownTypeIsTakenFromTheFirstFile)
{
    describePics(1);
    description.fileType = ImageType::Unknown;
    ASSERT_TRUE(load());
    EXPECT_EQ(lastStep(), " 200/200");
}

TEST_F(StackLoadingTest, AFileOfNoKnownTypeEndsTheLoadWithTheTextsOfItsProbing)
{
    description.filesToLoad = {{saveBytes(path("a.txt"), "no picture")}};
    EXPECT_FALSE(load());
    EXPECT_EQ(reports.steps(), QStringList("Could not allocate ImageIO object 0/0 done"));
}

TEST_F(StackLoadingTest, AFileThatIsGoneWhenItsTypeIsAskedForIsNamed)
{
    description.filesToLoad = {{path("gone.pic")}};
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(),
              "Could not allocate ImageIO object Unable to open file: " + path("gone.pic") + " 0/0 done");
}

TEST_F(StackLoadingTest, AFileThatVanishedSinceItWasChosenIsNamed)
{
    describePics(3);
    QFile::remove(path("t1.pic"));
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "Could not allocate ImageIO object\nUnable to open file: " + path("t1.pic") +
                              "\nnone is not a supported file type.  Aborting! 0/0 done");
    EXPECT_EQ(reports.steps().at(3), "Loading " + path("t1.pic") + " 200/600");
    EXPECT_EQ(liveGlNames().textures, 0);
    describePics(1);
    EXPECT_TRUE(load());
}

TEST_F(StackLoadingTest, ADirectoryInPlaceOfAFileIsNamed)
{
    description.filesToLoad = {{path("")}};
    description.fileType = ImageType::BioRad;
    EXPECT_FALSE(load());
    EXPECT_TRUE(lastStep().contains("Unable to open file: " + path("")));
}

TEST_F(StackLoadingTest, ATruncatedThirdFileEndsTheLoadAndTheNextOneWorks)
{
    describePics(4);
    QFile file(path("t2.pic"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.resize(file.size() - 1);
    file.close();
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "Could not allocate ImageIO object\nUnable to read in file: " + path("t2.pic") +
                              "\nnone is not a supported file type.  Aborting! 0/0 done");
    EXPECT_EQ(liveGlNames(), LiveGlNames());
    describePics(2);
    EXPECT_TRUE(load());
}

TEST_F(StackLoadingTest, ALayerOfAnotherSizeOrCutShortEndsATiffSeries)
{
    const auto seriesWith = [this](const QString& third) {
        reports.clear();
        QStringList names = tiffs("t", 4, 10);
        names[2] = third;
        description = LoadDescription();
        description.filesToLoad = {names};
        description.fileType = ImageType::TiffSeries;
    };
    seriesWith(tiffs("wide", 1, 10, 7).first());
    EXPECT_FALSE(load());
    EXPECT_EQ(
        lastStep(),
        "Files not compatible.\nt_z0.tif ... t_z3.tif is not a supported file type.  Aborting! 0/0 done");
    TiffFile layer;
    layer.pages = {plainPage(6, 5, 10)};
    seriesWith(layer.save(path("short.tif"), 20));
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "Failed to parse header\nt_z0.tif ... t_z3.tif is not a supported file type.  "
                          "Aborting! 0/0 done");
    EXPECT_EQ(liveGlNames(), LiveGlNames());
}

TEST_F(StackLoadingTest, AThirdFileOfAnotherSizeDepthOrChannelCountIsRefused)
{
    const std::vector<QStringList> others = {{pic("wide.pic", 7)},
                                             {pic("high.pic", 6, 6)},
                                             {pic("deep.pic", 6, 5, 3)},
                                             {pic("words.pic", 6, 5, 4, 16)},
                                             {pic("two.pic"), pic("two2.pic")}};
    for (const QStringList& other : others) {
        reports.clear();
        description = LoadDescription();
        describePics(2);
        description.filesToLoad.push_back(other);
        description.timePoints = 3;
        EXPECT_FALSE(load());
        const QString name = other.size() == 1 ? QFileInfo(other[0]).fileName() : "two.pic ... two2.pic";
        EXPECT_EQ(lastStep(), name + " differs from t0.pic in size, depth or channels. 0/0 done");
        EXPECT_EQ(liveGlNames(), LiveGlNames());
    }
}

TEST_F(StackLoadingTest, VoxelsThatCannotBeReadAreNotUnderstood)
{
    description.filesToLoad = {{testData("made/dv/synth_le_u8_1c.dv")}};
    description.fileType = ImageType::DeltaVision;
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "I cannot undestand the data in synth_le_u8_1c.dv for some reason.\nfile ends "
                          "early: 0 of 2560 layers "
                          "0/0 done");
}

TEST_F(StackLoadingTest, ACardWithoutFragmentProgramsRefusesWords)
{
    surroundings.options.kind = RenderThreadKind::Paletted;
    description.filesToLoad = {{pic("words.pic", 6, 5, 4, 16)}};
    description.fileType = ImageType::BioRad;
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(),
              "words.pic is a 16-bit stack.\n  Greater than 8-bit images are not supported on your "
              "video card.  Please convert the stack. 0/0 done");
    EXPECT_EQ(gl.count("GenTextures"), 0);
    description = LoadDescription();
    describePics(1);
    EXPECT_TRUE(load());
}

TEST_F(StackLoadingTest, ARangeReadsItsLayers)
{
    describePics(1);
    description.filesToLoad = {{pic("deep.pic", 6, 5, 9)}};
    description.setRange(1, 7, 3, 0, GL_TEXTURE_2D, false, 0, false);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->depth(), 2);
    EXPECT_EQ(loaded->array->sliceFirst, 1);
    EXPECT_EQ(loaded->array->sliceLast, 7);
    EXPECT_EQ(loaded->array->sliceStep, 3);
    const ImageFile& image = *loaded->array->images().front();
    EXPECT_EQ(sample(image, 2, 1, 0), 2 + 10 + 100);
    EXPECT_EQ(sample(image, 2, 1, 1), (2 + 10 + 400) & 255);
}

TEST_F(StackLoadingTest, ARangeThatSeemsToHaveAsManyStepsAsTheFileHasLayersReadsAllOfIt)
{
    describePics(1);
    description.setRange(5, 9, 1, 0, GL_TEXTURE_2D, false, 0, false);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->depth(), 4);
    EXPECT_EQ(loaded->array->sliceFirst, 0);
}

TEST_F(StackLoadingTest, ARangeBeyondTheFileIsNotUnderstood)
{
    describePics(1);
    description.setRange(2, 4, 1, 0, GL_TEXTURE_2D, false, 0, false);
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "I cannot undestand the data in t0.pic for some reason. 0/0 done");
}

TEST_F(StackLoadingTest, AnEmptyRangeEndsTheLoadBeforeItBegins)
{
    describePics(1);
    description.setRange(5, 4, 1, 0, GL_TEXTURE_2D, false, 0, false);
    EXPECT_FALSE(load());
    EXPECT_EQ(reports.steps(), QStringList("Error: trying to load 0 slices 0/0 done"));
}

TEST_F(StackLoadingTest, AStepOfZeroIsRefusedWithoutADivision)
{
    describePics(1);
    description.setRange(0, 3, 0, 0, GL_TEXTURE_2D, false, 0, false);
    EXPECT_FALSE(load());
    EXPECT_TRUE(lastStep().endsWith(" done"));
}

TEST_F(StackLoadingTest, SubSamplingReducesEachStackAndIsRemembered)
{
    describePics(2);
    description.setRange(0, 3, 1, 2, GL_TEXTURE_2D, false, 0, false);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->width(), 3);
    EXPECT_EQ(loaded->array->height(), 3);
    EXPECT_EQ(loaded->array->depth(), 2);
    EXPECT_EQ(loaded->array->subsample, 2);
    EXPECT_EQ(loaded->array->images()[1]->attributes().x, 3);
}

TEST_F(StackLoadingTest, AFactorThatThereIsNoneReadsTheStackAsItIs)
{
    describePics(1);
    description.setRange(0, 3, 1, 9, GL_TEXTURE_2D, false, 0, false);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->width(), 6);
    EXPECT_EQ(loaded->array->subsample, 1);
}

TEST_F(StackLoadingTest, AReducedStackIsReducedAgainWhenItIsReadAgain)
{
    describePics(1);
    description.setRange(0, 3, 1, 2, GL_TEXTURE_2D, false, 0, true);
    auto loaded = load();
    ASSERT_TRUE(loaded);
    gl.clear();
    EXPECT_TRUE(loaded->array->flip('X'));
    EXPECT_EQ(gl.count("TexSubImage2D"), 3 + 3 + 2);
}

TEST_F(StackLoadingTest, ThreeDimensionalTexturesCanBeResliced)
{
    describePics(1);
    description.setRange(0, 3, 1, 0, GL_TEXTURE_3D, true, 16, false);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->textureTarget(), static_cast<GLenum>(GL_TEXTURE_3D));
    EXPECT_EQ(loaded->array->finalDepth(), 16);
    EXPECT_EQ(loaded->array->textures().size(), 1U);
}

TEST_F(StackLoadingTest, WithoutForcedSlicesTheirNumberDoesNotCount)
{
    describePics(1);
    description.setRange(0, 3, 1, 0, GL_TEXTURE_3D, false, 16, false);
    EXPECT_EQ(load()->array->finalDepth(), 4);
}

TEST_F(StackLoadingTest, ConservedMemoryIsLetGoAfterEachEncoding)
{
    describePics(3);
    description.setRange(0, 3, 1, 0, GL_TEXTURE_2D, false, 0, true);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    for (const auto& image : loaded->array->images())
        EXPECT_FALSE(image->isLoaded());
    EXPECT_EQ(loaded->array->textures().size(), 3U * (6 + 5 + 4));
}

TEST_F(StackLoadingTest, AnEmptyListEndsQuietly)
{
    EXPECT_FALSE(load());
    EXPECT_TRUE(reports.steps().isEmpty());
}

TEST_F(StackLoadingTest, ChannelsAndTimePointsAreThoseThatTheFilesHave)
{
    describePics(2);
    description.channels = 4;
    description.timePoints = 9;
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->channelCount(), 1);
    EXPECT_EQ(loaded->array->timePointCount(), 2);
}

TEST_F(StackLoadingTest, ARawFileIsReadByItsLayout)
{
    QByteArray bytes(7, '\xff');
    for (int i = 0; i < 3 * 2 * 2 * 2; ++i)
        bytes.append(static_cast<char>(i));
    const QString name = saveBytes(path("a.raw"), bytes);
    description.filesToLoad = {{name}};
    description.setRaw(7, 3, 2, 2, 2, 8);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(reports.steps(),
              QStringList({"Loading " + name + " 0/200", "Encoding " + name + " 100/200", " 200/200"}));
    EXPECT_EQ(loaded->array->channelCount(), 2);
    EXPECT_EQ(channelSamples(*loaded->array->images().front(), 1),
              (std::vector<int>{1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23}));
    EXPECT_FALSE(log.contains("Before encode"));
    EXPECT_FALSE(log.contains("before push time 0"));
}

TEST_F(StackLoadingTest, TheBytesOfRawWordsAreSwappedWhereAskedFor)
{
    const QString name = saveBytes(path("a.raw"), QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8));
    for (const bool swap : {false, true}) {
        description = LoadDescription();
        description.filesToLoad = {{name}};
        description.setRaw(0, 2, 2, 1, 1, 16);
        description.rawLayout.swapBytes = swap;
        const auto loaded = load();
        ASSERT_TRUE(loaded);
        EXPECT_EQ(sample(*loaded->array->images().front(), 0, 0, 0), swap ? 0x0102 : 0x0201);
        EXPECT_EQ(sample(*loaded->array->images().front(), 1, 1, 0), swap ? 0x0708 : 0x0807);
    }
}

TEST_F(StackLoadingTest, ARawFileThatIsTooShortIsUnsupported)
{
    description.filesToLoad = {{saveBytes(path("a.raw"), QByteArray(10, 'a'))}};
    description.setRaw(0, 3, 2, 2, 1, 8);
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "Unable to read in file: " + path("a.raw") +
                              "\na.raw is not a supported file type.  Aborting! 0/0 done");
}

TEST_F(StackLoadingTest, ATiffSeriesWithOneElementATimePointIsReadElementByElement)
{
    description.filesToLoad = {tiffs("t0", 3, 10), tiffs("t1", 3, 20)};
    description.fileType = ImageType::TiffSeries;
    description.timePoints = 2;
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(reports.steps(), QStringList({"Loading " + path("t0_z0.tif") + " 0/400",
                                            "Encoding " + path("t0_z0.tif") + " 100/400", " 200/400",
                                            "Loading " + path("t1_z0.tif") + " 200/400",
                                            "Encoding " + path("t1_z0.tif") + " 300/400", " 400/400"}));
    EXPECT_EQ(sample(*loaded->array->images()[1], 0, 0, 2), 22);
}

TEST_F(StackLoadingTest, ATiffSeriesWithAnElementForEachChannelIsMerged)
{
    description.filesToLoad = {tiffs("t0c0", 2, 10), tiffs("t0c1", 2, 20), tiffs("t1c0", 2, 30),
                               tiffs("t1c1", 2, 40)};
    description.fileType = ImageType::TiffSeries;
    description.channels = 2;
    description.timePoints = 2;
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(reports.steps(), QStringList({"Loading " + path("t0c0_z0.tif") + " 0/800",
                                            "Loading " + path("t0c1_z0.tif") + " 100/800",
                                            "Encoding " + path("t0c0_z0.tif") + " 200/800", " 400/800",
                                            "Loading " + path("t1c0_z0.tif") + " 400/800",
                                            "Loading " + path("t1c1_z0.tif") + " 500/800",
                                            "Encoding " + path("t1c0_z0.tif") + " 600/800", " 800/800"}));
    EXPECT_EQ(loaded->array->images().size(), 2U);
    EXPECT_EQ(loaded->array->channelCount(), 2);
    EXPECT_EQ(sample(*loaded->array->images()[0], 3, 3, 1, 1), 21);
    EXPECT_EQ(sample(*loaded->array->images()[1], 3, 3, 0, 0), 30);
    EXPECT_EQ(loaded->array->textures().size(), 2U * 2 * (6 + 5 + 2));
    EXPECT_EQ(log.count("before merge"), 2);
    EXPECT_EQ(log.count("after merge"), 2);
    EXPECT_EQ(loaded->files.size(), 4U);
}

TEST_F(StackLoadingTest, AMissingElementIsWarnedOfAtItsTimePointAndChannel)
{
    description.filesToLoad = {tiffs("t0c0", 2, 10), tiffs("t0c1", 2, 20), tiffs("t1c0", 2, 30)};
    description.fileType = ImageType::TiffSeries;
    description.channels = 2;
    description.timePoints = 2;
    EXPECT_FALSE(load());
    EXPECT_EQ(log.warnings(), QStringList("ASSERT: \"ch+channels*time >= (int) filesToLoad.size()\" in "
                                          "threads\\filethread.cpp (262)"));
    EXPECT_EQ(reports.steps().at(5), "Loading  500/600");
    EXPECT_EQ(lastStep(),
              "Could not allocate ImageIO object\nnone is not a supported file type.  Aborting! 0/0 done");
    EXPECT_EQ(liveGlNames(), LiveGlNames());
}

TEST_F(StackLoadingTest, ChannelsOfDifferentSizeAreRefused)
{
    description.filesToLoad = {tiffs("c0", 2, 10), tiffs("c1", 2, 20, 7)};
    description.fileType = ImageType::TiffSeries;
    description.channels = 2;
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "c1_z0.tif ... c1_z1.tif differs from c0_z0.tif ... c0_z1.tif in size, depth or "
                          "channels. 0/0 done");
}

TEST_F(StackLoadingTest, MergedChannelsAreReducedTogether)
{
    description.filesToLoad = {tiffs("c0", 4, 10), tiffs("c1", 4, 20)};
    description.fileType = ImageType::TiffSeries;
    description.channels = 2;
    description.setRange(0, 3, 1, 2, GL_TEXTURE_2D, false, 0, false);
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->width(), 3);
    EXPECT_EQ(loaded->array->depth(), 2);
    EXPECT_EQ(loaded->array->channelCount(), 2);
}

TEST_F(StackLoadingTest, SeveralFilesOfAFormatThatReadsOneAreReadOneByOneAndMerged)
{
    const QString stack = testData("made/stk/synth_8bit_10z_strips.stk");
    description.filesToLoad = {{stack, stack}};
    description.fileType = ImageType::MetaMorph;
    description.channels = 2;
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(reports.steps().size(), 3);
    EXPECT_EQ(loaded->array->channelCount(), 2);
    const ImageFile& image = *loaded->array->images().front();
    EXPECT_EQ(channelSamples(image, 0), channelSamples(image, 1));
    EXPECT_EQ(sample(image, 18, 36, 3, 1), 12);
}

TEST_F(StackLoadingTest, AFileWithChannelsOfItsOwnIsNoChannelOfATimePoint)
{
    const QString stack = testData("made/lsm/synth_8bit_z4_c4.lsm");
    description.filesToLoad = {{stack, stack}};
    description.fileType = ImageType::Zeiss;
    description.channels = 2;
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "synth_8bit_z4_c4.lsm has more than one channel and cannot be one of several files "
                          "of a time point. 0/0 done");
}

TEST_F(StackLoadingTest, WithoutMemoryTheTextStandsInThePlaceOfAName)
{
    describePics(2);
    const NoVoxelMemory none;
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(),
              "Could not allocate memory for file load is not a supported file type.  Aborting!\n 0/0 done");
    EXPECT_EQ(liveGlNames(), LiveGlNames());
}

TEST_F(StackLoadingTest, WhatWasCompleteWhenMemoryRanOutIsStillLoaded)
{
    // With its voxels let go and 3D textures nothing is read ahead, so that memory ends with the third file.
    describePics(4);
    description.setRange(0, 3, 1, 0, GL_TEXTURE_3D, false, 0, true);
    std::unique_ptr<NoVoxelMemory> none;
    reports.onReport = [&](const QString& text) {
        if (text.startsWith("Loading " + path("t2.pic")))
            none = std::make_unique<NoVoxelMemory>();
    };
    const auto loaded = load();
    none.reset();
    EXPECT_EQ(lastStep(),
              "Could not allocate memory for file load is not a supported file type.  Aborting!\n 0/0 done");
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->array->timePointCount(), 2);
    EXPECT_EQ(loaded->array->images().size(), 2U);
    EXPECT_EQ(loaded->array->timeLabels().size(), 2);
    EXPECT_EQ(loaded->array->textures().size(), 2U);
    EXPECT_TRUE(loaded->array->isComplete());
    EXPECT_EQ(loaded->array->cut.zMax, 3);
    EXPECT_EQ(loaded->array->channels()[0].stats.histogram.size(), 256U);
}

TEST_F(StackLoadingTest, AnyOtherFailureOfARoutineIsThatOfTheStackAtHand)
{
    describePics(1);
    reports.onReport = [&](const QString& text) {
        if (text.startsWith("Encoding"))
            throw 1;
    };
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), "I cannot undestand the data in t0.pic for some reason. 0/0 done");
}

TEST_F(StackLoadingTest, AFailureOutsideOfTheRoutinesIsUnknown)
{
    QDomDocument document;
    ASSERT_TRUE(document.setContent(QString("<stack><slices first='0' last='3' step='1'/><timepoint>"
                                            "<file>gone.pic</file></timepoint><channel/></stack>")));
    description.session = document.documentElement();
    surroundings.fixMissingFile = [](QDomText&) -> bool { throw 1; };
    EXPECT_FALSE(load());
    EXPECT_EQ(reports.steps(),
              QStringList("Unknown Critical file load error!  Please report this. 1/1 done"));
}

TEST_F(StackLoadingTest, ACancelledSeriesEndsWithTheTimePointAtHandAndWithoutAText)
{
    describePics(10);
    reports.onReport = [&](const QString& text) {
        if (text.startsWith("Loading " + path("t3.pic")))
            cancelled = true;
    };
    EXPECT_FALSE(load());
    const QStringList steps = reports.steps();
    // Three time points, the fourth's beginning, and the silent end in place of its other reports.
    ASSERT_EQ(steps.size(), 3 * 3 + 1 + 2);
    EXPECT_EQ(steps[9], "Loading " + path("t3.pic") + " 600/2000");
    EXPECT_EQ(steps[10], " 1/1 done");
    EXPECT_EQ(steps[11], " 1/1 done");
    EXPECT_EQ(log.count("better encode"), 4);
    EXPECT_EQ(liveGlNames(), LiveGlNames());
    cancelled = false;
    reports.onReport = nullptr;
    describePics(1);
    EXPECT_TRUE(load());
}

TEST_F(StackLoadingTest, NothingOfTheEncoderIsReportedAfterACancel)
{
    describePics(1);
    reports.onReport = [&](const QString& text) { cancelled = cancelled || text.startsWith("Encoding"); };
    EXPECT_FALSE(load());
    EXPECT_TRUE(reports.continuations().isEmpty());
    EXPECT_EQ(lastStep(), " 1/1 done");
}

TEST_F(StackLoadingTest, ACancelAtTheVeryEndStillClosesTheProgress)
{
    describePics(1);
    reports.onReport = [&](const QString& text) { cancelled = cancelled || text == " 200/200"; };
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), " 1/1 done");
}

TEST_F(StackLoadingTest, ACancelledFailureIsSilent)
{
    describePics(2);
    QFile::remove(path("t1.pic"));
    reports.onReport = [&](const QString& text) {
        cancelled = cancelled || text.startsWith("Loading " + path("t1.pic"));
    };
    EXPECT_FALSE(load());
    EXPECT_EQ(lastStep(), " 1/1 done");
}

TEST_F(StackLoadingTest, ACancelBetweenChannelsMakesNoPartOfATimePoint)
{
    description.filesToLoad = {tiffs("c0", 2, 10), tiffs("c1", 2, 20), tiffs("d0", 2, 10),
                               tiffs("d1", 2, 20)};
    description.fileType = ImageType::TiffSeries;
    description.channels = 2;
    description.timePoints = 2;
    reports.onReport = [&](const QString& text) {
        cancelled = cancelled || text.startsWith("Loading " + path("c0_z0.tif"));
    };
    EXPECT_FALSE(load());
    EXPECT_EQ(log.count("better encode"), 0);
    EXPECT_EQ(lastStep(), " 1/1 done");
}

} // namespace
} // namespace tirn::test
