#include "threads/filterthread.h"

#include <mutex>

#include "base/log.h"
#include "gl/gltable.h"

namespace tirn {

namespace {

/// An operation that the volume remembers: what it is called in the log, and what is shown.
struct TransformRow
{
    FilterOperation operation;
    const char* logName;
    const char* progressText;
    VolumeEdit (*edit)();
};

constexpr TransformRow kTransforms[] = {
    {FilterOperation::FlipX, "Flipping on X", "Flipping along X axis", [] { return flipEdit('X'); }},
    {FilterOperation::FlipY, "Flipping on Y", "Flipping along Y axis", [] { return flipEdit('Y'); }},
    {FilterOperation::FlipZ, "Flipping on Z", "Flipping along Z axis", [] { return flipEdit('Z'); }},
    {FilterOperation::Invert, "Inverting", "Inverting...", [] { return invertEdit(); }},
};

/// Of an operation that is no filter.
const TransformRow& transformOf(FilterOperation operation)
{
    return kTransforms[static_cast<int>(operation)];
}

VolumeEdit filterEdit(const VoxelArray& array, const Filter& filter, FilterJobParameters parameters)
{
    VolumeEdit edit;
    if (array.hasOneChannelAnImage() && !parameters.channelAll) {
        for (int t = 0; array.imageOf(parameters.channel, t).image != nullptr; ++t)
            edit.images.push_back(array.imageOf(parameters.channel, t).number);
        parameters.channel = 0;
    }
    edit.apply = [parameters, &filter](ImageFile& image, const Progress& progress) {
        return filter.apply(image, parameters, progress);
    };
    return edit;
}

} // namespace

QString progressText(FilterOperation operation)
{
    const Filter* filter = findFilter(operation);
    return QLatin1String(filter != nullptr ? filter->progressText : transformOf(operation).progressText);
}

JobResult runFilterJob(const FilterJob& job, RenderLock& lock, const Progress& progress)
{
    const FilterJobParameters& p = job.parameters;
    const Filter* filter = findFilter(p.operation);
    log(LogLevel::Debug, filter != nullptr ? filterLogText(*filter, p)
                                           : QString::fromLatin1(transformOf(p.operation).logName));
    if (!p.channelAll && (p.channel < 0 || p.channel >= job.array->channelCount()))
        return {JobOutcome::Failed, QStringLiteral("The stack has no channel %1.").arg(p.channel)};
    const auto gate = [&lock](const std::function<void()>& change) {
        const std::scoped_lock guard(lock);
        change();
        // Complete before another context draws them.
        gl().Finish();
    };
    const VolumeEdit edit =
        filter != nullptr ? filterEdit(*job.array, *filter, p) : transformOf(p.operation).edit();
    return applyEdit(*job.array, edit, {progress, gate});
}

bool FilterThread::filter(FilterJob job)
{
    if (job.array == nullptr || job.array->images().empty())
        return false;
    return startJob([this, job = std::move(job)](const Progress& progress) {
        progress(progressText(job.parameters.operation), 0, 0);
        return runFilterJob(job, m_lock, progress);
    });
}

} // namespace tirn
