#pragma once

class QWidget;

namespace tirn {

/// Makes a window wide enough for its title, which the desktop cuts otherwise.
void makeRoomForTitle(QWidget& window);

} // namespace tirn
