#pragma once

#include <QString>

namespace tirn {

/// The path of `file` as seen from the directory `baseDir`, both relative to the current directory or
/// absolute. A file under another root keeps its absolute path.
QString relativePath(const QString& file, const QString& baseDir);

/// The directory part of a relative path: from one absolute directory to another, both clean and with
/// slashes, a separator behind each part. Empty where they are the same.
QString relativeDirectory(const QString& directory, const QString& baseDir);

} // namespace tirn
