#include "threads/exportjob.h"

#include <cmath>

#include <QDir>
#include <QSemaphore>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "glsupport/recordedvolume.h"
#include "glsupport/texturecontents.h"
#include "image/filters/medianfilter.h"
#include "image/filters/pointfilters.h"
#include "support/otheruser.h"
#include "support/picfile.h"
#include "support/smalldisk.h"
#include "support/stacks.h"
#include "threads/jobthread.h"

namespace tirn {
namespace {

using test::denseStack;
using test::fileContent;
using test::mirrored;
using test::plainCopy;
using test::PlainStack;

PlainStack cropped(const PlainStack& stack, const CutBox& box)
{
    PlainStack part = PlainStack::blank(box.xMax - box.xMin + 1, box.yMax - box.yMin + 1,
                                        box.zMax - box.zMin + 1, stack.channels, stack.bits);
    for (int z = 0; z < part.z; ++z)
        for (int y = 0; y < part.y; ++y)
            for (int x = 0; x < part.x; ++x)
                for (int c = 0; c < part.channels; ++c)
                    part.at(x, y, z, c) = stack.at(x + box.xMin, y + box.yMin, z + box.zMin, c);
    return part;
}

/// The first channel's layers, each times its multiplier.
PlainStack corrected(PlainStack stack, const std::vector<double>& curve)
{
    for (int z = 0; z < stack.z; ++z)
        for (int y = 0; y < stack.y; ++y)
            for (int x = 0; x < stack.x; ++x)
                stack.at(x, y, z) = static_cast<std::uint16_t>(
                    std::min(std::floor(stack.at(x, y, z) * curve[static_cast<std::size_t>(z)] + 0.5),
                             std::pow(2, stack.bits) - 1));
    return stack;
}

/// One channel alone.
PlainStack channelOf(const PlainStack& stack, int channel)
{
    PlainStack one = PlainStack::blank(stack.x, stack.y, stack.z, 1, stack.bits);
    for (int z = 0; z < stack.z; ++z)
        for (int y = 0; y < stack.y; ++y)
            for (int x = 0; x < stack.x; ++x)
                one.at(x, y, z) = stack.at(x, y, z, channel);
    return one;
}

/// A file as a reader finds it.
PlainStack readFile(const QString& name)
{
    ImageFile file{QStringList{name}};
    EXPECT_TRUE(file.read()) << name.toStdString();
    return file.isLoaded() ? plainCopy(file) : PlainStack();
}

class Export : public test::RecordedVolume
{
protected:
    QTemporaryDir directory;
    const CutBox box = {1, 4, 2, 3, 1, 2};
    const std::vector<double> curve = {1, 0.5, 1.25, 3};
    std::unique_ptr<VoxelArray> array;
    Progress progress;
    std::atomic<bool> cancel = false;

    Export() { QFile::setPermissions(directory.path(), QFile::Permissions(0x7777)); }

