#pragma once

#include <cstdint>

#include <QFile>
#include <QString>

namespace tirn {

/// A file written beside its target and moved over it by `commit`, so that a failed write leaves what was
/// there. What is no plain file (a device, a pipe) is written in place.
class OutputFile
{
public:
    explicit OutputFile(const QString& target);
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
    QString m_target;
    QFile m_file;
    bool m_inPlace = false;
    bool m_pending = false;
};

/// The name beside `target` under which a file of it is made, another for each attempt.
QString partName(const QString& target, int attempt);
/// Moves a file over another, which it replaces whole or not at all. False with the target as it was.
bool moveOver(const QString& from, const QString& target);

} // namespace tirn
