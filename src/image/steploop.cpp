#include "image/steploop.h"

#include <algorithm>

#include "base/parallel.h"

namespace tirn {

namespace {

/// Bytes that are worth a thread's while, and that are worked on between two looks at the cancel flag.
constexpr std::int64_t kGrainBytes = std::int64_t{256} << 10;
constexpr std::int64_t kGroupBytes = std::int64_t{16} << 20;
/// Bytes of a step where the loop has none of its own.
constexpr std::int64_t kStepBytes = std::int64_t{64} << 10;

} // namespace

std::int64_t runSteps(const StepLoop& loop, const QString& message, const Progress& progress,
                      const std::function<void(std::int64_t begin, std::int64_t end)>& body)
{
    progress(message, 0, 100);
    const std::int64_t itemBytes = std::max<std::int64_t>(1, loop.itemBytes);
    const std::int64_t grain = std::max<std::int64_t>(1, kGrainBytes / itemBytes);
    const std::int64_t stepBytes = std::max<std::int64_t>(1, loop.itemsPerStep * itemBytes);
    const std::int64_t group = std::max<std::int64_t>(1, kGroupBytes / stepBytes);
    std::int64_t percentage = 0;
    for (std::int64_t step = 0; step < loop.steps; step += group) {
        if (progress.cancelled())
            return step;
        const std::int64_t end = std::min(loop.steps, step + group);
        parallelFor(step * loop.itemsPerStep, end * loop.itemsPerStep, grain, body);
        for (std::int64_t done = step + 1; done <= end; ++done) {
            const std::int64_t reached = done * 100 / loop.steps;
            if (reached != percentage)
                progress(QString(), static_cast<int>(reached), -1);
            percentage = reached;
        }
    }
    return loop.steps;
}

bool runItems(std::int64_t count, std::int64_t itemBytes, const Progress& progress,
              const std::function<void(std::int64_t begin, std::int64_t end)>& body)
{
    const std::int64_t items = std::max<std::int64_t>(1, kStepBytes / std::max<std::int64_t>(1, itemBytes));
    const StepLoop loop = {(count + items - 1) / items, 1, items * itemBytes};
    const auto steps = [&](std::int64_t begin, std::int64_t end) {
        body(begin * items, std::min(count, end * items));
    };
    return runSteps(loop, QString(), progress, steps) == loop.steps;
}

} // namespace tirn
