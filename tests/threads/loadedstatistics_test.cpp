// What a load leaves in the statistics of the channels.

#include <numeric>

#include "uisupport/loadrig.h"

namespace tirn::test {
namespace {

using LoadedStatistics = LoadRig;

TEST_F(LoadedStatistics, ASubSampledStackHasStatisticsOfItsOwn)
{
    for (const bool conserve : {false, true}) {
        describePics(1);
        description.setRange(0, 3, 1, 2, GL_TEXTURE_2D, false, 0, conserve);
        const auto loaded = load();
        ASSERT_TRUE(loaded);
        const StackStats& stats = loaded->array->channels()[0].stats;
        EXPECT_EQ(std::accumulate(stats.histogram.begin(), stats.histogram.end(), std::uint64_t{0}),
                  3U * 3 * 2);
        EXPECT_EQ(stats.sliceMean.size(), 2U);
    }
}

} // namespace
} // namespace tirn::test
