// What readers and writers say when memory runs out.

#include <gtest/gtest.h>

#include "formats/vendor/zeissio.h"
#include "image/imagefile.h"
#include "support/lsmfile.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/stkfile.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

/// The text of the exception that reading throws.
std::string thrownBy(const QString& name)
{
    ImageFile file({name});
    EXPECT_GT(file.attributes().fileZ, 0);
    const test::NoVoxelMemory none;
    try {
        file.read();
    } catch (const std::bad_alloc& error) {
        return error.what();
    }
    return "nothing";
}

TEST(Allocation, EachReaderNamesItsStack)
{
    const QTemporaryDir directory;
    const auto path = [&](const char* name) { return directory.filePath(name); };
    const test::TiffPage page = test::plainPage(4, 3, 1);
    EXPECT_EQ(thrownBy(test::TiffFile{{page}}.save(path("s.tif"))),
              "Could not allocate memory for sequence of tiffs");
    EXPECT_EQ(thrownBy(test::TiffFile{{page, page}}.save(path("m.tif"))),
              "Could not allocate memory for MTiff stack");
    EXPECT_EQ(thrownBy(test::StkFile().save(path("a.stk"))), "Could not allocate memory for Metamorph stack");
    EXPECT_EQ(thrownBy(test::LsmFile().save(path("a.lsm"))), "Could not allocate memory for Zeiss stack");
    EXPECT_EQ(thrownBy(test::testData("made/vff/synth_8bit.vff")), "Could not allocate memory for VFF stack");
    EXPECT_EQ(thrownBy(test::testData("made/dv/synth_be_i16_WZT_3c_2t.r3d")),
              "Could not allocate memory fo IMsubs Layers");
    EXPECT_EQ(thrownBy(test::testData("oif/synth_z8_c2.oif")), "Could not allocate memory for Olympus stack");
}

TEST(Allocation, TheZeissWriterReportsItsChannels)
{
    const auto stack = test::constantStack({2, 2, 2, 2, 8}, 1);
    const test::NoVoxelMemory none;
    EXPECT_EQ(ZeissIO::write({}, stack->attributes(), stack->stackData(), 0, 1, 1, true),
              QStringList{"Could not allocate component channels for Zeiss write"});
}

} // namespace
} // namespace tirn
