#include "formats/files/outputfile.h"

#include <filesystem>
#include <system_error>

#include <QCoreApplication>
#include <QFileInfo>

namespace tirn {

OutputFile::OutputFile(const QString& target) : m_target(target) {}

OutputFile::~OutputFile()
{
    if (m_pending)
        m_file.remove();
}

bool OutputFile::open()
{
    const QFileInfo info(m_target);
    if (info.isDir())
        return false;
    m_inPlace = info.exists() && !info.isFile();
    // The file behind a link is the one to replace, not the link.
    if (info.exists() && info.isSymLink())
        m_target = info.canonicalFilePath();
    if (m_inPlace) {
        m_file.setFileName(m_target);
        return m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }
    if (info.exists() && !info.isWritable())
        return false;
    for (int attempt = 0; attempt < 100; ++attempt) {
        m_file.setFileName(partName(m_target, attempt));
        if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
            m_pending = true;
            if (info.exists())
                m_file.setPermissions(info.permissions());
            return true;
        }
        if (!m_file.exists())
            return false;
    }
    return false;
}

bool OutputFile::seek(std::int64_t offset) { return m_inPlace ? true : m_file.seek(offset); }

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
    if (m_inPlace)
        return true;
    m_pending = !moveOver(m_file.fileName(), m_target);
    return !m_pending;
}

QString partName(const QString& target, int attempt)
{
    return QStringLiteral("%1.%2-%3.part").arg(target).arg(QCoreApplication::applicationPid()).arg(attempt);
}

bool moveOver(const QString& from, const QString& target)
{
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(from).toStdString(), QFile::encodeName(target).toStdString(),
                            error);
    return !error;
}

} // namespace tirn
