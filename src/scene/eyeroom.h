#pragma once

#include "scene/viewstate.h"

namespace tirn {

/// By how much a volume can grow before an eye of a stereo view enters its box; 1 or less where one is in it
/// already. Without limit in the modes that are drawn without perspective.
double growthBeforeEyes(const ViewState& view, const AxisScale& scale, const StackGeometry& geometry);

} // namespace tirn
