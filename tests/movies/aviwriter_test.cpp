#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include "base/bytereader.h"
#include "movies/aviwriter.h"
#include "movies/framesink.h"
#include "support/foreignavi.h"
#include "support/foreigntiff.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/smalldisk.h"

namespace tirn {
namespace {

using test::fileContent;

/// A frame whose bytes count up, different in each frame.
std::vector<std::uint8_t> pattern(int width, int height, int frame)
{
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint8_t>(i * 7 + static_cast<std::size_t>(frame) * 31);
    return pixels;
}

/// The same as the sink writes it: nothing can be seen through.
std::vector<std::uint8_t> opaque(std::vector<std::uint8_t> pixels)
{
    for (std::size_t i = 3; i < pixels.size(); i += 4)
        pixels[i] = 0xff;
    return pixels;
}

class Avi : public testing::Test
{
protected:
    QString path(const QString& name = "movie.avi") const { return m_directory.filePath(name); }
    /// Writes a movie of so many frames of the pattern.
    QByteArray movie(int width, int height, float rate, int frames)
    {
        AviWriter writer(path(), width, height, rate);
        EXPECT_TRUE(writer.open());
        for (int frame = 0; frame < frames; ++frame)
            EXPECT_TRUE(writer.writeFrame(pattern(width, height, frame).data()));
        EXPECT_TRUE(writer.close());
        return fileContent(path());
    }
    QStringList files() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::Files | QDir::Hidden | QDir::Dirs | QDir::NoDotAndDotDot);
    }

    QTemporaryDir m_directory;
};

std::uint32_t at(const QByteArray& bytes, int position, int size = 4)
{
    std::uint32_t value = 0;
    for (int i = 0; i < size; ++i)
        value |= std::uint32_t{static_cast<std::uint8_t>(bytes.at(position + i))} << 8 * i;
    return value;
}

/// The layout of the headers: a text of four characters, or a number, at each position.
struct HeaderField
{
    int position;
    const char* text;
    std::uint32_t value;
    int size = 4;
};

TEST_F(Avi, HeadersAreTheLayoutFieldByField)
{
    const QByteArray bytes = movie(6, 4, 30, 3);
    const std::uint32_t s = 8 + 6 * 4 * 4;
    const HeaderField fields[] = {{0, "RIFF", 0},
                                  {4, nullptr, s * 3 + 224 + 16 * 3},
                                  {8, "AVI ", 0},
                                  {12, "LIST", 0},
                                  {16, nullptr, 192},
                                  {20, "hdrl", 0},
                                  {24, "avih", 0},
                                  {28, nullptr, 56},
                                  {32, nullptr, 33333},
                                  {36, nullptr, 0},
                                  {40, nullptr, 0},
                                  {44, nullptr, 16},
                                  {48, nullptr, 3},
                                  {52, nullptr, 0},
                                  {56, nullptr, 1},
                                  {60, nullptr, 0},
                                  {64, nullptr, 6},
                                  {68, nullptr, 4},
                                  {72, nullptr, 0},
                                  {76, nullptr, 0},
                                  {80, nullptr, 0},
                                  {84, nullptr, 0},
                                  {88, "LIST", 0},
                                  {92, nullptr, 116},
                                  {96, "strl", 0},
                                  {100, "strh", 0},
                                  {104, nullptr, 56},
                                  {108, "vids", 0},
                                  {112, "DIB ", 0},
                                  {116, nullptr, 0},
                                  {120, nullptr, 0, 2},
                                  {122, nullptr, 0, 2},
                                  {124, nullptr, 0},
                                  {128, nullptr, 33333},
                                  {132, nullptr, 1000000},
                                  {136, nullptr, 0},
                                  {140, nullptr, 3},
                                  {144, nullptr, 0},
                                  {148, nullptr, 0xFFFFFFFF},
                                  {152, nullptr, 0},
                                  {156, nullptr, 0, 2},
                                  {158, nullptr, 0, 2},
                                  {160, nullptr, 6, 2},
                                  {162, nullptr, 4, 2},
                                  {164, "strf", 0},
                                  {168, nullptr, 40},
                                  {172, nullptr, 40},
                                  {176, nullptr, 6},
                                  {180, nullptr, 4},
                                  {184, nullptr, 1, 2},
                                  {186, nullptr, 32, 2},
                                  {188, nullptr, 0},
                                  {192, nullptr, 0},
                                  {196, nullptr, 0},
                                  {200, nullptr, 0},
                                  {204, nullptr, 0},
                                  {208, nullptr, 0},
                                  {212, "LIST", 0},
                                  {216, nullptr, s * 3 + 4},
                                  {220, "movi", 0}};
    int next = 0;
    for (const HeaderField& field : fields) {
        EXPECT_EQ(field.position, next);
        next += field.size;
        if (field.text != nullptr)
            EXPECT_EQ(bytes.mid(field.position, 4), field.text) << field.position;
        else
            EXPECT_EQ(at(bytes, field.position, field.size), field.value) << field.position;
    }
    EXPECT_EQ(next, 224);
}

