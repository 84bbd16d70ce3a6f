#include "cli/resultfiles.h"

#include <QFileInfo>

#include "base/outputfile.h"
#include "cli/toolerror.h"

namespace tirn {

void checkReplaceable(const QString& name, bool overwrite)
{
    const QFileInfo info(name);
    if (info.isDir())
        throw FileError(name, QStringLiteral("is a folder"));
    if (!overwrite && info.isFile())
        throw FileError(name, QStringLiteral("File exists; --overwrite replaces it"));
    if (!outputPlace(name).usable)
        throw FileError(name, QStringLiteral("may not be written to"));
}

ResultFiles::ResultFiles(QStringList names, bool overwrite)
    : m_names(std::move(names)), m_folder(stagingPattern(m_names.value(0)))
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
        if (!moveOver(place(name), name))
            throw FileError(name, QStringLiteral("could not be replaced"));
    }
}

} // namespace tirn
