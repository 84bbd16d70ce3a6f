#include "movies/movieloop.h"

#include <algorithm>
#include <climits>

namespace tirn {

namespace {

class Loop
{
public:
    Loop(const MovieJob& job, FrameSource& source, FrameSink* sink, const Progress& progress)
        : m_job(job), m_source(source), m_sink(sink), m_progress(progress)
    {}

    MovieResult run()
    {
        if (m_sink != nullptr && !m_sink->begin(m_job.outOfOrder ? m_job.wanted() : 0)) {
            m_result.error = m_sink->error();
            return m_result;
        }
        report();
        MovieStep step;
        KeyFrame pose = m_job.start;
        while (!m_progress.cancelled() && m_job.steps(step, pose) && perform(step, pose))
            report();
        m_result.cancelled = m_result.error.isEmpty() && m_progress.cancelled();
        // A movie that ended early, before its first picture, leaves what was there.
        const bool worthKeeping = m_result.pictures > 0 || (m_result.error.isEmpty() && !m_result.cancelled);
        if (m_sink != nullptr && worthKeeping && !m_sink->finish() && m_result.error.isEmpty())
            m_result.error = m_sink->error();
        return m_result;
    }

private:
    void report() const
    {
        const auto limited = [](std::int64_t n) {
            return static_cast<int>(std::clamp<std::int64_t>(n, 0, INT_MAX));
        };
        m_progress({}, limited(std::min(m_result.pictures, m_job.wanted())), limited(m_job.wanted()));
    }

    bool perform(const MovieStep& step, const KeyFrame& pose)
    {
        if (step.kind == MovieStep::Kind::LoadTimePoint)
            return m_source.loadTimePoint(step.timePoint) || fail(m_source.error());
        FramePicture picture;
        bool drawn = false;
        for (std::int64_t frame = step.frame; frame < step.frame + step.pictures; ++frame) {
            if (!m_job.isWanted(frame))
                continue;
            if (!drawn && !m_source.draw(pose, m_sink != nullptr ? &picture : nullptr))
                return fail(m_source.error());
            drawn = true;
            if (m_sink != nullptr && !m_sink->write(picture, frame))
                return fail(m_sink->error());
            ++m_result.pictures;
        }
        return true;
    }

    bool fail(const QString& text)
    {
        m_result.error = text.isEmpty() ? QString("The frame could not be drawn.") : text;
        return false;
    }

    const MovieJob& m_job;
    FrameSource& m_source;
    FrameSink* m_sink;
    const Progress& m_progress;
    MovieResult m_result;
};

} // namespace

std::int64_t MovieJob::wanted() const
{
    if (!range)
        return total;
    return std::max<std::int64_t>(0, std::min(range->last, total - 1) -
                                         std::max<std::int64_t>(range->first, 0) + 1);
}

bool MovieJob::isWanted(std::int64_t frame) const
{
    return !range || (frame >= range->first && frame <= range->last);
}

void MovieJob::forEachPicture(const std::function<void(std::int64_t frame)>& act) const
{
    MovieSteps all = steps;
    MovieStep step;
    KeyFrame pose = start;
    while (all(step, pose)) {
        for (std::int64_t i = 0; step.kind != MovieStep::Kind::LoadTimePoint && i < step.pictures; ++i) {
            if (isWanted(step.frame + i))
                act(step.frame + i);
        }
    }
}

MovieResult runMovie(const MovieJob& job, FrameSource& source, FrameSink* sink, const Progress& progress)
{
    return Loop(job, source, sink, progress).run();
}

} // namespace tirn
