#pragma once

#include <functional>

#include "gl/glinfo.h"
#include "session/settings.h"
#include "threads/loaddescription.h"

namespace tirn {

/// What the forms that open stacks share with the program. All of it outlives the forms.
struct OpenServices
{
    /// Describes the next load; looked at and changed only while no load is under way.
    std::function<LoadDescription&()> load;
    /// Starts the load as it is described. False when another one is under way.
    std::function<bool()> startLoad;
    /// Holds the directories that all file dialogs share, and the preferences.
    Settings& settings;
    const GlCapabilities& card;
};

} // namespace tirn
