#pragma once

#include <vector>

#include <QSize>
#include <QString>

#include "base/progress.h"
#include "render/offscreenstage.h"

namespace tirn {

/// How long the frames of a turn took, each from its start to the end of its drawing.
struct TurnTimes
{
    std::vector<double> frameMilliseconds;
    /// Why there are no frames.
    QString error;

    double median() const;
    double maximum() const;
};

/// Draws the frames of one full turn about y into an off-screen buffer. The view is as before afterwards.
TurnTimes timeTurn(OffscreenStage& stage, QSize size, int frames, const Progress& progress = {});

} // namespace tirn
