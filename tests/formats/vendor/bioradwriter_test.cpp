#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "formats/vendor/bioradio.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/smalldisk.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::fileContent;
using test::LogCapture;
using test::PicFile;
using test::samples;
using test::StackShape;

class BioradWriter : public ::testing::Test
{
protected:
    QString at(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    QStringList files() const { return QDir(m_folder.path()).entryList(QDir::Files); }

    static QStringList write(const QStringList& names, const ImageFile& stack, bool overwrite = true)
    {
        return BioradIO::write(names, stack.attributes(), stack.stackData(), 0, stack.attributes().z - 1, 1,
                               overwrite);
    }
    QTemporaryDir m_folder;
};

TEST_F(BioradWriter, TheBytesOfAFileAreThoseOfTheFormat)
{
    const auto stack =
        test::makeStack({4, 3, 2, 1, 8}, [](int x, int y, int z, int) { return x + 10 * y + 100 * z; });
    stack->attributes().lens = 40;
    stack->attributes().magFactor = 2.75F;
    EXPECT_TRUE(write({at("a.pic")}, *stack).isEmpty());
    EXPECT_EQ(fileContent(at("a.pic")), (PicFile{.lens = 40, .magnification = 2}.bytes()));
    EXPECT_EQ(files(), QStringList{QStringLiteral("a.pic")});
}

TEST_F(BioradWriter, AMagnificationIsCutToItsWholePart)
{
    const std::pair<float, std::uint32_t> cases[] = {
        {-1.0F, 0xFFFFFFFFU}, {-2.75F, 0xFFFFFFFEU}, {0.9F, 0},         {3e9F, 3000000000U},
        {1e20F, 0xFFFFFFFFU}, {-1e20F, 0x80000000U}, {std::nanf(""), 0}};
    for (const auto& [magnification, expected] : cases) {
        const auto stack =
            test::makeStack({4, 3, 2, 1, 8}, [](int x, int y, int z, int) { return x + 10 * y + 100 * z; });
        stack->attributes().lens = 0;
        stack->attributes().magFactor = magnification;
        EXPECT_TRUE(write({at("a.pic")}, *stack).isEmpty());
        EXPECT_EQ(fileContent(at("a.pic")), (PicFile{.magnification = expected}.bytes())) << magnification;
    }
}

TEST_F(BioradWriter, WordsAreMarkedByAZeroByteFormat)
{
    const auto value = [](int x, int y, int z) { return 300 * x + 7 * y + 2000 * z; };
    const auto stack =
        test::makeStack({300, 3, 2, 1, 16}, [&](int x, int y, int z, int) { return value(x, y, z); });
    stack->attributes().lens = 0;
    EXPECT_TRUE(write({at("a.pic")}, *stack).isEmpty());
    EXPECT_EQ(fileContent(at("a.pic")), (PicFile{.x = 300, .bits = 16, .value = value}.bytes()));
}

TEST_F(BioradWriter, AnUnknownLensIsItsLowByte)
{
    const auto stack = test::constantStack({1, 1, 1, 1, 8}, 0);
    EXPECT_TRUE(write({at("a.pic")}, *stack).isEmpty());
    EXPECT_EQ(fileContent(at("a.pic"))[64], '\xFF');
    EXPECT_EQ(fileContent(at("a.pic"))[65], '\0');
}

TEST_F(BioradWriter, KnownVoxelSizesAreWrittenAsThreeNotes)
{
    const auto stack =
        test::makeStack({4, 3, 2, 1, 8}, [](int x, int y, int z, int) { return x + 10 * y + 100 * z; });
    stack->attributes().lens = 0;
    stack->attributes().dimX = 0.12;
    stack->attributes().dimY = 0.34;
    stack->attributes().dimZ = 1.5;
    EXPECT_TRUE(write({at("a.pic")}, *stack).isEmpty());
    const auto padded = [](std::string text) { return text.append(80 - text.size(), ' '); };
    // Only the low byte of the notes' offset, 76 + 24, is stored.
    const PicFile expected{.notesField = 100,
                           .notes = {{padded("AXIS_2 001 0.000000e+00 1.200000e-01 microns"), 1, 20},
                                     {padded("AXIS_3 001 0.000000e+00 3.400000e-01 microns"), 1, 20},
                                     {padded("AXIS_4 001 0.000000e+00 1.500000e+00 microns"), 0, 20}}};
    EXPECT_EQ(fileContent(at("a.pic")), expected.bytes());
}

TEST_F(BioradWriter, WithAnUnknownVoxelSizeThereAreNoNotes)
{
    const auto stack = test::constantStack({4, 3, 2, 1, 8}, 1);
    stack->attributes().dimX = 0.12;
    stack->attributes().dimY = 0.34;
    stack->attributes().dimZ = 0;
    EXPECT_TRUE(write({at("a.pic")}, *stack).isEmpty());
    EXPECT_EQ(fileContent(at("a.pic")).size(), 76 + 24);
    EXPECT_EQ(fileContent(at("a.pic"))[10], '\0');
}

TEST_F(BioradWriter, NotesBehindABodyThatEndsOnALowByteOfZeroAreNeverRead)
{
    // 76 + 180 is 256.
    const auto stack = test::constantStack({18, 10, 1, 1, 8}, 1);
    stack->attributes().dimX = stack->attributes().dimY = stack->attributes().dimZ = 1;
    EXPECT_TRUE(write({at("a.pic")}, *stack).isEmpty());
    EXPECT_EQ(fileContent(at("a.pic")).size(), 76 + 180 + 3 * 96);
    EXPECT_EQ(fileContent(at("a.pic"))[10], '\0');
    const ImageFile back(QStringList{at("a.pic")});
    EXPECT_FALSE(back.attributes().hasNotes);
    EXPECT_EQ(back.attributes().dimX, -1.0);
}

TEST_F(BioradWriter, WhatIsWrittenReadsBack)
{
    for (const StackShape& shape : {StackShape{5, 7, 3, 1, 8}, StackShape{5, 7, 3, 1, 16},
                                    StackShape{33, 3, 2, 3, 8}, StackShape{33, 3, 2, 2, 16}}) {
        const auto stack = test::randomStack(shape, 21);
        stack->attributes().lens = 63;
        stack->attributes().magFactor = 40.9F;
        stack->attributes().dimX = 0.123456789;
        stack->attributes().dimY = 0.5;
        stack->attributes().dimZ = 2;
        ASSERT_TRUE(stack->write({at("out")}, ImageType::BioRad));
        QStringList names;
        for (const QString& name : files())
            names.append(m_folder.filePath(name));
        ImageFile back(names);
        ASSERT_TRUE(back.read());
        EXPECT_EQ(back.attributes().x, shape.x);
        EXPECT_EQ(back.attributes().y, shape.y);
        EXPECT_EQ(back.attributes().z, shape.z);
        EXPECT_EQ(back.attributes().channels, shape.channels);
        EXPECT_EQ(back.attributes().bitDepth, shape.bitDepth);
        EXPECT_EQ(back.attributes().lens, 63);
        EXPECT_EQ(back.attributes().magFactor, 40.0F);
        EXPECT_DOUBLE_EQ(back.attributes().dimX, 0.1234568);
        EXPECT_EQ(back.attributes().dimY, 0.5);
        EXPECT_EQ(back.attributes().dimZ, 2.0);
        EXPECT_EQ(samples(back), samples(*stack));
        for (const QString& name : names)
            QFile::remove(name);
    }
}

TEST_F(BioradWriter, OneNameForSeveralChannelsIsAPattern)
{
    const auto stack = test::randomStack({2, 2, 1, 3, 8}, 1);
    LogCapture log;
    EXPECT_TRUE(write({at("name")}, *stack).isEmpty());
    EXPECT_EQ(files(), (QStringList{QStringLiteral("name_c00.pic"), QStringLiteral("name_c01.pic"),
                                    QStringLiteral("name_c02.pic")}));
    EXPECT_TRUE(log.contains(QLatin1String("Pattern ") + at("name")));
    EXPECT_TRUE(log.contains(QStringLiteral("about to separate 3 channels")));
    EXPECT_TRUE(log.contains(QStringLiteral("allocating 3 stacks of size 4")));
    EXPECT_TRUE(log.contains(QStringLiteral("channels separated")));
    EXPECT_TRUE(log.contains(QStringLiteral("Done writing biorad")));
    EXPECT_TRUE(write({at("other.pic")}, *stack).isEmpty());
    EXPECT_TRUE(QFileInfo::exists(at("other_c02.pic")));
}

TEST_F(BioradWriter, AMissingEndingIsAdded)
{
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 1);
    EXPECT_TRUE(write({at("name")}, *stack).isEmpty());
    EXPECT_EQ(files(), QStringList{QStringLiteral("name.pic")});
}

