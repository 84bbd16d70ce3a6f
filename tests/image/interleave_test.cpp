#include "image/interleave.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>

namespace tirn {
namespace {

std::vector<std::vector<std::byte>> numbered(int channels, int bytes)
{
    std::vector<std::vector<std::byte>> buffers;
    for (int c = 0; c < channels; ++c) {
        std::vector<std::byte> buffer;
        for (int i = 0; i < bytes; ++i)
            buffer.push_back(static_cast<std::byte>(i * 7 + c * 31 + i / 256));
        buffers.push_back(buffer);
    }
    return buffers;
}

class InterleaveOf : public ::testing::TestWithParam<std::tuple<int, int, int>>
{};

TEST_P(InterleaveOf, SamplesAlternateAndComeApartAgain)
{
    const auto [channels, count, width] = GetParam();
    const auto sources = numbered(channels, count * width);
    std::vector<const std::byte*> from;
    for (const auto& source : sources)
        from.push_back(source.data());
    std::vector<std::byte> woven(static_cast<std::size_t>(channels * count * width));
    if (width == 1)
        interleave8(from, count, woven.data());
    else
        interleave16(from, count, woven.data());
    for (int i = 0; i < count; ++i) {
        for (int c = 0; c < channels; ++c)
            ASSERT_EQ(std::memcmp(&woven[static_cast<std::size_t>((i * channels + c) * width)],
                                  &sources[static_cast<std::size_t>(c)][static_cast<std::size_t>(i * width)],
                                  static_cast<std::size_t>(width)),
                      0);
    }
    auto apart = numbered(channels, count * width);
    std::vector<std::byte*> to;
    for (auto& buffer : apart) {
        std::fill(buffer.begin(), buffer.end(), std::byte{0});
        to.push_back(buffer.data());
    }
    if (width == 1)
        deinterleave8(woven.data(), count, to);
    else
        deinterleave16(woven.data(), count, to);
    EXPECT_EQ(apart, sources);
}

INSTANTIATE_TEST_SUITE_P(Shapes, InterleaveOf,
                         ::testing::Combine(::testing::Values(1, 2, 3, 4, 5),
                                            ::testing::Values(1, 63, 1000, 600001), ::testing::Values(1, 2)));

TEST(SwapBytes, ReversesEachElement)
{
    std::vector<std::uint8_t> bytes = {1, 2, 3, 4, 5, 6, 7, 8};
    swapBytes(bytes.data(), 4, 2);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{2, 1, 4, 3, 6, 5, 8, 7}));
    swapBytes(bytes.data(), 2, 4);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{3, 4, 1, 2, 7, 8, 5, 6}));
    swapBytes(bytes.data() + 1, 3, 2);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{3, 1, 4, 7, 2, 5, 8, 6}));
    swapBytes(bytes.data(), 2, 3);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{4, 1, 3, 5, 2, 7, 8, 6}));
}

} // namespace
} // namespace tirn