TEST_F(Avi, FramesAndIndexFollowTheHeaders)
{
    const QByteArray bytes = movie(2, 2, 15, 2);
    ASSERT_EQ(bytes.size(), 224 + 2 * 24 + 8 + 2 * 16);
    const auto frame = [](int number) {
        const std::vector<std::uint8_t> pixels = pattern(2, 2, number);
        return QByteArray("00db\x10\0\0\0", 8) +
               QByteArray(reinterpret_cast<const char*>(pixels.data()), static_cast<int>(pixels.size()));
    };
    EXPECT_EQ(bytes.mid(224, 24), frame(0));
    EXPECT_EQ(bytes.mid(248, 24), frame(1));
    EXPECT_EQ(bytes.mid(272), QByteArray("idx1\x20\0\0\0"
                                         "00db\x12\0\0\0\xe0\0\0\0\x10\0\0\0"
                                         "00db\x12\0\0\0\xf8\0\0\0\x10\0\0\0",
                                         40));
}

TEST_F(Avi, NoFramesMakeAValidFileOf232Bytes)
{
    const QByteArray bytes = movie(2, 2, 15, 0);
    EXPECT_EQ(bytes.size(), 232);
    EXPECT_EQ(bytes.mid(224), QByteArray("idx1\0\0\0\0", 8));
    EXPECT_EQ(at(bytes, 4), 224U);
    EXPECT_EQ(at(bytes, 216), 4U);
}

TEST_F(Avi, MicrosecondsAreA32BitQuotientRoundedDown)
{
    const std::pair<float, std::uint32_t> rates[] = {{1, 1000000},    {5, 200000}, {10, 100000},
                                                     {15, 66666},     {30, 33333}, {29.97F, 33366},
                                                     {3000000.0F, 0}, {0, 0},      {-5, 0}};
    for (const auto& [rate, microseconds] : rates) {
        const QByteArray bytes = movie(1, 1, rate, 0);
        EXPECT_EQ(at(bytes, 32), microseconds) << rate;
        EXPECT_EQ(at(bytes, 128), microseconds) << rate;
        QFile::remove(path());
    }
}

TEST_F(Avi, AnOpenFileHasNoFramesYet)
{
    AviWriter writer(path(), 2, 2, 15);
    EXPECT_EQ(writer.dataStart(), 0);
    const test::LogCapture log;
    ASSERT_TRUE(writer.open());
    EXPECT_EQ(log.lines(), QStringList{"avih 56"});
    EXPECT_EQ(writer.dataStart(), 224);
    const QByteArray bytes = fileContent(path());
    EXPECT_EQ(bytes.size(), 224);
    EXPECT_EQ(at(bytes, 4), 224U);
    EXPECT_EQ(at(bytes, 48), 0U);
    EXPECT_EQ(at(bytes, 140), 0U);
    EXPECT_EQ(at(bytes, 216), 4U);
    EXPECT_FALSE(writer.open()) << "it is open";
    EXPECT_TRUE(writer.close());
    EXPECT_TRUE(log.contains("writing index"));
}