TEST_F(BioradWriter, AnEndingInCapitalsIsAnEnding)
{
    EXPECT_TRUE(write({at("UPPER.PIC")}, *test::constantStack({2, 2, 1, 1, 8}, 1)).isEmpty());
    EXPECT_TRUE(write({at("Two.Pic")}, *test::constantStack({2, 2, 1, 2, 8}, 1)).isEmpty());
    EXPECT_EQ(files(), (QStringList{QStringLiteral("Two_c00.pic"), QStringLiteral("Two_c01.pic"),
                                    QStringLiteral("UPPER.PIC")}));
}

TEST_F(BioradWriter, ArgumentsThatMakeNoFileAreRefused)
{
    const auto stack = test::constantStack({2, 2, 5, 3, 8}, 1);
    ImageAttributes none = stack->attributes();
    none.channels = 0;
    const QStringList name = {at("a.pic")};
    EXPECT_EQ(BioradIO::write(name, stack->attributes(), nullptr, 0, 4, 1, true),
              QStringList{QStringLiteral("No image to write")});
    EXPECT_EQ(BioradIO::write(name, none, stack->stackData(), 0, 4, 1, true),
              QStringList{QStringLiteral("Can't write a zero channel file")});
    EXPECT_EQ(write({}, *stack), QStringList{QStringLiteral("Must write with at least one filename")});
    // The second number counts layers, not channels.
    EXPECT_EQ(write({at("a"), at("b")}, *stack), QStringList{QStringLiteral("We have 2 names, we need 5")});
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(BioradWriter, SizesThatTheHeaderCannotHoldAreRefused)
{
    const auto stack = test::constantStack({65536, 1, 1, 1, 8}, 1);
    EXPECT_EQ(write({at("a.pic")}, *stack).size(), 1);
    EXPECT_TRUE(files().isEmpty());
    EXPECT_TRUE(write({at("a.pic")}, *test::constantStack({65535, 1, 1, 1, 8}, 1)).isEmpty());
}

TEST_F(BioradWriter, AnExistingFileIsKeptUnlessOverwritten)
{
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 1);
    test::saveBytes(at("a.pic"), "old");
    EXPECT_EQ(write({at("a.pic")}, *stack, false),
              QStringList{QLatin1String("File ") + at("a.pic") + QLatin1String(" exists")});
    EXPECT_EQ(fileContent(at("a.pic")), QByteArray("old"));
    EXPECT_TRUE(write({at("a.pic")}, *stack, true).isEmpty());
    EXPECT_EQ(fileContent(at("a.pic")).size(), 80);
}

