#include "volume/volumeedit.h"

#include <atomic>

#include <QTemporaryDir>

#include "glsupport/recordedvolume.h"
#include "glsupport/texturecontents.h"
#include "image/filters/meanfilter.h"
#include "image/filters/medianfilter.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::denseStack;
using test::mirrored;
using test::plainCopy;
using test::PlainStack;
using test::textureContents;

/// All that an edit may change.
struct Snapshot
{
    std::vector<PlainStack> voxels;
    std::vector<Histogram> histograms;
    std::vector<Histogram> firstSlices;
    std::vector<int> maxima;
    std::vector<std::vector<std::uint8_t>> textures;
    DataTransforms transforms;
};

/// The names of what differs.
std::string differences(const Snapshot& a, const Snapshot& b)
{
    std::string names;
    names += a.voxels == b.voxels ? "" : "voxels ";
    names += a.histograms == b.histograms ? "" : "histograms ";
    names += a.firstSlices == b.firstSlices ? "" : "slices ";
    names += a.maxima == b.maxima ? "" : "maxima ";
    names += a.textures == b.textures ? "" : "textures ";
    names += a.transforms == b.transforms ? "" : "transforms ";
    return names;
}

VolumeEdit meanEdit()
{
    VolumeEdit edit;
    edit.apply = [](ImageFile& image, const Progress& progress) {
        return meanFilter(image, 3, -1, false, progress);
    };
    return edit;
}

/// What the filter makes of a stack, run on its own.
PlainStack meanOf(const PlainStack& stack)
{
    const auto image = test::imageOf(stack);
    meanFilter(*image, 3, -1, false);
    return plainCopy(*image);
}

class Edit : public test::RecordedVolume
{
protected:
    std::unique_ptr<VoxelArray> encoded(const std::vector<PlainStack>& stacks, GLenum target = GL_TEXTURE_2D)
    {
        auto array = prepared(stacks, limited(4));
        for (std::size_t i = 0; i < stacks.size(); ++i)
            array->encode(target, -1);
        return array;
    }
    Snapshot snapshot(const VoxelArray& array) const
    {
        Snapshot all;
        for (const auto& image : array.images()) {
            all.voxels.push_back(image->isLoaded() ? plainCopy(*image) : PlainStack());
            all.histograms.push_back(image->statsList().front().histogram);
            all.firstSlices.push_back(image->statsList().front().sliceHistograms.front());
            all.maxima.push_back(image->attributes().maxValue);
        }
        for (const Channel& channel : array.channels()) {
            all.histograms.push_back(channel.stats.histogram);
            all.maxima.push_back(channel.minValue);
            all.maxima.push_back(channel.maxValue);
        }
        all.maxima.push_back(array.stack().maxValue);
        all.textures = textureContents(gl, array);
        all.transforms = array.transforms();
        return all;
    }
    std::vector<std::vector<std::uint8_t>> texturesOf(const std::vector<PlainStack>& stacks) const
    {
        std::vector<std::vector<std::uint8_t>> all;
        for (const PlainStack& stack : stacks) {
            for (auto& bytes : slicesOf(stack, 4))
                all.push_back(std::move(bytes));
        }
        return all;
    }

    std::atomic<bool> cancel = false;
    /// Cancels as soon as so many steps are done.
    Progress cancelledAt(int step)
    {
        return {[this, step](const QString&, int done, int) { cancel = cancel || done >= step; }, &cancel};
    }
};

const std::vector<PlainStack> kSeries = {denseStack(6, 5, 3), mirrored(denseStack(6, 5, 3), 0),
                                         mirrored(denseStack(6, 5, 3), 1)};

TEST_F(Edit, ReplacesVoxelsAndTexturesOfEachTimePoint)
{
    const auto array = encoded(kSeries);
    EXPECT_EQ(applyEdit(*array, meanEdit()).outcome, JobOutcome::Done);
    std::vector<PlainStack> expected;
    for (std::size_t t = 0; t < kSeries.size(); ++t) {
        expected.push_back(meanOf(kSeries[t]));
        EXPECT_EQ(plainCopy(*array->images()[t]), expected.back()) << t;
    }
    EXPECT_EQ(textureContents(gl, *array), texturesOf(expected));
}

TEST_F(Edit, SendsEachTextureOnce)
{
    const auto array = encoded({denseStack(6, 5, 3)});
    gl.clear();
    applyEdit(*array, meanEdit());
    EXPECT_EQ(gl.count("TexSubImage2D"), static_cast<int>(array->textures().size()));
}

