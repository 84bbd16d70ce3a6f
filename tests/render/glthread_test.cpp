// When a render thread draws, sleeps, gives its lock up and ends.

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"
#include "render/nvidiathread.h"
#include "scene/keyframeview.h"
#include "support/logcapture.h"

namespace tirn::test {
namespace {

class RenderThread : public ::testing::Test
{
protected:
    LogCapture log;
    RenderRig rig{{64, 64}};

    VoxelArray& show(int channels = 1, int timePoints = 1)
    {
        const std::vector<PlainStack> stacks(static_cast<std::size_t>(timePoints),
                                             denseStack(8, 8, 8, channels, 8));
        VoxelArray& array = rig.show(stacks);
        rig.setTables(
            std::vector<ColourTable>(static_cast<std::size_t>(channels), rampTable(256, {1, 1, 1}, 0.5)));
        return array;
    }
    void setSpin(int rate)
    {
        const std::scoped_lock lock(rig.scene.mutex);
        rig.scene.view.spinX = rate;
    }
    void drawOne()
    {
        rig.thread().requestFrame();
        rig.thread().wait();
    }
    ChannelState stateOf(std::size_t channel)
    {
        const std::scoped_lock lock(rig.scene.mutex);
        return rig.scene.current()->channels()[channel].display.state;
    }
};

TEST_F(RenderThread, OneRequestIsOneFrameAndThenTheThreadEnds)
{
    show();
    drawOne();
    EXPECT_EQ(rig.thread().framesDrawn(), 1);
    EXPECT_FALSE(rig.thread().isRunning());
    drawOne();
    EXPECT_EQ(rig.thread().framesDrawn(), 2);
}

TEST_F(RenderThread, TheLastOfManyRequestsIsDrawn)
{
    show();
    for (int i = 1; i <= 100; ++i) {
        {
            const std::scoped_lock lock(rig.scene.mutex);
            rig.scene.view.rotY = i;
        }
        rig.thread().requestFrame();
    }
    rig.thread().wait();
    EXPECT_GE(rig.thread().framesDrawn(), 1);
    EXPECT_EQ(rig.events.lastY, 100);
}

TEST_F(RenderThread, ASpinGoesOnUntilItIsStopped)
{
    show();
    setSpin(8);
    rig.thread().requestFrame();
    rig.surface().waitForFrames(5);
    EXPECT_TRUE(rig.thread().isRunning());
    setSpin(0);
    rig.thread().wait();
    // 8 pixels a frame in a window 64 wide: -22.5 degrees each.
    EXPECT_DOUBLE_EQ(std::fmod(rig.scene.view.rotY / 22.5, 1.0), 0.0);
}

TEST_F(RenderThread, ASpinStandsStillWhileTheMouseDrags)
{
    show();
    setSpin(8);
    rig.scene.view.dragging = true;
    drawOne();
    EXPECT_EQ(rig.thread().framesDrawn(), 1);
    EXPECT_EQ(rig.scene.view.rotY, 0);
}

TEST_F(RenderThread, StopAndWaitEndsASpinAndDropsRequests)
{
    show();
    setSpin(8);
    rig.thread().requestFrame();
    rig.surface().waitForFrames(2);
    rig.thread().requestFrame();
    rig.thread().stopAndWait();
    EXPECT_FALSE(rig.thread().isRunning());
    const int frames = rig.thread().framesDrawn();
    setSpin(0);
    drawOne();
    EXPECT_EQ(rig.thread().framesDrawn(), frames + 1);
}

TEST_F(RenderThread, ARequestAfterAStopIsDrawnAllTheSame)
{
    show();
    for (int round = 0; round < 50; ++round) {
        setSpin(8);
        rig.thread().requestFrame();
        rig.thread().stop();
        setSpin(0);
        {
            const std::scoped_lock lock(rig.scene.mutex);
            rig.scene.view.rotZ = round;
        }
        rig.thread().requestFrame();
        rig.thread().wait();
        ASSERT_EQ(rig.events.lastZ.load(), round);
    }
}

TEST_F(RenderThread, PlayingTimePointsKeepsItRunningAndWraps)
{
    show(1, 3);
    rig.scene.settings.flashRate = 100000;
    rig.scene.view.timeRate = 100;
    rig.scene.view.playing = rig.scene.currentId();
    rig.thread().requestFrame();
    rig.surface().waitForFrames(8);
    EXPECT_TRUE(rig.thread().isRunning());
    {
        const std::scoped_lock lock(rig.scene.mutex);
        rig.scene.view.playing = StackId::None;
    }
    rig.thread().requestFrame();
    rig.thread().wait();
    EXPECT_GE(rig.events.timePoints, 4);
    EXPECT_EQ(rig.scene.current()->timePoint(), rig.events.timePoints % 3);
}

TEST_F(RenderThread, TimePointsFollowEachOtherAtTheirRate)
{
    show(1, 3);
    rig.scene.settings.flashRate = 100000;
    rig.scene.view.timeRate = 20;
    rig.scene.view.playing = rig.scene.currentId();
    const Stopwatch time;
    rig.thread().requestFrame();
    rig.surface().waitForFrames(6);
    // Five steps of 50 ms or more; at the least rate they would take five seconds.
    EXPECT_GE(time.seconds(), 0.25);
    EXPECT_LT(time.seconds(), 4);
    EXPECT_EQ(rig.events.timePoints, 5);
    rig.thread().stopAndWait();
}

TEST_F(RenderThread, BatchModePlaysAndFlashesNothing)
{
    VoxelArray& array = show(1, 3);
    array.channels()[0].display.state = ChannelState::FlashOn;
    rig.scene.view.playing = rig.scene.currentId();
    rig.scene.view.timeRate = 1000;
    rig.scene.settings.flashRate = 0;
    rig.scene.batchMode = true;
    drawOne();
    EXPECT_EQ(rig.events.timePoints, 0);
    EXPECT_EQ(stateOf(0), ChannelState::FlashOn);
}

TEST_F(RenderThread, AFlashingChannelKeepsItAliveButAsleep)
{
    VoxelArray& array = show(2);
    array.channels()[0].display.state = ChannelState::FlashOn;
    rig.scene.settings.flashRate = 40;
    rig.thread().requestFrame();
    rig.surface().waitForFrames(4);
    EXPECT_TRUE(rig.thread().isRunning());
    {
        const std::scoped_lock lock(rig.scene.mutex);
        array.channels()[0].display.state = ChannelState::Shown;
    }
    rig.thread().requestFrame();
    rig.thread().wait();
    // Asleep in between: about as many frames as flashes, not as many as fit into the time.
    EXPECT_LE(rig.thread().framesDrawn(), 12);
}

TEST_F(RenderThread, TheThreadSleepsThroughALongFlashPeriod)
{
    VoxelArray& array = show();
    array.channels()[0].display.state = ChannelState::PaletteSwap;
    rig.scene.settings.flashRate = 1000000;
    rig.thread().requestFrame();
    rig.surface().waitForFrames(1);
    rig.renderLock.lock();
    EXPECT_TRUE(rig.thread().isRunning());
    EXPECT_EQ(rig.thread().framesDrawn(), 1);
    rig.renderLock.unlock();
    rig.thread().stopAndWait();
}

/// Fails at its first lists.
class StumblingThread : public NvidiaThread
{
public:
    StumblingThread(RenderRig& rig, int failures)
        : NvidiaThread({rig.scene, rig.shaders(), rig.renderLock, rig.surface(), rig.events,
                        RenderThreadKind::FragmentProgram}),
          m_rig(rig), m_failures(failures)
    {}
    ~StumblingThread() override
    {
        stopAndWait();
        m_rig.makeCurrent();
        clearLists();
    }
    ListNames buildRenderList(const FrameState& frame, Orientation orientation,
                              const SliceWalk& walk) override
    {
        if (m_failures-- > 0)
            m_failures % 2 == 0 ? throw std::bad_alloc() : throw 1;
        return NvidiaThread::buildRenderList(frame, orientation, walk);
    }

private:
    RenderRig& m_rig;
    int m_failures;
};

TEST_F(RenderThread, AFrameThatCannotBeDrawnHoldsNothingAndTheNextOneIsDrawn)
{
    show();
    StumblingThread thread(rig, 2);
    setSpin(8);
    for (int failed = 0; failed < 2; ++failed) {
        thread.requestFrame();
        // It ends although the view would go on spinning.
        thread.wait();
        EXPECT_EQ(thread.framesDrawn(), 0);
        rig.renderLock.lock();
        rig.renderLock.unlock();
    }
    EXPECT_EQ(log.warnings().filter("frame"),
              QStringList({"A frame could not be drawn.", "A frame could not be drawn: "
                                                          "std::bad_alloc"}));
    setSpin(0);
    thread.requestFrame();
    thread.wait();
    EXPECT_EQ(thread.framesDrawn(), 1);
    rig.surface().makeCurrent();
    const QImage picture = rig.surface().image();
    QImage blank = picture;
    blank.fill(picture.pixel(0, 0));
    EXPECT_NE(picture, blank);
    EXPECT_EQ(picture, rig.draw());
}

TEST_F(RenderThread, WhoeverWaitsForAPictureThatCannotBeDrawnGetsNone)
{
    show();
    StumblingThread thread(rig, 1);
    EXPECT_TRUE(thread.grabNextFrame().isNull());
    EXPECT_FALSE(thread.grabNextFrame().isNull());
}

TEST_F(RenderThread, TheLockIsGivenUpBetweenFramesToThoseWhoWait)
{
    show();
    setSpin(4);
    rig.thread().requestFrame();
    rig.surface().waitForFrames(1);
    for (int i = 0; i < 20; ++i) {
        // Returns at all only because the spinning thread hands the lock over.
        rig.renderLock.lock();
        rig.renderLock.unlock();
    }
    EXPECT_TRUE(rig.thread().isRunning());
    rig.thread().stopAndWait();
}

TEST_F(RenderThread, RecordedFramesBecomeKeyFrames)
{
    VoxelArray& array = show(2);
    array.channels()[1].display = {ChannelState::Hidden, 1, 0};
    array.scale = {1, 2, 3};
    rig.scene.recording = true;
    rig.scene.view.rotX = 90;
    drawOne();
    drawOne();
    ASSERT_EQ(rig.scene.keyFrames.size(), 2U);
    EXPECT_EQ(rig.events.keyFrames, 2);
    const KeyFrame& frame = rig.scene.keyFrames.back();
    EXPECT_EQ(frame.xrot, 90);
    EXPECT_EQ(frame.zscale, 3);
    EXPECT_EQ(frame.zmax, 7);
    EXPECT_EQ(frame.palettes.size(), 2U);
    ASSERT_EQ(frame.channels.size(), 2U);
    EXPECT_EQ(frame.channels[1], (ChannelDisplay{ChannelState::Hidden, 1, 0}));
}

TEST_F(RenderThread, AKeyFrameLeavesPalettesOutUnlessAsked)
{
    show();
    EXPECT_TRUE(shownKeyFrame(rig.scene, false).palettes.empty());
    EXPECT_EQ(shownKeyFrame(rig.scene, true).palettes.size(), rig.scene.palettes.size());
}

TEST_F(RenderThread, AGrabbedFrameIsWhatWasDrawnAndHasNoAlpha)
{
    show();
    const QImage grabbed = rig.thread().grabNextFrame();
    rig.thread().wait();
    const QImage drawn = rig.draw();
    ASSERT_EQ(grabbed.size(), drawn.size());
    EXPECT_FALSE(grabbed.hasAlphaChannel());
    EXPECT_EQ(grabbed.convertToFormat(QImage::Format_RGB888), drawn.convertToFormat(QImage::Format_RGB888));
}

TEST_F(RenderThread, WithoutAStackThereIsAMessageAndNoLoop)
{
    setSpin(10);
    drawOne();
    EXPECT_EQ(rig.thread().framesDrawn(), 1);
    EXPECT_FALSE(rig.thread().isRunning());
}

TEST_F(RenderThread, TwoHundredStopsWhileSpinningLeaveNothingBehind)
{
    show(2, 2);
    rig.scene.view.playing = rig.scene.currentId();
    rig.scene.view.timeRate = 1000;
    for (int cycle = 0; cycle < 200; ++cycle) {
        setSpin(3);
        rig.thread().requestFrame();
        if (cycle % 3 == 0)
            rig.thread().requestFrame();
        rig.thread().stopAndWait();
        ASSERT_FALSE(rig.thread().isRunning());
    }
}

TEST(RenderRigNames, AllGlNamesAreGivenBack)
{
    const LogCapture log;
    const LiveGlNames before = liveGlNames();
    for (int cycle = 0; cycle < 5; ++cycle) {
        RenderRig rig({32, 32});
        rig.show({denseStack(5, 6, 7, 2, 8), denseStack(5, 6, 7, 2, 8)});
        rig.setTables({rampTable(256, {1, 1, 1}, 0.5), rampTable(256, {1, 0, 1}, 0.5)});
        rig.draw();
        EXPECT_NE(liveGlNames(), before);
    }
    EXPECT_EQ(liveGlNames(), before);
}

TEST(RenderLock, FirstComeFirstServed)
{
    RenderLock lock;
    std::vector<int> order;
    lock.lock();
    std::thread first([&] {
        lock.lock();
        order.push_back(1);
        lock.unlock();
    });
    // The second waiter must line up behind the first; both are counted once they wait.
    while (lock.waiting() < 1)
        std::this_thread::yield();
    std::thread second([&] {
        lock.lock();
        order.push_back(2);
        lock.unlock();
    });
    while (lock.waiting() < 2)
        std::this_thread::yield();
    lock.yieldToWaiters();
    order.push_back(3);
    lock.unlock();
    first.join();
    second.join();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(RenderLock, YieldingWithoutWaitersKeepsIt)
{
    RenderLock lock;
    lock.lock();
    lock.yieldToWaiters();
    EXPECT_EQ(lock.waiting(), 0);
    lock.unlock();
}

} // namespace
} // namespace tirn::test
