#pragma once

#include <cstdint>

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace tirn {

/// Files that are made in a folder beside the first one's target and moved there together, so that a failed
/// run leaves nothing and replaces nothing.
class ResultFiles
{
public:
    /// `names` are the final names, all in one folder. Throws FileError when one of them is there and may not
    /// be replaced, or when the folder cannot be made.
    ResultFiles(QStringList names, bool overwrite);

    /// Where a file of this final name is to be written.
    QString place(const QString& name) const;
    /// Moves all files; throws FileError when one is missing or has fewer than `leastBytes` bytes.
    void commit(std::int64_t leastBytes);

private:
    QStringList m_names;
    QTemporaryDir m_folder;
};

/// Throws FileError when a plain file of this name, or behind a link of it, is there and may not be replaced,
/// and for what cannot be written to. Devices and pipes may always be written to, and never are replaced.
void checkReplaceable(const QString& name, bool overwrite);

} // namespace tirn
