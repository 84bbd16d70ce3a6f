#pragma once

#include <QImage>
#include <QPrinter>

namespace tirn {

/// Prints a picture as large as the page takes it in its own proportions, in the middle. False when the
/// printer takes nothing.
bool printPicture(const QImage& picture, QPrinter& printer);

} // namespace tirn
