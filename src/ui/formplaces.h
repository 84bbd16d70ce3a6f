#pragma once

#include <cstdint>
#include <vector>

#include <QPoint>
#include <QRect>

class QWidget;

namespace tirn {

/// Where a form is placed beside the main window.
enum class FormSide { Left = 0, Right = 1, Above = 2, Below = 3 };

/// Top left corner of a form beside the main window's frame: never outside of the screen at the left or at
/// the top, and moved back where it would leave it at the right or below.
QPoint formPosition(const QRect& mainFrame, const QSize& form, const QRect& screen, FormSide side);

/// The same, moved along that side, then to the other sides and then anywhere, to where the form covers none
/// of `taken`; where there is no such place, to where it covers least.
QPoint freeFormPosition(const QRect& mainFrame, const QSize& form, const QRect& screen,
                        const std::vector<QRect>& taken, FormSide side);

/// Brings a corner back to the screen, so that all of a form of that size can be seen if it is not larger.
QPoint onScreen(QPoint corner, const QSize& form, const QRect& screen);

/// What a window may take of the screen that it is on.
QRect screenOf(const QWidget& window);

/// Top left corner of the first window, `side` pixels square: centred, on the left half of a twin-monitor
/// desktop.
QPoint firstWindowPosition(const QSize& desktop, int side);

} // namespace tirn
