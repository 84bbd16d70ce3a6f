#pragma once

#include <QString>

namespace tirn {

enum class JobOutcome { Done, Cancelled, Failed };

/// How a job that can be cancelled ended.
struct JobResult
{
    JobOutcome outcome = JobOutcome::Done;
    /// What went wrong, for the user.
    QString error;
};

inline JobResult failedJob(const QString& error) { return {JobOutcome::Failed, error}; }

} // namespace tirn
