#include "ui/pictures/pictureprinter.h"

#include <algorithm>

#include <QPainter>

#include "base/log.h"

namespace tirn {

bool printPicture(const QImage& picture, QPrinter& printer)
{
    QPainter painter;
    if (picture.isNull() || !painter.begin(&printer))
        return false;
    const QRect page = painter.viewport();
    logDebug("width %d, height %d", page.width(), page.height());
    const int shorter = std::min(page.width(), page.height());
    const int longer = std::max(page.width(), page.height());
    painter.drawImage(QRect(0, (longer - shorter) / 2, shorter, shorter), picture);
    return painter.end();
}

} // namespace tirn
