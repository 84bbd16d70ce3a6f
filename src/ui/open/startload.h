#pragma once

#include "ui/toolform.h"

namespace tirn {

/// The description that a load begins with, before a form fills it.
LoadDescription freshLoad(const FormServices& services);

/// Hides the form, lets the screen follow, and starts the load. While another one is under way the form comes
/// back, if it was there, with a box that says so.
void startLoad(ToolForm& form, const FormServices& services, LoadDescription load);

} // namespace tirn
