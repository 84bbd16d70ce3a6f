#pragma once

#include <vector>

#include <QByteArray>
#include <QString>

namespace tirn::test {

/// What another program reads from an AVI file.
struct ForeignAvi
{
    int width = 0;
    int height = 0;
    int frames = 0;
    QString rate;
    QString pixelFormat;
    /// Everything that the program complains about.
    QString complaints;
    /// The frames, top row first, blue, green, red and a byte without meaning a pixel.
    std::vector<QByteArray> pictures;
};

/// False where ffmpeg is not installed: tests that need it are skipped.
bool haveForeignAvi();

/// The frames that ffprobe finds in a file; -1 when it finds no movie.
int probedFrames(const QString& name);

/// Reads with ffprobe and ffmpeg; a failed test and nothing when they cannot.
ForeignAvi readWithFfmpeg(const QString& name);

} // namespace tirn::test
