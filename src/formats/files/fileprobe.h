#pragma once

#include <cstdint>

#include <QFile>

namespace tirn {

/// The tests that every probe begins with: the file exists, can be read, is a plain file, and opens.
bool openForProbe(QFile& file);

} // namespace tirn
