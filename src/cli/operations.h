#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QCommandLineParser>

#include "base/progress.h"
#include "image/imagefile.h"

namespace tirn {

/// A step that changes a stack, or puts another in its place. Throws FileError, with an empty name, where the
/// stack does not allow it.
struct StackStep
{
    using Run = std::function<void(std::unique_ptr<ImageFile>& stack, const Progress& progress)>;

    /// What is done, for those who wait.
    QString title;
    Run run;
};

/// The options of all operations.
void addOperationOptions(QCommandLineParser& parser);
/// The operations in the order in which they were given. Throws UsageError for arguments that make no sense.
std::vector<StackStep> operationSteps(const QCommandLineParser& parser);

} // namespace tirn
