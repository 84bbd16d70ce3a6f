#pragma once

#include <cstdint>
#include <functional>

#include <QString>

#include "base/progress.h"

namespace tirn {

/// A long loop of `steps` steps, each of `itemsPerStep` items; an item touches about `itemBytes` bytes.
struct StepLoop
{
    std::int64_t steps = 0;
    std::int64_t itemsPerStep = 1;
    std::int64_t itemBytes = 1;
};

/// Calls `body(begin, end)` for all items on all cores. The first report has the message, 0 and a total of
/// 100; then comes one, without a message, for each step that changes the percentage done. Returns the steps
/// done, in order from the first: fewer than all when cancelled.
std::int64_t runSteps(const StepLoop& loop, const QString& message, const Progress& progress,
                      const std::function<void(std::int64_t begin, std::int64_t end)>& body);

/// The same for a loop of `count` items without steps, with no message. False when cancelled.
bool runItems(std::int64_t count, std::int64_t itemBytes, const Progress& progress,
              const std::function<void(std::int64_t begin, std::int64_t end)>& body);

} // namespace tirn
