#pragma once

#include <QString>

namespace tirn {

class ImageFile;

/// Writes a stack's buffer as it lies in memory, words little-endian, to a file or, for "-", to stdout.
/// Throws FileError.
void writeVoxels(ImageFile& stack, const QString& out, bool overwrite);

} // namespace tirn
