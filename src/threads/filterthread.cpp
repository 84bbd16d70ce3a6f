#include "threads/filterthread.h"

#include <mutex>

#include "base/log.h"
#include "gl/gltable.h"

namespace tirn {

namespace {

using Apply = bool (*)(ImageFile& image, const FilterJobParameters& parameters, int channel,
                       const Progress& progress);

/// An operation: what it is called in the log, what is shown, and for a filter how it is run.
struct OperationRow
{
    FilterOperation operation;
    const char* logName;
    const char* progressText;
    Apply apply = nullptr;
};

constexpr OperationRow kOperations[] = {
    {FilterOperation::FlipX, "Flipping on X", "Flipping along X axis"},
    {FilterOperation::FlipY, "Flipping on Y", "Flipping along Y axis"},
    {FilterOperation::FlipZ, "Flipping on Z", "Flipping along Z axis"},
    {FilterOperation::Invert, "Inverting", "Inverting..."},
    {FilterOperation::Maximum, "Maximum filter", "Max filtering...",
     [](ImageFile& image, const FilterJobParameters& p, int channel, const Progress& progress) {
         return image.maxFilter(p.size, channel, p.threeD, progress);
     }},
    {FilterOperation::Median, "Median filter", "Median filtering...",
     [](ImageFile& image, const FilterJobParameters& p, int channel, const Progress& progress) {
         return image.medianFilter(p.size, channel, p.threeD, progress);
     }},
    {FilterOperation::Mean, "Mean filter", "Mean filtering...",
     [](ImageFile& image, const FilterJobParameters& p, int channel, const Progress& progress) {
         return image.meanFilter(p.size, channel, p.threeD, progress);
     }},
    {FilterOperation::Minimum, "Minimum filter", "Min filtering...",
     [](ImageFile& image, const FilterJobParameters& p, int channel, const Progress& progress) {
         return image.minFilter(p.size, channel, p.threeD, progress);
     }},
    {FilterOperation::BackgroundSubtract, "background subtract", "Subtracting background...",
     [](ImageFile& image, const FilterJobParameters& p, int channel, const Progress& progress) {
         return image.backgroundSubtract(p.size, channel, p.extra, progress);
     }},
    {FilterOperation::Custom, "Custom filter", "Custom filtering...",
     [](ImageFile& image, const FilterJobParameters& p, int channel, const Progress& progress) {
         return image.kernelFilter(p.kernel, channel, progress);
     }},
};

const OperationRow& rowOf(FilterOperation operation) { return kOperations[static_cast<int>(operation)]; }

QString logText(const FilterJobParameters& p)
{
    const QString name = QLatin1String(rowOf(p.operation).logName);
    switch (p.operation) {
    case FilterOperation::FlipX:
    case FilterOperation::FlipY:
    case FilterOperation::FlipZ:
    case FilterOperation::Invert:
        return name;
    case FilterOperation::BackgroundSubtract:
        return name + QString::asprintf(" %d %d %d", p.size, p.channelAll ? -1 : p.channel, p.extra);
    case FilterOperation::Custom:
        return name + QString::asprintf(" %dx%d", p.kernel.width, p.kernel.height);
    default:
        return name + QString::asprintf(" %dx%d", p.size, p.size);
    }
}

VolumeEdit filterEdit(const VoxelArray& array, const FilterJobParameters& parameters)
{
    VolumeEdit edit;
    int channel = parameters.channelAll ? -1 : parameters.channel;
    if (array.hasOneChannelAnImage() && channel >= 0) {
        for (int t = 0; array.imageOf(channel, t).image != nullptr; ++t)
            edit.images.push_back(array.imageOf(channel, t).number);
        channel = 0;
    }
    edit.apply = [parameters, channel, apply = rowOf(parameters.operation).apply](ImageFile& image,
                                                                                  const Progress& progress) {
        return apply(image, parameters, channel, progress);
    };
    return edit;
}

VolumeEdit editOf(const FilterJob& job)
{
    switch (job.parameters.operation) {
    case FilterOperation::FlipX:
        return flipEdit('X');
    case FilterOperation::FlipY:
        return flipEdit('Y');
    case FilterOperation::FlipZ:
        return flipEdit('Z');
    case FilterOperation::Invert:
        return invertEdit();
    default:
        return filterEdit(*job.array, job.parameters);
    }
}

} // namespace

QString progressText(FilterOperation operation) { return QLatin1String(rowOf(operation).progressText); }

JobResult runFilterJob(const FilterJob& job, RenderLock& lock, const Progress& progress)
{
    const FilterJobParameters& p = job.parameters;
    log(LogLevel::Debug, logText(p));
    if (!p.channelAll && (p.channel < 0 || p.channel >= job.array->channelCount()))
        return {JobOutcome::Failed, QStringLiteral("The stack has no channel %1.").arg(p.channel)};
    const auto gate = [&lock](const std::function<void()>& change) {
        const std::scoped_lock guard(lock);
        change();
        // Complete before another context draws them.
        gl().Finish();
    };
    return applyEdit(*job.array, editOf(job), {progress, gate});
}

FilterThread::FilterThread(QOpenGLContext& share, RenderLock& lock, JobReport report)
    : m_context(&share), m_lock(lock), m_report(std::move(report))
{}

FilterThread::~FilterThread() { stopAndWait(); }

bool FilterThread::filter(FilterJob job)
{
    if (m_busy || job.array == nullptr || job.array->images().empty())
        return false;
    // A job that made its last report may take a moment to end.
    wait();
    m_job = std::move(job);
    m_busy = true;
    m_cancelled = false;
    m_context.context().moveToThread(this);
    start();
    return true;
}

void FilterThread::stopAndWait()
{
    cancel();
    wait();
}

void FilterThread::run()
{
    JobResult result = {JobOutcome::Failed, QStringLiteral("Could not allocate a GL context")};
    if (m_context.makeCurrent()) {
        m_report.progress(progressText(m_job.parameters.operation), 0, 0);
        result = runFilterJob(m_job, m_lock, {m_report.progress, &m_cancelled});
    }
    m_context.doneCurrent();
    m_context.context().moveToThread(thread());
    m_busy = false;
    m_report.finished(result);
}

} // namespace tirn
