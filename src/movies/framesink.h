#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <QImage>
#include <QString>

#include "movies/aviwriter.h"
#include "movies/moviename.h"

namespace tirn {

/// A drawn frame as it comes from the card: four bytes a pixel, blue, green, red, alpha; bottom row first. It
/// owns nothing.
struct FramePicture
{
    const std::uint8_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    /// Whether alpha says how much of a pixel there is; otherwise it says nothing.
    bool transparent = false;
};

/// The same as a picture of the toolkit, top row first.
QImage imageOf(const FramePicture& picture);

/// Where the frames of a movie go.
class FrameSink
{
public:
    virtual ~FrameSink() = default;

    /// Before the first frame. `reserve` frames get their place in advance, 0 for a movie whose frames come
    /// in order.
    virtual bool begin(std::int64_t reserve) = 0;
    /// Puts a picture at the place of a frame.
    virtual bool write(const FramePicture& picture, std::int64_t frame) = 0;
    /// After the last frame, and after a failed or a cancelled movie, too: what was written so far becomes
    /// readable. False when nothing of it is.
    virtual bool finish() = 0;

    /// What people read when one of these failed.
    const QString& error() const { return m_error; }

protected:
    bool fail(const QString& text);

private:
    QString m_error;
};

/// The text for a file that cannot be written at all.
QString cannotWriteText(const QString& fileName);

/// An AVI file, made beside its target and moved over it when the movie ends. Where the disk fills up, the
/// frames that are whole stay. Frames are opaque, and black where a movie that came out of order ended before
/// it had written them.
class AviSink : public FrameSink
{
public:
    /// `firstFrame` is the number of the frame that comes first in the file.
    AviSink(QString fileName, int width, int height, float frameRate, std::int64_t firstFrame = 0);
    /// Removes an unfinished file.
    ~AviSink() override;

    bool begin(std::int64_t reserve) override;
    bool write(const FramePicture& picture, std::int64_t frame) override;
    bool finish() override;
    std::int64_t frames() const { return m_frames; }

private:
    bool fillGaps();

    QString m_fileName;
    int m_width;
    int m_height;
    float m_frameRate;
    std::int64_t m_firstFrame;
    std::int64_t m_frames = 0;
    /// Which places of the file hold a frame, up to the highest one.
    std::vector<bool> m_written;
    std::vector<std::uint8_t> m_opaque;
    std::unique_ptr<AviWriter> m_writer;
};

/// Writes one picture to a file of this name and returns the text of a failure, empty for none. A failure
/// leaves what was there.
using PictureWriter = std::function<QString(const QString& fileName, const FramePicture& picture)>;

/// The writer of a format's pictures, at 72 dots an inch. All have three colours, grey ones, too, so that the
/// files of a movie are of one kind. Formats without pictures fail.
PictureWriter pictureWriterOf(MovieFormat format);

/// A picture file for each frame, its number in four digits before the ending.
class NumberedSink : public FrameSink
{
public:
    NumberedSink(QString fileName, PictureWriter writer);

    bool begin(std::int64_t reserve) override;
    bool write(const FramePicture& picture, std::int64_t frame) override;
    bool finish() override;
    std::int64_t frames() const { return m_frames; }

private:
    QString m_fileName;
    PictureWriter m_writer;
    std::int64_t m_frames = 0;
};

} // namespace tirn
