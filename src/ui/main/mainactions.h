#pragma once

#include <span>

namespace tirn {

/// One action of the main window: the path of menus it stands in, "/" between them, and what the user sees.
/// An empty name is a separator; an action without a menu is only made.
struct ActionRow
{
    enum class Kind {
        Plain,
        /// Shows or hides a window.
        Toggle,
        /// A sub-menu of its own that is filled at run time.
        List,
    };

    /// What has to be there for the action to be enabled.
    enum class Needs { Nothing, Stack, Surface };

    const char* menu;
    const char* name;
    const char* text;
    const char* shortcut = "";
    const char* toolTip = "";
    Kind kind = Kind::Plain;
    /// False for an action that has nothing to do; it stands disabled.
    bool enabled = true;
    Needs needs = Needs::Nothing;
};

/// All actions in the order of the menus.
std::span<const ActionRow> mainActions();

} // namespace tirn
