#include "cli/activity.h"

#include <chrono>
#include <cstdio>

#include <unistd.h>

#include "cli/console.h"

namespace tirn {

namespace {
constexpr double kQuietSeconds = 1;
constexpr int kBarWidth = 40;
constexpr auto kPause = std::chrono::milliseconds(100);
} // namespace

Activity::Activity(const QString& title) : m_title(title), m_terminal(isatty(STDERR_FILENO) != 0)
{
    if (m_terminal)
        m_thread = std::thread([this] { run(); });
}

Activity::~Activity()
{
    if (!m_terminal)
        return;
    {
        const std::scoped_lock lock(m_mutex);
        m_done = true;
    }
    m_wake.notify_all();
    m_thread.join();
    if (m_drawn)
        std::fputs("\r\033[K", stderr);
}

void Activity::setSteps(int done, int total)
{
    const std::scoped_lock lock(m_mutex);
    m_steps = done;
    m_total = total >= 0 ? total : m_total;
}

Progress Activity::progress()
{
    return {[this](const QString&, int done, int total) { setSteps(done, total); }, &Console::interrupted()};
}

void Activity::run()
{
    std::unique_lock lock(m_mutex);
    while (!m_wake.wait_for(lock, kPause, [this] { return m_done; })) {
        const double seconds = m_stopwatch.seconds();
        if (seconds >= kQuietSeconds)
            draw(seconds);
    }
}

void Activity::draw(double seconds)
{
    QString bar(kBarWidth, ' ');
    QString end;
    if (m_total > 0) {
        const int filled = static_cast<int>(std::int64_t{kBarWidth} * m_steps / m_total);
        bar = QString(filled, '#') + QString(kBarWidth - filled, ' ');
        end = QString::asprintf("%3d %%", static_cast<int>(std::int64_t{100} * m_steps / m_total));
        if (m_steps > 0 && m_steps < m_total)
            end +=
                QString::asprintf("  %d s left", static_cast<int>(seconds * (m_total - m_steps) / m_steps));
    } else {
        const int at = static_cast<int>(seconds * 10) % (2 * (kBarWidth - 3));
        bar.replace(at < kBarWidth - 3 ? at : 2 * (kBarWidth - 3) - at, 3, "###");
        end = QString::asprintf("%d s", static_cast<int>(seconds));
    }
    const QString line = QString("\r%1 [%2] %3\033[K").arg(m_title, bar, end);
    std::fputs(line.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
    m_drawn = true;
}

} // namespace tirn
