#include "volume/slicestore.h"

#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "image/filters/pointfilters.h"
#include "volume/volumeedit.h"

namespace tirn::test {
namespace {

/// A volume with voxels in memory and no textures.
std::unique_ptr<VoxelArray> volumeOf(const std::vector<PlainStack>& timePoints)
{
    auto array = std::make_unique<VoxelArray>(VolumeOptions{});
    for (const PlainStack& stack : timePoints)
        array->appendImage(imageOf(stack));
    array->stack() = array->images().front()->attributes();
    array->setChannelCount(timePoints.front().channels);
    array->setTimePoints(static_cast<int>(timePoints.size()));
    return array;
}

int firstTexel(const SliceStore::Slices& slices) { return *slices->plane(0); }

TEST(SliceStore, MakesPlanesWhenTheyAreFirstAskedFor)
{
    const PlainStack stack = denseStack(9, 8, 7, 2);
    const auto array = volumeOf({stack, mirrored(stack, 0)});
    SliceStore store;
    EXPECT_EQ(store.memoryUsed(), 0U);
    const SliceStore::Slices slices = store.slices(*array, 1, 1, 2);
    ASSERT_NE(slices, nullptr);
    EXPECT_EQ(firstTexel(slices), stack.at(8, 0, 0, 1));
    EXPECT_EQ(store.slices(*array, 1, 1, 2), slices);
    EXPECT_EQ(store.made(), 1);
    EXPECT_EQ(store.memoryUsed(), slices->memoryUsed());
    EXPECT_EQ(firstTexel(store.slices(*array, 0, 0, 0)), stack.at(0, 0, 0, 0));
    EXPECT_EQ(store.made(), 2);
    EXPECT_EQ(store.slices(*array, 2, 0, 0), nullptr);
    EXPECT_EQ(store.slices(*array, 0, 2, 0), nullptr);
}

TEST(SliceStore, RenewsThePlanesOfAnImageThatChanged)
{
    const PlainStack stack = denseStack(9, 8, 7);
    RenderRig rig;
    VoxelArray& array = rig.show({stack, mirrored(stack, 1)});
    SliceStore store;
    store.slices(array, 0, 0, 2);
    store.slices(array, 0, 1, 2);
    rig.makeCurrent();
    VolumeEdit edit = invertEdit();
    edit.images = {1};
    ASSERT_EQ(applyEdit(array, edit, {}).outcome, JobOutcome::Done);
    EXPECT_EQ(firstTexel(store.slices(array, 0, 0, 2)), stack.at(0, 0, 0));
    EXPECT_EQ(firstTexel(store.slices(array, 0, 1, 2)), 255 - stack.at(0, 7, 0));
    EXPECT_EQ(store.made(), 3);
}

TEST(SliceStore, ReadsNoVoxelsThatAreBeingChanged)
{
    const PlainStack stack = denseStack(9, 8, 7);
    const auto array = volumeOf({stack, stack});
    SliceStore store;
    ASSERT_NE(store.slices(*array, 0, 0, 2), nullptr);
    {
        const VoxelWork work(*array, {0});
        // What was made before stays.
        EXPECT_NE(store.slices(*array, 0, 0, 2), nullptr);
        EXPECT_EQ(store.slices(*array, 0, 0, 1), nullptr);
        EXPECT_NE(store.slices(*array, 0, 1, 1), nullptr);
    }
    EXPECT_NE(store.slices(*array, 0, 0, 1), nullptr);
}

TEST(SliceStore, AnEditKeepsItsImagesFromBeingRead)
{
    RenderRig rig;
    VoxelArray& array = rig.show({denseStack(9, 8, 7)});
    SliceStore store;
    rig.makeCurrent();
    VolumeEdit edit = invertEdit();
    const auto apply = edit.apply;
    SliceStore::Slices meanwhile;
    edit.apply = [&](ImageFile& image, const Progress& progress) {
        meanwhile = store.slices(array, 0, 0, 2);
        return apply(image, progress);
    };
    ASSERT_EQ(applyEdit(array, edit, {}).outcome, JobOutcome::Done);
    EXPECT_EQ(meanwhile, nullptr);
    EXPECT_NE(store.slices(array, 0, 0, 2), nullptr);
}

TEST(SliceStore, AnEditThatIsTakenBackBringsThePlanesBack)
{
    const PlainStack stack = denseStack(9, 8, 7);
    RenderRig rig;
    VoxelArray& array = rig.show({stack});
    SliceStore store;
    rig.makeCurrent();
    std::unique_ptr<AppliedEdit> applied;
    ASSERT_EQ(applyEdit(array, invertEdit(), {}, &applied).outcome, JobOutcome::Done);
    EXPECT_EQ(firstTexel(store.slices(array, 0, 0, 2)), 255 - stack.at(0, 0, 0));
    SliceStore::Slices meanwhile = store.slices(array, 0, 0, 1);
    const auto look = [&](const std::function<void()>& change) {
        change();
        meanwhile = SliceStore().slices(array, 0, 0, 1);
    };
    ASSERT_EQ(applied->takeBack(look).outcome, JobOutcome::Done);
    EXPECT_EQ(meanwhile, nullptr);
    EXPECT_EQ(firstTexel(store.slices(array, 0, 0, 2)), stack.at(0, 0, 0));
}

TEST(SliceStore, VoxelsThatAreNotInMemoryHaveNoPlanes)
{
    const auto array = volumeOf({denseStack(9, 8, 7)});
    array->images().front()->freeStack();
    EXPECT_EQ(SliceStore().slices(*array, 0, 0, 2), nullptr);
}

TEST(SliceStore, LetsTheLongestUnusedGoBeyondItsLimit)
{
    const PlainStack stack = denseStack(16, 16, 16);
    const auto array = volumeOf({stack});
    const std::size_t one = SliceStore().slices(*array, 0, 0, 0)->memoryUsed();
    SliceStore store(one * 5 / 2);
    store.slices(*array, 0, 0, 0);
    store.slices(*array, 0, 0, 1);
    store.slices(*array, 0, 0, 0);
    store.slices(*array, 0, 0, 2);
    EXPECT_LE(store.memoryUsed(), one * 5 / 2);
    EXPECT_EQ(store.made(), 3);
    store.slices(*array, 0, 0, 0);
    EXPECT_EQ(store.made(), 3);
    store.slices(*array, 0, 0, 1);
    EXPECT_EQ(store.made(), 4);
}

TEST(SliceStore, LetsPlanesOfOtherVolumesGo)
{
    const PlainStack stack = denseStack(8, 8, 8);
    const auto first = volumeOf({stack});
    const auto second = volumeOf({stack});
    SliceStore store;
    store.slices(*first, 0, 0, 2);
    store.slices(*second, 0, 0, 2);
    store.keepOnly({second->id()});
    store.slices(*second, 0, 0, 2);
    EXPECT_EQ(store.made(), 2);
    store.slices(*first, 0, 0, 2);
    EXPECT_EQ(store.made(), 3);
}

} // namespace
} // namespace tirn::test
