#include "formats/vendor/bioradio.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

using test::LogCapture;
using test::PicFile;
using test::PicNote;
using test::sample;
using test::samples;

class BioradIo : public ::testing::Test
{
protected:
    QString at(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    QTemporaryDir m_folder;
};

/// The voxel sizes that a file with these notes has.
ImageAttributes withNotes(const QString& name, const std::vector<PicNote>& notes)
{
    const ImageFile stack(QStringList{PicFile{.notesField = 1, .notes = notes}.save(name)});
    EXPECT_EQ(stack.attributes().type, ImageType::BioRad);
    return stack.attributes();
}

TEST(BioradIoReal, TheGolgiStackHasItsKnownFacts)
{
    ImageFile stack(QStringList{test::testData(QStringLiteral("golgi_16bit.pic"))});
    const ImageAttributes& a = stack.attributes();
    EXPECT_EQ(a.type, ImageType::BioRad);
    EXPECT_EQ(a.fileX, 147);
    EXPECT_EQ(a.fileY, 137);
    EXPECT_EQ(a.fileZ, 25);
    EXPECT_EQ(a.channels, 1);
    EXPECT_EQ(a.bitDepth, 16);
    EXPECT_EQ(a.lens, 60);
    EXPECT_DOUBLE_EQ(a.dimX, 0.351435);
    EXPECT_DOUBLE_EQ(a.dimY, 0.351435);
    EXPECT_DOUBLE_EQ(a.dimZ, 0.3876);
    EXPECT_EQ(a.notes.size(), 3);
    // Other programs keep a float at the place of the magnification: 2.0 here, the integer 0x40000000.
    EXPECT_EQ(a.magFactor, 1073741824.0F);
    ASSERT_TRUE(stack.read());
    EXPECT_EQ(sample(stack, 67, 25, 15), 1);
    EXPECT_EQ(sample(stack, 92, 103, 19), 62);
    EXPECT_EQ(sample(stack, 72, 23, 14), 7);
    EXPECT_EQ(sample(stack, 136, 42, 14), 0);
    EXPECT_EQ(sample(stack, 127, 68, 7), 0);
    EXPECT_EQ(stack.stats(0).min, 0);
    EXPECT_EQ(stack.stats(0).max, 14421);
    EXPECT_NEAR(stack.stats(0).mean, 57.247742, 1e-6);
    EXPECT_EQ(a.maxValue, 14421);
    EXPECT_EQ(a.depthText(), QStringLiteral("16bit really 14bit"));
}

TEST_F(BioradIo, ReadsTheHeader)
{
    const QString name =
        PicFile{.x = 300, .y = 2, .z = 3, .lens = 40, .magnification = 70000}.save(at("a.pic"));
    LogCapture log;
    const ImageFile stack(QStringList{name});
    EXPECT_EQ(stack.attributes().fileX, 300);
    EXPECT_EQ(stack.attributes().fileY, 2);
    EXPECT_EQ(stack.attributes().fileZ, 3);
    EXPECT_EQ(stack.attributes().bitDepth, 8);
    EXPECT_EQ(stack.attributes().channels, 1);
    EXPECT_EQ(stack.attributes().lens, 40);
    EXPECT_EQ(stack.attributes().magFactor, 70000.0F);
    EXPECT_FALSE(stack.attributes().hasNotes);
    EXPECT_EQ(stack.attributes().dimX, -1.0);
    EXPECT_TRUE(log.contains(QStringLiteral("I wanna read 1 biorad files' attributes")));
    EXPECT_TRUE(log.contains(QStringLiteral("I read the attributes")));
}

TEST_F(BioradIo, OnlyTheLowByteOfTheByteFormatCounts)
{
    QByteArray bytes = PicFile{}.bytes();
    bytes[15] = 7;
    EXPECT_EQ(ImageFile(QStringList{test::saveBytes(at("a.pic"), bytes)}).attributes().bitDepth, 8);
    bytes[14] = 2;
    bytes.append(QByteArray(100, 'x'));
    EXPECT_EQ(ImageFile(QStringList{test::saveBytes(at("a.pic"), bytes)}).attributes().bitDepth, 16);
}

TEST_F(BioradIo, AnyByteOfTheNotesFieldMeansNotes)
{
    for (int byte = 0; byte < 4; ++byte) {
        const ImageFile stack(QStringList{PicFile{.notesField = 1U << (8 * byte)}.save(at("a.pic"))});
        EXPECT_TRUE(stack.attributes().hasNotes);
        EXPECT_TRUE(stack.attributes().notes.isEmpty());
    }
}

TEST_F(BioradIo, ReadsBytesAndWords)
{
    ImageFile bytes(QStringList{PicFile{}.save(at("a.pic"))});
    ASSERT_TRUE(bytes.read());
    EXPECT_EQ(bytes.attributes().x, 4);
    EXPECT_EQ(bytes.attributes().y, 3);
    EXPECT_EQ(bytes.attributes().z, 2);
    EXPECT_EQ(sample(bytes, 3, 1, 1), 113);
    ImageFile words(QStringList{
        PicFile{.bits = 16, .value = [](int x, int y, int z) { return 1000 * z + 300 * y + x; }}.save(
            at("b.pic"))});
    ASSERT_TRUE(words.read());
    EXPECT_EQ(sample(words, 3, 2, 1), 1603);
}

TEST_F(BioradIo, FilesBecomeInterleavedChannels)
{
    for (const int bits : {8, 16}) {
        for (const int channels : {2, 3, 4, 5}) {
            QStringList names;
            for (int c = 0; c < channels; ++c) {
                const auto value = [c](int x, int y, int z) { return 50 * c + x + 5 * y + 25 * z; };
                names.append(PicFile{.x = 5, .y = 5, .z = 3, .bits = bits, .value = value}.save(
                    m_folder.filePath(QString::number(c))));
            }
            ImageFile stack(names);
            EXPECT_EQ(stack.attributes().channels, channels);
            ASSERT_TRUE(stack.read(1, 2, 1));
            for (int c = 0; c < channels; ++c)
                EXPECT_EQ(sample(stack, 4, 3, 0, c), (50 * c + 4 + 15 + 25) & (bits == 8 ? 0xFF : 0xFFFF));
        }
    }
}

TEST_F(BioradIo, AStepReadsEveryStepthLayerAndStretchesTheVoxels)
{
    const PicFile pic{.z = 8,
                      .notesField = 1,
                      .notes = {{.text = "AXIS_4 001 0.0 0.5 microns"}},
                      .value = [](int x, int, int z) { return 10 * z + x; }};
    ImageFile stack(QStringList{pic.save(at("a.pic"))});
    ASSERT_TRUE(stack.read(1, 7, 2));
    EXPECT_EQ(stack.attributes().z, 3);
    EXPECT_EQ(sample(stack, 2, 0, 0), 12);
    EXPECT_EQ(sample(stack, 2, 0, 2), 52);
    EXPECT_EQ(stack.attributes().dimZ, 1.0);
    // The scaling goes on from what is there.
    ASSERT_TRUE(stack.read(0, 7, 2));
    EXPECT_EQ(stack.attributes().dimZ, 2.0);
}

TEST_F(BioradIo, AStepOverSeveralChannelsInterleavesToo)
{
    const PicFile first{.z = 5, .value = [](int x, int, int z) { return 10 * z + x; }};
    const PicFile second{.z = 5, .value = [](int x, int, int z) { return 100 + 10 * z + x; }};
    ImageFile stack({first.save(at("a.pic")), second.save(at("b.pic"))});
    ASSERT_TRUE(stack.read(0, 4, 2));
    EXPECT_EQ(stack.attributes().z, 2);
    EXPECT_EQ(sample(stack, 1, 2, 1, 0), 21);
    EXPECT_EQ(sample(stack, 1, 2, 1, 1), 121);
}

TEST_F(BioradIo, AStepLargerThanTheRangeReadsNoLayer)
{
    ImageFile stack(QStringList{PicFile{.z = 5}.save(at("a.pic"))});
    ASSERT_TRUE(stack.read(0, 1, 3));
    EXPECT_EQ(stack.attributes().z, 0);
    EXPECT_EQ(stack.sampleCount(), 0);
}

TEST_F(BioradIo, IllogicalArgumentsAreRefused)
{
    ImageFile stack(QStringList{PicFile{.z = 5}.save(at("a.pic"))});
    for (const auto& [last, step] : {std::pair{4, 0}, {-1, 1}, {4, -2}}) {
        LogCapture log;
        EXPECT_FALSE(stack.read(0, last, step));
        EXPECT_EQ(stack.errorList().takeLast(), QStringLiteral("Illogical arguments to readLayers"));
        EXPECT_TRUE(log.contains(QStringLiteral("First: 0 last: %1 step: %2").arg(last).arg(step)));
        EXPECT_TRUE(log.contains(QStringLiteral("exit ImageFile::read failed")));
    }
    EXPECT_FALSE(stack.read(3, 2, 1));
}

TEST_F(BioradIo, TheLogFramesTheReading)
{
    ImageFile stack(QStringList{PicFile{}.save(at("a.pic"))});
    LogCapture log;
    ASSERT_TRUE(stack.read());
    EXPECT_TRUE(log.contains(QStringLiteral("enter BioradIO::readLayers\n")));
    EXPECT_TRUE(log.contains(QStringLiteral("made it past gory stuff")));
    EXPECT_TRUE(log.contains(QStringLiteral("Merging channels 8 bit")));
    EXPECT_TRUE(log.contains(QStringLiteral("exit BioradIO::readLayers\n")));
}

TEST_F(BioradIo, LargeStacksAreReadWholeOnSeveralThreads)
{
    const auto value = [](int x, int y, int z) { return (x * 31 + y * 17 + z * 1009) & 0xFFFF; };
    const PicFile pic{.x = 701, .y = 503, .z = 9, .bits = 16, .value = value};
    const QString name = pic.save(at("a.pic"));
    for (const QStringList& names : {QStringList{name}, QStringList{name, name, name}}) {
        ImageFile stack(names);
        ASSERT_TRUE(stack.read());
        std::int64_t wrong = 0;
        for (int z = 0; z < 9; ++z) {
            for (int y = 0; y < 503; ++y) {
                for (int x = 0; x < 701; ++x) {
                    for (int c = 0; c < names.size(); ++c)
                        wrong += sample(stack, x, y, z, c) != value(x, y, z);
                }
            }
        }
        EXPECT_EQ(wrong, 0);
    }
}

TEST_F(BioradIo, TheNotesOfTheExampleGiveItsVoxelSize)
{
    const ImageAttributes a = withNotes(at("a.pic"), {{.text = "AXIS_2 001 0.0 1.2e-1 microns", .next = 1},
                                                      {.text = "axis_3 001 1.5 -2.5E-1 MICRONS", .next = 1},
                                                      {.text = "AXIS_4 001 0.000000e+00 3.0 microns   "}});
    EXPECT_DOUBLE_EQ(a.dimX, 0.12);
    EXPECT_DOUBLE_EQ(a.dimY, 0.25);
    EXPECT_DOUBLE_EQ(a.dimZ, 3.0);
    EXPECT_EQ(a.notes.size(), 3);
}

TEST_F(BioradIo, ANoteThatDoesNotParseLeavesTheSizeUnknown)
{
    for (const char* text : {"AXIS_2 001 0.0 1.2e microns", "AXIS_2 001 0.0 0.5 inches", "AXIS_2 microns",
                             "see AXIS_2 001 0.0 0.5 microns", "AXIS_2 001 0.0 0.5 microns wide"})
        EXPECT_EQ(withNotes(at("a.pic"), {{.text = text}}).dimX, -1.0) << text;
}

TEST_F(BioradIo, OnlyTheFirstNoteOfAnAxisCounts)
{
    const ImageAttributes a = withNotes(
        at("a.pic"), {{.text = "AXIS_2 001 0.0 none", .next = 1}, {.text = "AXIS_2 001 0.0 0.5 microns"}});
    EXPECT_EQ(a.dimX, -1.0);
}

TEST_F(BioradIo, ANoteOfDigitsAloneIsRefusedAtOnce)
{
    const ImageAttributes a = withNotes(at("a.pic"), {{.text = "AXIS_2" + std::string(74, '1')}});
    EXPECT_EQ(a.dimX, -1.0);
}

TEST_F(BioradIo, TheChainEndsWithTheNoteThatHasNoNext)
{
    const ImageAttributes a = withNotes(at("a.pic"), {{.text = "one"}, {.text = "two", .next = 1}});
    EXPECT_EQ(a.notes, QStringList{QStringLiteral("one")});
}

TEST_F(BioradIo, AllBytesOfTheNextFieldCount)
{
    const ImageAttributes a =
        withNotes(at("a.pic"),
                  {{.text = "one", .next = 0x01000000}, {.text = "two", .next = 0x10000}, {.text = "three"}});
    EXPECT_EQ(a.notes.size(), 3);
}

TEST_F(BioradIo, TheChainEndsWithTheFileAsWell)
{
    const ImageAttributes a = withNotes(at("a.pic"), {{.text = "AXIS_2 001 0.0 0.5 microns", .next = 1}});
    EXPECT_EQ(a.notes.size(), 1);
    EXPECT_EQ(a.dimX, 0.5);
}

TEST_F(BioradIo, MessagesAreNotesOfATypeAboveNineteen)
{
    LogCapture log;
    withNotes(at("a.pic"),
              {{.text = "shown", .next = 1, .type = 20}, {.text = "kept", .next = 0, .type = 19}});
    EXPECT_TRUE(log.contains(QStringLiteral("Reading notes")));
    EXPECT_TRUE(log.contains(QStringLiteral("message: shown")));
    EXPECT_FALSE(log.contains(QStringLiteral("message: kept")));
}

TEST_F(BioradIo, ANoteFillsAllItsEightyBytes)
{
    const std::string text(80, 'n');
    EXPECT_EQ(withNotes(at("a.pic"), {{.text = text}}).notes.first().toStdString(), text);
}

void expectMismatch(const QStringList& names, const QString& text)
{
    LogCapture log;
    ImageFile stack(names);
    EXPECT_EQ(stack.errorList(), (QStringList{text, QStringLiteral("Files not compatible.")}));
    EXPECT_EQ(stack.attributes().type, ImageType::Unknown);
    EXPECT_TRUE(log.contains(text));
}

TEST_F(BioradIo, FilesThatDifferAreNotCompatible)
{
    const QString first = PicFile{}.save(at("a.pic"));
    expectMismatch({first, PicFile{.x = 5}.save(at("b.pic"))},
                   QStringLiteral("Channel 0 x: 4 channel 1 x 5."));
    expectMismatch({first, PicFile{.y = 5}.save(at("b.pic"))},
                   QStringLiteral("Channel 0 y: 3 channel 1 y 5."));
    expectMismatch({first, first, PicFile{.z = 5}.save(at("b.pic"))},
                   QStringLiteral("Channel 0 z: 2 channel 2 z 5."));
    expectMismatch({first, PicFile{.bits = 16}.save(at("b.pic"))},
                   QStringLiteral("Channel 0 bitdepth: 8 channel 1 bitdepth: 16."));
    EXPECT_TRUE(ImageFile({first, PicFile{.lens = 3}.save(at("b.pic"))}).errorList().isEmpty());
}

TEST_F(BioradIo, MyTypeIsWhatTheHeaderSays)
{
    ImageFile stack;
    EXPECT_TRUE(BioradIO(stack, {PicFile{}.save(at("a.pic"))}).isMyType());
    EXPECT_FALSE(BioradIO(stack, {test::saveBytes(at("b.pic"), QByteArray(100, 'x'))}).isMyType());
}

void expectRefused(const QStringList& names, const char* text)
{
    ImageFile stack;
    const BioradIO io(stack, names);
    EXPECT_EQ(stack.errorList(), QStringList{QLatin1String(text)});
    EXPECT_EQ(stack.attributes().type, ImageType::Unknown);
}

TEST_F(BioradIo, BadFilesAreRefusedWithTheirTexts)
{
    expectRefused({}, "Less than 1 channel to read");
    expectRefused({at("missing.pic")}, "error opening file");
    expectRefused({m_folder.path()}, "error opening file");
    expectRefused({test::saveBytes(at("empty.pic"), "")}, "error reading header from file");
    expectRefused({test::saveBytes(at("zeros.pic"), QByteArray(100, '\0'))}, "not a biorad");
}

TEST_F(BioradIo, ACutHeaderIsRefusedWhereverItEnds)
{
    for (int length = 0; length < 76; ++length)
        expectRefused({PicFile{}.save(at("a.pic"), length)}, "error reading header from file");
}

TEST_F(BioradIo, ASecondFileThatIsBadSpoilsTheFirst)
{
    const QString first = PicFile{}.save(at("a.pic"));
    expectRefused({first, at("missing.pic")}, "error opening file");
    expectRefused({first, PicFile{}.save(at("b.pic"), 75)}, "error reading header from file");
    expectRefused({first, test::saveBytes(at("b.pic"), QByteArray(200, 'x'))}, "not a biorad");
}

TEST_F(BioradIo, SizesThatPromiseMoreThanTheFileHoldsAreNotBelieved)
{
    QByteArray bytes = PicFile{}.bytes();
    for (int i = 0; i < 6; ++i)
        bytes[i] = '\xFF';
    const QString name = test::saveBytes(at("a.pic"), bytes);
    EXPECT_FALSE(BioradIO::isBiorad(name));
    // Not even by a reader that is made for it without a probe.
    ImageFile stack;
    BioradIO io(stack, {name});
    EXPECT_FALSE(io.readAll());
    EXPECT_EQ(stack.errorList(), QStringList{QStringLiteral("File read error")});
    EXPECT_FALSE(stack.isLoaded());
}

TEST_F(BioradIo, ASecondFileThatEndsEarlyIsFilledWithZeros)
{
    const PicFile pic{.z = 4, .value = [](int, int, int z) { return z + 1; }};
    const QStringList names = {pic.save(at("a.pic")), pic.save(at("b.pic"), 76 + 2 * 12 + 5)};
    ImageFile stack(names);
    ASSERT_TRUE(stack.read());
    EXPECT_EQ(stack.errorList(), QStringList{QStringLiteral("file ends early: 2 of 4 layers")});
    EXPECT_EQ(sample(stack, 3, 2, 3, 0), 4);
    EXPECT_EQ(sample(stack, 3, 2, 1, 1), 2);
    EXPECT_EQ(sample(stack, 0, 1, 2, 1), 3);
    EXPECT_EQ(sample(stack, 1, 1, 2, 1), 0);
    EXPECT_EQ(sample(stack, 0, 0, 3, 1), 0);
}

TEST_F(BioradIo, AFileWithoutAnyOfTheLayersIsAReadError)
{
    const PicFile pic{.z = 4};
    ImageFile stack({pic.save(at("a.pic")), pic.save(at("b.pic"), 76 + 12)});
    ASSERT_TRUE(stack.read(0, 0, 1));
    EXPECT_FALSE(stack.read(1, 3, 1));
    EXPECT_EQ(stack.errorList().takeLast(), QStringLiteral("File read error"));
    EXPECT_FALSE(stack.read(0, 3, 2));
    EXPECT_EQ(stack.errorList().takeLast(), QStringLiteral("File read error"));
}

TEST_F(BioradIo, AFileThatWentAwayIsAnError)
{
    const QString name = PicFile{}.save(at("a.pic"));
    ImageFile stack(QStringList{name});
    QFile::remove(name);
    EXPECT_FALSE(stack.read());
    EXPECT_EQ(stack.errorList(), QStringList{QStringLiteral("error opening file")});
}

TEST_F(BioradIo, AStackWithoutVoxelsCannotBeRead)
{
    ImageFile flat(QStringList{PicFile{.z = 0}.save(at("a.pic"))});
    EXPECT_EQ(flat.attributes().type, ImageType::BioRad);
    EXPECT_FALSE(flat.read());
    ImageFile thin(QStringList{PicFile{.x = 0}.save(at("a.pic"))});
    EXPECT_FALSE(thin.read());
    EXPECT_EQ(thin.errorList(), QStringList{QStringLiteral("File read error")});
}

TEST_F(BioradIo, WithoutMemoryTheExceptionPassesToTheCaller)
{
    ImageFile stack(QStringList{PicFile{}.save(at("a.pic"))});
    {
        const test::NoVoxelMemory none;
        EXPECT_THROW(stack.read(), std::bad_alloc);
    }
    EXPECT_TRUE(stack.read());
}

} // namespace
} // namespace tirn
