#pragma once

#include <QString>

namespace tirn {

/// The filter string of the dialogs that open stacks.
QString stackFileFilter();
/// That of the choosers for the file of one channel.
QString channelFileFilter();
/// That of the dialog that exports stacks.
QString exportFileFilter();

} // namespace tirn
