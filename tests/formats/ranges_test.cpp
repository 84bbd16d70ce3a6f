// Ranges of layers that no caller should ask for, in every format.

#include <climits>

#include <gtest/gtest.h>

#include "formats/imageformats.h"
#include "formats/imageio.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "support/lsmfile.h"
#include "support/picfile.h"
#include "support/stkfile.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

TEST(LayerCount, LeavesOutTheRestOfALastStep)
{
    EXPECT_EQ(layerCount(0, 9, 1), 10);
    EXPECT_EQ(layerCount(1, 9, 2), 4);
    EXPECT_EQ(layerCount(0, 4, 6), 0);
    EXPECT_EQ(layerCount(3, 2, 1), 0);
    EXPECT_EQ(layerCount(0, 9, 0), 0);
    EXPECT_EQ(layerCount(0, 9, -1), 0);
    EXPECT_EQ(layerCount(INT_MIN, INT_MAX, 1), INT_MAX);
    EXPECT_EQ(layerCount(0, INT_MAX, INT_MAX), 1);
}

/// A file of each format, three to ten layers long.
QStringList oneOfEach(const QTemporaryDir& directory)
{
    const auto path = [&](const char* name) { return directory.filePath(name); };
    const test::TiffPage page = test::plainPage(4, 3, 1, 16);
    return {
        test::PicFile().save(path("a.pic")),        test::LsmFile().save(path("a.lsm")),
        test::StkFile().save(path("a.stk")),        test::TiffFile{{page, page, page}}.save(path("m.tif")),
        test::TiffFile{{page}}.save(path("s.tif")), test::testData("oif/synth_z8_c2.oif"),
        test::testData("made/vff/synth_16bit.vff"), test::testData("made/dv/synth_be_i16_WZT_3c_2t.r3d")};
}

TEST(Ranges, OutsideTheNumbersAreRefusedByEveryReader)
{
    const QTemporaryDir directory;
    for (const QString& name : oneOfEach(directory)) {
        for (const auto& [first, last, step] :
             {std::tuple{0, INT_MAX, 1}, std::tuple{INT_MIN, INT_MAX, 1}, std::tuple{INT_MIN, 0, 1},
              std::tuple{INT_MAX, INT_MAX, 1}, std::tuple{INT_MAX - 1, INT_MAX, 1},
              std::tuple{INT_MIN, INT_MIN, INT_MIN}}) {
            ImageFile owner;
            const auto reader = imageFormat(ImageIO::probeType(name)).create(owner, {name});
            // DeltaVision reads from its first image on, whatever number the layers have, and a last layer of
            // Olympus is never read.
            const bool accepted =
                (name.endsWith(".r3d") && first > 0) || (name.endsWith(".oif") && first == INT_MAX);
            EXPECT_EQ(reader->readLayers(first, last, step), accepted)
                << name.toStdString() << ' ' << first << ' ' << last;
            EXPECT_EQ(owner.isLoaded(), accepted);
        }
    }
}

TEST(Ranges, AllOfFewerThanNoLayersIsNothing)
{
    const QTemporaryDir directory;
    for (const QString& name : oneOfEach(directory)) {
        ImageFile owner;
        const auto reader = imageFormat(ImageIO::probeType(name)).create(owner, {name});
        owner.attributes().fileZ = INT_MIN;
        // A series counts its files.
        EXPECT_EQ(reader->readAll(), name.endsWith("s.tif")) << name.toStdString();
    }
}

TEST(Ranges, AStepOfZeroIsNoReasonToDivide)
{
    const QTemporaryDir directory;
    for (const QString& name : oneOfEach(directory)) {
        ImageFile file({name});
        // Only VFF takes it for a step of one.
        EXPECT_EQ(file.read(0, 0, 0), name.endsWith(".vff")) << name.toStdString();
    }
}

} // namespace
} // namespace tirn
