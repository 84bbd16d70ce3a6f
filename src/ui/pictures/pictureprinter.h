#pragma once

#include <QImage>
#include <QPrinter>

namespace tirn {

/// Prints a picture into a square as wide as the shorter side of the page, in the middle of the longer one,
/// whatever the picture's proportions. False when the printer takes nothing.
bool printPicture(const QImage& picture, QPrinter& printer);

} // namespace tirn
