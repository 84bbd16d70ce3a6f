#pragma once

namespace tirn {

/// Makes the toolkit's messages appear as "Debug: TEXT" on standard output and as "Warning: TEXT" and "Fatal:
/// TEXT" on standard error; after a fatal one the program aborts.
void installMessageHandler();

} // namespace tirn
