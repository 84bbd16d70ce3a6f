#include "ui/pictures/pictureprinter.h"

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
    QRect printed(QPoint(0, 0), picture.size().scaled(page.size(), Qt::KeepAspectRatio));
    printed.moveCenter(page.center());
    painter.drawImage(printed, picture);
    return painter.end();
}

} // namespace tirn
