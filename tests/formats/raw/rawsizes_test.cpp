#include "formats/raw/rawsizes.h"

#include <gtest/gtest.h>

namespace tirn {
namespace {

/// 10 x 4 words in 5 layers behind 100 bytes. A layer counts 40 bytes in the first tests, 80 in the last.
RawImport words()
{
    RawImport import;
    import.offset = 100;
    import.x = 10;
    import.y = 4;
    import.z = 5;
    import.depthItem = 8;
    import.last = 4;
    return import;
}

QString problem(const RawImport& import, std::int64_t size)
{
    return rawImportProblem(import, "/a.raw", size);
}

TEST(RawImport, StatesTheBytesOfAllLayers)
{
    EXPECT_EQ(specifiedRawSize(words()), 100 + 10 * 4 * 5 * 2);
    EXPECT_EQ(specifiedRawSize(RawImport()), 1);
    RawImport large;
    large.x = large.y = large.z = 65535;
    large.channels = 64;
    large.depthItem = 8;
    EXPECT_EQ(specifiedRawSize(large), 65535LL * 65535 * 65535 * 64 * 2);
}

TEST(RawImport, AFileThatIsNotThereComesFirst)
{
    EXPECT_EQ(rawImportProblem(words(), "/a.raw", std::nullopt), "Could not find /a.raw");
}

TEST(RawImport, TheOffsetMayBeTheFilesEnd)
{
    RawImport import;
    import.offset = 10;
    EXPECT_EQ(problem(import, 10), "");
    EXPECT_EQ(problem(import, 9), "The offset is greater than the size of the file.");
}

TEST(RawImport, TheSizeCountsThePositionInTheListOfDepths)
{
    // 100 + 5 layers of 40 bytes, although the layers have 80.
    RawImport import = words();
    import.last = 1;
    EXPECT_EQ(problem(import, 300), "");
    EXPECT_EQ(problem(import, 299), "Given dimensions are greater than the size of the file.");
    // Eight bits stand first in the list and count nothing.
    import.depthItem = 0;
    import.last = 0;
    EXPECT_EQ(problem(import, 100), "");
}

TEST(RawImport, TheFirstLayerCountsThePositionToo)
{
    RawImport import = words();
    import.first = 7;
    import.last = 0;
    EXPECT_EQ(problem(import, 100 + 7 * 40), "");
    EXPECT_EQ(problem(import, 100 + 7 * 40 - 1), "First layer position beyond the end of the file.");
}

TEST(RawImport, TheLastLayerCountsTheBits)
{
    RawImport import = words();
    EXPECT_EQ(problem(import, 100 + 4 * 80), "");
    EXPECT_EQ(problem(import, 100 + 4 * 80 - 1), "Last layer position beyond the end of the file.");
    import.depthItem = 0;
    EXPECT_EQ(problem(import, 100 + 4 * 40), "");
    EXPECT_EQ(problem(import, 100 + 4 * 40 - 1), "Last layer position beyond the end of the file.");
}

TEST(RawImport, BitsThatFillNoByteAreRoundedDown)
{
    RawImport import;
    import.x = 3;
    import.depthItem = 4;
    import.z = 2;
    // 12 bits of the list's position: one byte each.
    EXPECT_EQ(problem(import, 2), "");
    EXPECT_EQ(problem(import, 1), "Given dimensions are greater than the size of the file.");
}

TEST(RawImport, AStepIsAtLeastOne)
{
    RawImport import = words();
    import.step = 0;
    EXPECT_EQ(problem(import, 1000), "Step size must be at least 1.");
    // The tests stand in their order.
    import.offset = 1001;
    EXPECT_EQ(problem(import, 1000), "The offset is greater than the size of the file.");
}

TEST(RawImport, NothingOverflows)
{
    RawImport import;
    import.x = import.y = import.z = 65535;
    import.channels = 64;
    import.depthItem = 8;
    import.last = 65534;
    EXPECT_EQ(problem(import, 1000), "Given dimensions are greater than the size of the file.");
}

} // namespace
} // namespace tirn