TEST_F(Edit, OfChosenImagesLeavesTheOthers)
{
    const auto array = encoded(kSeries);
    VolumeEdit edit = meanEdit();
    edit.images = {1};
    gl.clear();
    applyEdit(*array, edit);
    EXPECT_EQ(plainCopy(*array->images()[0]), kSeries[0]);
    EXPECT_EQ(plainCopy(*array->images()[1]), meanOf(kSeries[1]));
    EXPECT_EQ(plainCopy(*array->images()[2]), kSeries[2]);
    EXPECT_EQ(sent("TexSubImage2D"), texturesOf({meanOf(kSeries[1])}));
}

TEST_F(Edit, MakesTheStatisticsAnewBeforeTheTextures)
{
    const auto array = encoded({test::PlainStack{4, 1, 1, 1, 8, {10, 20, 30, 40}}});
    int maximumAtTheGate = -1;
    gl.clear();
    const TextureGate gate = [&](const std::function<void()>& change) {
        change();
        if (gl.count("TexSubImage2D") == 0)
            maximumAtTheGate = array->channels()[0].maxValue;
    };
    applyEdit(*array, invertEdit(), {{}, gate});
    EXPECT_EQ(maximumAtTheGate, 245);
    EXPECT_EQ(array->channels()[0].minValue, 215);
    EXPECT_EQ(array->channels()[0].stats.histogram[235], 1U);
    EXPECT_EQ(array->images()[0]->attributes().maxValue, 245);
    EXPECT_EQ(array->stack().maxValue, 245);
}

TEST_F(Edit, ThatInvertsTwiceBringsTheUsedBitsBack)
{
    const auto array = encoded({test::PlainStack{4, 1, 1, 1, 16, {10, 20, 30, 1000}}});
    ASSERT_EQ(array->significantBits(), 10);
    applyEdit(*array, invertEdit());
    EXPECT_EQ(array->significantBits(), 16);
    applyEdit(*array, invertEdit());
    EXPECT_EQ(array->significantBits(), 10);
    EXPECT_EQ(array->channels()[0].maxValue, 1000);
}

TEST_F(Edit, ThatDarkensLowersTheUsedBits)
{
    const auto array = encoded({test::PlainStack{5, 1, 1, 1, 16, {10, 10, 4000, 10, 10}}});
    VolumeEdit edit;
    edit.apply = [](ImageFile& image, const Progress& progress) {
        return medianFilter(image, 3, -1, false, progress);
    };
    applyEdit(*array, edit);
    EXPECT_EQ(array->stack().maxValue, 10);
    EXPECT_EQ(array->significantBits(), 3);
}

TEST_F(Edit, ChangesTheRevisionWithTheTexturesInTheGate)
{
    const auto array = encoded(kSeries);
    const std::int64_t before = array->voxelRevision();
    std::int64_t outside = 0;
    const TextureGate gate = [&](const std::function<void()>& change) {
        const std::int64_t entered = array->voxelRevision();
        change();
        outside += array->voxelRevision() - entered;
    };
    applyEdit(*array, meanEdit(), {{}, gate});
    EXPECT_GT(outside, 0);
    EXPECT_EQ(array->voxelRevision(), before + outside);
}

TEST_F(Edit, ChangesTexturesThroughTheGateOnly)
{
    const auto array = encoded(kSeries, GL_TEXTURE_3D);
    gl.clear();
    bool isOpen = false;
    int outside = 0;
    VolumeEdit edit = meanEdit();
    edit.apply = [&, apply = edit.apply](ImageFile& image, const Progress& progress) {
        EXPECT_FALSE(isOpen);
        return apply(image, progress);
    };
    const TextureGate gate = [&](const std::function<void()>& change) {
        outside += isOpen ? 1 : 0;
        const int before = gl.count("TexSubImage3DEXT");
        isOpen = true;
        change();
        isOpen = false;
        outside -= gl.count("TexSubImage3DEXT") - before;
    };
    applyEdit(*array, edit, {{}, gate});
    EXPECT_EQ(outside, -gl.count("TexSubImage3DEXT"));
    EXPECT_GT(gl.count("TexSubImage3DEXT"), 0);
}

TEST_F(Edit, CountsFromNothingToAllAndNeverBackwards)
{
    const auto array = encoded(kSeries);
    int last = 0;
    int total = 0;
    const Progress progress = {[&](const QString&, int done, int all) {
                                   EXPECT_GE(done, last);
                                   last = done;
                                   total = all;
                               },
                               nullptr};
    applyEdit(*array, meanEdit(), {progress, {}});
    EXPECT_EQ(total, 600);
    EXPECT_EQ(last, 600);
}

class CancelledEdit : public Edit, public ::testing::WithParamInterface<int>
{};

