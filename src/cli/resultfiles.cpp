#include "cli/resultfiles.h"

#include <filesystem>
#include <system_error>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "cli/toolerror.h"

namespace tirn {

namespace {

QString folderOf(const QStringList& names) { return QFileInfo(names.value(0)).absolutePath(); }

std::filesystem::path pathOf(const QString& name) { return QFile::encodeName(name).toStdString(); }

} // namespace

void checkReplaceable(const QString& name, bool overwrite)
{
    const QFileInfo info(name);
    if (info.isDir())
        throw FileError(name, QStringLiteral("is a folder"));
    if (!overwrite && info.isFile())
        throw FileError(name, QStringLiteral("File exists; --overwrite replaces it"));
}

ResultFiles::ResultFiles(QStringList names, bool overwrite)
    : m_names(std::move(names)), m_folder(folderOf(m_names) + QStringLiteral("/.tirntool-XXXXXX"))
{
    for (const QString& name : m_names)
        checkReplaceable(name, overwrite);
    if (!m_folder.isValid())
        throw FileError(m_names.value(0), QStringLiteral("Unable to write there"));
}

QString ResultFiles::place(const QString& name) const
{
    return m_folder.filePath(QFileInfo(name).fileName());
}

void ResultFiles::commit(std::int64_t leastBytes)
{
    for (const QString& name : m_names) {
        const QFileInfo made(place(name));
        if (!made.isFile() || made.size() < leastBytes)
            throw FileError(name, QStringLiteral("could not be written whole"));
    }
    for (const QString& name : m_names) {
        std::error_code error;
        std::filesystem::rename(pathOf(place(name)), pathOf(name), error);
        if (error)
            throw FileError(name, QString::fromStdString(error.message()));
    }
}

} // namespace tirn
