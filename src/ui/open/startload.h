#pragma once

#include "ui/toolform.h"

namespace tirn {

/// The description that a load begins with, before a form fills it.
LoadDescription freshLoad(const FormServices& services);

/// Starts the load; while another one is under way a box says so, and it is false.
bool startLoad(ToolForm& form, const FormServices& services, LoadDescription load);

/// The same with what stands in the form, which goes away unless the load was refused.
void startLoadOf(ToolForm& form, const FormServices& services, LoadDescription load);

} // namespace tirn
