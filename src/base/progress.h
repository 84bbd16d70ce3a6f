#pragma once

#include <atomic>
#include <functional>

#include <QString>

namespace tirn {

/// What a long operation tells its caller, and how the caller stops it.
///
/// `report` is called on the worker's own thread with a message (empty: keep the last one), the steps done
/// and the total (-1: keep the last total). `cancelled` may be set from any thread; operations look at it
/// between slices.
struct Progress
{
    using Report = std::function<void(const QString& message, int done, int total)>;

    Report report;
    const std::atomic<bool>* cancel = nullptr;

    void operator()(const QString& message, int done, int total) const
    {
        if (report)
            report(message, done, total);
    }
    bool cancelled() const { return cancel != nullptr && cancel->load(std::memory_order_relaxed); }
};

} // namespace tirn
