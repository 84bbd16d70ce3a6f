#include "support/foreignavi.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

#include "support/picfile.h"

namespace tirn::test {

namespace {

QByteArray output(const QString& program, const QStringList& arguments, QString* complaints)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(-1);
    *complaints += QString::fromLocal8Bit(process.readAllStandardError());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0) << complaints->toStdString();
    return process.readAllStandardOutput();
}

/// What ffprobe says of the first stream.
QJsonObject probedStream(const QString& name, QString* complaints)
{
    const QByteArray json = output(
        "ffprobe", {"-v", "warning", "-count_frames", "-show_streams", "-of", "json", name}, complaints);
    return QJsonDocument::fromJson(json).object().value("streams").toArray().at(0).toObject();
}

int framesOf(const QJsonObject& stream) { return stream.value("nb_read_frames").toString().toInt(); }

} // namespace

bool haveForeignAvi()
{
    static const bool have = !QStandardPaths::findExecutable("ffmpeg").isEmpty() &&
                             !QStandardPaths::findExecutable("ffprobe").isEmpty();
    return have;
}

int probedFrames(const QString& name)
{
    QString complaints;
    const QJsonObject stream = probedStream(name, &complaints);
    return stream.isEmpty() ? -1 : framesOf(stream);
}

ForeignAvi readWithFfmpeg(const QString& name)
{
    ForeignAvi avi;
    const QJsonObject stream = probedStream(name, &avi.complaints);
    avi.width = stream.value("width").toInt();
    avi.height = stream.value("height").toInt();
    avi.frames = framesOf(stream);
    avi.rate = stream.value("r_frame_rate").toString();
    avi.pixelFormat = stream.value("pix_fmt").toString();
    const QString raw = name + ".frames";
    output("ffmpeg",
           {"-v", "warning", "-y", "-i", name, "-f", "rawvideo", "-pix_fmt", "bgr0", "-fps_mode",
            "passthrough", raw},
           &avi.complaints);
    const QByteArray bytes = fileContent(raw);
    const int size = avi.width * avi.height * 4;
    for (int at = 0; size > 0 && at + size <= bytes.size(); at += size)
        avi.pictures.push_back(bytes.mid(at, size));
    return avi;
}

} // namespace tirn::test
