#pragma once

#include <optional>

#include "threads/filterthread.h"

class QWidget;

namespace tirn {

/// What every dialog of the filters is called, and the form that shows their progress.
inline constexpr const char* kFilterCaption = "Event";

/// Asks for the parameters of an operation on a stack with so many channels; nothing when the user cancels.
/// Flips and the inversion have none, and are not asked for.
std::optional<FilterJobParameters> askFilter(FilterOperation operation, int channels, QWidget* parent);

} // namespace tirn
