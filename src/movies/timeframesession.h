#pragma once

#include <vector>

#include <QDomDocument>
#include <QDomElement>

#include "movies/action.h"

namespace tirn {

/// The `timeframe` element with an `action` element for each action.
QDomElement saveTimeFrame(const TimeFrame& timeFrame, QDomDocument& document);

/// Reads a `timeframe` element. Of the types "Timepoints" is not known here: such an action comes back as a
/// rotation by nothing, for the caller to replace.
TimeFrame readTimeFrame(const QDomElement& element);

/// All `timeframe` children, in their order.
std::vector<TimeFrame> readTimeFrames(const QDomElement& parent);

} // namespace tirn
