#pragma once

#include <QIcon>

class QPalette;

namespace tirn {

/// The shape of an icon in the colours of button texts, so that it is seen on light and on dark.
QIcon inkedIcon(const QIcon& icon, const QPalette& palette);

} // namespace tirn
