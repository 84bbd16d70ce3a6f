#include "ui/widgets/inkedicon.h"

#include <QPainter>
#include <QPalette>

namespace tirn {

namespace {

/// Of buttons up to twice the usual size, on screens of twice the usual resolution.
constexpr int kSides[] = {16, 24, 32, 48, 64};

} // namespace

QIcon inkedIcon(const QIcon& icon, const QPalette& palette)
{
    struct Ink
    {
        QIcon::Mode mode;
        QPalette::ColorGroup group;
    };
    QIcon inked;
    for (const Ink& ink : {Ink{QIcon::Normal, QPalette::Active}, Ink{QIcon::Disabled, QPalette::Disabled}}) {
        for (const int side : kSides) {
            QPixmap pixmap = icon.pixmap(QSize(side, side));
            pixmap.setDevicePixelRatio(1);
            QPainter painter(&pixmap);
            painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
            painter.fillRect(pixmap.rect(), palette.color(ink.group, QPalette::ButtonText));
            painter.end();
            inked.addPixmap(pixmap, ink.mode);
        }
    }
    return inked;
}

} // namespace tirn
