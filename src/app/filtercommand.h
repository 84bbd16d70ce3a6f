#pragma once

#include <memory>

#include <QUndoCommand>

#include "threads/filterthread.h"

namespace tirn {

class FilterCommand;

/// Filters a stack, and takes a filter back, away from the interface thread.
class FilterRuns
{
public:
    virtual ~FilterRuns() = default;
    /// Tells the command what takes it back, once it is done.
    virtual void runAgain(FilterCommand& command) = 0;
    virtual void takeBack(StackId stack, std::shared_ptr<AppliedEdit> applied) = 0;
    /// The command is no more.
    virtual void forget(const FilterCommand& command) = 0;
};

/// A filter that was run. Only the last one can be taken back: of those before it the old voxels are let go.
class FilterCommand : public QUndoCommand
{
public:
    FilterCommand(FilterRuns& runs, StackId stack, const FilterJobParameters& parameters,
                  std::shared_ptr<AppliedEdit> applied);
    ~FilterCommand() override { m_runs.forget(*this); }

    void undo() override;
    void redo() override;

    StackId stack() const { return m_stack; }
    const FilterJobParameters& parameters() const { return m_parameters; }
    void setApplied(std::shared_ptr<AppliedEdit> applied) { m_applied = std::move(applied); }

private:
    FilterRuns& m_runs;
    StackId m_stack;
    FilterJobParameters m_parameters;
    std::shared_ptr<AppliedEdit> m_applied;
    /// It has been run before it comes to the undo stack.
    bool m_isDone = true;
};

} // namespace tirn
