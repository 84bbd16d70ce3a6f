#include "movies/timeframemovie.h"

#include <algorithm>

#include "base/log.h"
#include "movies/actionstate.h"

namespace tirn {

namespace {

void applyAll(const TimeFrame& timeFrame, const KeyFrame& start, KeyFrame& work, const FramePlace& place,
              TimePointCounter& counter)
{
    for (std::size_t a = 0; a < timeFrame.actions.size(); ++a) {
        logDebug("doing Action %d", static_cast<int>(a));
        applyAction(timeFrame.actions[a], start, work, place, counter);
    }
}

void applyAllFinal(const TimeFrame& timeFrame, const KeyFrame& start, KeyFrame& work, std::int64_t frames,
                   TimePointCounter& counter)
{
    for (std::size_t a = 0; a < timeFrame.actions.size(); ++a) {
        logDebug("doing Action final %d", static_cast<int>(a));
        applyFinal(timeFrame.actions[a], start, work, frames, counter);
    }
}

/// Goes through the time frames in order.
class Sequence
{
public:
    Sequence(const TimeFrameMovie& movie, bool flashing)
        : m_movie(movie), m_start(movie.firstPose()),
          // Whole frames, while the maker of predefined movies rounds.
          m_flash(flashing ? std::max<std::int64_t>(std::int64_t{movie.flashMilliseconds} * 15 / 1000, 1) : 0)
    {
        if (flashing)
            logDebug("flashcount %d", static_cast<int>(m_flash));
    }

    bool operator()(MovieStep& step, KeyFrame& pose)
    {
        for (; m_index < m_movie.timeFrames.size(); ++m_index, m_i = 0) {
            const TimeFrame& timeFrame = m_movie.timeFrames[m_index];
            const std::int64_t frames = timeFrame.frames(m_movie.size);
            if (m_i == 0) {
                logDebug("doing timeframe");
                m_work = m_start;
            }
            if (m_i < frames) {
                applyAll(timeFrame, m_start, m_work, {m_i++, frames}, m_counter);
                flash();
                step = {.frame = m_frame++};
                pose = m_work;
                logDebug("Frame %d timepoint %d", static_cast<int>(m_frame), m_work.timepoint);
                return true;
            }
            KeyFrame next = m_work;
            applyAllFinal(timeFrame, m_start, next, frames, m_counter);
            m_start = std::move(next);
        }
        return false;
    }

private:
    void flash()
    {
        if (m_flash == 0 || m_frame % m_flash != 0)
            return;
        turnFlashes(m_work.channels);
        swapPalettes(m_work.channels);
    }

    TimeFrameMovie m_movie;
    KeyFrame m_start;
    KeyFrame m_work;
    std::int64_t m_flash;
    std::int64_t m_frame = 0;
    std::int64_t m_i = 0;
    std::size_t m_index = 0;
    TimePointCounter m_counter = 0;
};

/// Makes the poses of frames in any order.
class AnyOrder
{
public:
    explicit AnyOrder(const TimeFrameMovie& movie) : m_movie(movie)
    {
        KeyFrame start = movie.firstPose();
        std::int64_t first = 0;
        TimePointCounter counter = 0;
        for (const TimeFrame& timeFrame : movie.timeFrames) {
            const std::int64_t frames = timeFrame.frames(movie.size);
            m_parts.push_back({first, frames, start});
            first += frames;
            KeyFrame next = start;
            applyAllFinal(timeFrame, start, next, frames, counter);
            start = std::move(next);
        }
    }

    void make(std::int64_t frame, KeyFrame& pose) const
    {
        for (std::size_t index = m_parts.size(); index-- > 0;) {
            const Part& part = m_parts[index];
            if (frame < part.first || frame >= part.first + part.frames)
                continue;
            pose = part.start;
            TimePointCounter counter = 0;
            applyAll(m_movie.timeFrames[index], part.start, pose, {frame - part.first, part.frames}, counter);
            return;
        }
    }

private:
    struct Part
    {
        std::int64_t first;
        std::int64_t frames;
        KeyFrame start;
    };

    TimeFrameMovie m_movie;
    std::vector<Part> m_parts;
};

class Batch
{
public:
    Batch(const TimeFrameMovie& movie, int timePoints)
        : m_poses(movie), m_table(framesByTimePoint(movie, timePoints))
    {}

    bool operator()(MovieStep& step, KeyFrame& pose)
    {
        if (m_point >= m_table.size())
            return false;
        if (!m_loaded) {
            m_loaded = true;
            step = {MovieStep::Kind::LoadTimePoint, 0, 0, static_cast<int>(m_point)};
            return true;
        }
        if (m_next == m_table[m_point].size()) {
            m_loaded = false;
            m_next = 0;
            ++m_point;
            return (*this)(step, pose);
        }
        step = {.frame = m_table[m_point][m_next++]};
        m_poses.make(step.frame, pose);
        return true;
    }

private:
    AnyOrder m_poses;
    std::vector<std::vector<std::int64_t>> m_table;
    std::size_t m_point = 0;
    std::size_t m_next = 0;
    bool m_loaded = false;
};

} // namespace

std::int64_t TimeFrameMovie::frames() const
{
    std::int64_t all = 0;
    for (const TimeFrame& timeFrame : timeFrames)
        all += timeFrame.frames(size);
    return all;
}

KeyFrame TimeFrameMovie::firstPose() const
{
    KeyFrame first = start;
    if (!useOrientation)
        first.xrot = first.yrot = first.zrot = 0;
    return first;
}

MovieSteps timeFrameSteps(const TimeFrameMovie& movie) { return Sequence(movie, true); }

std::vector<std::vector<std::int64_t>> framesByTimePoint(const TimeFrameMovie& movie, int timePoints)
{
    logDebug("figuring out frames");
    std::vector<std::vector<std::int64_t>> table(static_cast<std::size_t>(std::max(timePoints, 0)));
    if (table.empty())
        return table;
    TimeFrameMovie plain = movie;
    plain.start.palettes.clear();
    Sequence steps(plain, false);
    MovieStep step;
    KeyFrame pose;
    while (steps(step, pose)) {
        const int point = pose.timepoint < 0 ? timePoints - 1 : pose.timepoint % timePoints;
        table[static_cast<std::size_t>(point)].push_back(step.frame);
    }
    return table;
}

MovieSteps timeFrameBatchSteps(const TimeFrameMovie& movie, int timePoints)
{
    return Batch(movie, timePoints);
}

} // namespace tirn
