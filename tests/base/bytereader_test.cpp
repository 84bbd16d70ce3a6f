#include "base/bytereader.h"

#include <array>

#include <gtest/gtest.h>

namespace tirn {
namespace {

constexpr std::array<unsigned char, 8> kBytes = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08};

TEST(ByteReader, ReadsNumbersInEitherByteOrder)
{
    ByteReader little(kBytes.data(), kBytes.size());
    EXPECT_EQ(little.u16(), 0x0201);
    EXPECT_EQ(little.u32(), 0x06050403U);
    ByteReader big(kBytes.data(), kBytes.size(), ByteOrder::Big);
    EXPECT_EQ(big.u16(), 0x0102);
    EXPECT_EQ(big.u32(), 0x03040506U);
}

TEST(ByteReader, AReadPastTheEndGivesZerosForWhatIsMissing)
{
    ByteReader reader(kBytes.data(), 3);
    EXPECT_EQ(reader.u32(), 0x00030201U);
    EXPECT_TRUE(reader.failed());
    EXPECT_EQ(reader.u8(), 0);
    EXPECT_EQ(reader.position(), 3U);
}

TEST(ByteReader, ASeekPastTheEndFailsAndStaysInside)
{
    ByteReader reader(kBytes.data(), kBytes.size());
    reader.seek(8);
    EXPECT_FALSE(reader.failed());
    reader.seek(9);
    EXPECT_TRUE(reader.failed());
    EXPECT_EQ(reader.remaining(), 0U);
}

TEST(ByteReader, ASkipThatWouldOverflowFails)
{
    ByteReader reader(kBytes.data(), kBytes.size());
    reader.skip(2);
    reader.skip(~std::uint64_t{0});
    EXPECT_TRUE(reader.failed());
}

} // namespace
} // namespace tirn
