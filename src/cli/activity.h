#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include <QString>

#include "base/progress.h"
#include "base/stopwatch.h"

namespace tirn {

/// A progress bar on stderr, where that is a terminal, for work that takes longer than a second. Work that
/// reports no steps shows a bar that wanders.
class Activity
{
public:
    explicit Activity(const QString& title);
    /// Wipes the bar.
    ~Activity();
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

    /// Steps done of a total; any thread.
    void setSteps(int done, int total);
    /// Hands steps on, and Ctrl-C to the work.
    Progress progress();

private:
    void run();
    void draw(double seconds);

    QString m_title;
    bool m_terminal;
    Stopwatch m_stopwatch;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_done = false;
    bool m_drawn = false;
    int m_steps = 0;
    int m_total = 0;
    std::thread m_thread;
};

} // namespace tirn
