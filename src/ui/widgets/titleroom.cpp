#include "ui/widgets/titleroom.h"

#include <algorithm>

#include <QFontMetrics>
#include <QWidget>

namespace tirn {

namespace {

/// What the desktop's buttons and margins take of a title bar, in characters.
constexpr int kButtonCharacters = 16;

} // namespace

void makeRoomForTitle(QWidget& window)
{
    const QFontMetrics metrics = window.fontMetrics();
    const int room =
        metrics.horizontalAdvance(window.windowTitle()) + kButtonCharacters * metrics.averageCharWidth();
    window.setMinimumWidth(std::max(window.minimumWidth(), room));
}

} // namespace tirn