TEST_F(Avi, ACountSetBeforeOpeningStandsInTheSizes)
{
    AviWriter writer(path(), 2, 2, 15);
    writer.setFrames(3);
    ASSERT_TRUE(writer.open());
    const QByteArray bytes = fileContent(path());
    EXPECT_EQ(at(bytes, 4), 3U * 24 + 224 + 16 * 3);
    EXPECT_EQ(at(bytes, 216), 3U * 24 + 4);
    EXPECT_EQ(at(bytes, 48), 0U);
}

TEST_F(Avi, AnExistingFileStaysAsItIs)
{
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    EXPECT_FALSE(AviWriter(path(), 2, 2, 15).open());
    EXPECT_EQ(fileContent(path()), "mine");
    EXPECT_FALSE(AviWriter(path("none/movie.avi"), 2, 2, 15).open());
    EXPECT_FALSE(AviWriter(path("negative.avi"), -2, 2, 15).open());
    EXPECT_FALSE(QFileInfo::exists(path("negative.avi")));
}

TEST_F(Avi, ClosingTwiceAndWritingAfterwardsFail)
{
    AviWriter writer(path(), 1, 1, 15);
    const std::uint8_t pixel[4] = {1, 2, 3, 4};
    EXPECT_FALSE(writer.close());
    EXPECT_FALSE(writer.writeFrame(pixel));
    EXPECT_FALSE(writer.pad(1));
    ASSERT_TRUE(writer.open());
    EXPECT_FALSE(writer.writeFrame(nullptr));
    EXPECT_FALSE(writer.writeFrameAt(nullptr, 0));
    EXPECT_FALSE(writer.writeFrameAt(pixel, -1));
    EXPECT_EQ(writer.frames(), 0);
    EXPECT_TRUE(writer.close());
    EXPECT_FALSE(writer.close());
    EXPECT_FALSE(writer.writeFrame(pixel));
    EXPECT_FALSE(writer.writeFrameAt(pixel, 0));
}

TEST_F(Avi, PaddingReservesBlocksOfZerosAndCountsNothing)
{
    AviWriter writer(path(), 1, 1, 15);
    ASSERT_TRUE(writer.open());
    EXPECT_FALSE(writer.pad(0));
    ASSERT_TRUE(writer.pad(3));
    EXPECT_EQ(writer.frames(), 0);
    EXPECT_EQ(fileContent(path()).mid(224), QByteArray(36, '\0'));
    const std::uint8_t pixels[4] = {1, 2, 3, 4};
    EXPECT_TRUE(writer.writeFrameAt(pixels, 2));
    EXPECT_TRUE(writer.writeFrameAt(pixels, 0));
    EXPECT_TRUE(writer.writeFrameAt(pixels, 1));
    EXPECT_TRUE(writer.close());
    const QByteArray bytes = fileContent(path());
    EXPECT_EQ(bytes.size(), 224 + 36 + 8 + 48);
    EXPECT_EQ(at(bytes, 48), 3U);
    for (int frame = 0; frame < 3; ++frame)
        EXPECT_EQ(bytes.mid(224 + 12 * frame, 12), QByteArray("00db\4\0\0\0\1\2\3\4", 12));
}

TEST_F(Avi, AFrameWrittenTwiceCountsTwice)
{
    AviWriter writer(path(), 1, 1, 15);
    ASSERT_TRUE(writer.open());
    const std::uint8_t pixels[4] = {1, 2, 3, 4};
    EXPECT_TRUE(writer.writeFrameAt(pixels, 0));
    EXPECT_TRUE(writer.writeFrameAt(pixels, 0));
    EXPECT_EQ(writer.frames(), 2);
}

