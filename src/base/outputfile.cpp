#include "base/outputfile.h"

#include <filesystem>
#include <system_error>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace tirn {

namespace {

constexpr int kAttempts = 100;
/// Links that lead on to links, before they are taken to go round in a circle.
constexpr int kMostLinks = 40;
constexpr qint64 kPieceBytes = 1 << 20;

QString behindLinks(const QString& name)
{
    QString target = name;
    for (int link = 0; link < kMostLinks && QFileInfo(target).isSymLink(); ++link)
        target = QFileInfo(target).symLinkTarget();
    return target;
}

/// Copies all of a file to another one that is open.
bool copyInto(const QString& from, OutputFile& to)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly))
        return false;
    while (!source.atEnd()) {
        const QByteArray piece = source.read(kPieceBytes);
        if (piece.isEmpty() || !to.write(piece.constData(), piece.size()))
            return false;
    }
    return true;
}

/// For a target on another file system, and one that is written in place.
bool copyOver(const QString& from, const QString& target)
{
    OutputFile file(target);
    if (!file.open() || !copyInto(from, file) || !file.commit())
        return false;
    QFile::remove(from);
    return true;
}

} // namespace

OutputPlace outputPlace(const QString& name)
{
    OutputPlace place;
    const QFileInfo named(name);
    place.inPlace = named.exists() && !named.isFile() && !named.isDir();
    // The system follows links to devices itself, those of open files among them, which name no path.
    place.target = place.inPlace ? name : behindLinks(name);
    const QFileInfo info(place.target);
    place.usable =
        place.inPlace || (!info.isDir() && !info.isSymLink() && (!info.exists() || info.isWritable()));
    return place;
}

OutputFile::OutputFile(const QString& name) : m_place(outputPlace(name)) {}

OutputFile::~OutputFile()
{
    if (m_pending)
        m_file.remove();
}

bool OutputFile::open()
{
    if (!m_place.usable)
        return false;
    if (m_place.inPlace) {
        m_file.setFileName(m_place.target);
        return m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }
    const QFileInfo info(m_place.target);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        m_file.setFileName(partName(m_place.target, attempt));
        if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
            m_pending = true;
            // From the beginning, so that nobody reads early what he may not read later.
            if (info.exists())
                m_file.setPermissions(info.permissions());
            return true;
        }
        if (!m_file.exists())
            return false;
    }
    return false;
}

bool OutputFile::seek(std::int64_t offset) { return m_place.inPlace ? true : m_file.seek(offset); }

bool OutputFile::write(const void* bytes, std::int64_t count)
{
    return m_file.write(static_cast<const char*>(bytes), count) == count;
}

bool OutputFile::commit()
{
    const bool flushed = m_file.error() == QFileDevice::NoError;
    m_file.close();
    if (!flushed)
        return false;
    if (m_place.inPlace)
        return true;
    m_pending = !moveOver(m_file.fileName(), m_place.target);
    return !m_pending;
}

bool writeFile(const QString& name, const void* bytes, std::int64_t count)
{
    OutputFile file(name);
    return file.open() && file.write(bytes, count) && file.commit();
}

QString partName(const QString& target, int attempt)
{
    return QStringLiteral("%1.%2-%3.part").arg(target).arg(QCoreApplication::applicationPid()).arg(attempt);
}

QString stagingPattern(const QString& name)
{
    const OutputPlace place = outputPlace(name);
    const QString folder = place.inPlace ? QDir::tempPath() : QFileInfo(place.target).absolutePath();
    return folder + QStringLiteral("/.tirn-XXXXXX");
}

bool moveOver(const QString& from, const QString& target)
{
    const OutputPlace place = outputPlace(target);
    if (!place.usable)
        return false;
    if (place.inPlace)
        return copyOver(from, place.target);
    const QFileInfo replaced(place.target);
    if (replaced.exists())
        QFile::setPermissions(from, replaced.permissions());
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(from).toStdString(),
                            QFile::encodeName(place.target).toStdString(), error);
    return !error || (error == std::errc::cross_device_link && copyOver(from, place.target));
}

} // namespace tirn
