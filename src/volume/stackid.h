#pragma once

#include <cstdint>

namespace tirn {

/// Names a loaded volume as long as the program runs; no two volumes ever have the same.
enum class StackId : std::uint64_t { None = 0 };

} // namespace tirn
