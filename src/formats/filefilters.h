#pragma once

#include <QString>

namespace tirn {

/// The filter string of the dialogs that open stacks.
QString stackFileFilter();

} // namespace tirn
