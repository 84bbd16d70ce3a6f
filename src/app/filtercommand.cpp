#include "app/filtercommand.h"

#include <utility>

namespace tirn {

FilterCommand::FilterCommand(FilterRuns& runs, StackId stack, const FilterJobParameters& parameters,
                             std::shared_ptr<AppliedEdit> applied)
    : QUndoCommand(editName(parameters)), m_runs(runs), m_stack(stack), m_parameters(parameters),
      m_applied(std::move(applied))
{}

void FilterCommand::undo()
{
    m_isDone = false;
    m_runs.takeBack(m_stack, std::exchange(m_applied, nullptr));
}

void FilterCommand::redo()
{
    if (!std::exchange(m_isDone, true))
        m_runs.runAgain(*this);
}

} // namespace tirn
