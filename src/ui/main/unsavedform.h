#pragma once

#include <functional>
#include <vector>

#include <QString>

class QWidget;

namespace tirn {

/// Something that was made or changed and stands in no file.
struct UnsavedThing
{
    QString name;
    /// False where it was not saved after all.
    std::function<bool()> save;
};

/// Asks in one box which of some things are to be saved, and saves them. False where the user cancels, or one
/// was not saved after all: then nothing must be lost.
bool askAndSave(const std::vector<UnsavedThing>& things, QWidget* parent);

} // namespace tirn
