#pragma once

class QColor;
class QWidget;

namespace tirn {

/// What the window system shows of a window until it is painted, for instance where it has just grown;
/// without it that is whatever lies behind the window. Does nothing on systems that have no such thing.
void setNativeBackground(QWidget& widget, const QColor& colour);

} // namespace tirn
