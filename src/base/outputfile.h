#pragma once

#include <cstdint>

#include <QFile>
#include <QString>

namespace tirn {

/// Where the bytes of a file of some name go.
struct OutputPlace
{
    /// The name itself, or what it leads to where it is a link, there or not.
    QString target;
    /// A device or a pipe: written to, never replaced.
    bool inPlace = false;
    /// Nothing of that name stands in the way for good, such as a folder or a file that is write-protected.
    bool usable = true;
};

OutputPlace outputPlace(const QString& name);

/// A file written beside its target and moved over it by `commit`, so that a failed write leaves what was
/// there. What is no plain file (a device, a pipe) is written in place.
class OutputFile
{
public:
    explicit OutputFile(const QString& name);
    /// Removes what was not committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool open();
    bool seek(std::int64_t offset);
    /// False when not all bytes were written.
    bool write(const void* bytes, std::int64_t count);
    /// Closes the file and gives it the target's name.
    bool commit();

private:
    OutputPlace m_place;
    QFile m_file;
    bool m_pending = false;
};

/// All of a file at once.
bool writeFile(const QString& name, const void* bytes, std::int64_t count);

/// The name beside `target` under which a file of it is made, another for each attempt.
QString partName(const QString& target, int attempt);
/// The pattern of a temporary folder in which files of this name can be made before they move there: beside
/// the target, or, for a device or a pipe, where temporary files are.
QString stagingPattern(const QString& name);
/// Gives a finished file the name `target` and the permissions of the file that it replaces, whole or not at
/// all. The file behind a link is replaced, not the link; a device or a pipe takes the bytes. False with the
/// target as it was.
bool moveOver(const QString& from, const QString& target);

} // namespace tirn
