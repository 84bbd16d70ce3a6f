#include "movies/action.h"

#include <algorithm>

namespace tirn {

namespace {

bool isByNothing(const Action& action)
{
    return action.type == ActionType::Rotation && action.x == 0 && action.y == 0 && action.z == 0;
}

} // namespace

QString Action::name() const
{
    constexpr std::array<const char*, 8> names = {"Rotation",     "Scale",   "Translation", "Palette",
                                                  "Pass Through", "Rocking", "Custom",      "Timepoints"};
    const auto row = static_cast<std::size_t>(type);
    return row < names.size() ? names[row] : "Not a clue";
}

std::int64_t TimeFrame::frames(const StackSize& size) const
{
    if (!actions.empty()) {
        const Action& first = actions.front();
        if (first.type == ActionType::Custom)
            return static_cast<std::int64_t>(first.keyFrames.size());
        if (first.type == ActionType::PassThrough && first.passType == PassType::SinglePlane) {
            // The first axis counts here, while the pass itself looks for the last one.
            const std::size_t axis = first.x == 1.0 ? 0 : first.y == 1.0 ? 1 : first.z == 1.0 ? 2 : 0;
            return std::max(size[axis], 0);
        }
    }
    return std::max<std::int64_t>(seconds, 0) * kFramesPerSecond;
}

bool areCompatible(const Action& existing, const Action& added)
{
    if (existing.type == added.type)
        return false;
    switch (existing.type) {
    case ActionType::Rotation:
        return added.type != ActionType::Rocking;
    case ActionType::Rocking:
        return added.type != ActionType::Rotation;
    case ActionType::Custom:
        return false;
    default:
        return true;
    }
}

bool addAction(TimeFrame& timeFrame, const Action& action)
{
    std::vector<Action>& actions = timeFrame.actions;
    if (!std::all_of(actions.begin(), actions.end(),
                     [&action](const Action& existing) { return areCompatible(existing, action); }))
        return false;
    actions.insert(action.type == ActionType::TimePoints ? actions.begin() : actions.end(), action);
    return true;
}

QString incompatibleText(const Action& action)
{
    return action.name() + " is not compatible with the other actions in this timeframe.";
}

void letTimePass(std::vector<TimeFrame>& timeFrames, int framesPerTimePoint)
{
    for (TimeFrame& timeFrame : timeFrames) {
        Action time;
        time.type = ActionType::TimePoints;
        time.framesPerTimePoint = framesPerTimePoint;
        if (timeFrame.actions.empty() || !isByNothing(timeFrame.actions.front())) {
            addAction(timeFrame, time);
            continue;
        }
        Action& lost = timeFrame.actions.front();
        time.start = lost.start;
        time.end = lost.end;
        lost = time;
    }
}

std::array<double, 3> rockingAngles(int item, double angle)
{
    // What ought to rock about z rocks about x.
    const bool x = item == 0 || item == 2 || item == 3 || item == 4 || item == 5;
    const bool y = item == 1 || item == 3 || item == 5;
    return {x ? angle : 0, y ? angle : 0, 0};
}

} // namespace tirn
