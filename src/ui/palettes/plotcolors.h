#pragma once

#include <QColor>

namespace tirn {

/// What curves, histograms and handles stand on: dark in every desktop, so that white and all colours show.
inline const QColor kPlotBackground(26, 27, 31);
inline const QColor kHistogramColor(214, 64, 214);
inline const QColor kFaintColor(150, 152, 160);

} // namespace tirn
