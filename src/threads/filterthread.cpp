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
    const char* name;
    VolumeEdit (*edit)();
};

constexpr TransformRow kTransforms[] = {
    {FilterOperation::FlipX, "Flipping on X", "Flipping along X axis", "flip of x",
     [] { return flipEdit('X'); }},
    {FilterOperation::FlipY, "Flipping on Y", "Flipping along Y axis", "flip of y",
     [] { return flipEdit('Y'); }},
    {FilterOperation::FlipZ, "Flipping on Z", "Flipping along Z axis", "flip of z",
     [] { return flipEdit('Z'); }},
    {FilterOperation::Invert, "Inverting", "Inverting...", "inversion", [] { return invertEdit(); }},
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

QString editName(const FilterJobParameters& parameters)
{
    const Filter* filter = findFilter(parameters.operation);
    if (filter == nullptr)
        return QLatin1String(transformOf(parameters.operation).name);
    const QString name = QString(QLatin1String(filter->logName)).toLower().remove(QLatin1String(" filter"));
    return filter->takesKernel ? name : QStringLiteral("%1 %2").arg(name).arg(parameters.size);
}

TextureGate gateOf(RenderLock& lock)
{
    return [&lock](const std::function<void()>& change) {
        const std::scoped_lock guard(lock);
        change();
        // Complete before another context draws them.
        gl().Finish();
    };
}

JobResult runFilterJob(const FilterJob& job, RenderLock& lock, const Progress& progress,
                       std::unique_ptr<AppliedEdit>* applied)
{
    const FilterJobParameters& p = job.parameters;
    const Filter* filter = findFilter(p.operation);
    log(LogLevel::Debug, filter != nullptr ? filterLogText(*filter, p)
                                           : QString::fromLatin1(transformOf(p.operation).logName));
    if (!p.channelAll && (p.channel < 0 || p.channel >= job.array->channelCount()))
        return {JobOutcome::Failed, QStringLiteral("The stack has no channel %1.").arg(p.channel)};
    const VolumeEdit edit =
        filter != nullptr ? filterEdit(*job.array, *filter, p) : transformOf(p.operation).edit();
    return applyEdit(*job.array, edit, {progress, gateOf(lock)}, applied);
}

bool FilterThread::filter(FilterJob job)
{
    if (job.array == nullptr || job.array->images().empty())
        return false;
    return startJob([this, job = std::move(job)](const Progress& progress) {
        progress(progressText(job.parameters.operation), 0, 0);
        return runFilterJob(job, m_lock, progress, &m_applied);
    });
}

bool FilterThread::takeBack(std::shared_ptr<AppliedEdit> applied)
{
    return startJob(
        [this, applied = std::move(applied)](const Progress&) { return applied->takeBack(gateOf(m_lock)); });
}

} // namespace tirn