TEST_F(Avi, PositionsPastTheFormatsLimitsAre64BitAndOnlyFieldsWrap)
{
    const std::int64_t s = 8 + 512 * 512 * 4;
    AviWriter writer(path(), 512, 512, 15);
    writer.setFrames(4999);
    ASSERT_TRUE(writer.open());
    ASSERT_TRUE(writer.writeFrameAt(pattern(512, 512, 1).data(), 4999));
    ASSERT_TRUE(writer.close());
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::int64_t end = 224 + s * 5000;
    ASSERT_GT(end, std::int64_t{1} << 32);
    EXPECT_EQ(file.size(), end + 8 + 16 * 5000);
    ASSERT_TRUE(file.seek(end - s));
    EXPECT_EQ(file.read(4), "00db");
    ASSERT_TRUE(file.seek(end));
    const QByteArray index = file.read(8 + 16 * 5000);
    EXPECT_EQ(index.left(4), "idx1");
    EXPECT_EQ(at(index, 8 + 16 * 4999 + 8), static_cast<std::uint32_t>((end - s) % (std::int64_t{1} << 32)));
    ASSERT_TRUE(file.seek(0));
    const QByteArray head = file.read(224);
    EXPECT_EQ(at(head, 4),
              static_cast<std::uint32_t>((s * 5000 + 224 + 16 * 5000) % (std::int64_t{1} << 32)));
    EXPECT_EQ(at(head, 48), 5000U);
    EXPECT_EQ(at(head, 216), static_cast<std::uint32_t>((s * 5000 + 4) % (std::int64_t{1} << 32)));
    EXPECT_EQ(aviFileBytes(512, 512, 5000), file.size());
    EXPECT_GT(aviFileBytes(512, 512, 2048), kAviLimit);
    EXPECT_LT(aviFileBytes(512, 512, 2047), kAviLimit);
}

TEST_F(Avi, AFullDiskKeepsTheWholeFrames)
{
    // Room for three frames and a half: the index of three needs 56 bytes of the last half.
    const int s = 8 + 16 * 16 * 4;
    AviWriter writer(path(), 16, 16, 15);
    ASSERT_TRUE(writer.open());
    {
        const test::SmallDisk disk(224 + 3 * s + s / 2);
        for (int frame = 0; frame < 3; ++frame)
            EXPECT_TRUE(writer.writeFrame(pattern(16, 16, frame).data()));
        EXPECT_FALSE(writer.writeFrame(pattern(16, 16, 3).data()));
        EXPECT_FALSE(writer.writeFrame(pattern(16, 16, 3).data())) << "nothing is written behind a gap";
        EXPECT_TRUE(writer.close());
    }
    EXPECT_EQ(writer.frames(), 3);
    const QByteArray cut = fileContent(path());
    QFile::remove(path());
    EXPECT_EQ(cut, movie(16, 16, 15, 3));
}

TEST_F(Avi, AFullDiskGivesUpAFrameForTheIndex)
{
    const int s = 8 + 16 * 16 * 4;
    AviWriter writer(path(), 16, 16, 15);
    ASSERT_TRUE(writer.open());
    {
        const test::SmallDisk disk(224 + 3 * s + 20);
        for (int frame = 0; frame < 3; ++frame)
            EXPECT_TRUE(writer.writeFrame(pattern(16, 16, frame).data()));
        EXPECT_TRUE(writer.close());
    }
    EXPECT_EQ(writer.frames(), 2);
    const QByteArray cut = fileContent(path());
    QFile::remove(path());
    EXPECT_EQ(cut, movie(16, 16, 15, 2));
}

