#include "pictures/picturewriter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QTemporaryDir>

#include "base/log.h"
#include "base/outputfile.h"
#include "image/imagefile.h"

namespace tirn {

namespace {

constexpr double kInchesAMetre = 39.3700787;
constexpr double kMicronsAnInch = 25400.0;
/// The toolkit's name for zlib's fastest level: large pictures are written about as fast as they can be
/// read back, and far smaller than without compression.
constexpr int kFastPng = 89;

QString writeBytes(const QString& name, const void* bytes, std::int64_t count)
{
    return writeFile(name, bytes, count) ? QString() : QString("Could not be written");
}

/// The colours of a picture, three bytes a pixel, rows from the top without gaps.
std::vector<std::uint8_t> colourBytes(const QImage& picture)
{
    const QImage colours = picture.convertToFormat(QImage::Format_RGB888);
    const auto rowBytes = static_cast<std::size_t>(colours.width()) * 3;
    std::vector<std::uint8_t> bytes(rowBytes * static_cast<std::size_t>(colours.height()));
    for (int y = 0; y < colours.height(); ++y)
        std::copy_n(colours.constScanLine(y), rowBytes,
                    bytes.begin() + static_cast<std::ptrdiff_t>(rowBytes) * y);
    return bytes;
}

} // namespace

QString savePng(QImage picture, const QString& name, int dpi)
{
    if (picture.isNull())
        return "No picture to write";
    const auto dots = static_cast<int>(std::floor(dpi * kInchesAMetre + 0.5));
    picture.setDotsPerMeterX(dots);
    picture.setDotsPerMeterY(dots);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "PNG");
    writer.setQuality(kFastPng);
    if (!writer.write(picture))
        return "Could not be written: " + writer.errorString();
    return writeBytes(name, bytes.constData(), bytes.size());
}

QString saveRaw(const QImage& picture, const QString& name)
{
    if (picture.isNull())
        return "No picture to write";
    const std::vector<std::uint8_t> bytes = colourBytes(picture);
    return writeBytes(name, bytes.data(), static_cast<std::int64_t>(bytes.size()));
}

QString saveTiff(const QImage& picture, const QString& name, int dpi, bool keepColour)
{
    if (picture.isNull())
        return "No picture to write";
    const bool grey = !keepColour && picture.allGray();
    std::vector<std::uint8_t> bytes = colourBytes(picture);
    if (grey) {
        for (std::size_t i = 0; 3 * i < bytes.size(); ++i)
            bytes[i] = bytes[3 * i];
        bytes.resize(bytes.size() / 3);
    }
    const double micronsAPixel = kMicronsAnInch / dpi;
    logDebug("dpi %d %f", dpi, micronsAPixel);
    ImageFile file(picture.width(), picture.height(), 1, grey ? 1 : 3, 8);
    std::copy(bytes.begin(), bytes.end(), file.stackData());
    file.attributes().dimX = micronsAPixel;
    file.attributes().dimY = micronsAPixel;
    // The writer says nothing of a file that cannot be made: what is missing afterwards has failed.
    const QTemporaryDir folder(stagingPattern(name));
    const QString made = folder.filePath("picture.tif");
    if (!folder.isValid() || !file.write({made}, ImageType::TiffSeries, 8, true) ||
        QFileInfo(made).size() < static_cast<qint64>(bytes.size()))
        return file.writeErrors().isEmpty() ? "Could not be written" : file.writeErrors().join('\n');
    return moveOver(made, name) ? QString() : QString("Could not be written");
}

QString savePicture(const QImage& picture, const QString& name, PictureFormat format, int dpi,
                    bool keepColour)
{
    switch (format) {
    case PictureFormat::Png:
        return savePng(picture, name, dpi);
    case PictureFormat::Raw:
        return saveRaw(picture, name);
    case PictureFormat::Tiff:
        return saveTiff(picture, name, dpi, keepColour);
    case PictureFormat::Printer:
        break;
    }
    return "I don't know what format you want";
}

} // namespace tirn
