#pragma once

#include "cli/drawingtool.h"

namespace tirn {

/// Makes movies with the tool, and the single pictures that they are compared with.
class MovieTool : public DrawingTool
{
protected:
    Outcome movie(const QStringList& arguments) const
    {
        return program(TIRN_TOOL, QStringList{"movie"} + arguments);
    }
    void make(const QStringList& arguments) const
    {
        const Outcome done = movie(arguments);
        EXPECT_EQ(done.code, 0) << done.err.toStdString();
        EXPECT_EQ(done.err, "");
        EXPECT_TRUE(done.out.isEmpty());
    }
    QImage rendered(const QStringList& options) const
    {
        const Outcome done =
            program(TIRN_TOOL, QStringList{"render", "--overwrite"} + options + QStringList{path("one.png")});
        EXPECT_EQ(done.code, 0) << done.err.toStdString();
        return QImage(path("one.png"));
    }
    QImage frame(const char* name) const { return QImage(path(name)); }
    /// "FRAMES,WIDTH,HEIGHT,RATE" as ffprobe counts them.
    QString probed(const QString& name) const
    {
        const QByteArray out = program("ffprobe", {"-v", "error", "-count_frames", "-show_entries",
                                                   "stream=width,height,r_frame_rate,nb_read_frames", "-of",
                                                   "default=noprint_wrappers=1", path(name)})
                                   .out;
        return QString::fromLatin1(out).trimmed().replace('\n', ' ');
    }
    void expectUsageError(const QStringList& options, const QString& text) const
    {
        const Outcome refused = movie(options + QStringList{pic(), path("never.avi")});
        EXPECT_EQ(refused.code, 2) << options.join(' ').toStdString();
        EXPECT_EQ(refused.err, "tirntool: " + text + "; see tirntool --help\n");
        EXPECT_FALSE(QFileInfo::exists(path("never.avi")));
    }
    QString xml(const QString& name, const QString& text) const
    {
        return test::saveBytes(path(name), text.toUtf8());
    }
};

inline const QStringList kSmall = {"--size", "48x32"};

} // namespace tirn
