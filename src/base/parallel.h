#pragma once

#include <cstdint>
#include <functional>

namespace tirn {

/// How many threads parallel loops use: the processors that this process may run on.
int parallelThreads();

/// Calls `body(begin, end)` for consecutive parts of [begin, end), each of `grain` items (the last may be
/// shorter), on the calling thread and the pool's threads, and returns when all are done.
///
/// Parts are handed out in rising order, but finish in any order. The first exception that a part throws is
/// rethrown here, after the others have ended. A loop inside a loop runs on the calling thread alone.
void parallelFor(std::int64_t begin, std::int64_t end, std::int64_t grain,
                 const std::function<void(std::int64_t, std::int64_t)>& body);

} // namespace tirn
