#pragma once

#include "app/jobs.h"
#include "app/loads.h"
#include "app/pictures.h"
#include "ui/formtable.h"

namespace tirn {

/// What the actions of the menus lead to. All of it outlives the menus.
struct MenuTargets
{
    MainForm& mainForm;
    SceneModel& model;
    StackList& stacks;
    Loads& loads;
    Jobs& jobs;
    Pictures& pictures;
    FormTable& forms;
    const Settings& settings;
    std::function<void(const QString& page)> help;
};

/// Connects the actions of the main window.
void connectActions(const MenuTargets& targets);

/// Fills the context menu of the volume.
void fillContextMenu(QMenu& menu, const MenuTargets& targets);

} // namespace tirn
