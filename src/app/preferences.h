#pragma once

#include <memory>

#include <QSettings>

#include "scene/scenemodel.h"
#include "session/settings.h"

namespace tirn {

/// The preferences: read from the store, acted on, and written back.
class Preferences
{
public:
    explicit Preferences(SceneModel& model);

    /// Holds the directories, too, that all file dialogs share.
    Settings& settings() { return m_settings; }
    QSettings& store() { return *m_store; }
    /// Takes them from the store, as far as the card goes.
    void read(const TextureSides& card);
    /// Takes new ones over and writes them; a text of what went wrong, empty when all is well. Limits and
    /// encoders act on later loads, and a new way to blend from the next start on.
    QString keep(const Settings& chosen);

private:
    void use(const Settings& settings);

    SceneModel& m_model;
    std::unique_ptr<QSettings> m_store;
    Settings m_settings;
};

} // namespace tirn
