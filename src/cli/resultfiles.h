#pragma once

#include <cstdint>

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace tirn {

/// Files that are made in a folder beside their target and moved there together, so that a failed run leaves
/// nothing and replaces nothing.
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

/// Throws FileError when a plain file of this name is there and may not be replaced. Devices and pipes may
/// always be written to.
void checkReplaceable(const QString& name, bool overwrite);

} // namespace tirn