TEST_P(CancelledEdit, LeavesEverythingAsItWas)
{
    for (const VolumeEdit& edit : {meanEdit(), flipEdit('Z'), invertEdit()}) {
        for (const GLenum target : {GL_TEXTURE_2D, GL_TEXTURE_3D}) {
            cancel = false;
            const auto array = encoded(kSeries, target);
            const Snapshot before = snapshot(*array);
            const JobResult result = applyEdit(*array, edit, {cancelledAt(GetParam()), {}});
            EXPECT_EQ(result.outcome, JobOutcome::Cancelled);
            EXPECT_EQ(result.error, "");
            EXPECT_EQ(differences(snapshot(*array), before), "");
            gl.clear();
        }
    }
}

// In the first change, in the textures of the first image, in those of the second and the third, at the end.
INSTANTIATE_TEST_SUITE_P(AtSteps, CancelledEdit, ::testing::Values(0, 1, 100, 150, 200, 350, 550, 600));

TEST_F(Edit, ThatRunsOutOfMemoryLeavesEverythingAsItWas)
{
    const auto array = encoded(kSeries);
    const Snapshot before = snapshot(*array);
    VolumeEdit edit = meanEdit();
    int calls = 0;
    edit.apply = [&, apply = edit.apply](ImageFile& image, const Progress& progress) {
        const auto none = ++calls == 3 ? std::make_unique<test::NoVoxelMemory>() : nullptr;
        return apply(image, progress);
    };
    const JobResult result = applyEdit(*array, edit);
    EXPECT_EQ(result.outcome, JobOutcome::Failed);
    EXPECT_EQ(result.error, "Could not allocate memory for meanfilter");
    EXPECT_EQ(differences(snapshot(*array), before), "");
}

TEST_F(Edit, WhoseTexturesFindNoMemoryLeavesEverythingAsItWas)
{
    const auto array = encoded(kSeries);
    const Snapshot before = snapshot(*array);
    std::unique_ptr<test::NoVoxelMemory> none;
    const Progress progress = {[&](const QString&, int done, int) {
                                   // Between the change of the second image and its textures.
                                   if (done == 300)
                                       none = std::make_unique<test::NoVoxelMemory>();
                               },
                               nullptr};
    // What is taken back finds memory again.
    const TextureGate gate = [&](const std::function<void()>& change) {
        change();
        if (none != nullptr && array->transforms() == DataTransforms())
            none.reset();
    };
    const JobResult result = applyEdit(*array, flipEdit('X'), {progress, gate});
    EXPECT_EQ(result.outcome, JobOutcome::Failed);
    EXPECT_EQ(result.error, "Could not allocate memory for slice");
    EXPECT_EQ(differences(snapshot(*array), before), "");
}

TEST_F(Edit, ThatIsImpossibleSaysSo)
{
    const auto array = encoded(kSeries);
    VolumeEdit edit;
    edit.apply = [](ImageFile& image, const Progress& progress) {
        return meanFilter(image, 5000, -1, false, progress);
    };
    const JobResult result = applyEdit(*array, edit);
    EXPECT_EQ(result.outcome, JobOutcome::Failed);
    EXPECT_EQ(result.error, "none cannot be filtered in this way.");
}

/// Time points in files, whose voxels are let go after encoding.
class EditOnDisk : public Edit
{
protected:
    QTemporaryDir directory;
    std::vector<PlainStack> stacks;
    std::unique_ptr<VoxelArray> array;

    EditOnDisk()
    {
        VolumeOptions options = limited(4);
        options.conserveMemory = true;
        array = std::make_unique<VoxelArray>(options);
        for (int t = 0; t < 3; ++t)
            addTimePoint(t);
        array->stack() = array->images().front()->attributes();
        array->setChannelCount(1);
        array->setTimePoints(3);
        for (int t = 0; t < 3; ++t)
            array->encode(GL_TEXTURE_2D, -1);
    }
    void addTimePoint(int t)
    {
        test::PicFile file;
        file.value = [t](int x, int y, int z) { return 20 * t + x * x + 10 * y + 60 * z; };
        PlainStack stack = PlainStack::blank(4, 3, 2);
        for (int z = 0; z < 2; ++z)
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < 4; ++x)
                    stack.at(x, y, z) = static_cast<std::uint16_t>(file.value(x, y, z));
        stacks.push_back(stack);
        auto image = std::make_shared<ImageFile>(QStringList{file.save(path(t))});
        EXPECT_TRUE(image->read());
        array->appendImage(std::move(image));
    }
    QString path(int t) const { return directory.filePath(QString("t%1.pic").arg(t)); }
    bool nothingIsLoaded() const
    {
        return std::none_of(array->images().begin(), array->images().end(),
                            [](const auto& image) { return image->isLoaded(); });
    }
    template <class Change>
    std::vector<PlainStack> each(Change change) const
    {
        std::vector<PlainStack> all;
        for (const PlainStack& stack : stacks)
            all.push_back(change(stack));
        return all;
    }
};