TEST_F(Avi, ADiskWithoutRoomForTheHeadersLeavesNothing)
{
    const test::SmallDisk disk(100);
    AviWriter writer(path(), 16, 16, 15);
    EXPECT_FALSE(writer.open());
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(Avi, OthersReadEveryPixel)
{
    ASSERT_TRUE(test::haveForeignAvi()) << "ffmpeg is not installed";
    movie(6, 5, 30, 7);
    const test::ForeignAvi avi = test::readWithFfmpeg(path());
    EXPECT_EQ(avi.complaints, QString());
    EXPECT_EQ(avi.width, 6);
    EXPECT_EQ(avi.height, 5);
    EXPECT_EQ(avi.frames, 7);
    EXPECT_EQ(avi.rate, "1000000/33333");
    ASSERT_EQ(avi.pictures.size(), 7U);
    for (int frame = 0; frame < 7; ++frame) {
        const std::vector<std::uint8_t> pixels = pattern(6, 5, frame);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 6; ++x) {
                // Rows run bottom-up in the file.
                const std::size_t ours = static_cast<std::size_t>((4 - y) * 6 + x) * 4;
                const QByteArray theirs =
                    avi.pictures[static_cast<std::size_t>(frame)].mid((y * 6 + x) * 4, 3);
                ASSERT_EQ(theirs, QByteArray(reinterpret_cast<const char*>(&pixels[ours]), 3));
            }
        }
    }
}

TEST_F(Avi, OthersReadAnInterruptedMovieWithReservedPlaces)
{
    ASSERT_TRUE(test::haveForeignAvi()) << "ffmpeg is not installed";
    AviSink sink(path(), 16, 16, 10);
    ASSERT_TRUE(sink.begin(8));
    for (const int frame : {0, 1, 2, 6})
        ASSERT_TRUE(sink.write({pattern(16, 16, frame).data(), 16, 16}, frame));
    ASSERT_TRUE(sink.finish());
    EXPECT_EQ(sink.frames(), 7);
    const test::ForeignAvi avi = test::readWithFfmpeg(path());
    EXPECT_EQ(avi.complaints, QString());
    ASSERT_EQ(avi.pictures.size(), 7U) << "up to the highest place that was written";
    for (const std::size_t frame : {0U, 1U, 2U, 6U})
        EXPECT_EQ(static_cast<std::uint8_t>(avi.pictures[frame][15 * 16 * 4]),
                  pattern(16, 16, static_cast<int>(frame))[0]);
    for (const std::size_t gap : {3U, 4U, 5U}) {
        for (int pixel = 0; pixel < 16 * 16; ++pixel)
            ASSERT_EQ(avi.pictures[gap].mid(4 * pixel, 3), QByteArray(3, '\0'));
    }
}

TEST_F(Avi, TheSinksFramesAreOpaque)
{
    AviSink sink(path(), 3, 2, 15);
    ASSERT_TRUE(sink.begin(3));
    ASSERT_TRUE(sink.write({pattern(3, 2, 0).data(), 3, 2}, 0));
    ASSERT_TRUE(sink.write({pattern(3, 2, 2).data(), 3, 2}, 2));
    ASSERT_TRUE(sink.finish());
    const QByteArray bytes = fileContent(path());
    const int s = 8 + 3 * 2 * 4;
    for (const int frame : {0, 1, 2}) {
        for (int pixel = 0; pixel < 6; ++pixel)
            EXPECT_EQ(at(bytes, 224 + frame * s + 8 + 4 * pixel + 3, 1), 255U) << frame;
    }
    EXPECT_EQ(bytes.mid(224 + 2 * s + 8, 3),
              QByteArray(reinterpret_cast<const char*>(pattern(3, 2, 2).data()), 3));
}

