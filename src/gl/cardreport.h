#pragma once

#include <QString>

#include "gl/glinfo.h"

namespace tirn {

/// What a card can do, in sentences, a line each.
QString cardReport(const GlCapabilities& card);

/// What the program itself asks of a driver, and whether this one has it.
QString requirementsReport(const GlCapabilities& card);

} // namespace tirn