    void show(const std::vector<PlainStack>& stacks)
    {
        array = prepared(stacks);
        prepareView();
    }
    /// A volume that keeps no voxels, of a file that is still to be read.
    void beginOnDisk(const QString& source)
    {
        VolumeOptions options;
        options.conserveMemory = true;
        array = std::make_unique<VoxelArray>(options);
        array->appendImage(std::make_shared<ImageFile>(QStringList{source}));
    }
    /// Encodes it, once it was read.
    void encodeOnDisk()
    {
        array->stack() = array->images().front()->attributes();
        array->setChannelCount(1);
        array->setTimePoints(1);
        array->encode(GL_TEXTURE_2D, -1);
        array->resetCurves();
    }
    void prepareView()
    {
        array->resetCurves();
        array->cut = box;
        for (std::size_t z = 0; z < curve.size(); ++z)
            (*array->channels()[0].zCurve.curve())[z] = curve[z];
    }
    QString path(const QString& name) const { return directory.filePath(name); }
    JobResult save(ExportMode mode, const QString& name)
    {
        return runExportJob(exportJob(*array, mode, path(name)), progress);
    }
    void expectSaved(ExportMode mode, const QString& name)
    {
        const JobResult result = save(mode, name);
        EXPECT_EQ(result.outcome, JobOutcome::Done);
        EXPECT_EQ(result.error, "");
    }
    QStringList files() const
    {
        return QDir(directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
};

TEST_F(Export, CoreKeepsWhatLiesInTheCutBox)
{
    const PlainStack stack = denseStack(6, 5, 4);
    show({stack});
    expectSaved(ExportMode::Core, "core.pic");
    EXPECT_EQ(readFile(path("core.pic")), cropped(stack, box));
    EXPECT_TRUE(log.contains("cropping 1\t4"));
    EXPECT_EQ(files(), QStringList("core.pic"));
}

TEST_F(Export, ZCorrectedAppliesTheCurves)
{
    const PlainStack stack = denseStack(6, 5, 4);
    show({stack});
    expectSaved(ExportMode::ZCorrected, "z.pic");
    EXPECT_EQ(readFile(path("z.pic")), corrected(stack, curve));
}

TEST_F(Export, AllChangesDoesBothAndTheCurveStaysWithItsLayers)
{
    const PlainStack stack = denseStack(6, 5, 4);
    show({stack});
    expectSaved(ExportMode::AllChanges, "all.pic");
    EXPECT_EQ(readFile(path("all.pic")), cropped(corrected(stack, curve), box));
}

TEST_F(Export, ModesHaveTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(ExportMode::Core), 0);
    EXPECT_EQ(static_cast<int>(ExportMode::ZCorrected), 1);
    EXPECT_EQ(static_cast<int>(ExportMode::AllChanges), 2);
}

TEST_F(Export, AnyOtherEndingIsATiffOfManyPages)
{
    const PlainStack stack = denseStack(6, 5, 4, 1, 16);
    show({stack});
    expectSaved(ExportMode::Core, "core.tif");
    EXPECT_EQ(ImageFile({path("core.tif")}).attributes().type, ImageType::MultiPageTiff);
    EXPECT_EQ(readFile(path("core.tif")), cropped(stack, box));
}

TEST_F(Export, TwelveBitsAreWrittenAsWords)
{
    PlainStack stack = denseStack(6, 5, 4, 1, 12);
    show({stack});
    expectSaved(ExportMode::Core, "core.pic");
    stack.bits = 16;
    EXPECT_EQ(readFile(path("core.pic")), cropped(stack, box));
    EXPECT_EQ(array->images()[0]->attributes().bitDepth, 12);
}

TEST_F(Export, NeverTouchesTheStackThatIsShown)
{
    const PlainStack stack = denseStack(6, 5, 4, 2, 12);
    show({stack});
    const ImageFile& image = *array->images()[0];
    const auto statistics = image.statsList().front().histogram;
    for (const ExportMode mode : {ExportMode::Core, ExportMode::ZCorrected, ExportMode::AllChanges})
        expectSaved(mode, "a.pic");
    EXPECT_EQ(plainCopy(image), stack);
    EXPECT_EQ(image.statsList().front().histogram, statistics);
    EXPECT_EQ(array->cut, box);
}

TEST_F(Export, OfASeriesNumbersItsFiles)
{
    const std::vector<PlainStack> stacks = {denseStack(6, 5, 4, 1, 16),
                                            mirrored(denseStack(6, 5, 4, 1, 16), 0),
                                            mirrored(denseStack(6, 5, 4, 1, 16), 1)};
    show(stacks);
    for (const QString ending : {".pic", ".tif", ".tiff"}) {
        expectSaved(ExportMode::Core, "s" + ending);
        for (std::size_t t = 0; t < stacks.size(); ++t) {
            const QString name = path(QString("s00%1").arg(t) + ending);
            EXPECT_EQ(readFile(name), cropped(stacks[t], box)) << name.toStdString();
        }
    }
    EXPECT_EQ(files().size(), 9);
}

TEST_F(Export, ABioRadFileHasOneChannel)
{
    const PlainStack stack = denseStack(6, 5, 4, 2);
    show({stack});
    expectSaved(ExportMode::ZCorrected, "two.pic");
    EXPECT_EQ(files(), (QStringList{"two_c00.pic", "two_c01.pic"}));
    EXPECT_EQ(readFile(path("two_c00.pic")), corrected(channelOf(stack, 0), curve));
    EXPECT_EQ(readFile(path("two_c01.pic")), channelOf(stack, 1));
}

TEST_F(Export, ImagesOfOneChannelEachBecomeOneStack)
{
    const PlainStack both = denseStack(6, 5, 4, 3, 16);
    array = prepared({channelOf(both, 0), channelOf(both, 1), channelOf(both, 2)});
    array->setChannelCount(3);
    array->setTimePoints(1);
    prepareView();
    expectSaved(ExportMode::Core, "three.tif");
    EXPECT_EQ(readFile(path("three.tif")), cropped(both, box));
}

TEST_F(Export, VoxelSizesAreThoseOfTheVolume)
{
    show({denseStack(6, 5, 4)});
    array->stack().dimX = 0.25;
    array->stack().dimY = 0.5;
    array->stack().dimZ = 2;
    expectSaved(ExportMode::Core, "a.pic");
    ImageFile file{QStringList{path("a.pic")}};
    EXPECT_DOUBLE_EQ(file.attributes().dimX, 0.25);
    EXPECT_DOUBLE_EQ(file.attributes().dimY, 0.5);
    EXPECT_DOUBLE_EQ(file.attributes().dimZ, 2);
}

TEST_F(Export, ABoxOfAReslicedStackIsInVoxels)
{
    array = test::makeVolume({denseStack(6, 5, 4)}, {GL_TEXTURE_3D, 1024, 8});
    ASSERT_EQ(array->finalDepth(), 8);
    array->cut = {0, 5, 0, 4, 2, 7};
    const ExportJob job = exportJob(*array, ExportMode::Core, "a.pic");
    EXPECT_EQ(job.box, (CutBox{0, 5, 0, 4, 1, 3}));
}

TEST_F(Export, CountsToItsEnd)
{
    show({denseStack(6, 5, 4), denseStack(6, 5, 4)});
    int last = -1;
    QStringList texts;
    progress.report = [&](const QString& text, int done, int total) {
        EXPECT_GE(done, last);
        EXPECT_EQ(total, 200);
        last = done;
        texts += text.isEmpty() ? QStringList() : QStringList(text);
    };
    expectSaved(ExportMode::Core, "s.pic");
    EXPECT_EQ(last, 200);
    EXPECT_EQ(texts, (QStringList{"Exporting s000.pic", "Exporting s001.pic"}));
}

TEST_F(Export, CancelledLeavesEveryFileAsItWas)
{
    show({denseStack(6, 5, 4), denseStack(6, 5, 4)});
    test::saveBytes(path("s000.pic"), "old");
    for (const int step : {0, 40, 60, 100, 160, 200}) {
        cancel = false;
        progress = {[&](const QString&, int done, int) { cancel = cancel || done >= step; }, &cancel};
        EXPECT_EQ(save(ExportMode::AllChanges, "s.pic").outcome, JobOutcome::Cancelled) << step;
        EXPECT_EQ(files(), QStringList("s000.pic"));
        EXPECT_EQ(fileContent(path("s000.pic")), "old");
    }
}

TEST_F(Export, OnAFullDiskLeavesTheOldFile)
{
    show({denseStack(20, 20, 4, 1, 16)});
    array->cut = {0, 19, 0, 19, 0, 3};
    for (const QString name : {"a.pic", "a.tif"}) {
        test::saveBytes(path(name), "old");
        JobResult result;
        {
            const test::SmallDisk disk(1000);
            result = save(ExportMode::Core, name);
        }
        EXPECT_EQ(result.outcome, JobOutcome::Failed);
        EXPECT_TRUE(result.error.startsWith(path(name) + " could not be written.\n"))
            << result.error.toStdString();
        EXPECT_EQ(fileContent(path(name)), "old");
    }
    EXPECT_EQ(files(), (QStringList{"a.pic", "a.tif"}));
}

TEST_F(Export, OntoAReadOnlyFileIsRefused)
{
    show({denseStack(6, 5, 4)});
    test::saveBytes(path("a.pic"), "old");
    QFile::setPermissions(path("a.pic"), QFile::ReadOwner | QFile::ReadOther);
    JobResult result;
    {
        const test::OtherUser user;
        result = save(ExportMode::Core, "a.pic");
    }
    EXPECT_EQ(result.outcome, JobOutcome::Failed);
    EXPECT_EQ(result.error, path("a.pic") + " is read-only.");
    EXPECT_EQ(fileContent(path("a.pic")), "old");
    EXPECT_EQ(files(), QStringList("a.pic"));
}

TEST_F(Export, IntoAFolderWithoutPermissionIsRefused)
{
    show({denseStack(6, 5, 4)});
    const QFile::Permissions open = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    ASSERT_TRUE(QFile::setPermissions(directory.path(), QFile::ReadOwner | QFile::ExeOwner));
    JobResult result;
    {
        const test::OtherUser user;
        result = save(ExportMode::Core, "a.pic");
    }
    ASSERT_TRUE(QFile::setPermissions(directory.path(), open));
    EXPECT_EQ(result.outcome, JobOutcome::Failed);
    EXPECT_EQ(result.error, directory.path() + " cannot be written to.");
    EXPECT_EQ(files(), QStringList());
}

TEST_F(Export, ToWhereThereIsNoFolderIsRefused)
{
    show({denseStack(6, 5, 4)});
    const JobResult result = save(ExportMode::Core, "none/a.pic");
    EXPECT_EQ(result.outcome, JobOutcome::Failed);
    EXPECT_EQ(result.error, path("none") + " cannot be written to.");
}

TEST_F(Export, OntoAFolderOrADeviceIsRefused)
{
    show({denseStack(6, 5, 4)});
    QDir(directory.path()).mkdir("a.pic");
    EXPECT_EQ(save(ExportMode::Core, "a.pic").error, path("a.pic") + " is not a plain file.");
    const JobResult result = runExportJob(exportJob(*array, ExportMode::Core, "/dev/null"), {});
    EXPECT_EQ(result.error, "/dev/null is not a plain file.");
}

TEST_F(Export, ReplacesTheFileBehindALink)
{
    show({denseStack(6, 5, 4)});
    test::saveBytes(path("real.pic"), "old");
    QFile::link(path("real.pic"), path("link.pic"));
    expectSaved(ExportMode::Core, "link.pic");
    EXPECT_TRUE(QFileInfo(path("link.pic")).isSymLink());
    EXPECT_EQ(readFile(path("real.pic")), cropped(denseStack(6, 5, 4), box));
}

TEST_F(Export, KeepsThePermissionsOfTheOldFile)
{
    show({denseStack(6, 5, 4)});
    test::saveBytes(path("a.pic"), "old");
    QFile::setPermissions(path("a.pic"), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup);
    const auto before = QFile::permissions(path("a.pic"));
    expectSaved(ExportMode::Core, "a.pic");
    EXPECT_EQ(QFile::permissions(path("a.pic")), before);
}

TEST_F(Export, WithoutMemorySaysSo)
{
    show({denseStack(6, 5, 4)});
    const test::NoVoxelMemory none;
    EXPECT_EQ(save(ExportMode::Core, "a.pic").error, "There is not enough memory to export the stack.");
    EXPECT_EQ(files(), QStringList());
}

TEST_F(Export, WithoutMemoryWhatIsKnownOfAStackOnDiskStays)
{
    test::PicFile file;
    beginOnDisk(file.save(path("source.pic")));
    ImageFile& image = *array->images().front();
    ASSERT_TRUE(image.read());
    encodeOnDisk();
    const auto histogram = image.statsList().front().histogram;
    const int largest = image.attributes().maxValue;
    {
        const test::NoVoxelMemory none;
        EXPECT_EQ(save(ExportMode::Core, "a.pic").error, "There is not enough memory to export the stack.");
    }
    ASSERT_EQ(image.statsList().size(), 1U);
    EXPECT_EQ(image.statsList().front().histogram, histogram);
    EXPECT_EQ(image.attributes().maxValue, largest);
    EXPECT_FALSE(image.isLoaded());
}

TEST_F(Export, OfAnEmptyBoxSaysSo)
{
    show({denseStack(6, 5, 4)});
    ExportJob job = exportJob(*array, ExportMode::Core, path("a.pic"));
    job.box = {3, 2, 0, 4, 0, 3};
    EXPECT_EQ(runExportJob(job, {}).error, "There is nothing inside the cut planes.");
    EXPECT_EQ(files(), QStringList());
}

TEST_F(Export, OfACutThatIsCrossedOrTooLargeIsWhatIsDrawn)
{
    show({denseStack(6, 5, 4)});
    array->cut = {4, 1, 2, 3, -7, 400};
    EXPECT_EQ(exportJob(*array, ExportMode::Core, "a.pic").box, (CutBox{1, 4, 2, 3, 0, 3}));
}

TEST_F(Export, OfNothingSaysSo)
{
    VoxelArray empty{VolumeOptions()};
    EXPECT_EQ(runExportJob(exportJob(empty, ExportMode::Core, path("a.pic")), {}).error,
              "There is nothing to export.");
}

TEST_F(Export, ReadsWhatIsOnDiskAndTransformsIt)
{
    test::PicFile file;
    file.x = 6;
    file.y = 5;
    file.z = 4;
    file.value = [](int x, int y, int z) { return x * x + 7 * y + 40 * z; };
    beginOnDisk(file.save(path("source.pic")));
    ImageFile& image = *array->images().front();
    ASSERT_TRUE(image.read());
    PlainStack expected = mirrored(mirrored(plainCopy(image), 0), 2);
    for (std::uint16_t& voxel : expected.voxels)
        voxel = static_cast<std::uint16_t>(255 - voxel);
    encodeOnDisk();
    prepareView();
    array->setTransforms({true, false, true, true});
    const auto statistics = image.statsList().front().histogram;
    expectSaved(ExportMode::Core, "a.pic");
    EXPECT_EQ(readFile(path("a.pic")), cropped(expected, box));
    EXPECT_FALSE(image.isLoaded());
    EXPECT_EQ(image.statsList().front().histogram, statistics);
    // The source itself may be the target.
    expectSaved(ExportMode::Core, "source.pic");
    EXPECT_EQ(readFile(path("source.pic")), cropped(expected, box));
    QFile::remove(path("source.pic"));
    const JobResult result = save(ExportMode::Core, "a.pic");
    EXPECT_EQ(result.outcome, JobOutcome::Failed);
    EXPECT_TRUE(result.error.startsWith("source.pic cannot be read again.")) << result.error.toStdString();
    EXPECT_EQ(image.statsList().front().histogram, statistics);
}

TEST_F(Export, ReducesWhatIsOnDiskAsTheLoadDid)
{
    test::PicFile file;
    file.x = 8;
    file.y = 6;
    file.z = 4;
    file.value = [](int x, int y, int z) { return x * x + 7 * y + 40 * z; };
    beginOnDisk(file.save(path("source.pic")));
    ImageFile& image = *array->images().front();
    ASSERT_TRUE(image.read());
    image.subSample(2);
    image.generateStatistics();
    const PlainStack reduced = plainCopy(image);
    ASSERT_EQ(reduced.x, 4);
    array->subsample = 2;
    encodeOnDisk();
    array->setTransforms({false, true, false, false});
    expectSaved(ExportMode::ZCorrected, "a.pic");
    EXPECT_EQ(readFile(path("a.pic")), mirrored(reduced, 1));
}

TEST_F(Export, HoldsTheFilterThatIsShownOfWhatIsOnDisk)
{
    test::PicFile file;
    file.x = 9;
    file.y = 7;
    file.z = 3;
    file.value = [](int x, int y, int z) { return 40 + (x * 31 + y * 17 + z * 5) % 90; };
    const QString source = file.save(path("source.pic"));
    ImageFile expected(QStringList{source});
    ASSERT_TRUE(expected.read());
    invert(expected);
    expected.generateStatistics();
    ASSERT_TRUE(medianFilter(expected, 3, -1, false));
    beginOnDisk(source);
    ASSERT_TRUE(array->images().front()->read());
    encodeOnDisk();
    array->setTransforms({false, false, false, true});
    array->setShownChange(
        0, [](ImageFile& image, const Progress& steps) { return medianFilter(image, 3, -1, false, steps); });
    expectSaved(ExportMode::ZCorrected, "a.pic");
    EXPECT_EQ(readFile(path("a.pic")), plainCopy(expected));
    // Worked on again, the volume shows the same.
    ASSERT_TRUE(array->loadVoxels(0));
    ASSERT_TRUE(medianFilter(*array->images().front(), 3, -1, false));
    EXPECT_EQ(plainCopy(*array->images().front()), plainCopy(expected));
}

TEST(ExportNames, CountTimePointsBeforeTheEnding)
{
    using Names = std::vector<QStringList>;
    EXPECT_EQ(exportFileNames("a.pic", 1, 1), (Names{{"a.pic"}}));
    EXPECT_EQ(exportFileNames("a.pic", 2, 1), (Names{{"a000.pic"}, {"a001.pic"}}));
    EXPECT_EQ(exportFileNames("a.tif", 2, 3), (Names{{"a000.tif"}, {"a001.tif"}}));
    EXPECT_EQ(exportFileNames("a.tiff", 2, 1), (Names{{"a000.tiff"}, {"a001.tiff"}}));
    EXPECT_EQ(exportFileNames("a.pic", 1, 2), (Names{{"a_c00.pic", "a_c01.pic"}}));
    EXPECT_EQ(exportFileNames("A.PIC", 1, 2), (Names{{"A_c00.PIC", "A_c01.PIC"}}));
    EXPECT_EQ(exportFileNames("A.TIF", 2, 1), (Names{{"A000.TIF"}, {"A001.TIF"}}));
    EXPECT_EQ(exportFileNames("a.pic", 2, 2),
              (Names{{"a000_c00.pic", "a000_c01.pic"}, {"a001_c00.pic", "a001_c01.pic"}}));
    EXPECT_EQ(exportFileNames("a.pic", 1001, 1).back(), QStringList("a1000.pic"));
}

TEST_F(Export, RunsOnItsThreadAndReportsTheEnd)
{
    show({denseStack(6, 5, 4)});
    QSemaphore finished;
    QSemaphore go;
    JobResult result;
    JobThread thread({[&](const QString& text, int, int) {
                          if (!text.isEmpty())
                              go.acquire();
                      },
                      [&](const JobResult& last) {
                          result = last;
                          finished.release();
                      }});
    const auto write = [this](const char* name) {
        return [job = exportJob(*array, ExportMode::Core, path(name))](const Progress& steps) {
            return runExportJob(job, steps);
        };
    };
    EXPECT_TRUE(thread.startJob(write("a.pic")));
    EXPECT_TRUE(thread.isBusy());
    EXPECT_FALSE(thread.startJob(write("b.pic")));
    go.release();
    finished.acquire();
    EXPECT_FALSE(thread.isBusy());
    EXPECT_EQ(result.outcome, JobOutcome::Done);
    EXPECT_EQ(readFile(path("a.pic")), cropped(denseStack(6, 5, 4), box));
    // The images are given back.
    EXPECT_EQ(array->images().front().use_count(), 1);
    EXPECT_TRUE(thread.startJob(write("c.pic")));
    thread.cancel();
    go.release();
    finished.acquire();
    EXPECT_EQ(result.outcome, JobOutcome::Cancelled);
    EXPECT_EQ(files(), QStringList("a.pic"));
}

} // namespace
} // namespace tirn
