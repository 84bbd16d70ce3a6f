#include "movies/moviesteps.h"

#include <algorithm>

#include "base/log.h"
#include "movies/movieposes.h"

namespace tirn {

namespace {

/// What the three kinds of walks share.
class Walk
{
public:
    explicit Walk(const PredefinedMovie& movie)
        : m_movie(movie), m_total(movie.frames()), m_timePoints(std::max(movie.time.timePoints, 1)),
          m_framesPerPoint(std::max(movie.time.framesPerTimePoint, 1)),
          m_padding(std::max(movie.time.paddingFrames, 0))
    {}

protected:
    void count(std::int64_t f, KeyFrame& pose) const { countFrame(f, m_movie.flashMilliseconds, pose); }
    /// Each pose ends with the counter; where only time passes there is none.
    void makePose(std::int64_t f, KeyFrame& pose) const
    {
        poseMovie(m_movie.settings, m_movie.start, m_movie.recorded, f, m_total, pose);
        if (m_movie.settings.type != MovieType::TimeOnly)
            count(f, pose);
    }
    /// The next time point, whenever f is a multiple of the frames that each one has.
    void passTime(std::int64_t f, KeyFrame& pose) const
    {
        if (m_timePoints > 1 && f % m_framesPerPoint == 0)
            pose.timepoint = (pose.timepoint + 1) % m_timePoints;
    }

    PredefinedMovie m_movie;
    std::int64_t m_total;
    int m_timePoints;
    std::int64_t m_framesPerPoint;
    std::int64_t m_padding;
};

class Preview : Walk
{
public:
    using Walk::Walk;

    bool operator()(MovieStep& step, KeyFrame& pose)
    {
        if (m_next > 0) {
            // The frame that was shown is what time and the counter ask about, frame 0 among them.
            passTime(m_next - 1, pose);
            count(m_next - 1, pose);
        }
        if (m_next >= m_total)
            return false;
        makePose(m_next, pose);
        step = {.frame = m_next++};
        return true;
    }

private:
    std::int64_t m_next = 0;
};

class Regular : Walk
{
public:
    using Walk::Walk;

    bool operator()(MovieStep& step, KeyFrame& pose)
    {
        if (m_shown) {
            m_shown = false;
            ++m_next;
            passTime(m_next, pose);
            if (isWrapped(pose)) {
                logDebug("paddings frames %d to %d", static_cast<int>(m_next),
                         static_cast<int>(m_next + m_padding));
                step = {MovieStep::Kind::Padding, m_next, m_padding};
                m_next += m_padding;
                m_counted = false;
                return true;
            }
            m_counted = false;
        }
        if (!m_counted) {
            count(m_next, pose);
            m_counted = true;
        }
        if (m_next >= m_total)
            return false;
        makePose(m_next, pose);
        step = {.frame = m_next};
        m_shown = true;
        return true;
    }

private:
    bool isWrapped(const KeyFrame& pose) const
    {
        const std::int64_t span = m_timePoints * m_framesPerPoint;
        return m_timePoints > 1 && pose.timepoint == 0 && span < m_next % (span + m_padding);
    }

    std::int64_t m_next = 0;
    bool m_shown = false;
    bool m_counted = true;
};

class Batch : Walk
{
public:
    explicit Batch(const PredefinedMovie& movie) : Walk(movie)
    {
        m_nextPadding = m_timePoints * m_framesPerPoint;
    }

    bool operator()(MovieStep& step, KeyFrame& pose)
    {
        if (m_point < m_timePoints && m_done < m_total) {
            if (!m_loaded) {
                m_loaded = true;
                step = {MovieStep::Kind::LoadTimePoint, 0, 0, m_point};
                return true;
            }
            if (const std::int64_t f = nextFrame(); f < m_total) {
                ++m_done;
                makePose(f, pose);
                if (m_movie.settings.type == MovieType::TimeOnly)
                    count(f, pose);
                step = {.frame = f};
                return true;
            }
            ++m_point;
            m_loaded = false;
            m_run = 0;
            m_inRun = 0;
            return (*this)(step, pose);
        }
        if (m_padding == 0 || m_nextPadding >= m_total)
            return false;
        step = {MovieStep::Kind::Padding, m_nextPadding, m_padding};
        m_nextPadding += m_padding + m_timePoints * m_framesPerPoint;
        return true;
    }

private:
    /// The frames of the time point run by run, one run in each round of all time points.
    std::int64_t nextFrame()
    {
        const std::int64_t f =
            (m_timePoints * m_run + m_point) * m_framesPerPoint + m_padding * m_run + m_inRun;
        if (++m_inRun == m_framesPerPoint) {
            m_inRun = 0;
            ++m_run;
        }
        return f;
    }

    int m_point = 0;
    bool m_loaded = false;
    std::int64_t m_run = 0;
    std::int64_t m_inRun = 0;
    std::int64_t m_done = 0;
    std::int64_t m_nextPadding = 0;
};

} // namespace

KeyFrame PredefinedMovie::firstPose() const
{
    KeyFrame pose = start;
    pose.palettes.clear();
    if (!time.useCurrentTimePoint)
        pose.timepoint = 0;
    return pose;
}

MovieSteps previewSteps(const PredefinedMovie& movie) { return Preview(movie); }
MovieSteps regularSteps(const PredefinedMovie& movie) { return Regular(movie); }
MovieSteps batchSteps(const PredefinedMovie& movie) { return Batch(movie); }

} // namespace tirn
