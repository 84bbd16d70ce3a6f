#include "render/renderlistcache.h"

#include "glsupport/recordedvolume.h"

namespace tirn {
namespace {

using test::denseStack;

/// A cache whose builder makes lists and remembers what it was asked for.
class RenderLists : public test::RecordedVolume
{
protected:
    RenderLists()
    {
        array = test::makeVolume({denseStack(4, 4, 4, 2), denseStack(4, 4, 4, 2), denseStack(4, 4, 4, 2)},
                                 {GL_TEXTURE_2D, 4, -1, RenderThreadKind::FragmentProgram, nullptr});
        frame.array = array.get();
        frame.cut = array->cut;
        frame.channels.resize(2);
        gl.clear();
        log.clear();
    }

    bool rebuild(bool force = false)
    {
        built.clear();
        return cache.rebuild(frame, force, [this](Orientation orientation, const SliceWalk& walk) {
            built.push_back(orientation);
            walks.push_back(walk);
            return fails ? ListNames() : ListNames(1);
        });
    }
    void look(Orientation orientation)
    {
        static constexpr double angles[6][2] = {{0, 0}, {0, 180}, {0, 270}, {0, 90}, {90, 0}, {270, 0}};
        const auto& [x, y] = angles[static_cast<int>(orientation)];
        frame.rotation = rotationMatrix(x, y, 0);
        ASSERT_EQ(orientationOf(frame.rotation), orientation);
    }
    /// The lists that are there, by slot.
    std::vector<std::size_t> filled() const
    {
        std::vector<std::size_t> all;
        for (std::size_t i = 0; i < cache.slots(); ++i) {
            if (cache.slot(i) != 0)
                all.push_back(i);
        }
        return all;
    }

