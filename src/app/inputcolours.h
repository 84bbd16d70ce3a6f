#pragma once

namespace tirn {

/// Gives input fields the background of their window. To be called again when the desktop turns dark or
/// light.
void colourInputs();

} // namespace tirn