TEST_F(Avi, TheSinkMakesTheFileBesideItsTarget)
{
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    {
        AviSink dropped(path(), 2, 2, 15);
        ASSERT_TRUE(dropped.begin(0));
        EXPECT_EQ(files().size(), 2);
    }
    EXPECT_EQ(files(), QStringList{"movie.avi"});
    EXPECT_EQ(fileContent(path()), "mine");

    AviSink sink(path(), 2, 2, 15, 5);
    ASSERT_TRUE(sink.begin(0));
    EXPECT_TRUE(sink.write({pattern(2, 2, 0).data(), 2, 2}, 5));
    EXPECT_TRUE(sink.write({pattern(2, 2, 1).data(), 2, 2}, 6));
    EXPECT_EQ(fileContent(path()), "mine");
    EXPECT_TRUE(sink.finish());
    EXPECT_EQ(sink.frames(), 2);
    const QByteArray made = fileContent(path());
    QFile::remove(path());
    AviWriter writer(path(), 2, 2, 15);
    ASSERT_TRUE(writer.open());
    for (const int frame : {0, 1})
        ASSERT_TRUE(writer.writeFrame(opaque(pattern(2, 2, frame)).data()));
    ASSERT_TRUE(writer.close());
    EXPECT_EQ(made, fileContent(path()));
    EXPECT_EQ(files(), QStringList{"movie.avi"});
}

TEST_F(Avi, TheSinkReplacesTheFileBehindALinkAndNoDevice)
{
    test::saveBytes(path("real.avi"), "mine");
    ASSERT_TRUE(QFile::link(path("real.avi"), path("link.avi")));
    AviSink sink(path("link.avi"), 2, 2, 15);
    ASSERT_TRUE(sink.begin(0));
    EXPECT_TRUE(sink.finish());
    EXPECT_TRUE(QFileInfo(path("link.avi")).isSymLink());
    EXPECT_EQ(fileContent(path("real.avi")).size(), 232);
    EXPECT_FALSE(AviSink("/dev/null", 2, 2, 15).begin(0));
}

TEST_F(Avi, TheSinkReportsAFullDiskAndKeepsWhatIsWhole)
{
    AviSink sink(path(), 16, 16, 15);
    ASSERT_TRUE(sink.begin(0));
    const test::SmallDisk disk(224 + 2 * (8 + 1024) + 100);
    EXPECT_TRUE(sink.write({pattern(16, 16, 0).data(), 16, 16}, 0));
    EXPECT_TRUE(sink.write({pattern(16, 16, 1).data(), 16, 16}, 1));
    EXPECT_FALSE(sink.write({pattern(16, 16, 2).data(), 16, 16}, 2));
    EXPECT_EQ(sink.error(), "The file " + path() + " could not be written past frame 2.");
    EXPECT_TRUE(sink.finish());
    EXPECT_EQ(sink.frames(), 2);
    EXPECT_EQ(at(fileContent(path()), 48), 2U);
}

TEST_F(Avi, TheSinkRefusesWhatItCannotWrite)
{
    AviSink sink(path("none/movie.avi"), 2, 2, 15);
    EXPECT_FALSE(sink.begin(0));
    EXPECT_EQ(sink.error(), "The file " + path("none/movie.avi") + " cannot be written to.");
    EXPECT_FALSE(sink.finish());
    AviSink folder(m_directory.path(), 2, 2, 15);
    EXPECT_FALSE(folder.begin(0));
    AviSink small(path(), 2, 2, 15);
    ASSERT_TRUE(small.begin(0));
    EXPECT_FALSE(small.write({pattern(3, 2, 0).data(), 3, 2}, 0));
    EXPECT_EQ(small.error(), "Frame 0 is no picture of 2 by 2 pixels.");
}

TEST_F(Avi, ASinkWithoutRoomForItsPlacesLeavesNothing)
{
    {
        AviSink sink(path(), 16, 16, 15);
        const test::SmallDisk disk(5000);
        EXPECT_FALSE(sink.begin(100));
        EXPECT_EQ(sink.error(), "There is no room for 100 frames in " + path() + ".");
    }
    EXPECT_TRUE(files().isEmpty());
}

/// Writes the first byte of the picture, or fails with a text.
PictureWriter byteWriter(const QString* failure)
{
    return [failure](const QString& name, const FramePicture& picture) {
        if (failure->isEmpty())
            test::saveBytes(name, QByteArray(reinterpret_cast<const char*>(picture.pixels), 1));
        return *failure;
    };
}

