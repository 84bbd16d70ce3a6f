// Pictures as other programs see them.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

#include "pictures/picturewriter.h"
#include "support/logcapture.h"
#include "support/picfile.h"

namespace tirn {
namespace {

QByteArray run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(-1);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

/// What PIL sees: mode, size, resolution, and the pixels as hexadecimal digits.
QStringList seenByPil(const QString& name)
{
    const char* script = "import sys\nfrom PIL import Image\ni=Image.open(sys.argv[1])\n"
                         "d=i.info.get('dpi',(0,0))\n"
                         "print(i.mode,i.size[0],i.size[1],round(float(d[0])),round(float(d[1])))\n"
                         "print(i.tobytes().hex())\n";
    return QString::fromLatin1(run("/usr/bin/python3", {"-c", script, name})).trimmed().split('\n');
}

class PictureWriter : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }
    QStringList files() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::Files | QDir::Hidden | QDir::Dirs | QDir::NoDotAndDotDot);
    }
    /// 3 x 2 pixels, all different; odd, so that rows of bytes end anywhere.
    static QImage colours()
    {
        QImage picture(3, 2, QImage::Format_RGB32);
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < 3; ++x)
                picture.setPixel(x, y, qRgb(10 + x, 100 + y, 200 + 10 * x + y));
        }
        return picture;
    }
    static QImage greys()
    {
        QImage picture(3, 2, QImage::Format_RGB32);
        for (int i = 0; i < 6; ++i)
            picture.setPixel(i % 3, i / 3, qRgb(40 * i, 40 * i, 40 * i));
        return picture;
    }
    /// R, G, B of each pixel from the top left.
    static QByteArray coloursInOrder()
    {
        QByteArray bytes;
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < 3; ++x) {
                for (const int value : {10 + x, 100 + y, 200 + 10 * x + y})
                    bytes.append(static_cast<char>(value));
            }
        }
        return bytes;
    }

    test::LogCapture log;
    QTemporaryDir m_directory;
};

TEST_F(PictureWriter, APngHasItsPixelsAndItsResolution)
{
    EXPECT_EQ(savePng(colours(), path("a.png"), 300), "");
    // 300 * 39.3700787 + 0.5, rounded down, is 11811 dots a metre: 300 dots an inch.
    EXPECT_EQ(QImage(path("a.png")).dotsPerMeterX(), 11811);
    EXPECT_EQ(QImage(path("a.png")).dotsPerMeterY(), 11811);
    EXPECT_EQ(seenByPil(path("a.png")),
              (QStringList{"RGB 3 2 300 300", QString::fromLatin1(coloursInOrder().toHex())}));
    EXPECT_EQ(files(), QStringList{"a.png"});
}

TEST_F(PictureWriter, APngIsCompressed)
{
    QImage plain(256, 256, QImage::Format_RGB32);
    plain.fill(Qt::red);
    EXPECT_EQ(savePng(plain, path("a.png"), 72), "");
    EXPECT_LT(QFileInfo(path("a.png")).size(), 20000);
}

TEST_F(PictureWriter, APngKeepsOpacityWithStraightColours)
{
    QImage picture(2, 1, QImage::Format_ARGB32);
    picture.setPixel(0, 0, qRgba(200, 100, 50, 128));
    picture.setPixel(1, 0, qRgba(0, 0, 0, 0));
    EXPECT_EQ(savePng(picture, path("a.png"), 72), "");
    EXPECT_EQ(seenByPil(path("a.png")), (QStringList{"RGBA 2 1 72 72", "c864328000000000"}));
}

TEST_F(PictureWriter, ARawPictureIsRedGreenBlueFromTheTop)
{
    EXPECT_EQ(saveRaw(colours(), path("a.raw")), "");
    EXPECT_EQ(test::fileContent(path("a.raw")), coloursInOrder());
}

TEST_F(PictureWriter, ATiffHasItsPixelsAndItsResolution)
{
    EXPECT_EQ(saveTiff(colours(), path("a.tif"), 254), "");
    EXPECT_TRUE(log.contains("dpi 254 100.000000"));
    EXPECT_EQ(seenByPil(path("a.tif")),
              (QStringList{"RGB 3 2 254 254", QString::fromLatin1(coloursInOrder().toHex())}));
    const QByteArray info = run("tiffinfo", {path("a.tif")});
    EXPECT_TRUE(info.contains("Image Width: 3 Image Length: 2")) << info.toStdString();
    EXPECT_TRUE(info.contains("Resolution: 100, 100 pixels/cm")) << info.toStdString();
    EXPECT_EQ(files(), QStringList{"a.tif"});
}

TEST_F(PictureWriter, AGreyTiffHasOneSampleUnlessColourIsAskedFor)
{
    EXPECT_EQ(saveTiff(greys(), path("a.tif"), 72), "");
    EXPECT_EQ(seenByPil(path("a.tif")).value(1), "00285078a0c8");
    EXPECT_TRUE(seenByPil(path("a.tif")).first().startsWith("L 3 2"));
    EXPECT_EQ(saveTiff(greys(), path("b.tif"), 72, true), "");
    EXPECT_TRUE(seenByPil(path("b.tif")).first().startsWith("RGB 3 2"));
}

TEST_F(PictureWriter, EachFormatHasItsWriter)
{
    EXPECT_EQ(savePicture(colours(), path("a"), PictureFormat::Png, 72), "");
    EXPECT_TRUE(test::fileContent(path("a")).startsWith("\x89PNG"));
    EXPECT_EQ(savePicture(colours(), path("a"), PictureFormat::Tiff, 72), "");
    EXPECT_TRUE(test::fileContent(path("a")).startsWith("II*"));
    EXPECT_EQ(savePicture(colours(), path("a"), PictureFormat::Raw, 72), "");
    EXPECT_EQ(test::fileContent(path("a")).size(), 18);
    EXPECT_EQ(savePicture(colours(), path("a"), PictureFormat::Printer, 72),
              "I don't know what format you want");
}

TEST_F(PictureWriter, AFailureSaysSoAndKeepsWhatIsThere)
{
    for (const PictureFormat format : {PictureFormat::Png, PictureFormat::Raw, PictureFormat::Tiff}) {
        EXPECT_NE(savePicture(colours(), path("nowhere/a.x"), format, 72), "");
        EXPECT_NE(savePicture({}, path("a.x"), format, 72), "");
    }
    // A row that no strip of a TIFF can hold.
    test::saveBytes(path("a.tif"), "before");
    QImage wide(21846, 1, QImage::Format_RGB32);
    wide.fill(Qt::red);
    EXPECT_EQ(saveTiff(wide, path("a.tif"), 72),
              "A row of more than 64 KB does not fit a strip of a TIFF file");
    EXPECT_EQ(test::fileContent(path("a.tif")), "before");
    EXPECT_EQ(files(), QStringList{"a.tif"});
}

/// A device that is always full stands in for a disk that is.
TEST_F(PictureWriter, AFullDiskIsReported)
{
    EXPECT_NE(savePng(colours(), "/dev/full", 72), "");
    EXPECT_NE(saveRaw(colours(), "/dev/full"), "");
}

} // namespace
} // namespace tirn
