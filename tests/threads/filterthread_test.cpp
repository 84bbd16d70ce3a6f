#include "threads/filterthread.h"

#include <QApplication>
#include <QOpenGLContext>
#include <QSemaphore>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "glsupport/texturecontents.h"
#include "image/filters/extremafilters.h"
#include "image/filters/kernelfilter.h"
#include "image/filters/meanfilter.h"
#include "image/filters/medianfilter.h"
#include "image/filters/pointfilters.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/slicereference.h"

namespace tirn {
namespace {

using test::denseStack;
using test::mirrored;
using test::plainCopy;
using test::PlainStack;

using Textures = std::vector<std::vector<std::uint8_t>>;

/// What the card holds.
Textures readBack(const VoxelArray& array)
{
    using GetTexImage = void (*)(GLenum, GLint, GLenum, GLenum, void*);
    const auto getTexImage =
        reinterpret_cast<GetTexImage>(QOpenGLContext::currentContext()->getProcAddress("glGetTexImage"));
    gl().PixelStorei(GL_PACK_ALIGNMENT, 1);
    const GLenum type = array.stack().hasWords() ? GL_UNSIGNED_SHORT : GL_UNSIGNED_BYTE;
    Textures all;
    for (std::size_t i = 0; i < array.textures().size(); ++i) {
        gl().BindTexture(GL_TEXTURE_2D, array.textures()[i]);
        GLint width = 0;
        GLint height = 0;
        gl().GetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        gl().GetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
        std::vector<std::uint8_t> texels(static_cast<std::size_t>(width * height) *
                                         static_cast<std::size_t>(array.stack().bytesPerSample()));
        getTexImage(GL_TEXTURE_2D, 0, GL_LUMINANCE, type, texels.data());
        all.push_back(std::move(texels));
    }
    return all;
}

constexpr int kLimit = 1024;

Textures texturesOf(const std::vector<PlainStack>& stacks)
{
    Textures all;
    for (const PlainStack& stack : stacks) {
        for (int c = 0; c < stack.channels; ++c) {
            for (const test::ReferenceTexture& texture : test::referenceSlices(stack, c, kLimit))
                all.push_back(texture.bytes(stack.bits));
        }
    }
    return all;
}

FilterJobParameters parameters(FilterOperation operation, int size = 3)
{
    FilterJobParameters p;
    p.operation = operation;
    p.size = size;
    return p;
}

class FilterThreadTest : public ::testing::Test
{
protected:
    FilterThreadTest()
    {
        EXPECT_TRUE(m_share.makeCurrent());
        thread = std::make_unique<FilterThread>(m_share.context(), lock, report());
    }
    ~FilterThreadTest() override
    {
        thread.reset();
        array.reset();
    }
    JobReport report()
    {
        return {[this](const QString& text, int done, int total) {
                    texts += text.isEmpty() ? QStringList() : QStringList(text);
                    if (onProgress)
                        onProgress(done, total);
                },
                [this](const JobResult& last) {
                    result = last;
                    m_finished.release();
                }};
    }
    void show(const std::vector<PlainStack>& stacks) { array = test::makeVolume(stacks, {}); }
    void wait() { m_finished.acquire(); }
    JobOutcome run(const FilterJobParameters& p)
    {
        EXPECT_TRUE(thread->filter({array.get(), p}));
        wait();
        return result.outcome;
    }
    std::vector<PlainStack> voxels() const
    {
        std::vector<PlainStack> all;
        for (const auto& image : array->images())
            all.push_back(plainCopy(*image));
        return all;
    }

private:
    int m_argc = 1;
    char m_name[5] = "tirn";
    char* m_argv[2] = {m_name, nullptr};
    QApplication m_application{m_argc, m_argv};
    HiddenContext m_share;
    QSemaphore m_finished;

protected:
    test::LogCapture log;
    RenderLock lock;
    std::unique_ptr<VoxelArray> array;
    std::unique_ptr<FilterThread> thread;
    std::function<void(int done, int total)> onProgress;
    QStringList texts;
    JobResult result;
};

/// An operation, what it logs, what it shows, and the filter run on its own.
struct Case
{
    FilterJobParameters parameters;
    QString logText;
    QString progressText;
    std::function<void(ImageFile&)> direct;
};

FilterJobParameters with(FilterJobParameters p, int channel, bool threeD, int extra = 0)
{
    p.channelAll = channel < 0;
    p.channel = std::max(0, channel);
    p.threeD = threeD;
    p.extra = extra;
    return p;
}

FilterKernel edgeKernel() { return {3, 2, {1, 2, 1, -1, 0, 2}}; }

std::vector<Case> allCases()
{
    using Op = FilterOperation;
    FilterJobParameters custom = parameters(Op::Custom);
    custom.kernel = edgeKernel();
    return {
        {parameters(Op::FlipX), "Flipping on X", "Flipping along X axis", [](ImageFile& i) { i.flip('X'); }},
        {parameters(Op::FlipY), "Flipping on Y", "Flipping along Y axis", [](ImageFile& i) { i.flip('Y'); }},
        {parameters(Op::FlipZ), "Flipping on Z", "Flipping along Z axis", [](ImageFile& i) { i.flip('Z'); }},
        {parameters(Op::Invert), "Inverting", "Inverting...", [](ImageFile& i) { invert(i); }},
        {with(parameters(Op::Maximum), -1, true), "Maximum filter 3x3", "Max filtering...",
         [](ImageFile& i) { maxFilter(i, 3, -1, true); }},
        {with(parameters(Op::Median, 5), 1, false), "Median filter 5x5", "Median filtering...",
         [](ImageFile& i) { medianFilter(i, 5, 1, false); }},
        {with(parameters(Op::Mean, 4), -1, true), "Mean filter 4x4", "Mean filtering...",
         [](ImageFile& i) { meanFilter(i, 4, -1, true); }},
        {with(parameters(Op::Minimum), 0, false), "Minimum filter 3x3", "Min filtering...",
         [](ImageFile& i) { minFilter(i, 3, 0, false); }},
        {with(parameters(Op::BackgroundSubtract, 7), 1, false, 60), "background subtract 7 1 60",
         "Subtracting background...", [](ImageFile& i) { backgroundSubtract(i, 7, 1, 60); }},
        {custom, "Custom filter 3x2", "Custom filtering...",
         [](ImageFile& i) { kernelFilter(i, edgeKernel(), -1); }},
    };
}

TEST_F(FilterThreadTest, OperationsHaveTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(FilterOperation::FlipX), 0);
    EXPECT_EQ(static_cast<int>(FilterOperation::Invert), 3);
    EXPECT_EQ(static_cast<int>(FilterOperation::Maximum), 4);
    EXPECT_EQ(static_cast<int>(FilterOperation::Median), 5);
    EXPECT_EQ(static_cast<int>(FilterOperation::Mean), 6);
    EXPECT_EQ(static_cast<int>(FilterOperation::Minimum), 7);
    EXPECT_EQ(static_cast<int>(FilterOperation::BackgroundSubtract), 8);
    EXPECT_EQ(FilterJobParameters().size, 1);
    EXPECT_TRUE(FilterJobParameters().channelAll);
}

TEST_F(FilterThreadTest, EachOperationOnASeriesIsTheOperationOnEachTimePoint)
{
    for (const int bits : {8, 12, 16}) {
        const std::vector<PlainStack> stacks = {denseStack(11, 9, 5, 2, bits),
                                                mirrored(denseStack(11, 9, 5, 2, bits), 0),
                                                mirrored(denseStack(11, 9, 5, 2, bits), 2)};
        for (const Case& each : allCases()) {
            show(stacks);
            log.clear();
            texts.clear();
            EXPECT_EQ(run(each.parameters), JobOutcome::Done) << result.error.toStdString();
            std::vector<PlainStack> expected;
            for (const PlainStack& stack : stacks) {
                const auto image = test::imageOf(stack);
                each.direct(*image);
                expected.push_back(plainCopy(*image));
            }
            EXPECT_TRUE(voxels() == expected) << bits << each.logText.toStdString();
            EXPECT_TRUE(readBack(*array) == texturesOf(expected)) << bits << each.logText.toStdString();
            EXPECT_EQ(log.count(each.logText), 1) << each.logText.toStdString();
            EXPECT_EQ(texts.value(0), each.progressText);
            EXPECT_EQ(result.error, "");
        }
    }
}

TEST_F(FilterThreadTest, AFlipIsRememberedByTheVolume)
{
    show({denseStack(6, 5, 4)});
    run(parameters(FilterOperation::FlipY));
    EXPECT_EQ(array->transforms(), (DataTransforms{false, true, false, false}));
    run(parameters(FilterOperation::Invert));
    EXPECT_EQ(array->transforms(), (DataTransforms{false, true, false, true}));
}

TEST_F(FilterThreadTest, AJobCountsToItsEnd)
{
    show({denseStack(6, 5, 4), denseStack(6, 5, 4)});
    int last = -1;
    int lastTotal = 0;
    onProgress = [&](int done, int total) {
        EXPECT_GE(done, last);
        last = done;
        lastTotal = total;
    };
    run(parameters(FilterOperation::Mean));
    EXPECT_EQ(last, 400);
    EXPECT_EQ(lastTotal, 400);
}

TEST_F(FilterThreadTest, ACancelledJobLeavesEverythingAsItWas)
{
    const std::vector<PlainStack> stacks = {denseStack(11, 9, 5), mirrored(denseStack(11, 9, 5), 0),
                                            mirrored(denseStack(11, 9, 5), 1)};
    for (const FilterOperation operation :
         {FilterOperation::Mean, FilterOperation::FlipX, FilterOperation::Invert}) {
        for (const int step : {0, 150, 350, 600}) {
            show(stacks);
            const auto minimum = array->channels()[0].minValue;
            onProgress = [&](int done, int total) {
                if (total > 0 && done >= step)
                    thread->cancel();
            };
            EXPECT_EQ(run(parameters(operation)), JobOutcome::Cancelled) << step;
            EXPECT_EQ(result.error, "");
            EXPECT_TRUE(voxels() == stacks);
            EXPECT_TRUE(readBack(*array) == texturesOf(stacks));
            EXPECT_EQ(array->transforms(), DataTransforms());
            EXPECT_EQ(array->channels()[0].minValue, minimum);
        }
    }
}

TEST_F(FilterThreadTest, ACancelledJobIsForgottenByTheNext)
{
    show({denseStack(6, 5, 4)});
    onProgress = [&](int, int) { thread->cancel(); };
    EXPECT_EQ(run(parameters(FilterOperation::FlipX)), JobOutcome::Cancelled);
    onProgress = {};
    EXPECT_EQ(run(parameters(FilterOperation::FlipX)), JobOutcome::Done);
}

TEST_F(FilterThreadTest, TheLockIsFreeWhileAFilterComputes)
{
    show({denseStack(6, 5, 4), denseStack(6, 5, 4)});
    int locked = 0;
    onProgress = [&](int done, int total) {
        // In the first half of a time point's steps voxels are filtered.
        if (total == 0 || done % 200 >= 100 || (done > 0 && done % 200 == 0))
            return;
        const std::scoped_lock guard(lock);
        ++locked;
    };
    EXPECT_EQ(run(parameters(FilterOperation::Median)), JobOutcome::Done);
    EXPECT_GT(locked, 0);
}

TEST_F(FilterThreadTest, AnAnimationLetsAJobThrough)
{
    show({denseStack(6, 5, 4)});
    std::atomic<bool> stop = false;
    std::thread animation([&] {
        const std::scoped_lock guard(lock);
        while (!stop)
            lock.yieldToWaiters();
    });
    EXPECT_EQ(run(parameters(FilterOperation::Mean)), JobOutcome::Done);
    stop = true;
    animation.join();
}

TEST_F(FilterThreadTest, OneJobAtATime)
{
    show({denseStack(6, 5, 4)});
    QSemaphore started;
    QSemaphore go;
    bool isFirst = true;
    onProgress = [&](int, int) {
        if (!std::exchange(isFirst, false))
            return;
        started.release();
        go.acquire();
    };
    EXPECT_TRUE(thread->filter({array.get(), parameters(FilterOperation::FlipX)}));
    started.acquire();
    EXPECT_TRUE(thread->isBusy());
    EXPECT_FALSE(thread->filter({array.get(), parameters(FilterOperation::FlipY)}));
    go.release();
    wait();
    // The last report comes when the next job may begin.
    EXPECT_FALSE(thread->isBusy());
    EXPECT_EQ(run(parameters(FilterOperation::FlipX)), JobOutcome::Done);
    EXPECT_EQ(array->transforms(), DataTransforms());
}

TEST_F(FilterThreadTest, NothingToWorkOnIsRefused)
{
    EXPECT_FALSE(thread->filter({nullptr, parameters(FilterOperation::FlipX)}));
    VoxelArray empty{VolumeOptions()};
    EXPECT_FALSE(thread->filter({&empty, parameters(FilterOperation::FlipX)}));
}

TEST_F(FilterThreadTest, AChannelThatIsNotThereIsSaid)
{
    show({denseStack(6, 5, 4, 2)});
    EXPECT_EQ(run(with(parameters(FilterOperation::Mean), 2, false)), JobOutcome::Failed);
    EXPECT_EQ(result.error, "The stack has no channel 2.");
    EXPECT_EQ(voxels()[0], denseStack(6, 5, 4, 2));
}

TEST_F(FilterThreadTest, AWindowThatIsTooWideIsSaid)
{
    show({denseStack(6, 5, 4)});
    EXPECT_EQ(run(with(parameters(FilterOperation::Median, 257), -1, true)), JobOutcome::Failed);
    EXPECT_EQ(result.error, "none cannot be filtered in this way.");
    EXPECT_EQ(voxels()[0], denseStack(6, 5, 4));
}

TEST_F(FilterThreadTest, OfOneChannelAnImageOnlyTheChosenChannelIsFiltered)
{
    // Two time points of two channels, each in an image of its own.
    std::vector<PlainStack> stacks;
    for (int i = 0; i < 4; ++i)
        stacks.push_back(i % 2 == 0 ? denseStack(6, 5, 4) : mirrored(denseStack(6, 5, 4), i / 2));
    array = std::make_unique<VoxelArray>(VolumeOptions());
    for (const PlainStack& stack : stacks)
        array->appendImage(test::imageOf(stack));
    array->stack() = array->images().front()->attributes();
    array->setChannelCount(2);
    array->setTimePoints(2);
    for (int i = 0; i < 4; ++i)
        array->encode(GL_TEXTURE_2D, -1);
    EXPECT_EQ(run(with(parameters(FilterOperation::Mean), 1, false)), JobOutcome::Done);
    for (const std::size_t i : {1U, 3U}) {
        const auto image = test::imageOf(stacks[i]);
        meanFilter(*image, 3, -1, false);
        stacks[i] = plainCopy(*image);
    }
    EXPECT_TRUE(voxels() == stacks);
    EXPECT_TRUE(readBack(*array) == texturesOf(stacks));
}

TEST_F(FilterThreadTest, WithConservedMemoryVoxelsAreReadAgainAndLetGo)
{
    const QTemporaryDir directory;
    const test::PicFile file;
    VolumeOptions options;
    options.conserveMemory = true;
    array = std::make_unique<VoxelArray>(options);
    array->appendImage(std::make_shared<ImageFile>(QStringList{file.save(directory.filePath("stack.pic"))}));
    ImageFile& image = *array->images().front();
    ASSERT_TRUE(image.read());
    const PlainStack stack = plainCopy(image);
    array->stack() = image.attributes();
    array->setChannelCount(1);
    array->setTimePoints(1);
    array->encode(GL_TEXTURE_2D, -1);
    run(parameters(FilterOperation::FlipX));
    EXPECT_EQ(run(parameters(FilterOperation::Mean)), JobOutcome::Done);
    EXPECT_FALSE(image.isLoaded());
    const auto direct = test::imageOf(mirrored(stack, 0));
    meanFilter(*direct, 3, -1, false);
    EXPECT_TRUE(readBack(*array) == texturesOf({plainCopy(*direct)}));
    QFile::remove(directory.filePath("stack.pic"));
    EXPECT_EQ(run(parameters(FilterOperation::Mean)), JobOutcome::Failed);
    EXPECT_TRUE(result.error.startsWith("stack.pic cannot be read again."));
}

TEST_F(FilterThreadTest, EndingTheThreadEndsTheJob)
{
    const PlainStack stack = denseStack(60, 50, 40);
    show({stack});
    QSemaphore started;
    onProgress = [&](int, int) { started.release(); };
    thread->filter({array.get(), with(parameters(FilterOperation::Median, 31), -1, true)});
    started.acquire();
    thread->stopAndWait();
    EXPECT_FALSE(thread->isBusy());
    EXPECT_EQ(result.outcome, JobOutcome::Cancelled);
    EXPECT_EQ(voxels()[0], stack);
}

} // namespace
} // namespace tirn