TEST_F(EditOnDisk, ReadsTheVoxelsAndLetsThemGoAgain)
{
    EXPECT_EQ(applyEdit(*array, meanEdit()).outcome, JobOutcome::Done);
    EXPECT_EQ(textureContents(gl, *array), texturesOf(each(meanOf)));
    EXPECT_TRUE(nothingIsLoaded());
}

TEST_F(EditOnDisk, FiltersWhatWasTransformed)
{
    applyEdit(*array, flipEdit('X'));
    EXPECT_EQ(applyEdit(*array, meanEdit()).outcome, JobOutcome::Done);
    EXPECT_EQ(textureContents(gl, *array),
              texturesOf(each([](const PlainStack& stack) { return meanOf(mirrored(stack, 0)); })));
}

TEST_F(EditOnDisk, CancelledLeavesEverythingAsItWas)
{
    for (const VolumeEdit& edit : {meanEdit(), flipEdit('Z'), invertEdit()}) {
        for (const int step : {0, 50, 100, 250, 350, 600}) {
            cancel = false;
            const Snapshot before = snapshot(*array);
            EXPECT_EQ(applyEdit(*array, edit, {cancelledAt(step), {}}).outcome, JobOutcome::Cancelled);
            EXPECT_EQ(differences(snapshot(*array), before), "") << step;
            EXPECT_TRUE(nothingIsLoaded());
        }
    }
}

TEST_F(EditOnDisk, CancelledShowsTheFilterBeforeItAgain)
{
    applyEdit(*array, meanEdit());
    const Snapshot before = snapshot(*array);
    EXPECT_EQ(applyEdit(*array, invertEdit(), {cancelledAt(350), {}}).outcome, JobOutcome::Cancelled);
    EXPECT_EQ(differences(snapshot(*array), before), "");
    // A transform begins with the file again, and so does the next cancelled edit.
    applyEdit(*array, invertEdit());
    const Snapshot inverted = snapshot(*array);
    cancel = false;
    applyEdit(*array, meanEdit(), {cancelledAt(350), {}});
    EXPECT_EQ(differences(snapshot(*array), inverted), "");
}

TEST_F(EditOnDisk, CountsWhatTheFileHoldsAfterAFilterThatLoweredTheMaximum)
{
    VolumeEdit dark;
    dark.apply = [](ImageFile& image, const Progress&) {
        std::fill_n(image.stackData(), image.sampleCount(), 1);
        image.forgetValues();
        return true;
    };
    const auto highest = array->channels()[0].maxValue;
    applyEdit(*array, dark);
    EXPECT_EQ(array->channels()[0].maxValue, 1);
    applyEdit(*array, flipEdit('X'));
    EXPECT_EQ(array->channels()[0].maxValue, highest);
}

TEST_F(EditOnDisk, InvertedTwiceHasTheUsedBitsOfItsFile)
{
    const auto highest = array->stack().maxValue;
    applyEdit(*array, invertEdit());
    EXPECT_EQ(array->stack().maxValue, 255);
    EXPECT_EQ(array->channels()[0].maxValue, 255);
    applyEdit(*array, invertEdit());
    EXPECT_EQ(array->stack().maxValue, highest);
    EXPECT_EQ(array->channels()[0].maxValue, highest);
}

TEST_F(EditOnDisk, AFileThatWentAwayIsNamedAndEverythingStays)
{
    const Snapshot before = snapshot(*array);
    QFile::rename(path(2), path(9));
    for (const VolumeEdit& edit : {meanEdit(), flipEdit('Y'), invertEdit()}) {
        const JobResult result = applyEdit(*array, edit);
        EXPECT_EQ(result.outcome, JobOutcome::Failed);
        EXPECT_TRUE(result.error.startsWith("t2.pic cannot be read again.")) << result.error.toStdString();
        EXPECT_FALSE(result.error.contains("taken back")) << result.error.toStdString();
        EXPECT_EQ(differences(snapshot(*array), before), "");
    }
}

TEST_F(EditOnDisk, WhatCannotBeTakenBackIsSaid)
{
    const Progress progress = {[&](const QString&, int done, int) {
                                   if (done == 400)
                                       QFile::remove(path(0));
                                   cancel = cancel || done == 400;
                               },
                               &cancel};
    const JobResult result = applyEdit(*array, meanEdit(), {progress, {}});
    EXPECT_EQ(result.outcome, JobOutcome::Failed);
    EXPECT_EQ(result.error, "What was changed could not be taken back everywhere.");
}

} // namespace
} // namespace tirn
