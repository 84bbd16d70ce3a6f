#include "movies/framesink.h"

#include <algorithm>
#include <new>

#include <QFile>
#include <QFileInfo>

#include "base/log.h"
#include "base/outputfile.h"
#include "pictures/picturewriter.h"

namespace tirn {

namespace {

constexpr int kAttempts = 100;
constexpr int kBytesPerPixel = 4;
constexpr int kDotsAnInch = 72;

/// The fourth byte of a pixel means nothing in an AVI file, but some programs read opacity out of it.
void makeOpaque(std::vector<std::uint8_t>& pixels)
{
    for (std::size_t alpha = kBytesPerPixel - 1; alpha < pixels.size(); alpha += kBytesPerPixel)
        pixels[alpha] = 255;
}

} // namespace

QImage imageOf(const FramePicture& picture)
{
    const QImage bottomUp(picture.pixels, picture.width, picture.height, picture.width * kBytesPerPixel,
                          picture.transparent ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    return bottomUp.mirrored();
}

bool FrameSink::fail(const QString& text)
{
    if (m_error.isEmpty())
        m_error = text;
    return false;
}

QString cannotWriteText(const QString& fileName)
{
    return QString("The file %1 cannot be written to.").arg(fileName);
}

AviSink::AviSink(QString fileName, int width, int height, float frameRate, std::int64_t firstFrame)
    : m_fileName(std::move(fileName)), m_width(width), m_height(height), m_frameRate(frameRate),
      m_firstFrame(firstFrame)
{}

AviSink::~AviSink()
{
    if (m_writer != nullptr)
        QFile::remove(m_writer->fileName());
}

bool AviSink::begin(std::int64_t reserve)
{
    logDebug("writing %s", m_fileName.toUtf8().constData());
    // Counts are patched into the head at the end: a pipe cannot take them.
    const OutputPlace place = outputPlace(m_fileName);
    if (!place.usable || place.inPlace)
        return fail(cannotWriteText(m_fileName));
    for (int attempt = 0; attempt < kAttempts && m_writer == nullptr; ++attempt) {
        const QString part = partName(place.target, attempt);
        auto writer = std::make_unique<AviWriter>(part, m_width, m_height, m_frameRate);
        if (writer->open())
            m_writer = std::move(writer);
        else if (!QFileInfo::exists(part))
            break;
    }
    if (m_writer == nullptr)
        return fail(cannotWriteText(m_fileName));
    if (reserve > 0)
        logDebug("padding avi");
    try {
        if (reserve > 0 && !m_writer->pad(reserve))
            return fail(QString("There is no room for %1 frames in %2.").arg(reserve).arg(m_fileName));
    } catch (const std::bad_alloc&) {
        return fail("Could not allocate memory to pad movie");
    }
    return true;
}

bool AviSink::write(const FramePicture& picture, std::int64_t frame)
{
    if (m_writer == nullptr)
        return fail(cannotWriteText(m_fileName));
    if (picture.width != m_width || picture.height != m_height || picture.pixels == nullptr) {
        return fail(
            QString("Frame %1 is no picture of %2 by %3 pixels.").arg(frame).arg(m_width).arg(m_height));
    }
    m_opaque.assign(picture.pixels, picture.pixels + m_writer->frameBytes());
    makeOpaque(m_opaque);
    const std::int64_t place = frame - m_firstFrame;
    if (!m_writer->writeFrameAt(m_opaque.data(), place))
        return fail(QString("The file %1 could not be written past frame %2.").arg(m_fileName).arg(frame));
    m_written.resize(std::max(m_written.size(), static_cast<std::size_t>(place) + 1));
    m_written[static_cast<std::size_t>(place)] = true;
    m_frames = static_cast<std::int64_t>(m_written.size());
    return true;
}

bool AviSink::fillGaps()
{
    m_opaque.assign(m_opaque.size(), 0);
    makeOpaque(m_opaque);
    for (std::size_t place = 0; place < m_written.size(); ++place) {
        if (!m_written[place] && !m_writer->writeFrameAt(m_opaque.data(), static_cast<std::int64_t>(place)))
            return false;
    }
    return true;
}

bool AviSink::finish()
{
    if (m_writer == nullptr)
        return false;
    // Places count, not what was written: a frame behind a gap would be cut off.
    if (fillGaps())
        m_writer->setFrames(m_frames);
    const std::unique_ptr<AviWriter> writer = std::move(m_writer);
    const bool valid = writer->close();
    m_frames = writer->frames();
    if (valid && moveOver(writer->fileName(), m_fileName))
        return true;
    QFile::remove(writer->fileName());
    return fail(cannotWriteText(m_fileName));
}

PictureWriter pictureWriterOf(MovieFormat format)
{
    const PictureFormat pictures = format == MovieFormat::Png    ? PictureFormat::Png
                                   : format == MovieFormat::Raw  ? PictureFormat::Raw
                                   : format == MovieFormat::Tiff ? PictureFormat::Tiff
                                                                 : PictureFormat::Printer;
    return [pictures](const QString& fileName, const FramePicture& picture) {
        return savePicture(imageOf(picture), fileName, pictures, kDotsAnInch, true);
    };
}

NumberedSink::NumberedSink(QString fileName, PictureWriter writer)
    : m_fileName(std::move(fileName)), m_writer(std::move(writer))
{}

bool NumberedSink::begin(std::int64_t) { return true; }

bool NumberedSink::write(const FramePicture& picture, std::int64_t frame)
{
    const QString name = numberedPictureName(m_fileName, frame);
    const QString text = m_writer(name, picture);
    if (!text.isEmpty())
        return fail(QString("%1: %2").arg(name, text));
    ++m_frames;
    return true;
}

bool NumberedSink::finish() { return m_frames > 0 || error().isEmpty(); }

} // namespace tirn
