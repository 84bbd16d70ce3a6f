#include "image/stackfacts.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

TEST(StackFacts, TellWhatIsKnown)
{
    ImageAttributes stack;
    stack.fileX = 512;
    stack.fileY = 256;
    stack.fileZ = 64;
    stack.bitDepth = 16;
    EXPECT_EQ(stackFacts(stack, 1, 1), QString::fromUtf8("512 × 256 × 64, 1 channel, 1 time point, 16 bits"));
    stack.x = 100;
    stack.y = 50;
    stack.z = 8;
    stack.maxValue = 4095;
    stack.dimX = 0.125;
    stack.dimY = 1.0 / 3;
    EXPECT_EQ(stackFacts(stack, 2, 7),
              QString::fromUtf8("100 × 50 × 8, 2 channels, 7 time points, 12 of 16 bits used, "
                                "0.125 × 0.3333 × ? µm"));
}

} // namespace
} // namespace tirn