TEST_F(BioradWriter, AFolderThatIsNotThereCannotBeWrittenTo)
{
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 1);
    EXPECT_EQ(write({at("missing/a.pic")}, *stack),
              QStringList{QStringLiteral("Unable to open file for writing")});
    QDir(m_folder.path()).mkdir(QStringLiteral("folder.pic"));
    EXPECT_EQ(write({at("folder.pic")}, *stack),
              QStringList{QStringLiteral("Unable to open file for writing")});
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(BioradWriter, AFullDiskLeavesTheOldFile)
{
    ASSERT_TRUE(QFileInfo::exists(QStringLiteral("/dev/full")));
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 1);
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), at("full.pic")));
    EXPECT_EQ(write({at("full.pic")}, *stack), QStringList{QStringLiteral("Failed to write head")});
}

TEST_F(BioradWriter, APlaceThatFillsUpIsNamedByThePartThatFoundNone)
{
    const auto stack = test::constantStack({4, 4, 1, 1, 8}, 1);
    stack->attributes().dimX = stack->attributes().dimY = stack->attributes().dimZ = 1;
    for (const auto& [bytes, text] : {std::pair{40, "Failed to write head"},
                                      {76, "Failed to write body"},
                                      {92, "Failed to write notes"}}) {
        const test::SmallDisk disk(bytes);
        EXPECT_EQ(write({at("a.pic")}, *stack), QStringList{text});
    }
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(BioradWriter, WhatIsWrittenIsLogged)
{
    const LogCapture log;
    EXPECT_TRUE(write({at("a.pic")}, *test::constantStack({2, 2, 1, 1, 8}, 1)).isEmpty());
    EXPECT_EQ(log.lines().filter(QRegularExpression("^(?!file|x:)")),
              (QStringList{"enter BioradIO:write\n", "opening file: " + at("a.pic"), "about to write",
                           "written with step support", "Done writing biorad"}));
}

TEST_F(BioradWriter, ALinkKeepsPointingAtItsFile)
{
    const auto stack = test::constantStack({2, 2, 1, 1, 8}, 1);
    test::saveBytes(at("real.pic"), "old");
    ASSERT_TRUE(QFile::link(at("real.pic"), at("link.pic")));
    EXPECT_TRUE(write({at("link.pic")}, *stack).isEmpty());
    EXPECT_TRUE(QFileInfo(at("link.pic")).isSymLink());
    EXPECT_EQ(fileContent(at("real.pic")).size(), 80);
}

TEST_F(BioradWriter, LayersAreTakenFromFirstToLastByStep)
{
    const auto stack = test::makeStack({2, 1, 6, 1, 8}, [](int x, int, int z, int) { return 10 * z + x; });
    EXPECT_TRUE(
        BioradIO::write({at("a.pic")}, stack->attributes(), stack->stackData(), 1, 4, 2, true).isEmpty());
    // The header still tells the stack's six layers.
    EXPECT_EQ(fileContent(at("a.pic"))[4], '\6');
    EXPECT_EQ(fileContent(at("a.pic")).mid(76), QByteArray("\x0A\x0B\x1E\x1F", 4));
}

TEST_F(BioradWriter, WithoutMemoryTheChannelIsNamed)
{
    const auto stack = test::constantStack({2, 2, 1, 2, 8}, 1);
    const test::NoVoxelMemory none;
    EXPECT_EQ(write({at("a.pic")}, *stack), QStringList{QStringLiteral("Failed to alloc stack[0]")});
    EXPECT_TRUE(files().isEmpty());
}

} // namespace
} // namespace tirn