    std::unique_ptr<VoxelArray> array;
    RenderListCache cache;
    FrameState frame;
    bool fails = false;
    std::vector<Orientation> built;
    std::vector<SliceWalk> walks;
};

using Orientations = std::vector<Orientation>;

TEST_F(RenderLists, AreSixForEachTimePoint)
{
    EXPECT_TRUE(rebuild());
    EXPECT_EQ(cache.slots(), 18U);
    EXPECT_EQ(filled(), std::vector<std::size_t>{4});
    EXPECT_EQ(cache.currentRenderList(), cache.slot(4));
    EXPECT_EQ(built, Orientations{Orientation::XYForward});
    EXPECT_EQ(walks.front(), (SliceWalk{1, 8, 3, 0, -1}));
}

TEST_F(RenderLists, OfASteadyViewAreLeftAlone)
{
    rebuild();
    gl.clear();
    EXPECT_TRUE(rebuild());
    EXPECT_TRUE(built.empty());
    EXPECT_EQ(gl.count("GenLists") + gl.count("DeleteLists") + gl.count("NewList"), 0);
}

TEST_F(RenderLists, OfAllOrientationsAreBuiltOnce)
{
    for (int turn = 0; turn < 2; ++turn) {
        for (int i = 0; i < 6; ++i) {
            look(static_cast<Orientation>(i));
            EXPECT_TRUE(rebuild());
            EXPECT_EQ(built.size(), turn == 0 ? 1U : 0U);
            EXPECT_EQ(cache.currentRenderList(),
                      cache.slot(static_cast<std::size_t>(orientationSlot(static_cast<Orientation>(i)))));
        }
    }
    EXPECT_EQ(filled(), (std::vector<std::size_t>{0, 1, 2, 3, 4, 5}));
}

TEST_F(RenderLists, OfATimeStepDropNone)
{
    rebuild();
    frame.timePoint = 1;
    EXPECT_TRUE(rebuild());
    EXPECT_EQ(built, Orientations{Orientation::XYForward});
    EXPECT_EQ(filled(), (std::vector<std::size_t>{4, 10}));
    EXPECT_EQ(cache.currentRenderList(), cache.slot(10));
    frame.timePoint = 0;
    EXPECT_TRUE(rebuild());
    EXPECT_TRUE(built.empty());
    EXPECT_EQ(cache.currentRenderList(), cache.slot(4));
    EXPECT_EQ(gl.count("DeleteLists"), 0);
}

TEST_F(RenderLists, AreAllDroppedByAChangedChannel)
{
    const std::vector<ChannelDisplay> changes = {
        {ChannelState::Hidden, 0, 0}, {ChannelState::Shown, 0, 1}, {ChannelState::Shown, 1, 0}};
    for (const ChannelDisplay& change : changes) {
        frame.channels[1] = {};
        frame.timePoint = 0;
        rebuild(true);
        frame.timePoint = 1;
        rebuild();
        ASSERT_EQ(filled().size(), 2U);
        frame.channels[1] = change;
        gl.clear();
        EXPECT_TRUE(rebuild());
        EXPECT_EQ(gl.count("DeleteLists"), 2);
        EXPECT_EQ(filled(), std::vector<std::size_t>{10});
    }
}

TEST_F(RenderLists, AreAllDroppedByACutOnAnySide)
{
    rebuild();
    for (int CutBox::*side :
         {&CutBox::xMin, &CutBox::xMax, &CutBox::yMin, &CutBox::yMax, &CutBox::zMin, &CutBox::zMax}) {
        frame.cut.*side += frame.cut.*side == 0 ? 1 : -1;
        gl.clear();
        EXPECT_TRUE(rebuild());
        EXPECT_EQ(built, Orientations{Orientation::XYForward});
        EXPECT_EQ(gl.count("DeleteLists"), 1);
        EXPECT_TRUE(rebuild());
        EXPECT_TRUE(built.empty()) << "a cut that stays costs nothing";
    }
    EXPECT_EQ(walks.back(), (SliceWalk{1, 8, 2, 1, -1}));
}

TEST_F(RenderLists, AreAllDroppedByForce)
{
    rebuild();
    look(Orientation::YZForward);
    rebuild();
    gl.clear();
    EXPECT_TRUE(rebuild(true));
    EXPECT_EQ(gl.count("DeleteLists"), 2);
    EXPECT_EQ(filled(), std::vector<std::size_t>{2});
    EXPECT_EQ(walks.back(), (SliceWalk{1, 4, 3, 0, -1}));
}

TEST_F(RenderLists, FollowANewNumberOfTimePoints)
{
    rebuild();
    array->setTimePoints(2);
    EXPECT_TRUE(rebuild());
    EXPECT_EQ(built.size(), 1U);
    EXPECT_EQ(cache.slots(), 12U);
}

TEST_F(RenderLists, OfAnotherArrayReplaceThose)
{
    rebuild();
    const auto other =
        test::makeVolume({denseStack(4, 4, 4, 2), denseStack(4, 4, 4, 2), denseStack(4, 4, 4, 2)},
                         {GL_TEXTURE_2D, 4, -1, RenderThreadKind::FragmentProgram, nullptr});
    frame.array = other.get();
    EXPECT_TRUE(rebuild());
    EXPECT_EQ(built.size(), 1U);
}

TEST_F(RenderLists, OfAnIncompleteArrayStayAsTheyAre)
{
    rebuild();
    const GLuint before = cache.currentRenderList();
    VoxelArray growing(4, 4, 4, {});
    frame.array = &growing;
    EXPECT_FALSE(rebuild());
    EXPECT_EQ(cache.currentRenderList(), before);
    EXPECT_TRUE(built.empty());
}

TEST_F(RenderLists, WithoutAnArrayAreDropped)
{
    rebuild();
    frame.array = nullptr;
    EXPECT_FALSE(rebuild());
    EXPECT_EQ(cache.currentRenderList(), 0U);
    EXPECT_EQ(cache.slots(), 0U);
}

TEST_F(RenderLists, ThatCannotBeBuiltAreToldAndTriedAgain)
{
    fails = true;
    EXPECT_FALSE(rebuild());
    EXPECT_EQ(log.warnings(), QStringList{"Render list is busted"});
    EXPECT_FALSE(rebuild());
    EXPECT_EQ(built.size(), 1U);
    fails = false;
    EXPECT_TRUE(rebuild());
    EXPECT_EQ(filled(), std::vector<std::size_t>{4});
}

TEST_F(RenderLists, ThatCannotBeBuiltAfterATurnAreTriedAgainToo)
{
    rebuild();
    look(Orientation::YZForward);
    fails = true;
    EXPECT_FALSE(rebuild());
    // The list of the other side would show the slices in a wrong order.
    EXPECT_EQ(cache.currentRenderList(), 0U);
    fails = false;
    EXPECT_TRUE(rebuild());
    EXPECT_EQ(built, Orientations{Orientation::YZForward});
    EXPECT_EQ(filled(), (std::vector<std::size_t>{2, 4}));
}

TEST_F(RenderLists, ThatTheDriverDoesNotKnowAreBusted)
{
    gl.refuseLists(true);
    EXPECT_FALSE(rebuild());
    EXPECT_EQ(log.warnings(), QStringList{"Render list is busted"});
    EXPECT_TRUE(filled().empty());
}

TEST_F(RenderLists, OfFourViewsAreTheThreeFlatOnesToo)
{
    look(Orientation::YZForward);
    rebuild();
    frame.view.renderMode = RenderMode::FourViews;
    EXPECT_TRUE(rebuild());
    EXPECT_EQ(built, (Orientations{Orientation::XYForward, Orientation::YZReverse, Orientation::XZForward}));
    EXPECT_EQ(cache.xyList(), cache.slot(4));
    EXPECT_EQ(cache.yzList(), cache.slot(3));
    EXPECT_EQ(cache.xzList(), cache.slot(0));
    EXPECT_EQ(cache.currentRenderList(), cache.slot(2));
    frame.channels[0].state = ChannelState::Hidden;
    EXPECT_TRUE(rebuild());
    EXPECT_EQ(built.size(), 4U);
    EXPECT_EQ(cache.xyList(), cache.slot(4));
}

TEST_F(RenderLists, LeaveNoNamesBehind)
{
    const LiveGlNames before = liveGlNames();
    rebuild();
    frame.timePoint = 2;
    rebuild();
    EXPECT_EQ(liveGlNames().lists, before.lists + 2);
    cache.clear();
    EXPECT_EQ(liveGlNames(), before);
}

} // namespace
} // namespace tirn