TEST_F(Avi, ANumberedSinkWritesAFileForEachFrame)
{
    QString failure;
    NumberedSink sink(path("tirn0000.png"), byteWriter(&failure));
    ASSERT_TRUE(sink.begin(4));
    const std::uint8_t pixels[] = {'a', 'b', 0, 0};
    EXPECT_TRUE(sink.write({pixels, 1, 1}, 7));
    EXPECT_TRUE(sink.write({pixels + 1, 1, 1}, 12345));
    EXPECT_TRUE(sink.finish());
    EXPECT_EQ(files(), (QStringList{"tirn00000007.png", "tirn000012345.png"}));
    EXPECT_EQ(fileContent(path("tirn00000007.png")), "a");

    failure = "No space left";
    EXPECT_FALSE(sink.write({pixels, 1, 1}, 8));
    EXPECT_EQ(sink.error(), path("tirn00000008.png") + ": No space left");
    EXPECT_TRUE(sink.finish()) << "what was written stays";
    EXPECT_EQ(sink.frames(), 2);
    EXPECT_EQ(files().size(), 2);
}

TEST_F(Avi, PicturesOfEachFormatHoldTheFrame)
{
    const std::uint8_t pixels[] = {1, 2, 3, 0, 4, 5, 6, 0};
    for (const MovieFormat format : {MovieFormat::Png, MovieFormat::Raw, MovieFormat::Tiff}) {
        const QString name = path("f" + movieExtension(format));
        NumberedSink sink(name, pictureWriterOf(format));
        EXPECT_TRUE(sink.write({pixels, 1, 2}, 3)) << sink.error().toStdString();
    }
    EXPECT_EQ(files(), (QStringList{"f0003.png", "f0003.raw", "f0003.tif"}));
    const QImage png(path("f0003.png"));
    EXPECT_EQ(png.pixel(0, 0), qRgb(6, 5, 4)) << "opaque whatever the card's alpha";
    EXPECT_EQ(png.dotsPerMeterX(), 2835);
    EXPECT_EQ(fileContent(path("f0003.raw")), QByteArray("\6\5\4\3\2\1", 6));
    for (const MovieFormat format : {MovieFormat::Avi, MovieFormat::Quicktime}) {
        NumberedSink sink(path("g.mov"), pictureWriterOf(format));
        EXPECT_FALSE(sink.write({pixels, 1, 2}, 3));
    }
}

TEST_F(Avi, NumberedTiffsAreInColourGreyOnesToo)
{
    const std::uint8_t grey[] = {9, 9, 9, 0, 9, 9, 9, 0};
    NumberedSink sink(path("f.tif"), pictureWriterOf(MovieFormat::Tiff));
    ASSERT_TRUE(sink.write({grey, 1, 2}, 0)) << sink.error().toStdString();
    const test::ForeignTiff tiff = test::readWithTifffile(path("f0000.tif"));
    EXPECT_EQ(tiff.channels, 3);
    EXPECT_EQ(tiff.samples, std::vector<int>(6, 9));
}

TEST(FramePicture, BecomesAnImageWithItsTopRowFirst)
{
    const std::uint8_t pixels[] = {1, 2, 3, 255, 4, 5, 6, 255};
    const QImage image = imageOf({pixels, 1, 2});
    EXPECT_EQ(image.pixel(0, 0), qRgb(6, 5, 4));
    EXPECT_EQ(image.pixel(0, 1), qRgb(3, 2, 1));
    const std::uint8_t faint[] = {1, 2, 3, 100};
    EXPECT_EQ(imageOf({faint, 1, 1, true}).pixel(0, 0), qRgba(3, 2, 1, 100));
    EXPECT_EQ(imageOf({faint, 1, 1}).pixel(0, 0), qRgb(3, 2, 1));
}

} // namespace
} // namespace tirn
